// Drawing objects, contexts and palettes: the handle tables, the stock objects, the emulated system
// palette and the class wrappers.
#include "platform/QorGdi.h"

#include "platform/GdiInternal.h"
#include "platform/PlatformInternal.h"
#include "platform/QorWindow.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <unordered_map>
#include <utility>

namespace qor::detail
{
namespace
{
// The 20 static colours of an 8-bit display: the first ten take entries 0-9, the last ten 246-255.
const PALETTEENTRY kStaticColours[20] = {
    {0, 0, 0, 0},       {128, 0, 0, 0},     {0, 128, 0, 0},     {128, 128, 0, 0},   {0, 0, 128, 0},
    {128, 0, 128, 0},   {0, 128, 128, 0},   {192, 192, 192, 0}, {192, 220, 192, 0}, {166, 202, 240, 0},
    {255, 251, 240, 0}, {160, 160, 164, 0}, {128, 128, 128, 0}, {255, 0, 0, 0},     {0, 255, 0, 0},
    {255, 255, 0, 0},   {0, 0, 255, 0},     {255, 0, 255, 0},   {0, 255, 255, 0},   {255, 255, 255, 0},
};

constexpr int kFirstFreeEntry = 10;
constexpr int kLastFreeEntry = 245;
constexpr int kStockCount = 18;

struct GdiState
{
    GdiState();
    std::unordered_map<const void*, std::unique_ptr<GdiObject>> objects;
    std::unordered_map<const void*, std::unique_ptr<DeviceContext>> contexts;
    GdiObject* stock[kStockCount] = {};
    BitmapObject* defaultBitmap = nullptr;
    PALETTEENTRY system[256] = {};
    /// The palette whose reserved entries hold system entries now.
    PaletteObject* onDisplay = nullptr;

    template <class T> T* Add(std::unique_ptr<T> object)
    {
        T* raw = object.get();
        objects.emplace(raw, std::move(object));
        return raw;
    }
};

GdiState::GdiState()
{
    for (int i = 0; i < 10; ++i)
    {
        system[i] = kStaticColours[i];
        system[246 + i] = kStaticColours[10 + i];
    }
    auto brush = [this](int index, COLORREF colour, bool hollow)
    {
        auto b = std::make_unique<BrushObject>();
        b->colour = colour;
        b->hollow = hollow;
        b->stock = true;
        stock[index] = Add(std::move(b));
    };
    brush(WHITE_BRUSH, RGB(255, 255, 255), false);
    brush(LTGRAY_BRUSH, RGB(192, 192, 192), false);
    brush(GRAY_BRUSH, RGB(128, 128, 128), false);
    brush(DKGRAY_BRUSH, RGB(64, 64, 64), false);
    brush(BLACK_BRUSH, RGB(0, 0, 0), false);
    brush(NULL_BRUSH, RGB(0, 0, 0), true);
    auto pen = [this](int index, COLORREF colour, bool hollow)
    {
        auto p = std::make_unique<PenObject>();
        p->colour = colour;
        p->hollow = hollow;
        p->stock = true;
        stock[index] = Add(std::move(p));
    };
    pen(WHITE_PEN, RGB(255, 255, 255), false);
    pen(BLACK_PEN, RGB(0, 0, 0), false);
    pen(NULL_PEN, RGB(0, 0, 0), true);
    // Every stock font is the default: the Kai face, 16 pixels.
    for (int index : {OEM_FIXED_FONT, ANSI_FIXED_FONT, ANSI_VAR_FONT, SYSTEM_FONT, DEVICE_DEFAULT_FONT,
                      SYSTEM_FIXED_FONT, DEFAULT_GUI_FONT})
    {
        auto f = std::make_unique<FontObject>();
        f->logFont.lfHeight = 16;
        f->logFont.lfWeight = FW_NORMAL;
        f->logFont.lfCharSet = CHINESEBIG5_CHARSET;
        f->stock = true;
        stock[index] = Add(std::move(f));
    }
    auto palette = std::make_unique<PaletteObject>();
    palette->entries.assign(kStaticColours, kStaticColours + 20);
    palette->systemSlot.assign(20, -1);
    palette->stock = true;
    stock[DEFAULT_PALETTE] = Add(std::move(palette));

    auto bitmap = std::make_unique<BitmapObject>();
    bitmap->width = 1;
    bitmap->height = 1;
    bitmap->bitsPerPixel = 1;
    bitmap->pitch = 4;
    bitmap->monochrome = true;
    bitmap->bits.reset(new unsigned char[4]());
    bitmap->table[1] = RGBQUAD{255, 255, 255, 0};
    bitmap->tableSize = 2;
    bitmap->stock = true;
    defaultBitmap = Add(std::move(bitmap));
}

// Never destroyed: handles held by objects that outlive the others at exit stay harmless.
GdiState& State()
{
    static GdiState* state = new GdiState();
    return *state;
}

template <class T> T* Find(const void* handle, GdiKind kind)
{
    GdiObject* object = FindObject(const_cast<void*>(handle));
    return object && object->kind == kind ? static_cast<T*>(object) : nullptr;
}

long PaddedPitch(long width, int bitsPerPixel)
{
    return ((width * bitsPerPixel + 31) / 32) * 4;
}

bool ValidDepth(long bitsPerPixel)
{
    return bitsPerPixel == 1 || bitsPerPixel == 8 || bitsPerPixel == 16 || bitsPerPixel == 24 || bitsPerPixel == 32;
}

// Bitmaps larger than this on a side are refused: 32 bits x 32768 x 32768 is already 4 GiB.
constexpr long kMaxBitmapSide = 32768;

std::unique_ptr<BitmapObject> NewBitmap(long width, long height, int bitsPerPixel)
{
    if (width < 1 || height < 1 || width > kMaxBitmapSide || height > kMaxBitmapSide || !ValidDepth(bitsPerPixel))
        return nullptr;
    auto bitmap = std::make_unique<BitmapObject>();
    bitmap->width = width;
    bitmap->height = height;
    bitmap->bitsPerPixel = bitsPerPixel;
    bitmap->pitch = PaddedPitch(width, bitsPerPixel);
    bitmap->bits.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(bitmap->pitch * height)]());
    if (!bitmap->bits)
        return nullptr;
    return bitmap;
}

