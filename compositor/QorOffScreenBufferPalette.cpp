// The stored 8-bit palette and how it reaches the device: the logical palette realised at every
// presentation and the colour table of the device-independent transfers.
#include "QorOffScreenBuffer.h"

#include <cstring>

namespace
{
// The library's own entries; the system keeps 0-9 and 246-255.
constexpr int kFirstOwnEntry = 10;
constexpr int kLastOwnEntry = 245;
// The logical palette of modes 0-2 starts at the first own entry.
constexpr int kShift = 10;

stPaletteEntry MakeEntry(BYTE red, BYTE green, BYTE blue, BYTE flags)
{
    stPaletteEntry entry;
    entry.peRed = red;
    entry.peGreen = green;
    entry.peBlue = blue;
    entry.peFlags = flags;
    return entry;
}
} // namespace

void QorOffScreenBuffer::SetStdColorPalette()
{
    PALETTEENTRY system[256] = {};
    CClientDC client(m_wnd);
    CDC memory;
    // Without a window any context reads the system palette: it is the display's.
    if (!client.GetSafeHdc())
        memory.CreateCompatibleDC(nullptr);
    const HDC dc = client.GetSafeHdc() ? client.GetSafeHdc() : memory.GetSafeHdc();
    if (::GetSystemPaletteEntries(dc, 0, 256, system) == 256)
        for (int i = 0; i < 256; ++i)
            m_palette[i] = MakeEntry(system[i].peRed, system[i].peGreen, system[i].peBlue, system[i].peFlags);
    // Entries 10-215 take cube colours 10-215 and 216-225 wrap round to cube colours 0-9: every cube colour
    // once, the system's 226-245 kept.
    for (int i = kFirstOwnEntry; i <= 225; ++i)
        m_palette[i] = MakeEntry(static_cast<BYTE>((i / 36) % 6 * 51), static_cast<BYTE>((i / 6) % 6 * 51),
                                 static_cast<BYTE>(i % 6 * 51), PC_RESERVED);
    SetPaletteActually(m_palette);
}

void QorOffScreenBuffer::SetStdGreyPalette()
{
    for (int i = 0; i < 256; ++i)
        m_palette[i] = MakeEntry(static_cast<BYTE>(i), static_cast<BYTE>(i), static_cast<BYTE>(i), PC_RESERVED);
    SetPaletteActually(m_palette);
}

void QorOffScreenBuffer::SetPalette(const stPaletteEntry* entries)
{
    if (!entries)
        return;
    std::memcpy(m_palette, entries, sizeof(m_palette));
    SetPaletteActually(m_palette);
}

void QorOffScreenBuffer::SetPaletteActually(const stPaletteEntry* entries)
{
    PALETTEENTRY device[256];
    for (int i = 0; i < 256; ++i)
        device[i] = PALETTEENTRY{entries[i].peRed, entries[i].peGreen, entries[i].peBlue, entries[i].peFlags};
    switch (m_showingMode)
    {
    case kDeviceBitmap:
    case kDeviceBitmapStretchClient:
    case kDeviceBitmapStretchScreen:
        // Realised, logical entries 0-235 land in system entries 10-245: the indices the pictures use.
        m_logicalPalette.SetPaletteEntries(0, kLastOwnEntry - kFirstOwnEntry + 1, device + kShift);
        break;
    case kIndependent:
    case kIndependentStretchClient:
    case kIndependentStretchScreen:
        m_logicalPalette.SetPaletteEntries(0, 256, device);
        for (int i = 0; i < 256; ++i)
            m_bitmapHeader.bmiColors[i] =
                RGBQUAD{entries[i].peBlue, entries[i].peGreen, entries[i].peRed, entries[i].peFlags};
        break;
    default:
        break;
    }
}

void QorOffScreenBuffer::TurnScreenOff()
{
    stPaletteEntry black[256];
    for (int i = 0; i < 256; ++i)
        black[i] = MakeEntry(0, 0, 0, i >= kFirstOwnEntry && i <= kLastOwnEntry ? PC_RESERVED : 0);
    SetPaletteActually(black);
}

void QorOffScreenBuffer::TurnScreenOn()
{
    stPaletteEntry shown[256];
    for (int i = 0; i < 256; ++i)
    {
        const bool own = i >= kFirstOwnEntry && i <= kLastOwnEntry;
        shown[i] = own ? MakeEntry(m_palette[i].peRed, m_palette[i].peGreen, m_palette[i].peBlue, PC_RESERVED)
                       : MakeEntry(0, 0, 0, 0);
    }
    SetPaletteActually(shown);
}
