#include "test_util.h"

#include "qor/files.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace
{
std::string Text(const QorString& s)
{
    return std::string(static_cast<const char*>(s), s.GetLength());
}

// Holds a copy of the text in a block of exactly its size, so that a read past the end is caught.
class Source
{
public:
    explicit Source(const std::string& text) : m_bytes(text.begin(), text.end()) {}
    void Target(QorParser& parser) const
    {
        parser.SetTargetString(m_bytes.empty() ? "" : m_bytes.data(), m_bytes.size());
    }

private:
    std::vector<char> m_bytes;
};

struct Where
{
    unsigned long position;
    unsigned long line;
    unsigned long column;
    bool operator==(const Where& o) const { return position == o.position && line == o.line && column == o.column; }
};

std::ostream& operator<<(std::ostream& out, const Where& w)
{
    return out << "{pos " << w.position << ", line " << w.line << ", col " << w.column << "}";
}

Where At(const QorParser& p)
{
    return Where{p.GetPosition(), p.GetLine(), p.GetColumn()};
}

struct Token
{
    int type;
    std::string text;
    bool operator==(const Token& o) const { return type == o.type && text == o.text; }
};

std::ostream& operator<<(std::ostream& out, const Token& t)
{
    return out << "{" << t.type << ", \"" << t.text << "\"}";
}

Token Next(QorParser& p)
{
    QorString token("stale");
    const int type = p.GetNextToken(token);
    return Token{type, Text(token)};
}

std::vector<Token> AllTokens(QorParser& p)
{
    std::vector<Token> out;
    for (;;)
    {
        Token t = Next(p);
        out.push_back(t);
        if (t.type == QorParser::kEndOfInput)
            return out;
    }
}

struct Line
{
    int result;
    std::string text;
    bool operator==(const Line& o) const { return result == o.result && text == o.text; }
};

std::ostream& operator<<(std::ostream& out, const Line& l)
{
    return out << "{" << l.result << ", \"" << l.text << "\"}";
}

Line NextLine(QorParser& p)
{
    QorString line("stale");
    const int result = p.GetNextLine(line);
    return Line{result, Text(line)};
}

Line NextLine(QorParser& p, unsigned long max)
{
    QorString line("stale");
    const int result = p.GetNextLine(line, max);
    return Line{result, Text(line)};
}

std::vector<Line> AllLines(QorParser& p)
{
    std::vector<Line> out;
    for (;;)
    {
        Line l = NextLine(p);
        out.push_back(l);
        if (l.result == 255)
            return out;
    }
}

void WriteText(const std::string& path, const std::string& text)
{
    qortest::WriteAll(path, std::vector<std::uint8_t>(text.begin(), text.end()));
}

// A line "Lnnnnnn " padded with dots so that tail begins exactly at offset, then tail and eol.
void AppendLineWithTailAt(std::string& s, std::size_t number, std::size_t offset, const std::string& tail,
                          const std::string& eol)
{
    char head[16];
    std::snprintf(head, sizeof head, "L%06zu ", number);
    s += head;
    ASSERT_LE(s.size(), offset);
    s.append(offset - s.size(), '.');
    s += tail;
    s += eol;
}

// Numbered lines of 29 bytes up to near offset.
void AppendNumberedLinesBefore(std::string& s, std::size_t& number, std::size_t offset)
{
    while (s.size() + 64 < offset)
    {
        char line[40];
        std::snprintf(line, sizeof line, "L%06zu the quick brown fox!\n", number++);
        s += line;
    }
}

// More than three refills of content, with the awkward bytes placed on the buffer's edges: Big5 pairs over
// target positions 99999/100000 and 100009/100010 (the first buffer's end), a CR LF over 199999/200000, a
// pair over 200009/200010, a line feed at 300000 and a CR LF over 300009/300010.
std::string BigText()
{
    std::string s;
    std::size_t number = 1;
    AppendNumberedLinesBefore(s, number, 99999);
    AppendLineWithTailAt(s, number++, 99999,
                         "\xA5\x7C"
                         "12345678"
                         "\xA5\x7C"
                         "end",
                         "\r\n");
    AppendNumberedLinesBefore(s, number, 199998);
    AppendLineWithTailAt(s, number++, 199998, "z", "\r\n");
    AppendLineWithTailAt(s, number++, 200009, "\xA4\xE5|", "\n");
    AppendNumberedLinesBefore(s, number, 299999);
    AppendLineWithTailAt(s, number++, 299999, "q", "\n");
    AppendLineWithTailAt(s, number++, 300009, "", "\r\n");
    AppendNumberedLinesBefore(s, number, 301000);
    s += "last line without terminator";
    return s;
}

// Every line of text the way GetNextLine reads it (LF, CR LF and lone CR terminators).
std::vector<Line> ExpectedLines(const std::string& text)
{
    std::vector<Line> out;
    std::string current;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const unsigned char b = static_cast<unsigned char>(text[i]);
        if (b >= 0xA0 && i + 1 < text.size())
        {
            current += text.substr(i, 2);
            ++i;
            continue;
        }
        if (b == '\n' || b == '\r')
        {
            if (b == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
                ++i;
            out.push_back(Line{current.empty() ? 0 : 1, current});
            current.clear();
            continue;
        }
        current += text[i];
    }
    out.push_back(Line{255, current});
    return out;
}
} // namespace