void MakeDeviceDependent(BitmapObject& bitmap)
{
    if (bitmap.bitsPerPixel == 1)
    {
        bitmap.monochrome = true;
        bitmap.table[0] = RGBQUAD{0, 0, 0, 0};
        bitmap.table[1] = RGBQUAD{255, 255, 255, 0};
        bitmap.tableSize = 2;
    }
    else if (bitmap.bitsPerPixel == 8)
    {
        bitmap.systemIndices = true;
    }
}

HBITMAP MakeMonochromeDot()
{
    auto bitmap = NewBitmap(1, 1, 1);
    MakeDeviceDependent(*bitmap);
    return reinterpret_cast<HBITMAP>(State().Add(std::move(bitmap)));
}

void Select(GdiObject*& slot, GdiObject* object)
{
    if (slot)
        --slot->selected;
    slot = object;
    if (object)
        ++object->selected;
}

template <class T> void SelectTyped(T*& slot, T* object)
{
    GdiObject* base = slot;
    Select(base, object);
    slot = object;
}

void ReleaseSelections(DeviceContext& dc)
{
    for (GdiObject* object :
         {static_cast<GdiObject*>(dc.bitmap), static_cast<GdiObject*>(dc.font), static_cast<GdiObject*>(dc.brush),
          static_cast<GdiObject*>(dc.pen), static_cast<GdiObject*>(dc.palette)})
        if (object)
            --object->selected;
}

HDC NewContext(HWND window)
{
    GdiState& state = State();
    auto dc = std::make_unique<DeviceContext>();
    dc->window = window;
    SelectTyped(dc->font, static_cast<FontObject*>(state.stock[SYSTEM_FONT]));
    SelectTyped(dc->brush, static_cast<BrushObject*>(state.stock[WHITE_BRUSH]));
    SelectTyped(dc->pen, static_cast<PenObject*>(state.stock[BLACK_PEN]));
    SelectTyped(dc->palette, static_cast<PaletteObject*>(state.stock[DEFAULT_PALETTE]));
    if (!window)
        SelectTyped(dc->bitmap, state.defaultBitmap);
    DeviceContext* raw = dc.get();
    state.contexts.emplace(raw, std::move(dc));
    return reinterpret_cast<HDC>(raw);
}

CGdiObject* MakeWrapper(GdiKind kind)
{
    switch (kind)
    {
    case GdiKind::kBitmap:
        return new CBitmap();
    case GdiKind::kPalette:
        return new CPalette();
    case GdiKind::kFont:
        return new CFont();
    case GdiKind::kBrush:
        return new CBrush();
    case GdiKind::kPen:
        return new CPen();
    }
    return new CGdiObject();
}
} // namespace

DeviceContext* FindContext(HDC dc)
{
    auto& contexts = State().contexts;
    const auto it = contexts.find(dc);
    return it == contexts.end() ? nullptr : it->second.get();
}

GdiObject* FindObject(HGDIOBJ handle)
{
    auto& objects = State().objects;
    const auto it = objects.find(handle);
    return it == objects.end() ? nullptr : it->second.get();
}

PALETTEENTRY* SystemPalette()
{
    return State().system;
}
} // namespace qor::detail

using namespace qor::detail;

HDC CreateCompatibleDC(HDC dc)
{
    if (dc && !FindContext(dc))
        return nullptr;
    return NewContext(nullptr);
}

BOOL DeleteDC(HDC dc)
{
    DeviceContext* context = FindContext(dc);
    if (!context)
        return FALSE;
    ReleaseSelections(*context);
    State().contexts.erase(dc);
    return TRUE;
}

HDC GetDC(HWND window)
{
    if (!FindWindowRecord(window))
        return nullptr;
    return NewContext(window);
}

