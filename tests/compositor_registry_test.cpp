// QorOffScreenBuffer: the registries of pictures, child buffers and sprites, their numbers, use counts,
// depth order, attachment bookkeeping and the guider checks.
#include "test_util.h"

#include "qor/compositor.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace
{
using qortest::TempPath;

// Opens the protected side of the compositor to the tests.
class Probe : public QorOffScreenBuffer
{
public:
    using QorOffScreenBuffer::CreateBuffer;
    using QorOffScreenBuffer::CreateNewPic;
    using QorOffScreenBuffer::GetCorrespondingSprite;
    using QorOffScreenBuffer::IsChildExist;
    using QorOffScreenBuffer::MoveAttachedSprites;

    OffScrBuf* Main() { return GetMainBuffer(); }
    OffScrBuf* Buffer(const QorGuider& g) { return FindBuffer(g); }
    QorSprite* Sprite(const QorGuider& g) { return FindSprite(g); }
    PicRecord* Pic(const QorGuider& g) { return FindPicOrSurface(g); }
    QorGuider MainGuider() const { return m_mainBuffer; }
    QorGuider AuxGuider() const { return m_auxBuffer; }
    std::uint32_t NextPictureId() const { return m_nextPictureId; }
    std::uint32_t NextSpriteId() const { return m_nextSpriteId; }
    std::uint32_t NextBufferId() const { return m_nextBufferId; }
    std::uint32_t NearestCapacity() const { return m_nearestCapacity; }
    std::uint32_t NearestCount() const { return m_nearestCount; }
    std::uint32_t TimerClick() const { return m_timerClick; }
    std::uint32_t ActiveEffects() const { return m_activeEffects; }
    const stPaletteEntry& Palette(int i) const { return m_palette[i]; }
    QorIntegration* Integration() const { return m_integration; }
    ShowingMode Mode() const { return m_showingMode; }
    CWnd* Window() const { return m_wnd; }

    // A registry picture of the system colour type, w x h, every byte fill.
    QorGuider MakePic(long w, long h, unsigned char fill = 0)
    {
        QorGuider g = CreateNewPic();
        QorPicBlock& p = Pic(g)->picture;
        p.Reset(GetSystemColorType(), w, h);
        for (unsigned long i = 0; i < p.GetSize(); ++i)
            p.GetDataPtr()[i] = fill;
        return g;
    }

    // Sprite ids of a buffer in list (drawing) order.
    std::vector<unsigned long> Order(const QorGuider& buffer)
    {
        std::vector<unsigned long> ids;
        Cycle<QorSprite>& list = Buffer(buffer)->sprites;
        if (!list.GotoAddress(9ul))
            return ids;
        QorSprite* s = list.GetInfo();
        for (unsigned long i = 0; i < list.GetSize(); ++i, s = list.Next())
            ids.push_back(s->GetId());
        return ids;
    }
    std::vector<unsigned long> MainOrder() { return Order(m_mainBuffer); }
    std::vector<long> MainDepths()
    {
        std::vector<long> depths;
        Cycle<QorSprite>& list = Main()->sprites;
        if (!list.GotoAddress(9ul))
            return depths;
        QorSprite* s = list.GetInfo();
        for (unsigned long i = 0; i < list.GetSize(); ++i, s = list.Next())
            depths.push_back(s->GetZ());
        return depths;
    }
    std::vector<unsigned long> ChildIds()
    {
        std::vector<unsigned long> ids;
        if (!m_children.GotoAddress(9ul))
            return ids;
        OffScrBuf** b = m_children.GetInfo();
        for (unsigned long i = 0; i < m_children.GetSize(); ++i, b = m_children.Next())
            ids.push_back((*b)->id);
        return ids;
    }
};

using Ids = std::vector<unsigned long>;

std::vector<unsigned char> Bytes(const QorPicBlock& p)
{
    const unsigned char* d = p.GetDataPtr();
    return d ? std::vector<unsigned char>(d, d + p.GetSize()) : std::vector<unsigned char>();
}

// Every byte of p numbered from first onwards.
void Number(QorPicBlock& p, unsigned char first = 1)
{
    for (unsigned long i = 0; i < p.GetSize(); ++i)
        p.GetDataPtr()[i] = static_cast<unsigned char>(first + i);
}

void ExpectRect(const QorRect& r, long l, long t, long right, long b)
{
    EXPECT_EQ(r.left, l);
    EXPECT_EQ(r.top, t);
    EXPECT_EQ(r.right, right);
    EXPECT_EQ(r.bottom, b);
}

bool IsNull(const QorGuider& g)
{
    return g.identifier == 0 && g.object == nullptr && g.tag == 0;
}
} // namespace

// Construction.

TEST(QorOffScreenBufferRegistry, MainBufferIs640By480EightBitAndWhollyVisible)
{
    Probe c;
    QorPicBlock* main = c.GetMainBufferPicBlockPtr();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(main->GetWidth(), 640);
    EXPECT_EQ(main->GetHeight(), 480);
    EXPECT_EQ(main->GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(c.GetSystemColorType(), QorPicBlock::Bit8);
    ExpectRect(c.GetVisibleRect(), 0, 0, 639, 479);
}

TEST(QorOffScreenBufferRegistry, MainBufferRecordDefaults)
{
    Probe c;
    Probe::OffScrBuf* main = c.Main();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(c.MainGuider().identifier, 1u);
    EXPECT_EQ(c.MainGuider().object, main);
    EXPECT_EQ(main->id, 1u);
    EXPECT_EQ(main->surface.id, 1u);
    EXPECT_EQ(main->surface.useCount, 1u);
    EXPECT_EQ(main->sprite, nullptr);
    EXPECT_EQ(main->hitTestable, 0);
    EXPECT_EQ(main->alwaysOnTop, 0);
    EXPECT_EQ(main->reserved, 1);
    EXPECT_EQ(main->x, 0);
    EXPECT_EQ(main->y, 0);
    EXPECT_EQ(main->attachedSprite, nullptr);
    EXPECT_EQ(main->attachedCount, 0u);
    EXPECT_EQ(main->effect, 0);
    EXPECT_EQ(main->effectLength, 0u);
    EXPECT_EQ(main->effectProgress, 0u);
    EXPECT_EQ(main->effectState[0] + main->effectState[1] + main->effectState[2], 0u);
    EXPECT_TRUE(IsNull(main->effectPicture));
    EXPECT_TRUE(IsNull(main->effectSprite));
    EXPECT_EQ(main->randomPoints, nullptr);
    EXPECT_EQ(main->randomPointCount, 0u);
    EXPECT_EQ(main->owner, &c);
}

TEST(QorOffScreenBufferRegistry, MainBufferBitmapDescriptionMatchesItsPicture)
{
    Probe c;
    const stBitmapDesc& info = c.Main()->bitmapInfo;
    EXPECT_EQ(info.type, 0);
    EXPECT_EQ(info.width, 640);
    EXPECT_EQ(info.height, 480);
    EXPECT_EQ(info.widthBytes, 640);
    EXPECT_EQ(info.planes, 1);
    EXPECT_EQ(info.bitsPixel, 8);
    EXPECT_EQ(info.bits, c.GetMainBufferPicBlockPtr()->GetDataPtr());
}

TEST(QorOffScreenBufferRegistry, AuxiliaryBufferIsTheSecondBuffer)
{
    Probe c;
    Probe::OffScrBuf* aux = c.Buffer(c.AuxGuider());
    ASSERT_NE(aux, nullptr);
    EXPECT_EQ(aux->id, 2u);
    EXPECT_EQ(aux->surface.id, 2u);
    EXPECT_EQ(aux->surface.picture.GetColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(aux->surface.picture.GetWidth(), 0);
    ExpectRect(aux->visibleRect, 0, 0, 0, 0);
    EXPECT_EQ(aux->hitTestable, 0);
    EXPECT_EQ(aux->reserved, 0);
    EXPECT_EQ(aux->sprite, nullptr);
    EXPECT_EQ(c.ChildIds(), (Ids{1, 2}));
}

TEST(QorOffScreenBufferRegistry, CompositorDefaults)
{
    Probe c;
    EXPECT_EQ(c.NearestCapacity(), 1u);
    EXPECT_EQ(c.NearestCount(), 0u);
    EXPECT_EQ(c.TimerClick(), 100u);
    EXPECT_EQ(c.ActiveEffects(), 0u);
    EXPECT_EQ(c.Integration(), nullptr);
    EXPECT_EQ(c.Window(), nullptr);
    EXPECT_EQ(c.GetPicNum(), 0u);
    EXPECT_EQ(c.GetSpriteNum(), 0u);
    EXPECT_EQ(c.GetTotalSpriteNum(), 0u);
}

TEST(QorOffScreenBufferRegistry, StartPaletteIsAGreyRampOverEntries10To245)
{
    Probe c;
    for (int i = 0; i < 256; ++i)
    {
        const stPaletteEntry& e = c.Palette(i);
        const int level = (i >= 10 && i <= 245) ? i : 0;
        EXPECT_EQ(e.peRed, level) << i;
        EXPECT_EQ(e.peGreen, level) << i;
        EXPECT_EQ(e.peBlue, level) << i;
        EXPECT_EQ(e.peFlags, level ? 1 : 0) << i;
    }
}

TEST(QorOffScreenBufferRegistry, MainAndAuxiliaryBuffersTakeTheFirstNumbers)
{
    Probe c;
    EXPECT_EQ(c.NextBufferId(), 3u);
    EXPECT_EQ(c.NextPictureId(), 3u);
    EXPECT_EQ(c.NextSpriteId(), 1u);
    EXPECT_EQ(c.CreatePic(QorGuider()).identifier, 3u);
    EXPECT_EQ(c.CreateSprite(QorGuider(), 0).identifier, 1u);
}

TEST(QorOffScreenBufferRegistry, SetIntegrationPtrStoresThePointer)
{
    Probe c;
    auto* fake = reinterpret_cast<QorIntegration*>(&c);
    c.SetIntegrationPtr(fake);
    EXPECT_EQ(c.Integration(), fake);
}

// Initialize and the main buffer.

TEST(QorOffScreenBufferRegistry, InitializeChangesTypeSizeModeAndWindow)
{
    Probe c;
    auto* wnd = reinterpret_cast<CWnd*>(&c);
    EXPECT_EQ(c.Initialize(QorPicBlock::Bit16, QorOffScreenBuffer::kIndependent, 800, 600, wnd), 1);
    QorPicBlock* main = c.GetMainBufferPicBlockPtr();
    EXPECT_EQ(main->GetColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(main->GetWidth(), 800);
    EXPECT_EQ(main->GetHeight(), 600);
    EXPECT_EQ(c.GetSystemColorType(), QorPicBlock::Bit16);
    EXPECT_EQ(c.Mode(), QorOffScreenBuffer::kIndependent);
    EXPECT_EQ(c.Window(), wnd);
    const stBitmapDesc& info = c.Main()->bitmapInfo;
    EXPECT_EQ(info.width, 800);
    EXPECT_EQ(info.height, 600);
    EXPECT_EQ(info.widthBytes, 1600);
    EXPECT_EQ(info.bitsPixel, 16);
    EXPECT_EQ(info.bits, main->GetDataPtr());
}

TEST(QorOffScreenBufferRegistry, InitializeWithTheSameTypeStillResizes)
{
    Probe c;
    EXPECT_EQ(c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kDeviceBitmap, 320, 200, nullptr), 1);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetWidth(), 320);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetHeight(), 200);
}

