// QorSprite: defaults, last-position bookkeeping, areas, the point test and the partial comparison.
#include "qor/compositor.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

namespace
{
// A w x h picture of type whose every pixel byte is fill and whose mask colour is mask.
QorPicBlock Picture(QorPicBlock::ColorType type, long w, long h, unsigned char fill, std::vector<unsigned char> mask)
{
    QorPicBlock p(type, w, h);
    for (unsigned long i = 0; i < p.GetSize(); ++i)
        p.GetDataPtr()[i] = fill;
    p.SetMask(mask.data());
    return p;
}

void ExpectRect(const QorRect& r, long l, long t, long right, long b)
{
    EXPECT_EQ(r.left, l);
    EXPECT_EQ(r.top, t);
    EXPECT_EQ(r.right, right);
    EXPECT_EQ(r.bottom, b);
}
} // namespace

TEST(QorSprite, DefaultsMatchTheFieldTable)
{
    QorSprite s;
    EXPECT_EQ(s.GetId(), 0u);
    EXPECT_EQ(s.GetPrivatePicture(), 0u);
    EXPECT_EQ(s.GetPicBlock(), nullptr);
    EXPECT_EQ(s.GetSource().identifier, 0u);
    EXPECT_EQ(s.GetSource().object, nullptr);
    EXPECT_EQ(s.GetSource().tag, 0u);
    EXPECT_EQ(s.GetX(), 0);
    EXPECT_EQ(s.GetY(), 0);
    EXPECT_EQ(s.GetZ(), 0);
    EXPECT_EQ(s.GetLastX(), 0);
    EXPECT_EQ(s.GetLastY(), 0);
    EXPECT_EQ(s.GetLastWidth(), 0);
    EXPECT_EQ(s.GetLastHeight(), 0);
    EXPECT_EQ(s.IsCheckRegion(), 1);
    EXPECT_EQ(s.IsColorReverse(), 0);
    EXPECT_EQ(s.IsShow(), 1);
    EXPECT_EQ(s.IsMask(), 1);
    EXPECT_EQ(s.IsAttachToWindow(), 0);
    EXPECT_EQ(s.IsHReverse(), 0);
    EXPECT_EQ(s.IsVReverse(), 0);
    EXPECT_EQ(s.IsAlwaysOnTop(), 0);
    EXPECT_EQ(s.IsChild(), 0);
}

TEST(QorSprite, FlagSettersStoreTheGivenValues)
{
    QorSprite s;
    s.SetCheckRegion(0);
    s.SetColorReverse(1);
    s.SetShow(0);
    s.SetMask(0);
    s.SetAttachToWindow(1);
    s.SetHReverse(1);
    s.SetVReverse(1);
    s.SetAlwaysOnTop(1);
    s.SetChild(1);
    EXPECT_EQ(s.IsCheckRegion(), 0);
    EXPECT_EQ(s.IsColorReverse(), 1);
    EXPECT_EQ(s.IsShow(), 0);
    EXPECT_EQ(s.IsMask(), 0);
    EXPECT_EQ(s.IsAttachToWindow(), 1);
    EXPECT_EQ(s.IsHReverse(), 1);
    EXPECT_EQ(s.IsVReverse(), 1);
    EXPECT_EQ(s.IsAlwaysOnTop(), 1);
    EXPECT_EQ(s.IsChild(), 1);
}

TEST(QorSprite, IdSourceAndDepthAccessors)
{
    QorSprite s;
    s.SetId(77);
    QorGuider g;
    g.identifier = 5;
    g.object = &s;
    g.tag = 9;
    s.SetSource(g);
    s.SetZ(2000000);
    EXPECT_EQ(s.GetId(), 77u);
    EXPECT_EQ(s.GetSource().identifier, 5u);
    EXPECT_EQ(s.GetSource().object, &s);
    EXPECT_EQ(s.GetSource().tag, 9u);
    // The sprite stores any depth: clamping is the compositor's job.
    EXPECT_EQ(s.GetZ(), 2000000);
    s.SetZ(-40);
    EXPECT_EQ(s.GetZ(), -40);
}

