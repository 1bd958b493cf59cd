#include "qor/files.h"

#include "test_util.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace
{
// The whole text of s, embedded zero bytes included, without the terminator.
std::string Text(const QorString& s)
{
    const unsigned char* bytes = s.GetArray();
    return bytes ? std::string(reinterpret_cast<const char*>(bytes), s.GetLength()) : std::string();
}

unsigned long Count(const QorString& s)
{
    return s.GetArray().GetSize();
}

unsigned long Capacity(const QorString& s)
{
    return s.GetArray().GetMaxSize();
}

QorString Bytes(const std::string& bytes)
{
    return QorString(bytes.data(), static_cast<int>(bytes.size()));
}

// A string of n bytes where byte i is (i * 7 + 3) mod 251, never zero before the end.
QorString Pattern(unsigned long n)
{
    std::string bytes(n, '\0');
    for (unsigned long i = 0; i < n; ++i)
        bytes[i] = static_cast<char>((i * 7 + 3) % 251 + 1);
    return Bytes(bytes);
}

unsigned char PatternByte(unsigned long i)
{
    return static_cast<unsigned char>((i * 7 + 3) % 251 + 1);
}

// Opens path for reading after writing bytes to it.
void OpenWith(QorFile& file, const std::string& path, const std::vector<std::uint8_t>& bytes)
{
    qortest::WriteAll(path, bytes);
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kRead));
}
} // namespace

// Constructors

TEST(QorStringConstruct, DefaultIsEmptyWithStorageForExactlyTheTerminator)
{
    QorString s;
    EXPECT_EQ(s.GetLength(), 0u);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(Count(s), 1u);
    EXPECT_EQ(Capacity(s), 1u);
    EXPECT_EQ(s[0], 0);
    EXPECT_EQ(s.GetException(), 0);
}

TEST(QorStringConstruct, CStringKeepsTextAndOneTerminator)
{
    QorString s("abc");
    EXPECT_EQ(s.GetLength(), 3u);
    EXPECT_EQ(Count(s), 4u);
    EXPECT_EQ(Text(s), "abc");
    EXPECT_EQ(s[3], 0);
}

TEST(QorStringConstruct, CStringStopsAtItsFirstZeroByte)
{
    QorString s("ab\0cd");
    EXPECT_EQ(s.GetLength(), 2u);
    EXPECT_EQ(Text(s), "ab");
}

TEST(QorStringConstruct, NullCStringGivesTheEmptyString)
{
    QorString s(static_cast<const char*>(nullptr));
    EXPECT_EQ(s.GetLength(), 0u);
    EXPECT_EQ(Count(s), 1u);
    EXPECT_EQ(s[0], 0);
}

TEST(QorStringConstruct, CountedCharsTakeExactlyNBytesIncludingZeroBytes)
{
    QorString s("ab\0cd", 5);
    EXPECT_EQ(s.GetLength(), 5u);
    EXPECT_EQ(Count(s), 6u);
    EXPECT_EQ(Text(s), std::string("ab\0cd", 5));
    EXPECT_EQ(s[5], 0);
}

TEST(QorStringConstruct, CountedCharsShorterThanTheSourceStopAtN)
{
    QorString s("abcdef", 3);
    EXPECT_EQ(Text(s), "abc");
    EXPECT_EQ(Count(s), 4u);
    QorString none("abc", 0);
    EXPECT_EQ(none.GetLength(), 0u);
    EXPECT_EQ(Count(none), 1u);
}

TEST(QorStringConstruct, CountedUnsignedBytesKeepBig5BytesUnconverted)
{
    const unsigned char big5[] = {0xA4, 0xA4, 0xA4, 0xE5, 0x00, 0xFF};
    QorString s(big5, 6);
    ASSERT_EQ(s.GetLength(), 6u);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(s[i], big5[i]) << "byte " << i;
    EXPECT_EQ(s[6], 0);
}

TEST(QorStringConstruct, CharGivesOneCharacter)
{
    QorString s('x');
    EXPECT_EQ(Text(s), "x");
    EXPECT_EQ(Count(s), 2u);
}

TEST(QorStringConstruct, ZeroCharGivesLengthOneWithAZeroFirstByte)
{
    QorString s('\0');
    EXPECT_EQ(s.GetLength(), 1u);
    EXPECT_FALSE(s.IsEmpty());
    EXPECT_EQ(s[0], 0);
    EXPECT_EQ(s[1], 0);
}

TEST(QorStringConstruct, UnsignedCharKeepsAHighByte)
{
    QorString s(static_cast<unsigned char>(0xB5));
    EXPECT_EQ(s.GetLength(), 1u);
    EXPECT_EQ(s[0], 0xB5);
}