TEST(QorOffScreenBufferRegistry, InitializeWithAModeOutsideTheRangeOnlyChangesTheType)
{
    Probe c;
    c.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::ShowingMode(9), 320, 200, nullptr);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetWidth(), 640);
    c.Initialize(QorPicBlock::Bit32, QorOffScreenBuffer::ShowingMode(9), 32, 20, nullptr);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetColorType(), QorPicBlock::Bit32);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetWidth(), 32);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetHeight(), 20);
}

TEST(QorOffScreenBufferRegistry, InitializeRefusesAnUnknownColourType)
{
    Probe c;
    EXPECT_EQ(c.Initialize(QorPicBlock::ColorType(7), QorOffScreenBuffer::kDeviceBitmap, 10, 10, nullptr), 0);
    EXPECT_EQ(c.GetSystemColorType(), QorPicBlock::Bit8);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetWidth(), 640);
}

TEST(QorOffScreenBufferRegistry, NewPicturesAndSurfacesTakeTheSystemColourType)
{
    Probe c;
    c.Initialize(QorPicBlock::Bit24, QorOffScreenBuffer::kIndependent, 64, 48, nullptr);
    QorGuider pic = c.CreatePic(QorGuider());
    EXPECT_EQ(c.Pic(pic)->picture.GetColorType(), QorPicBlock::Bit24);
    QorGuider child = c.CreateChild(4, 4);
    EXPECT_EQ(c.GetChildPicBlockPtr(child)->GetColorType(), QorPicBlock::Bit24);
}

TEST(QorOffScreenBufferRegistry, SetMainBufferSizeResizesTheMainPicture)
{
    Probe c;
    EXPECT_EQ(c.SetMainBufferSize(100, 50), 1);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetWidth(), 100);
    EXPECT_EQ(c.GetMainBufferPicBlockPtr()->GetHeight(), 50);
    EXPECT_EQ(c.Main()->bitmapInfo.width, 100);
    EXPECT_EQ(c.Main()->bitmapInfo.height, 50);
}

TEST(QorOffScreenBufferRegistry, SetMainVisibleRectMovesTheMainAttachedSprite)
{
    Probe c;
    QorGuider s = c.CreateSprite(QorGuider(), 10);
    QorGuider other = c.CreateSprite(QorGuider(), 10);
    c.MoveSprite(s, 5, 6);
    c.SetAttachToWindow(s, 1);
    EXPECT_EQ(c.SetMainVisibleRect(QorRect(10, 20, 100, 200)), 1);
    ExpectRect(c.GetVisibleRect(), 10, 20, 100, 200);
    EXPECT_EQ(c.GetSpriteCoordinate(s), Point<long>(15, 26));
    EXPECT_EQ(c.Sprite(s)->GetLastX(), 5);
    EXPECT_EQ(c.Sprite(s)->GetLastY(), 6);
    EXPECT_EQ(c.GetSpriteCoordinate(other), Point<long>(0, 0));
}

// Pictures.

