#include "qor/files.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
std::string Text(const QorString& s)
{
    return std::string(static_cast<const char*>(s), s.GetLength());
}

std::vector<std::string> Lines(const Array<QorString>& lines)
{
    std::vector<std::string> out;
    for (unsigned long i = 0; i < lines.GetSize(); ++i)
        out.push_back(Text(lines[i]));
    return out;
}

// Runs CutString on text and returns the lines; result receives its answer.
std::vector<std::string> Cut(const std::string& text, long width, char& result, char flag = 0)
{
    QorString s(text.data(), static_cast<int>(text.size()));
    Array<QorString> lines;
    result = CutString(s, lines, width, flag);
    return Lines(lines);
}

std::string Utf8(const std::string& big5, unsigned long* failed = nullptr)
{
    return Text(QorBig5ToUtf8(big5.data(), big5.size(), failed));
}

std::string Big5(const std::string& utf8, unsigned long* failed = nullptr)
{
    return Text(QorUtf8ToBig5(utf8.data(), utf8.size(), failed));
}

struct NumberCase
{
    const char* digits;
    const char* big5;
    const char* readable;
};

void ExpectWords(void (*convert)(QorString&, const char*), const std::vector<NumberCase>& cases)
{
    for (const NumberCase& c : cases)
    {
        QorString out("old");
        convert(out, c.digits);
        EXPECT_EQ(Text(out), c.big5) << c.digits << " should read " << c.readable;
        EXPECT_EQ(Utf8(Text(out)), c.readable) << c.digits;
    }
}
} // namespace

TEST(IsUnicode, TrueFrom0xA0Upwards)
{
    EXPECT_TRUE(IsUnicode(static_cast<char>(0xA0)));
    EXPECT_TRUE(IsUnicode(static_cast<char>(0xA4)));
    EXPECT_TRUE(IsUnicode(static_cast<char>(0xFF)));
}

TEST(IsUnicode, FalseBelow0xA0)
{
    EXPECT_FALSE(IsUnicode(static_cast<char>(0x9F)));
    EXPECT_FALSE(IsUnicode(static_cast<char>(0x80)));
    EXPECT_FALSE(IsUnicode('A'));
    EXPECT_FALSE(IsUnicode('\0'));
}

TEST(HalfToFull, HorizontalTurnsLowerAIntoCapitalAThenDashThenOne)
{
    QorString out;
    HalfToFull_H(out, "a-1");
    EXPECT_EQ(Text(out), "\xA2\xCF\xA1\x58\xA2\xB0"); // Ａ—１
}

TEST(HalfToFull, VerticalUsesTheVerticalDash)
{
    QorString out;
    HalfToFull_V(out, "a-1");
    EXPECT_EQ(Text(out), "\xA2\xCF\xA1\xD0\xA2\xB0"); // Ａ－１
}

TEST(HalfToFull, DigitsUseTheFullWidthDigitTable)
{
    QorString out;
    HalfToFull_H(out, "0123456789");
    EXPECT_EQ(Text(out), "\xA2\xAF\xA2\xB0\xA2\xB1\xA2\xB2\xA2\xB3\xA2\xB4\xA2\xB5\xA2\xB6\xA2\xB7\xA2\xB8");
    EXPECT_EQ(Utf8(Text(out)), "０１２３４５６７８９");
}

TEST(HalfToFull, CapitalsUseTheFullWidthCapitalTable)
{
    QorString out;
    HalfToFull_H(out, "ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    EXPECT_EQ(Text(out), "\xA2\xCF\xA2\xD0\xA2\xD1\xA2\xD2\xA2\xD3\xA2\xD4\xA2\xD5\xA2\xD6\xA2\xD7\xA2\xD8\xA2\xD9"
                         "\xA2\xDA\xA2\xDB\xA2\xDC\xA2\xDD\xA2\xDE\xA2\xDF\xA2\xE0\xA2\xE1\xA2\xE2\xA2\xE3\xA2\xE4"
                         "\xA2\xE5\xA2\xE6\xA2\xE7\xA2\xE8");
    EXPECT_EQ(Utf8(Text(out)), "ＡＢＣＤＥＦＧＨＩＪＫＬＭＮＯＰＱＲＳＴＵＶＷＸＹＺ");
}