TEST(QorSprite, GetSourceIsAReferenceIntoTheSprite)
{
    QorSprite s;
    s.GetSource().identifier = 12;
    EXPECT_EQ(s.GetSource().identifier, 12u);
}

TEST(QorSprite, WithoutPictureWidthAndHeightAreZero)
{
    QorSprite s;
    EXPECT_EQ(s.GetWidth(), 0);
    EXPECT_EQ(s.GetHeight(), 0);
}

TEST(QorSprite, WidthAndHeightFollowThePicture)
{
    QorPicBlock p(QorPicBlock::Bit8, 20, 30);
    QorSprite s;
    s.ChangePicBlock(&p);
    EXPECT_EQ(s.GetWidth(), 20);
    EXPECT_EQ(s.GetHeight(), 30);
    p.Reset(QorPicBlock::Bit8, 7, 3);
    EXPECT_EQ(s.GetWidth(), 7);
    EXPECT_EQ(s.GetHeight(), 3);
}

TEST(QorSprite, SetXCopiesTheOldXIntoLastX)
{
    QorSprite s;
    s.SetX(4);
    s.SetX(10);
    EXPECT_EQ(s.GetX(), 10);
    EXPECT_EQ(s.GetLastX(), 4);
    s.SetX(12);
    EXPECT_EQ(s.GetX(), 12);
    EXPECT_EQ(s.GetLastX(), 10);
    EXPECT_EQ(s.GetLastY(), 0);
}

TEST(QorSprite, SetYCopiesTheOldYIntoLastY)
{
    QorSprite s;
    s.SetY(-3);
    s.SetY(8);
    EXPECT_EQ(s.GetY(), 8);
    EXPECT_EQ(s.GetLastY(), -3);
    EXPECT_EQ(s.GetLastX(), 0);
}

TEST(QorSprite, SetXAndSetYLeaveTheLastSizeAlone)
{
    QorPicBlock p(QorPicBlock::Bit8, 20, 30);
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetX(5);
    s.SetY(6);
    EXPECT_EQ(s.GetLastWidth(), 0);
    EXPECT_EQ(s.GetLastHeight(), 0);
}

TEST(QorSprite, ChangePicBlockToNullKeepsTheOldSizeAndReturnsTheOldPicture)
{
    QorPicBlock p(QorPicBlock::Bit8, 20, 30);
    QorSprite s;
    s.ChangePicBlock(&p);
    EXPECT_EQ(s.ChangePicBlock(nullptr), &p);
    EXPECT_EQ(s.GetLastWidth(), 20);
    EXPECT_EQ(s.GetLastHeight(), 30);
    EXPECT_EQ(s.GetPicBlock(), nullptr);
    EXPECT_EQ(s.GetWidth(), 0);
}

TEST(QorSprite, ChangePicBlockRecordsTheCurrentPositionAndClearsThePrivateMark)
{
    QorPicBlock a(QorPicBlock::Bit8, 4, 5);
    QorPicBlock b(QorPicBlock::Bit8, 9, 9);
    QorSprite s;
    s.ChangePicBlock(&a);
    s.SetX(3);
    s.SetX(11);
    s.SetY(2);
    s.SetY(13);
    s.SetPrivatePicture(1);
    EXPECT_EQ(s.ChangePicBlock(&b), &a);
    EXPECT_EQ(s.GetLastX(), 11);
    EXPECT_EQ(s.GetLastY(), 13);
    EXPECT_EQ(s.GetLastWidth(), 4);
    EXPECT_EQ(s.GetLastHeight(), 5);
    EXPECT_EQ(s.GetPrivatePicture(), 0u);
    EXPECT_EQ(s.GetPicBlock(), &b);
}

TEST(QorSprite, ChangePicBlockFromNoPictureRecordsZeroSize)
{
    QorPicBlock p(QorPicBlock::Bit8, 4, 5);
    QorSprite s;
    EXPECT_EQ(s.ChangePicBlock(&p), nullptr);
    EXPECT_EQ(s.GetLastWidth(), 0);
    EXPECT_EQ(s.GetLastHeight(), 0);
}