TEST(QorOffScreenBufferPictures, CreatePicCopiesTheWholeSource)
{
    Probe c;
    QorGuider src = c.MakePic(3, 2);
    Number(c.Pic(src)->picture);
    QorGuider copy = c.CreatePic(src);
    ASSERT_NE(copy.object, nullptr);
    EXPECT_EQ(copy.tag, 0u);
    EXPECT_EQ(copy.identifier, src.identifier + 1);
    EXPECT_EQ(c.GetPicWidth(copy), 3);
    EXPECT_EQ(c.GetPicHeight(copy), 2);
    EXPECT_EQ(Bytes(c.Pic(copy)->picture), (std::vector<unsigned char>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(c.Pic(copy)->useCount, 0u);
    EXPECT_EQ(c.GetPicNum(), 2u);
}

TEST(QorOffScreenBufferPictures, ANullSourceStillGivesAnEmptyRecord)
{
    Probe c;
    QorGuider pic = c.CreatePic(QorGuider());
    ASSERT_NE(pic.object, nullptr);
    EXPECT_EQ(c.GetPicNum(), 1u);
    EXPECT_EQ(c.GetPicWidth(pic), 0);
    EXPECT_EQ(c.Pic(pic)->picture.GetColorType(), QorPicBlock::Bit8);
}

TEST(QorOffScreenBufferPictures, ARemovedOrForeignSourceIsNotRead)
{
    Probe c, other;
    QorGuider gone = c.MakePic(4, 4, 9);
    QorGuider kept = gone;
    ASSERT_EQ(c.RemovePic(gone), 1);
    QorGuider fromStale = c.CreatePic(kept);
    EXPECT_EQ(c.GetPicWidth(fromStale), 0);
    QorGuider foreign = other.MakePic(5, 5, 1);
    QorGuider fromForeign = c.CreatePic(foreign);
    EXPECT_EQ(c.GetPicWidth(fromForeign), 0);
    EXPECT_EQ(c.GetPicNum(), 2u);
}

TEST(QorOffScreenBufferPictures, CreatePicCopiesAnInclusiveRectangle)
{
    Probe c;
    QorGuider src = c.MakePic(4, 4);
    Number(c.Pic(src)->picture, 0);
    QorGuider part = c.CreatePic(src, 1, 1, 2, 3);
    EXPECT_EQ(c.GetPicWidth(part), 2);
    EXPECT_EQ(c.GetPicHeight(part), 3);
    EXPECT_EQ(Bytes(c.Pic(part)->picture), (std::vector<unsigned char>{5, 6, 9, 10, 13, 14}));
}

TEST(QorOffScreenBufferPictures, CreatePicZoomScalesTheSource)
{
    Probe c;
    QorGuider src = c.MakePic(2, 1);
    Number(c.Pic(src)->picture, 7);
    QorGuider zoom = c.CreatePicZoom(src, 4, 2);
    EXPECT_EQ(c.GetPicWidth(zoom), 4);
    EXPECT_EQ(c.GetPicHeight(zoom), 2);
    EXPECT_EQ(Bytes(c.Pic(zoom)->picture), (std::vector<unsigned char>{7, 7, 8, 8, 7, 7, 8, 8}));
}

TEST(QorOffScreenBufferPictures, CreatePicRotateAndTransparentMatchThePictureTransforms)
{
    Probe c;
    QorGuider src = c.MakePic(5, 3);
    Number(c.Pic(src)->picture, 20);
    QorPicBlock rotated, screened;
    rotated.CreateRotate(c.Pic(src)->picture, 90.0);
    screened.CreateTransparent(c.Pic(src)->picture, 0.5);
    QorGuider r = c.CreatePicRotate(src, 90.0);
    QorGuider t = c.CreatePicTransparent(src, 0.5);
    EXPECT_EQ(c.GetPicWidth(r), rotated.GetWidth());
    EXPECT_EQ(c.GetPicHeight(r), rotated.GetHeight());
    EXPECT_EQ(Bytes(c.Pic(r)->picture), Bytes(rotated));
    EXPECT_EQ(c.GetPicWidth(t), 5);
    EXPECT_EQ(Bytes(c.Pic(t)->picture), Bytes(screened));
    EXPECT_NE(Bytes(c.Pic(t)->picture), Bytes(c.Pic(src)->picture));
}

TEST(QorOffScreenBufferPictures, TransformsOfANullSourceGiveEmptyRecords)
{
    Probe c;
    EXPECT_EQ(c.GetPicWidth(c.CreatePicZoom(QorGuider(), 4, 4)), 0);
    EXPECT_EQ(c.GetPicWidth(c.CreatePicRotate(QorGuider(), 45.0)), 0);
    EXPECT_EQ(c.GetPicWidth(c.CreatePicTransparent(QorGuider(), 0.5)), 0);
    EXPECT_EQ(c.GetPicNum(), 3u);
}

namespace
{
// Writes 4 junk bytes, then p as QBM, then p as QGB; returns the file's path.
std::string WritePictureFile(QorPicBlock& p)
{
    const std::string path = TempPath("pic");
    QorFile file;
    EXPECT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    const unsigned char junk[4] = {0xDE, 0xAD, 0xBE, 0xEF};
    file.Write(junk, 4);
    p.SaveQBM(file);
    p.SaveQGB(file);
    file.Close();
    return path;
}

QorPicBlock SamplePicture()
{
    QorPicBlock p(QorPicBlock::Bit8, 3, 2);
    Number(p, 40);
    return p;
}
} // namespace

TEST(QorOffScreenBufferPictures, CreatePicFromAFileReadsAQbmAtTheCurrentPosition)
{
    Probe c;
    QorPicBlock sample = SamplePicture();
    const std::string path = WritePictureFile(sample);
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
    // At the junk the read fails but the record is still made.
    QorGuider atJunk = c.CreatePic(file);
    ASSERT_NE(atJunk.object, nullptr);
    EXPECT_EQ(c.GetPicWidth(atJunk), 0);
    EXPECT_EQ(file.GetPosition(), 0u);
    ASSERT_TRUE(file.Seek(4, 0, 1));
    QorGuider pic = c.CreatePic(file);
    EXPECT_EQ(c.GetPicWidth(pic), 3);
    EXPECT_EQ(c.GetPicHeight(pic), 2);
    EXPECT_EQ(Bytes(c.Pic(pic)->picture), Bytes(sample));
    EXPECT_EQ(file.GetPosition(), 4u + 32u + 6u + 1u);
}

TEST(QorOffScreenBufferPictures, CreatePicSeeksBeforeReading)
{
    Probe c;
    QorPicBlock sample = SamplePicture();
    const std::string path = WritePictureFile(sample);
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
    QorGuider pic = c.CreatePic(file, 4, 0, 1);
    EXPECT_EQ(Bytes(c.Pic(pic)->picture), Bytes(sample));
    // From the current place: back to the QBM start.
    QorGuider again = c.CreatePic(file, 39, 1, -1);
    EXPECT_EQ(Bytes(c.Pic(again)->picture), Bytes(sample));
}

TEST(QorOffScreenBufferPictures, CreatePicByNameTakesTheFormatFromTheExtensionOrTheTag)
{
    Probe c;
    QorPicBlock sample = SamplePicture();
    const std::string path = WritePictureFile(sample);
    const unsigned long qgbStart = 4 + 32 + 6 + 1;
    struct Case
    {
        const char* name;
        unsigned long at;
        long width;
    } cases[] = {
        {"QGB ", qgbStart, 3},
        {"frame.qgb", qgbStart, 3},
        {"FRAME.QBM", 4, 3},
        {"BMPQ", 4, 3},
        {"a.QgB", qgbStart, 3},
        {"x.bmp", 4, 0},
        {"x.pcx", 4, 0},
        {"x.png", 4, 0},
        {"QGB ", 4, 0} /* a QBM read as QGB: type word "BMPQ" is refused */,
    };
    for (const Case& k : cases)
    {
        QorFile file;
        ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
        ASSERT_TRUE(file.Seek(k.at, 0, 1));
        QorString name(k.name);
        QorGuider pic = c.CreatePic(name, file);
        ASSERT_NE(pic.object, nullptr) << k.name;
        EXPECT_EQ(c.GetPicWidth(pic), k.width) << k.name << " at " << k.at;
        if (k.width)
        {
            EXPECT_EQ(Bytes(c.Pic(pic)->picture), Bytes(sample)) << k.name;
        }
    }
}

TEST(QorOffScreenBufferPictures, CreatePicByNameSeeksFirst)
{
    Probe c;
    QorPicBlock sample = SamplePicture();
    const std::string path = WritePictureFile(sample);
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
    QorString name("QGB ");
    QorGuider pic = c.CreatePic(name, file, 4 + 32 + 6 + 1, 0, 1);
    EXPECT_EQ(Bytes(c.Pic(pic)->picture), Bytes(sample));
}

TEST(QorOffScreenBufferPictures, CreatePicFromAGroupByNameAndIndex)
{
    Probe c;
    QorPicBlock first = SamplePicture();
    QorPicBlock second(QorPicBlock::Bit8, 2, 2);
    Number(second, 90);
    QorDataGroupWriter writer(QorPicGroup::kMagic);
    ASSERT_TRUE(writer.Add("first", &first));
    ASSERT_TRUE(writer.Add("second", &second));
    const std::string path = TempPath("group");
    ASSERT_GT(writer.Write(path.c_str()), 0u);
    QorPicGroup group;
    ASSERT_TRUE(group.Open(path.c_str()));

    QorGuider byName = c.CreatePic(group, "second");
    EXPECT_EQ(Bytes(c.Pic(byName)->picture), Bytes(second));
    QorGuider byIndex = c.CreatePic(group, 0L);
    EXPECT_EQ(Bytes(c.Pic(byIndex)->picture), Bytes(first));
    QorGuider missing = c.CreatePic(group, "third");
    QorGuider past = c.CreatePic(group, 2L);
    QorGuider negative = c.CreatePic(group, -1L);
    QorGuider nullName = c.CreatePic(group, static_cast<const char*>(nullptr));
    for (const QorGuider& g : {missing, past, negative, nullName})
    {
        ASSERT_NE(g.object, nullptr);
        EXPECT_EQ(c.GetPicWidth(g), 0);
    }
    EXPECT_EQ(c.GetPicNum(), 6u);
}

TEST(QorOffScreenBufferPictures, CreatePicFromScreenCopiesTheMainPicture)
{
    Probe c;
    c.SetMainBufferSize(4, 3);
    Number(*c.GetMainBufferPicBlockPtr(), 0);
    QorGuider whole = c.CreatePicFromScreen();
    EXPECT_EQ(Bytes(c.Pic(whole)->picture), Bytes(*c.GetMainBufferPicBlockPtr()));
    QorGuider part = c.CreatePicFromScreen(1, 1, 2, 2);
    EXPECT_EQ(Bytes(c.Pic(part)->picture), (std::vector<unsigned char>{5, 6, 9, 10}));
    QorGuider byRect = c.CreatePicFromScreen(QorRect(3, 2, 2, 0));
    EXPECT_EQ(Bytes(c.Pic(byRect)->picture), (std::vector<unsigned char>{2, 3, 6, 7, 10, 11}));
}

TEST(QorOffScreenBufferPictures, CreatePicFromChildCopiesTheChildsPicture)
{
    Probe c;
    QorGuider child = c.CreateChild(3, 3);
    Number(*c.GetChildPicBlockPtr(child), 0);
    QorGuider whole = c.CreatePicFromChild(child);
    EXPECT_EQ(Bytes(c.Pic(whole)->picture), Bytes(*c.GetChildPicBlockPtr(child)));
    QorGuider part = c.CreatePicFromChild(child, 0, 1, 1, 2);
    EXPECT_EQ(Bytes(c.Pic(part)->picture), (std::vector<unsigned char>{3, 4, 6, 7}));
    QorGuider byRect = c.CreatePicFromChild(child, QorRect(2, 0, 2, 0));
    EXPECT_EQ(Bytes(c.Pic(byRect)->picture), (std::vector<unsigned char>{2}));
    QorGuider unknown = c.CreatePicFromChild(QorGuider());
    ASSERT_NE(unknown.object, nullptr);
    EXPECT_EQ(c.GetPicWidth(unknown), 0);
}

TEST(QorOffScreenBufferPictures, AChildsSurfaceCanBeNamedByAPictureGuider)
{
    Probe c;
    QorGuider child = c.CreateChild(2, 2);
    Probe::OffScrBuf* buffer = c.Buffer(child);
    QorGuider surface;
    surface.identifier = buffer->surface.id;
    surface.object = &buffer->surface;
    EXPECT_EQ(c.GetPicWidth(surface), 2);
    EXPECT_EQ(c.GetPicWidth(c.CreatePic(surface)), 2);
    // It is not a registry picture: RemovePic refuses it.
    EXPECT_EQ(c.RemovePic(surface), 0);
    EXPECT_NE(surface.object, nullptr);
}

TEST(QorOffScreenBufferPictures, RemovePicDeletesAnUnusedPictureAndClearsTheGuider)
{
    Probe c;
    QorGuider a = c.MakePic(2, 2);
    QorGuider b = c.MakePic(2, 2);
    QorGuider copyOfA = a;
    EXPECT_EQ(c.RemovePic(a), 1);
    EXPECT_TRUE(IsNull(a));
    EXPECT_EQ(c.GetPicNum(), 1u);
    EXPECT_EQ(c.RemovePic(copyOfA), 0);
    EXPECT_EQ(c.GetPicWidth(copyOfA), 0);
    EXPECT_EQ(c.GetPicWidth(b), 2);
}

TEST(QorOffScreenBufferPictures, RemovePicRefusesAPictureInUseUntilItsSpriteGoes)
{
    Probe c;
    QorGuider pic = c.MakePic(2, 2);
    QorGuider sprite = c.CreateSprite(pic, 10);
    QorGuider held = pic;
    EXPECT_EQ(c.RemovePic(pic), 0);
    EXPECT_TRUE(pic == held);
    EXPECT_EQ(c.GetPicNum(), 1u);
    EXPECT_EQ(c.Pic(pic)->useCount, 1u);
    ASSERT_EQ(c.RemoveSprite(sprite), 1);
    EXPECT_EQ(c.Pic(pic)->useCount, 0u);
    EXPECT_EQ(c.RemovePic(pic), 1);
    EXPECT_EQ(c.GetPicNum(), 0u);
}

TEST(QorOffScreenBufferPictures, RemovePicRefusesNullAndForgedGuiders)
{
    Probe c;
    QorGuider none;
    EXPECT_EQ(c.RemovePic(none), 0);
    QorGuider pic = c.MakePic(1, 1);
    QorGuider forged = pic;
    forged.identifier += 50;
    EXPECT_EQ(c.RemovePic(forged), 0);
    EXPECT_EQ(c.GetPicNum(), 1u);
    EXPECT_EQ(c.GetPicWidth(forged), 0);
}

TEST(QorOffScreenBufferPictures, PictureNumbersAreNeverReused)
{
    Probe c;
    QorGuider a = c.CreatePic(QorGuider());
    QorGuider b = c.CreatePic(QorGuider());
    EXPECT_EQ(a.identifier, 3u);
    EXPECT_EQ(b.identifier, 4u);
    c.RemovePic(b);
    c.RemovePic(a);
    EXPECT_EQ(c.CreatePic(QorGuider()).identifier, 5u);
    EXPECT_EQ(c.CreateChild().identifier, 3u);
    EXPECT_EQ(c.CreatePic(QorGuider()).identifier, 7u);
}

TEST(QorOffScreenBufferPictures, RestartSystemEmptiesTheRegistryButKeepsSprites)
{
    Probe c;
    QorGuider pic = c.MakePic(3, 3);
    QorGuider other = c.MakePic(1, 1);
    QorGuider child = c.CreateChild(2, 2);
    QorGuider s1 = c.CreateSprite(pic, 10);
    QorGuider s2 = c.CreateSprite(child, other, 10);
    c.MoveSprite(s1, 7, 8);
    const unsigned long sprites = c.GetSpriteNum();
    c.RestartSystem();
    EXPECT_EQ(c.GetPicNum(), 0u);
    EXPECT_EQ(c.GetSpriteNum(), sprites);
    EXPECT_EQ(c.GetSpriteNum(child), 1u);
    // The sprites are left without the deleted pictures, at their places.
    EXPECT_EQ(c.Sprite(s1)->GetPicBlock(), nullptr);
    EXPECT_EQ(c.Sprite(s1)->GetSource().object, nullptr);
    EXPECT_EQ(c.GetSpriteCoordinate(s1), Point<long>(7, 8));
    EXPECT_EQ(c.Sprite(s2)->GetPicBlock(), nullptr);
    // The child's own sprite still shows the child.
    EXPECT_EQ(c.GetCorrespondingSprite(child)->GetPicBlock(), c.GetChildPicBlockPtr(child));
    EXPECT_EQ(c.RemoveSprite(s1), 1);
    EXPECT_EQ(c.RemoveSprite(child, s2), 1);
    EXPECT_EQ(c.RemovePic(pic), 0);
    // Numbering goes on.
    EXPECT_EQ(c.CreatePic(QorGuider()).identifier, 6u);
}

// Use counts.

TEST(QorOffScreenBufferPictures, UseCountsFollowCreateChangeAndRemove)
{
    Probe c;
    QorGuider a = c.MakePic(2, 2);
    QorGuider b = c.MakePic(3, 3);
    QorGuider s1 = c.CreateSprite(a, 5);
    QorGuider s2 = c.CreateSprite(a, 5);
    EXPECT_EQ(c.Pic(a)->useCount, 2u);
    EXPECT_EQ(c.ChangePicBlock(s1, b), 1);
    EXPECT_EQ(c.Pic(a)->useCount, 1u);
    EXPECT_EQ(c.Pic(b)->useCount, 1u);
    EXPECT_EQ(c.ChangePicBlock(s1, b), 1);
    EXPECT_EQ(c.Pic(b)->useCount, 1u);
    EXPECT_EQ(c.ChangePicBlock(s2, QorGuider()), 1);
    EXPECT_EQ(c.Pic(a)->useCount, 0u);
    EXPECT_EQ(c.ChangePicBlock(s2, b), 1);
    EXPECT_EQ(c.Pic(b)->useCount, 2u);
    c.RemoveSprite(s1);
    EXPECT_EQ(c.Pic(b)->useCount, 1u);
    c.RemoveSprite(s2);
    EXPECT_EQ(c.Pic(b)->useCount, 0u);
    EXPECT_EQ(c.RemovePic(a), 1);
    EXPECT_EQ(c.RemovePic(b), 1);
}

// Children.

TEST(QorOffScreenBufferChildren, CreateChildShowsItThroughAMainSpriteAtDepth250)
{
    Probe c;
    QorGuider child = c.CreateChild();
    ASSERT_NE(child.object, nullptr);
    EXPECT_EQ(child.identifier, 3u);
    EXPECT_EQ(child.tag, 0u);
    Probe::OffScrBuf* buffer = c.Buffer(child);
    EXPECT_EQ(buffer->surface.id, 3u);
    EXPECT_EQ(buffer->surface.picture.GetWidth(), 0);
    EXPECT_EQ(buffer->hitTestable, 1);
    EXPECT_EQ(buffer->reserved, 1);
    EXPECT_EQ(buffer->owner, &c);
    ExpectRect(buffer->visibleRect, 0, 0, 0, 0);
    QorSprite* sprite = c.GetCorrespondingSprite(child);
    ASSERT_NE(sprite, nullptr);
    EXPECT_EQ(sprite, buffer->sprite);
    EXPECT_EQ(sprite->GetZ(), 250);
    EXPECT_EQ(sprite->IsChild(), 1);
    EXPECT_EQ(sprite->IsAlwaysOnTop(), 0);
    EXPECT_EQ(sprite->GetPicBlock(), &buffer->surface.picture);
    EXPECT_EQ(sprite->GetSource().object, &buffer->surface);
    EXPECT_EQ(sprite->GetSource().identifier, 3u);
    // The record starts at 1 and its sprite adds one.
    EXPECT_EQ(buffer->surface.useCount, 2u);
    EXPECT_EQ(c.GetSpriteNum(), 1u);
    EXPECT_EQ(c.GetSpriteNum(child), 0u);
    EXPECT_EQ(c.ChildIds(), (Ids{1, 2, 3}));
}

TEST(QorOffScreenBufferChildren, CreateChildWithASizeMakesItAllVisible)
{
    Probe c;
    QorGuider child = c.CreateChild(100, 50);
    QorPicBlock* surface = c.GetChildPicBlockPtr(child);
    EXPECT_EQ(surface->GetWidth(), 100);
    EXPECT_EQ(surface->GetHeight(), 50);
    EXPECT_EQ(surface->GetColorType(), QorPicBlock::Bit8);
    ExpectRect(c.GetChildVisibleRect(child), 0, 0, 99, 49);
    const stBitmapDesc& info = c.Buffer(child)->bitmapInfo;
    EXPECT_EQ(info.width, 100);
    EXPECT_EQ(info.height, 50);
    EXPECT_EQ(info.bits, surface->GetDataPtr());
}

TEST(QorOffScreenBufferChildren, CreateChildOfZeroSizeGivesAnOrderedRectangle)
{
    Probe c;
    QorGuider child = c.CreateChild(0, 0);
    ExpectRect(c.GetChildVisibleRect(child), -1, -1, 0, 0);
    EXPECT_EQ(c.GetChildPicBlockPtr(child)->GetWidth(), 0);
}

TEST(QorOffScreenBufferChildren, CreateChildWithANegativeWidthOrdersItsRectangle)
{
    Probe c;
    QorGuider child = c.CreateChild(-5, 3);
    EXPECT_EQ(c.GetChildPicBlockPtr(child)->GetWidth(), 0);
    EXPECT_EQ(c.GetChildPicBlockPtr(child)->GetHeight(), 3);
    ExpectRect(c.GetChildVisibleRect(child), -6, 0, 0, 2);
}

TEST(QorOffScreenBufferChildren, BufferNumbersAreNeverReused)
{
    Probe c;
    QorGuider a = c.CreateChild();
    EXPECT_EQ(a.identifier, 3u);
    c.RemoveChild(a);
    QorGuider b = c.CreateChild();
    EXPECT_EQ(b.identifier, 4u);
    EXPECT_EQ(c.Buffer(b)->surface.id, 4u);
    EXPECT_EQ(c.CreateSprite(QorGuider(), 1).identifier, 3u);
}

TEST(QorOffScreenBufferChildren, RemoveChildTakesItsSpriteAndClearsTheGuider)
{
    Probe c;
    QorGuider keep = c.CreateChild(4, 4);
    QorGuider child = c.CreateChild(4, 4);
    QorGuider stale = child;
    QorGuider plain = c.CreateSprite(QorGuider(), 10);
    c.CreateSprite(child, QorGuider(), 3);
    c.CreateSprite(child, QorGuider(), 4);
    EXPECT_EQ(c.GetSpriteNum(), 3u);
    EXPECT_EQ(c.GetTotalSpriteNum(), 5u);
    EXPECT_EQ(c.RemoveChild(child), 1);
    EXPECT_TRUE(IsNull(child));
    EXPECT_EQ(c.GetSpriteNum(), 2u);
    EXPECT_EQ(c.GetTotalSpriteNum(), 2u);
    EXPECT_EQ(c.IsChildExist(stale), 0);
    EXPECT_EQ(c.IsChildExist(keep), 1);
    EXPECT_EQ(c.RemoveChild(stale), 0);
    EXPECT_EQ(c.GetSpriteNum(stale), 0u);
    EXPECT_EQ(c.Sprite(plain)->GetZ(), 10);
    EXPECT_EQ(c.ChildIds(), (Ids{1, 2, 3}));
}

TEST(QorOffScreenBufferChildren, RemoveChildReleasesThePicturesItsSpritesShowed)
{
    Probe c;
    QorGuider shared = c.MakePic(2, 2);
    QorGuider own = c.MakePic(2, 2);
    QorGuider child = c.CreateChild(4, 4);
    c.CreateSprite(child, shared, 1);
    QorGuider privateSprite = c.CreateSprite(child, own, 1);
    c.Sprite(privateSprite)->SetPrivatePicture(1);
    EXPECT_EQ(c.Pic(shared)->useCount, 1u);
    EXPECT_EQ(c.RemoveChild(child), 1);
    EXPECT_EQ(c.GetPicNum(), 1u);
    EXPECT_EQ(c.Pic(own), nullptr);
    EXPECT_EQ(c.Pic(shared)->useCount, 0u);
    EXPECT_EQ(c.RemovePic(shared), 1);
}

TEST(QorOffScreenBufferChildren, TheMainAndAuxiliaryBuffersAreNeverRemoved)
{
    Probe c;
    QorGuider main = c.MainGuider();
    QorGuider aux = c.AuxGuider();
    EXPECT_EQ(c.IsChildExist(main), 1);
    EXPECT_EQ(c.RemoveChild(main), 0);
    EXPECT_EQ(c.RemoveChild(aux), 0);
    EXPECT_EQ(main.object, c.Main());
    EXPECT_EQ(c.ChildIds(), (Ids{1, 2}));
}

TEST(QorOffScreenBufferChildren, MoveChildMovesItsSpriteButNotItsAttachedSprites)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider inside = c.CreateSprite(child, QorGuider(), 1);
    c.SetAttachToWindow(child, inside, 1);
    EXPECT_EQ(c.MoveChild(child, 30, 40), 1);
    EXPECT_EQ(c.MoveChild(child, 50, 60), 1);
    QorSprite* sprite = c.GetCorrespondingSprite(child);
    EXPECT_EQ(sprite->GetX(), 50);
    EXPECT_EQ(sprite->GetY(), 60);
    EXPECT_EQ(sprite->GetLastX(), 30);
    EXPECT_EQ(sprite->GetLastY(), 40);
    EXPECT_EQ(c.Buffer(child)->x, 50);
    EXPECT_EQ(c.Buffer(child)->y, 60);
    EXPECT_EQ(c.GetSpriteCoordinate(inside), Point<long>(0, 0));
    EXPECT_EQ(c.MoveChild(QorGuider(), 1, 1), 0);
}

TEST(QorOffScreenBufferChildren, SetChildVisibleRectMovesTheAttachedSpritesByTheCornerChange)
{
    Probe c;
    QorGuider child = c.CreateChild(100, 100);
    QorGuider a = c.CreateSprite(child, QorGuider(), 1);
    QorGuider loose = c.CreateSprite(child, QorGuider(), 1);
    c.MoveSprite(a, 10, 10);
    c.SetAttachToWindow(child, a, 1);
    EXPECT_EQ(c.SetChildVisibleRect(child, 5, 7, 50, 60), 1);
    ExpectRect(c.GetChildVisibleRect(child), 5, 7, 50, 60);
    EXPECT_EQ(c.GetSpriteCoordinate(a), Point<long>(15, 17));
    EXPECT_EQ(c.GetSpriteCoordinate(loose), Point<long>(0, 0));
    // Reversed corners are ordered: the new left-top is (2, 3).
    QorRect reversed;
    reversed.left = 40;
    reversed.top = 30;
    reversed.right = 2;
    reversed.bottom = 3;
    EXPECT_EQ(c.SetChildVisibleRect(child, reversed), 1);
    ExpectRect(c.GetChildVisibleRect(child), 2, 3, 40, 30);
    EXPECT_EQ(c.GetSpriteCoordinate(a), Point<long>(12, 13));
    EXPECT_EQ(c.SetChildVisibleRect(QorGuider(), reversed), 0);
}

TEST(QorOffScreenBufferChildren, SetChildBufferSizeResetsTheSurface)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    Number(*c.GetChildPicBlockPtr(child));
    EXPECT_EQ(c.SetChildBufferSize(child, 3, 2), 1);
    QorPicBlock* surface = c.GetChildPicBlockPtr(child);
    EXPECT_EQ(surface->GetWidth(), 3);
    EXPECT_EQ(surface->GetHeight(), 2);
    EXPECT_EQ(Bytes(*surface), std::vector<unsigned char>(6, 0));
    EXPECT_EQ(c.Buffer(child)->bitmapInfo.widthBytes, 3);
    EXPECT_EQ(c.Buffer(child)->bitmapInfo.bits, surface->GetDataPtr());
    // The visible rectangle is left as it was.
    ExpectRect(c.GetChildVisibleRect(child), 0, 0, 3, 3);
    EXPECT_EQ(c.SetChildBufferSize(QorGuider(), 3, 2), 0);
}

