#include "QorParser.h"

#include "QorText.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>
#include <new>

namespace
{
const char kDefaultIgnore[] = {' ', '\t', '\n', '\r', 0};
// The ASCII punctuation except "_", in this order.
const char kDefaultOperators[] = {'(', ')', '[', ']', '{', '}',  '<', '>', '`', '~',  '!', '@', '#', '$', '%', '^',
                                  '&', '*', '-', '=', '+', '\\', '|', ';', ':', '\'', '"', ',', '.', '/', '?', 0};

// Bytes a QorString can be built from at once.
const std::size_t kMaxText = static_cast<std::size_t>(INT_MAX);
} // namespace

// Gathers the bytes a reader collects; the string is built once at the end instead of growing by
// one reallocation per ten characters.
class QorParser::Collector
{
public:
    Collector() = default;
    ~Collector() { delete[] m_bytes; }
    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    void Put(unsigned char b)
    {
        if (m_size == m_capacity && !Grow())
        {
            m_failed = true;
            return;
        }
        m_bytes[m_size++] = b;
    }
    std::size_t Size() const { return m_size; }
    void Truncate(std::size_t size) { m_size = std::min(m_size, size); }
    // Replaces out's content; code 1 on out when bytes had to be dropped for want of memory.
    void Store(QorString& out) const
    {
        if (m_size == 0)
            out.Empty();
        else
            out = QorString(m_bytes, static_cast<int>(m_size));
        if (m_failed)
            out.SetException(1);
    }

private:
    bool Grow()
    {
        if (m_capacity >= kMaxText)
            return false;
        const std::size_t larger = m_capacity ? std::min(m_capacity * 2, kMaxText) : 64;
        auto* grown = new (std::nothrow) unsigned char[larger];
        if (!grown)
            return false;
        if (m_size)
            std::memcpy(grown, m_bytes, m_size);
        delete[] m_bytes;
        m_bytes = grown;
        m_capacity = larger;
        return true;
    }

    unsigned char* m_bytes = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
    bool m_failed = false;
};

QorParser::QorParser()
{
    m_ignore = CopySet(kDefaultIgnore, sizeof kDefaultIgnore, m_ignoreLength);
    m_operator = CopySet(kDefaultOperators, sizeof kDefaultOperators, m_operatorLength);
    if (!m_ignore || !m_operator)
        SetException(1);
}

QorParser::~QorParser()
{
    delete[] m_ignore;
    delete[] m_operator;
    FreeFileTarget();
}

QorParser::QorParser(const QorParser& other) : QorParser()
{
    *this = other;
}

QorParser& QorParser::operator=(const QorParser& other)
{
    if (this == &other)
        return *this;
    QorObj::operator=(other);
    std::uint32_t length = 0;
    if (unsigned char* ignore = CopySet(reinterpret_cast<const char*>(other.m_ignore), other.m_ignoreLength, length))
    {
        delete[] m_ignore;
        m_ignore = ignore;
        m_ignoreLength = length;
    }
    else
        SetException(1);
    if (unsigned char* ops = CopySet(reinterpret_cast<const char*>(other.m_operator), other.m_operatorLength, length))
    {
        delete[] m_operator;
        m_operator = ops;
        m_operatorLength = length;
    }
    else
        SetException(1);
    m_mode = other.m_mode;

    Close();
    if (other.m_fileBuffer)
    {
        // An own stream on the same file, standing where the source's stream stands.
        const unsigned long readEnd = static_cast<unsigned long>(other.m_base) + other.m_filled;
        if (!m_file.Open(static_cast<const char*>(other.m_path), QorFile::kRead) || !m_file.Seek(readEnd, 0, 1))
        {
            m_file.Close();
            return *this;
        }
        m_fileBuffer = new (std::nothrow) unsigned char[kBufferSize];
        if (!m_fileBuffer)
        {
            SetException(1);
            m_file.Close();
            return *this;
        }
        std::memcpy(m_fileBuffer, other.m_fileBuffer, other.m_filled);
        m_buffer = m_fileBuffer;
        m_filled = other.m_filled;
        m_path = other.m_path;
    }
    else
    {
        m_buffer = other.m_buffer;
        m_filled = other.m_filled;
    }
    m_totalLength = other.m_totalLength;
    m_base = other.m_base;
    m_position = other.m_position;
    m_line = other.m_line;
    m_column = other.m_column;
    return *this;
}

