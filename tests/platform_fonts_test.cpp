// Which face a font name gives: the face reported by GetTextFaceA, the Kai face standing in for unknown
// names (and saying so through QorGetLastError), and whether the face has glyphs for the text.
#include "qor/core.h"
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
// A memory context with a font of the given face selected.
struct FontContext
{
    explicit FontContext(const char* face, int quality = DEFAULT_QUALITY)
    {
        dc = CreateCompatibleDC(nullptr);
        font = CreateFontA(-16, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, DWORD(quality), 0, face);
        old = SelectObject(dc, font);
    }
    ~FontContext()
    {
        SelectObject(dc, old);
        DeleteObject(font);
        DeleteDC(dc);
    }
    std::string Face() const
    {
        char name[64] = {};
        const int n = GetTextFaceA(dc, sizeof name, name);
        return n > 0 ? std::string(name) : std::string("(none)");
    }
    HDC dc;
    HFONT font;
    HGDIOBJ old;
};

// "中文" in Big5.
const char kChinese[] = "\xA4\xA4\xA4\xE5";
} // namespace

TEST(QorFonts, KaiNamesGiveTheBig5KaiFaceWithoutFallback)
{
    FontContext kai("DFKai-SB");
    EXPECT_EQ(kai.Face(), "AR PL KaitiM Big5");
    EXPECT_FALSE(QorIsFaceFallback(kai.dc));
    EXPECT_EQ(QorGetMissingGlyphs(kai.dc, kChinese, 4), 0);
    EXPECT_EQ(QorGetMissingGlyphs(kai.dc, "Kai 123", 7), 0);
}

TEST(QorFonts, UnknownNameFallsBackToKaiAndSaysSo)
{
    QorClearError();
    FontContext unknown("No Such Face 4711");
    EXPECT_EQ(unknown.Face(), "AR PL KaitiM Big5");
    EXPECT_TRUE(QorIsFaceFallback(unknown.dc));
    EXPECT_NE(std::string(QorGetLastError()).find("font \"No Such Face 4711\" not found: the Kai face \"AR PL KaitiM "
                                                  "Big5\""),
              std::string::npos)
        << QorGetLastError();
}

TEST(QorFonts, LatinFaceIsKeptAndReportsTheChineseItCannotShow)
{
    QorClearError();
    FontContext latin("DejaVu Sans");
    EXPECT_EQ(latin.Face(), "DejaVu Sans");
    EXPECT_FALSE(QorIsFaceFallback(latin.dc));
    EXPECT_EQ(std::string(QorGetLastError()), "");
    EXPECT_EQ(QorGetMissingGlyphs(latin.dc, kChinese, 4), 2);
    EXPECT_EQ(QorGetMissingGlyphs(latin.dc, "Latin", 5), 0);
}

TEST(QorFonts, TextFaceCopiesWhatFitsAndTellsTheSizeNeeded)
{
    FontContext latin("DejaVu Sans");
    EXPECT_EQ(GetTextFaceA(latin.dc, 0, nullptr), 12);
    char small[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(GetTextFaceA(latin.dc, 4, small), 4);
    EXPECT_EQ(std::string(small), "Dej");
    EXPECT_EQ(GetTextFaceA(nullptr, 4, small), 0);
    EXPECT_EQ(QorGetMissingGlyphs(nullptr, kChinese, 4), -1);
}

TEST(QorFonts, ContextWrapperAsksTheSameOfItsFont)
{
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    CFont font;
    ASSERT_TRUE(font.CreateFont(-16, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, "DejaVu Sans"));
    CFont* old = dc.SelectObject(&font);
    char name[32] = {};
    EXPECT_EQ(dc.GetTextFace(sizeof name, name), 12);
    EXPECT_EQ(std::string(name), "DejaVu Sans");
    EXPECT_EQ(dc.GetMissingGlyphs(kChinese, 4), 2);
    dc.SelectObject(old);
}