TEST(QorStringConstruct, CopyHasTheWholeArrayWithCapacityOfItsCountAndGrowTen)
{
    QorString grown;
    for (char c : std::string("hel\0o", 5))
        grown += c;
    ASSERT_EQ(Capacity(grown), 11u);
    QorString copy(grown);
    EXPECT_EQ(Text(copy), std::string("hel\0o", 5));
    EXPECT_TRUE(copy == grown);
    EXPECT_EQ(Count(copy), 6u);
    EXPECT_EQ(Capacity(copy), 6u);
    EXPECT_EQ(copy.GetArray().GetGrow(), 10u);
}

TEST(QorStringConstruct, CopyIsIndependentOfTheSource)
{
    QorString source("abc");
    QorString copy(source);
    copy[0] = 'X';
    EXPECT_EQ(Text(source), "abc");
    EXPECT_EQ(Text(copy), "Xbc");
    EXPECT_NE(static_cast<char*>(source), static_cast<char*>(copy));
}

// Number formatting

TEST(QorStringNumber, IntWidthFiveRightJustifies)
{
    EXPECT_EQ(Text(QorString(12, 5)), "   12");
}

TEST(QorStringNumber, IntNegativeWidthLeftJustifies)
{
    EXPECT_EQ(Text(QorString(12, -5)), "12   ");
}

TEST(QorStringNumber, IntWidthMinusOneAndTheDefaultPrintFreely)
{
    EXPECT_EQ(Text(QorString(12, -1)), "12");
    EXPECT_EQ(Text(QorString(-12, -1)), "-12");
    EXPECT_EQ(Text(QorString(4711)), "4711");
}

TEST(QorStringNumber, IntWidthZeroPrintsWithoutPadding)
{
    EXPECT_EQ(Text(QorString(12, 0)), "12");
    EXPECT_EQ(Text(QorString(-7, 0)), "-7");
}

TEST(QorStringNumber, WidthNarrowerThanTheDigitsDoesNotCut)
{
    EXPECT_EQ(Text(QorString(123456, 3)), "123456");
}

TEST(QorStringNumber, NegativeValuePadsBeforeTheSign)
{
    EXPECT_EQ(Text(QorString(-42, 6)), "   -42");
    EXPECT_EQ(Text(QorString(-42, -6)), "-42   ");
}

TEST(QorStringNumber, IntExtremesPrintInFull)
{
    EXPECT_EQ(Text(QorString(INT_MIN)), "-2147483648");
    EXPECT_EQ(Text(QorString(INT_MAX)), "2147483647");
}

TEST(QorStringNumber, ShortIsWidenedAndFormattedLikeInt)
{
    EXPECT_EQ(Text(QorString(static_cast<short>(-300), static_cast<short>(6))), "  -300");
    EXPECT_EQ(Text(QorString(static_cast<short>(32767))), "32767");
}

TEST(QorStringNumber, LongPrintsAllItsDigits)
{
    EXPECT_EQ(Text(QorString(1234567890123L, 15)), "  1234567890123");
    EXPECT_EQ(Text(QorString(-5L, -3)), "-5 ");
}

TEST(QorStringNumber, LargeWidthPadsToThatWidth)
{
    QorString s(7, 40);
    EXPECT_EQ(s.GetLength(), 40u);
    EXPECT_EQ(Text(s), std::string(39, ' ') + "7");
}

TEST(QorStringNumber, DoubleDigitsThreeDecimalsTwoIsWidthSixFixed)
{
    EXPECT_EQ(Text(QorString(3.14159, 3, 2)), "  3.14");
}

TEST(QorStringNumber, DoubleMinusOneMinusOneAndTheDefaultsUseGeneralFormat)
{
    EXPECT_EQ(Text(QorString(0.5, -1, -1)), "0.5");
    EXPECT_EQ(Text(QorString(100000.0, -1, -1)), "100000");
    EXPECT_EQ(Text(QorString(1234567.0, -1, -1)), "1.23457e+06");
    EXPECT_EQ(Text(QorString(1e20, -1, -1)), "1e+20");
    EXPECT_EQ(Text(QorString(0.25)), "0.25");
}

TEST(QorStringNumber, DoubleFixedRoundsToTheDecimals)
{
    EXPECT_EQ(Text(QorString(-1.25, 2, 1)), "-1.2");
    EXPECT_EQ(Text(QorString(2.71828, 1, 3)), "2.718");
    EXPECT_EQ(Text(QorString(3.7, 0, 0)), "4");
}

TEST(QorStringNumber, DoubleFixedWiderThanTheWidthIsNotCut)
{
    EXPECT_EQ(Text(QorString(9.999, 1, 2)), "10.00");
    EXPECT_EQ(Text(QorString(12345.5, 1, 1)), "12345.5");
}

TEST(QorStringNumber, LoneMinusOneDigitsStillEntersTheWidthSum)
{
    // Width -1 + 2 + 1 = 2, precision 2.
    EXPECT_EQ(Text(QorString(1.5, -1, 2)), "1.50");
    // Width -1 + 6 + 1 = 6: exactly the text's width, no padding.
    EXPECT_EQ(Text(QorString(0.5, -1, 6)), "0.500000");
}