TEST(QorParser, NewParserHasNoTargetAndStartsAtLineOneColumnOne)
{
    QorParser p;
    EXPECT_EQ(At(p), (Where{0, 1, 1}));
    EXPECT_EQ(p.GetMode(), 1);
    EXPECT_EQ(p.GetTotalLength(), 0u);
    EXPECT_EQ(Next(p), (Token{0, ""}));
    EXPECT_EQ(NextLine(p), (Line{255, ""}));
}

TEST(QorParser, EveryDefaultOperatorIsATokenOfItsOwn)
{
    const std::string operators = "()[]{}<>`~!@#$%^&*-=+\\|;:'\",./?";
    ASSERT_EQ(operators.size(), 31u);
    Source src(operators);
    QorParser p;
    src.Target(p);
    for (char c : operators)
        EXPECT_EQ(Next(p), (Token{3, std::string(1, c)}));
    EXPECT_EQ(Next(p), (Token{0, ""}));
}

TEST(QorParser, DefaultSeparatorsAreSpaceTabLineFeedAndCarriageReturn)
{
    Source src("a \tb\r\nc\vd");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a"}, {1, "b"}, {1, "c\vd"}, {0, ""}}));
}

TEST(QorParser, WordThenOperatorThenNumber)
{
    Source src("abc+12");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "abc"}));
    EXPECT_EQ(At(p), (Where{3, 1, 4}));
    EXPECT_EQ(Next(p), (Token{3, "+"}));
    EXPECT_EQ(At(p), (Where{4, 1, 5}));
    EXPECT_EQ(Next(p), (Token{1, "12"}));
    EXPECT_EQ(At(p), (Where{6, 1, 7}));
    EXPECT_EQ(Next(p), (Token{0, ""}));
    EXPECT_EQ(At(p), (Where{6, 1, 7}));
}

TEST(QorParser, UnderscoreIsPartOfAWord)
{
    Source src("foo_bar");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "foo_bar"}, {0, ""}}));
}

TEST(QorParser, SeparatorAfterAWordIsLeftForTheNextCall)
{
    Source src("ab  cd");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "ab"}));
    EXPECT_EQ(p.GetPosition(), 2u);
    EXPECT_EQ(Next(p), (Token{1, "cd"}));
    EXPECT_EQ(p.GetPosition(), 6u);
}

TEST(QorParser, AdjacentOperatorsAreSeparateTokens)
{
    Source src("a+=-b");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a"}, {3, "+"}, {3, "="}, {3, "-"}, {1, "b"}, {0, ""}}));
}

TEST(QorParser, LineFeedsCountLinesAndResetTheColumn)
{
    Source src("a\nbb\n  c");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "a"}));
    EXPECT_EQ(At(p), (Where{1, 1, 2}));
    EXPECT_EQ(Next(p), (Token{1, "bb"}));
    EXPECT_EQ(At(p), (Where{4, 2, 3}));
    EXPECT_EQ(Next(p), (Token{1, "c"}));
    EXPECT_EQ(At(p), (Where{8, 3, 4}));
}

TEST(QorParser, Big5PairWithBarAsSecondByteStaysInTheWordInBig5Mode)
{
    // 四 is A5 7C: its second byte is "|".
    Source src("x\xA5\x7Cy");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "x\xA5\x7Cy"}));
    EXPECT_EQ(At(p), (Where{4, 1, 5}));
    EXPECT_EQ(Next(p), (Token{0, ""}));
}

TEST(QorParser, BarEndsTheWordInSingleByteMode)
{
    Source src("x\xA5\x7Cy");
    QorParser p;
    p.EnableUnicode(0);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "x\xA5"}, {3, "|"}, {1, "y"}, {0, ""}}));
}

TEST(QorParser, Big5PairAdvancesTheColumnByTwo)
{
    Source src("\xA4\xA4\xA4\xE5 a");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "\xA4\xA4\xA4\xE5"}));
    EXPECT_EQ(At(p), (Where{4, 1, 5}));
    EXPECT_EQ(Next(p), (Token{1, "a"}));
    EXPECT_EQ(At(p), (Where{6, 1, 7}));
}