int ReleaseDC(HWND window, HDC dc)
{
    DeviceContext* context = FindContext(dc);
    if (!context || !context->window || context->window != window)
        return 0;
    return DeleteDC(dc);
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object)
{
    DeviceContext* context = FindContext(dc);
    GdiObject* item = FindObject(object);
    if (!context || !item)
        return nullptr;
    switch (item->kind)
    {
    case GdiKind::kBitmap:
    {
        // Bitmaps go into memory contexts only, and into one at a time (the stock dot excepted).
        auto* bitmap = static_cast<BitmapObject*>(item);
        if (context->window)
            return nullptr;
        if (bitmap->selected > 0 && !bitmap->stock && context->bitmap != bitmap)
            return nullptr;
        BitmapObject* previous = context->bitmap;
        SelectTyped(context->bitmap, bitmap);
        return previous;
    }
    case GdiKind::kFont:
    {
        FontObject* previous = context->font;
        SelectTyped(context->font, static_cast<FontObject*>(item));
        return previous;
    }
    case GdiKind::kBrush:
    {
        BrushObject* previous = context->brush;
        SelectTyped(context->brush, static_cast<BrushObject*>(item));
        return previous;
    }
    case GdiKind::kPen:
    {
        PenObject* previous = context->pen;
        SelectTyped(context->pen, static_cast<PenObject*>(item));
        return previous;
    }
    case GdiKind::kPalette:
        return nullptr;
    }
    return nullptr;
}

BOOL DeleteObject(HGDIOBJ object)
{
    GdiState& state = State();
    GdiObject* item = FindObject(object);
    if (!item)
        return FALSE;
    if (item->stock)
        return TRUE;
    if (item->selected > 0)
        return FALSE;
    if (item->wrapper)
        item->wrapper->m_hObject = nullptr;
    if (item->temporary)
        item->temporary->m_hObject = nullptr;
    if (state.onDisplay == item)
        state.onDisplay = nullptr;
    state.objects.erase(object);
    return TRUE;
}

HGDIOBJ GetStockObject(int index)
{
    if (index < 0 || index >= kStockCount)
        return nullptr;
    return State().stock[index];
}

int GetObjectA(HGDIOBJ object, int size, void* buffer)
{
    GdiObject* item = FindObject(object);
    if (!item)
        return 0;
    switch (item->kind)
    {
    case GdiKind::kBitmap:
    {
        auto* bitmap = static_cast<BitmapObject*>(item);
        if (!buffer)
            return sizeof(BITMAP);
        if (size < static_cast<int>(sizeof(BITMAP)))
            return 0;
        BITMAP description = {0,
                              LONG(bitmap->width),
                              LONG(bitmap->height),
                              LONG(bitmap->pitch),
                              1,
                              WORD(bitmap->bitsPerPixel),
                              bitmap->dibSection ? bitmap->Data() : nullptr};
        std::memcpy(buffer, &description, sizeof(description));
        return sizeof(BITMAP);
    }
    case GdiKind::kPalette:
    {
        if (!buffer)
            return sizeof(WORD);
        if (size < static_cast<int>(sizeof(WORD)))
            return 0;
        const WORD count = static_cast<WORD>(static_cast<PaletteObject*>(item)->entries.size());
        std::memcpy(buffer, &count, sizeof(count));
        return sizeof(WORD);
    }
    case GdiKind::kFont:
        if (!buffer)
            return sizeof(LOGFONTA);
        if (size < static_cast<int>(sizeof(LOGFONTA)))
            return 0;
        std::memcpy(buffer, &static_cast<FontObject*>(item)->logFont, sizeof(LOGFONTA));
        return sizeof(LOGFONTA);
    default:
        return 0;
    }
}

int GetDeviceCaps(HDC dc, int index)
{
    if (!FindContext(dc))
        return 0;
    switch (index)
    {
    case HORZRES:
        return GetSystemMetrics(SM_CXSCREEN);
    case VERTRES:
        return GetSystemMetrics(SM_CYSCREEN);
    case BITSPIXEL:
        return 32;
    case PLANES:
        return 1;
    case SIZEPALETTE:
        return 256;
    case NUMRESERVED:
        return 20;
    case RASTERCAPS:
        // The emulated 8-bit display realises palettes, so palette support is reported.
        return RC_BITBLT | RC_PALETTE | RC_DI_BITMAP | RC_STRETCHBLT | RC_STRETCHDIB;
    default:
        return 0;
    }
}

HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void* bits)
{
    if (width < 0 || height < 0 || planes != 1)
        return nullptr;
    if (width == 0 || height == 0)
        return MakeMonochromeDot();
    BITMAP description = {
        0, width, height, ((width * LONG(bitsPerPixel) + 15) / 16) * 2, 1, WORD(bitsPerPixel), const_cast<void*>(bits)};
    return CreateBitmapIndirect(&description);
}

