#include "QorAnimSet.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <new>

namespace
{
/// united becomes the bounding rectangle of a and b (QorRect::UnionRect without its answer).
inline void Unite(QorRect& united, const QorRect& a, const QorRect& b)
{
    united.left = std::min(a.left, b.left);
    united.top = std::min(a.top, b.top);
    united.right = std::max(a.right, b.right);
    united.bottom = std::max(a.bottom, b.bottom);
}
} // namespace

QorAnimSet::QorAnimUnitRun& QorAnimSet::QorAnimUnitRun::operator=(const QorAnimUnitRun& other)
{
    if (this == &other)
        return *this;
    Reset();
    try
    {
        m_frames = other.m_frames;
    }
    catch (const std::bad_alloc&)
    {
        m_frames.clear();
    }
    m_sprite = other.m_sprite;
    m_frameIndex = other.m_frameIndex;
    m_finished = other.m_finished;
    m_running = other.m_running;
    m_originX = other.m_originX;
    m_originY = other.m_originY;
    m_unit = other.m_unit;
    m_buffer = other.m_buffer;
    return *this;
}

void QorAnimSet::QorAnimUnitRun::Reset()
{
    std::vector<QorGuider>().swap(m_frames);
    m_frameIndex = 0;
    m_finished = 0;
    m_running = 0;
    m_originX = 0;
    m_originY = 0;
    m_unit = nullptr;
}

char QorAnimSet::QorAnimUnitRun::ReceiveRect(QorRect* rect)
{
    return m_buffer && m_sprite.object ? m_buffer->ReceiveSpriteRect(m_sprite, rect) : 0;
}

unsigned char QorAnimSet::QorAnimUnitRun::TimerClick(QorRect* changed)
{
    if (!m_running && !m_finished)
        return 0xFF;
    const long mode = m_unit ? m_unit->GetMode() : -1;
    const unsigned long frames = static_cast<unsigned long>(m_frames.size());
    if (mode == 0)
    {
        if (!m_running)
        {
            m_finished = 0;
            if (changed)
                ReceiveRect(changed);
            return 0;
        }
        if (m_frameIndex >= frames)
        {
            m_running = 0;
            m_finished = 1;
            return 0;
        }
    }
    else if (mode != 1)
    {
        return 0xFF;
    }

    if (m_running)
    {
        if (m_frameIndex >= frames)
            m_frameIndex = 0;
        // A record always has frames (CreateAnim refuses units without), so i lies inside both tables.
        const unsigned long i = m_frameIndex;
        // Moved, then given frame i's picture (MoveSprite and ChangePicBlock in one look-up).
        QorRect old, now;
        if (m_buffer && m_sprite.object)
            m_buffer->StepSprite(m_sprite, static_cast<long>(m_unit->GetFrameX(i)) + m_originX,
                                 static_cast<long>(m_unit->GetFrameY(i)) + m_originY, m_frames[i],
                                 changed ? &old : nullptr, changed ? &now : nullptr);
        if (changed)
            Unite(*changed, old, now);
        ++m_frameIndex;
        return 1;
    }

    m_finished = 0;
    if (changed)
        ReceiveRect(changed);
    return 0;
}

QorAnimSet::QorAnimUnitRun* QorAnimSet::FindRun(const QorGuider& g)
{
    if (!g.object)
        return nullptr;
    const unsigned long size = m_running.GetSize();
    if (size == 0)
        return nullptr;
    if (!m_running.GetInfo() && !m_running.GotoAddress(static_cast<unsigned long>(Cycle<QorAnimUnitRun*>::kHead)))
        return nullptr;
    // From the current position on, so that the record just made or just used is found at once.
    for (unsigned long i = 0; i < size; ++i, m_running.Next())
        if (*m_running.GetInfo() == g.object)
            return *m_running.GetInfo();
    return nullptr;
}