TEST(QorParser, Big5PairWithLineFeedAsSecondByteDoesNotCountALine)
{
    Source src("\xA4\n\nb");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "\xA4\n"}));
    EXPECT_EQ(At(p), (Where{2, 1, 3}));
    EXPECT_EQ(Next(p), (Token{1, "b"}));
    EXPECT_EQ(At(p), (Where{4, 2, 2}));
}

TEST(QorParser, LeadByteAsTheLastByteIsConsumedAlone)
{
    Source src("ab\xA4");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "ab\xA4"}));
    EXPECT_EQ(At(p), (Where{3, 1, 4}));
    EXPECT_EQ(Next(p), (Token{0, ""}));
}

TEST(QorParser, LoneLeadByteIsAWholeInput)
{
    Source src("\xFE");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "\xFE"}));
    EXPECT_EQ(p.GetPosition(), 1u);
}

TEST(QorParser, CustomSeparatorSet)
{
    Source src("a,b c,,d");
    QorParser p;
    p.SetIgnore(",", 2);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a"}, {1, "b c"}, {1, "d"}, {0, ""}}));
}

TEST(QorParser, CustomOperatorSet)
{
    Source src("a-b+c.d");
    QorParser p;
    p.SetOperator("+.", 3);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a-b"}, {3, "+"}, {1, "c"}, {3, "."}, {1, "d"}, {0, ""}}));
}

TEST(QorParser, NullSetLeavesTheSetAsItWas)
{
    Source src("a+b");
    QorParser p;
    p.SetOperator(nullptr, 5);
    p.SetIgnore(nullptr, 5);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a"}, {3, "+"}, {1, "b"}, {0, ""}}));
}

TEST(QorParser, SetGivenWithoutItsTerminatorStillEnds)
{
    Source src("a;b:c");
    QorParser p;
    p.SetOperator(";", 1);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a"}, {3, ";"}, {1, "b:c"}, {0, ""}}));
}

TEST(QorParser, ZeroByteWithinTheGivenSetEndsIt)
{
    Source src("a;b:c");
    QorParser p;
    p.SetOperator(";\0:", 4);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a"}, {3, ";"}, {1, "b:c"}, {0, ""}}));
}

TEST(QorParser, ZeroByteIsASeparatorEvenWithAnEmptySeparatorSet)
{
    Source src(std::string("ab\0cd \0", 7));
    QorParser p;
    p.SetIgnore("", 1);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "ab"}, {1, "cd "}, {0, ""}}));
    EXPECT_EQ(p.GetPosition(), 7u);
}

TEST(QorParser, ZeroByteEndsAWordWhenBothSetsAreEmpty)
{
    Source src(std::string("ab\0cd", 5));
    QorParser p;
    p.SetIgnore("", 1);
    p.SetOperator("", 1);
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "ab"}));
    EXPECT_EQ(p.GetPosition(), 2u);
    QorString rest;
    EXPECT_FALSE(p.GetNextUntil(rest, "x", 1));
    EXPECT_EQ(Text(rest), std::string("\0cd", 3));
}

TEST(QorParser, LeadByteListedAsAnOperatorTakesItsPairInBig5Mode)
{
    Source src("a\xA4\xA4"
               "b");
    QorParser p;
    p.SetOperator("\xA4", 2);
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "a"}, {3, "\xA4\xA4"}, {1, "b"}, {0, ""}}));
}

TEST(QorParser, EnableUnicodeTreatsAnyNonZeroValueAsBig5Mode)
{
    Source src("x\xA5\x7Cy");
    QorParser p;
    p.EnableUnicode(7);
    EXPECT_EQ(p.GetMode(), 1);
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "x\xA5\x7Cy"}));
    p.EnableUnicode(0);
    EXPECT_EQ(p.GetMode(), 0);
}

TEST(QorParser, GetNextUntilConsumesTheStopAndDoesNotStoreIt)
{
    Source src("key=value;rest");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntil(text, '='));
    EXPECT_EQ(Text(text), "key");
    EXPECT_EQ(At(p), (Where{4, 1, 5}));
    EXPECT_TRUE(p.GetNextUntil(text, ';'));
    EXPECT_EQ(Text(text), "value");
    EXPECT_EQ(p.GetPosition(), 10u);
}

TEST(QorParser, GetNextUntilWithoutTheStopKeepsWhatWasCollected)
{
    Source src("a b\nc");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_FALSE(p.GetNextUntil(text, '#'));
    EXPECT_EQ(Text(text), "a b\nc");
    EXPECT_EQ(At(p), (Where{5, 2, 2}));
    EXPECT_FALSE(p.GetNextUntil(text, '#'));
    EXPECT_EQ(Text(text), "");
}

