#include "QorPicBlock.h"

#include "core/QorError.h"
#include "files/FileError.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>

namespace
{
void PutLE(unsigned char* p, std::uint32_t v, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        p[i] = static_cast<unsigned char>(v >> (8 * i));
}

std::uint32_t GetLE(const unsigned char* p, int bytes)
{
    std::uint32_t v = 0;
    for (int i = 0; i < bytes; ++i)
        v |= std::uint32_t(p[i]) << (8 * i);
    return v;
}

bool IsColorType(std::int32_t type)
{
    return type >= QorPicBlock::Bit8 && type <= QorPicBlock::Bit32;
}

unsigned BitsOfType(std::int32_t type)
{
    return static_cast<unsigned>(type) * 8;
}

// Why a header of n bytes could not be read whole at start: an empty file or a truncated one.
char ShortHeader(QorFile& file, unsigned long start, unsigned long got, unsigned long n, const char* what)
{
    if (file.GetFileLength() == 0)
        return qor::detail::FileError(file, start, "the file is empty");
    return qor::detail::FileError(file, start + got, "truncated: %lu of the %lu bytes of the %s", got, n, what);
}

char NotOpen(const char* what)
{
    return QorSetError("reading %s: the stream is not open", what);
}
} // namespace

// Writes the pixels, padding with zeros what an attached buffer does not hold, so that the stream
// always carries exactly GetSize() bytes.
static unsigned long WritePixels(QorFile& file, const unsigned char* data, unsigned long size, unsigned long held)
{
    unsigned long written = file.Write(data, std::min(size, held));
    static const unsigned char kZeros[256] = {};
    for (unsigned long left = size - std::min(size, held); left > 0;)
    {
        const unsigned long n = std::min<unsigned long>(left, sizeof kZeros);
        written += file.Write(kZeros, n);
        left -= n;
    }
    return written;
}

unsigned long QorPicBlock::SaveQBM(QorFile& file)
{
    if (!file.IsOpen())
        return 0;
    unsigned char header[32] = {};
    std::memcpy(header, m_tag, 4);
    PutLE(header + 4, m_version, 4);
    PutLE(header + 8, m_reserved, 4);
    PutLE(header + 24, static_cast<std::uint32_t>(m_colorType), 4);
    PutLE(header + 28, static_cast<std::uint32_t>(m_width), 2);
    PutLE(header + 30, static_cast<std::uint32_t>(m_height), 2);
    unsigned long total = file.Write(header, sizeof header);
    total += WritePixels(file, m_data, GetSize(), m_data ? m_capacity : 0);
    total += file.Write(m_mask, m_bytesPerPixel);
    return total;
}

unsigned long QorPicBlock::LoadQBM(QorFile& file)
{
    if (!file.IsOpen())
        return NotOpen("a QBM picture");
    const unsigned long start = file.GetPosition();
    unsigned char header[32];
    const unsigned long got = file.Read(header, 4);
    const bool tagged = got == 4 && std::memcmp(header, m_tag, 4) == 0;
    const unsigned long rest = tagged ? file.Read(header + 4, 28) : 0;
    if (!tagged || rest != 28)
    {
        if (got == 4 && !tagged)
            qor::detail::FileError(file, start, "not a QBM picture: the tag is \"%.4s\", not \"BMPQ\"",
                                   reinterpret_cast<const char*>(header));
        else
            ShortHeader(file, start, got + rest, 32, "QBM header");
        file.Seek(start, 0, 1);
        return 0;
    }
    const auto type = static_cast<std::int32_t>(GetLE(header + 24, 4));
    const unsigned long read = ReadPixels(file, ColorType(type), GetLE(header + 28, 2), GetLE(header + 30, 2), 32);
    if (!read)
        file.Seek(start, 0, 1);
    return read;
}