TEST(QorStringNumber, LoneMinusOneDecimalsMeansNoPrecisionGiven)
{
    // Width 4 + -1 + 1 = 4; a negative precision is as if none was given (six places).
    EXPECT_EQ(Text(QorString(1.5, 4, -1)), "1.500000");
    EXPECT_EQ(Text(QorString(2.0, 12, -1)), "    2.000000");
}

TEST(QorStringNumber, NegativeWidthSumLeftJustifies)
{
    // Width -6 + 2 + 1 = -3: left-justified in three columns, the text is wider.
    EXPECT_EQ(Text(QorString(1.5, -6, 2)), "1.50");
    // Width -9 + 1 + 1 = -7.
    EXPECT_EQ(Text(QorString(1.5, -9, 1)), "1.5    ");
}

TEST(QorStringNumber, FloatIsWidenedToDoubleBeforePrinting)
{
    EXPECT_EQ(Text(QorString(0.1f, 1, 10)), "0.1000000015");
    EXPECT_EQ(Text(QorString(0.1, 1, 10)), "0.1000000000");
}

TEST(QorStringNumber, FloatPrintsInBothFormats)
{
    EXPECT_EQ(Text(QorString(0.5f)), "0.5");
    EXPECT_EQ(Text(QorString(16777216.0f, -1, -1)), "1.67772e+07");
    EXPECT_EQ(Text(QorString(0.1f, -1, -1)), "0.1");
    EXPECT_EQ(Text(QorString(3.14159f, 3, 2)), "  3.14");
}

// Assignment and conversion

TEST(QorStringAssign, FromStringCopiesTheArray)
{
    QorString a("first");
    QorString b("xy\0z", 4);
    a = b;
    EXPECT_EQ(Text(a), std::string("xy\0z", 4));
    EXPECT_EQ(Count(a), 5u);
    EXPECT_EQ(Capacity(a), 5u);
    EXPECT_NE(static_cast<char*>(a), static_cast<char*>(b));
}

TEST(QorStringAssign, SelfAssignmentKeepsTheText)
{
    QorString a("same");
    QorString& alias = a;
    a = alias;
    EXPECT_EQ(Text(a), "same");
    EXPECT_EQ(Count(a), 5u);
}

TEST(QorStringAssign, FromCStringIncludesItsTerminator)
{
    QorString a("a much longer text");
    a = "hello";
    EXPECT_EQ(Text(a), "hello");
    EXPECT_EQ(Count(a), 6u);
    EXPECT_EQ(Capacity(a), 6u);
    a = static_cast<const char*>(nullptr);
    EXPECT_EQ(a.GetLength(), 0u);
    EXPECT_EQ(Count(a), 1u);
}

TEST(QorStringAssign, FromOwnTailKeepsTheTail)
{
    QorString a("abcdef");
    a = static_cast<const char*>(a) + 3;
    EXPECT_EQ(Text(a), "def");
}

TEST(QorStringAssign, CharPointerConversionGivesTheFirstByte)
{
    QorString a("abc");
    char* p = a;
    EXPECT_STREQ(p, "abc");
    EXPECT_EQ(static_cast<const void*>(p), static_cast<const void*>(a.GetArray()));
}

// Comparison

TEST(QorStringCompare, EqualStringsHaveTheSameBytes)
{
    EXPECT_TRUE(QorString("abc") == QorString("abc"));
    EXPECT_FALSE(QorString("abc") == QorString("abd"));
    EXPECT_FALSE(QorString("abc") == QorString("abcd"));
}

TEST(QorStringCompare, StringEqualityComparesBytesAfterAnEmbeddedZero)
{
    EXPECT_TRUE(Bytes(std::string("ab\0c", 4)) == Bytes(std::string("ab\0c", 4)));
    EXPECT_FALSE(Bytes(std::string("ab\0c", 4)) == Bytes(std::string("ab\0d", 4)));
    EXPECT_FALSE(Bytes(std::string("ab\0c", 4)) == QorString("ab"));
}

TEST(QorStringCompare, CStringEqualityNeedsTheSameLength)
{
    QorString s("abc");
    EXPECT_TRUE(s == "abc");
    EXPECT_FALSE(s == "ab");
    EXPECT_FALSE(s == "abcd");
    EXPECT_FALSE(s == "abd");
}

TEST(QorStringCompare, CStringEqualityCountsTheWholeLengthOfThisString)
{
    QorString s("ab\0c", 4);
    EXPECT_FALSE(s == "ab");
}