TEST(QorSprite, SameSizeTakesThePictureSizeAndKeepsTheLastPosition)
{
    QorPicBlock p(QorPicBlock::Bit8, 6, 7);
    QorSprite s;
    s.SetX(1);
    s.SetX(2);
    s.SetY(3);
    s.SetY(4);
    s.ChangePicBlock(&p);
    s.SetX(50);
    s.SameSize();
    EXPECT_EQ(s.GetLastWidth(), 6);
    EXPECT_EQ(s.GetLastHeight(), 7);
    EXPECT_EQ(s.GetLastX(), 2);
    EXPECT_EQ(s.GetLastY(), 4);
}

TEST(QorSprite, SameSizeWithoutPictureIsZero)
{
    QorPicBlock p(QorPicBlock::Bit8, 6, 7);
    QorSprite s;
    s.ChangePicBlock(&p);
    s.ChangePicBlock(nullptr);
    EXPECT_EQ(s.GetLastWidth(), 6);
    s.SameSize();
    EXPECT_EQ(s.GetLastWidth(), 0);
    EXPECT_EQ(s.GetLastHeight(), 0);
}

TEST(QorSprite, ReceiveRectWithoutPictureEndsOneBeforeThePosition)
{
    QorSprite s;
    s.SetX(5);
    s.SetY(7);
    QorRect r(1, 1, 2, 2);
    s.ReceiveRect(&r);
    ExpectRect(r, 5, 7, 4, 6);
}

TEST(QorSprite, ReceiveRectIsInclusive)
{
    QorPicBlock p(QorPicBlock::Bit8, 20, 30);
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetX(4);
    s.SetY(6);
    QorRect r;
    s.ReceiveRect(&r);
    ExpectRect(r, 4, 6, 23, 35);
}

TEST(QorSprite, ReceiveLastRectUsesTheLastArea)
{
    QorPicBlock p(QorPicBlock::Bit8, 20, 30);
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetX(4);
    s.SetY(6);
    s.ChangePicBlock(nullptr);
    s.SetX(100);
    QorRect r;
    s.ReceiveLastRect(&r);
    ExpectRect(r, 4, 6, 23, 35);
}

TEST(QorSprite, ReceiveLastRectOfANewSpriteIsEmptyAtTheOrigin)
{
    QorSprite s;
    QorRect r(3, 3, 9, 9);
    s.ReceiveLastRect(&r);
    ExpectRect(r, 0, 0, -1, -1);
}

TEST(QorSprite, ReceiveRectsIgnoreANullRectangle)
{
    QorSprite s;
    s.ReceiveRect(nullptr);
    s.ReceiveLastRect(nullptr);
    EXPECT_EQ(s.GetX(), 0);
}

TEST(QorSprite, WithoutPictureNothingIsHit)
{
    QorSprite s;
    s.SetX(3);
    s.SetY(3);
    for (long x = 1; x <= 5; ++x)
        for (long y = 1; y <= 5; ++y)
        {
            EXPECT_EQ(s.IsHit(x, y, 0), 0) << x << "," << y;
            EXPECT_EQ(s.IsHit(x, y, 1), 0) << x << "," << y;
        }
}

TEST(QorSprite, HitEdgesAreInclusiveOnTheLeftAndTopOnly)
{
    QorPicBlock p(QorPicBlock::Bit8, 10, 4);
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetX(20);
    s.SetY(30);
    EXPECT_EQ(s.IsHit(20, 30, 0), 1);
    EXPECT_EQ(s.IsHit(29, 33, 0), 1);
    EXPECT_EQ(s.IsHit(30, 30, 0), 0);
    EXPECT_EQ(s.IsHit(20, 34, 0), 0);
    EXPECT_EQ(s.IsHit(19, 30, 0), 0);
    EXPECT_EQ(s.IsHit(20, 29, 0), 0);
}

TEST(QorSprite, HitAtNegativePositions)
{
    QorPicBlock p(QorPicBlock::Bit8, 3, 3);
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetX(-5);
    s.SetY(-5);
    EXPECT_EQ(s.IsHit(-5, -5, 0), 1);
    EXPECT_EQ(s.IsHit(-3, -3, 0), 1);
    EXPECT_EQ(s.IsHit(-2, -3, 0), 0);
    EXPECT_EQ(s.IsHit(-6, -4, 0), 0);
}

