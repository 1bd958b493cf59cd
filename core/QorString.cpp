#include "QorString.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>

namespace
{
const unsigned char kZero = 0;

const unsigned char* AsBytes(const char* text)
{
    return reinterpret_cast<const unsigned char*>(text);
}

unsigned long CLength(const unsigned char* text)
{
    return text ? std::strlen(reinterpret_cast<const char*>(text)) : 0;
}
} // namespace

QorString::QorString()
{
    m_text.Reset(&kZero, 1);
}

QorString::QorString(const QorString& other) : QorObj(other), m_text(other.m_text) {}

QorString::QorString(const char* text)
{
    SetBytes(AsBytes(text), CLength(AsBytes(text)));
}

QorString::QorString(const char* text, int n) : QorString(AsBytes(text), n) {}

QorString::QorString(const unsigned char* text, int n)
{
    SetBytes(text, text && n > 0 ? static_cast<unsigned long>(n) : 0);
}

QorString::QorString(char c) : QorString(static_cast<unsigned char>(c)) {}

QorString::QorString(unsigned char c)
{
    const unsigned char bytes[2] = {c, 0};
    m_text.Reset(bytes, 2);
}

QorString::QorString(int value, short width) : QorString(static_cast<long>(value), width) {}

QorString::QorString(short value, short width) : QorString(static_cast<long>(value), width) {}

// A width of -1 prints freely; any other width w behaves as the format "%<w>ld" would, which the
// '*' field width gives without building a format text (a negative width left-justifies).
QorString::QorString(long value, short width)
{
    if (width == -1)
        SetFormatted("%ld", value);
    else
        SetFormatted("%*ld", static_cast<int>(width), value);
}

QorString::QorString(float value, short digits, short decimals) : QorString(static_cast<double>(value), digits, decimals)
{
}

// The fixed form is "%<digits + decimals + 1>.<decimals>f". Through '*' a negative precision means
// "no precision given" instead of an invalid format.
QorString::QorString(double value, short digits, short decimals)
{
    if (digits == -1 && decimals == -1)
        SetFormatted("%g", value);
    else
        SetFormatted("%*.*f", digits + decimals + 1, static_cast<int>(decimals), value);
}

QorString& QorString::operator=(const QorString& other)
{
    m_text = other.m_text;
    return *this;
}

QorString& QorString::operator=(const char* text)
{
    SetBytes(AsBytes(text), CLength(AsBytes(text)));
    return *this;
}

QorString::operator char*() const
{
    return reinterpret_cast<char*>(Bytes());
}

char QorString::operator==(const QorString& other) const
{
    return m_text == other.m_text;
}

char QorString::operator==(const unsigned char* text) const
{
    const unsigned long n = CLength(text);
    return n == GetLength() && (n == 0 || std::memcmp(Bytes(), text, n) == 0);
}

char QorString::operator==(const char* text) const
{
    return *this == AsBytes(text);
}

char QorString::operator!=(const QorString& other) const
{
    return !(*this == AsBytes(static_cast<const char*>(other)));
}

char QorString::operator!=(const char* text) const
{
    return !(*this == text);
}

QorString& QorString::operator+=(const unsigned char* text)
{
    AppendBytes(text, CLength(text));
    return *this;
}

QorString& QorString::operator+=(const char* text)
{
    return *this += AsBytes(text);
}

QorString& QorString::operator+=(unsigned char c)
{
    AppendBytes(&c, 1);
    return *this;
}

QorString& QorString::operator+=(char c)
{
    return *this += static_cast<unsigned char>(c);
}

QorString& QorString::operator+=(const QorString& other)
{
    return *this += AsBytes(static_cast<const char*>(other));
}

unsigned long QorString::GetLength() const
{
    const unsigned long count = m_text.GetSize();
    return count ? count - 1 : 0;
}

void QorString::Empty()
{
    m_text.Reset(&kZero, 1);
}

QorString QorString::Left(unsigned long n)
{
    const unsigned long length = GetLength();
    if (n > length)
    {
        n = length;
        SetException(4);
    }
    QorString result;
    result.SetBytes(Bytes(), n);
    return result;
}

QorString QorString::Right(unsigned long n)
{
    const unsigned long length = GetLength();
    if (n > length)
    {
        n = length;
        SetException(4);
    }
    QorString result;
    result.SetBytes(Bytes() + (length - n), n);
    return result;
}

QorString QorString::Mid(unsigned long start, unsigned long count)
{
    const unsigned long length = GetLength();
    if (start > length)
    {
        SetException(4);
        // The last character; an empty source has none, and reading before the text is not allowed.
        if (length == 0)
            return QorString();
        start = length - 1;
        count = 1;
    }
    else if (count > length - start)
    {
        count = length - start;
        SetException(4);
    }
    QorString result;
    result.SetBytes(Bytes() + start, count);
    return result;
}

char QorString::AlterLength(unsigned long n, const char* text)
{
    // The result is a copy of the source up to its first zero byte; the padding the length asks for
    // never survives because the source's terminator always follows the copied text.
    const unsigned char* source = text ? AsBytes(text) : Bytes();
    const unsigned long length = CLength(source);
    if (source != Bytes())
        SetBytes(source, length);
    else
        m_text.ReSize(length + 1, 1);
    return n <= length;
}

unsigned long QorString::GetSaveBytes() const
{
    return GetLength() + 4;
}

void QorString::SetBytes(const unsigned char* bytes, unsigned long n)
{
    // Build the new text apart first: bytes may point into this string's own storage.
    UCharArray fresh;
    if (!fresh.ReSize(n + 1, 0))
    {
        m_text.ReSize(0, 0);
        m_text.SetException(1);
        return;
    }
    if (n)
        std::memcpy(static_cast<unsigned char*>(fresh), bytes, n);
    fresh[n] = 0;
    m_text = std::move(fresh);
}

void QorString::AppendBytes(const unsigned char* bytes, unsigned long n)
{
    m_text.Remove();
    if (n)
        m_text.Append(bytes, n);
    m_text.Append(kZero);
}

void QorString::SetFormatted(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    va_list probe;
    va_copy(probe, args);
    const int needed = std::vsnprintf(nullptr, 0, format, probe);
    va_end(probe);
    std::unique_ptr<char[]> buffer(needed >= 0 ? new (std::nothrow) char[static_cast<std::size_t>(needed) + 1]
                                               : nullptr);
    if (buffer)
        std::vsnprintf(buffer.get(), static_cast<std::size_t>(needed) + 1, format, args);
    va_end(args);
    if (!buffer)
    {
        m_text.SetException(1);
        return;
    }
    SetBytes(AsBytes(buffer.get()), static_cast<unsigned long>(needed));
}

QorString operator+(const QorString& a, const QorString& b)
{
    QorString result(a);
    result += b;
    return result;
}

QorString operator+(const QorString& a, const char* b)
{
    QorString result(a);
    result += b;
    return result;
}

QorString operator+(const QorString& a, const unsigned char* b)
{
    QorString result(a);
    result += b;
    return result;
}

QorString operator+(const char* a, const QorString& b)
{
    QorString result(a);
    result += b;
    return result;
}

QorString operator+(const unsigned char* a, const QorString& b)
{
    QorString result(reinterpret_cast<const char*>(a));
    result += b;
    return result;
}
