#include "QorOffScreenBuffer.h"
#include "CycleWalk.h"

#include <cstdint>

using qor::detail::Append;
using qor::detail::FindForward;
using qor::detail::ForEach;
using qor::detail::MakeGuider;

QorGuider QorOffScreenBuffer::CreateSpriteIn(OffScrBuf* buffer, const QorGuider& pic, long z)
{
    if (!buffer)
        return QorGuider();
    PicRecord* record = nullptr;
    if (pic.object)
    {
        record = FindPicOrSurface(pic);
        if (!record)
            return QorGuider();
    }
    if (z > kMaxDepth)
        z = kMaxDepth;
    // Depths are 32-bit: a lower value could not be stored, and ordering by the unstored one would
    // misplace the sprite.
    if (z < INT32_MIN)
        z = INT32_MIN;

    // On a new sprite ChangePicBlock leaves the last area at its zero defaults.
    QorSprite made;
    made.SetId(m_nextSpriteId);
    made.SetZ(z);
    if (record)
    {
        made.ChangePicBlock(&record->picture);
        made.SetSource(pic);
    }

    Cycle<QorSprite>& list = buffer->sprites;
    QorSprite* stored = nullptr;
    QorSprite* head = list.GotoAddress(static_cast<unsigned long>(Cycle<QorSprite>::kHead)) ? list.GetInfo() : nullptr;
    QorSprite* before = FindForward(list, [z](QorSprite& sprite) { return sprite.GetZ() < z; });
    if (before)
    {
        const unsigned long size = list.GetSize();
        if (list.Insert(made) == size + 1)
        {
            stored = list.GetInfo();
            if (before == head)
                list.MoveHeadHere();
        }
    }
    else
    {
        stored = Append(list, made);
    }
    if (!stored)
        return QorGuider();
    ++m_nextSpriteId;
    if (record)
        ++record->useCount;
    return MakeGuider(stored->GetId(), stored);
}

QorGuider QorOffScreenBuffer::CreateSprite(const QorGuider& pic, long z)
{
    return CreateSpriteIn(GetMainBuffer(), pic, z);
}

QorGuider QorOffScreenBuffer::CreateSprite(const QorGuider& child, const QorGuider& pic, long z)
{
    return CreateSpriteIn(FindBuffer(child), pic, z);
}

void QorOffScreenBuffer::RemoveSpriteFrom(OffScrBuf* buffer, QorSprite* sprite)
{
    const QorGuider source = sprite->GetSource();
    if (PicRecord* record = FindPicOrSurface(source))
    {
        if (record->useCount > 0)
            --record->useCount;
        if (sprite->GetPrivatePicture() == 1)
        {
            QorGuider privatePicture = source;
            RemovePic(privatePicture);
        }
    }
    // Nothing may keep pointing at the sprite once its node is gone.
    ForEach(m_children,
            [sprite](OffScrBuf*& candidate)
            {
                if (candidate->sprite == sprite)
                    candidate->sprite = nullptr;
                if (candidate->attachedSprite == sprite)
                    candidate->attachedSprite = nullptr;
            });
    if (FindForward(buffer->sprites, [sprite](QorSprite& candidate) { return &candidate == sprite; }))
        buffer->sprites.Remove();
    ForgetLookups();
}

char QorOffScreenBuffer::RemoveSprite(QorGuider& sprite)
{
    OffScrBuf* main = GetMainBuffer();
    QorSprite* found = FindSpriteIn(main, sprite);
    if (!found)
        return 0;
    RemoveSpriteFrom(main, found);
    sprite.Reset();
    return 1;
}

char QorOffScreenBuffer::RemoveSprite(const QorGuider& child, QorGuider& sprite)
{
    OffScrBuf* buffer = FindBuffer(child);
    QorSprite* found = FindSpriteIn(buffer, sprite);
    if (!found)
        return 0;
    RemoveSpriteFrom(buffer, found);
    sprite.Reset();
    return 1;
}

char QorOffScreenBuffer::MoveSprite(const QorGuider& sprite, long x, long y)
{
    QorSprite* found = FindSprite(sprite);
    if (!found)
        return 0;
    found->SetX(x);
    found->SetY(y);
    found->SameSize();
    return 1;
}

char QorOffScreenBuffer::MoveSprite(const QorGuider&, const QorGuider& sprite, long x, long y)
{
    return MoveSprite(sprite, x, y);
}

Point<long> QorOffScreenBuffer::GetSpriteCoordinate(const QorGuider& sprite)
{
    QorSprite* found = FindSprite(sprite);
    return found ? Point<long>(found->GetX(), found->GetY()) : Point<long>();
}