TEST(QorSprite, PointsAtTheEndsOfTheRangeMissWithoutOverflow)
{
    QorPicBlock p(QorPicBlock::Bit8, 3, 3);
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetX(-100);
    s.SetY(100);
    EXPECT_EQ(s.IsHit(LONG_MIN, 100, 0), 0);
    EXPECT_EQ(s.IsHit(LONG_MAX, 100, 0), 0);
    EXPECT_EQ(s.IsHit(-100, LONG_MIN, 1), 0);
    EXPECT_EQ(s.IsHit(-100, LONG_MAX, 1), 0);
}

TEST(QorSprite, InexactHitIgnoresTheMaskColour)
{
    QorPicBlock p = Picture(QorPicBlock::Bit8, 2, 2, 9, {9});
    QorSprite s;
    s.ChangePicBlock(&p);
    EXPECT_EQ(s.IsHit(1, 1, 0), 1);
    EXPECT_EQ(s.IsHit(1, 1, 1), 0);
}

TEST(QorSprite, ExactHitNeedsOneByteToDifferFromTheMask)
{
    QorPicBlock p = Picture(QorPicBlock::Bit24, 3, 2, 0, {1, 2, 3});
    for (long i = 0; i < 6; ++i)
    {
        unsigned char* px = p.GetPixel(i % 3, i / 3);
        px[0] = 1;
        px[1] = 2;
        px[2] = 3;
    }
    // Pixel (1, 0) differs in its last byte only; pixel (2, 1) in its first only.
    p.GetPixel(1, 0)[2] = 4;
    p.GetPixel(2, 1)[0] = 0;
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetX(10);
    s.SetY(10);
    EXPECT_EQ(s.IsHit(10, 10, 1), 0);
    EXPECT_EQ(s.IsHit(11, 10, 1), 1);
    EXPECT_EQ(s.IsHit(12, 10, 1), 0);
    EXPECT_EQ(s.IsHit(12, 11, 1), 1);
    EXPECT_EQ(s.IsHit(10, 11, 1), 0);
}

TEST(QorSprite, ExactHitReadsPackedRowsInEveryDepth)
{
    const QorPicBlock::ColorType types[] = {QorPicBlock::Bit8, QorPicBlock::Bit16, QorPicBlock::Bit24,
                                            QorPicBlock::Bit32};
    for (QorPicBlock::ColorType type : types)
    {
        QorPicBlock p = Picture(type, 5, 3, 0xAA, {0xAA, 0xAA, 0xAA, 0xAA});
        const long bytes = p.GetBytesPerPixel();
        // Pixel (3, 2) sits at byte (2 x 5 + 3) x bytes: rows have no padding.
        p.GetDataPtr()[(2 * 5 + 3) * bytes + bytes - 1] = 0x55;
        QorSprite s;
        s.ChangePicBlock(&p);
        for (long y = 0; y < 3; ++y)
            for (long x = 0; x < 5; ++x)
                EXPECT_EQ(s.IsHit(x, y, 1), (x == 3 && y == 2) ? 1 : 0) << type << ": " << x << "," << y;
    }
}

TEST(QorSprite, HitIgnoresMirroringAndTheShowFlag)
{
    QorPicBlock p = Picture(QorPicBlock::Bit8, 4, 1, 0, {0});
    p.GetPixel(0, 0)[0] = 7;
    QorSprite s;
    s.ChangePicBlock(&p);
    s.SetHReverse(1);
    s.SetVReverse(1);
    s.SetShow(0);
    s.SetMask(0);
    EXPECT_EQ(s.IsHit(0, 0, 1), 1);
    EXPECT_EQ(s.IsHit(3, 0, 1), 0);
}

TEST(QorSprite, EmptyPictureIsNeverHit)
{
    QorPicBlock p(QorPicBlock::Bit16);
    QorSprite s;
    s.ChangePicBlock(&p);
    EXPECT_EQ(s.IsHit(0, 0, 0), 0);
    EXPECT_EQ(s.IsHit(0, 0, 1), 0);
}