unsigned long QorPicBlock::SaveQGB(QorFile& file)
{
    if (!file.IsOpen())
        return 0;
    unsigned char header[12];
    PutLE(header, static_cast<std::uint32_t>(m_colorType), 4);
    PutLE(header + 4, static_cast<std::uint32_t>(m_width), 4);
    PutLE(header + 8, static_cast<std::uint32_t>(m_height), 4);
    unsigned long total = file.Write(header, sizeof header);
    total += WritePixels(file, m_data, GetSize(), m_data ? m_capacity : 0);
    total += file.Write(m_mask, m_bytesPerPixel);
    return total;
}

unsigned long QorPicBlock::LoadQGB(QorFile& file)
{
    if (!file.IsOpen())
        return NotOpen("a QGB picture");
    const unsigned long start = file.GetPosition();
    unsigned char header[12];
    unsigned long read = 0;
    const unsigned long got = file.Read(header, sizeof header);
    if (got != sizeof header)
        ShortHeader(file, start, got, sizeof header, "QGB header");
    else
    {
        const auto type = static_cast<std::int32_t>(GetLE(header, 4));
        const auto w = static_cast<std::int32_t>(GetLE(header + 4, 4));
        const auto h = static_cast<std::int32_t>(GetLE(header + 8, 4));
        read = ReadPixels(file, ColorType(type), w, h, sizeof header);
    }
    if (!read)
        file.Seek(start, 0, 1);
    return read;
}

// The common tail of the readers: checks the header's claims against the stream before the picture
// changes, then resizes and reads the pixels and the mask colour. Returns 0 for a refused header.
unsigned long QorPicBlock::ReadPixels(QorFile& file, ColorType type, long w, long h, unsigned long header)
{
    const unsigned long pixelsAt = file.GetPosition();
    if (!IsColorType(type))
        return qor::detail::FileError(file, pixelsAt - header, "picture type %d is not 1 to 4", int(type));
    const std::uint64_t size = (std::uint64_t(BitsOfType(type)) * std::uint64_t(std::max(w, 0L)) *
                                    std::uint64_t(std::max(h, 0L)) + 7) / 8;
    if (size > UINT32_MAX || size > file.GetBytesLeft())
        return qor::detail::FileError(file, pixelsAt, "truncated: a %ld x %ld picture needs %llu pixel bytes, %lu left",
                                      w, h, static_cast<unsigned long long>(size), file.GetBytesLeft());
    // An attached buffer never changes size, so it only takes a picture of its own type and size.
    if (m_attached && (type != m_colorType || std::max(w, 0L) != m_width || std::max(h, 0L) != m_height))
        return qor::detail::FileError(file, pixelsAt, "the attached picture cannot become a %ld x %ld picture", w, h);
    Reset(type, w, h);
    // The buffer must hold the pixels: not so after a failed allocation, or for an attached buffer whose
    // type was widened after Attach. A picture without pixel bytes (0 wide or 0 high) has nothing to hold.
    if (GetSize() != size || (size && (!m_data || m_capacity < size)))
        return qor::detail::FileError(file, pixelsAt, "no room for %llu pixel bytes",
                                      static_cast<unsigned long long>(size));
    unsigned long total = header;
    total += file.Read(m_data, size);
    total += file.Read(m_mask, m_bytesPerPixel);
    return total;
}