Point<long> QorOffScreenBuffer::GetSpriteCoordinate(const QorGuider&, const QorGuider& sprite)
{
    return GetSpriteCoordinate(sprite);
}

char QorOffScreenBuffer::ChangePicBlock(const QorGuider& sprite, const QorGuider& pic)
{
    return ChangePicBlockOf(FindSprite(sprite), pic);
}

char QorOffScreenBuffer::StepSprite(const QorGuider& sprite, long x, long y, const QorGuider& pic, QorRect* before,
                                    QorRect* after)
{
    QorSprite* found = FindSprite(sprite);
    if (!found)
        return 0;
    found->ReceiveRect(before);
    found->SetX(x);
    found->SetY(y);
    found->SameSize();
    const char changed = ChangePicBlockOf(found, pic);
    found->ReceiveRect(after);
    return changed;
}

char QorOffScreenBuffer::ChangePicBlockOf(QorSprite* found, const QorGuider& pic)
{
    if (!found || found->IsChild())
        return 0;
    PicRecord* next = nullptr;
    if (pic.object)
    {
        next = FindPicOrSurface(pic);
        if (!next)
            return 0;
    }
    const QorGuider oldSource = found->GetSource();
    const bool wasPrivate = found->GetPrivatePicture() == 1;
    if (PicRecord* old = FindPicOrSurface(oldSource))
        if (old->useCount > 0)
            --old->useCount;
    found->ChangePicBlock(next ? &next->picture : nullptr);
    if (next)
        ++next->useCount;
    if (wasPrivate)
    {
        QorGuider privatePicture = oldSource;
        RemovePic(privatePicture);
    }
    found->SetSource(pic);
    return 1;
}

char QorOffScreenBuffer::ChangePicBlock(const QorGuider&, const QorGuider& sprite, const QorGuider& pic)
{
    return ChangePicBlock(sprite, pic);
}

char QorOffScreenBuffer::QuerySpriteFlag(const QorGuider& sprite, char (QorSprite::*flag)() const)
{
    QorSprite* found = FindSprite(sprite);
    return found ? (found->*flag)() : 0;
}

char QorOffScreenBuffer::SetSpriteFlag(const QorGuider& sprite, void (QorSprite::*flag)(char), char on)
{
    QorSprite* found = FindSprite(sprite);
    if (!found)
        return 0;
    (found->*flag)(on);
    return 1;
}

char QorOffScreenBuffer::IsRegionCheck(const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsCheckRegion);
}

char QorOffScreenBuffer::IsRegionCheck(const QorGuider&, const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsCheckRegion);
}

char QorOffScreenBuffer::SetRegionCheck(const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetCheckRegion, on);
}

char QorOffScreenBuffer::SetRegionCheck(const QorGuider&, const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetCheckRegion, on);
}

char QorOffScreenBuffer::IsColorReverse(const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsColorReverse);
}

char QorOffScreenBuffer::IsColorReverse(const QorGuider&, const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsColorReverse);
}

char QorOffScreenBuffer::SetColorReverse(const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetColorReverse, on);
}

char QorOffScreenBuffer::SetColorReverse(const QorGuider&, const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetColorReverse, on);
}

char QorOffScreenBuffer::IsSpriteVisible(const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsShow);
}

char QorOffScreenBuffer::IsSpriteVisible(const QorGuider&, const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsShow);
}

char QorOffScreenBuffer::SetSpriteVisible(const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetShow, on);
}

char QorOffScreenBuffer::SetSpriteVisible(const QorGuider&, const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetShow, on);
}

char QorOffScreenBuffer::IsMask(const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsMask);
}

char QorOffScreenBuffer::IsMask(const QorGuider&, const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsMask);
}

char QorOffScreenBuffer::SetMask(const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetMask, on);
}

char QorOffScreenBuffer::SetMask(const QorGuider&, const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetMask, on);
}

char QorOffScreenBuffer::IsHReverse(const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsHReverse);
}

char QorOffScreenBuffer::IsHReverse(const QorGuider&, const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsHReverse);
}

char QorOffScreenBuffer::SetHReverse(const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetHReverse, on);
}

char QorOffScreenBuffer::SetHReverse(const QorGuider&, const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetHReverse, on);
}

char QorOffScreenBuffer::IsVReverse(const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsVReverse);
}

char QorOffScreenBuffer::IsVReverse(const QorGuider&, const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsVReverse);
}

char QorOffScreenBuffer::SetVReverse(const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetVReverse, on);
}