TEST(QorOffScreenBufferChildren, SetChildVisibleAndMaskSetTheFlagsOfItsSprite)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    EXPECT_EQ(c.SetChildVisible(child, 0), 1);
    EXPECT_EQ(c.SetChildMask(child, 0), 1);
    EXPECT_EQ(c.GetCorrespondingSprite(child)->IsShow(), 0);
    EXPECT_EQ(c.GetCorrespondingSprite(child)->IsMask(), 0);
    EXPECT_EQ(c.SetChildVisible(child, 1), 1);
    EXPECT_EQ(c.GetCorrespondingSprite(child)->IsShow(), 1);
    // Unknown children and buffers without a sprite fail.
    EXPECT_EQ(c.SetChildVisible(QorGuider(), 1), 0);
    EXPECT_EQ(c.SetChildMask(c.MainGuider(), 1), 0);
}

TEST(QorOffScreenBufferChildren, ASecondChildIsDrawnOverTheFirst)
{
    Probe c;
    QorGuider a = c.CreateChild(4, 4);
    QorGuider b = c.CreateChild(4, 4);
    const unsigned long sa = c.GetCorrespondingSprite(a)->GetId();
    const unsigned long sb = c.GetCorrespondingSprite(b)->GetId();
    EXPECT_EQ(c.MainOrder(), (Ids{sa, sb}));
}