unsigned char* QorParser::CopySet(const char* set, unsigned long n, std::uint32_t& length)
{
    n = std::min<unsigned long>(n, UINT32_MAX - 1);
    // One byte more than given, always zero, so that a set without its terminator still ends.
    auto* copy = new (std::nothrow) unsigned char[n + 1];
    if (!copy)
        return nullptr;
    if (n)
        std::memcpy(copy, set, n);
    copy[n] = 0;
    length = static_cast<std::uint32_t>(n + 1);
    return copy;
}

// Membership is a search in a zero-terminated set, so the zero byte is always found (as the terminator).
bool QorParser::IsInSet(const unsigned char* set, std::uint32_t length, unsigned char b)
{
    if (b == 0)
        return true;
    for (std::uint32_t i = 0; set && i < length && set[i] != 0; ++i)
        if (set[i] == b)
            return true;
    return false;
}

void QorParser::SetIgnore(const char* set, unsigned long n)
{
    ReplaceSet(m_ignore, m_ignoreLength, set, n);
}

void QorParser::SetOperator(const char* set, unsigned long n)
{
    ReplaceSet(m_operator, m_operatorLength, set, n);
}

void QorParser::ReplaceSet(unsigned char*& target, std::uint32_t& targetLength, const char* set, unsigned long n)
{
    if (!set)
        return;
    std::uint32_t length = 0;
    unsigned char* copy = CopySet(set, n, length);
    if (!copy)
    {
        SetException(1);
        return;
    }
    delete[] target;
    target = copy;
    targetLength = length;
}

void QorParser::EnableUnicode(char on)
{
    m_mode = on ? 1 : 0;
}

void QorParser::ResetPosition()
{
    m_base = 0;
    m_position = 0;
    m_line = 1;
    m_column = 1;
}

void QorParser::FreeFileTarget()
{
    m_file.Close();
    delete[] m_fileBuffer;
    m_fileBuffer = nullptr;
    m_filled = 0;
}

void QorParser::Close()
{
    FreeFileTarget();
    m_buffer = nullptr;
    m_totalLength = 0;
    m_path.Empty();
    ResetPosition();
}

void QorParser::SetTargetString(const char* text, unsigned long n)
{
    Close();
    m_buffer = reinterpret_cast<const unsigned char*>(text);
    m_totalLength = text ? static_cast<std::uint32_t>(std::min<unsigned long>(n, UINT32_MAX)) : 0;
    m_filled = m_totalLength;
}

void QorParser::SetTargetString(QorString& s)
{
    SetTargetString(static_cast<const char*>(s), s.GetLength());
}

char QorParser::SetTargetFile(const char* path)
{
    Close();
    if (!path || !m_file.Open(path, QorFile::kRead))
        return 0;
    m_fileBuffer = new (std::nothrow) unsigned char[kBufferSize];
    if (!m_fileBuffer)
    {
        SetException(1);
        m_file.Close();
        return 0;
    }
    const unsigned long length = std::min<unsigned long>(m_file.GetFileLength(), UINT32_MAX);
    const unsigned long want = std::min<unsigned long>(length, kBufferSize);
    const unsigned long got = m_file.Read(m_fileBuffer, want);
    m_filled = static_cast<std::uint32_t>(got);
    // A file that shrank since its length was taken ends where its bytes end.
    m_totalLength = static_cast<std::uint32_t>(got < want ? got : length);
    m_buffer = m_fileBuffer;
    m_path = path;
    return 1;
}

std::uint32_t QorParser::CharLength() const
{
    return m_mode && IsUnicode(static_cast<char>(Current())) && m_position + 1 < m_totalLength ? 2 : 1;
}

void QorParser::Consume(Collector* into)
{
    const std::uint32_t length = CharLength();
    const unsigned char b = Current();
    if (into)
    {
        into->Put(b);
        if (length == 2)
            into->Put(m_buffer[m_position + 1 - m_base]);
    }
    m_position += length;
    m_column += length;
    if (length == 1 && b == '\n')
    {
        ++m_line;
        m_column = 1;
    }
    Refill();
}