TEST(QorParser, GetNextUntilComparesOnlyAtCharacterStarts)
{
    Source src("\xA5\x7C|x");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntil(text, '|'));
    EXPECT_EQ(Text(text), "\xA5\x7C");
    EXPECT_EQ(p.GetPosition(), 3u);

    QorParser single;
    single.EnableUnicode(0);
    src.Target(single);
    EXPECT_TRUE(single.GetNextUntil(text, '|'));
    EXPECT_EQ(Text(text), "\xA5");
    EXPECT_EQ(single.GetPosition(), 2u);
}

TEST(QorParser, GetNextUntilStopsAtAnyOfASetOfStops)
{
    Source src("ab;cd,ef");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntil(text, ",;", 2));
    EXPECT_EQ(Text(text), "ab");
    EXPECT_TRUE(p.GetNextUntil(text, ",;", 2));
    EXPECT_EQ(Text(text), "cd");
    EXPECT_FALSE(p.GetNextUntil(text, ",;", 2));
    EXPECT_EQ(Text(text), "ef");
}

TEST(QorParser, GetNextUntilSetMayHoldAZeroByte)
{
    Source src(std::string("ab\0cd", 5));
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntil(text, std::string("#\0", 2).c_str(), 2));
    EXPECT_EQ(Text(text), "ab");
    EXPECT_EQ(p.GetPosition(), 3u);
}

TEST(QorParser, GetNextUntilWithNoStopsCollectsEverything)
{
    Source src("abc");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_FALSE(p.GetNextUntil(text, nullptr, 3));
    EXPECT_EQ(Text(text), "abc");
}

TEST(QorParser, GetNextUntilStringSkipsTheByteAfterTheStop)
{
    Source src("abc<>def");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntilString(text, "<>", 2));
    EXPECT_EQ(Text(text), "abc");
    EXPECT_EQ(At(p), (Where{6, 1, 7}));
    EXPECT_EQ(Next(p), (Token{1, "ef"}));
}

TEST(QorParser, GetNextUntilStringMissesAStopBeginningInsideAFailedMatch)
{
    Source src("aab");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_FALSE(p.GetNextUntilString(text, "ab", 2));
    EXPECT_EQ(Text(text), "aab");
    EXPECT_EQ(p.GetPosition(), 3u);
}

TEST(QorParser, GetNextUntilStringFindsARepeatedStop)
{
    Source src("x--y--z");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntilString(text, "--", 2));
    EXPECT_EQ(Text(text), "x");
    EXPECT_TRUE(p.GetNextUntilString(text, "--", 2));
    EXPECT_EQ(Text(text), "");
    EXPECT_FALSE(p.GetNextUntilString(text, "--", 2));
    EXPECT_EQ(Text(text), "");
}

TEST(QorParser, GetNextUntilStringWithoutTheStopReturnsEverything)
{
    Source src("one\ntwo");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_FALSE(p.GetNextUntilString(text, "END", 3));
    EXPECT_EQ(Text(text), "one\ntwo");
    EXPECT_EQ(At(p), (Where{7, 2, 4}));
}

TEST(QorParser, GetNextUntilStringWithAPartialStopAtTheEndReturnsFalse)
{
    Source src("abc-");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_FALSE(p.GetNextUntilString(text, "--", 2));
    EXPECT_EQ(Text(text), "abc-");
}

TEST(QorParser, GetNextUntilStringAtTheVeryEndHasNothingToSkip)
{
    Source src("abc--");
    QorParser p;
    src.Target(p);
    QorString text("old");
    EXPECT_TRUE(p.GetNextUntilString(text, "--", 2));
    EXPECT_EQ(Text(text), "abc");
    EXPECT_EQ(p.GetPosition(), 5u);
    EXPECT_FALSE(p.GetNextUntilString(text, "--", 2));
    EXPECT_EQ(Text(text), "");
}

TEST(QorParser, GetNextUntilStringNeverMatchesTheSecondByteOfAPairInBig5Mode)
{
    Source src("\xA5\x7C|x!");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntilString(text, "|x", 2));
    EXPECT_EQ(Text(text), "\xA5\x7C");
    EXPECT_EQ(p.GetPosition(), 5u);

    QorParser single;
    single.EnableUnicode(0);
    src.Target(single);
    // The bar inside the pair starts a match that fails on the real bar, which is then lost to matching.
    EXPECT_FALSE(single.GetNextUntilString(text, "|x", 2));
    EXPECT_EQ(Text(text), "\xA5\x7C|x!");
}

TEST(QorParser, GetNextUntilStringMatchesABig5Stop)
{
    Source src("ab\xA4\xA4"
               "cd");
    QorParser p;
    src.Target(p);
    QorString text;
    EXPECT_TRUE(p.GetNextUntilString(text, "\xA4\xA4", 2));
    EXPECT_EQ(Text(text), "ab");
    EXPECT_EQ(p.GetPosition(), 5u);
}

