#include "QorText.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace
{
// Big5 tables, two bytes per entry.
// ０１２３４５６７８９
const char kFullDigits[] = "\xA2\xAF\xA2\xB0\xA2\xB1\xA2\xB2\xA2\xB3\xA2\xB4\xA2\xB5\xA2\xB6\xA2\xB7\xA2\xB8";
// ＡＢＣＤＥＦＧＨＩＪＫＬＭＮＯＰＱＲＳＴＵＶＷＸＹＺ
const char kFullUpper[] = "\xA2\xCF\xA2\xD0\xA2\xD1\xA2\xD2\xA2\xD3\xA2\xD4\xA2\xD5\xA2\xD6\xA2\xD7\xA2\xD8\xA2\xD9"
                          "\xA2\xDA\xA2\xDB\xA2\xDC\xA2\xDD\xA2\xDE\xA2\xDF\xA2\xE0\xA2\xE1\xA2\xE2\xA2\xE3\xA2\xE4"
                          "\xA2\xE5\xA2\xE6\xA2\xE7\xA2\xE8";
// ａｂｃｄｅｆｇｈｉｊｋｌｍｎｏｐｑｒｓｔｕｖｗｘｙｚ: kept beside the capitals, but lower-case letters
// deliberately fold to the full-width capitals.
[[maybe_unused]] const char kFullLower[] =
    "\xA2\xE9\xA2\xEA\xA2\xEB\xA2\xEC\xA2\xED\xA2\xEE\xA2\xEF\xA2\xF0\xA2\xF1\xA2\xF2\xA2\xF3\xA2\xF4\xA2\xF5"
    "\xA2\xF6\xA2\xF7\xA2\xF8\xA2\xF9\xA2\xFA\xA2\xFB\xA2\xFC\xA2\xFD\xA2\xFE\xA3\x40\xA3\x41\xA3\x42\xA3\x43";
// ﹒— for "." and "-" in horizontal writing; ﹒－ in vertical writing.
const char kPunctuationH[] = "\xA1\x4F\xA1\x58";
const char kPunctuationV[] = "\xA1\x4F\xA1\xD0";
// ○一二三四五六七八九
const char kNumeralsL[] = "\xA1\xB3\xA4\x40\xA4\x47\xA4\x54\xA5\x7C\xA4\xAD\xA4\xBB\xA4\x43\xA4\x4B\xA4\x45";
// 零壹貳參肆伍陸柒捌玖
const char kNumeralsU[] = "\xB9\x73\xB3\xFC\xB6\x4C\xB0\xD1\xB8\x76\xA5\xEE\xB3\xB0\xAC\x6D\xAE\xC3\xA8\x68";
// 萬億兆 (10^4, 10^8, 10^12)
const char kLargeUnits[] = "\xB8\x55\xBB\xF5\xA5\xFC";
// "  十百千" and "  拾佰仟": no unit for the ones, then 10, 100, 1000.
const char kSmallUnitsL[] = "  \xA4\x51\xA6\xCA\xA4\x64";
const char kSmallUnitsU[] = "  \xAC\x42\xA8\xD5\xA5\x61";
// 零, read between units in both forms (the lower-case ○ only writes a digit or the value 0).
const char kZeroWord[] = "\xB9\x73";

const unsigned kMaxWordedDigits = 16;

bool IsLead(unsigned char b)
{
    return b >= 0xA0;
}

bool IsDigit(unsigned char b)
{
    return b >= '0' && b <= '9';
}

// A byte buffer sized once from the input; Put never writes past it.
class WorkBuffer
{
public:
    explicit WorkBuffer(std::size_t capacity)
        : m_bytes(new (std::nothrow) unsigned char[capacity ? capacity : 1]), m_capacity(capacity)
    {
    }
    ~WorkBuffer() { delete[] m_bytes; }
    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;

    bool IsValid() const { return m_bytes != nullptr; }
    void Put(unsigned char b)
    {
        if (m_size < m_capacity)
            m_bytes[m_size++] = b;
    }
    // One table entry: the two bytes at entry * 2.
    void PutPair(const char* table, unsigned entry)
    {
        Put(static_cast<unsigned char>(table[entry * 2]));
        Put(static_cast<unsigned char>(table[entry * 2 + 1]));
    }
    // Replaces out's content, or leaves out empty with code 1 when the buffer could not be had.
    void Store(QorString& out) const
    {
        if (!m_bytes || m_size > static_cast<std::size_t>(INT_MAX))
        {
            out.Empty();
            out.SetException(1);
            return;
        }
        out = QorString(m_bytes, static_cast<int>(m_size));
    }

private:
    unsigned char* m_bytes;
    std::size_t m_capacity;
    std::size_t m_size = 0;
};

// Copies the lead byte at src[i] and its follower (the lead alone when it ends the text); returns the
// index after them.
std::size_t CopyPair(WorkBuffer& work, const unsigned char* src, std::size_t i, std::size_t n)
{
    work.Put(src[i]);
    if (i + 1 < n)
    {
        work.Put(src[i + 1]);
        return i + 2;
    }
    return i + 1;
}

// The frame of the converters: a Big5 pair is copied whole; at any other byte, step writes what the input
// from there becomes and returns the index after what it took. out is replaced by the result (an empty src
// makes it empty); the work buffer holds bytesPerInput bytes per input byte.
template <typename Step>
void ConvertText(QorString& out, const char* src, std::size_t bytesPerInput, Step step)
{
    const std::size_t n = src ? std::strlen(src) : 0;
    if (n == 0)
    {
        out.Empty();
        return;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(src);
    WorkBuffer work(bytesPerInput * n);
    if (work.IsValid())
    {
        for (std::size_t i = 0; i < n;)
            i = IsLead(bytes[i]) ? CopyPair(work, bytes, i, n) : step(work, bytes, i, n);
    }
    work.Store(out);
}

// The converters that replace single bytes: map writes the replacement of one byte.
template <typename Map>
void ConvertSingleBytes(QorString& out, const char* src, Map map)
{
    ConvertText(out, src, 2, [&map](WorkBuffer& work, const unsigned char* bytes, std::size_t i, std::size_t) {
        map(work, bytes[i]);
        return i + 1;
    });
}

void HalfToFull(QorString& out, const char* src, const char* punctuation)
{
    ConvertSingleBytes(out, src, [punctuation](WorkBuffer& work, unsigned char b) {
        if (IsDigit(b))
            work.PutPair(kFullDigits, b - '0');
        else if (b >= 'A' && b <= 'Z')
            work.PutPair(kFullUpper, b - 'A');
        else if (b >= 'a' && b <= 'z')
            work.PutPair(kFullUpper, b - 'a');
        else if (b == '.')
            work.PutPair(punctuation, 0);
        else if (b == '-')
            work.PutPair(punctuation, 1);
        else
            work.Put(b);
    });
}

void DigitsToNumerals(QorString& out, const char* src, const char* numerals)
{
    ConvertSingleBytes(out, src, [numerals](WorkBuffer& work, unsigned char b) {
        if (IsDigit(b))
            work.PutPair(numerals, b - '0');
        else
            work.Put(b);
    });
}

struct WordStyle
{
    const char* numerals;
    const char* smallUnits;
    bool dropLeadingOne;
};

// Writes count digits as a whole number in words (see IntegerToChineseLF for the rules).
void WriteNumber(WorkBuffer& work, const unsigned char* digits, std::size_t count, const WordStyle& style)
{
    std::size_t start = 0;
    while (start < count && digits[start] == '0')
        ++start;
    const std::size_t significant = count - start;
    if (significant == 0)
    {
        work.PutPair(style.numerals, 0);
        return;
    }
    if (significant > kMaxWordedDigits)
    {
        for (std::size_t i = start; i < count; ++i)
            work.PutPair(style.numerals, digits[i] - '0');
        return;
    }
    const std::size_t groups = (significant + 3) / 4;
    const std::size_t topDigits = significant - 4 * (groups - 1);
    // 10 to 19 as the leading group: 十五, 十萬 rather than 一十五, 一十萬.
    const bool dropOne = style.dropLeadingOne && topDigits == 2 && digits[start] == '1';
    bool pendingZero = false;
    std::size_t i = start;
    for (std::size_t g = groups; g-- > 0;)
    {
        const std::size_t width = g == groups - 1 ? topDigits : 4;
        bool any = false;
        for (std::size_t place = width; place-- > 0; ++i)
        {
            const unsigned d = digits[i] - '0';
            if (d == 0)
            {
                pendingZero = true;
                continue;
            }
            if (pendingZero)
                work.PutPair(kZeroWord, 0);
            pendingZero = false;
            any = true;
            if (!(dropOne && i == start))
                work.PutPair(style.numerals, d);
            if (place > 0)
                work.PutPair(style.smallUnits, static_cast<unsigned>(place));
        }
        if (!any)
            continue;
        if (g > 0)
            work.PutPair(kLargeUnits, static_cast<unsigned>(g - 1));
        // Zeros closing a group are not read; zeros opening the next one set the flag again.
        pendingZero = false;
    }
}

void DigitsToWords(QorString& out, const char* src, const WordStyle& style)
{
    // A digit writes at most a zero, its numeral and its unit, and a group of four one large unit:
    // fewer than 8 bytes per input byte.
    ConvertText(out, src, 8, [&style](WorkBuffer& work, const unsigned char* bytes, std::size_t i, std::size_t n) {
        if (!IsDigit(bytes[i]))
        {
            work.Put(bytes[i]);
            return i + 1;
        }
        std::size_t end = i;
        while (end < n && IsDigit(bytes[end]))
            ++end;
        WriteNumber(work, bytes + i, end - i, style);
        return end;
    });
}

// The lead-byte test is applied the other way round here, so a numeral (whose first byte is 0xA0 or
// more) never reaches the comparison: the text comes out as it went in.
void NumeralsToDigits(QorString& out, const char* src, const char* numerals)
{
    const std::size_t n = src ? std::strlen(src) : 0;
    if (n == 0)
    {
        out.Empty();
        return;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(src);
    WorkBuffer work(2 * n);
    if (work.IsValid())
    {
        for (std::size_t i = 0; i < n;)
        {
            const unsigned char b = bytes[i];
            if (IsLead(b) || i + 1 == n)
            {
                work.Put(b);
                ++i;
                continue;
            }
            for (unsigned d = 0; d < 10; ++d)
            {
                if (bytes[i] == static_cast<unsigned char>(numerals[2 * d]) &&
                    bytes[i + 1] == static_cast<unsigned char>(numerals[2 * d + 1]))
                {
                    work.Put(static_cast<unsigned char>('0' + d));
                    break;
                }
            }
            work.Put(bytes[i]);
            work.Put(bytes[i + 1]);
            i += 2;
        }
    }
    work.Store(out);
}

// Does b continue the number in progress?
bool ContinuesNumber(unsigned char b, bool hasPoint)
{
    return IsDigit(b) || (b == '.' && !hasPoint);
}

// Length of an unconvertible Big5 sequence at p: a lead byte with a valid second byte is one unmapped
// character; anything else is one byte.
std::size_t Big5BadLength(const unsigned char* p, std::size_t left)
{
    if (left >= 2 && p[0] >= 0x81 && p[0] <= 0xFE && ((p[1] >= 0x40 && p[1] <= 0x7E) || (p[1] >= 0xA1 && p[1] <= 0xFE)))
        return 2;
    return 1;
}

// Length of the longest well-formed UTF-8 beginning at p (a whole character that has no Big5 form, or the
// start of a malformed or cut-off one); at least 1.
std::size_t Utf8BadLength(const unsigned char* p, std::size_t left)
{
    const unsigned char b = p[0];
    std::size_t need;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (b >= 0xC2 && b <= 0xDF)
        need = 2;
    else if (b >= 0xE0 && b <= 0xEF)
    {
        need = 3;
        if (b == 0xE0)
            low = 0xA0;
        else if (b == 0xED)
            high = 0x9F;
    }
    else if (b >= 0xF0 && b <= 0xF4)
    {
        need = 4;
        if (b == 0xF0)
            low = 0x90;
        else if (b == 0xF4)
            high = 0x8F;
    }
    else
        return 1;
    std::size_t length = 1;
    while (length < need && length < left)
    {
        const unsigned char c = p[length];
        if (c < low || c > high)
            break;
        low = 0x80;
        high = 0xBF;
        ++length;
    }
    return length;
}

using BadLength = std::size_t (*)(const unsigned char*, std::size_t);

// Code page 950 is Big5 with Microsoft's additions (the euro sign among them); plain Big5 is the fallback.
struct Conversion
{
    const char* to;
    const char* from;
    const char* fallbackTo;
    const char* fallbackFrom;
    const char* replacement;
    BadLength badLength;
};

iconv_t OpenConverter(const Conversion& c)
{
    iconv_t cd = iconv_open(c.to, c.from);
    if (cd == reinterpret_cast<iconv_t>(-1))
        cd = iconv_open(c.fallbackTo, c.fallbackFrom);
    return cd;
}

// A growable output buffer for the converters.
class OutputBuffer
{
public:
    explicit OutputBuffer(std::size_t capacity)
        : m_bytes(new (std::nothrow) unsigned char[capacity]), m_capacity(m_bytes ? capacity : 0)
    {
    }
    ~OutputBuffer() { delete[] m_bytes; }
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;

    // Makes room for at least extra more bytes; false when that cannot be allocated.
    bool Reserve(std::size_t extra)
    {
        if (!m_bytes)
            return false;
        if (m_capacity - m_size >= extra)
            return true;
        const std::size_t larger = std::max(m_capacity * 2, m_size + extra);
        auto* grown = new (std::nothrow) unsigned char[larger];
        if (!grown)
            return false;
        std::memcpy(grown, m_bytes, m_size);
        delete[] m_bytes;
        m_bytes = grown;
        m_capacity = larger;
        return true;
    }
    char* End() { return reinterpret_cast<char*>(m_bytes + m_size); }
    std::size_t Room() const { return m_capacity - m_size; }
    void Grow(std::size_t n) { m_size += n; }
    const unsigned char* Bytes() const { return m_bytes; }
    std::size_t Size() const { return m_size; }

private:
    unsigned char* m_bytes;
    std::size_t m_capacity;
    std::size_t m_size = 0;
};

QorString Convert(const char* text, unsigned long n, unsigned long* failed, const Conversion& c)
{
    unsigned long bad = 0;
    QorString result;
    if (n > static_cast<unsigned long>(INT_MAX))
    {
        // No string could hold the result.
        result.SetException(1);
    }
    else if (text && n > 0)
    {
        iconv_t cd = OpenConverter(c);
        if (cd == reinterpret_cast<iconv_t>(-1))
        {
            // No converter at all: nothing converts.
            if (failed)
                *failed = n;
            return result;
        }
        const std::size_t replacementLength = std::strlen(c.replacement);
        OutputBuffer out(2 * static_cast<std::size_t>(n) + 16);
        char* in = const_cast<char*>(text);
        std::size_t inLeft = n;
        bool ok = out.Reserve(0);
        while (ok && inLeft > 0)
        {
            char* outPtr = out.End();
            std::size_t outLeft = out.Room();
            const std::size_t r = iconv(cd, &in, &inLeft, &outPtr, &outLeft);
            out.Grow(out.Room() - outLeft);
            if (r != static_cast<std::size_t>(-1))
                break;
            const int error = errno;
            if (error == E2BIG)
            {
                ok = out.Reserve(out.Size() + 16);
            }
            else if (error == EILSEQ || error == EINVAL)
            {
                // Replace the sequence and go on after it.
                const auto* at = reinterpret_cast<const unsigned char*>(in);
                const std::size_t skip = std::min(inLeft, std::max<std::size_t>(1, c.badLength(at, inLeft)));
                in += skip;
                inLeft -= skip;
                ++bad;
                ok = out.Reserve(replacementLength);
                if (ok)
                {
                    std::memcpy(out.End(), c.replacement, replacementLength);
                    out.Grow(replacementLength);
                }
            }
            else
                ok = false;
        }
        iconv_close(cd);
        if (!ok || out.Size() > static_cast<std::size_t>(INT_MAX))
            result.SetException(1);
        else
            result = QorString(out.Bytes(), static_cast<int>(out.Size()));
    }
    if (failed)
        *failed = bad;
    return result;
}
} // namespace

char IsUnicode(char c)
{
    return IsLead(static_cast<unsigned char>(c));
}

void HalfToFull_H(QorString& out, const char* src)
{
    HalfToFull(out, src, kPunctuationH);
}

void HalfToFull_V(QorString& out, const char* src)
{
    HalfToFull(out, src, kPunctuationV);
}

void IntegerToChineseL(QorString& out, const char* src)
{
    DigitsToNumerals(out, src, kNumeralsL);
}

void IntegerToChineseU(QorString& out, const char* src)
{
    DigitsToNumerals(out, src, kNumeralsU);
}

void IntegerToChineseLF(QorString& out, const char* src)
{
    DigitsToWords(out, src, WordStyle{kNumeralsL, kSmallUnitsL, true});
}

void IntegerToChineseUF(QorString& out, const char* src)
{
    DigitsToWords(out, src, WordStyle{kNumeralsU, kSmallUnitsU, false});
}

void ChineseLToInteger(QorString& out, const char* src)
{
    NumeralsToDigits(out, src, kNumeralsL);
}

void ChineseUToInteger(QorString& out, const char* src)
{
    NumeralsToDigits(out, src, kNumeralsU);
}

char CutString(QorString& text, Array<QorString>& lines, long width, char flag)
{
    (void)flag;
    if (width < 0)
        return 0;
    lines.Empty();
    const std::size_t length = text.GetLength();
    const auto* bytes = reinterpret_cast<const unsigned char*>(static_cast<const char*>(text));
    const std::size_t limit = static_cast<std::size_t>(width);

    std::vector<std::string> built;
    char result = 1;
    try
    {
        std::size_t i = 0;
        bool inNumber = false;
        bool hasPoint = false;
        // The number in progress is always the tail of the line: it starts at numberStart.
        std::size_t numberStart = 0;
        std::string carried;
        do
        {
            std::string line = inNumber ? carried : std::string();
            numberStart = 0;
            std::size_t count = 0;
            std::size_t column = 1;
            bool full = false;
            while (count < limit && i < length)
            {
                const unsigned char b = bytes[i];
                if (IsLead(b))
                {
                    inNumber = false;
                    if (column >= limit)
                    {
                        if (i + 1 == length)
                            ++i;
                        break;
                    }
                    line += static_cast<char>(b);
                    if (i + 1 < length)
                    {
                        line += static_cast<char>(bytes[i + 1]);
                        count += 2;
                        column += 2;
                        i += 2;
                    }
                    else
                    {
                        ++count;
                        ++column;
                        ++i;
                    }
                    continue;
                }
                if (b == '\n')
                {
                    inNumber = false;
                    ++i;
                    break;
                }
                if (inNumber)
                {
                    if (b == '.' && !hasPoint)
                        hasPoint = true;
                    else if (!IsDigit(b))
                        inNumber = false;
                }
                else if (IsDigit(b) || b == '-' || b == '.')
                {
                    inNumber = true;
                    hasPoint = false;
                    numberStart = line.size();
                }
                line += static_cast<char>(b);
                ++count;
                ++column;
                ++i;
                full = count >= limit;
            }
            if (full && inNumber)
            {
                if (i < length && ContinuesNumber(bytes[i], hasPoint))
                {
                    carried.assign(line, numberStart, std::string::npos);
                    line.erase(numberStart);
                }
                else
                    inNumber = false;
            }
            built.push_back(std::move(line));
            if (built.size() > i)
            {
                result = 0;
                break;
            }
        } while (i < length);
    }
    catch (const std::bad_alloc&)
    {
        lines.SetException(1);
        return 0;
    }

    if (!lines.ReSize(built.size(), 0))
        return 0;
    for (std::size_t k = 0; k < built.size(); ++k)
    {
        if (built[k].size() > static_cast<std::size_t>(INT_MAX))
        {
            lines.SetException(1);
            return 0;
        }
        lines[k] = QorString(built[k].data(), static_cast<int>(built[k].size()));
    }
    return result;
}

QorString QorBig5ToUtf8(const char* big5, unsigned long n, unsigned long* failed)
{
    static const Conversion kConversion{"UTF-8", "CP950", "UTF-8", "BIG5", "\xEF\xBF\xBD", Big5BadLength};
    return Convert(big5, n, failed, kConversion);
}

QorString QorUtf8ToBig5(const char* utf8, unsigned long n, unsigned long* failed)
{
    static const Conversion kConversion{"CP950", "UTF-8", "BIG5", "UTF-8", "?", Utf8BadLength};
    return Convert(utf8, n, failed, kConversion);
}
