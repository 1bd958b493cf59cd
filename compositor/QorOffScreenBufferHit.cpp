#include "QorOffScreenBuffer.h"
#include "CycleWalk.h"

using qor::detail::FindBackward;
using qor::detail::FindForward;
using qor::detail::MakeGuider;

unsigned char QorOffScreenBuffer::CheckCollision(const QorGuider& sprite, long x, long y, char exact, char anywhere)
{
    QorSprite* found = FindSprite(sprite);
    if (!found)
        return 255;
    if (!found->IsShow())
        return 0;
    if (!anywhere && !GetVisibleRect().PtInRect(x, y))
        return 0;
    return found->IsHit(x, y, exact);
}

unsigned char QorOffScreenBuffer::CheckCollision(const QorGuider& child1, const QorGuider& sprite1,
                                                 const QorGuider& child2, const QorGuider& sprite2, long dx, long dy,
                                                 char exact, char anywhere)
{
    QorSprite* target = FindSprite(sprite1);
    QorSprite* probe = FindSprite(sprite2);
    if (!target || !probe)
        return 255;
    OffScrBuf* buffer1 = FindBuffer(child1);
    OffScrBuf* buffer2 = FindBuffer(child2);
    if ((child1.object && !buffer1) || (child2.object && !buffer2))
        return 255;
    if (child1 == child2)
        return target->IsHit(probe->GetX(), probe->GetY(), exact);

    const long ox1 = buffer1 && buffer1->sprite ? buffer1->sprite->GetX() : 0;
    const long oy1 = buffer1 && buffer1->sprite ? buffer1->sprite->GetY() : 0;
    const long ox2 = buffer2 && buffer2->sprite ? buffer2->sprite->GetX() : 0;
    const long oy2 = buffer2 && buffer2->sprite ? buffer2->sprite->GetY() : 0;
    // The offsets are 32-bit values, so only dx and dy can carry the point out of range: such a point
    // hits nothing.
    long px = 0, py = 0;
    if (__builtin_add_overflow(probe->GetX() - ox1 + ox2, dx, &px) ||
        __builtin_add_overflow(probe->GetY() - oy1 + oy2, dy, &py))
        return 0;
    if (!anywhere && buffer1 && !buffer1->visibleRect.PtInRect(px, py))
        return 0;
    return target->IsHit(px, py, exact);
}

QorGuider QorOffScreenBuffer::FindFirstCollisionSprite(long x, long y, char exact, char anywhere)
{
    OffScrBuf* main = GetMainBuffer();
    if (!main || (!anywhere && !main->visibleRect.PtInRect(x, y)))
        return QorGuider();
    // From the last sprite back to the first: the one drawn last lies on top and is tested first.
    QorSprite* hit = FindBackward(main->sprites, [=](QorSprite& sprite)
                                  { return !sprite.IsChild() && sprite.IsShow() && sprite.IsHit(x, y, exact); });
    return hit ? MakeGuider(hit->GetId(), hit) : QorGuider();
}

QorGuider QorOffScreenBuffer::FindFirstCollisionSprite(const QorGuider&, long, long, char, char)
{
    return QorGuider();
}

QorGuider QorOffScreenBuffer::FindFirstCollisionChild(long x, long y, char exact)
{
    OffScrBuf* main = GetMainBuffer();
    if (!main)
        return QorGuider();
    OffScrBuf* result = nullptr;
    // Hidden child sprites count. The visible rectangle is compared with the point as given.
    FindBackward(main->sprites,
                 [&](QorSprite& sprite)
                 {
                     if (!sprite.IsChild() || !sprite.IsHit(x, y, exact))
                         return false;
                     const QorPicBlock* surface = sprite.GetPicBlock();
                     OffScrBuf** owner = FindForward(m_children,
                                                     [&](OffScrBuf*& buffer) {
                                                         return &buffer->surface.picture == surface &&
                                                                buffer->hitTestable &&
                                                                buffer->visibleRect.PtInRect(x, y);
                                                     });
                     result = owner ? *owner : nullptr;
                     return result != nullptr;
                 });
    return result ? MakeGuider(result->id, result) : QorGuider();
}