unsigned long QorPicBlock::LoadFix(QorFile& file, QorString& sizeText)
{
    if (!file.IsOpen())
        return NotOpen("a FIX picture");
    // Five characters are always skipped; then the width up to a blank, then the height up to a blank.
    const char* text = sizeText;
    const unsigned long length = sizeText.GetLength();
    unsigned long i = std::min<unsigned long>(5, length);
    std::string widthText, heightText;
    while (i < length && text[i] != ' ')
        widthText += text[i++];
    if (i < length)
        ++i;
    while (i < length && text[i] != ' ')
        heightText += text[i++];
    // strtol saturates where atol's overflow would be undefined; the sizes are checked next.
    const long w = std::strtol(widthText.c_str(), nullptr, 10);
    const long h = std::strtol(heightText.c_str(), nullptr, 10);

    // The size is the caller's, not the file's: a short stream is a short read, counted in the result.
    // Only a size no picture can hold is refused.
    const std::uint64_t size = std::uint64_t(std::max(w, 0L)) * std::uint64_t(std::max(h, 0L));
    const unsigned long at = file.GetPosition();
    if (size > UINT32_MAX)
        return qor::detail::FileError(file, at, "a %ld x %ld FIX picture is larger than any picture can be", w, h);
    if (m_attached && (m_colorType != Bit8 || std::max(w, 0L) != m_width || std::max(h, 0L) != m_height))
        return qor::detail::FileError(file, at, "the attached picture cannot become a %ld x %ld picture", w, h);
    Reset(Bit8, w, h);
    if (GetSize() != size)
        return qor::detail::FileError(file, at, "no room for %llu pixel bytes", static_cast<unsigned long long>(size));
    return file.Read(m_data, size);
}

unsigned long QorPicBlock::Load(QorString& tag, QorFile& file)
{
    if (!file.IsOpen())
        return 0;
    if (tag == "BMPQ")
        return LoadQBM(file);
    if (tag == "QGB ")
        return LoadQGB(file);
    if (tag == "BMP " || tag == "PCX ")
        return Load(file);
    if (tag.GetLength() >= 5 && std::memcmp(static_cast<const char*>(tag), "FIX  ", 5) == 0)
    {
        QorString rest = tag.Right(tag.GetLength() - 5);
        return LoadFix(file, rest);
    }
    return qor::detail::FileError(file, file.GetPosition(), "unknown picture format \"%s\"",
                                  static_cast<const char*>(tag));
}

unsigned long QorPicBlock::Load(QorFile& file)
{
    return qor::detail::FileError(file, file.GetPosition(),
                                  "BMP and PCX pictures are not decoded from a stream; use QorLoadPicture");
}

namespace
{
// Bytes per row of a bitmap: bits x width rounded up to bytes, then to a multiple of 4.
std::uint64_t RowBytes(std::uint32_t bitCount, std::int64_t width)
{
    if (width <= 0)
        return 0;
    const std::uint64_t bits = std::uint64_t(bitCount) * std::uint64_t(width);
    return (bits / 8 + (bits % 8 ? 1 : 0) + 3) / 4 * 4;
}

// Reads the file header, a header of headerSize bytes (decoded by decode) and the pixel bytes.
template <typename Header, typename Decode, typename Rows>
char ReadBmp(const char* path, Header* header, unsigned char** bits, unsigned long headerSize, Decode decode, Rows rows)
{
    if (!path || !header || !bits)
        return QorSetError("reading a BMP file: no path or no place for the result");
    QorFile file;
    if (!file.Open(path, QorFile::kRead))
        return 0;
    unsigned char fileHeader[14];
    const unsigned long got = file.Read(fileHeader, sizeof fileHeader);
    if (got != sizeof fileHeader)
        return ShortHeader(file, 0, got, sizeof fileHeader, "BMP file header");
    if (GetLE(fileHeader, 2) != 0x4D42)
        return qor::detail::FileError(file, 0, "not a BMP file: the tag is \"%.2s\", not \"BM\"",
                                      reinterpret_cast<const char*>(fileHeader));
    unsigned char raw[40] = {};
    const unsigned long gotInfo = file.Read(raw, headerSize);
    if (gotInfo != headerSize)
        return ShortHeader(file, 14, gotInfo, headerSize, "BMP info header");
    decode(raw, header);
    if (GetLE(raw, 4) != headerSize)
        return qor::detail::FileError(file, 14, "the info header says %u bytes, this reader takes %lu", GetLE(raw, 4),
                                      headerSize);

    const std::uint32_t fileSize = GetLE(fileHeader + 2, 4);
    const std::uint32_t offBits = GetLE(fileHeader + 10, 4);
    const unsigned long length = file.GetFileLength();
    // The pixel bytes must lie in the file and hold every row the header describes.
    if (fileSize < offBits || offBits > length || fileSize - offBits > length - offBits)
        return qor::detail::FileError(file, 2, "truncated: the header claims %u bytes with pixels from byte %u, the "
                                      "file has %lu", fileSize, offBits, length);
    if (rows(*header) > fileSize - offBits)
        return qor::detail::FileError(file, offBits, "truncated: the rows need %llu bytes, the file holds %u",
                                      static_cast<unsigned long long>(rows(*header)), fileSize - offBits);
    const std::uint32_t n = fileSize - offBits;
    std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[n ? n : 1]());
    if (!buffer)
        return qor::detail::FileError(file, offBits, "no room for %u pixel bytes", n);
    file.Seek(offBits, 0, 1);
    if (file.Read(buffer.get(), n) != n)
        return qor::detail::FileError(file, offBits, "truncated: fewer than %u pixel bytes", n);
    *bits = buffer.release();
    return 1;
}
} // namespace

