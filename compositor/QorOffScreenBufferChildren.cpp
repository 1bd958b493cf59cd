#include "QorOffScreenBuffer.h"
#include "CycleWalk.h"

#include <algorithm>
#include <climits>

using qor::detail::FindForward;
using qor::detail::ForEach;
using qor::detail::MakeGuider;

namespace
{
// w - 1 without overflow; the rectangle's edges are 32-bit anyway.
long LastIndex(long size)
{
    return std::clamp<long>(size, INT32_MIN + 1L, INT32_MAX) - 1;
}
} // namespace

QorGuider QorOffScreenBuffer::CreateChild()
{
    OffScrBuf* main = GetMainBuffer();
    if (!main)
        return QorGuider();
    QorGuider child = CreateBuffer(GetSystemColorType());
    auto* buffer = static_cast<OffScrBuf*>(child.object);
    if (!buffer)
        return child;
    const QorGuider surface = MakeGuider(buffer->surface.id, &buffer->surface);
    const QorGuider sprite = CreateSpriteIn(main, surface, kChildDepth);
    if (!sprite.object)
    {
        // Without its sprite the child could never be shown: undo it.
        if (FindBuffer(child))
            m_children.Remove();
        delete buffer;
        ForgetLookups();
        return QorGuider();
    }
    buffer->sprite = static_cast<QorSprite*>(sprite.object);
    buffer->sprite->SetChild(1);
    return child;
}

QorGuider QorOffScreenBuffer::CreateChild(long width, long height)
{
    QorGuider child = CreateChild();
    if (child.object)
    {
        SetChildBufferSize(child, width, height);
        SetChildVisibleRect(child, 0, 0, LastIndex(width), LastIndex(height));
    }
    return child;
}

char QorOffScreenBuffer::RemoveChild(QorGuider& child)
{
    OffScrBuf* buffer = FindBuffer(child);
    // Everything rests on the main buffer; the auxiliary buffer is the compositor's own.
    if (!buffer || buffer == GetMainBuffer() || buffer == m_auxBuffer.object)
        return 0;
    const QorPicBlock* surface = &buffer->surface.picture;
    if (OffScrBuf* main = GetMainBuffer())
    {
        QorSprite* shown =
            FindForward(main->sprites, [surface](QorSprite& sprite) { return sprite.GetPicBlock() == surface; });
        if (shown)
            RemoveSpriteFrom(main, shown);
    }
    // The child's own sprites go with it; their pictures are released as by RemoveSprite.
    while (buffer->sprites.GetSize() > 0 &&
           buffer->sprites.GotoAddress(static_cast<unsigned long>(Cycle<QorSprite>::kHead)))
        RemoveSpriteFrom(buffer, buffer->sprites.GetInfo());
    ForgetPicture(surface);
    if (FindBuffer(child))
        m_children.Remove();
    delete buffer;
    ForgetLookups();
    child.Reset();
    return 1;
}

char QorOffScreenBuffer::MoveChild(const QorGuider& child, long x, long y)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer)
        return 0;
    if (buffer->sprite)
    {
        buffer->sprite->SetX(x);
        buffer->sprite->SetY(y);
    }
    buffer->x = static_cast<std::int32_t>(x);
    buffer->y = static_cast<std::int32_t>(y);
    return 1;
}

char QorOffScreenBuffer::SetChildVisibleRect(const QorGuider& child, const QorRect& rect)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer)
        return 0;
    QorRect ordered = rect;
    ordered.NormalizeRect();
    const long dx = static_cast<long>(ordered.left) - buffer->visibleRect.left;
    const long dy = static_cast<long>(ordered.top) - buffer->visibleRect.top;
    buffer->visibleRect = ordered;
    MoveAttachedSprites(buffer, dx, dy);
    return 1;
}

char QorOffScreenBuffer::SetChildVisibleRect(const QorGuider& child, long l, long t, long r, long b)
{
    return SetChildVisibleRect(child, QorRect(l, t, r, b));
}

char QorOffScreenBuffer::SetChildBufferSize(const QorGuider& child, long width, long height)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer)
        return 0;
    buffer->surface.picture.Reset(GetSystemColorType(), width, height);
    RefreshBitmapInfo(*buffer);
    return 1;
}

char QorOffScreenBuffer::SetChildVisible(const QorGuider& child, char on)
{
    QorSprite* sprite = GetCorrespondingSprite(child);
    if (!sprite)
        return 0;
    sprite->SetShow(on);
    return 1;
}

char QorOffScreenBuffer::SetChildMask(const QorGuider& child, char on)
{
    QorSprite* sprite = GetCorrespondingSprite(child);
    if (!sprite)
        return 0;
    sprite->SetMask(on);
    return 1;
}

char QorOffScreenBuffer::SetChildAlwaysOnTop(const QorGuider& child, char on)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer || !buffer->sprite)
        return 0;
    if (buffer->alwaysOnTop == on)
        return 1;
    return RenewChildSprite(buffer, on ? kOnTopChildDepth : kChildDepth, on);
}

char QorOffScreenBuffer::SetFocus(const QorGuider& child)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer || !buffer->sprite)
        return 0;
    return RenewChildSprite(buffer, buffer->alwaysOnTop ? kOnTopChildDepth : kChildDepth, buffer->alwaysOnTop);
}

char QorOffScreenBuffer::RenewChildSprite(OffScrBuf* child, long z, char alwaysOnTop)
{
    OffScrBuf* main = GetMainBuffer();
    QorSprite* old = child->sprite;
    if (!main || !old)
        return 0;
    const long x = old->GetX();
    const long y = old->GetY();
    // The new sprite is made first so that a failed allocation leaves the child as it was; it lands after
    // every sprite of its depth either way, so the order is that of removing first.
    const QorGuider surface = MakeGuider(child->surface.id, &child->surface);
    const QorGuider made = CreateSpriteIn(main, surface, z);
    if (!made.object)
        return 0;
    RemoveSpriteFrom(main, old);
    auto* sprite = static_cast<QorSprite*>(made.object);
    sprite->SetX(x);
    sprite->SetY(y);
    sprite->SetChild(1);
    sprite->SetAlwaysOnTop(alwaysOnTop);
    child->sprite = sprite;
    child->alwaysOnTop = alwaysOnTop;
    return 1;
}

QorRect QorOffScreenBuffer::GetChildVisibleRect(const QorGuider& child)
{
    OffScrBuf* buffer = FindBuffer(child);
    return buffer ? buffer->visibleRect : QorRect();
}

QorPicBlock* QorOffScreenBuffer::GetChildPicBlockPtr(const QorGuider& child)
{
    OffScrBuf* buffer = FindBuffer(child);
    return buffer ? &buffer->surface.picture : nullptr;
}

QorSprite* QorOffScreenBuffer::GetCorrespondingSprite(const QorGuider& child)
{
    OffScrBuf* buffer = FindBuffer(child);
    return buffer ? buffer->sprite : nullptr;
}

void QorOffScreenBuffer::MoveAttachedSprites(OffScrBuf* buffer, long dx, long dy)
{
    if (!buffer)
        return;
    auto move = [dx, dy](QorSprite& sprite)
    {
        sprite.SetX(sprite.GetX() + dx);
        sprite.SetY(sprite.GetY() + dy);
    };
    if (buffer->attachedSprite)
    {
        move(*buffer->attachedSprite);
        return;
    }
    if (buffer->attachedCount < 2)
        return;
    ForEach(buffer->sprites,
            [&move](QorSprite& sprite)
            {
                if (sprite.IsAttachToWindow())
                    move(sprite);
            });
}