HBITMAP QorCreateBitmapOver(const BITMAP* description)
{
    if (!description || !description->bmBits || description->bmPlanes != 1 || description->bmWidth < 1 ||
        description->bmHeight < 1 || description->bmWidth > kMaxBitmapSide || description->bmHeight > kMaxBitmapSide ||
        !ValidDepth(description->bmBitsPixel))
        return nullptr;
    const long rowBytes = (long(description->bmWidth) * description->bmBitsPixel + 7) / 8;
    if (description->bmWidthBytes < rowBytes)
        return nullptr;
    auto bitmap = std::make_unique<BitmapObject>();
    bitmap->width = description->bmWidth;
    bitmap->height = description->bmHeight;
    bitmap->bitsPerPixel = description->bmBitsPixel;
    bitmap->pitch = description->bmWidthBytes;
    bitmap->external = static_cast<unsigned char*>(description->bmBits);
    MakeDeviceDependent(*bitmap);
    return reinterpret_cast<HBITMAP>(State().Add(std::move(bitmap)));
}

HBITMAP CreateBitmapIndirect(const BITMAP* description)
{
    if (!description || description->bmPlanes != 1 || description->bmWidth < 0 || description->bmHeight < 0)
        return nullptr;
    if (description->bmWidth == 0 || description->bmHeight == 0)
        return MakeMonochromeDot();
    auto bitmap = NewBitmap(description->bmWidth, description->bmHeight, description->bmBitsPixel);
    if (!bitmap)
        return nullptr;
    MakeDeviceDependent(*bitmap);
    if (description->bmBits)
    {
        const long rowBytes = (bitmap->width * bitmap->bitsPerPixel + 7) / 8;
        if (description->bmWidthBytes < rowBytes)
            return nullptr;
        const auto* source = static_cast<const unsigned char*>(description->bmBits);
        for (long y = 0; y < bitmap->height; ++y)
            std::memcpy(bitmap->bits.get() + bitmap->pitch * y, source + description->bmWidthBytes * y,
                        static_cast<std::size_t>(rowBytes));
    }
    return reinterpret_cast<HBITMAP>(State().Add(std::move(bitmap)));
}

HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height)
{
    DeviceContext* context = FindContext(dc);
    if (!context || width < 0 || height < 0)
        return nullptr;
    if (width == 0 || height == 0)
        return MakeMonochromeDot();
    const BitmapObject* model = context->window ? nullptr : context->bitmap;
    auto bitmap = NewBitmap(width, height, model ? model->bitsPerPixel : 32);
    if (!bitmap)
        return nullptr;
    if (model)
    {
        std::memcpy(bitmap->table, model->table, sizeof(bitmap->table));
        bitmap->tableSize = model->tableSize;
        bitmap->systemIndices = model->systemIndices;
        bitmap->monochrome = model->monochrome;
    }
    return reinterpret_cast<HBITMAP>(State().Add(std::move(bitmap)));
}

HBITMAP CreateDIBSection(HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section, DWORD)
{
    if (bits)
        *bits = nullptr;
    if (!info || section || info->bmiHeader.biSize < sizeof(BITMAPINFOHEADER) || info->bmiHeader.biPlanes != 1 ||
        info->bmiHeader.biCompression != BI_RGB || info->bmiHeader.biWidth <= 0 || info->bmiHeader.biHeight == 0)
        return nullptr;
    const BITMAPINFOHEADER& header = info->bmiHeader;
    const long height = header.biHeight < 0 ? -long(header.biHeight) : long(header.biHeight);
    auto bitmap = NewBitmap(header.biWidth, height, header.biBitCount);
    if (!bitmap)
        return nullptr;
    bitmap->dibSection = true;
    bitmap->bottomUp = header.biHeight > 0;
    if (bitmap->bitsPerPixel <= 8)
    {
        const int full = 1 << bitmap->bitsPerPixel;
        const int count = header.biClrUsed ? std::min<int>(int(header.biClrUsed), full) : full;
        if (usage == DIB_RGB_COLORS)
        {
            const auto* colours = reinterpret_cast<const RGBQUAD*>(reinterpret_cast<const BYTE*>(info) + header.biSize);
            std::memcpy(bitmap->table, colours, sizeof(RGBQUAD) * std::size_t(count));
            bitmap->tableSize = count;
        }
        else if (usage == DIB_PAL_COLORS)
        {
            DeviceContext* context = FindContext(dc);
            if (!context)
                return nullptr;
            const auto* indices = reinterpret_cast<const WORD*>(reinterpret_cast<const BYTE*>(info) + header.biSize);
            const auto& entries = context->palette->entries;
            for (int i = 0; i < count; ++i)
            {
                const PALETTEENTRY e = indices[i] < entries.size() ? entries[indices[i]] : PALETTEENTRY{0, 0, 0, 0};
                bitmap->table[i] = RGBQUAD{e.peBlue, e.peGreen, e.peRed, 0};
            }
            bitmap->tableSize = count;
        }
        else if (usage == DIB_PAL_INDICES && bitmap->bitsPerPixel == 8)
        {
            bitmap->systemIndices = true;
        }
        else
        {
            return nullptr;
        }
    }
    if (bits)
        *bits = bitmap->bits.get();
    return reinterpret_cast<HBITMAP>(State().Add(std::move(bitmap)));
}

