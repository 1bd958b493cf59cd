#pragma once

#include "core/QorExport.h"

#include <cstdint>

class QorFile;

/// A pair of coordinates (the library uses Point<long> and Point<int>).
template <typename T>
struct Point
{
    Point() = default;
    Point(T px, T py) : x(px), y(py) {}
    bool operator==(const Point& o) const { return x == o.x && y == o.y; }
    bool operator!=(const Point& o) const { return !(*this == o); }

    T x = 0;
    T y = 0;
};

/// Rectangle of 32-bit signed coordinates with inclusive edges: width = right - left + 1.
struct QOR_API QorRect
{
    QorRect() = default;
    /// Stores the corners, swapping left/right and top/bottom when reversed.
    QorRect(long l, long t, long r, long b) { SetRect(l, t, r, b); }

    void Reset() { left = top = right = bottom = 0; }
    void SetRect(long l, long t, long r, long b);
    void NormalizeRect();
    /// Normalises, then moves the rectangle so that its top-left corner is p, keeping its size.
    void SetTopLeft(Point<long> p);
    Point<long> TopLeft() const { return Point<long>(left, top); }
    Point<long> BottomRight() const { return Point<long>(right, bottom); }
    long Width() const { return static_cast<long>(right) - left + 1; }
    long Height() const { return static_cast<long>(bottom) - top + 1; }

    QorRect& operator+=(Point<int> d);
    bool operator==(const QorRect& o) const
    {
        return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
    }
    bool operator!=(const QorRect& o) const { return !(*this == o); }

    /// This becomes the overlap of a and b. True only when left < right and top < bottom afterwards,
    /// so an overlap one pixel wide or high answers false.
    char IntersectRect(const QorRect& a, const QorRect& b);
    /// This becomes the bounding rectangle of a and b; true only when left < right and top < bottom.
    char UnionRect(const QorRect& a, const QorRect& b);
    /// Subtraction is not offered: this becomes (0, 0, 0, 0) and the answer is false.
    char SubtractRect(const QorRect& a, const QorRect& b);
    char IntersectRect(const QorRect* a, const QorRect* b);
    char UnionRect(const QorRect* a, const QorRect* b);
    char SubtractRect(const QorRect* a, const QorRect* b);

    /// All four edges count as inside.
    char PtInRect(long x, long y) const;
    /// This lies within r.
    char IsInside(const QorRect& r) const;
    /// r lies within this.
    char IsInclude(const QorRect& r) const;

    unsigned long GetSaveBytes() const { return 16; }
    /// Writes left, top, right, bottom as 32-bit integers; returns 16.
    unsigned long Save(QorFile& file) const;
    /// Reads the four integers; returns 16.
    unsigned long Load(QorFile& file);

    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
};

/// Handle of an object in a registry: the registry's serial number, its node and a free 16-bit tag.
/// \note Equality compares identifier and object, not the tag. A handle read from a file has no object
///       until its registry attaches one.
struct QOR_API QorGuider
{
    void Reset()
    {
        identifier = 0;
        object = nullptr;
        tag = 0;
    }
    bool operator==(const QorGuider& o) const { return identifier == o.identifier && object == o.object; }
    bool operator!=(const QorGuider& o) const { return !(*this == o); }
    char IsValid() const { return object != nullptr; }

    unsigned long GetSaveBytes() const { return 6; }
    /// Writes the identifier (32-bit) and the tag (16-bit); returns 6.
    unsigned long Save(QorFile& file) const;
    /// Reads identifier and tag; the object pointer is left as it was. Returns 6.
    unsigned long Load(QorFile& file);

    std::uint32_t identifier = 0;
    void* object = nullptr;
    std::uint16_t tag = 0;
};
