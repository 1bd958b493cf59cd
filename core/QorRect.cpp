#include "QorRect.h"

#include <algorithm>
#include <utility>

namespace
{
// Coordinates are 32-bit; sums that leave the range wrap instead of overflowing.
std::int32_t Wrap(long long v)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<unsigned long long>(v)));
}
} // namespace

void QorRect::SetRect(long l, long t, long r, long b)
{
    left = static_cast<std::int32_t>(l);
    top = static_cast<std::int32_t>(t);
    right = static_cast<std::int32_t>(r);
    bottom = static_cast<std::int32_t>(b);
    NormalizeRect();
}

void QorRect::NormalizeRect()
{
    if (right < left)
        std::swap(left, right);
    if (bottom < top)
        std::swap(top, bottom);
}

void QorRect::SetTopLeft(Point<long> p)
{
    NormalizeRect();
    const long long w = static_cast<long long>(right) - left;
    const long long h = static_cast<long long>(bottom) - top;
    left = static_cast<std::int32_t>(p.x);
    top = static_cast<std::int32_t>(p.y);
    right = Wrap(left + w);
    bottom = Wrap(top + h);
}

QorRect& QorRect::operator+=(Point<int> d)
{
    left = Wrap(static_cast<long long>(left) + d.x);
    right = Wrap(static_cast<long long>(right) + d.x);
    top = Wrap(static_cast<long long>(top) + d.y);
    bottom = Wrap(static_cast<long long>(bottom) + d.y);
    return *this;
}

char QorRect::IntersectRect(const QorRect& a, const QorRect& b)
{
    // The result is not normalised: disjoint inputs leave left > right or top > bottom.
    const std::int32_t l = std::max(a.left, b.left);
    const std::int32_t t = std::max(a.top, b.top);
    const std::int32_t r = std::min(a.right, b.right);
    const std::int32_t bt = std::min(a.bottom, b.bottom);
    left = l;
    top = t;
    right = r;
    bottom = bt;
    return left < right && top < bottom;
}

char QorRect::UnionRect(const QorRect& a, const QorRect& b)
{
    const std::int32_t l = std::min(a.left, b.left);
    const std::int32_t t = std::min(a.top, b.top);
    const std::int32_t r = std::max(a.right, b.right);
    const std::int32_t bt = std::max(a.bottom, b.bottom);
    left = l;
    top = t;
    right = r;
    bottom = bt;
    return left < right && top < bottom;
}

char QorRect::SubtractRect(const QorRect&, const QorRect&)
{
    Reset();
    return 0;
}

char QorRect::IntersectRect(const QorRect* a, const QorRect* b)
{
    return a && b ? IntersectRect(*a, *b) : 0;
}

char QorRect::UnionRect(const QorRect* a, const QorRect* b)
{
    return a && b ? UnionRect(*a, *b) : 0;
}

char QorRect::SubtractRect(const QorRect*, const QorRect*)
{
    Reset();
    return 0;
}

char QorRect::PtInRect(long x, long y) const
{
    return left <= x && x <= right && top <= y && y <= bottom;
}

char QorRect::IsInside(const QorRect& r) const
{
    return left >= r.left && right <= r.right && top >= r.top && bottom <= r.bottom;
}

char QorRect::IsInclude(const QorRect& r) const
{
    return r.IsInside(*this);
}
