#include "QorPicBlock.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace
{
constexpr double kPi = 3.14159265358979323846;

// A w x h picture of bytesPerPixel bytes whose sides and byte count fit in 32 bits, as Reset demands.
// The index tables of the transforms rely on it too.
bool FitsPicture(std::size_t bytesPerPixel, long w, long h)
{
    if (w < 0 || h < 0 || w > INT32_MAX || h > INT32_MAX || bytesPerPixel == 0)
        return false;
    return std::uint64_t(w) * std::uint64_t(h) <= UINT32_MAX / bytesPerPixel;
}

// The mask colour's bytes, zeros where the picture has none.
void MaskBytes(const unsigned char* mask, std::size_t bpp, unsigned char (&out)[4])
{
    std::memset(out, 0, sizeof out);
    if (mask)
        std::memcpy(out, mask, std::min<std::size_t>(bpp, sizeof out));
}

// Keep patterns of the transparency levels 1 to 9: entry 0 replaces the pixel with the mask colour.
// Each row starts at index (row mod period) * step, so that neighbouring rows do not line up.
struct stScreenLevel
{
    unsigned char keep[10];
    int step;
    int period;
};

constexpr stScreenLevel kScreenLevels[9] = {
    {{0, 0, 0, 0, 1, 0, 0, 0, 0, 0}, 3, 2}, {{0, 0, 1, 0, 0, 0, 0, 1, 0, 0}, 2, 2},
    {{0, 0, 1, 0, 0, 1, 0, 0, 1, 0}, 1, 3}, {{0, 0, 1, 0, 1, 0, 0, 1, 0, 1}, 1, 3},
    {{0, 1, 0, 1, 0, 1, 0, 1, 0, 1}, 1, 2}, {{1, 1, 0, 1, 0, 1, 1, 0, 1, 0}, 1, 3},
    {{1, 1, 0, 1, 1, 0, 1, 1, 0, 1}, 1, 3}, {{1, 1, 0, 1, 1, 1, 1, 0, 1, 1}, 2, 2},
    {{1, 1, 1, 1, 0, 1, 1, 1, 1, 1}, 3, 2},
};
} // namespace

void QorPicBlock::CreateZoom(const QorPicBlock& src, long newWidth, long newHeight)
{
    if (&src == this)
    {
        const QorPicBlock before(src);
        CreateZoom(before, newWidth, newHeight);
        return;
    }
    const long srcWidth = src.m_width;
    const long srcHeight = src.m_height;
    const std::size_t bpp = src.m_bytesPerPixel;
    if (srcWidth < 1 || srcHeight < 1 || newWidth < 1 || newHeight < 1 || bpp < 1 || bpp > 4 ||
        !FitsPicture(bpp, newWidth, newHeight))
        return;

    // Nearest neighbour: the tables hold the source column and row of every result column and row, so the
    // pixel loop does no floating-point work. Sources are at most INT32_MAX wide, so 32-bit entries suffice.
    std::unique_ptr<std::int32_t[]> columns(new (std::nothrow) std::int32_t[newWidth]);
    std::unique_ptr<std::int32_t[]> rows(new (std::nothrow) std::int32_t[newHeight]);
    if (!columns || !rows)
        return;
    const double fx = double(newWidth) / double(srcWidth);
    const double fy = double(newHeight) / double(srcHeight);
    for (long i = 0; i < newWidth; ++i)
        columns[i] = static_cast<std::int32_t>(std::min<long>(static_cast<long>(double(i) / fx), srcWidth - 1));
    for (long j = 0; j < newHeight; ++j)
        rows[j] = static_cast<std::int32_t>(std::min<long>(static_cast<long>(double(j) / fy), srcHeight - 1));

    Reset(src.m_colorType, newWidth, newHeight);
    SetMask(src.m_mask);
    if (!m_data || !src.m_data || m_bytesPerPixel != bpp)
        return;
    // An attached picture keeps its own size: only what it holds is written.
    const long height = std::min(newHeight, GetUsableRows());
    const long width = std::min(newWidth, long(m_width));
    const long srcRows = src.GetUsableRows();
    for (long j = 0; j < height; ++j)
    {
        if (rows[j] >= srcRows)
            continue;
        unsigned char* dst = GetPixel(0, j);
        const unsigned char* srcRow = src.GetPixel(0, rows[j]);
        for (long i = 0; i < width; ++i, dst += bpp)
            std::memcpy(dst, srcRow + std::size_t(columns[i]) * bpp, bpp);
    }
}

void QorPicBlock::CreateZoom(const QorPicBlock&, double, double) {}

