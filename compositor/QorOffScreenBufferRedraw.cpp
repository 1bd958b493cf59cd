// Redraw: a dirty rectangle of a buffer recomposed from the buffer's background and its sprites in depth
// order, children brought up to date on the way.
#include "CycleWalk.h"

#include "QorOffScreenBuffer.h"

#include <algorithm>
#include <utility>

using qor::detail::FindForward;

namespace
{
// Children shown inside children deeper than this are not recomposed: only a cycle of children showing
// each other gets there.
constexpr int kMaxNesting = 32;

// The rectangle of a sprite's picture, or for a child's sprite the child's visible part, in the buffer.
QorRect ShownArea(const QorSprite& sprite, const QorRect* childVisible)
{
    QorRect area;
    if (childVisible)
    {
        area.left = static_cast<std::int32_t>(childVisible->left + sprite.GetX());
        area.top = static_cast<std::int32_t>(childVisible->top + sprite.GetY());
        area.right = static_cast<std::int32_t>(childVisible->right + sprite.GetX());
        area.bottom = static_cast<std::int32_t>(childVisible->bottom + sprite.GetY());
        return area;
    }
    sprite.ReceiveRect(&area);
    return area;
}

QorRect LastArea(const QorSprite& sprite)
{
    QorRect area;
    sprite.ReceiveLastRect(&area);
    return area;
}

QorRect Shifted(const QorRect& r, long dx, long dy)
{
    QorRect moved;
    moved.left = static_cast<std::int32_t>(r.left + dx);
    moved.top = static_cast<std::int32_t>(r.top + dy);
    moved.right = static_cast<std::int32_t>(r.right + dx);
    moved.bottom = static_cast<std::int32_t>(r.bottom + dy);
    return moved;
}

// A rectangle of a child carried into the main buffer by the position of the child's sprite (none: 0, 0).
template <typename Buffer>
QorRect InMain(const Buffer& buffer, const QorRect& r)
{
    return buffer.sprite ? Shifted(r, buffer.sprite->GetX(), buffer.sprite->GetY()) : r;
}
} // namespace

QorOffScreenBuffer::OffScrBuf* QorOffScreenBuffer::FindBufferBySurface(const QorPicBlock* picture)
{
    OffScrBuf** found =
        FindForward(m_children, [picture](OffScrBuf*& buffer) { return &buffer->surface.picture == picture; });
    return found ? *found : nullptr;
}

void QorOffScreenBuffer::RedrawBuffer(OffScrBuf* buffer, long l, long t, long r, long b, char recurse, int depth)
{
    if (!buffer)
        return;
    if (l > r)
        std::swap(l, r);
    if (t > b)
        std::swap(t, b);
    QorPicBlock& picture = buffer->surface.picture;
    const QorRect& visible = buffer->visibleRect;
    if (l > visible.right || t > visible.bottom || l > picture.GetWidth() - 1 || t > picture.GetHeight() - 1)
        return;
    l = std::max<long>(std::max<long>(l, visible.left), 0);
    t = std::max<long>(std::max<long>(t, visible.top), 0);
    r = std::min<long>(std::min<long>(r, visible.right), picture.GetWidth() - 1);
    b = std::min<long>(std::min<long>(b, visible.bottom), picture.GetHeight() - 1);

    // The mask colour is every buffer's background.
    picture.Fill(l, t, r, b, picture.GetMask());

    Cycle<QorSprite>& sprites = buffer->sprites;
    const unsigned long count = sprites.GetSize();
    if (count == 0 || !sprites.GotoAddress(static_cast<unsigned long>(Cycle<QorSprite>::kHead)))
        return;
    QorSprite* sprite = sprites.GetInfo();
    for (unsigned long i = 0; i < count && sprite; ++i, sprite = sprites.Next())
    {
        QorPicBlock* shown = sprite->GetPicBlock();
        // A picture cannot be pasted into itself.
        if (!sprite->IsShow() || !shown || shown == &picture)
            continue;
        OffScrBuf* child = nullptr;
        if (sprite->IsChild())
        {
            child = FindBufferBySurface(shown);
            if (!child)
                continue;
        }
        const long x = sprite->GetX();
        const long y = sprite->GetY();
        const QorRect area = ShownArea(*sprite, child ? &child->visibleRect : nullptr);
        const long left = std::max<long>(area.left, l);
        const long top = std::max<long>(area.top, t);
        const long right = std::min<long>(area.right, r);
        const long bottom = std::min<long>(area.bottom, b);
        if (left > right || top > bottom)
            continue;
        if (child && recurse && depth < kMaxNesting)
        {
            // The child walks its own lists; a cycle of children could walk this one, so the place is kept.
            void* here = sprites.GetAddress();
            RedrawBuffer(child, left - x, top - y, right - x, bottom - y, 1, depth + 1);
            sprites.GotoAddress(here);
        }
        picture.Paste(*shown, left, top, left - x, top - y, right - x, bottom - y, sprite->IsMask(),
                      sprite->IsHReverse(), sprite->IsVReverse(), sprite->IsCheckRegion(), sprite->IsColorReverse());
    }
}