TEST(QorSprite, SpritesWithDifferentIdsButTheSamePlacementCompareEqual)
{
    QorPicBlock p(QorPicBlock::Bit8, 2, 2);
    QorSprite a, b;
    for (QorSprite* s : {&a, &b})
    {
        s->ChangePicBlock(&p);
        s->SetX(5);
        s->SetY(6);
        s->SetZ(7);
    }
    a.SetId(1);
    b.SetId(2);
    QorGuider g;
    g.identifier = 3;
    b.SetSource(g);
    // Different last areas do not matter either.
    b.SetX(5);
    b.SameSize();
    EXPECT_NE(a.GetLastX(), b.GetLastX());
    EXPECT_TRUE(a == b);
}

TEST(QorSprite, ComparisonSeesEveryComparedField)
{
    QorPicBlock p(QorPicBlock::Bit8, 2, 2);
    QorPicBlock q(QorPicBlock::Bit8, 2, 2);
    std::vector<void (*)(QorSprite&)> changes = {
        [](QorSprite& s) { s.SetCheckRegion(0); },
        [](QorSprite& s) { s.SetColorReverse(1); },
        [](QorSprite& s) { s.SetShow(0); },
        [](QorSprite& s) { s.SetMask(0); },
        [](QorSprite& s) { s.SetAttachToWindow(1); },
        [](QorSprite& s) { s.SetHReverse(1); },
        [](QorSprite& s) { s.SetVReverse(1); },
        [](QorSprite& s) { s.SetAlwaysOnTop(1); },
        [](QorSprite& s) { s.SetChild(1); },
        [](QorSprite& s) { s.SetX(1); },
        [](QorSprite& s) { s.SetY(1); },
        [](QorSprite& s) { s.SetZ(1); },
        [](QorSprite& s) { s.SetPrivatePicture(1); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i)
    {
        QorSprite a, b;
        a.ChangePicBlock(&p);
        b.ChangePicBlock(&p);
        changes[i](b);
        EXPECT_FALSE(a == b) << "change " << i;
    }
    QorSprite a, b;
    a.ChangePicBlock(&p);
    b.ChangePicBlock(&q);
    EXPECT_FALSE(a == b);
}

TEST(QorSprite, AssignmentCopiesEverything)
{
    QorPicBlock p(QorPicBlock::Bit8, 3, 4);
    QorSprite a;
    a.SetId(9);
    a.ChangePicBlock(&p);
    a.SetPrivatePicture(1);
    QorGuider g;
    g.identifier = 4;
    g.object = &p;
    a.SetSource(g);
    a.SetX(1);
    a.SetX(2);
    a.SetY(3);
    a.SetY(4);
    a.SetZ(5);
    a.SameSize();
    a.SetCheckRegion(0);
    a.SetColorReverse(1);
    a.SetShow(0);
    a.SetMask(0);
    a.SetAttachToWindow(1);
    a.SetHReverse(1);
    a.SetVReverse(1);
    a.SetAlwaysOnTop(1);
    a.SetChild(1);
    QorSprite b;
    b = a;
    EXPECT_EQ(b.GetId(), 9u);
    EXPECT_EQ(b.GetPrivatePicture(), 1u);
    EXPECT_EQ(b.GetPicBlock(), &p);
    EXPECT_TRUE(b.GetSource() == g);
    EXPECT_EQ(b.GetX(), 2);
    EXPECT_EQ(b.GetY(), 4);
    EXPECT_EQ(b.GetZ(), 5);
    EXPECT_EQ(b.GetLastX(), 1);
    EXPECT_EQ(b.GetLastY(), 3);
    EXPECT_EQ(b.GetLastWidth(), 3);
    EXPECT_EQ(b.GetLastHeight(), 4);
    EXPECT_EQ(b.IsCheckRegion(), 0);
    EXPECT_EQ(b.IsColorReverse(), 1);
    EXPECT_EQ(b.IsShow(), 0);
    EXPECT_EQ(b.IsMask(), 0);
    EXPECT_EQ(b.IsAttachToWindow(), 1);
    EXPECT_EQ(b.IsHReverse(), 1);
    EXPECT_EQ(b.IsVReverse(), 1);
    EXPECT_EQ(b.IsAlwaysOnTop(), 1);
    EXPECT_EQ(b.IsChild(), 1);
    EXPECT_TRUE(a == b);
}