void QorPicBlock::CreateRotate(const QorPicBlock& src, double degrees)
{
    if (&src == this)
    {
        const QorPicBlock before(src);
        CreateRotate(before, degrees);
        return;
    }
    const std::size_t bpp = src.m_bytesPerPixel;
    const double theta = kPi * degrees * 0.005555555555555556;
    if (src.m_width < 1 || src.m_height < 1 || bpp < 1 || bpp > 4 || !std::isfinite(theta))
        return;
    const double c = std::cos(theta);
    const double s = std::sin(theta);
    const double cr = std::cos(-theta);
    const double sr = std::sin(-theta);

    // The bounding box of the four corners turned about (0, 0), each corner truncated toward zero.
    const long w = long(src.m_width) - 1;
    const long h = long(src.m_height) - 1;
    const long cornerX[4] = {0, w, w, 0};
    const long cornerY[4] = {0, 0, h, h};
    long minX = 0, maxX = 0, minY = 0, maxY = 0;
    for (int k = 0; k < 4; ++k)
    {
        const double x = double(cornerX[k]);
        const double y = double(cornerY[k]);
        const long tx = static_cast<long>(x * c - y * s);
        const long ty = static_cast<long>(x * s + y * c);
        minX = k == 0 ? tx : std::min(minX, tx);
        maxX = k == 0 ? tx : std::max(maxX, tx);
        minY = k == 0 ? ty : std::min(minY, ty);
        maxY = k == 0 ? ty : std::max(maxY, ty);
    }
    const long newWidth = maxX - minX + 1;
    const long newHeight = maxY - minY + 1;
    if (!FitsPicture(bpp, newWidth, newHeight))
        return;

    Reset(src.m_colorType, newWidth, newHeight);
    SetMask(src.m_mask);
    if (!m_data || !src.m_data || m_bytesPerPixel != bpp)
        return;
    unsigned char mask[4];
    MaskBytes(m_mask, bpp, mask);
    const long height = std::min(newHeight, GetUsableRows());
    const long width = std::min(newWidth, long(m_width));
    const long srcRows = std::min(h + 1, src.GetUsableRows());
    // Each result pixel is turned back by -theta onto the source and rounded (+0.5, truncated toward zero);
    // pixels that land outside the source take the mask colour, so they vanish in a transparent paste.
    for (long j = 0; j < height; ++j)
    {
        const double y = double(j + minY);
        unsigned char* dst = GetPixel(0, j);
        for (long i = 0; i < width; ++i, dst += bpp)
        {
            const double x = double(i + minX);
            const long u = static_cast<long>(x * cr - y * sr + 0.5);
            const long v = static_cast<long>(x * sr + y * cr + 0.5);
            if (u >= 0 && u <= w && v >= 0 && v < srcRows)
                std::memcpy(dst, src.GetPixel(u, v), bpp);
            else
                std::memcpy(dst, mask, bpp);
        }
    }
}

void QorPicBlock::CreateTransparent(const QorPicBlock& src, double ratio)
{
    Copy(src, 0, 0, long(src.m_width) - 1, long(src.m_height) - 1);
    const std::size_t bpp = m_bytesPerPixel;
    if (!m_data || bpp < 1 || bpp > 4)
        return;
    // Written as negated tests so that a NaN ratio becomes 0.1 instead of reaching the conversion.
    if (!(ratio >= 0.1))
        ratio = 0.1;
    else if (!(ratio <= 0.9))
        ratio = 0.9;
    const int level = std::clamp(static_cast<int>(ratio * 10), 1, 9);
    const stScreenLevel& screen = kScreenLevels[level - 1];
    unsigned char mask[4];
    MaskBytes(m_mask, bpp, mask);
    const long rows = GetUsableRows();
    for (long y = 0; y < rows; ++y)
    {
        int index = (int(y % screen.period) * screen.step) % 10;
        unsigned char* dst = GetPixel(0, y);
        for (long x = 0; x < m_width; ++x, dst += bpp)
        {
            if (!screen.keep[index])
                std::memcpy(dst, mask, bpp);
            index = index == 9 ? 0 : index + 1;
        }
    }
}

void QorPicBlock::CreateDeform(const QorPicBlock& src, Point<long> p1, Point<long> p2, Point<long> p3, Point<long> p4)
{
    CreateDeform(src, p1.x, p1.y, p2.x, p2.y, p3.x, p3.y, p4.x, p4.y);
}

void QorPicBlock::CreateDeform(const QorPicBlock&, long, long, long, long, long, long, long, long) {}