TEST(QorOffScreenBufferChildren, FocusAndAlwaysOnTopOrderWithThreeChildren)
{
    Probe c;
    QorGuider a = c.CreateChild(4, 4);
    QorGuider b = c.CreateChild(4, 4);
    QorGuider d = c.CreateChild(4, 4);
    auto id = [&c](const QorGuider& child) { return c.GetCorrespondingSprite(child)->GetId(); };
    EXPECT_EQ(c.MainOrder(), (Ids{1, 2, 3}));

    // Focus re-creates the sprite behind its peers, so it is drawn last within its band.
    EXPECT_EQ(c.SetFocus(a), 1);
    EXPECT_EQ(id(a), 4u);
    EXPECT_EQ(c.MainOrder(), (Ids{2, 3, 4}));

    EXPECT_EQ(c.SetChildAlwaysOnTop(b, 1), 1);
    EXPECT_EQ(id(b), 5u);
    EXPECT_EQ(c.MainOrder(), (Ids{3, 4, 5}));
    EXPECT_EQ(c.MainDepths(), (std::vector<long>{250, 250, 100}));
    EXPECT_EQ(c.Buffer(b)->alwaysOnTop, 1);
    EXPECT_EQ(c.GetCorrespondingSprite(b)->IsAlwaysOnTop(), 1);

    // Focusing an ordinary child never lifts it over the upper band.
    EXPECT_EQ(c.SetFocus(d), 1);
    EXPECT_EQ(c.MainOrder(), (Ids{4, 6, 5}));

    // Already on top: nothing is re-created.
    EXPECT_EQ(c.SetChildAlwaysOnTop(b, 1), 1);
    EXPECT_EQ(id(b), 5u);

    // Focus keeps the band.
    EXPECT_EQ(c.SetFocus(b), 1);
    EXPECT_EQ(id(b), 7u);
    EXPECT_EQ(c.GetCorrespondingSprite(b)->GetZ(), 100);

    EXPECT_EQ(c.SetChildAlwaysOnTop(b, 0), 1);
    EXPECT_EQ(c.MainOrder(), (Ids{4, 6, 8}));
    EXPECT_EQ(c.MainDepths(), (std::vector<long>{250, 250, 250}));
    EXPECT_EQ(c.Buffer(b)->alwaysOnTop, 0);
    EXPECT_EQ(c.GetSpriteNum(), 3u);
}

TEST(QorOffScreenBufferChildren, ARenewedChildSpriteKeepsItsPlaceButNotItsFlags)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    c.MoveChild(child, 10, 20);
    c.MoveChild(child, 30, 40);
    c.SetChildVisible(child, 0);
    c.SetChildMask(child, 0);
    Probe::OffScrBuf* buffer = c.Buffer(child);
    QorSprite* before = c.GetCorrespondingSprite(child);
    QorGuider old;
    old.identifier = static_cast<std::uint32_t>(before->GetId());
    old.object = before;
    EXPECT_EQ(c.SetFocus(child), 1);
    QorSprite* after = c.GetCorrespondingSprite(child);
    EXPECT_EQ(after->GetX(), 30);
    EXPECT_EQ(after->GetY(), 40);
    EXPECT_EQ(after->GetLastX(), 0);
    EXPECT_EQ(after->GetLastY(), 0);
    EXPECT_EQ(after->IsShow(), 1);
    EXPECT_EQ(after->IsMask(), 1);
    EXPECT_EQ(after->IsChild(), 1);
    EXPECT_EQ(after->GetPicBlock(), &buffer->surface.picture);
    EXPECT_EQ(buffer->surface.useCount, 2u);
    // The old sprite's guider names nothing now.
    EXPECT_EQ(c.Sprite(old), nullptr);
    EXPECT_EQ(c.MoveSprite(old, 1, 1), 0);
}

TEST(QorOffScreenBufferChildren, FocusAndOnTopFailForUnknownChildrenAndBuffersWithoutSprite)
{
    Probe c;
    EXPECT_EQ(c.SetFocus(QorGuider()), 0);
    EXPECT_EQ(c.SetChildAlwaysOnTop(QorGuider(), 1), 0);
    EXPECT_EQ(c.SetFocus(c.MainGuider()), 0);
    EXPECT_EQ(c.SetChildAlwaysOnTop(c.AuxGuider(), 1), 0);
    QorGuider child = c.CreateChild();
    QorGuider stale = child;
    c.RemoveChild(child);
    EXPECT_EQ(c.SetFocus(stale), 0);
    EXPECT_EQ(c.GetSpriteNum(), 0u);
}

TEST(QorOffScreenBufferChildren, QueriesOfUnknownChildren)
{
    Probe c;
    QorGuider none;
    ExpectRect(c.GetChildVisibleRect(none), 0, 0, 0, 0);
    EXPECT_EQ(c.GetChildPicBlockPtr(none), nullptr);
    EXPECT_EQ(c.GetCorrespondingSprite(none), nullptr);
    EXPECT_EQ(c.IsChildExist(none), 0);
    Probe other;
    QorGuider foreign = other.CreateChild(3, 3);
    EXPECT_EQ(c.IsChildExist(foreign), 0);
    EXPECT_EQ(c.GetChildPicBlockPtr(foreign), nullptr);
    QorGuider forged = foreign;
    forged.object = c.Main();
    EXPECT_EQ(c.IsChildExist(forged), 0);
}

// Sprites.

TEST(QorOffScreenBufferSprites, EqualDepthsGoAfterTheExistingOnes)
{
    Probe c;
    QorGuider first = c.CreateSprite(QorGuider(), 5);
    QorGuider second = c.CreateSprite(QorGuider(), 3);
    QorGuider third = c.CreateSprite(QorGuider(), 5);
    EXPECT_EQ(c.MainOrder(), (Ids{first.identifier, third.identifier, second.identifier}));
    EXPECT_EQ(c.MainDepths(), (std::vector<long>{5, 5, 3}));
}

TEST(QorOffScreenBufferSprites, InsertionOrderForMixedDepths)
{
    Probe c;
    const long depths[] = {10, 30, 20, 30, 5, 40, -2, 20};
    for (long z : depths)
        c.CreateSprite(QorGuider(), z);
    EXPECT_EQ(c.MainOrder(), (Ids{6, 2, 4, 3, 8, 1, 5, 7}));
    EXPECT_EQ(c.MainDepths(), (std::vector<long>{40, 30, 30, 20, 20, 10, 5, -2}));
}

TEST(QorOffScreenBufferSprites, DepthIsClampedTo1000000Only)
{
    Probe c;
    QorGuider high = c.CreateSprite(QorGuider(), 2000000);
    QorGuider top = c.CreateSprite(QorGuider(), 1000000);
    QorGuider low = c.CreateSprite(QorGuider(), -3000000);
    EXPECT_EQ(c.Sprite(high)->GetZ(), 1000000);
    EXPECT_EQ(c.Sprite(top)->GetZ(), 1000000);
    EXPECT_EQ(c.Sprite(low)->GetZ(), -3000000);
    EXPECT_EQ(c.MainOrder(), (Ids{high.identifier, top.identifier, low.identifier}));
}

TEST(QorOffScreenBufferSprites, DepthsBelowThe32BitRangeAreStoredAtItsEnd)
{
    Probe c;
    QorGuider deepest = c.CreateSprite(QorGuider(), LONG_MIN);
    QorGuider low = c.CreateSprite(QorGuider(), -5);
    EXPECT_EQ(c.Sprite(deepest)->GetZ(), INT32_MIN);
    EXPECT_EQ(c.MainOrder(), (Ids{low.identifier, deepest.identifier}));
}

TEST(QorOffScreenBufferSprites, ANewSpriteHasTheDefaultsAndItsPicture)
{
    Probe c;
    QorGuider pic = c.MakePic(6, 4);
    QorGuider s = c.CreateSprite(pic, 12);
    ASSERT_NE(s.object, nullptr);
    EXPECT_EQ(s.tag, 0u);
    QorSprite* sprite = c.Sprite(s);
    EXPECT_EQ(sprite, s.object);
    EXPECT_EQ(sprite->GetId(), s.identifier);
    EXPECT_EQ(sprite->GetPicBlock(), &c.Pic(pic)->picture);
    EXPECT_TRUE(sprite->GetSource() == pic);
    EXPECT_EQ(sprite->GetLastWidth(), 0);
    EXPECT_EQ(sprite->GetLastHeight(), 0);
    EXPECT_EQ(sprite->IsShow(), 1);
    EXPECT_EQ(sprite->IsMask(), 1);
    EXPECT_EQ(sprite->IsChild(), 0);
    EXPECT_EQ(c.Pic(pic)->useCount, 1u);
}

