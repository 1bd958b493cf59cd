// QorOffScreenBuffer's text sprites: every SetText form, the one private registry picture per sprite and
// its removal, the colours and fonts used.
#include "compositor_probe.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
using qortest::At;
using qortest::Bytes;
using qortest::Probe;

// Big5 bytes of 中文.
const char kZhongWen[] = "\xA4\xA4\xA4\xE5";

// The size SetText gives a text with the default font: bytes x maximum width by the height.
void DefaultTextSize(const char* text, long& w, long& h)
{
    CDC dc;
    dc.CreateCompatibleDC(nullptr);
    TEXTMETRICA metrics = {};
    ASSERT_TRUE(dc.GetTextMetrics(&metrics));
    w = static_cast<long>(std::strlen(text)) * metrics.tmMaxCharWidth;
    h = metrics.tmHeight;
}

// Counts the pixels equal to colour.
unsigned long Count(const QorPicBlock& p, const Bytes& colour)
{
    unsigned long n = 0;
    for (long y = 0; y < p.GetHeight(); ++y)
        for (long x = 0; x < p.GetWidth(); ++x)
            n += At(p, x, y) == colour ? 1 : 0;
    return n;
}

void Start(Probe& c, QorPicBlock::ColorType type = QorPicBlock::Bit32)
{
    c.Initialize(type, QorOffScreenBuffer::kDeviceBitmap, 64, 32, nullptr);
}
} // namespace

