// <qor.h> after <X11/Xlib.h>, in a program that has its own Point: the library's headers set Xlib's
// colliding macros aside and give them back, and its names live beside the program's. GoogleTest comes
// first only because its own names (None, Bool) collide with Xlib's too.
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace game
{
struct Point
{
    int x;
    int y;
};
} // namespace game

#include <qor.h>

// Xlib's macros are back in force after the library's headers.
static_assert(True == 1 && False == 0 && None == 0L && Success == 0, "Xlib's constants are restored");
static_assert(Complex == 0 && Always == 2, "Xlib's shape and backing-store names are restored");

namespace game
{
// Inside the program's namespace its own Point wins; the library's is ::Point<T>.
long Sum(const Point& a, const ::Point<long>& b)
{
    return a.x + a.y + b.x + b.y;
}
} // namespace game

TEST(QorHeaders, CompileAfterXlibBesideAProgramsOwnPoint)
{
    game::Point mine{1, 2};
    ::Point<long> theirs(30, 40);
    EXPECT_EQ(game::Sum(mine, theirs), 73);
    Bool flag = True;
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(Status(Success), 0);
    QorRect area(0, 0, 9, 4);
    EXPECT_EQ(area.Width(), 10);
}
