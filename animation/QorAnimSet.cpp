#include "QorAnimSet.h"

#include <cstring>
#include <new>

namespace
{
/// Reads count 32-bit values one at a time into values.
template <typename T> void ReadTable(QorFile& file, T* values, std::uint32_t count)
{
    for (std::uint32_t i = 0; i < count; ++i)
    {
        unsigned int v = 0;
        file >> v;
        values[i] = static_cast<T>(v);
    }
}
} // namespace

char QorAnimSet::QorAnimUnit::Create(QorFile& file)
{
    if (file.GetBytesLeft() < kUnitHeaderSize)
        return 0;
    char name[kNameSize] = {};
    file.Read(name, kNameSize);
    name[kNameSize - 1] = '\0';
    int mode = 0, x = 0, y = 0, depth = 0;
    file >> mode >> x >> y >> depth;
    std::memcpy(m_name, name, kNameSize);
    m_mode = mode;
    m_x = x;
    m_y = y;
    m_depth = depth;
    return 1;
}

char QorAnimSet::QorAnimUnit::Load(QorFile& file)
{
    if (m_frameCount > 0)
        return 1;
    if (file.GetBytesLeft() < 4)
        return 0;
    unsigned int count = 0;
    file >> count;
    if (count == 0)
        return 1;
    // Three tables of count 32-bit values must lie in the file before anything is allocated.
    if (static_cast<unsigned long long>(count) * 12 > file.GetBytesLeft())
        return 0;
    std::unique_ptr<std::uint32_t[]> pics(new (std::nothrow) std::uint32_t[count]);
    std::unique_ptr<std::int32_t[]> xs(new (std::nothrow) std::int32_t[count]);
    std::unique_ptr<std::int32_t[]> ys(new (std::nothrow) std::int32_t[count]);
    if (!pics || !xs || !ys)
        return 0;
    ReadTable(file, pics.get(), count);
    ReadTable(file, xs.get(), count);
    ReadTable(file, ys.get(), count);
    const std::uint32_t pool = m_owner ? static_cast<std::uint32_t>(m_owner->GetPicCount()) : 0;
    for (std::uint32_t i = 0; i < count; ++i)
        if (pics[i] >= pool)
            return 0;
    m_pics = std::move(pics);
    m_xs = std::move(xs);
    m_ys = std::move(ys);
    m_frameCount = count;
    return 1;
}

void QorAnimSet::QorAnimUnit::Destroy()
{
    m_pics.reset();
    m_xs.reset();
    m_ys.reset();
    m_frameCount = 0;
}

QorAnimSet::QorAnimSet() : m_picFormatName("QGB ") {}

QorAnimSet::~QorAnimSet()
{
    CleanHeader();
}

char QorAnimSet::Open(const char* name, OpenFlag flag)
{
    if (!name || !m_file.Open(name, QorFile::kRead))
        return 0;
    CleanHeader();
    m_openFlag = flag;

    const unsigned long length = m_file.GetFileLength();
    unsigned int magic = 0;
    m_file >> magic;
    if (magic != m_magic)
    {
        m_file.Close();
        return 0;
    }
    unsigned int version = 0, value = 0, defaultFlag = 0, reserved = 0;
    m_file >> version >> value >> defaultFlag >> reserved >> reserved >> reserved;
    m_version = version;
    m_headerValue = value;
    if (flag == kFileDefault)
        m_openFlag = static_cast<std::int32_t>(defaultFlag);
    m_fileName = name;

    const char read = ReadTables(length);
    m_file.Close();
    if (!read)
    {
        CleanHeader();
        return 0;
    }
    return 1;
}