TEST(QorParser, GetNextUntilStringTakesAQorStringStopWithZeroBytes)
{
    Source src(std::string("ab\0#cd", 6));
    QorParser p;
    src.Target(p);
    QorString stop(std::string("\0#", 2).c_str(), 2);
    QorString text;
    EXPECT_TRUE(p.GetNextUntilString(text, stop));
    EXPECT_EQ(Text(text), "ab");
    EXPECT_EQ(p.GetPosition(), 5u);
}

TEST(QorParser, GetNextUntilStringWithAnEmptyStopMatchesAtOnce)
{
    Source src("xyz");
    QorParser p;
    src.Target(p);
    QorString text("old");
    EXPECT_TRUE(p.GetNextUntilString(text, "", 0));
    EXPECT_EQ(Text(text), "");
    EXPECT_EQ(p.GetPosition(), 1u);
}

TEST(QorParser, GetNextLineWithCarriageReturnLineFeedAndNoFinalTerminator)
{
    Source src("ab\r\ncd");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p), (Line{1, "ab"}));
    EXPECT_EQ(At(p), (Where{4, 2, 1}));
    EXPECT_EQ(NextLine(p), (Line{255, "cd"}));
    EXPECT_EQ(At(p), (Where{6, 2, 3}));
    EXPECT_EQ(NextLine(p), (Line{255, ""}));
}

TEST(QorParser, EmptyLineGivesZeroAndMovesPastItsTerminator)
{
    Source src("\nx\n");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p), (Line{0, ""}));
    EXPECT_EQ(At(p), (Where{1, 2, 1}));
    EXPECT_EQ(NextLine(p), (Line{1, "x"}));
    EXPECT_EQ(At(p), (Where{3, 3, 1}));
    EXPECT_EQ(NextLine(p), (Line{255, ""}));
}

TEST(QorParser, LineFeedTerminatedLinesCountLines)
{
    Source src("one\ntwo\n\nthree\n");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(AllLines(p), (std::vector<Line>{{1, "one"}, {1, "two"}, {0, ""}, {1, "three"}, {255, ""}}));
    EXPECT_EQ(At(p), (Where{15, 5, 1}));
}

TEST(QorParser, LoneCarriageReturnEndsALineWithoutCountingOne)
{
    Source src("a\rbc\r");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p), (Line{1, "a"}));
    EXPECT_EQ(At(p), (Where{2, 1, 3}));
    EXPECT_EQ(NextLine(p), (Line{1, "bc"}));
    EXPECT_EQ(At(p), (Where{5, 1, 6}));
    EXPECT_EQ(NextLine(p), (Line{255, ""}));
}

TEST(QorParser, EmptyCarriageReturnLineFeedLines)
{
    Source src("\r\n\r\n");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(AllLines(p), (std::vector<Line>{{0, ""}, {0, ""}, {255, ""}}));
    EXPECT_EQ(At(p), (Where{4, 3, 1}));
}

TEST(QorParser, LineFeedThenCarriageReturnAreTwoTerminators)
{
    Source src("a\n\rb");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(AllLines(p), (std::vector<Line>{{1, "a"}, {0, ""}, {255, "b"}}));
}

TEST(QorParser, GetNextLineKeepsABig5PairWhoseSecondByteIsALineFeed)
{
    Source src("x\xA4\ny");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p), (Line{255, "x\xA4\ny"}));
    EXPECT_EQ(At(p), (Where{4, 1, 5}));

    QorParser single;
    single.EnableUnicode(0);
    src.Target(single);
    EXPECT_EQ(NextLine(single), (Line{1, "x\xA4"}));
    EXPECT_EQ(NextLine(single), (Line{255, "y"}));
    EXPECT_EQ(At(single), (Where{4, 2, 2}));
}

TEST(QorParser, GetNextLineWithLeadByteAsTheLastByte)
{
    Source src("ab\xA4");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p), (Line{255, "ab\xA4"}));
    EXPECT_EQ(p.GetPosition(), 3u);
}

TEST(QorParser, GetNextLineWithMaxLeavesTheRestOfTheLine)
{
    Source src("abcdef\nxy");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p, 4), (Line{1, "abc"}));
    EXPECT_EQ(At(p), (Where{3, 1, 4}));
    EXPECT_EQ(NextLine(p, 4), (Line{1, "def"}));
    EXPECT_EQ(At(p), (Where{7, 2, 1}));
    EXPECT_EQ(NextLine(p, 4), (Line{255, "xy"}));
}

TEST(QorParser, GetNextLineWithMaxConsumesATerminatorRightAfterAFullLine)
{
    Source src("abc\r\nde");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p, 4), (Line{1, "abc"}));
    EXPECT_EQ(p.GetPosition(), 5u);
    EXPECT_EQ(NextLine(p, 3), (Line{255, "de"}));
}