TEST(QorOffScreenBufferSprites, ANullPictureGuiderGivesASpriteWithoutPicture)
{
    Probe c;
    QorGuider s = c.CreateSprite(QorGuider(), 1);
    ASSERT_NE(s.object, nullptr);
    EXPECT_EQ(c.Sprite(s)->GetPicBlock(), nullptr);
    EXPECT_EQ(c.Sprite(s)->GetSource().object, nullptr);
}

TEST(QorOffScreenBufferSprites, UnknownChildOrPictureGivesANullGuider)
{
    Probe c, other;
    QorGuider foreignPic = other.MakePic(2, 2);
    QorGuider foreignChild = other.CreateChild(2, 2);
    EXPECT_TRUE(IsNull(c.CreateSprite(QorGuider(), QorGuider(), 1)));
    EXPECT_TRUE(IsNull(c.CreateSprite(foreignChild, QorGuider(), 1)));
    EXPECT_TRUE(IsNull(c.CreateSprite(foreignPic, 1)));
    QorGuider gone = c.MakePic(1, 1);
    QorGuider stale = gone;
    c.RemovePic(gone);
    EXPECT_TRUE(IsNull(c.CreateSprite(stale, 1)));
    EXPECT_EQ(c.GetTotalSpriteNum(), 0u);
    // Refusals take no number.
    EXPECT_EQ(c.CreateSprite(QorGuider(), 1).identifier, 1u);
}

TEST(QorOffScreenBufferSprites, SpritesOfAChildLiveInItsOwnList)
{
    Probe c;
    QorGuider child = c.CreateChild(8, 8);
    QorGuider pic = c.MakePic(2, 2);
    QorGuider s1 = c.CreateSprite(child, pic, 7);
    QorGuider s2 = c.CreateSprite(child, QorGuider(), 9);
    c.CreateSprite(QorGuider(), 1);
    EXPECT_EQ(c.GetSpriteNum(child), 2u);
    EXPECT_EQ(c.GetSpriteNum(), 2u);
    EXPECT_EQ(c.GetTotalSpriteNum(), 4u);
    EXPECT_EQ(c.Order(child), (Ids{s2.identifier, s1.identifier}));
    EXPECT_EQ(c.Pic(pic)->useCount, 1u);
}

TEST(QorOffScreenBufferSprites, SpriteNumbersAreNeverReused)
{
    Probe c;
    QorGuider a = c.CreateSprite(QorGuider(), 1);
    QorGuider b = c.CreateSprite(QorGuider(), 1);
    EXPECT_EQ(a.identifier, 1u);
    EXPECT_EQ(b.identifier, 2u);
    c.RemoveSprite(b);
    c.RemoveSprite(a);
    EXPECT_EQ(c.CreateSprite(QorGuider(), 1).identifier, 3u);
    EXPECT_EQ(c.CreateChild().identifier, 3u);
    EXPECT_EQ(c.CreateSprite(QorGuider(), 1).identifier, 5u);
}

TEST(QorOffScreenBufferSprites, RemoveSpriteUnlinksAndClearsTheGuider)
{
    Probe c;
    QorGuider a = c.CreateSprite(QorGuider(), 3);
    QorGuider b = c.CreateSprite(QorGuider(), 2);
    QorGuider d = c.CreateSprite(QorGuider(), 1);
    QorGuider held = b;
    EXPECT_EQ(c.RemoveSprite(b), 1);
    EXPECT_TRUE(IsNull(b));
    EXPECT_EQ(c.MainOrder(), (Ids{a.identifier, d.identifier}));
    EXPECT_EQ(c.RemoveSprite(held), 0);
    EXPECT_EQ(c.RemoveSprite(b), 0);
    EXPECT_EQ(c.GetSpriteNum(), 2u);
}

TEST(QorOffScreenBufferSprites, RemoveSpriteLooksOnlyInTheNamedBuffer)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    QorGuider other = c.CreateChild(4, 4);
    QorGuider s = c.CreateSprite(child, QorGuider(), 1);
    QorGuider copy = s;
    EXPECT_EQ(c.RemoveSprite(copy), 0);
    EXPECT_EQ(c.RemoveSprite(other, copy), 0);
    EXPECT_EQ(c.RemoveSprite(QorGuider(), copy), 0);
    EXPECT_FALSE(IsNull(copy));
    EXPECT_EQ(c.RemoveSprite(child, s), 1);
    EXPECT_TRUE(IsNull(s));
    EXPECT_EQ(c.GetSpriteNum(child), 0u);
}

TEST(QorOffScreenBufferSprites, RemoveSpriteDeletesItsPrivatePicture)
{
    Probe c;
    QorGuider pic = c.MakePic(2, 2);
    QorGuider s = c.CreateSprite(pic, 1);
    c.Sprite(s)->SetPrivatePicture(1);
    EXPECT_EQ(c.GetPicNum(), 1u);
    EXPECT_EQ(c.RemoveSprite(s), 1);
    EXPECT_EQ(c.GetPicNum(), 0u);
    EXPECT_EQ(c.Pic(pic), nullptr);
}

TEST(QorOffScreenBufferSprites, MoveSpriteRecordsTheOldAreaWithTheCurrentSize)
{
    Probe c;
    QorGuider pic = c.MakePic(6, 4);
    QorGuider s = c.CreateSprite(pic, 1);
    EXPECT_EQ(c.MoveSprite(s, 10, 20), 1);
    EXPECT_EQ(c.MoveSprite(s, 15, 25), 1);
    QorSprite* sprite = c.Sprite(s);
    EXPECT_EQ(sprite->GetX(), 15);
    EXPECT_EQ(sprite->GetY(), 25);
    EXPECT_EQ(sprite->GetLastX(), 10);
    EXPECT_EQ(sprite->GetLastY(), 20);
    EXPECT_EQ(sprite->GetLastWidth(), 6);
    EXPECT_EQ(sprite->GetLastHeight(), 4);
    QorGuider bare = c.CreateSprite(QorGuider(), 1);
    c.MoveSprite(bare, 3, 3);
    EXPECT_EQ(c.Sprite(bare)->GetLastWidth(), 0);
}

TEST(QorOffScreenBufferSprites, ChildFormsActOnTheSpriteWithoutConsultingTheChild)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    QorGuider s = c.CreateSprite(child, QorGuider(), 1);
    QorGuider mainSprite = c.CreateSprite(QorGuider(), 1);
    // The main-buffer form reaches a child's sprite, and a wrong or null child does not matter.
    EXPECT_EQ(c.MoveSprite(s, 4, 5), 1);
    EXPECT_EQ(c.MoveSprite(QorGuider(), s, 6, 7), 1);
    EXPECT_EQ(c.GetSpriteCoordinate(s), Point<long>(6, 7));
    EXPECT_EQ(c.GetSpriteCoordinate(child, mainSprite), Point<long>(0, 0));
    EXPECT_EQ(c.MoveSprite(child, mainSprite, 8, 9), 1);
    EXPECT_EQ(c.GetSpriteCoordinate(QorGuider(), mainSprite), Point<long>(8, 9));
    EXPECT_EQ(c.GetSpriteCoordinate(QorGuider()), Point<long>(0, 0));
    EXPECT_EQ(c.MoveSprite(QorGuider(), 1, 1), 0);
}

TEST(QorOffScreenBufferSprites, ChangePicBlockMovesThePictureAndRecordsTheOldArea)
{
    Probe c;
    QorGuider a = c.MakePic(6, 4);
    QorGuider b = c.MakePic(2, 3);
    QorGuider s = c.CreateSprite(a, 1);
    c.MoveSprite(s, 10, 20);
    EXPECT_EQ(c.ChangePicBlock(s, b), 1);
    QorSprite* sprite = c.Sprite(s);
    EXPECT_EQ(sprite->GetPicBlock(), &c.Pic(b)->picture);
    EXPECT_TRUE(sprite->GetSource() == b);
    EXPECT_EQ(sprite->GetLastX(), 10);
    EXPECT_EQ(sprite->GetLastY(), 20);
    EXPECT_EQ(sprite->GetLastWidth(), 6);
    EXPECT_EQ(sprite->GetLastHeight(), 4);
    EXPECT_EQ(c.ChangePicBlock(QorGuider(), s, QorGuider()), 1);
    EXPECT_EQ(sprite->GetPicBlock(), nullptr);
    EXPECT_EQ(sprite->GetLastWidth(), 2);
    EXPECT_EQ(sprite->GetLastHeight(), 3);
    EXPECT_EQ(c.ChangePicBlock(s, a), 1);
    EXPECT_EQ(sprite->GetLastWidth(), 0);
    EXPECT_EQ(sprite->GetLastHeight(), 0);
}

TEST(QorOffScreenBufferSprites, ChangePicBlockDeletesAPrivateOldPicture)
{
    Probe c;
    QorGuider own = c.MakePic(2, 2);
    QorGuider next = c.MakePic(2, 2);
    QorGuider s = c.CreateSprite(own, 1);
    c.Sprite(s)->SetPrivatePicture(1);
    EXPECT_EQ(c.ChangePicBlock(s, next), 1);
    EXPECT_EQ(c.Sprite(s)->GetPrivatePicture(), 0u);
    EXPECT_EQ(c.GetPicNum(), 1u);
    EXPECT_EQ(c.Pic(own), nullptr);
    EXPECT_EQ(c.Pic(next)->useCount, 1u);
}

TEST(QorOffScreenBufferSprites, ChangePicBlockRefusesNullChildAndUnknownGuiders)
{
    Probe c;
    QorGuider pic = c.MakePic(2, 2);
    QorGuider child = c.CreateChild(4, 4);
    QorGuider childSprite;
    childSprite.identifier = static_cast<std::uint32_t>(c.GetCorrespondingSprite(child)->GetId());
    childSprite.object = c.GetCorrespondingSprite(child);
    EXPECT_EQ(c.ChangePicBlock(QorGuider(), pic), 0);
    EXPECT_EQ(c.ChangePicBlock(childSprite, pic), 0);
    EXPECT_EQ(c.GetCorrespondingSprite(child)->GetPicBlock(), c.GetChildPicBlockPtr(child));
    QorGuider s = c.CreateSprite(pic, 1);
    QorGuider gone = c.MakePic(1, 1);
    QorGuider stale = gone;
    c.RemovePic(gone);
    EXPECT_EQ(c.ChangePicBlock(s, stale), 0);
    EXPECT_EQ(c.Sprite(s)->GetPicBlock(), &c.Pic(pic)->picture);
    EXPECT_EQ(c.Pic(pic)->useCount, 1u);
}