TEST(QorText, DefaultFormRendersWhiteTextOnAWhiteKeyWithTheRaisedKey)
{
    Probe c;
    Start(c);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    EXPECT_EQ(c.SetText(s, kZhongWen), 1);
    QorPicBlock* p = c.Sprite(s)->GetPicBlock();
    ASSERT_NE(p, nullptr);
    long w = 0, h = 0;
    DefaultTextSize(kZhongWen, w, h);
    EXPECT_EQ(p->GetWidth(), w);
    EXPECT_EQ(p->GetHeight(), h);
    // Text and key were both 0xFF: the key's first byte went up by one (wrapping to 0).
    const Bytes key{0x00, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(Bytes(p->GetMask(), p->GetMask() + 4), key);
    const unsigned long ink = Count(*p, Bytes(4, 0xFF));
    EXPECT_GT(ink, 20u);
    EXPECT_EQ(ink + Count(*p, key), static_cast<unsigned long>(w * h));
    EXPECT_EQ(c.Sprite(s)->GetPrivatePicture(), 1u);
}

TEST(QorText, ColourAndMaskFormsUseTheirColours)
{
    Probe c;
    Start(c);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    const unsigned char red[4] = {0, 0, 255, 0};
    const unsigned char blue[4] = {255, 0, 0, 0};
    EXPECT_EQ(c.SetText(s, "Hi", red), 1);
    QorPicBlock* p = c.Sprite(s)->GetPicBlock();
    EXPECT_EQ(Bytes(p->GetMask(), p->GetMask() + 4), Bytes(4, 0xFF));
    const unsigned long ink = Count(*p, Bytes(red, red + 4));
    EXPECT_GT(ink, 5u);
    EXPECT_EQ(ink + Count(*p, Bytes(4, 0xFF)), static_cast<unsigned long>(p->GetWidth() * p->GetHeight()));

    EXPECT_EQ(c.SetText(s, "Hi", red, blue), 1);
    EXPECT_EQ(Bytes(p->GetMask(), p->GetMask() + 4), Bytes(blue, blue + 4));
    EXPECT_EQ(Count(*p, Bytes(red, red + 4)), ink);
    EXPECT_EQ(Count(*p, Bytes(blue, blue + 4)) + ink, static_cast<unsigned long>(p->GetWidth() * p->GetHeight()));
}

TEST(QorText, TwoCallsOnOneSpriteMakeOnePicture)
{
    Probe c;
    Start(c);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    const unsigned long before = c.GetPicNum();
    c.SetText(s, "one");
    QorPicBlock* first = c.Sprite(s)->GetPicBlock();
    c.SetText(s, "three");
    EXPECT_EQ(c.GetPicNum(), before + 1);
    EXPECT_EQ(c.Sprite(s)->GetPicBlock(), first);
    long w = 0, h = 0;
    DefaultTextSize("three", w, h);
    EXPECT_EQ(first->GetWidth(), w);
}

TEST(QorText, RemovingATextSpriteRemovesItsPicture)
{
    Probe c;
    Start(c);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    c.SetText(s, "gone");
    const unsigned long with = c.GetPicNum();
    EXPECT_EQ(c.RemoveSprite(s), 1);
    EXPECT_EQ(c.GetPicNum(), with - 1);
}

TEST(QorText, GivingATextSpriteAnotherPictureRemovesItsOwn)
{
    Probe c;
    Start(c);
    QorGuider other = c.MakePic(4, 4, 9);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    c.SetText(s, "text");
    const unsigned long with = c.GetPicNum();
    EXPECT_EQ(c.ChangePicBlock(s, other), 1);
    EXPECT_EQ(c.GetPicNum(), with - 1);
    EXPECT_EQ(c.Sprite(s)->GetPrivatePicture(), 0u);
    // The next text makes a new picture of its own again.
    c.SetText(s, "text");
    EXPECT_EQ(c.GetPicNum(), with);
    EXPECT_NE(c.Sprite(s)->GetPicBlock(), &c.Picture(other));
}

TEST(QorText, SharedPictureOfAnotherSpriteStaysUnchanged)
{
    Probe c;
    Start(c);
    QorGuider shared = c.MakePic(5, 3, 9);
    QorGuider a = c.CreateSprite(shared, 5);
    QorGuider b = c.CreateSprite(shared, 6);
    const unsigned long before = c.GetPicNum();
    EXPECT_EQ(c.SetText(a, "changed"), 1);
    EXPECT_EQ(c.Sprite(b)->GetPicBlock(), &c.Picture(shared));
    EXPECT_EQ(c.Picture(shared).GetWidth(), 5);
    EXPECT_EQ(At(c.Picture(shared), 0, 0), Bytes(4, 9));
    EXPECT_NE(c.Sprite(a)->GetPicBlock(), &c.Picture(shared));
    EXPECT_EQ(c.Pic(shared)->useCount, 1u);
    EXPECT_EQ(c.GetPicNum(), before + 1);
    // The shared picture may go once b lets it go; a's own picture is another record.
    c.RemoveSprite(b);
    EXPECT_EQ(c.RemovePic(shared), 1);
}

TEST(QorText, NullOrUnknownSpriteIsRefusedByEveryForm)
{
    Probe c;
    Start(c);
    const unsigned char colour[4] = {1, 2, 3, 4};
    CFont font;
    font.CreateFont(-20, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, "");
    QorGuider none;
    QorGuider pic = c.MakePic(2, 2, 1);
    const unsigned long before = c.GetPicNum();
    EXPECT_EQ(c.SetText(none, "x"), 0);
    EXPECT_EQ(c.SetText(none, "x", colour), 0);
    EXPECT_EQ(c.SetText(none, "x", colour, colour), 0);
    EXPECT_EQ(c.SetText(none, "x", colour, &font), 0);
    EXPECT_EQ(c.SetText(none, "x", colour, colour, &font), 0);
    EXPECT_EQ(c.SetText(none, "x", colour, "", 16, 0, FW_NORMAL, 0, 0, 0), 0);
    EXPECT_EQ(c.SetText(none, pic), 0);
    QorGuider removed = c.CreateSprite(QorGuider(), 5);
    QorGuider copy = removed;
    c.RemoveSprite(removed);
    EXPECT_EQ(c.SetText(copy, "x"), 0);
    EXPECT_EQ(c.GetPicNum(), before);
}

TEST(QorText, FontFormsRenderWithTheGivenOrAFreshFont)
{
    Probe c;
    Start(c);
    CFont font;
    ASSERT_TRUE(font.CreateFont(-32, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 15, 0, 0, ""));
    CDC dc;
    dc.CreateCompatibleDC(nullptr);
    CFont* previous = dc.SelectObject(&font);
    TEXTMETRICA big = {};
    dc.GetTextMetrics(&big);
    dc.SelectObject(previous);

    QorGuider a = c.CreateSprite(QorGuider(), 5);
    const unsigned char colour[4] = {10, 20, 30, 0};
    EXPECT_EQ(c.SetText(a, kZhongWen, colour, &font), 1);
    EXPECT_EQ(c.Sprite(a)->GetPicBlock()->GetHeight(), big.tmHeight);
    EXPECT_EQ(c.Sprite(a)->GetPicBlock()->GetWidth(), 4 * big.tmMaxCharWidth);
    EXPECT_EQ(Bytes(c.Sprite(a)->GetPicBlock()->GetMask(), c.Sprite(a)->GetPicBlock()->GetMask() + 4), Bytes(4, 0xFF));

    QorGuider b = c.CreateSprite(QorGuider(), 5);
    EXPECT_EQ(c.SetText(b, kZhongWen, colour, "", -32, 0, FW_NORMAL, 0, 0, 0), 1);
    const QorPicBlock& pa = *c.Sprite(a)->GetPicBlock();
    const QorPicBlock& pb = *c.Sprite(b)->GetPicBlock();
    ASSERT_EQ(pb.GetWidth(), pa.GetWidth());
    ASSERT_EQ(pb.GetHeight(), pa.GetHeight());
    EXPECT_EQ(std::memcmp(pa.GetDataPtr(), pb.GetDataPtr(), pa.GetSize()), 0);

    // With a mask and a font.
    const unsigned char key[4] = {1, 1, 1, 0};
    QorGuider d = c.CreateSprite(QorGuider(), 5);
    EXPECT_EQ(c.SetText(d, "A", colour, key, &font), 1);
    EXPECT_EQ(Bytes(c.Sprite(d)->GetPicBlock()->GetMask(), c.Sprite(d)->GetPicBlock()->GetMask() + 4),
              Bytes(key, key + 4));
    EXPECT_EQ(c.Sprite(d)->GetPicBlock()->GetHeight(), big.tmHeight);

    // The memory context's own font is the default again for the next call.
    QorGuider e = c.CreateSprite(QorGuider(), 5);
    c.SetText(e, kZhongWen, colour);
    long w = 0, h = 0;
    DefaultTextSize(kZhongWen, w, h);
    EXPECT_EQ(c.Sprite(e)->GetPicBlock()->GetHeight(), h);
}

TEST(QorText, PictureFormCopiesTheWholePicture)
{
    Probe c;
    Start(c);
    QorGuider source = c.MakePic(5, 3, 40);
    const unsigned char key[4] = {7, 7, 7, 7};
    c.Picture(source).SetMask(key);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    const unsigned long before = c.GetPicNum();
    EXPECT_EQ(c.SetText(s, source), 1);
    EXPECT_EQ(c.GetPicNum(), before + 1);
    const QorPicBlock& p = *c.Sprite(s)->GetPicBlock();
    EXPECT_NE(&p, &c.Picture(source));
    EXPECT_EQ(p.GetWidth(), 5);
    EXPECT_EQ(p.GetHeight(), 3);
    EXPECT_EQ(At(p, 4, 2), Bytes(4, 40));
    EXPECT_EQ(Bytes(p.GetMask(), p.GetMask() + 4), Bytes(key, key + 4));
    // Another picture later reuses the sprite's own picture; a child's surface may be copied too.
    QorGuider child = c.CreateChild(3, 2);
    std::memset(c.GetChildPicBlockPtr(child)->GetDataPtr(), 66, c.GetChildPicBlockPtr(child)->GetSize());
    EXPECT_EQ(c.SetText(s, c.SurfaceOf(child)), 1);
    EXPECT_EQ(c.GetPicNum(), before + 1);
    EXPECT_EQ(p.GetWidth(), 3);
    EXPECT_EQ(At(p, 2, 1), Bytes(4, 66));
    // An unknown picture copies nothing but still gives the sprite its picture.
    QorGuider t = c.CreateSprite(QorGuider(), 5);
    EXPECT_EQ(c.SetText(t, QorGuider()), 1);
    EXPECT_EQ(c.GetPicNum(), before + 2);
    EXPECT_EQ(c.Sprite(t)->GetPicBlock()->GetWidth(), 0);
}

TEST(QorText, ChildSpriteKeepsShowingTheChild)
{
    Probe c;
    Start(c);
    QorGuider child = c.CreateChild(8, 4);
    std::memset(c.GetChildPicBlockPtr(child)->GetDataPtr(), 66, c.GetChildPicBlockPtr(child)->GetSize());
    QorGuider sprite = Probe::GuiderOf(c.GetCorrespondingSprite(child));
    const unsigned long before = c.GetPicNum();
    EXPECT_EQ(c.SetText(sprite, "x"), 1);
    EXPECT_EQ(c.GetPicNum(), before);
    EXPECT_EQ(c.GetCorrespondingSprite(child)->GetPicBlock(), c.GetChildPicBlockPtr(child));
    EXPECT_EQ(At(*c.GetChildPicBlockPtr(child), 0, 0), Bytes(4, 66));
}

TEST(QorText, TextSpriteComposesOnlyItsGlyphs)
{
    Probe c;
    Start(c, QorPicBlock::Bit8);
    QorPicBlock& main = *c.GetMainBufferPicBlockPtr();
    const unsigned char background = 3;
    main.SetMask(&background);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    const unsigned char ink = 200;
    const unsigned char key = 1;
    c.SetText(s, kZhongWen, &ink, &key);
    c.MoveSprite(s, 2, 1);
    c.Redraw(0, 0);
    const QorPicBlock& text = *c.Sprite(s)->GetPicBlock();
    unsigned long glyphs = 0;
    for (long y = 0; y < text.GetHeight() && y + 1 < main.GetHeight(); ++y)
        for (long x = 0; x < text.GetWidth() && x + 2 < main.GetWidth(); ++x)
        {
            const unsigned char expected = text.GetPixel(x, y)[0] == ink ? ink : background;
            ASSERT_EQ(main.GetPixel(x + 2, y + 1)[0], expected) << x << "," << y;
            glyphs += expected == ink ? 1 : 0;
        }
    EXPECT_GT(glyphs, 20u);
}

TEST(QorText, WithAWindowTheContextIsCompatibleWithTheWindow)
{
    CWnd window;
    ASSERT_TRUE(window.Create("text", 64, 32));
    Probe c;
    c.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::kDeviceBitmap, 64, 32, &window);
    QorGuider s = c.CreateSprite(QorGuider(), 5);
    const unsigned long presents = QorGetHeadlessWindow(window)->GetPresentCount();
    EXPECT_EQ(c.SetText(s, kZhongWen), 1);
    long w = 0, h = 0;
    DefaultTextSize(kZhongWen, w, h);
    EXPECT_EQ(c.Sprite(s)->GetPicBlock()->GetWidth(), w);
    // Nothing was drawn on the window.
    EXPECT_EQ(QorGetHeadlessWindow(window)->GetPresentCount(), presents);
}