TEST(QorStringCompare, UnsignedCStringEquality)
{
    const unsigned char big5[] = {0xA4, 0xA4, 0x00};
    QorString s(big5, 2);
    EXPECT_TRUE(s == big5);
    const unsigned char other[] = {0xA4, 0xA5, 0x00};
    EXPECT_FALSE(s == other);
}

TEST(QorStringCompare, TwoEmptyTextsAreEqualWithEitherOperator)
{
    QorString a;
    QorString b("");
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a == "");
    EXPECT_TRUE(a == reinterpret_cast<const unsigned char*>(""));
    EXPECT_TRUE(a == static_cast<const char*>(nullptr));
}

TEST(QorStringCompare, NotEqualReadsTheOtherStringAsACString)
{
    QorString shortText("ab");
    QorString withZero("ab\0cd", 5);
    // The arrays differ, yet != only sees "ab" in withZero: both answers are false.
    EXPECT_FALSE(shortText == withZero);
    EXPECT_FALSE(shortText != withZero);
    // The other way round, "ab" is compared with the whole five-byte text.
    EXPECT_TRUE(withZero != shortText);
}

TEST(QorStringCompare, NotEqualOnPlainTextsAndCStrings)
{
    EXPECT_TRUE(QorString("abc") != QorString("abd"));
    EXPECT_FALSE(QorString("abc") != QorString("abc"));
    EXPECT_FALSE(QorString() != QorString());
    QorString s("abc");
    EXPECT_TRUE(s != "abd");
    EXPECT_TRUE(s != "ab");
    EXPECT_FALSE(s != "abc");
}

// Concatenation

TEST(QorStringAppend, CStringReplacesTheTerminator)
{
    QorString s("ab");
    s += "cd";
    EXPECT_EQ(Text(s), "abcd");
    EXPECT_EQ(Count(s), 5u);
    EXPECT_EQ(s[4], 0);
    s += "";
    EXPECT_EQ(Text(s), "abcd");
    EXPECT_EQ(Count(s), 5u);
}

TEST(QorStringAppend, UnsignedCString)
{
    QorString s("ab");
    const unsigned char more[] = {0xA4, 0xA4, 0x00};
    s += more;
    EXPECT_EQ(Text(s), "ab\xA4\xA4");
}

TEST(QorStringAppend, CharAndUnsignedChar)
{
    QorString s;
    s += 'a';
    s += static_cast<unsigned char>(0xFE);
    EXPECT_EQ(Text(s), "a\xFE");
    EXPECT_EQ(Count(s), 3u);
}

TEST(QorStringAppend, ZeroCharBecomesPartOfTheText)
{
    QorString s("abc");
    s += '\0';
    EXPECT_EQ(s.GetLength(), 4u);
    EXPECT_EQ(Text(s), std::string("abc\0", 4));
    EXPECT_EQ(Count(s), 5u);
}

TEST(QorStringAppend, StringIsAppendedUpToItsFirstZeroByte)
{
    QorString s("x");
    s += QorString("ab\0cd", 5);
    EXPECT_EQ(Text(s), "xab");
}

TEST(QorStringAppend, StringToItself)
{
    QorString s("ab");
    s += s;
    EXPECT_EQ(Text(s), "abab");
}

TEST(QorStringAppend, OwnTailAsCString)
{
    QorString s("abc");
    s += static_cast<const char*>(s) + 1;
    EXPECT_EQ(Text(s), "abcbc");
}

TEST(QorStringAppend, SingleCharactersGrowTheCapacityByTen)
{
    QorString s;
    std::vector<unsigned long> capacities;
    for (int i = 0; i < 21; ++i)
    {
        s += static_cast<char>('a' + i % 26);
        capacities.push_back(Capacity(s));
    }
    // Length 1 to 10 fit in 11 bytes, 11 to 20 in 21, 21 in 31.
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(capacities[i], 11u) << "length " << i + 1;
    for (int i = 10; i < 20; ++i)
        EXPECT_EQ(capacities[i], 21u) << "length " << i + 1;
    EXPECT_EQ(capacities[20], 31u);
    EXPECT_EQ(Text(s), "abcdefghijklmnopqrstu");
}

TEST(QorStringAppend, TwentyFiveBytesGrowByThirty)
{
    QorString s;
    s += "0123456789012345678901234";
    EXPECT_EQ(s.GetLength(), 25u);
    EXPECT_EQ(Capacity(s), 30u);
}

TEST(QorStringPlus, StringPlusString)
{
    QorString a("ab");
    QorString b("cd");
    QorString c = a + b;
    EXPECT_EQ(Text(c), "abcd");
    EXPECT_EQ(Text(a), "ab");
    EXPECT_EQ(Text(b), "cd");
}

TEST(QorStringPlus, StringPlusStringCopiesTheLeftWhollyAndReadsTheRightAsACString)
{
    EXPECT_EQ(Text(QorString("x") + QorString("ab\0cd", 5)), "xab");
    EXPECT_EQ(Text(QorString("a\0b", 3) + QorString("c")), std::string("a\0bc", 4));
}