// Once the position has moved past the first of the buffer's last ten bytes, those ten bytes move to the
// front and the next block is read behind them. At that moment the position stands on kept byte 1 or 2
// (a step moves at most two bytes), so the byte before it is still in the buffer, and a reader looking
// one byte ahead (a Big5 pair, CR LF) before the step never reaches past the buffer's end.
void QorParser::Refill()
{
    if (!m_fileBuffer || m_filled < kBufferSize || m_position - m_base <= kRefillSize)
        return;
    const std::uint32_t readEnd = m_base + m_filled;
    if (readEnd >= m_totalLength)
        return;
    const std::uint32_t kept = kBufferSize - kRefillSize;
    std::memmove(m_fileBuffer, m_fileBuffer + kRefillSize, kept);
    const std::uint32_t want = std::min<std::uint32_t>(m_totalLength - readEnd, kRefillSize);
    const auto got = static_cast<std::uint32_t>(m_file.Read(m_fileBuffer + kept, want));
    m_base += kRefillSize;
    m_filled = kept + got;
    if (got < want)
        m_totalLength = m_base + m_filled;
}

QorParser::TokenType QorParser::GetNextToken(QorString& token)
{
    Collector collected;
    while (HasInput() && IsIgnore(Current()))
        Consume(nullptr);
    if (!HasInput())
    {
        token.Empty();
        return kEndOfInput;
    }
    if (IsOperator(Current()))
    {
        Consume(&collected);
        collected.Store(token);
        return kOperator;
    }
    while (HasInput() && !IsOperator(Current()))
    {
        Consume(&collected);
        if (!HasInput() || IsIgnore(Current()))
            break;
    }
    collected.Store(token);
    return kWord;
}

char QorParser::GetNextUntil(QorString& text, char stop)
{
    return GetNextUntil(text, &stop, 1);
}

char QorParser::GetNextUntil(QorString& text, const char* stops, unsigned long n)
{
    if (!stops)
        n = 0;
    Collector collected;
    while (HasInput())
    {
        if (n && std::memchr(stops, Current(), n))
        {
            Consume(nullptr);
            collected.Store(text);
            return 1;
        }
        Consume(&collected);
    }
    collected.Store(text);
    return 0;
}

char QorParser::GetNextUntilString(QorString& text, const char* stop, unsigned long n)
{
    if (!HasInput())
    {
        text.Empty();
        return 0;
    }
    if (!stop)
        n = 0;
    const auto* wanted = reinterpret_cast<const unsigned char*>(stop);
    Collector collected;
    for (;;)
    {
        // Characters that match the stop so far are collected too, and dropped again on a full match.
        const std::size_t mark = collected.Size();
        unsigned long matched = 0;
        while (matched < n && HasInput())
        {
            const std::uint32_t length = CharLength();
            bool match = matched + length <= n && Current() == wanted[matched];
            if (match && length == 2)
                match = m_buffer[m_position + 1 - m_base] == wanted[matched + 1];
            Consume(&collected);
            if (!match)
                break;
            matched += length;
        }
        if (matched == n)
        {
            collected.Truncate(mark);
            break;
        }
        if (!HasInput())
        {
            collected.Store(text);
            return 0;
        }
    }
    // The character after the stop sequence is skipped as well.
    if (HasInput())
        Consume(nullptr);
    collected.Store(text);
    return 1;
}

char QorParser::GetNextUntilString(QorString& text, QorString& stop)
{
    return GetNextUntilString(text, static_cast<const char*>(stop), stop.GetLength());
}

unsigned char QorParser::GetNextLine(QorString& line)
{
    return GetNextLine(line, ULONG_MAX);
}

unsigned char QorParser::GetNextLine(QorString& line, unsigned long max)
{
    if (!HasInput())
    {
        line.Empty();
        return kLineAtEnd;
    }
    const unsigned long capacity = max ? max - 1 : 0;
    Collector collected;
    for (;;)
    {
        if (!HasInput())
        {
            collected.Store(line);
            return kLineAtEnd;
        }
        const unsigned char b = Current();
        if (b == '\n')
        {
            Consume(nullptr);
            break;
        }
        if (b == '\r')
        {
            Consume(nullptr);
            if (HasInput() && Current() == '\n')
                Consume(nullptr);
            break;
        }
        if (collected.Size() > 0 && collected.Size() + CharLength() > capacity)
        {
            collected.Store(line);
            return 1;
        }
        Consume(&collected);
    }
    collected.Store(line);
    return collected.Size() ? 1 : 0;
}
