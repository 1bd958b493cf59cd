#pragma once

#include "core/QorExport.h"

#include "QorFile.h"
#include "qor/core.h"

#include <cstdint>

/// Reads text token by token, up to a character, up to a byte sequence, or line by line, from a caller's
/// memory block or from a file read through a sliding buffer, counting lines and columns as it goes.
/// In Big5 mode (the default) a byte of 0xA0 or more is read together with the byte after it, so a second
/// byte is never taken for an operator, separator or line end.
/// Lines count line feeds: a lone carriage return ends a GetNextLine line but does not start a new line
/// number. Texts and files are read up to 4 GiB.
class QOR_API QorParser : public QorObj
{
public:
    /// What GetNextToken found; the value 2 is never produced.
    enum TokenType
    {
        kEndOfInput = 0,
        kWord = 1,
        kOperator = 3
    };
    /// GetNextLine's result when the input ended before a line terminator.
    enum : unsigned char
    {
        kLineAtEnd = 255
    };
    /// Bytes of the file buffer and of each refill; the rest of the buffer keeps the previous block's tail.
    enum : std::uint32_t
    {
        kBufferSize = 100010,
        kRefillSize = 100000
    };

    /// Separators space, tab, LF and CR; operators the ASCII punctuation except "_"; Big5 mode; no target.
    QorParser();
    ~QorParser();
    /// Copies get their own sets, buffer and stream: a file target is reopened by path and positioned
    /// where the source stands, so both read on independently. When the file cannot be reopened the copy
    /// has no target. A memory target stays the caller's memory, shared by both.
    QorParser(const QorParser& other);
    QorParser& operator=(const QorParser& other);

    /// Replaces the separator set by the first n bytes of set, when set is not null.
    /// \note The set is read as a zero-terminated text: a zero byte within n ends it. A zero byte in the
    ///       input is always a member of both sets.
    void SetIgnore(const char* set, unsigned long n);
    /// Replaces the one-character operator set by the first n bytes of set, when set is not null.
    /// \note As SetIgnore: a zero byte ends the set, and a zero byte in the input is always a member.
    void SetOperator(const char* set, unsigned long n);
    /// Big5 mode on (any non-zero value, stored as 1) or off (0).
    void EnableUnicode(char on);

    /// Reads the n bytes of text (zero bytes included); closes a file target first.
    /// \note The text is not copied: it must stay unchanged while it is parsed.
    void SetTargetString(const char* text, unsigned long n);
    /// Reads the bytes of s. \note s must outlive the parsing and stay unchanged meanwhile.
    void SetTargetString(QorString& s);
    /// Reads the file at path through a buffer of kBufferSize bytes; closes a file target first.
    /// False, with no target, when the file cannot be opened or the buffer cannot be allocated (code 1).
    char SetTargetFile(const char* path);
    /// Ends the target (closing the file and freeing its buffer); readers then report the end of input.
    void Close();

    /// The next word (kWord) or one-character operator (kOperator), skipping separators before it;
    /// kEndOfInput with an empty token at the end. The separator after a word is left for the next call.
    /// \note A Big5 lead byte listed as an operator comes with its second byte in Big5 mode.
    TokenType GetNextToken(QorString& token);
    /// Collects characters up to the first character equal to stop (compared at character starts only),
    /// which is consumed and not stored; true. False at the end of input, with what was collected in text.
    /// \note In Big5 mode a stop byte of 0xA0 or more matches a lead byte, and its pair is consumed.
    char GetNextUntil(QorString& text, char stop);
    /// As GetNextUntil with any of the n bytes of stops (a zero byte included) as the stop. With no stops
    /// (null or n = 0) everything up to the end is collected and the result is false.
    char GetNextUntil(QorString& text, const char* stops, unsigned long n);
    /// Collects text up to the n-byte sequence stop; the sequence and the one character after it are
    /// consumed and not stored; true. False at the end of input, with what was collected in text.
    /// \note Matching restarts after a mismatching character, so a sequence beginning inside a failed
    ///       partial match is missed: "ab" is not found in "aab". An empty stop matches at once.
    char GetNextUntilString(QorString& text, const char* stop, unsigned long n);
    /// As above with the bytes of stop (zero bytes included).
    char GetNextUntilString(QorString& text, QorString& stop);
    /// The next line without its terminator (LF, CR or CR LF): 1 for a non-empty line, 0 for an empty one,
    /// kLineAtEnd when the input ended first (even with text collected, which stays in line).
    unsigned char GetNextLine(QorString& line);
    /// As GetNextLine, but the line holds at most max - 1 bytes: when the next character would not fit,
    /// the result is 1 and the rest of the line is left for the next call. A terminator or the end of input
    /// right after max - 1 bytes is handled as by GetNextLine. A Big5 pair is never split; when not even the
    /// first character fits (max below 2, or a pair under max 2), that one character is taken anyway so
    /// that every call moves on.
    unsigned char GetNextLine(QorString& line, unsigned long max);

    /// Target position of the next byte to read.
    unsigned long GetPosition() const { return m_position; }
    /// Current line, from 1.
    unsigned long GetLine() const { return m_line; }
    /// Current column, from 1.
    unsigned long GetColumn() const { return m_column; }
    /// Bytes in the target (0 without one).
    unsigned long GetTotalLength() const { return m_totalLength; }
    /// 1 in Big5 mode, 0 in single-byte mode.
    char GetMode() const { return m_mode; }

private:
    void ResetPosition();
    void FreeFileTarget();
    static unsigned char* CopySet(const char* set, unsigned long n, std::uint32_t& length);
    /// Replaces one of the two sets by a copy of set (nothing for null; code 1 when the copy fails).
    void ReplaceSet(unsigned char*& target, std::uint32_t& targetLength, const char* set, unsigned long n);
    static bool IsInSet(const unsigned char* set, std::uint32_t length, unsigned char b);
    bool IsIgnore(unsigned char b) const { return IsInSet(m_ignore, m_ignoreLength, b); }
    bool IsOperator(unsigned char b) const { return IsInSet(m_operator, m_operatorLength, b); }

    bool HasInput() const { return m_position < m_totalLength; }
    unsigned char Current() const { return m_buffer[m_position - m_base]; }
    /// Bytes of the character at the position: 2 for a Big5 pair in Big5 mode, else 1 (also for a lead
    /// byte that ends the input).
    std::uint32_t CharLength() const;
    class Collector;
    /// Consumes the character at the position, appending its bytes to into when given.
    void Consume(Collector* into);
    void Refill();

    unsigned char* m_ignore = nullptr;
    std::uint32_t m_ignoreLength = 0;
    unsigned char* m_operator = nullptr;
    std::uint32_t m_operatorLength = 0;
    std::uint32_t m_totalLength = 0;
    std::uint32_t m_base = 0;
    std::uint32_t m_position = 0;
    std::uint32_t m_line = 1;
    std::uint32_t m_column = 1;
    char m_mode = 1;
    QorFile m_file;
    /// The caller's text or m_fileBuffer.
    const unsigned char* m_buffer = nullptr;
    /// Owned while a file is the target.
    unsigned char* m_fileBuffer = nullptr;
    /// Valid bytes in m_fileBuffer, from index 0.
    std::uint32_t m_filled = 0;
    /// Path of the file target, for copies to reopen.
    QorString m_path;
};