char QorOffScreenBuffer::Redraw(const QorGuider& child, long l, long t, long r, long b, char recurse)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer)
        return 0;
    RedrawBuffer(buffer, l, t, r, b, recurse, 0);
    return 1;
}

char QorOffScreenBuffer::Redraw(const QorGuider& child, const QorRect& rect, char recurse)
{
    return Redraw(child, rect.left, rect.top, rect.right, rect.bottom, recurse);
}

char QorOffScreenBuffer::Redraw(const QorGuider& child, char recurse)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer)
        return 0;
    const QorRect area = InMain(*buffer, buffer->visibleRect);
    RedrawBuffer(buffer, area.left, area.top, area.right, area.bottom, recurse, 0);
    return 1;
}

char QorOffScreenBuffer::Redraw(long l, long t, long r, long b, char recurse, char present)
{
    OffScrBuf* main = GetMainBuffer();
    if (!main)
        return 0;
    RedrawBuffer(main, l, t, r, b, recurse, 0);
    if (present)
        DrawToScreen(l, t, r, b);
    return 1;
}

char QorOffScreenBuffer::Redraw(const QorRect& rect, char recurse, char present)
{
    return Redraw(rect.left, rect.top, rect.right, rect.bottom, recurse, present);
}

char QorOffScreenBuffer::Redraw(char recurse, char present)
{
    OffScrBuf* main = GetMainBuffer();
    if (!main)
        return 0;
    const QorRect& visible = main->visibleRect;
    RedrawBuffer(main, visible.left, visible.top, visible.right, visible.bottom, recurse, 0);
    if (present)
        DrawToScreen(0, 0);
    return 1;
}

char QorOffScreenBuffer::RedrawSprite(const QorGuider& sprite, char present)
{
    OffScrBuf* main = GetMainBuffer();
    QorSprite* found = FindSpriteIn(main, sprite);
    if (!found)
        return 0;
    QorRect now;
    found->ReceiveRect(&now);
    const QorRect before = LastArea(*found);
    QorRect overlap;
    if (overlap.IntersectRect(now, before))
    {
        QorRect both;
        both.UnionRect(now, before);
        RedrawBuffer(main, both.left, both.top, both.right, both.bottom, 0, 0);
        if (present)
            DrawToScreen(both.left, both.top, both.right, both.bottom);
        return 1;
    }
    // Far apart: two small repaints, and one presentation of everything rather than two.
    RedrawBuffer(main, now.left, now.top, now.right, now.bottom, 0, 0);
    RedrawBuffer(main, before.left, before.top, before.right, before.bottom, 0, 0);
    if (present)
        DrawToScreen(0, 0);
    return 1;
}

char QorOffScreenBuffer::RedrawSprite(const QorGuider& child, const QorGuider& sprite, char toMain, char present)
{
    OffScrBuf* buffer = FindBuffer(child);
    QorSprite* found = FindSpriteIn(buffer, sprite);
    if (!found)
        return 0;
    QorRect now;
    found->ReceiveRect(&now);
    QorRect both;
    both.UnionRect(now, LastArea(*found));
    RedrawBuffer(buffer, both.left, both.top, both.right, both.bottom, 0, 0);
    if (!toMain)
        return 1;
    const QorRect onMain = InMain(*buffer, both);
    RedrawBuffer(GetMainBuffer(), onMain.left, onMain.top, onMain.right, onMain.bottom, 0, 0);
    DrawToScreen(onMain.left, onMain.top, onMain.right, onMain.bottom);
    if (present)
        DrawToScreen(onMain.left, onMain.top, onMain.right, onMain.bottom);
    return 1;
}

char QorOffScreenBuffer::RedrawChild(const QorGuider& child, char toMain)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer)
        return 0;
    const QorRect& visible = buffer->visibleRect;
    RedrawBuffer(buffer, visible.left, visible.top, visible.right, visible.bottom, 1, 0);
    if (toMain)
        UpdateChildToMain(child);
    return 1;
}

char QorOffScreenBuffer::UpdateChildToMain(const QorGuider& child)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer)
        return 0;
    const QorRect area = InMain(*buffer, buffer->visibleRect);
    RedrawBuffer(GetMainBuffer(), area.left, area.top, area.right, area.bottom, 0, 0);
    DrawToScreen(area.left, area.top, area.right, area.bottom);
    return 1;
}