char QorOffScreenBuffer::SetVReverse(const QorGuider&, const QorGuider& sprite, char on)
{
    return SetSpriteFlag(sprite, &QorSprite::SetVReverse, on);
}

char QorOffScreenBuffer::IsAttachToWindow(const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsAttachToWindow);
}

char QorOffScreenBuffer::IsAttachToWindow(const QorGuider&, const QorGuider& sprite)
{
    return QuerySpriteFlag(sprite, &QorSprite::IsAttachToWindow);
}

char QorOffScreenBuffer::SetAttributes(const QorGuider& sprite, char show, char, char hReverse, char vReverse)
{
    QorSprite* found = FindSprite(sprite);
    if (!found)
        return 0;
    // The second value is not used: Mask follows Show. Callers rely on this pairing.
    found->SetShow(show);
    found->SetMask(show);
    found->SetHReverse(hReverse);
    found->SetVReverse(vReverse);
    return 1;
}

char QorOffScreenBuffer::SetAttributes(const QorGuider&, const QorGuider& sprite, char show, char mask, char hReverse,
                                       char vReverse)
{
    return SetAttributes(sprite, show, mask, hReverse, vReverse);
}

char QorOffScreenBuffer::ReceiveSpriteRect(const QorGuider& sprite, QorRect* r)
{
    QorSprite* found = FindSprite(sprite);
    if (!found || !r)
        return 0;
    found->ReceiveRect(r);
    return 1;
}

char QorOffScreenBuffer::ReceiveSpriteRect(const QorGuider&, const QorGuider& sprite, QorRect* r)
{
    return ReceiveSpriteRect(sprite, r);
}

char QorOffScreenBuffer::SetAttachToWindow(const QorGuider& sprite, char on)
{
    return SetAttachToWindow(m_mainBuffer, sprite, on);
}

char QorOffScreenBuffer::SetAttachToWindow(const QorGuider& child, const QorGuider& sprite, char on)
{
    OffScrBuf* buffer = FindBuffer(child);
    QorSprite* found = FindSpriteIn(buffer, sprite);
    if (!found)
        return 0;
    const char was = found->IsAttachToWindow();
    found->SetAttachToWindow(on);
    if (on && !was)
    {
        ++buffer->attachedCount;
        // The cache names the attached sprite only while it is the only one.
        buffer->attachedSprite = buffer->attachedCount == 1 ? found : nullptr;
    }
    else if (!on && was)
    {
        if (buffer->attachedCount > 0)
            --buffer->attachedCount;
        if (buffer->attachedSprite == found || buffer->attachedCount != 1)
            buffer->attachedSprite = nullptr;
        if (buffer->attachedCount == 1 && !buffer->attachedSprite)
            buffer->attachedSprite =
                FindForward(buffer->sprites, [](QorSprite& candidate) { return candidate.IsAttachToWindow() != 0; });
    }
    return 1;
}

QorGuider QorOffScreenBuffer::CreateNearestSprite()
{
    if (m_nearestCount < m_nearestCapacity)
        return AddNearestSprite(QorGuider());
    return m_nearestCount ? m_nearestSprites[m_nearestCount - 1] : QorGuider();
}

QorGuider QorOffScreenBuffer::CreateNearestSprite(const QorGuider& pic)
{
    if (m_nearestCount < m_nearestCapacity)
        return AddNearestSprite(pic);
    if (m_nearestCount == 0)
        return QorGuider();
    const QorGuider last = m_nearestSprites[m_nearestCount - 1];
    ChangePicBlock(last, pic);
    return last;
}

QorGuider QorOffScreenBuffer::AddNearestSprite(const QorGuider& pic)
{
    const QorGuider made = CreateSpriteIn(GetMainBuffer(), pic, kNearestDepth);
    if (made.object)
        m_nearestSprites[m_nearestCount++] = made;
    return made;
}

char QorOffScreenBuffer::RemoveNearestSprite(QorGuider& sprite)
{
    const QorGuider wanted = sprite;
    for (std::uint32_t i = 0; i < m_nearestCount; ++i)
    {
        if (m_nearestSprites[i] != wanted)
            continue;
        QorGuider removed = wanted;
        RemoveSprite(removed);
        for (std::uint32_t j = i + 1; j < m_nearestCount; ++j)
            m_nearestSprites[j - 1] = m_nearestSprites[j];
        --m_nearestCount;
        m_nearestSprites[m_nearestCount].Reset();
        sprite.Reset();
        return 1;
    }
    return 0;
}
