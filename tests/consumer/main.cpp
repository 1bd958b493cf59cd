#include <qor.h>

#include <cstdio>

int main()
{
    QorString text("consumer");
    text += QorString(42, 4);
    QorRect area(10, 10, 0, 0);
    std::printf("%s %ldx%ld\n", static_cast<char*>(text), area.Width(), area.Height());
    return text == "consumer  42" && area.Width() == 11 ? 0 : 1;
}