QorGuider QorAnimSet::CreateAnim(const char* name)
{
    QorGuider made;
    const long index = FindIndex(name);
    if (index < 0 || !m_buffer)
        return made;
    QorAnimUnit& unit = m_units[index];

    m_file.Open(m_fileName, QorFile::kRead);
    // A resident unit keeps its frames; one that has none yet is read like any other.
    if (!unit.IsResident() || unit.GetFrameCount() == 0)
    {
        if (m_file.Seek(m_unitOffsets[index], 0, 1))
        {
            unit.Create(m_file);
            unit.Load(m_file);
        }
    }
    const unsigned long frames = unit.GetFrameCount();
    // A unit without frames has nothing to show.
    if (frames == 0)
    {
        m_file.Close();
        return made;
    }

    auto* run = new (std::nothrow) QorAnimUnitRun;
    if (!run)
    {
        m_file.Close();
        SetException(1);
        return made;
    }
    try
    {
        run->m_frames.resize(frames);
    }
    catch (const std::bad_alloc&)
    {
        delete run;
        m_file.Close();
        SetException(1);
        return made;
    }
    run->m_unit = &unit;
    run->m_buffer = m_buffer;
    run->m_originX = unit.GetX();
    run->m_originY = unit.GetY();

    for (unsigned long i = 0; i < frames; ++i)
    {
        const unsigned long k = unit.GetFramePic(i);
        if (m_picUseCounts[k] <= 0)
        {
            QorGuider pic = m_buffer->CreatePic(m_picFormatName, m_file, m_picOffsets[k], 0, 1);
            // A picture that does not load leaves its frames without one.
            if (pic.object && (m_buffer->GetPicWidth(pic) <= 0 || m_buffer->GetPicHeight(pic) <= 0))
                m_buffer->RemovePic(pic);
            m_picGuiders[k] = pic;
        }
        run->m_frames[i] = m_picGuiders[k];
        ++m_picUseCounts[k];
    }
    m_file.Close();

    run->m_sprite = m_buffer->CreateSprite(run->m_frames[0], unit.GetDepth());
    m_buffer->MoveSprite(run->m_sprite, static_cast<long>(unit.GetFrameX(0)) + run->m_originX,
                         static_cast<long>(unit.GetFrameY(0)) + run->m_originY);
    m_buffer->SetSpriteVisible(run->m_sprite, 0);

    // Appended after the last record (before the head of the ring), and made current.
    const unsigned long before = m_running.GetSize();
    if (before > 0)
        m_running.GotoAddress(static_cast<unsigned long>(Cycle<QorAnimUnitRun*>::kHead));
    if (m_running.Insert(run) != before + 1)
    {
        ReleaseRun(run);
        return made;
    }
    made.object = run;
    return made;
}

void QorAnimSet::ReleaseRun(QorAnimUnitRun* run)
{
    if (m_buffer)
        m_buffer->RemoveSprite(run->m_sprite);
    QorAnimUnit* unit = run->m_unit;
    for (unsigned long i = 0; unit && i < run->m_frames.size(); ++i)
    {
        const unsigned long k = unit->GetFramePic(i);
        if (k >= m_picCount)
            continue;
        if (--m_picUseCounts[k] <= 0 && m_buffer)
            m_buffer->RemovePic(m_picGuiders[k]);
    }
    // The unit's frames go with its last animation only: the others still step through them.
    if (unit && !unit->IsResident())
    {
        bool shared = false;
        const unsigned long size = m_running.GetSize();
        if (size > 0 && m_running.GotoAddress(static_cast<unsigned long>(Cycle<QorAnimUnitRun*>::kHead)))
            for (unsigned long i = 0; i < size && !shared; ++i, m_running.Next())
                shared = *m_running.GetInfo() != run && (*m_running.GetInfo())->m_unit == unit;
        if (!shared)
            unit->Destroy();
    }
    delete run;
}

char QorAnimSet::DestroyAnim(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run)
        return 0;
    if (run->m_running)
        --m_activeCount;
    // FindRun left the list on the record: it is unlinked first (the remembered positions that named it go
    // with it), then released.
    m_running.Remove();
    ReleaseRun(run);
    g.Reset();
    return 1;
}

