// Persistence of the core value types. It lives with the stream so that the core layer does not
// depend on the files layer: core headers only forward-declare QorFile.
#include "QorFile.h"

#include <algorithm>
#include <cstring>

unsigned long QorString::Save(QorFile& file) const
{
    const unsigned long length = GetLength();
    file << static_cast<int>(length);
    file.Write(Bytes(), length);
    return length + 4;
}

// Never trusts the stored length further than the bytes the file still holds: the text keeps what
// could be read.
unsigned long QorString::LoadText(QorFile& file, int stored)
{
    const unsigned long wanted = stored > 0 ? std::min<unsigned long>(stored, file.GetBytesLeft()) : 0;
    UCharArray fresh;
    if (!fresh.ReSize(wanted + 1, 0))
    {
        m_text.SetException(1);
        return 0;
    }
    const unsigned long got = file.Read(static_cast<unsigned char*>(fresh), wanted);
    fresh[got] = 0;
    if (got < wanted)
        fresh.ReSize(got + 1, 1);
    m_text = std::move(fresh);
    return got;
}

unsigned long QorString::Load(QorFile& file)
{
    int stored = 0;
    file >> stored;
    return LoadText(file, stored) + 4;
}

char QorString::Load(QorFile& file, int expected)
{
    int stored = 0;
    const unsigned long before = file.GetPosition();
    file >> stored;
    const unsigned long consumed = file.GetPosition() - before;
    if (consumed != 4 || stored != expected)
    {
        // Step back over exactly what was read of the length field.
        if (consumed)
            file.Seek(consumed, 1, -1);
        return 0;
    }
    LoadText(file, stored);
    return 1;
}

unsigned long QorRect::Save(QorFile& file) const
{
    file << static_cast<int>(left) << static_cast<int>(top) << static_cast<int>(right) << static_cast<int>(bottom);
    return 16;
}

unsigned long QorRect::Load(QorFile& file)
{
    int l = left, t = top, r = right, b = bottom;
    file >> l >> t >> r >> b;
    left = l;
    top = t;
    right = r;
    bottom = b;
    return 16;
}

unsigned long QorGuider::Save(QorFile& file) const
{
    file << static_cast<int>(identifier) << static_cast<short>(tag);
    return 6;
}

unsigned long QorGuider::Load(QorFile& file)
{
    unsigned int id = identifier;
    unsigned short t = tag;
    file >> id >> t;
    identifier = id;
    tag = t;
    return 6;
}

unsigned long QorDate::Save(QorFile& file) const
{
    file << static_cast<short>(year) << static_cast<short>(localYear) << static_cast<char>(month)
         << static_cast<char>(day) << static_cast<int>(hour) << static_cast<int>(hour12)
         << static_cast<int>(afternoon) << static_cast<int>(minute) << static_cast<int>(second)
         << static_cast<int>(dayOfWeek);
    return 0;
}

unsigned long QorDate::Load(QorFile& file)
{
    short y = year, ly = localYear;
    char m = month, d = day;
    int h = hour, h12 = hour12, pm = afternoon, min = minute, s = second, dow = dayOfWeek;
    file >> y >> ly >> m >> d >> h >> h12 >> pm >> min >> s >> dow;
    year = y;
    localYear = ly;
    month = m;
    day = d;
    hour = h;
    hour12 = h12;
    afternoon = pm;
    minute = min;
    second = s;
    dayOfWeek = dow;
    return 0;
}