TEST(QorStringPlus, StringPlusCString)
{
    EXPECT_EQ(Text(QorString("ab") + "cd"), "abcd");
}

TEST(QorStringPlus, StringPlusUnsignedCString)
{
    const unsigned char more[] = {'c', 0xA4, 0x00};
    EXPECT_EQ(Text(QorString("ab") + more), "abc\xA4");
}

TEST(QorStringPlus, CStringPlusString)
{
    EXPECT_EQ(Text("ab" + QorString("cd")), "abcd");
}

TEST(QorStringPlus, UnsignedCStringPlusString)
{
    const unsigned char left[] = {0xB5, 'a', 0x00};
    EXPECT_EQ(Text(left + QorString("cd")), "\xB5" "acd");
}

// Indexing

TEST(QorStringIndex, EveryIndexTypeReadsTheSameByte)
{
    const QorString s("abcdef");
    EXPECT_EQ(s[2], 'c');
    EXPECT_EQ(s[static_cast<char>(2)], 'c');
    EXPECT_EQ(s[static_cast<short>(2)], 'c');
    EXPECT_EQ(s[static_cast<unsigned char>(2)], 'c');
    EXPECT_EQ(s[static_cast<unsigned short>(2)], 'c');
}

TEST(QorStringIndex, IndexAtTheLengthIsTheTerminator)
{
    const QorString s("abc");
    EXPECT_EQ(s[3], 0);
    EXPECT_EQ(s[static_cast<char>(3)], 0);
    EXPECT_EQ(s[static_cast<unsigned short>(3)], 0);
}

TEST(QorStringIndex, NonConstIndexWritesThroughEveryIndexType)
{
    QorString s("abcdef");
    s[0] = 'A';
    s[static_cast<char>(1)] = 'B';
    s[static_cast<short>(2)] = 'C';
    s[static_cast<unsigned char>(3)] = 'D';
    s[static_cast<unsigned short>(4)] = 'E';
    EXPECT_EQ(Text(s), "ABCDEf");
}

TEST(QorStringIndex, UnsignedIndexTypesAreZeroExtended)
{
    QorString s = Pattern(40001);
    EXPECT_EQ(s[static_cast<unsigned char>(200)], PatternByte(200));
    EXPECT_EQ(s[static_cast<unsigned char>(255)], PatternByte(255));
    EXPECT_EQ(s[static_cast<unsigned short>(40000)], PatternByte(40000));
    EXPECT_EQ(s[static_cast<unsigned short>(40001)], 0);
}

TEST(QorStringIndex, LargestPositiveSignedIndicesReachTheirByte)
{
    QorString s = Pattern(32768);
    EXPECT_EQ(s[static_cast<char>(127)], PatternByte(127));
    EXPECT_EQ(s[static_cast<short>(32767)], PatternByte(32767));
}

// Queries and edits

TEST(QorStringQuery, LengthCountsEveryByteButTheTerminator)
{
    EXPECT_EQ(QorString("hello").GetLength(), 5u);
    EXPECT_EQ(QorString("a\0\0b", 4).GetLength(), 4u);
    EXPECT_EQ(QorString().GetLength(), 0u);
}

TEST(QorStringQuery, IsEmptyOnlyForLengthZero)
{
    EXPECT_TRUE(QorString().IsEmpty());
    EXPECT_TRUE(QorString("").IsEmpty());
    EXPECT_FALSE(QorString(" ").IsEmpty());
}

TEST(QorStringQuery, EmptyLeavesStorageForExactlyOneByte)
{
    QorString s;
    for (int i = 0; i < 15; ++i)
        s += 'z';
    ASSERT_EQ(Capacity(s), 21u);
    s.Empty();
    EXPECT_EQ(s.GetLength(), 0u);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(Count(s), 1u);
    EXPECT_EQ(Capacity(s), 1u);
    EXPECT_EQ(s[0], 0);
    s += "ok";
    EXPECT_EQ(Text(s), "ok");
}

TEST(QorStringQuery, FreeExtraShrinksTheCapacityToTheCount)
{
    QorString s;
    for (char c : std::string("abcd"))
        s += c;
    ASSERT_EQ(Capacity(s), 11u);
    s.FreeExtra();
    EXPECT_EQ(Capacity(s), 5u);
    EXPECT_EQ(Count(s), 5u);
    EXPECT_EQ(Text(s), "abcd");
    // Without spare storage the buffer stays where it is.
    const char* before = s;
    s.FreeExtra();
    EXPECT_EQ(static_cast<const char*>(s), before);
}

// Cutting