TEST(QorParser, GetNextLineWithMaxNeverSplitsABig5Pair)
{
    Source src("a\xA4\xA4"
               "b");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p, 3), (Line{1, "a"}));
    EXPECT_EQ(NextLine(p, 3), (Line{1, "\xA4\xA4"}));
    EXPECT_EQ(NextLine(p, 3), (Line{255, "b"}));
}

TEST(QorParser, GetNextLineWithTinyMaxStillTakesOneCharacterPerCall)
{
    Source src("ab\n\xA4\xA4");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(NextLine(p, 1), (Line{1, "a"}));
    EXPECT_EQ(NextLine(p, 0), (Line{1, "b"}));
    EXPECT_EQ(p.GetPosition(), 3u);
    EXPECT_EQ(NextLine(p, 2), (Line{255, "\xA4\xA4"}));
}

TEST(QorParser, StringTargetReadsAQorStringsBytes)
{
    QorString s("x = 1");
    QorParser p;
    p.SetTargetString(s);
    EXPECT_EQ(p.GetTotalLength(), 5u);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "x"}, {3, "="}, {1, "1"}, {0, ""}}));
}

TEST(QorParser, StringTargetReadsOnlyTheGivenLength)
{
    QorParser p;
    p.SetTargetString("abcdef", 3);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "abc"}, {0, ""}}));
}

TEST(QorParser, NullTextIsAnEmptyTarget)
{
    QorParser p;
    p.SetTargetString(nullptr, 10);
    EXPECT_EQ(p.GetTotalLength(), 0u);
    EXPECT_EQ(Next(p), (Token{0, ""}));
}

TEST(QorParser, NewTargetResetsThePlaceAndKeepsSetsAndMode)
{
    Source first("a\nb c");
    Source second("x|y");
    QorParser p;
    p.SetOperator("|", 2);
    p.EnableUnicode(0);
    first.Target(p);
    QorString text;
    p.GetNextUntil(text, 'c');
    EXPECT_EQ(At(p), (Where{5, 2, 4}));
    second.Target(p);
    EXPECT_EQ(At(p), (Where{0, 1, 1}));
    EXPECT_EQ(p.GetMode(), 0);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "x"}, {3, "|"}, {1, "y"}, {0, ""}}));
}

TEST(QorParser, MissingFileReturnsFalseAndLeavesNoTarget)
{
    Source src("abc");
    QorParser p;
    src.Target(p);
    EXPECT_FALSE(p.SetTargetFile(qortest::TempPath("missing.txt").c_str()));
    EXPECT_EQ(p.GetTotalLength(), 0u);
    EXPECT_EQ(Next(p), (Token{0, ""}));
    EXPECT_FALSE(p.SetTargetFile(nullptr));
}

TEST(QorParser, SmallFileIsReadLikeMemory)
{
    const std::string path = qortest::TempPath("small.txt");
    WriteText(path, "x = 1;\r\ny\xA5\x7C");
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    EXPECT_EQ(p.GetTotalLength(), 11u);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "x"}, {3, "="}, {1, "1"}, {3, ";"}, {1, "y\xA5\x7C"}, {0, ""}}));
    EXPECT_EQ(At(p), (Where{11, 2, 4}));
}

TEST(QorParser, EmptyFileEndsAtOnce)
{
    const std::string path = qortest::TempPath("empty.txt");
    WriteText(path, "");
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    EXPECT_EQ(NextLine(p), (Line{255, ""}));
}

TEST(QorParser, CloseEndsTheTarget)
{
    const std::string path = qortest::TempPath("close.txt");
    WriteText(path, "a b c");
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    EXPECT_EQ(Next(p), (Token{1, "a"}));
    p.Close();
    EXPECT_EQ(p.GetTotalLength(), 0u);
    EXPECT_EQ(At(p), (Where{0, 1, 1}));
    EXPECT_EQ(Next(p), (Token{0, ""}));
    p.Close();
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    EXPECT_EQ(Next(p), (Token{1, "a"}));
}

TEST(QorParser, FileTargetReplacedByAStringTarget)
{
    const std::string path = qortest::TempPath("replaced.txt");
    WriteText(path, "file words");
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    EXPECT_EQ(Next(p), (Token{1, "file"}));
    Source src("memory");
    src.Target(p);
    EXPECT_EQ(AllTokens(p), (std::vector<Token>{{1, "memory"}, {0, ""}}));
}