HPALETTE CreatePalette(const LOGPALETTE* description)
{
    if (!description || description->palNumEntries < 1 || description->palNumEntries > 256)
        return nullptr;
    auto palette = std::make_unique<PaletteObject>();
    palette->entries.assign(description->palPalEntry, description->palPalEntry + description->palNumEntries);
    palette->systemSlot.assign(palette->entries.size(), -1);
    return reinterpret_cast<HPALETTE>(State().Add(std::move(palette)));
}

UINT GetPaletteEntries(HPALETTE palette, UINT start, UINT count, PALETTEENTRY* entries)
{
    auto* item = Find<PaletteObject>(palette, GdiKind::kPalette);
    if (!item)
        return 0;
    const UINT size = static_cast<UINT>(item->entries.size());
    if (!entries)
        return size;
    if (start >= size)
        return 0;
    const UINT n = std::min(count, size - start);
    std::memcpy(entries, item->entries.data() + start, sizeof(PALETTEENTRY) * n);
    return n;
}

UINT SetPaletteEntries(HPALETTE palette, UINT start, UINT count, const PALETTEENTRY* entries)
{
    auto* item = Find<PaletteObject>(palette, GdiKind::kPalette);
    if (!item || !entries || item->stock)
        return 0;
    const UINT size = static_cast<UINT>(item->entries.size());
    if (start >= size)
        return 0;
    const UINT n = std::min(count, size - start);
    std::memcpy(item->entries.data() + start, entries, sizeof(PALETTEENTRY) * n);
    return n;
}

BOOL AnimatePalette(HPALETTE palette, UINT start, UINT count, const PALETTEENTRY* entries)
{
    auto* item = Find<PaletteObject>(palette, GdiKind::kPalette);
    if (!item || !entries || item->stock)
        return FALSE;
    GdiState& state = State();
    const UINT size = static_cast<UINT>(item->entries.size());
    for (UINT i = 0; i < count && start + i < size; ++i)
    {
        PALETTEENTRY& entry = item->entries[start + i];
        if (!(entry.peFlags & PC_RESERVED))
            continue;
        entry.peRed = entries[i].peRed;
        entry.peGreen = entries[i].peGreen;
        entry.peBlue = entries[i].peBlue;
        const int slot = item->systemSlot[start + i];
        if (state.onDisplay == item && slot >= 0)
            state.system[slot] = PALETTEENTRY{entry.peRed, entry.peGreen, entry.peBlue, 0};
    }
    return TRUE;
}

UINT GetNearestPaletteIndex(HPALETTE palette, COLORREF colour)
{
    auto* item = Find<PaletteObject>(palette, GdiKind::kPalette);
    if (!item)
        return CLR_INVALID;
    UINT best = 0;
    long bestDistance = -1;
    for (std::size_t i = 0; i < item->entries.size(); ++i)
    {
        const long dr = item->entries[i].peRed - GetRValue(colour);
        const long dg = item->entries[i].peGreen - GetGValue(colour);
        const long db = item->entries[i].peBlue - GetBValue(colour);
        const long distance = dr * dr + dg * dg + db * db;
        if (bestDistance < 0 || distance < bestDistance)
        {
            bestDistance = distance;
            best = static_cast<UINT>(i);
        }
    }
    return best;
}

HPALETTE SelectPalette(HDC dc, HPALETTE palette, BOOL forceBackground)
{
    DeviceContext* context = FindContext(dc);
    auto* item = Find<PaletteObject>(palette, GdiKind::kPalette);
    if (!context || !item)
        return nullptr;
    PaletteObject* previous = context->palette;
    SelectTyped(context->palette, item);
    context->paletteBackground = forceBackground != FALSE;
    return reinterpret_cast<HPALETTE>(previous);
}

UINT RealizePalette(HDC dc)
{
    DeviceContext* context = FindContext(dc);
    if (!context)
        return GDI_ERROR;
    PaletteObject* palette = context->palette;
    // Only a foreground realisation on the display changes the system palette; the default palette is
    // the static colours, already there.
    if (!context->window || context->paletteBackground || palette->stock)
        return 0;
    GdiState& state = State();
    if (state.onDisplay && state.onDisplay != palette)
        std::fill(state.onDisplay->systemSlot.begin(), state.onDisplay->systemSlot.end(), -1);
    // Entries reserved for animation (or that must not collapse onto another colour) take the free
    // system entries in order; the others are matched to the nearest colour when drawn.
    int slot = kFirstFreeEntry;
    UINT placed = 0;
    for (std::size_t i = 0; i < palette->entries.size(); ++i)
    {
        const PALETTEENTRY& entry = palette->entries[i];
        palette->systemSlot[i] = -1;
        if (!(entry.peFlags & (PC_RESERVED | PC_NOCOLLAPSE)) || slot > kLastFreeEntry)
            continue;
        state.system[slot] = PALETTEENTRY{entry.peRed, entry.peGreen, entry.peBlue, 0};
        palette->systemSlot[i] = slot++;
        ++placed;
    }
    state.onDisplay = palette;
    return placed;
}