char QorAnimSet::ActiveAnim(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run)
        return 0;
    if (!run->m_running)
        ++m_activeCount;
    run->m_running = 1;
    run->m_frameIndex = 0;
    run->TimerClick(nullptr);
    if (m_buffer)
        m_buffer->SetSpriteVisible(run->m_sprite, 1);
    return 1;
}

char QorAnimSet::DeactiveAnim(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run)
        return 0;
    if (run->m_running)
        --m_activeCount;
    run->m_finished = 1;
    run->m_running = 0;
    run->TimerClick(nullptr);
    if (m_buffer)
        m_buffer->SetSpriteVisible(run->m_sprite, 0);
    return 1;
}

char QorAnimSet::ResetAnim(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run)
        return 0;
    run->m_frameIndex = 0;
    return 1;
}

char QorAnimSet::PauseAnim(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run || !run->m_running)
        return 0;
    --m_activeCount;
    run->m_running = 0;
    return 1;
}

char QorAnimSet::ResumeAnim(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run || run->m_running)
        return 0;
    ++m_activeCount;
    run->m_running = 1;
    return 1;
}

unsigned char QorAnimSet::IsAnimActive(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    return run ? static_cast<unsigned char>(run->m_running) : 0xFF;
}

char QorAnimSet::ShowAnim(QorGuider& g, char show)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run)
        return 0;
    if (m_buffer && run->m_sprite.object)
        m_buffer->SetSpriteVisible(run->m_sprite, show);
    return 1;
}

char QorAnimSet::MoveAnim(QorGuider& g, long x, long y, char redraw)
{
    QorAnimUnitRun* run = FindRun(g);
    if (!run)
        return 0;
    run->m_originX = static_cast<std::int32_t>(x);
    run->m_originY = static_cast<std::int32_t>(y);
    // Past the last frame (a play-once animation that has ended) the last frame's offsets are taken.
    const unsigned long frames = static_cast<unsigned long>(run->m_frames.size());
    const unsigned long i = run->m_frameIndex < frames ? run->m_frameIndex : frames - 1;
    if (m_buffer)
    {
        m_buffer->MoveSprite(run->m_sprite, static_cast<long>(run->m_unit->GetFrameX(i)) + run->m_originX,
                             static_cast<long>(run->m_unit->GetFrameY(i)) + run->m_originY);
        if (redraw)
            m_buffer->RedrawSprite(run->m_sprite, 0);
    }
    return 1;
}

QorGuider* QorAnimSet::GetSprite(QorGuider& g)
{
    QorAnimUnitRun* run = FindRun(g);
    return run ? &run->m_sprite : nullptr;
}

void QorAnimSet::TimerClick(char redraw)
{
    const unsigned long size = m_running.GetSize();
    const bool walk = size > 0 && m_running.GotoAddress(static_cast<unsigned long>(Cycle<QorAnimUnitRun*>::kHead));
    if (!redraw)
    {
        for (unsigned long i = 0; walk && i < size; ++i, m_running.Next())
        {
            QorAnimUnitRun* run = *m_running.GetInfo();
            if (run->m_running)
                run->TimerClick(nullptr);
        }
        return;
    }

    // The total starts empty: the first rectangle a record reports becomes it, the others are united in.
    QorRect total;
    bool any = false;
    for (unsigned long i = 0; walk && i < size; ++i, m_running.Next())
    {
        QorAnimUnitRun* run = *m_running.GetInfo();
        if (!run->m_running && !run->m_finished)
            continue;
        // A record that reports nothing leaves this marker (no sprite rectangle has all four edges there).
        const std::int32_t unset = INT32_MIN;
        QorRect changed;
        changed.left = unset;
        changed.right = unset;
        changed.top = unset;
        changed.bottom = unset;
        run->TimerClick(&changed);
        if (changed.left == unset && changed.right == unset && changed.top == unset && changed.bottom == unset)
            continue;
        if (any)
            Unite(total, total, changed);
        else
            total = changed;
        any = true;
    }
    if (m_buffer)
        m_buffer->Redraw(total.left, total.top, total.right, total.bottom, 0, 0);
}