TEST(QorParser, LongFileIsReadLineByLineAcrossRefills)
{
    const std::string text = BigText();
    ASSERT_GT(text.size(), 300000u);
    ASSERT_EQ(text.substr(99999, 2), "\xA5\x7C");
    ASSERT_EQ(text.substr(100009, 2), "\xA5\x7C");
    ASSERT_EQ(text.substr(199999, 2), "\r\n");
    ASSERT_EQ(text.substr(200009, 2), "\xA4\xE5");
    ASSERT_EQ(text[300000], '\n');
    ASSERT_EQ(text.substr(300009, 2), "\r\n");
    const std::string path = qortest::TempPath("long.txt");
    WriteText(path, text);

    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    EXPECT_EQ(p.GetTotalLength(), text.size());
    const std::vector<Line> expected = ExpectedLines(text);
    std::size_t checked = 0;
    for (const Line& want : expected)
    {
        const unsigned long lineBefore = p.GetLine();
        const Line got = NextLine(p);
        ASSERT_EQ(got, want) << "line " << lineBefore;
        // One line number per LF-terminated line.
        if (got.result != 255)
        {
            ASSERT_EQ(p.GetLine(), lineBefore + 1) << "after line " << lineBefore;
        }
        ++checked;
    }
    EXPECT_EQ(checked, expected.size());
    EXPECT_EQ(p.GetPosition(), text.size());
    EXPECT_EQ(p.GetLine(), expected.size());

    std::string joined;
    for (const Line& l : expected)
        joined += l.text;
    std::size_t terminators = 0;
    for (char c : text)
        terminators += (c == '\n' || c == '\r');
    EXPECT_EQ(joined.size() + terminators, text.size());
}

TEST(QorParser, LongFileKeepsPairsOnTheBufferEdgesWhole)
{
    const std::string text = BigText();
    const std::string path = qortest::TempPath("edges.txt");
    WriteText(path, text);
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    QorString line;
    std::vector<std::string> special;
    std::vector<unsigned long> lineNumbers;
    for (;;)
    {
        const unsigned long number = p.GetLine();
        if (p.GetNextLine(line) == QorParser::kLineAtEnd)
            break;
        const std::string s = Text(line);
        ASSERT_GE(s.size(), 8u);
        ASSERT_EQ(s[0], 'L');
        // Each line carries its own number.
        ASSERT_EQ(std::stoul(s.substr(1, 6)), number);
        if (s.compare(8, std::string::npos, "the quick brown fox!") == 0)
            continue;
        const std::size_t tail = s.find_first_not_of('.', 8);
        special.push_back(tail == std::string::npos ? "" : s.substr(tail));
        lineNumbers.push_back(number);
    }
    EXPECT_EQ(special, (std::vector<std::string>{"\xA5\x7C"
                                                 "12345678"
                                                 "\xA5\x7C"
                                                 "end",
                                                 "z", "\xA4\xE5|", "q", ""}));
    ASSERT_EQ(lineNumbers.size(), 5u);
    // 3447 lines of 29 bytes (99963 bytes) come before the first one.
    EXPECT_EQ(lineNumbers[0], 3448u);
    EXPECT_EQ(lineNumbers[2], lineNumbers[1] + 1);
    EXPECT_EQ(Text(line), "last line without terminator");
}

TEST(QorParser, LongFileGivesTheSameTokensPlacesAndLinesAsMemory)
{
    const std::string text = BigText();
    const std::string path = qortest::TempPath("tokens.txt");
    WriteText(path, text);
    Source src(text);
    QorParser memory;
    QorParser file;
    src.Target(memory);
    ASSERT_TRUE(file.SetTargetFile(path.c_str()));
    std::size_t tokens = 0;
    for (;;)
    {
        const Token want = Next(memory);
        const Token got = Next(file);
        ASSERT_EQ(got, want) << "token " << tokens;
        ASSERT_EQ(At(file), At(memory)) << "token " << tokens;
        ++tokens;
        if (want.type == QorParser::kEndOfInput)
            break;
    }
    EXPECT_GT(tokens, 40000u);
    EXPECT_EQ(file.GetPosition(), text.size());
}

TEST(QorParser, LongFileReadWithEveryReaderMatchesMemory)
{
    const std::string text = BigText();
    const std::string path = qortest::TempPath("readers.txt");
    WriteText(path, text);
    Source src(text);
    QorParser memory;
    QorParser file;
    src.Target(memory);
    ASSERT_TRUE(file.SetTargetFile(path.c_str()));
    QorString a;
    QorString b;
    for (int step = 0;; ++step)
    {
        char ra = 0;
        char rb = 0;
        switch (step % 4)
        {
        case 0:
            ra = memory.GetNextUntil(a, '!');
            rb = file.GetNextUntil(b, '!');
            break;
        case 1:
            ra = memory.GetNextUntilString(a, "own", 3);
            rb = file.GetNextUntilString(b, "own", 3);
            break;
        case 2:
            ra = static_cast<char>(memory.GetNextLine(a, 7));
            rb = static_cast<char>(file.GetNextLine(b, 7));
            break;
        default:
            ra = static_cast<char>(memory.GetNextToken(a));
            rb = static_cast<char>(file.GetNextToken(b));
            break;
        }
        ASSERT_EQ(rb, ra) << "step " << step;
        ASSERT_EQ(Text(b), Text(a)) << "step " << step;
        ASSERT_EQ(At(file), At(memory)) << "step " << step;
        if (memory.GetPosition() >= text.size() && static_cast<unsigned char>(ra) == 255)
            break;
        ASSERT_LT(step, 200000);
    }
    EXPECT_EQ(file.GetPosition(), text.size());
}