TEST(QorStringCut, LeftWithinTheLength)
{
    QorString s("abcdef");
    QorString left = s.Left(2);
    EXPECT_EQ(Text(left), "ab");
    EXPECT_EQ(Count(left), 3u);
    EXPECT_EQ(Text(s.Left(6)), "abcdef");
    QorString none = s.Left(0);
    EXPECT_EQ(none.GetLength(), 0u);
    EXPECT_EQ(Count(none), 1u);
    EXPECT_EQ(s.GetException(), 0);
}

TEST(QorStringCut, LeftBeyondTheLengthClampsAndSetsFourOnTheSource)
{
    QorString s("abc");
    QorString left = s.Left(10);
    EXPECT_EQ(Text(left), "abc");
    EXPECT_EQ(s.GetException(), 4);
    EXPECT_EQ(left.GetException(), 0);
}

TEST(QorStringCut, RightWithinTheLength)
{
    QorString s("abcdef");
    EXPECT_EQ(Text(s.Right(2)), "ef");
    EXPECT_EQ(Text(s.Right(0)), "");
    EXPECT_EQ(s.GetException(), 0);
}

TEST(QorStringCut, RightBeyondTheLengthClampsAndSetsFourOnTheSource)
{
    QorString s("abc");
    QorString right = s.Right(4);
    EXPECT_EQ(Text(right), "abc");
    EXPECT_EQ(s.GetException(), 4);
    EXPECT_EQ(right.GetException(), 0);
}

TEST(QorStringCut, MidWithinTheLength)
{
    QorString s("abcdef");
    EXPECT_EQ(Text(s.Mid(1, 3)), "bcd");
    EXPECT_EQ(Text(s.Mid(0, 6)), "abcdef");
    EXPECT_EQ(s.GetException(), 0);
}

TEST(QorStringCut, MidRunningPastTheEndClampsTheCount)
{
    QorString s("abc");
    QorString mid = s.Mid(1, 5);
    EXPECT_EQ(Text(mid), "bc");
    EXPECT_EQ(s.GetException(), 4);
    EXPECT_EQ(mid.GetException(), 0);
    EXPECT_EQ(Text(s.Mid(1, ULONG_MAX)), "bc");
}

TEST(QorStringCut, MidStartBeyondTheLengthGivesTheLastCharacter)
{
    QorString s("abc");
    QorString mid = s.Mid(5, 2);
    EXPECT_EQ(Text(mid), "c");
    EXPECT_EQ(s.GetException(), 4);
    EXPECT_EQ(mid.GetException(), 0);
}

TEST(QorStringCut, MidStartAtTheLength)
{
    QorString s("abc");
    EXPECT_EQ(Text(s.Mid(3, 0)), "");
    EXPECT_EQ(s.GetException(), 0);
    EXPECT_EQ(Text(s.Mid(3, 1)), "");
    EXPECT_EQ(s.GetException(), 4);
}

TEST(QorStringCut, MidStartBeyondAnEmptyStringGivesEmptyAndSetsFour)
{
    QorString s;
    QorString mid = s.Mid(1, 1);
    EXPECT_EQ(mid.GetLength(), 0u);
    EXPECT_EQ(Count(mid), 1u);
    EXPECT_EQ(s.GetException(), 4);
}

TEST(QorStringCut, TheCodeIsNeverClearedByALaterCut)
{
    QorString s("abc");
    s.Left(9);
    ASSERT_EQ(s.GetException(), 4);
    EXPECT_EQ(Text(s.Left(1)), "a");
    EXPECT_EQ(Text(s.Right(1)), "c");
    EXPECT_EQ(Text(s.Mid(1, 1)), "b");
    EXPECT_EQ(s.GetException(), 4);
}

TEST(QorStringCut, CutsKeepEmbeddedZeroBytes)
{
    QorString s("a\0bc", 4);
    EXPECT_EQ(Text(s.Mid(1, 2)), std::string("\0b", 2));
    EXPECT_EQ(Text(s.Left(2)), std::string("a\0", 2));
    EXPECT_EQ(Text(s.Right(3)), std::string("\0bc", 3));
}

TEST(QorStringCut, CutsLeaveTheSourceTextUnchanged)
{
    QorString s("abcdef");
    s.Left(2);
    s.Right(20);
    s.Mid(4, 9);
    EXPECT_EQ(Text(s), "abcdef");
}

// Altering the length

TEST(QorStringAlterLength, AtMostTheSourceLengthCopiesTheSourceAndAnswersTrue)
{
    QorString s("xy");
    EXPECT_TRUE(s.AlterLength(2, "hello"));
    EXPECT_EQ(Text(s), "hello");
    EXPECT_EQ(Count(s), 6u);
    QorString t;
    EXPECT_TRUE(t.AlterLength(5, "hello"));
    EXPECT_EQ(Text(t), "hello");
}

TEST(QorStringAlterLength, BeyondTheSourceLengthAnswersFalseAndAddsNoSpaces)
{
    QorString s("xy");
    EXPECT_FALSE(s.AlterLength(8, "hello"));
    EXPECT_EQ(Text(s), "hello");
    EXPECT_EQ(s.GetLength(), 5u);
}