char QorAnimSet::ReadTables(unsigned long fileLength)
{
    unsigned int pictures = 0;
    m_file >> pictures;
    if (pictures > 0)
    {
        if (pictures > m_file.GetBytesLeft() / 4)
            return 0;
        m_picOffsets.reset(new (std::nothrow) std::uint32_t[pictures]);
        m_picGuiders.reset(new (std::nothrow) QorGuider[pictures]);
        m_picUseCounts.reset(new (std::nothrow) std::int32_t[pictures]());
        if (!m_picOffsets || !m_picGuiders || !m_picUseCounts)
        {
            SetException(1);
            return 0;
        }
        m_picCount = pictures;
        ReadTable(m_file, m_picOffsets.get(), pictures);
        for (std::uint32_t i = 0; i < pictures; ++i)
            if (m_picOffsets[i] > fileLength)
                return 0;
    }

    unsigned int units = 0;
    m_file >> units;
    if (units == 0)
        return 1;
    if (units > m_file.GetBytesLeft() / 4)
        return 0;
    m_unitOffsets.reset(new (std::nothrow) std::uint32_t[units]);
    m_units.reset(new (std::nothrow) QorAnimUnit[units]);
    if (!m_unitOffsets || !m_units)
    {
        SetException(1);
        return 0;
    }
    m_unitCount = units;
    ReadTable(m_file, m_unitOffsets.get(), units);
    // Every unit header must fit where its offset says: animations reread units from there.
    for (std::uint32_t i = 0; i < units; ++i)
        if (m_unitOffsets[i] > fileLength || fileLength - m_unitOffsets[i] < kUnitHeaderSize)
            return 0;
    for (std::uint32_t i = 0; i < units; ++i)
        m_units[i].SetOwner(this);

    if (m_openFlag == kReadAll)
    {
        for (std::uint32_t i = 0; i < units; ++i)
            if (!m_units[i].Create(m_file) || !m_units[i].Load(m_file))
                return 0;
    }
    else if (m_openFlag == kReadHeaders)
    {
        for (std::uint32_t i = 0; i < units; ++i)
            if (!m_file.Seek(m_unitOffsets[i], 0, 1) || !m_units[i].Create(m_file))
                return 0;
    }
    return 1;
}

long QorAnimSet::FindIndex(const char* name) const
{
    if (!name)
        return -1;
    for (std::uint32_t i = 0; i < m_unitCount; ++i)
        if (std::strcmp(m_units[i].GetName(), name) == 0)
            return static_cast<long>(i);
    return -1;
}

void QorAnimSet::CleanHeader()
{
    const unsigned long running = m_running.GetSize();
    if (running > 0 && m_running.GotoAddress(static_cast<unsigned long>(Cycle<QorAnimUnitRun*>::kHead)))
        for (unsigned long i = 0; i < running; ++i)
        {
            QorAnimUnitRun** run = m_running.GetInfo();
            if (m_buffer)
                m_buffer->RemoveSprite((*run)->m_sprite);
            delete *run;
            m_running.Next();
        }
    m_running.Empty();
    // The records are gone, so nothing is left to count as active.
    m_activeCount = 0;

    if (m_unitCount > 0)
    {
        m_unitOffsets.reset();
        m_units.reset();
        m_unitCount = 0;
    }
    if (m_picCount > 0)
    {
        for (std::uint32_t i = 0; i < m_picCount && m_picGuiders; ++i)
            if (m_buffer && m_picGuiders[i].object)
                m_buffer->RemovePic(m_picGuiders[i]);
    }
    m_picOffsets.reset();
    m_picGuiders.reset();
    m_picUseCounts.reset();
    m_picCount = 0;
}

void QorAnimSet::SetOffScreenBufferPtr(QorOffScreenBuffer* buffer)
{
    m_buffer = buffer;
    const unsigned long running = m_running.GetSize();
    if (running > 0 && m_running.GotoAddress(static_cast<unsigned long>(Cycle<QorAnimUnitRun*>::kHead)))
        for (unsigned long i = 0; i < running; ++i, m_running.Next())
            (*m_running.GetInfo())->m_buffer = buffer;
}

char QorAnimSet::SetUnitResident(long unitIndex, char resident)
{
    if (unitIndex < 0 || static_cast<unsigned long>(unitIndex) >= m_unitCount)
        return 0;
    m_units[unitIndex].SetResident(resident);
    return 1;
}

long QorAnimSet::GetPicUseCount(long picIndex) const
{
    if (picIndex < 0 || static_cast<unsigned long>(picIndex) >= m_picCount)
        return 0;
    return m_picUseCounts[picIndex];
}

QorGuider QorAnimSet::GetPicGuider(long picIndex) const
{
    if (picIndex < 0 || static_cast<unsigned long>(picIndex) >= m_picCount)
        return QorGuider();
    return m_picGuiders[picIndex];
}

const QorAnimSet::QorAnimUnit* QorAnimSet::GetUnit(long unitIndex) const
{
    if (unitIndex < 0 || static_cast<unsigned long>(unitIndex) >= m_unitCount)
        return nullptr;
    return &m_units[unitIndex];
}