TEST(HalfToFull, LowerCaseLettersFoldToFullWidthCapitals)
{
    QorString lower;
    QorString upper;
    HalfToFull_H(lower, "abcdefghijklmnopqrstuvwxyz");
    HalfToFull_H(upper, "ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    EXPECT_EQ(Text(lower), Text(upper));
    EXPECT_EQ(Utf8(Text(lower)).substr(0, 9), "ＡＢＣ");
}

TEST(HalfToFull, PeriodBecomesTheSmallFullStopInBothDirections)
{
    QorString h;
    QorString v;
    HalfToFull_H(h, ".");
    HalfToFull_V(v, ".");
    EXPECT_EQ(Text(h), "\xA1\x4F");
    EXPECT_EQ(Text(v), "\xA1\x4F");
    EXPECT_EQ(Utf8(Text(h)), "﹒");
}

TEST(HalfToFull, DashesMapToEmDashHorizontallyAndFullWidthHyphenVertically)
{
    QorString h;
    QorString v;
    HalfToFull_H(h, "-");
    HalfToFull_V(v, "-");
    EXPECT_EQ(Utf8(Text(h)), "—");
    EXPECT_EQ(Utf8(Text(v)), "－");
}

TEST(HalfToFull, MixedTextKeepsBig5PairsAndOtherBytes)
{
    QorString out;
    // 中 (A4 A4), "x 2!", 文 (A4 E5)
    HalfToFull_H(out, "\xA4\xA4x 2!\xA4\xE5");
    EXPECT_EQ(Text(out), "\xA4\xA4\xA2\xE6 \xA2\xB1!\xA4\xE5");
}

TEST(HalfToFull, SecondByteOfAPairIsNotConvertedEvenWhenItIsALetter)
{
    QorString out;
    // A4 61 is a pair whose second byte is "a"; the following "a" is converted.
    HalfToFull_V(out, "\xA4\x61\x61");
    EXPECT_EQ(Text(out), "\xA4\x61\xA2\xCF");
}

TEST(HalfToFull, LeadByteEndingTheTextIsCopiedAlone)
{
    QorString out;
    HalfToFull_H(out, "1\xA4");
    EXPECT_EQ(Text(out), "\xA2\xB0\xA4");
    EXPECT_EQ(out.GetLength(), 3u);
}

TEST(HalfToFull, EmptyOrNullSourceEmptiesOut)
{
    QorString out("previous");
    HalfToFull_H(out, "");
    EXPECT_EQ(out.GetLength(), 0u);
    out = "previous";
    HalfToFull_V(out, nullptr);
    EXPECT_EQ(out.GetLength(), 0u);
}

TEST(HalfToFull, OutMayBeTheSourceString)
{
    QorString s("B2");
    HalfToFull_H(s, s);
    EXPECT_EQ(Text(s), "\xA2\xD0\xA2\xB1");
}

TEST(IntegerToChinese, LowerCase305IsThreeCircleFive)
{
    QorString out;
    IntegerToChineseL(out, "305");
    EXPECT_EQ(Text(out), "\xA4\x54\xA1\xB3\xA4\xAD"); // 三○五
}

TEST(IntegerToChinese, UpperCase305UsesFinancialNumerals)
{
    QorString out;
    IntegerToChineseU(out, "305");
    EXPECT_EQ(Text(out), "\xB0\xD1\xB9\x73\xA5\xEE"); // 參零伍
}

TEST(IntegerToChinese, LowerCaseNumeralTableDigitByDigit)
{
    QorString out;
    IntegerToChineseL(out, "0123456789");
    EXPECT_EQ(Text(out), "\xA1\xB3\xA4\x40\xA4\x47\xA4\x54\xA5\x7C\xA4\xAD\xA4\xBB\xA4\x43\xA4\x4B\xA4\x45");
    EXPECT_EQ(Utf8(Text(out)), "○一二三四五六七八九");
}

TEST(IntegerToChinese, UpperCaseNumeralTableDigitByDigit)
{
    QorString out;
    IntegerToChineseU(out, "0123456789");
    EXPECT_EQ(Text(out), "\xB9\x73\xB3\xFC\xB6\x4C\xB0\xD1\xB8\x76\xA5\xEE\xB3\xB0\xAC\x6D\xAE\xC3\xA8\x68");
    EXPECT_EQ(Utf8(Text(out)), "零壹貳參肆伍陸柒捌玖");
}

TEST(IntegerToChinese, YearIsWrittenWithoutPlaceUnits)
{
    QorString out;
    IntegerToChineseL(out, "2024");
    EXPECT_EQ(Text(out), "\xA4\x47\xA1\xB3\xA4\x47\xA5\x7C"); // 二○二四
}

TEST(IntegerToChinese, OtherBytesAndBig5PairsAreCopied)
{
    QorString out;
    // 第 (B2 C4) 3 章 (B3 B9) ", x"; the pair A4 31 has a digit as second byte and stays as it is.
    IntegerToChineseL(out, "\xB2\xC4"
                           "3\xB3\xB9, x\xA4"
                           "1");
    EXPECT_EQ(Text(out), "\xB2\xC4\xA4\x54\xB3\xB9, x\xA4"
                         "1");
}

TEST(IntegerToChinese, EmptySourceEmptiesOut)
{
    QorString out("x");
    IntegerToChineseU(out, "");
    EXPECT_TRUE(out.IsEmpty());
}

TEST(IntegerToChineseWords, FifteenDropsTheLeadingOneInLowerCase)
{
    QorString out;
    IntegerToChineseLF(out, "15");
    EXPECT_EQ(Text(out), "\xA4\x51\xA4\xAD"); // 十五
}

TEST(IntegerToChineseWords, FifteenKeepsTheLeadingOneInUpperCase)
{
    QorString out;
    IntegerToChineseUF(out, "15");
    EXPECT_EQ(Text(out), "\xB3\xFC\xAC\x42\xA5\xEE"); // 壹拾伍
}

TEST(IntegerToChineseWords, SmallUnitsWithinAGroup)
{
    ExpectWords(IntegerToChineseLF,
                {
                    {"1", "\xA4\x40", "一"},
                    {"10", "\xA4\x51", "十"},
                    {"19", "\xA4\x51\xA4\x45", "十九"},
                    {"20", "\xA4\x47\xA4\x51", "二十"},
                    {"100", "\xA4\x40\xA6\xCA", "一百"},
                    {"110", "\xA4\x40\xA6\xCA\xA4\x40\xA4\x51", "一百一十"},
                    {"1000", "\xA4\x40\xA4\x64", "一千"},
                    {"1500", "\xA4\x40\xA4\x64\xA4\xAD\xA6\xCA", "一千五百"},
                    {"9999", "\xA4\x45\xA4\x64\xA4\x45\xA6\xCA\xA4\x45\xA4\x51\xA4\x45", "九千九百九十九"},
                });
}

TEST(IntegerToChineseWords, OneZeroNumeralPerRunOfZerosInsideAGroup)
{
    ExpectWords(IntegerToChineseLF, {
                                        {"105", "\xA4\x40\xA6\xCA\xB9\x73\xA4\xAD", "一百零五"},
                                        {"1005", "\xA4\x40\xA4\x64\xB9\x73\xA4\xAD", "一千零五"},
                                        {"1050", "\xA4\x40\xA4\x64\xB9\x73\xA4\xAD\xA4\x51", "一千零五十"},
                                    });
}

TEST(IntegerToChineseWords, LargeUnitsAfterEachGroupAboveTheLowest)
{
    ExpectWords(IntegerToChineseLF, {
                                        {"10000", "\xA4\x40\xB8\x55", "一萬"},
                                        {"1000000", "\xA4\x40\xA6\xCA\xB8\x55", "一百萬"},
                                        {"100000000", "\xA4\x40\xBB\xF5", "一億"},
                                        {"1000000000000", "\xA4\x40\xA5\xFC", "一兆"},
                                    });
}

TEST(IntegerToChineseWords, ZerosAcrossGroupsAreReadOnceAndNotAtAGroupEnd)
{
    ExpectWords(IntegerToChineseLF, {
                                        {"10010", "\xA4\x40\xB8\x55\xB9\x73\xA4\x40\xA4\x51", "一萬零一十"},
                                        {"100000001", "\xA4\x40\xBB\xF5\xB9\x73\xA4\x40", "一億零一"},
                                        {"10001000", "\xA4\x40\xA4\x64\xB8\x55\xA4\x40\xA4\x64", "一千萬一千"},
                                        {"1000100", "\xA4\x40\xA6\xCA\xB8\x55\xB9\x73\xA4\x40\xA6\xCA", "一百萬零一百"},
                                        {"1000000010000", "\xA4\x40\xA5\xFC\xB9\x73\xA4\x40\xB8\x55", "一兆零一萬"},
                                    });
}

TEST(IntegerToChineseWords, LeadingOneDroppedWhenTheLeadingGroupIsTenToNineteen)
{
    ExpectWords(IntegerToChineseLF, {
                                        {"100000", "\xA4\x51\xB8\x55", "十萬"},
                                        {"100015", "\xA4\x51\xB8\x55\xB9\x73\xA4\x40\xA4\x51\xA4\xAD", "十萬零一十五"},
                                        {"150000", "\xA4\x51\xA4\xAD\xB8\x55", "十五萬"},
                                        {"1000000000", "\xA4\x51\xBB\xF5", "十億"},
                                    });
}

TEST(IntegerToChineseWords, UpperCaseKeepsTheLeadingOneEverywhere)
{
    ExpectWords(IntegerToChineseUF, {
                                        {"10", "\xB3\xFC\xAC\x42", "壹拾"},
                                        {"100000", "\xB3\xFC\xAC\x42\xB8\x55", "壹拾萬"},
                                        {"110", "\xB3\xFC\xA8\xD5\xB3\xFC\xAC\x42", "壹佰壹拾"},
                                        {"1005", "\xB3\xFC\xA5\x61\xB9\x73\xA5\xEE", "壹仟零伍"},
                                        {"10010", "\xB3\xFC\xB8\x55\xB9\x73\xB3\xFC\xAC\x42", "壹萬零壹拾"},
                                        {"2024", "\xB6\x4C\xA5\x61\xB9\x73\xB6\x4C\xAC\x42\xB8\x76", "貳仟零貳拾肆"},
                                        {"500002", "\xA5\xEE\xAC\x42\xB8\x55\xB9\x73\xB6\x4C", "伍拾萬零貳"},
                                    });
}

TEST(IntegerToChineseWords, ZeroIsCircleInLowerCaseAndLingInUpperCase)
{
    QorString out;
    IntegerToChineseLF(out, "0");
    EXPECT_EQ(Text(out), "\xA1\xB3"); // ○
    IntegerToChineseUF(out, "0");
    EXPECT_EQ(Text(out), "\xB9\x73"); // 零
    IntegerToChineseLF(out, "000");
    EXPECT_EQ(Text(out), "\xA1\xB3");
}

TEST(IntegerToChineseWords, LeadingZerosAreIgnored)
{
    ExpectWords(IntegerToChineseLF, {
                                        {"007", "\xA4\x43", "七"},
                                        {"0015", "\xA4\x51\xA4\xAD", "十五"},
                                        {"000105", "\xA4\x40\xA6\xCA\xB9\x73\xA4\xAD", "一百零五"},
                                    });
}

TEST(IntegerToChineseWords, SixteenDigitsUseAllFourGroups)
{
    ExpectWords(IntegerToChineseLF,
                {
                    {"9999999999999999",
                     "\xA4\x45\xA4\x64\xA4\x45\xA6\xCA\xA4\x45\xA4\x51\xA4\x45\xA5\xFC\xA4\x45\xA4\x64\xA4\x45\xA6\xCA"
                     "\xA4\x45\xA4\x51\xA4\x45\xBB\xF5\xA4\x45\xA4\x64\xA4\x45\xA6\xCA\xA4\x45\xA4\x51\xA4\x45\xB8\x55"
                     "\xA4\x45\xA4\x64\xA4\x45\xA6\xCA\xA4\x45\xA4\x51\xA4\x45",
                     "九千九百九十九兆九千九百九十九億九千九百九十九萬九千九百九十九"},
                    {"1234567890123456",
                     "\xA4\x40\xA4\x64\xA4\x47\xA6\xCA\xA4\x54\xA4\x51\xA5\x7C\xA5\xFC\xA4\xAD\xA4\x64\xA4\xBB\xA6\xCA"
                     "\xA4\x43\xA4\x51\xA4\x4B\xBB\xF5\xA4\x45\xA4\x64\xB9\x73\xA4\x40\xA4\x51\xA4\x47\xB8\x55\xA4\x54"
                     "\xA4\x64\xA5\x7C\xA6\xCA\xA4\xAD\xA4\x51\xA4\xBB",
                     "一千二百三十四兆五千六百七十八億九千零一十二萬三千四百五十六"},
                    {"1010101010101010",
                     "\xA4\x40\xA4\x64\xB9\x73\xA4\x40\xA4\x51\xA5\xFC\xA4\x40\xA4\x64\xB9\x73\xA4\x40\xA4\x51\xBB\xF5"
                     "\xA4\x40\xA4\x64\xB9\x73\xA4\x40\xA4\x51\xB8\x55\xA4\x40\xA4\x64\xB9\x73\xA4\x40\xA4\x51",
                     "一千零一十兆一千零一十億一千零一十萬一千零一十"},
                });
}

TEST(IntegerToChineseWords, LongestOutputPerDigitFitsTheWorkBuffer)
{
    // Every digit writes a numeral and a unit: the widest wording per input byte.
    QorString out;
    IntegerToChineseLF(out, "1111111111111111");
    EXPECT_EQ(Utf8(Text(out)), "一千一百一十一兆一千一百一十一億一千一百一十一萬一千一百一十一");
    EXPECT_EQ(out.GetLength(), 62u);
}

TEST(IntegerToChineseWords, MoreThanSixteenDigitsAreWrittenDigitByDigit)
{
    QorString out;
    IntegerToChineseLF(out, "12345678901234567");
    EXPECT_EQ(Text(out), "\xA4\x40\xA4\x47\xA4\x54\xA5\x7C\xA4\xAD\xA4\xBB\xA4\x43\xA4\x4B\xA4\x45\xA1\xB3\xA4\x40"
                         "\xA4\x47\xA4\x54\xA5\x7C\xA4\xAD\xA4\xBB\xA4\x43");
    IntegerToChineseUF(out, "00012345678901234567");
    EXPECT_EQ(Utf8(Text(out)), "壹貳參肆伍陸柒捌玖零壹貳參肆伍陸柒");
}

TEST(IntegerToChineseWords, EachRunOfDigitsInMixedTextIsANumber)
{
    QorString out;
    // 共 (A6 40) 105 頁 (AD B6) ， (A1 41) 第 (B2 C4) 12 行 (A6 E6) "x0"
    IntegerToChineseLF(out, "\xA6\x40"
                            "105\xAD\xB6\xA1\x41\xB2\xC4"
                            "12\xA6\xE6x0");
    EXPECT_EQ(Utf8(Text(out)), "共一百零五頁，第十二行x○");
}

TEST(IntegerToChineseWords, SecondByteDigitOfAPairIsNotANumber)
{
    QorString out;
    IntegerToChineseUF(out, "\xA4"
                            "12");
    EXPECT_EQ(Text(out), "\xA4"
                         "1\xB6\x4C"); // the pair A4 31, then 貳
}

TEST(ChineseToInteger, LowerCaseReturnsItsInputUnchanged)
{
    QorString out("old");
    const char* numerals = "\xA4\x54\xA1\xB3\xA4\xAD"
                           "abc\xA4\x40"; // 三○五abc一
    ChineseLToInteger(out, numerals);
    EXPECT_EQ(Text(out), numerals);
}

TEST(ChineseToInteger, UpperCaseReturnsItsInputUnchanged)
{
    QorString out;
    const char* numerals = "\xB0\xD1\xB9\x73\xA5\xEE"; // 參零伍
    ChineseUToInteger(out, numerals);
    EXPECT_EQ(Text(out), numerals);
}

TEST(ChineseToInteger, OddLengthAsciiAndMisalignedPairsAreCopied)
{
    QorString out;
    // "1" then A4 40 (一) is seen as the group "1\xA4" and then "@": still a copy.
    ChineseLToInteger(out, "1\xA4\x40"
                           "xyz");
    EXPECT_EQ(Text(out), "1\xA4\x40"
                         "xyz");
    ChineseUToInteger(out, "");
    EXPECT_TRUE(out.IsEmpty());
}

TEST(CutString, BreaksAtTheWidth)
{
    char ok = 0;
    EXPECT_EQ(Cut("abcdef", 4, ok), (std::vector<std::string>{"abcd", "ef"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, NumberMovesWholeToTheNextLine)
{
    char ok = 0;
    EXPECT_EQ(Cut("ab12345", 4, ok), (std::vector<std::string>{"ab", "12345"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, NumberWithADecimalPointMovesWhole)
{
    char ok = 0;
    EXPECT_EQ(Cut("ab3.14", 4, ok), (std::vector<std::string>{"ab", "3.14"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, PointAfterTheLineEndContinuesTheNumber)
{
    char ok = 0;
    EXPECT_EQ(Cut("ab12.5 x", 4, ok), (std::vector<std::string>{"ab", "12.5 x"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, SecondPointEndsTheNumber)
{
    char ok = 0;
    // "1.2" is the number; the second "." ends it, so the line breaks normally.
    EXPECT_EQ(Cut("1.2.3x", 4, ok), (std::vector<std::string>{"1.2.", "3x"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, MinusSignStartsANumber)
{
    char ok = 0;
    EXPECT_EQ(Cut("ab-12", 4, ok), (std::vector<std::string>{"ab", "-12"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, MinusAfterDigitsEndsTheNumber)
{
    char ok = 0;
    EXPECT_EQ(Cut("12-3", 3, ok), (std::vector<std::string>{"12-", "3"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, NumberThatDoesNotContinueStaysOnItsLine)
{
    char ok = 0;
    EXPECT_EQ(Cut("ab12 cd", 4, ok), (std::vector<std::string>{"ab12", " cd"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, NumberLongerThanTheWidthLeavesItsFirstLineEmpty)
{
    char ok = 0;
    EXPECT_EQ(Cut("1234567", 4, ok), (std::vector<std::string>{"", "1234567"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, Big5PairNeverStraddlesTwoLines)
{
    char ok = 0;
    // "abc中" with width 4: the pair would need columns 4 and 5.
    EXPECT_EQ(Cut("abc\xA4\xA4", 4, ok), (std::vector<std::string>{"abc", "\xA4\xA4"}));
    EXPECT_TRUE(ok);
    EXPECT_EQ(Cut("ab\xA4\xA4"
                  "cd",
                  4, ok),
              (std::vector<std::string>{"ab\xA4\xA4", "cd"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, Big5PairEndsANumber)
{
    char ok = 0;
    // 12 is followed by 萬 (B8 55) and then 34: the pair ends the number, so 34 is a new one.
    EXPECT_EQ(Cut("12\xB8\x55"
                  "345",
                  6, ok),
              (std::vector<std::string>{"12\xB8\x55", "345"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, LoneLeadByteAtTheEndIsKeptWhenItFits)
{
    char ok = 0;
    EXPECT_EQ(Cut("ab\xA4", 4, ok), (std::vector<std::string>{"ab\xA4"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, LoneLeadByteAtTheEndIsDroppedWhenTheLineIsFull)
{
    char ok = 0;
    EXPECT_EQ(Cut("abc\xA4", 4, ok), (std::vector<std::string>{"abc"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, LineFeedEndsALineAndIsNotStored)
{
    char ok = 0;
    EXPECT_EQ(Cut("ab\ncd\n\nef", 10, ok), (std::vector<std::string>{"ab", "cd", "", "ef"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, LineFeedEndsANumber)
{
    char ok = 0;
    EXPECT_EQ(Cut("a1\n23", 2, ok), (std::vector<std::string>{"a1", "", "23"}));
    EXPECT_TRUE(ok);
}

TEST(CutString, WidthZeroReturnsFalse)
{
    char ok = 1;
    EXPECT_EQ(Cut("abc", 0, ok), (std::vector<std::string>{""}));
    EXPECT_FALSE(ok);
}

TEST(CutString, NegativeWidthReturnsFalseAndLeavesLinesAlone)
{
    QorString text("abc");
    Array<QorString> lines;
    lines.Append(QorString("kept"));
    EXPECT_FALSE(CutString(text, lines, -1, 0));
    ASSERT_EQ(lines.GetSize(), 1u);
    EXPECT_EQ(Text(lines[0]), "kept");
}

TEST(CutString, PairThatCanNeverFitReturnsFalse)
{
    char ok = 1;
    EXPECT_EQ(Cut("a\xA4\x40", 1, ok), (std::vector<std::string>{"a", ""}));
    EXPECT_FALSE(ok);
}

// The first line is made before the text is tested, so an empty text has one line and no byte consumed.
TEST(CutString, EmptyTextMakesOneEmptyLineAndReturnsFalse)
{
    QorString text;
    Array<QorString> lines;
    lines.Append(QorString("old"));
    EXPECT_FALSE(CutString(text, lines, 4, 0));
    ASSERT_EQ(lines.GetSize(), 1u);
    EXPECT_TRUE(lines[0].IsEmpty());
}

TEST(CutString, EmptyTextWithWidthZeroAlsoMakesOneEmptyLine)
{
    char ok = 1;
    EXPECT_EQ(Cut("", 0, ok), (std::vector<std::string>{""}));
    EXPECT_FALSE(ok);
}

TEST(CutString, FlagHasNoEffect)
{
    char a = 0;
    char b = 0;
    EXPECT_EQ(Cut("ab12345 xyz", 4, a, 0), Cut("ab12345 xyz", 4, b, 1));
    EXPECT_EQ(a, b);
}

TEST(CutString, LinesAreReplacedOnEachCall)
{
    QorString text("abcdefgh");
    Array<QorString> lines;
    ASSERT_TRUE(CutString(text, lines, 2, 0));
    EXPECT_EQ(lines.GetSize(), 4u);
    ASSERT_TRUE(CutString(text, lines, 8, 0));
    ASSERT_EQ(lines.GetSize(), 1u);
    EXPECT_EQ(Text(lines[0]), "abcdefgh");
}

TEST(Big5ToUtf8, ConvertsChineseText)
{
    unsigned long failed = 99;
    EXPECT_EQ(Utf8("\xA4\xA4\xA4\xE5", &failed), "\xE4\xB8\xAD\xE6\x96\x87"); // 中文
    EXPECT_EQ(failed, 0u);
}

TEST(Big5ToUtf8, KeepsAsciiAndZeroBytes)
{
    unsigned long failed = 99;
    EXPECT_EQ(Utf8(std::string("a\0b\xA4\xA4", 5), &failed), std::string("a\0b\xE4\xB8\xAD", 6));
    EXPECT_EQ(failed, 0u);
}

TEST(Big5ToUtf8, NumeralAndUnitTablesReadAsTheirCharacters)
{
    EXPECT_EQ(Utf8("\xB8\x55\xBB\xF5\xA5\xFC"), "萬億兆");
    EXPECT_EQ(Utf8("\xA4\x51\xA6\xCA\xA4\x64"), "十百千");
    EXPECT_EQ(Utf8("\xAC\x42\xA8\xD5\xA5\x61"), "拾佰仟");
}

TEST(Big5ToUtf8, InvalidByteBecomesReplacementAndConversionGoesOn)
{
    unsigned long failed = 0;
    EXPECT_EQ(Utf8("a\xFF"
                   "b\xA4\xA4",
                   &failed),
              "a\xEF\xBF\xBD"
              "b\xE4\xB8\xAD");
    EXPECT_EQ(failed, 1u);
}

TEST(Big5ToUtf8, LeadByteWithAnInvalidSecondByteLosesOnlyItself)
{
    unsigned long failed = 0;
    EXPECT_EQ(Utf8("\xA4 x", &failed), "\xEF\xBF\xBD x");
    EXPECT_EQ(failed, 1u);
}

TEST(Big5ToUtf8, UnmappedPairCountsOnce)
{
    unsigned long failed = 0;
    EXPECT_EQ(Utf8("\x81\x40z", &failed), "\xEF\xBF\xBDz");
    EXPECT_EQ(failed, 1u);
}

TEST(Big5ToUtf8, TruncatedLeadByteAtTheEndIsReported)
{
    unsigned long failed = 0;
    EXPECT_EQ(Utf8("\xA4\xA4\xA4", &failed), "\xE4\xB8\xAD\xEF\xBF\xBD");
    EXPECT_EQ(failed, 1u);
}

TEST(Big5ToUtf8, ManyFailuresGrowTheOutput)
{
    unsigned long failed = 0;
    const std::string bad(1000, '\xFF');
    const std::string out = Utf8(bad, &failed);
    EXPECT_EQ(failed, 1000u);
    ASSERT_EQ(out.size(), 3000u);
    EXPECT_EQ(out.substr(2997), "\xEF\xBF\xBD");
}

TEST(Big5ToUtf8, EmptyOrNullInputGivesEmptyTextAndNoFailures)
{
    unsigned long failed = 7;
    EXPECT_TRUE(QorBig5ToUtf8("", 0, &failed).IsEmpty());
    EXPECT_EQ(failed, 0u);
    failed = 7;
    EXPECT_TRUE(QorBig5ToUtf8(nullptr, 4, &failed).IsEmpty());
    EXPECT_EQ(failed, 0u);
}

TEST(Big5ToUtf8, FailedCountIsOptional)
{
    EXPECT_EQ(Text(QorBig5ToUtf8("\xFF\xA4\xA4", 3)), "\xEF\xBF\xBD\xE4\xB8\xAD");
}

TEST(Utf8ToBig5, ConvertsChineseText)
{
    unsigned long failed = 99;
    EXPECT_EQ(Big5("\xE4\xB8\xAD\xE6\x96\x87", &failed), "\xA4\xA4\xA4\xE5");
    EXPECT_EQ(failed, 0u);
}

TEST(Utf8ToBig5, RoundTripsTheNumeralAndFullWidthTables)
{
    EXPECT_EQ(Big5("○一二三四五六七八九"),
              "\xA1\xB3\xA4\x40\xA4\x47\xA4\x54\xA5\x7C\xA4\xAD\xA4\xBB\xA4\x43\xA4\x4B\xA4\x45");
    EXPECT_EQ(Big5("零壹貳參肆伍陸柒捌玖"),
              "\xB9\x73\xB3\xFC\xB6\x4C\xB0\xD1\xB8\x76\xA5\xEE\xB3\xB0\xAC\x6D\xAE\xC3\xA8\x68");
    EXPECT_EQ(Big5("ａｚ﹒—－"), "\xA2\xE9\xA3\x43\xA1\x4F\xA1\x58\xA1\xD0");
}

TEST(Utf8ToBig5, UsesCodePage950ForTheEuroSign)
{
    unsigned long failed = 99;
    EXPECT_EQ(Big5("\xE2\x82\xAC", &failed), "\xA3\xE1");
    EXPECT_EQ(failed, 0u);
}

TEST(Utf8ToBig5, CharacterWithoutABig5FormBecomesOneQuestionMark)
{
    unsigned long failed = 0;
    // 中, an emoji (four bytes), z
    EXPECT_EQ(Big5("\xE4\xB8\xAD\xF0\x9F\x98\x80z", &failed), "\xA4\xA4?z");
    EXPECT_EQ(failed, 1u);
}

TEST(Utf8ToBig5, CutOffSequenceInsideTheTextIsOneFailure)
{
    unsigned long failed = 0;
    EXPECT_EQ(Big5("\xE4\xB8z", &failed), "?z");
    EXPECT_EQ(failed, 1u);
}

TEST(Utf8ToBig5, CutOffSequenceAtTheEndIsReported)
{
    unsigned long failed = 0;
    EXPECT_EQ(Big5("a\xE4\xB8", &failed), "a?");
    EXPECT_EQ(failed, 1u);
}

TEST(Utf8ToBig5, MalformedBytesFailOneByOne)
{
    unsigned long failed = 0;
    // An encoded surrogate and a stray continuation byte are not UTF-8.
    EXPECT_EQ(Big5("\xED\xA0\x80"
                   "a\x80",
                   &failed),
              "???a?");
    EXPECT_EQ(failed, 4u);
}

TEST(Utf8ToBig5, EmptyInputGivesEmptyTextAndNoFailures)
{
    unsigned long failed = 7;
    EXPECT_TRUE(QorUtf8ToBig5("x", 0, &failed).IsEmpty());
    EXPECT_EQ(failed, 0u);
}