TEST(QorStringAlterLength, WithoutSourceKeepsOwnText)
{
    QorString s("abc");
    EXPECT_FALSE(s.AlterLength(5));
    EXPECT_EQ(Text(s), "abc");
    EXPECT_TRUE(s.AlterLength(3));
    EXPECT_EQ(Text(s), "abc");
    EXPECT_TRUE(s.AlterLength(0));
    EXPECT_EQ(Text(s), "abc");
}

TEST(QorStringAlterLength, OwnTextEndsAtItsFirstZeroByte)
{
    QorString s("ab\0cd", 5);
    EXPECT_TRUE(s.AlterLength(1));
    EXPECT_EQ(Text(s), "ab");
    EXPECT_EQ(Count(s), 3u);
}

TEST(QorStringAlterLength, SourceInsideOwnStorage)
{
    QorString s("abcdef");
    EXPECT_TRUE(s.AlterLength(3, static_cast<const char*>(s) + 2));
    EXPECT_EQ(Text(s), "cdef");
}

TEST(QorStringAlterLength, EmptySourceWithZeroLength)
{
    QorString s("abc");
    EXPECT_TRUE(s.AlterLength(0, ""));
    EXPECT_EQ(s.GetLength(), 0u);
    EXPECT_FALSE(s.AlterLength(1, ""));
    EXPECT_EQ(Count(s), 1u);
}

// Persistence

TEST(QorStringSave, SaveBytesAreLengthPlusFour)
{
    EXPECT_EQ(QorString("abc").GetSaveBytes(), 7u);
    EXPECT_EQ(QorString().GetSaveBytes(), 4u);
    EXPECT_EQ(QorString("a\0b", 3).GetSaveBytes(), 7u);
}

TEST(QorStringSave, AbcIsWrittenAsLengthThenBytes)
{
    const std::string path = qortest::TempPath("abc.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    EXPECT_EQ(QorString("abc").Save(file), 7u);
    EXPECT_EQ(file.GetPosition(), 7u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (std::vector<std::uint8_t>{0x03, 0x00, 0x00, 0x00, 0x61, 0x62, 0x63}));
}

TEST(QorStringSave, EmptyStringIsFourZeroBytes)
{
    const std::string path = qortest::TempPath("empty.bin");
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    EXPECT_EQ(QorString().Save(file), 4u);
    file.Close();
    EXPECT_EQ(qortest::ReadAll(path), (std::vector<std::uint8_t>{0, 0, 0, 0}));
}

TEST(QorStringSave, LengthIsLittleEndianAndBytesAreUnconverted)
{
    const std::string path = qortest::TempPath("long.bin");
    QorString s = Pattern(300);
    s[10] = 0;
    s[11] = 0xA4;
    QorFile file;
    ASSERT_TRUE(file.Open(path.c_str(), QorFile::kWrite));
    EXPECT_EQ(s.Save(file), 304u);
    file.Close();
    const std::vector<std::uint8_t> bytes = qortest::ReadAll(path);
    ASSERT_EQ(bytes.size(), 304u);
    EXPECT_EQ(bytes[0], 0x2C);
    EXPECT_EQ(bytes[1], 0x01);
    EXPECT_EQ(bytes[2], 0x00);
    EXPECT_EQ(bytes[3], 0x00);
    for (unsigned long i = 0; i < 300; ++i)
        ASSERT_EQ(bytes[4 + i], s[i]) << "byte " << i;
}

TEST(QorStringLoad, ReadsBackAbcWithLengthThree)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("abc.bin"), {0x03, 0x00, 0x00, 0x00, 0x61, 0x62, 0x63});
    QorString s("previous text");
    EXPECT_EQ(s.Load(file), 7u);
    EXPECT_EQ(Text(s), "abc");
    EXPECT_EQ(Count(s), 4u);
    EXPECT_EQ(file.GetPosition(), 7u);
}

TEST(QorStringLoad, ReadsEmbeddedZeroBytes)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("zero.bin"), {0x03, 0x00, 0x00, 0x00, 'a', 0x00, 'b'});
    QorString s;
    EXPECT_EQ(s.Load(file), 7u);
    EXPECT_EQ(Text(s), std::string("a\0b", 3));
}

TEST(QorStringLoad, SaveThenLoadRoundTripsSeveralStrings)
{
    const std::string path = qortest::TempPath("two.bin");
    QorFile out;
    ASSERT_TRUE(out.Open(path.c_str(), QorFile::kWrite));
    QorString("first").Save(out);
    QorString().Save(out);
    Pattern(70).Save(out);
    out.Close();

    QorFile in;
    ASSERT_TRUE(in.Open(path.c_str(), QorFile::kRead));
    QorString a, b, c;
    EXPECT_EQ(a.Load(in), 9u);
    EXPECT_EQ(b.Load(in), 4u);
    EXPECT_EQ(c.Load(in), 74u);
    EXPECT_EQ(Text(a), "first");
    EXPECT_TRUE(b.IsEmpty());
    EXPECT_TRUE(c == Pattern(70));
    EXPECT_TRUE(in.IsEnd());
}