char LoadBMP(const char* path, BITMAPCOREHEADER* header, unsigned char** bits)
{
    auto decode = [](const unsigned char* raw, BITMAPCOREHEADER* h) {
        h->bcSize = GetLE(raw, 4);
        h->bcWidth = static_cast<WORD>(GetLE(raw + 4, 2));
        h->bcHeight = static_cast<WORD>(GetLE(raw + 6, 2));
        h->bcPlanes = static_cast<WORD>(GetLE(raw + 8, 2));
        h->bcBitCount = static_cast<WORD>(GetLE(raw + 10, 2));
    };
    auto rows = [](const BITMAPCOREHEADER& h) { return RowBytes(h.bcBitCount, h.bcWidth) * h.bcHeight; };
    return ReadBmp(path, header, bits, 12, decode, rows);
}

char LoadBMP(const char* path, BITMAPINFOHEADER* header, unsigned char** bits)
{
    auto decode = [](const unsigned char* raw, BITMAPINFOHEADER* h) {
        h->biSize = GetLE(raw, 4);
        h->biWidth = static_cast<LONG>(GetLE(raw + 4, 4));
        h->biHeight = static_cast<LONG>(GetLE(raw + 8, 4));
        h->biPlanes = static_cast<WORD>(GetLE(raw + 12, 2));
        h->biBitCount = static_cast<WORD>(GetLE(raw + 14, 2));
        h->biCompression = GetLE(raw + 16, 4);
        h->biSizeImage = GetLE(raw + 20, 4);
        h->biXPelsPerMeter = static_cast<LONG>(GetLE(raw + 24, 4));
        h->biYPelsPerMeter = static_cast<LONG>(GetLE(raw + 28, 4));
        h->biClrUsed = GetLE(raw + 32, 4);
        h->biClrImportant = GetLE(raw + 36, 4);
    };
    auto rows = [](const BITMAPINFOHEADER& h) {
        return RowBytes(h.biBitCount, h.biWidth) * std::uint64_t(std::max<std::int64_t>(h.biHeight, 0));
    };
    return ReadBmp(path, header, bits, 40, decode, rows);
}

void VerticalReverse(unsigned char* bits, BITMAPINFOHEADER* header)
{
    if (!bits || !header || header->biHeight < 1)
        return;
    const std::uint64_t row = RowBytes(header->biBitCount, header->biWidth);
    if (row == 0)
        return;
    // Swapping rows pairwise in place gives the same result as reversing through a copy.
    const long height = header->biHeight;
    for (long i = 0; i < height / 2; ++i)
    {
        unsigned char* top = bits + std::size_t(i) * row;
        unsigned char* bottom = bits + std::size_t(height - 1 - i) * row;
        std::swap_ranges(top, top + row, bottom);
    }
}