UINT GetSystemPaletteEntries(HDC dc, UINT start, UINT count, PALETTEENTRY* entries)
{
    if (!FindContext(dc))
        return 0;
    if (!entries)
        return 256;
    if (start >= 256)
        return 0;
    const UINT n = std::min(count, 256u - start);
    std::memcpy(entries, State().system + start, sizeof(PALETTEENTRY) * n);
    return n;
}

HFONT CreateFontA(int height, int width, int escapement, int orientation, int weight, DWORD italic, DWORD underline,
                  DWORD strikeOut, DWORD charSet, DWORD outPrecision, DWORD clipPrecision, DWORD quality,
                  DWORD pitchAndFamily, const char* face)
{
    LOGFONTA description = {};
    description.lfHeight = height;
    description.lfWidth = width;
    description.lfEscapement = escapement;
    description.lfOrientation = orientation;
    description.lfWeight = weight;
    description.lfItalic = BYTE(italic);
    description.lfUnderline = BYTE(underline);
    description.lfStrikeOut = BYTE(strikeOut);
    description.lfCharSet = BYTE(charSet);
    description.lfOutPrecision = BYTE(outPrecision);
    description.lfClipPrecision = BYTE(clipPrecision);
    description.lfQuality = BYTE(quality);
    description.lfPitchAndFamily = BYTE(pitchAndFamily);
    if (face)
    {
        std::strncpy(description.lfFaceName, face, LF_FACESIZE - 1);
        description.lfFaceName[LF_FACESIZE - 1] = '\0';
    }
    return CreateFontIndirectA(&description);
}

HFONT CreateFontIndirectA(const LOGFONTA* description)
{
    if (!description)
        return nullptr;
    auto font = std::make_unique<FontObject>();
    font->logFont = *description;
    font->logFont.lfFaceName[LF_FACESIZE - 1] = '\0';
    return reinterpret_cast<HFONT>(State().Add(std::move(font)));
}

HBRUSH CreateSolidBrush(COLORREF colour)
{
    auto brush = std::make_unique<BrushObject>();
    brush->colour = colour;
    return reinterpret_cast<HBRUSH>(State().Add(std::move(brush)));
}

HPEN CreatePen(int style, int, COLORREF colour)
{
    auto pen = std::make_unique<PenObject>();
    pen->colour = colour;
    pen->hollow = style == PS_NULL;
    return reinterpret_cast<HPEN>(State().Add(std::move(pen)));
}

COLORREF SetTextColor(HDC dc, COLORREF colour)
{
    DeviceContext* context = FindContext(dc);
    if (!context)
        return CLR_INVALID;
    return std::exchange(context->textColour, colour);
}

COLORREF GetTextColor(HDC dc)
{
    DeviceContext* context = FindContext(dc);
    return context ? context->textColour : CLR_INVALID;
}

COLORREF SetBkColor(HDC dc, COLORREF colour)
{
    DeviceContext* context = FindContext(dc);
    if (!context)
        return CLR_INVALID;
    return std::exchange(context->bkColour, colour);
}

COLORREF GetBkColor(HDC dc)
{
    DeviceContext* context = FindContext(dc);
    return context ? context->bkColour : CLR_INVALID;
}

int SetBkMode(HDC dc, int mode)
{
    DeviceContext* context = FindContext(dc);
    if (!context || (mode != OPAQUE && mode != TRANSPARENT))
        return 0;
    return std::exchange(context->bkMode, mode);
}

int GetBkMode(HDC dc)
{
    DeviceContext* context = FindContext(dc);
    return context ? context->bkMode : 0;
}

int SetMapMode(HDC dc, int mode)
{
    DeviceContext* context = FindContext(dc);
    if (!context || mode < MM_TEXT || mode > MM_ANISOTROPIC)
        return 0;
    return std::exchange(context->mapMode, mode);
}

int GetMapMode(HDC dc)
{
    DeviceContext* context = FindContext(dc);
    return context ? context->mapMode : 0;
}

// Wrappers.

CGdiObject::~CGdiObject()
{
    DeleteObject();
}

BOOL CGdiObject::Attach(HGDIOBJ object)
{
    GdiObject* item = FindObject(object);
    if (m_hObject || !item)
        return FALSE;
    m_hObject = object;
    item->wrapper = this;
    return TRUE;
}

HGDIOBJ CGdiObject::Detach()
{
    HGDIOBJ object = m_hObject;
    if (GdiObject* item = FindObject(object); item && item->wrapper == this)
        item->wrapper = nullptr;
    m_hObject = nullptr;
    return object;
}

BOOL CGdiObject::DeleteObject()
{
    if (!m_hObject)
        return FALSE;
    return ::DeleteObject(Detach());
}