TEST(QorOffScreenBufferSprites, FlagQueriesAndSettersInBothForms)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    QorGuider s = c.CreateSprite(child, QorGuider(), 1);
    EXPECT_EQ(c.IsRegionCheck(s), 1);
    EXPECT_EQ(c.IsColorReverse(s), 0);
    EXPECT_EQ(c.IsSpriteVisible(s), 1);
    EXPECT_EQ(c.IsMask(s), 1);
    EXPECT_EQ(c.IsHReverse(s), 0);
    EXPECT_EQ(c.IsVReverse(s), 0);
    EXPECT_EQ(c.IsAttachToWindow(s), 0);
    EXPECT_EQ(c.SetRegionCheck(s, 0), 1);
    EXPECT_EQ(c.SetColorReverse(child, s, 1), 1);
    EXPECT_EQ(c.SetSpriteVisible(s, 0), 1);
    EXPECT_EQ(c.SetMask(child, s, 0), 1);
    EXPECT_EQ(c.SetHReverse(s, 1), 1);
    EXPECT_EQ(c.SetVReverse(child, s, 1), 1);
    EXPECT_EQ(c.IsRegionCheck(child, s), 0);
    EXPECT_EQ(c.IsColorReverse(s), 1);
    EXPECT_EQ(c.IsSpriteVisible(child, s), 0);
    EXPECT_EQ(c.IsMask(s), 0);
    EXPECT_EQ(c.IsHReverse(child, s), 1);
    EXPECT_EQ(c.IsVReverse(s), 1);
    EXPECT_EQ(c.IsAttachToWindow(child, s), 0);
    QorSprite* sprite = c.Sprite(s);
    EXPECT_EQ(sprite->IsCheckRegion(), 0);
    EXPECT_EQ(sprite->IsShow(), 0);
}

TEST(QorOffScreenBufferSprites, FlagOperationsOnAnUnknownSpriteGiveZero)
{
    Probe c;
    QorGuider none;
    QorGuider s = c.CreateSprite(QorGuider(), 1);
    QorGuider stale = s;
    c.RemoveSprite(s);
    for (const QorGuider& g : {none, stale})
    {
        EXPECT_EQ(c.IsRegionCheck(g), 0);
        EXPECT_EQ(c.IsSpriteVisible(g), 0);
        EXPECT_EQ(c.IsMask(QorGuider(), g), 0);
        EXPECT_EQ(c.SetRegionCheck(g, 1), 0);
        EXPECT_EQ(c.SetColorReverse(g, 1), 0);
        EXPECT_EQ(c.SetSpriteVisible(g, 1), 0);
        EXPECT_EQ(c.SetMask(g, 1), 0);
        EXPECT_EQ(c.SetHReverse(g, 1), 0);
        EXPECT_EQ(c.SetVReverse(QorGuider(), g, 1), 0);
        EXPECT_EQ(c.SetAttributes(g, 1, 1, 1, 1), 0);
        EXPECT_EQ(c.SetAttachToWindow(g, 1), 0);
    }
}

TEST(QorOffScreenBufferSprites, SetAttributesPairsMaskWithShowAndIgnoresItsSecondValue)
{
    Probe c;
    QorGuider s = c.CreateSprite(QorGuider(), 1);
    QorSprite* sprite = c.Sprite(s);
    EXPECT_EQ(c.SetAttributes(s, 0, 1, 1, 0), 1);
    EXPECT_EQ(sprite->IsShow(), 0);
    EXPECT_EQ(sprite->IsMask(), 0);
    EXPECT_EQ(sprite->IsHReverse(), 1);
    EXPECT_EQ(sprite->IsVReverse(), 0);
    EXPECT_EQ(c.SetAttributes(QorGuider(), s, 1, 0, 0, 1), 1);
    EXPECT_EQ(sprite->IsShow(), 1);
    EXPECT_EQ(sprite->IsMask(), 1);
    EXPECT_EQ(sprite->IsHReverse(), 0);
    EXPECT_EQ(sprite->IsVReverse(), 1);
    EXPECT_EQ(sprite->IsCheckRegion(), 1);
}

TEST(QorOffScreenBufferSprites, ReceiveSpriteRectGivesTheCurrentArea)
{
    Probe c;
    QorGuider pic = c.MakePic(6, 4);
    QorGuider s = c.CreateSprite(pic, 1);
    c.MoveSprite(s, 10, 20);
    QorRect r;
    EXPECT_EQ(c.ReceiveSpriteRect(s, &r), 1);
    ExpectRect(r, 10, 20, 15, 23);
    QorGuider bare = c.CreateSprite(QorGuider(), 1);
    c.MoveSprite(bare, 3, 4);
    EXPECT_EQ(c.ReceiveSpriteRect(QorGuider(), bare, &r), 1);
    ExpectRect(r, 3, 4, 2, 3);
    EXPECT_EQ(c.ReceiveSpriteRect(s, nullptr), 0);
    EXPECT_EQ(c.ReceiveSpriteRect(QorGuider(), &r), 0);
}

// Attachment to the window.

TEST(QorOffScreenBufferAttach, CountsAndCacheThroughAnAttachDetachSequence)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider a = c.CreateSprite(child, QorGuider(), 1);
    QorGuider b = c.CreateSprite(child, QorGuider(), 1);
    QorGuider d = c.CreateSprite(child, QorGuider(), 1);
    Probe::OffScrBuf* buffer = c.Buffer(child);
    QorSprite* sa = c.Sprite(a);
    QorSprite* sb = c.Sprite(b);

    EXPECT_EQ(c.SetAttachToWindow(child, a, 1), 1);
    EXPECT_EQ(buffer->attachedCount, 1u);
    EXPECT_EQ(buffer->attachedSprite, sa);
    EXPECT_EQ(c.IsAttachToWindow(a), 1);

    EXPECT_EQ(c.SetAttachToWindow(child, b, 1), 1);
    EXPECT_EQ(buffer->attachedCount, 2u);
    EXPECT_EQ(buffer->attachedSprite, nullptr);

    // Attaching an attached sprite again changes nothing.
    EXPECT_EQ(c.SetAttachToWindow(child, a, 1), 1);
    EXPECT_EQ(buffer->attachedCount, 2u);

    EXPECT_EQ(c.SetAttachToWindow(child, d, 1), 1);
    EXPECT_EQ(buffer->attachedCount, 3u);
    EXPECT_EQ(c.SetAttachToWindow(child, d, 0), 1);
    EXPECT_EQ(buffer->attachedCount, 2u);
    EXPECT_EQ(buffer->attachedSprite, nullptr);

    // Down to one: the remaining attached sprite is found and cached.
    EXPECT_EQ(c.SetAttachToWindow(child, a, 0), 1);
    EXPECT_EQ(buffer->attachedCount, 1u);
    EXPECT_EQ(buffer->attachedSprite, sb);
    EXPECT_EQ(c.IsAttachToWindow(a), 0);

    // Detaching a detached sprite changes nothing.
    EXPECT_EQ(c.SetAttachToWindow(child, a, 0), 1);
    EXPECT_EQ(buffer->attachedCount, 1u);
    EXPECT_EQ(buffer->attachedSprite, sb);

    EXPECT_EQ(c.SetAttachToWindow(child, b, 0), 1);
    EXPECT_EQ(buffer->attachedCount, 0u);
    EXPECT_EQ(buffer->attachedSprite, nullptr);
}

TEST(QorOffScreenBufferAttach, TheMainFormWorksOnMainSpritesOnly)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider inChild = c.CreateSprite(child, QorGuider(), 1);
    QorGuider inMain = c.CreateSprite(QorGuider(), 1);
    EXPECT_EQ(c.SetAttachToWindow(inChild, 1), 0);
    EXPECT_EQ(c.SetAttachToWindow(child, inMain, 1), 0);
    EXPECT_EQ(c.IsAttachToWindow(inChild), 0);
    EXPECT_EQ(c.SetAttachToWindow(inMain, 1), 1);
    EXPECT_EQ(c.Main()->attachedCount, 1u);
    EXPECT_EQ(c.Main()->attachedSprite, c.Sprite(inMain));
    EXPECT_EQ(c.Buffer(child)->attachedCount, 0u);
}

TEST(QorOffScreenBufferAttach, MoveAttachedSpritesMovesTheCachedSpriteOnly)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider a = c.CreateSprite(child, QorGuider(), 1);
    QorGuider b = c.CreateSprite(child, QorGuider(), 1);
    c.MoveSprite(a, 1, 2);
    c.SetAttachToWindow(child, a, 1);
    // A flag set behind the compositor's back is not counted: with one attached only the cache moves.
    c.Sprite(b)->SetAttachToWindow(1);
    c.MoveAttachedSprites(c.Buffer(child), 10, 20);
    EXPECT_EQ(c.GetSpriteCoordinate(a), Point<long>(11, 22));
    EXPECT_EQ(c.Sprite(a)->GetLastX(), 1);
    EXPECT_EQ(c.Sprite(a)->GetLastY(), 2);
    EXPECT_EQ(c.GetSpriteCoordinate(b), Point<long>(0, 0));
}

TEST(QorOffScreenBufferAttach, MoveAttachedSpritesMovesEveryFlaggedSpriteFromTwoOn)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider a = c.CreateSprite(child, QorGuider(), 1);
    QorGuider b = c.CreateSprite(child, QorGuider(), 1);
    QorGuider loose = c.CreateSprite(child, QorGuider(), 1);
    c.SetAttachToWindow(child, a, 1);
    c.SetAttachToWindow(child, b, 1);
    c.MoveAttachedSprites(c.Buffer(child), -3, 4);
    EXPECT_EQ(c.GetSpriteCoordinate(a), Point<long>(-3, 4));
    EXPECT_EQ(c.GetSpriteCoordinate(b), Point<long>(-3, 4));
    EXPECT_EQ(c.GetSpriteCoordinate(loose), Point<long>(0, 0));
}

