// Reads arbitrary bytes with every reader of the tokenizer, once from memory and once from a file, and
// traps when the two targets disagree on a result, a text, the position, the line or the column. In the
// file the bytes may lie over the buffer's refill points, behind a filler the first read skips in one call.
// The text utilities run over the same bytes; ChineseLToInteger must return its input.
#include "FuzzInput.h"

#include "qor/files.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace
{
// Where the fuzz bytes are centred in the file, chosen by the control byte: at its start, or for two values
// in 64 over the first or the second refill (skipping the filler up to there costs far more than reading
// the fuzz bytes).
std::size_t Placement(std::uint8_t control)
{
    switch (control & 63)
    {
    case 62:
        return 100000;
    case 63:
        return 200000;
    default:
        return 0;
    }
}

struct Outcome
{
    int result = 0;
    std::string text;
    unsigned long position = 0;
    unsigned long line = 0;
    unsigned long column = 0;

    bool operator==(const Outcome& o) const
    {
        return result == o.result && text == o.text && position == o.position && line == o.line && column == o.column;
    }
};

class Script
{
public:
    Script(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    std::uint8_t Byte() { return m_size ? m_data[m_next++ % m_size] : 0; }
    // Copies move a whole file buffer: a few per input are enough.
    bool MayCopy() { return m_copies++ < 3; }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_next = 0;
    int m_copies = 0;
};

// How far the file parser stands ahead of the memory parser.
struct Offset
{
    unsigned long position;
    unsigned long lines;
};

Outcome Finish(QorParser& p, int result, const QorString& text, const Offset& offset = Offset{0, 0})
{
    Outcome o;
    o.result = result;
    o.text.assign(static_cast<const char*>(text), text.GetLength());
    o.position = p.GetPosition() - offset.position;
    o.line = p.GetLine() - offset.lines;
    o.column = p.GetColumn();
    return o;
}

// One reader call with arguments drawn from the script; both parsers get the same call.
void Step(QorParser& memory, QorParser& file, Script& script, const Offset& offset)
{
    const std::uint8_t op = script.Byte() % 9;
    char args[4];
    for (char& a : args)
        a = static_cast<char>(script.Byte());
    const unsigned long n = script.Byte() % 5;
    QorString a;
    QorString b;
    int ra = 0;
    int rb = 0;
    switch (op)
    {
    case 0:
        ra = memory.GetNextToken(a);
        rb = file.GetNextToken(b);
        break;
    case 1:
        ra = memory.GetNextUntil(a, args[0]);
        rb = file.GetNextUntil(b, args[0]);
        break;
    case 2:
        ra = memory.GetNextUntil(a, args, n);
        rb = file.GetNextUntil(b, args, n);
        break;
    case 3:
        ra = memory.GetNextUntilString(a, args, n);
        rb = file.GetNextUntilString(b, args, n);
        break;
    case 4:
    {
        QorString stop(args, static_cast<int>(n));
        ra = memory.GetNextUntilString(a, stop);
        rb = file.GetNextUntilString(b, stop);
        break;
    }
    case 5:
        ra = memory.GetNextLine(a);
        rb = file.GetNextLine(b);
        break;
    case 6:
        ra = memory.GetNextLine(a, n);
        rb = file.GetNextLine(b, n);
        break;
    case 7:
        memory.EnableUnicode(args[0]);
        file.EnableUnicode(args[0]);
        if (args[1] & 1)
        {
            memory.SetIgnore(args + 2, n % 3);
            file.SetIgnore(args + 2, n % 3);
        }
        else
        {
            memory.SetOperator(args + 2, n % 3);
            file.SetOperator(args + 2, n % 3);
        }
        break;
    default:
    {
        if (!script.MayCopy())
            break;
        // Continue with copies: the file copy reopens the file and stands where the original stood.
        QorParser memoryCopy(memory);
        QorParser fileCopy;
        fileCopy = file;
        memory = memoryCopy;
        file = fileCopy;
        break;
    }
    }
    if (!(Finish(memory, ra, a) == Finish(file, rb, b, offset)))
        __builtin_trap();
}

void RunTextUtilities(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const char* cText = text.c_str();
    QorString out;
    HalfToFull_H(out, cText);
    HalfToFull_V(out, cText);
    IntegerToChineseL(out, cText);
    IntegerToChineseLF(out, cText);
    IntegerToChineseUF(out, cText);
    ChineseLToInteger(out, cText);
    if (std::strcmp(static_cast<const char*>(out), cText) != 0)
        __builtin_trap();
    QorString whole(text.data(), static_cast<int>(text.size()));
    Array<QorString> lines;
    CutString(whole, lines, size ? data[0] % 24 : 4, 0);
    unsigned long failed = 0;
    QorString utf8 = QorBig5ToUtf8(text.data(), text.size(), &failed);
    QorUtf8ToBig5(utf8, utf8.GetLength(), &failed);
    QorUtf8ToBig5(text.data(), text.size(), &failed);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const std::uint8_t control = data[0];
    const std::uint8_t shift = data[1];
    data += 2;
    size -= 2;
    RunTextUtilities(data, size);

    // The file: Big5 pairs closed by a line feed up to the placement, then the fuzz bytes over the chosen
    // refill point. The memory parser reads the fuzz bytes alone; the file parser skips the filler in one
    // call (a step per pair) and then stands where a new parser stands, one line and before bytes further.
    const std::size_t centre = Placement(control);
    std::size_t before = centre ? centre - std::min<std::size_t>(centre - 1, size * shift / 256) : 0;
    // An even count of filler bytes: whole pairs.
    before += before % 2 == 0 && before ? 1 : 0;
    std::vector<char> content;
    content.reserve(before + size);
    for (std::size_t i = 0; i + 1 < before; ++i)
        content.push_back('\xA4');
    if (before)
        content.push_back('\n');
    content.insert(content.end(), data, data + size);

    const std::string& path = qorfuzz::InputPath("parser");
    if (!qorfuzz::WriteInput(path, reinterpret_cast<const std::uint8_t*>(content.data()), content.size()))
        return 0;
    QorParser memory;
    QorParser file;
    const std::vector<char> bytes(data, data + size);
    memory.SetTargetString(bytes.empty() ? "" : bytes.data(), bytes.size());
    if (!file.SetTargetFile(path.c_str()))
        return 0;
    if (before)
    {
        QorString skipped;
        if (!file.GetNextUntil(skipped, '\n') || skipped.GetLength() != before - 1)
            __builtin_trap();
    }
    const Offset offset{before, before ? 1ul : 0ul};
    if (control & 64)
    {
        memory.EnableUnicode(0);
        file.EnableUnicode(0);
    }

    // About one call per byte: the reading calls move on by at least one byte while input remains.
    Script script(data, size);
    const std::size_t steps = size + 8;
    for (std::size_t k = 0; k < steps; ++k)
        Step(memory, file, script, offset);
    return 0;
}