BOOL CGdiObject::CreateStockObject(int index)
{
    return Attach(GetStockObject(index));
}

int CGdiObject::GetObject(int size, void* buffer) const
{
    return GetObjectA(m_hObject, size, buffer);
}

CGdiObject* CGdiObject::FromHandle(HGDIOBJ object)
{
    GdiObject* item = FindObject(object);
    if (!item)
        return nullptr;
    if (item->wrapper)
        return item->wrapper;
    if (!item->temporary)
    {
        item->temporary.reset(MakeWrapper(item->kind));
        item->temporary->m_hObject = object;
    }
    return item->temporary.get();
}

BOOL CBitmap::CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, const void* bits)
{
    return Attach(::CreateBitmap(width, height, planes, bitsPerPixel, bits));
}

BOOL CBitmap::CreateBitmapIndirect(const BITMAP* description)
{
    return Attach(::CreateBitmapIndirect(description));
}

BOOL CBitmap::CreateBitmapOver(const BITMAP* description)
{
    return Attach(::QorCreateBitmapOver(description));
}

BOOL CBitmap::CreateCompatibleBitmap(CDC* dc, int width, int height)
{
    return Attach(::CreateCompatibleBitmap(dc ? dc->m_hDC : nullptr, width, height));
}

int CBitmap::GetBitmap(BITMAP* description) const
{
    return GetObjectA(m_hObject, sizeof(BITMAP), description);
}

CBitmap* CBitmap::FromHandle(HBITMAP bitmap)
{
    return Find<BitmapObject>(bitmap, GdiKind::kBitmap) ? static_cast<CBitmap*>(CGdiObject::FromHandle(bitmap))
                                                        : nullptr;
}

BOOL CPalette::CreatePalette(const LOGPALETTE* description)
{
    return Attach(::CreatePalette(description));
}

int CPalette::GetEntryCount() const
{
    return static_cast<int>(::GetPaletteEntries(*this, 0, 0, nullptr));
}

UINT CPalette::GetPaletteEntries(UINT start, UINT count, PALETTEENTRY* entries) const
{
    return ::GetPaletteEntries(*this, start, count, entries);
}

UINT CPalette::SetPaletteEntries(UINT start, UINT count, const PALETTEENTRY* entries)
{
    return ::SetPaletteEntries(*this, start, count, entries);
}

void CPalette::AnimatePalette(UINT start, UINT count, const PALETTEENTRY* entries)
{
    ::AnimatePalette(*this, start, count, entries);
}

UINT CPalette::GetNearestPaletteIndex(COLORREF colour) const
{
    return ::GetNearestPaletteIndex(*this, colour);
}

CPalette* CPalette::FromHandle(HPALETTE palette)
{
    return Find<PaletteObject>(palette, GdiKind::kPalette) ? static_cast<CPalette*>(CGdiObject::FromHandle(palette))
                                                           : nullptr;
}

BOOL CFont::CreateFont(int height, int width, int escapement, int orientation, int weight, BYTE italic, BYTE underline,
                       BYTE strikeOut, BYTE charSet, BYTE outPrecision, BYTE clipPrecision, BYTE quality,
                       BYTE pitchAndFamily, const char* face)
{
    return Attach(CreateFontA(height, width, escapement, orientation, weight, italic, underline, strikeOut, charSet,
                              outPrecision, clipPrecision, quality, pitchAndFamily, face));
}

BOOL CFont::CreateFontIndirect(const LOGFONTA* description)
{
    return Attach(CreateFontIndirectA(description));
}

int CFont::GetLogFont(LOGFONTA* description) const
{
    return GetObjectA(m_hObject, sizeof(LOGFONTA), description);
}

BOOL CBrush::CreateSolidBrush(COLORREF colour)
{
    return Attach(::CreateSolidBrush(colour));
}

BOOL CPen::CreatePen(int style, int width, COLORREF colour)
{
    return Attach(::CreatePen(style, width, colour));
}

CDC::~CDC()
{
    DeleteDC();
}

BOOL CDC::Attach(HDC dc)
{
    if (m_hDC || !FindContext(dc))
        return FALSE;
    m_hDC = dc;
    return TRUE;
}

HDC CDC::Detach()
{
    return std::exchange(m_hDC, nullptr);
}

BOOL CDC::CreateCompatibleDC(CDC* dc)
{
    return Attach(::CreateCompatibleDC(dc ? dc->m_hDC : nullptr));
}

BOOL CDC::DeleteDC()
{
    if (!m_hDC)
        return FALSE;
    return ::DeleteDC(Detach());
}

CGdiObject* CDC::SelectStockObject(int index)
{
    return SelectGdiObject(m_hDC, GetStockObject(index));
}

CGdiObject* CDC::SelectGdiObject(HDC dc, HGDIOBJ object)
{
    return CGdiObject::FromHandle(::SelectObject(dc, object));
}

CBitmap* CDC::SelectObject(CBitmap* bitmap)
{
    return static_cast<CBitmap*>(SelectGdiObject(m_hDC, bitmap ? bitmap->m_hObject : nullptr));
}