TEST(QorOffScreenBufferAttach, RemovingTheCachedSpriteLeavesNothingToMove)
{
    Probe c;
    QorGuider child = c.CreateChild(10, 10);
    QorGuider a = c.CreateSprite(child, QorGuider(), 1);
    QorGuider other = c.CreateSprite(child, QorGuider(), 1);
    c.SetAttachToWindow(child, a, 1);
    EXPECT_EQ(c.RemoveSprite(child, a), 1);
    EXPECT_EQ(c.Buffer(child)->attachedSprite, nullptr);
    EXPECT_EQ(c.Buffer(child)->attachedCount, 1u);
    EXPECT_EQ(c.SetChildVisibleRect(child, 5, 5, 9, 9), 1);
    EXPECT_EQ(c.GetSpriteCoordinate(other), Point<long>(0, 0));
}

// Nearest sprites.

TEST(QorOffScreenBufferNearest, TheTableHoldsOneSpriteAtDepth30)
{
    Probe c;
    QorGuider child = c.CreateChild(4, 4);
    QorGuider first = c.CreateNearestSprite();
    ASSERT_NE(first.object, nullptr);
    EXPECT_EQ(c.NearestCount(), 1u);
    EXPECT_EQ(c.Sprite(first)->GetZ(), 30);
    EXPECT_EQ(c.Sprite(first)->GetPicBlock(), nullptr);
    QorGuider second = c.CreateNearestSprite();
    EXPECT_TRUE(second == first);
    EXPECT_EQ(c.NearestCount(), 1u);
    EXPECT_EQ(c.GetSpriteNum(), 2u);
    // Nearer than any child: drawn after the depth-250 child sprite.
    EXPECT_EQ(c.MainOrder(), (Ids{c.GetCorrespondingSprite(child)->GetId(), first.identifier}));
}

TEST(QorOffScreenBufferNearest, WithAPictureTheFullTableGivesItsLastEntryThePicture)
{
    Probe c;
    QorGuider a = c.MakePic(2, 2);
    QorGuider b = c.MakePic(3, 3);
    QorGuider first = c.CreateNearestSprite(a);
    EXPECT_EQ(c.Sprite(first)->GetPicBlock(), &c.Pic(a)->picture);
    EXPECT_EQ(c.Pic(a)->useCount, 1u);
    QorGuider again = c.CreateNearestSprite(b);
    EXPECT_TRUE(again == first);
    EXPECT_EQ(c.Sprite(first)->GetPicBlock(), &c.Pic(b)->picture);
    EXPECT_EQ(c.Pic(a)->useCount, 0u);
    EXPECT_EQ(c.Pic(b)->useCount, 1u);
    // The form without a picture leaves the full table's entry as it is.
    EXPECT_TRUE(c.CreateNearestSprite() == first);
    EXPECT_EQ(c.Sprite(first)->GetPicBlock(), &c.Pic(b)->picture);
    EXPECT_EQ(c.GetSpriteNum(), 1u);
}

TEST(QorOffScreenBufferNearest, RemoveNearestSpriteFreesTheSlot)
{
    Probe c;
    QorGuider first = c.CreateNearestSprite();
    QorGuider held = first;
    QorGuider other = c.CreateSprite(QorGuider(), 30);
    EXPECT_EQ(c.RemoveNearestSprite(other), 0);
    EXPECT_FALSE(IsNull(other));
    EXPECT_EQ(c.RemoveNearestSprite(first), 1);
    EXPECT_TRUE(IsNull(first));
    EXPECT_EQ(c.NearestCount(), 0u);
    EXPECT_EQ(c.GetSpriteNum(), 1u);
    EXPECT_EQ(c.Sprite(held), nullptr);
    EXPECT_EQ(c.RemoveNearestSprite(held), 0);
    QorGuider next = c.CreateNearestSprite();
    EXPECT_EQ(next.identifier, 3u);
    EXPECT_EQ(c.NearestCount(), 1u);
}

TEST(QorOffScreenBufferNearest, AnEntryRemovedBehindTheTablesBackIsStillRemovable)
{
    Probe c;
    QorGuider first = c.CreateNearestSprite();
    QorGuider copy = first;
    EXPECT_EQ(c.RemoveSprite(copy), 1);
    QorGuider pic = c.MakePic(1, 1);
    // The stale entry is returned but never followed.
    QorGuider same = c.CreateNearestSprite(pic);
    EXPECT_TRUE(same == first);
    EXPECT_EQ(c.Pic(pic)->useCount, 0u);
    EXPECT_EQ(c.RemoveNearestSprite(first), 1);
    EXPECT_EQ(c.NearestCount(), 0u);
}

// Guider checks.

TEST(QorOffScreenBufferGuiders, ForeignGuidersAreRefusedEverywhere)
{
    Probe c, other;
    QorGuider pic = other.MakePic(2, 2);
    QorGuider child = other.CreateChild(2, 2);
    QorGuider sprite = other.CreateSprite(pic, 1);
    EXPECT_EQ(c.RemovePic(pic), 0);
    EXPECT_EQ(c.RemoveChild(child), 0);
    EXPECT_EQ(c.RemoveSprite(sprite), 0);
    EXPECT_EQ(c.MoveSprite(sprite, 1, 1), 0);
    EXPECT_EQ(c.ChangePicBlock(sprite, QorGuider()), 0);
    EXPECT_EQ(c.GetPicWidth(pic), 0);
    EXPECT_EQ(c.GetSpriteNum(child), 0u);
    EXPECT_EQ(c.MoveChild(child, 1, 1), 0);
    EXPECT_EQ(c.SetFocus(child), 0);
    EXPECT_EQ(other.GetSpriteCoordinate(sprite), Point<long>(0, 0));
    EXPECT_EQ(other.Pic(pic)->useCount, 1u);
    EXPECT_FALSE(IsNull(pic));
    EXPECT_FALSE(IsNull(child));
    EXPECT_FALSE(IsNull(sprite));
}

TEST(QorOffScreenBufferGuiders, AGuiderWithTheRightRecordButAnotherNumberIsRefused)
{
    Probe c;
    QorGuider s = c.CreateSprite(QorGuider(), 1);
    QorGuider forged = s;
    forged.identifier = 99;
    EXPECT_EQ(c.MoveSprite(forged, 5, 5), 0);
    EXPECT_EQ(c.RemoveSprite(forged), 0);
    EXPECT_EQ(c.GetSpriteNum(), 1u);
    EXPECT_EQ(c.GetSpriteCoordinate(s), Point<long>(0, 0));
    // The tag is free for the caller and does not matter.
    QorGuider tagged = s;
    tagged.tag = 7;
    EXPECT_EQ(c.MoveSprite(tagged, 5, 5), 1);
    EXPECT_EQ(c.RemoveSprite(tagged), 1);
}

TEST(QorOffScreenBufferGuiders, DestroyingAFullCompositorFreesEverything)
{
    auto* c = new Probe;
    QorGuider pic = c->MakePic(8, 8);
    QorGuider child = c->CreateChild(16, 16);
    c->CreateSprite(pic, 5);
    c->CreateSprite(child, pic, 5);
    c->CreateNearestSprite(pic);
    QorGuider inChild = c->CreateSprite(child, QorGuider(), 1);
    c->SetAttachToWindow(child, inChild, 1);
    c->Buffer(child)->randomPoints = new Point<long>[4];
    c->Buffer(child)->randomPointCount = 4;
    EXPECT_EQ(c->GetTotalSpriteNum(), 5u);
    delete c;
}

TEST(QorOffScreenBufferRegistry, GuidersUsedJustBeforeTheirRecordsWereRemovedAreRefusedAfter)
{
    QorOffScreenBuffer c;
    QorGuider pic = c.CreatePicFromScreen(0, 0, 3, 3);
    QorGuider sprite = c.CreateSprite(pic, 10);
    // Looked up (and remembered) right before the removal.
    ASSERT_EQ(c.MoveSprite(sprite, 5, 6), 1);
    ASSERT_EQ(c.GetPicWidth(pic), 4);
    QorGuider staleSprite = sprite;
    ASSERT_EQ(c.RemoveSprite(sprite), 1);
    QorGuider stalePic = pic;
    ASSERT_EQ(c.RemovePic(pic), 1);
    // New records, which may take the freed addresses.
    QorGuider otherPic = c.CreatePicFromScreen(0, 0, 1, 1);
    QorGuider other = c.CreateSprite(otherPic, 10);
    EXPECT_EQ(c.MoveSprite(staleSprite, 1, 1), 0);
    EXPECT_EQ(c.ChangePicBlock(other, stalePic), 0);
    EXPECT_EQ(c.GetPicWidth(stalePic), 0);
    EXPECT_EQ(c.GetSpriteCoordinate(other), Point<long>(0, 0));
    EXPECT_EQ(c.GetPicWidth(otherPic), 2);
}

TEST(QorOffScreenBufferRegistry, StepSpriteMovesThenChangesThePictureAndGivesBothAreas)
{
    QorOffScreenBuffer c;
    QorGuider a = c.CreatePicFromScreen(0, 0, 3, 2);
    QorGuider b = c.CreatePicFromScreen(0, 0, 1, 4);
    QorGuider sprite = c.CreateSprite(a, 10);
    c.MoveSprite(sprite, 2, 3);
    QorRect before, after;
    ASSERT_EQ(c.StepSprite(sprite, 10, 11, b, &before, &after), 1);
    EXPECT_EQ(before, QorRect(2, 3, 5, 5));
    EXPECT_EQ(after, QorRect(10, 11, 11, 15));
    EXPECT_EQ(c.GetSpriteCoordinate(sprite), Point<long>(10, 11));
    // As ChangePicBlock after MoveSprite: the last area is the new place with the old picture's size.
    QorRect last;
    QorSprite* s = static_cast<QorSprite*>(sprite.object);
    s->ReceiveLastRect(&last);
    EXPECT_EQ(last, QorRect(10, 11, 13, 13));
    EXPECT_EQ(c.RemovePic(b), 0);
    const QorGuider removed = a;
    EXPECT_EQ(c.RemovePic(a), 1);

    // A picture the compositor does not know: the move stands, the picture stays.
    ASSERT_EQ(c.StepSprite(sprite, 20, 21, removed, nullptr, &after), 0);
    EXPECT_EQ(c.GetSpriteCoordinate(sprite), Point<long>(20, 21));
    EXPECT_EQ(after, QorRect(20, 21, 21, 25));
    // An unknown sprite: nothing is done or written.
    QorGuider gone = sprite;
    c.RemoveSprite(sprite);
    before = QorRect(1, 1, 1, 1);
    EXPECT_EQ(c.StepSprite(gone, 0, 0, b, &before, nullptr), 0);
    EXPECT_EQ(before, QorRect(1, 1, 1, 1));
}