TEST(QorParser, SingleLineLongerThanTheBufferComesBackWhole)
{
    std::string text(150000, 'w');
    text[100000] = 'X';
    text += "\nend";
    const std::string path = qortest::TempPath("wide.txt");
    WriteText(path, text);
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    const Line first = NextLine(p);
    EXPECT_EQ(first.result, 1);
    EXPECT_EQ(first.text, text.substr(0, 150000));
    EXPECT_EQ(At(p), (Where{150001, 2, 1}));
    EXPECT_EQ(NextLine(p), (Line{255, "end"}));
}

TEST(QorParser, FilesOfExactlyTheBufferSizeAndOneByteMore)
{
    for (std::size_t size : {std::size_t(100010), std::size_t(100011), std::size_t(200010), std::size_t(200011)})
    {
        std::string text(size, 'a');
        // A lead byte as the very last byte of the file.
        text.back() = '\xA4';
        const std::string path = qortest::TempPath("exact" + std::to_string(size) + ".txt");
        WriteText(path, text);
        QorParser p;
        ASSERT_TRUE(p.SetTargetFile(path.c_str()));
        const Token t = Next(p);
        EXPECT_EQ(t.type, 1) << size;
        EXPECT_EQ(t.text, text) << size;
        EXPECT_EQ(At(p), (Where{size, 1, size + 1})) << size;
        EXPECT_EQ(Next(p), (Token{0, ""})) << size;
    }
}

TEST(QorParser, CopyOfAMemoryParserReadsOnIndependently)
{
    Source src("a b c d");
    QorParser p;
    src.Target(p);
    EXPECT_EQ(Next(p), (Token{1, "a"}));
    QorParser copy;
    copy = p;
    EXPECT_EQ(At(copy), At(p));
    EXPECT_EQ(Next(p), (Token{1, "b"}));
    EXPECT_EQ(Next(p), (Token{1, "c"}));
    EXPECT_EQ(Next(copy), (Token{1, "b"}));
    EXPECT_EQ(At(copy), (Where{3, 1, 4}));
}

TEST(QorParser, CopyHasItsOwnSetsAndOutlivesTheOriginal)
{
    Source src("x+y;z");
    QorParser copy;
    {
        QorParser p;
        p.SetOperator(";", 2);
        p.EnableUnicode(0);
        src.Target(p);
        copy = p;
        p.SetOperator("+", 2);
    }
    EXPECT_EQ(copy.GetMode(), 0);
    EXPECT_EQ(AllTokens(copy), (std::vector<Token>{{1, "x+y"}, {3, ";"}, {1, "z"}, {0, ""}}));
}

TEST(QorParser, CopyOfAFileParserHasItsOwnStreamPastARefill)
{
    const std::string text = BigText();
    const std::string path = qortest::TempPath("copy.txt");
    WriteText(path, text);
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    QorString line;
    while (p.GetPosition() < 150000)
        p.GetNextLine(line);
    QorParser copy(p);
    EXPECT_EQ(At(copy), At(p));
    EXPECT_EQ(copy.GetTotalLength(), text.size());
    const std::vector<Line> fromOriginal = AllLines(p);
    const std::vector<Line> fromCopy = AllLines(copy);
    EXPECT_EQ(fromCopy, fromOriginal);
    EXPECT_EQ(At(copy), At(p));
    EXPECT_EQ(copy.GetPosition(), text.size());
}

TEST(QorParser, CopyOfAFileParserWhoseFileIsGoneHasNoTarget)
{
    const std::string path = qortest::TempPath("gone.txt");
    WriteText(path, "a b");
    QorParser p;
    ASSERT_TRUE(p.SetTargetFile(path.c_str()));
    std::remove(path.c_str());
    QorParser copy;
    copy = p;
    EXPECT_EQ(copy.GetTotalLength(), 0u);
    EXPECT_EQ(Next(copy), (Token{0, ""}));
    EXPECT_EQ(Next(p), (Token{1, "a"}));
}

TEST(QorParser, SelfAssignmentKeepsTheState)
{
    Source src("a b");
    QorParser p;
    src.Target(p);
    Next(p);
    QorParser& same = p;
    p = same;
    EXPECT_EQ(At(p), (Where{1, 1, 2}));
    EXPECT_EQ(Next(p), (Token{1, "b"}));
}