CFont* CDC::SelectObject(CFont* font)
{
    return static_cast<CFont*>(SelectGdiObject(m_hDC, font ? font->m_hObject : nullptr));
}

CBrush* CDC::SelectObject(CBrush* brush)
{
    return static_cast<CBrush*>(SelectGdiObject(m_hDC, brush ? brush->m_hObject : nullptr));
}

CPen* CDC::SelectObject(CPen* pen)
{
    return static_cast<CPen*>(SelectGdiObject(m_hDC, pen ? pen->m_hObject : nullptr));
}

CGdiObject* CDC::SelectObject(CGdiObject* object)
{
    return SelectGdiObject(m_hDC, object ? object->m_hObject : nullptr);
}

CPalette* CDC::SelectPalette(CPalette* palette, BOOL forceBackground)
{
    return CPalette::FromHandle(
        ::SelectPalette(m_hDC, palette ? static_cast<HPALETTE>(palette->m_hObject) : nullptr, forceBackground));
}

UINT CDC::RealizePalette()
{
    return ::RealizePalette(m_hDC);
}

COLORREF CDC::SetTextColor(COLORREF colour)
{
    return ::SetTextColor(m_hDC, colour);
}

COLORREF CDC::GetTextColor() const
{
    return ::GetTextColor(m_hDC);
}

COLORREF CDC::SetBkColor(COLORREF colour)
{
    return ::SetBkColor(m_hDC, colour);
}

COLORREF CDC::GetBkColor() const
{
    return ::GetBkColor(m_hDC);
}

int CDC::SetBkMode(int mode)
{
    return ::SetBkMode(m_hDC, mode);
}

int CDC::GetBkMode() const
{
    return ::GetBkMode(m_hDC);
}

int CDC::SetMapMode(int mode)
{
    return ::SetMapMode(m_hDC, mode);
}

int CDC::GetMapMode() const
{
    return ::GetMapMode(m_hDC);
}

BOOL CDC::TextOut(int x, int y, const char* text, int count)
{
    return ::TextOutA(m_hDC, x, y, text, count);
}

BOOL CDC::TextOut(int x, int y, const CString& text)
{
    return TextOut(x, y, static_cast<const char*>(text), static_cast<int>(text.GetLength()));
}

BOOL CDC::GetTextMetrics(TEXTMETRICA* metrics) const
{
    return ::GetTextMetricsA(m_hDC, metrics);
}

int CDC::GetTextFace(int count, char* name) const
{
    return ::GetTextFaceA(m_hDC, count, name);
}

int CDC::GetMissingGlyphs(const char* text, int count) const
{
    return ::QorGetMissingGlyphs(m_hDC, text, count);
}

SIZE CDC::GetTextExtent(const char* text, int count) const
{
    SIZE size = {0, 0};
    ::GetTextExtentPoint32A(m_hDC, text, count, &size);
    return size;
}

BOOL CDC::Rectangle(int left, int top, int right, int bottom)
{
    return ::Rectangle(m_hDC, left, top, right, bottom);
}

BOOL CDC::Rectangle(const RECT* rect)
{
    return rect ? ::Rectangle(m_hDC, rect->left, rect->top, rect->right, rect->bottom) : FALSE;
}

void CDC::FillRect(const RECT* rect, CBrush* brush)
{
    ::FillRect(m_hDC, rect, brush ? static_cast<HBRUSH>(brush->m_hObject) : nullptr);
}

void CDC::FillSolidRect(int x, int y, int width, int height, COLORREF colour)
{
    HBRUSH brush = ::CreateSolidBrush(colour);
    const RECT rect = {x, y, x + width, y + height};
    ::FillRect(m_hDC, &rect, brush);
    ::DeleteObject(brush);
}

COLORREF CDC::GetPixel(int x, int y) const
{
    return ::GetPixel(m_hDC, x, y);
}

COLORREF CDC::SetPixel(int x, int y, COLORREF colour)
{
    return ::SetPixel(m_hDC, x, y, colour);
}

BOOL CDC::BitBlt(int x, int y, int width, int height, CDC* source, int sx, int sy, DWORD rop)
{
    return ::BitBlt(m_hDC, x, y, width, height, source ? source->m_hDC : nullptr, sx, sy, rop);
}

BOOL CDC::StretchBlt(int x, int y, int width, int height, CDC* source, int sx, int sy, int sw, int sh, DWORD rop)
{
    return ::StretchBlt(m_hDC, x, y, width, height, source ? source->m_hDC : nullptr, sx, sy, sw, sh, rop);
}

int CDC::GetDeviceCaps(int index) const
{
    return ::GetDeviceCaps(m_hDC, index);
}

CClientDC::CClientDC(CWnd* window) : m_hWnd(window ? window->m_hWnd : nullptr)
{
    m_hDC = ::GetDC(m_hWnd);
}

CClientDC::~CClientDC()
{
    if (m_hDC)
        ::ReleaseDC(m_hWnd, Detach());
}
