// Timed effects on a buffer: the random dissolve of a picture, mosaic in and out, and palette fades,
// each advanced one step per timer tick by OnTimer.
#include "CycleWalk.h"

#include "QorOffScreenBuffer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using qor::detail::ForEach;

namespace
{
constexpr int kFirstOwnEntry = 10;
constexpr int kLastOwnEntry = 245;

// Where the effect stands, 0 at the start and 1 at its length.
double Ratio(double progress, unsigned long length)
{
    return length ? progress / static_cast<double>(length) : 1.0;
}
} // namespace

char QorOffScreenBuffer::SetChildSpecialEffect(const QorGuider& child, SpecialEffect effect, unsigned long length)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer || buffer->effect != kNoEffect)
        return 0;
    buffer->effectProgress = 0;
    buffer->effect = effect;
    buffer->effectLength = static_cast<std::uint32_t>(length);
    ++m_activeEffects;
    return 1;
}

void QorOffScreenBuffer::CheckSpecialEffectTimeMargin(OffScrBuf* buffer)
{
    if (!buffer || buffer->effectProgress <= buffer->effectLength)
        return;
    buffer->effect = kNoEffect;
    buffer->effectProgress = 0;
    buffer->effectLength = 0;
    buffer->effectState[0] = buffer->effectState[1] = buffer->effectState[2] = 0;
    if (m_activeEffects > 0)
        --m_activeEffects;
}

char QorOffScreenBuffer::PutImageRandomly(const QorGuider& child, unsigned long length, const QorGuider& sprite,
                                          char opaqueOnly)
{
    OffScrBuf* buffer = FindBuffer(child);
    QorSprite* shown = FindSprite(sprite);
    // The step size divides by the number of steps: a click of 0 or a length under one click has none.
    if (!buffer || !shown || buffer->effect != kNoEffect || m_timerClick == 0 || length < m_timerClick)
        return 0;
    const QorGuider source = shown->GetSource();
    const QorPicBlock empty(buffer->surface.picture.GetColorType());
    const QorPicBlock& picture = shown->GetPicBlock() ? *shown->GetPicBlock() : empty;
    Point<long>* points = nullptr;
    const unsigned long count =
        buffer->surface.picture.GenerateRandomPasteArray(&points, picture, shown->GetX(), shown->GetY(), opaqueOnly);
    if (!SetChildSpecialEffect(child, kRandomImage, length))
    {
        delete[] points;
        return 0;
    }
    delete[] buffer->randomPoints;
    buffer->randomPoints = points;
    buffer->randomPointCount = count;
    buffer->effectSprite = sprite;
    buffer->effectPicture = source;
    buffer->effectState[0] = static_cast<std::uint32_t>(count);
    buffer->effectState[1] = static_cast<std::uint32_t>(count / (length / m_timerClick));
    return 1;
}

char QorOffScreenBuffer::PutImageRandomly(unsigned long length, const QorGuider& sprite, char opaqueOnly)
{
    return PutImageRandomly(m_mainBuffer, length, sprite, opaqueOnly);
}

char QorOffScreenBuffer::StartMosaic(const QorGuider& child, SpecialEffect effect, unsigned long length,
                                     unsigned long first, unsigned long second)
{
    OffScrBuf* buffer = FindBuffer(child);
    if (!buffer || buffer->effect != kNoEffect)
        return 0;
    const QorGuider snapshot = CreatePicFromChild(child, buffer->visibleRect);
    if (!snapshot.object)
        return 0;
    SetChildSpecialEffect(child, effect, length);
    buffer->effectPicture = snapshot;
    buffer->effectState[0] = static_cast<std::uint32_t>(first);
    buffer->effectState[1] = static_cast<std::uint32_t>(second);
    return 1;
}

char QorOffScreenBuffer::MosiacIn(const QorGuider& child, unsigned long length, unsigned long a, unsigned long b)
{
    return StartMosaic(child, kMosaicInEffect, length, std::min(a, b), std::max(a, b));
}

char QorOffScreenBuffer::MosiacIn(unsigned long length, unsigned long a, unsigned long b)
{
    return MosiacIn(m_mainBuffer, length, a, b);
}

char QorOffScreenBuffer::MosiacOut(const QorGuider& child, unsigned long length, unsigned long a, unsigned long b)
{
    return StartMosaic(child, kMosaicOutEffect, length, std::max(a, b), std::min(a, b));
}

char QorOffScreenBuffer::MosiacOut(unsigned long length, unsigned long a, unsigned long b)
{
    return MosiacOut(m_mainBuffer, length, a, b);
}

char QorOffScreenBuffer::FadeIn(unsigned long length)
{
    return SetChildSpecialEffect(m_mainBuffer, kFadeInEffect, length);
}

char QorOffScreenBuffer::FadeOut(unsigned long length)
{
    return SetChildSpecialEffect(m_mainBuffer, kFadeOutEffect, length);
}

char QorOffScreenBuffer::FadeIn(const QorGuider&, unsigned long)
{
    return 0;
}

char QorOffScreenBuffer::Gray(long, long, long, long)
{
    return 0;
}

char QorOffScreenBuffer::Gray(const QorGuider&, long, long, long, long)
{
    return 0;
}