TEST(QorStringLoad, StoredLengthBeyondTheFileKeepsTheBytesPresent)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("short.bin"), {0x0A, 0x00, 0x00, 0x00, 'a', 'b'});
    QorString s;
    EXPECT_EQ(s.Load(file), 6u);
    EXPECT_EQ(Text(s), "ab");
    EXPECT_EQ(Count(s), 3u);
}

TEST(QorStringLoad, HugeStoredLengthAllocatesOnlyWhatTheFileHolds)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("huge.bin"), {0xFF, 0xFF, 0xFF, 0x7F, 'x', 'y', 'z'});
    QorString s;
    EXPECT_EQ(s.Load(file), 7u);
    EXPECT_EQ(Text(s), "xyz");
    EXPECT_EQ(Capacity(s), 4u);
}

TEST(QorStringLoad, NegativeStoredLengthReadsNothing)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("negative.bin"), {0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b'});
    QorString s("old");
    EXPECT_EQ(s.Load(file), 4u);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(Count(s), 1u);
    EXPECT_EQ(file.GetPosition(), 4u);
}

TEST(QorStringLoad, TruncatedLengthFieldGivesTheEmptyString)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("truncated.bin"), {0x03, 0x00});
    QorString s("old");
    EXPECT_EQ(s.Load(file), 4u);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(file.GetPosition(), 2u);
}

TEST(QorStringLoad, ZeroSizeFileGivesTheEmptyString)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("zero.bin"), {});
    QorString s("old");
    EXPECT_EQ(s.Load(file), 4u);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST(QorStringLoad, ClosedStreamGivesTheEmptyString)
{
    QorFile file;
    QorString s("old");
    EXPECT_EQ(s.Load(file), 4u);
    EXPECT_TRUE(s.IsEmpty());
}

TEST(QorStringLoad, ExpectedLengthMatchingLoadsTheText)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("abc.bin"), {0x03, 0x00, 0x00, 0x00, 0x61, 0x62, 0x63});
    QorString s("old");
    EXPECT_TRUE(s.Load(file, 3));
    EXPECT_EQ(Text(s), "abc");
    EXPECT_EQ(file.GetPosition(), 7u);
}

TEST(QorStringLoad, ExpectedFiveOverStoredThreeStepsBackToTheLengthField)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("abc.bin"), {0x03, 0x00, 0x00, 0x00, 0x61, 0x62, 0x63});
    QorString s("keep");
    EXPECT_FALSE(s.Load(file, 5));
    EXPECT_EQ(Text(s), "keep");
    EXPECT_EQ(file.GetPosition(), 0u);
    // The descriptor moved back too: the next read sees the length field again.
    EXPECT_EQ(s.Load(file), 7u);
    EXPECT_EQ(Text(s), "abc");
}

TEST(QorStringLoad, ExpectedMismatchAfterOtherDataReturnsToThatField)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("after.bin"), {0x07, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 'h', 'i'});
    int first = 0;
    file >> first;
    ASSERT_EQ(first, 7);
    QorString s;
    EXPECT_FALSE(s.Load(file, 7));
    EXPECT_EQ(file.GetPosition(), 4u);
    EXPECT_TRUE(s.Load(file, 2));
    EXPECT_EQ(Text(s), "hi");
}

TEST(QorStringLoad, ExpectedOverATruncatedLengthStepsBackOnlyTheBytesRead)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("truncated.bin"), {0x01, 0x02, 0x03});
    QorString s("keep");
    EXPECT_FALSE(s.Load(file, 0x030201));
    EXPECT_EQ(Text(s), "keep");
    EXPECT_EQ(file.GetPosition(), 0u);
    unsigned char first = 0;
    file >> first;
    EXPECT_EQ(first, 0x01);
}

TEST(QorStringLoad, ExpectedZeroOnAZeroSizeFileIsFalse)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("zero.bin"), {});
    QorString s("keep");
    EXPECT_FALSE(s.Load(file, 0));
    EXPECT_EQ(Text(s), "keep");
    EXPECT_EQ(file.GetPosition(), 0u);
}

TEST(QorStringLoad, ExpectedLengthBeyondTheFileKeepsTheBytesPresent)
{
    QorFile file;
    OpenWith(file, qortest::TempPath("short.bin"), {0x05, 0x00, 0x00, 0x00, 'a', 'b'});
    QorString s;
    EXPECT_TRUE(s.Load(file, 5));
    EXPECT_EQ(Text(s), "ab");
}
