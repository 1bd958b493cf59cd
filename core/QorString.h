#pragma once

#include "core/QorExport.h"

#include "QorArray.h"
#include "QorObj.h"

class QorFile;

/// Byte string (single-byte and Big5 text alike, never interpreted) kept in a UCharArray that always
/// ends with one zero byte. Error code 4 records that Left, Right or Mid clamped a range.
class QOR_API QorString : public QorObj
{
public:
    QorString();
    QorString(const QorString& other);
    /// The C string; null gives the empty string.
    QorString(const char* text);
    /// Exactly the first n bytes of text (zero bytes included) followed by a terminator.
    QorString(const char* text, int n);
    QorString(const unsigned char* text, int n);
    /// The one character; a zero character gives length 1.
    QorString(char c);
    QorString(unsigned char c);
    /// Decimal text; width -1 is free, a positive width right-justifies, another negative one left-justifies.
    QorString(int value, short width = -1);
    QorString(short value, short width = -1);
    QorString(long value, short width = -1);
    /// (-1, -1) prints with %g; otherwise fixed with width digits + decimals + 1 and decimals places.
    QorString(float value, short digits = -1, short decimals = -1);
    QorString(double value, short digits = -1, short decimals = -1);

    QorString& operator=(const QorString& other);
    QorString& operator=(const char* text);
    /// The first byte; valid until the string next changes (null after a failed allocation).
    operator char*() const;

    /// Same bytes including the terminator.
    char operator==(const QorString& other) const;
    /// Length equals strlen(text) and the bytes are equal; null counts as the empty text.
    char operator==(const unsigned char* text) const;
    char operator==(const char* text) const;
    /// The negation of equality with other's bytes read as a C string.
    char operator!=(const QorString& other) const;
    char operator!=(const char* text) const;

    QorString& operator+=(const unsigned char* text);
    QorString& operator+=(const char* text);
    QorString& operator+=(unsigned char c);
    QorString& operator+=(char c);
    /// Appends other's bytes as a C string (up to its first zero byte).
    QorString& operator+=(const QorString& other);

    /// Byte access without bounds check; signed indices are sign-extended. Index GetLength() is the terminator.
    unsigned char operator[](int i) const { return Bytes()[i]; }
    unsigned char& operator[](int i) { return Bytes()[i]; }
    unsigned char operator[](char i) const { return Bytes()[static_cast<int>(i)]; }
    unsigned char& operator[](char i) { return Bytes()[static_cast<int>(i)]; }
    unsigned char operator[](short i) const { return Bytes()[i]; }
    unsigned char& operator[](short i) { return Bytes()[i]; }
    unsigned char operator[](long i) const { return Bytes()[i]; }
    unsigned char& operator[](long i) { return Bytes()[i]; }
    unsigned char operator[](unsigned char i) const { return Bytes()[i]; }
    unsigned char& operator[](unsigned char i) { return Bytes()[i]; }
    unsigned char operator[](unsigned short i) const { return Bytes()[i]; }
    unsigned char& operator[](unsigned short i) { return Bytes()[i]; }
    unsigned char operator[](unsigned int i) const { return Bytes()[i]; }
    unsigned char& operator[](unsigned int i) { return Bytes()[i]; }
    unsigned char operator[](unsigned long i) const { return Bytes()[i]; }
    unsigned char& operator[](unsigned long i) { return Bytes()[i]; }

    /// Element count - 1, or 0 for an array whose allocation failed.
    unsigned long GetLength() const;
    char IsEmpty() const { return GetLength() == 0; }
    /// The string becomes "" with storage for one byte.
    void Empty();
    void FreeExtra() { m_text.FreeExtra(); }

    /// The first n bytes; n beyond the length is clamped and sets this string's code to 4.
    QorString Left(unsigned long n);
    /// The last n bytes; n beyond the length is clamped and sets this string's code to 4.
    QorString Right(unsigned long n);
    /// count bytes from start; a range beyond the end is clamped (code 4). A start beyond the end yields
    /// the last byte (the empty string for an empty source).
    QorString Mid(unsigned long start, unsigned long count);
    /// The string becomes a copy of text (of itself when text is null) up to the first zero byte.
    /// Returns whether n is at most that text's length.
    char AlterLength(unsigned long n, const char* text = nullptr);

    /// Length + 4.
    unsigned long GetSaveBytes() const;
    /// Writes the length (32-bit) and the bytes without terminator; returns length + 4.
    unsigned long Save(QorFile& file) const;
    /// Reads a 32-bit length and that many bytes; returns the bytes read + 4.
    /// \note A negative length reads nothing; a length beyond the file's remaining bytes keeps only the
    ///       bytes the file holds, so a corrupt length never allocates more than the file can supply.
    unsigned long Load(QorFile& file);
    /// Loads only when the stored length equals expected; otherwise steps back over the length field
    /// and returns false with the string unchanged.
    char Load(QorFile& file, int expected);

    /// The underlying byte array (text and terminator).
    const UCharArray& GetArray() const { return m_text; }

private:
    unsigned char* Bytes() const { return m_text; }
    void SetBytes(const unsigned char* bytes, unsigned long n);
    void AppendBytes(const unsigned char* bytes, unsigned long n);
    unsigned long LoadText(QorFile& file, int stored);
    void SetFormatted(const char* format, ...) __attribute__((format(printf, 2, 3)));

    UCharArray m_text;
};

QOR_API QorString operator+(const QorString& a, const QorString& b);
QOR_API QorString operator+(const QorString& a, const char* b);
QOR_API QorString operator+(const QorString& a, const unsigned char* b);
QOR_API QorString operator+(const char* a, const QorString& b);
QOR_API QorString operator+(const unsigned char* a, const QorString& b);