char QorOffScreenBuffer::OnTimer()
{
    if (m_activeEffects == 0)
        return 0;
    // A step walks the children list itself (guider checks, presentation), so the order is taken first.
    std::vector<QorGuider> order;
    order.reserve(m_children.GetSize());
    ForEach(m_children,
            [&order](OffScrBuf*& buffer)
            {
                QorGuider guider;
                guider.identifier = buffer->id;
                guider.object = buffer;
                order.push_back(guider);
            });
    for (const QorGuider& buffer : order)
    {
        const OffScrBuf* record = FindBuffer(buffer);
        if (!record)
            continue;
        switch (record->effect)
        {
        case kRandomImage:
            DoingRandomlyImage(buffer);
            break;
        case kFadeOutEffect:
            DoingFadeOut(buffer);
            break;
        case kFadeInEffect:
            DoingFadeIn(buffer);
            break;
        case kMosaicOutEffect:
            DoingMosiacOut(buffer);
            break;
        case kMosaicInEffect:
            DoingMosiacIn(buffer);
            break;
        default:
            // Effect 3's step does nothing; 0, 2 and unknown numbers have no step.
            break;
        }
    }
    return 1;
}

char QorOffScreenBuffer::DoingRandomlyImage(const QorGuider& guider)
{
    OffScrBuf* buffer = FindBuffer(guider);
    if (!buffer)
        return 0;
    if (buffer->effectProgress < buffer->effectLength && m_timerClick > 0)
    {
        const PicRecord* source = FindPicOrSurface(buffer->effectPicture);
        const std::uint64_t perStep = buffer->effectState[1];
        const std::uint64_t first = perStep * buffer->effectProgress / m_timerClick;
        if (source && buffer->randomPoints && first < buffer->randomPointCount)
        {
            const std::uint64_t count = std::min<std::uint64_t>(perStep, buffer->randomPointCount - first);
            buffer->surface.picture.RandomPaste(source->picture, buffer->randomPoints + first,
                                                static_cast<long>(count));
        }
    }
    buffer->effectProgress += m_timerClick;
    CheckSpecialEffectTimeMargin(buffer);
    if (buffer->effect == kNoEffect)
    {
        delete[] buffer->randomPoints;
        buffer->randomPoints = nullptr;
        buffer->randomPointCount = 0;
    }
    if (buffer != GetMainBuffer())
        UpdateChildToMain(guider);
    return 1;
}

char QorOffScreenBuffer::DoingMosaic(const QorGuider& guider)
{
    OffScrBuf* buffer = FindBuffer(guider);
    if (!buffer)
        return 0;
    const double progress = static_cast<double>(buffer->effectProgress);
    const double ratio = Ratio(progress, buffer->effectLength);
    const double previousRatio = Ratio(progress - static_cast<double>(m_timerClick), buffer->effectLength);
    // The sizes are signed here: mosaic out runs from the smaller to the larger.
    const double first = static_cast<double>(buffer->effectState[0]);
    const double second = static_cast<double>(buffer->effectState[1]);
    long cell = static_cast<long>(second - (second - first) * ratio);
    if (cell == 0)
        cell = 1;

    buffer->effectProgress += m_timerClick;
    CheckSpecialEffectTimeMargin(buffer);

    // Compared with the sizes as they stand now: zero once the effect has ended.
    const double firstNow = static_cast<double>(buffer->effectState[0]);
    const double secondNow = static_cast<double>(buffer->effectState[1]);
    if (static_cast<long>((firstNow - secondNow) * previousRatio) == cell)
        return 1;
    if (const PicRecord* snapshot = FindPic(buffer->effectPicture))
        buffer->surface.picture.SetMosiac(snapshot->picture, cell, cell, buffer->visibleRect);
    if (buffer != GetMainBuffer())
        UpdateChildToMain(guider);
    return 1;
}

char QorOffScreenBuffer::DoingMosiacIn(const QorGuider& buffer)
{
    return DoingMosaic(buffer);
}

char QorOffScreenBuffer::DoingMosiacOut(const QorGuider& buffer)
{
    return DoingMosaic(buffer);
}

char QorOffScreenBuffer::DoingFade(const QorGuider& guider, bool fadeIn)
{
    OffScrBuf* buffer = FindBuffer(guider);
    if (!buffer)
        return 0;
    const double ratio = Ratio(static_cast<double>(buffer->effectProgress), buffer->effectLength);
    buffer->effectProgress += m_timerClick;
    CheckSpecialEffectTimeMargin(buffer);
    // The fade works on the palette, which only the main buffer has.
    if (buffer != GetMainBuffer())
        return 0;
    stPaletteEntry faded[256];
    std::copy(m_palette, m_palette + 256, faded);
    for (int i = kFirstOwnEntry; i <= kLastOwnEntry; ++i)
    {
        auto scale = [ratio, fadeIn](BYTE c)
        {
            const double level = static_cast<double>(c);
            return static_cast<BYTE>(fadeIn ? level * ratio : level - level * ratio);
        };
        faded[i].peRed = scale(m_palette[i].peRed);
        faded[i].peGreen = scale(m_palette[i].peGreen);
        faded[i].peBlue = scale(m_palette[i].peBlue);
        faded[i].peFlags = PC_RESERVED;
    }
    SetPaletteActually(faded);
    return 1;
}

char QorOffScreenBuffer::DoingFadeIn(const QorGuider& buffer)
{
    return DoingFade(buffer, true);
}

char QorOffScreenBuffer::DoingFadeOut(const QorGuider& buffer)
{
    return DoingFade(buffer, false);
}
