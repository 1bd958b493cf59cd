#include "QorOffScreenBuffer.h"

#include "CycleWalk.h"

#include <cctype>
#include <cstring>
#include <new>

using qor::detail::Append;
using qor::detail::FindForward;
using qor::detail::ForEach;
using qor::detail::MakeGuider;

namespace
{
bool IsColorType(QorPicBlock::ColorType type)
{
    return type == QorPicBlock::Bit8 || type == QorPicBlock::Bit16 || type == QorPicBlock::Bit24 ||
           type == QorPicBlock::Bit32;
}

// The format tag for a name: the tag of its extension when it has one, else the name itself.
QorString FormatTag(QorString& name)
{
    const char* text = static_cast<char*>(name);
    const char* dot = text ? std::strrchr(text, '.') : nullptr;
    if (!dot)
        return name;
    char extension[4] = {};
    const char* ext = dot + 1;
    if (std::strlen(ext) != 3)
        return QorString();
    for (int i = 0; i < 3; ++i)
        extension[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(ext[i])));
    if (std::strcmp(extension, "qbm") == 0)
        return QorString("BMPQ");
    if (std::strcmp(extension, "qgb") == 0)
        return QorString("QGB ");
    if (std::strcmp(extension, "bmp") == 0)
        return QorString("BMP ");
    if (std::strcmp(extension, "pcx") == 0)
        return QorString("PCX ");
    return QorString();
}
} // namespace

QorOffScreenBuffer::QorOffScreenBuffer()
{
    // The grey start palette: the library's own entries 10 to 245 are a ramp, the system's are zero.
    for (int i = 0; i < 256; ++i)
    {
        const bool own = i >= 10 && i <= 245;
        const BYTE level = own ? static_cast<BYTE>(i) : 0;
        m_palette[i].peRed = m_palette[i].peGreen = m_palette[i].peBlue = level;
        m_palette[i].peFlags = own ? 1 : 0;
    }

    m_nearestSprites = new (std::nothrow) QorGuider[1];
    m_spriteLookups.reset(new (std::nothrow) stLookupSlot[kLookupSlots]);
    m_picLookups.reset(new (std::nothrow) stLookupSlot[kLookupSlots]);
    if (!m_nearestSprites)
        m_nearestCapacity = 0;

    m_mainBuffer = CreateBuffer(QorPicBlock::Bit8);
    if (OffScrBuf* main = GetMainBuffer())
    {
        main->surface.picture.Reset(QorPicBlock::Bit8, 640, 480);
        main->visibleRect = QorRect(0, 0, 639, 479);
        main->hitTestable = 0;
        RefreshBitmapInfo(*main);
    }
    m_auxBuffer = CreateBuffer(QorPicBlock::Bit8);
    if (OffScrBuf* aux = FindBuffer(m_auxBuffer))
    {
        aux->hitTestable = 0;
        aux->reserved = 0;
    }

    // The logical palette and the header's colour table start as the stored palette, unshifted.
    struct
    {
        LOGPALETTE head;
        PALETTEENTRY more[255];
    } description = {};
    description.head.palVersion = 0x300;
    description.head.palNumEntries = 256;
    PALETTEENTRY* entries = description.head.palPalEntry;
    for (int i = 0; i < 256; ++i)
    {
        entries[i] = PALETTEENTRY{m_palette[i].peRed, m_palette[i].peGreen, m_palette[i].peBlue, m_palette[i].peFlags};
        m_bitmapHeader.bmiColors[i] =
            RGBQUAD{m_palette[i].peBlue, m_palette[i].peGreen, m_palette[i].peRed, m_palette[i].peFlags};
    }
    m_logicalPalette.CreatePalette(&description.head);
    m_bitmapHeader.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    m_bitmapHeader.bmiHeader.biPlanes = 1;
    m_bitmapHeader.bmiHeader.biCompression = BI_RGB;
    UpdateBitmapHeader(640, 480);
}

QorOffScreenBuffer::~QorOffScreenBuffer()
{
    // The section holds the main picture's pixels: release it first, the picture never touches them again.
    DestroyOSDependent();
    ForEach(m_children, [](OffScrBuf*& buffer) { delete buffer; });
    m_children.Empty();
    ForEach(m_pictures, [](PicRecord*& record) { delete record; });
    m_pictures.Empty();
    delete[] m_nearestSprites;
}

char QorOffScreenBuffer::Initialize(QorPicBlock::ColorType type, ShowingMode mode, long width, long height, CWnd* wnd)
{
    if (!IsColorType(type))
        return 0;
    OffScrBuf* main = GetMainBuffer();
    if (main && main->surface.picture.GetColorType() != type)
    {
        main->surface.picture.Reset(type, width, height);
        RefreshBitmapInfo(*main);
        if (main->surface.picture.GetBytesPerPixel() == 1)
            SetStdColorPalette();
    }
    m_wnd = wnd;
    m_showingMode = mode;
    return AutoUpdateBitmap(width, height);
}

void QorOffScreenBuffer::RefreshBitmapInfo(OffScrBuf& buffer)
{
    const QorPicBlock& picture = buffer.surface.picture;
    stBitmapDesc& info = buffer.bitmapInfo;
    info.type = 0;
    info.width = static_cast<std::int32_t>(picture.GetWidth());
    info.height = static_cast<std::int32_t>(picture.GetHeight());
    info.widthBytes = static_cast<std::int32_t>(picture.GetWidth() * picture.GetBytesPerPixel());
    info.planes = 1;
    info.bitsPixel = picture.GetBitsPerPixel();
    info.bits = picture.GetDataPtr();
}

void QorOffScreenBuffer::RestartSystem()
{
    ForEach(m_pictures,
            [this](PicRecord*& record)
            {
                ForgetPicture(&record->picture);
                delete record;
            });
    m_pictures.Empty();
    ForgetLookups();
}

void QorOffScreenBuffer::ForgetPicture(const QorPicBlock* picture)
{
    // Dropped as by ChangePicBlock: the last area then covers where the picture stood, ready for a repaint.
    ForEach(m_children,
            [picture](OffScrBuf*& buffer)
            {
                ForEach(buffer->sprites,
                        [picture](QorSprite& sprite)
                        {
                            if (sprite.GetPicBlock() != picture)
                                return;
                            sprite.ChangePicBlock(nullptr);
                            sprite.GetSource().Reset();
                        });
            });
}

QorPicBlock* QorOffScreenBuffer::GetMainBufferPicBlockPtr()
{
    OffScrBuf* main = GetMainBuffer();
    return main ? &main->surface.picture : nullptr;
}

QorRect QorOffScreenBuffer::GetVisibleRect()
{
    OffScrBuf* main = GetMainBuffer();
    return main ? main->visibleRect : QorRect();
}

QorPicBlock::ColorType QorOffScreenBuffer::GetSystemColorType()
{
    OffScrBuf* main = GetMainBuffer();
    return main ? main->surface.picture.GetColorType() : QorPicBlock::Bit8;
}

char QorOffScreenBuffer::SetMainVisibleRect(const QorRect& rect)
{
    OffScrBuf* main = GetMainBuffer();
    if (!main)
        return 0;
    const long dx = static_cast<long>(rect.left) - main->visibleRect.left;
    const long dy = static_cast<long>(rect.top) - main->visibleRect.top;
    main->visibleRect = rect;
    MoveAttachedSprites(main, dx, dy);
    return 1;
}

char QorOffScreenBuffer::SetMainBufferSize(long width, long height)
{
    return AutoUpdateBitmap(width, height);
}

unsigned long QorOffScreenBuffer::GetPicNum()
{
    return m_pictures.GetSize();
}

unsigned long QorOffScreenBuffer::GetSpriteNum()
{
    OffScrBuf* main = GetMainBuffer();
    return main ? main->sprites.GetSize() : 0;
}

unsigned long QorOffScreenBuffer::GetSpriteNum(const QorGuider& child)
{
    OffScrBuf* buffer = FindBuffer(child);
    return buffer ? buffer->sprites.GetSize() : 0;
}

unsigned long QorOffScreenBuffer::GetTotalSpriteNum()
{
    unsigned long total = 0;
    ForEach(m_children, [&total](OffScrBuf*& buffer) { total += buffer->sprites.GetSize(); });
    return total;
}

QorOffScreenBuffer::PicRecord* QorOffScreenBuffer::FindPic(const QorGuider& pic)
{
    if (!pic.object)
        return nullptr;
    PicRecord** found = FindForward(m_pictures, [&pic](PicRecord*& record)
                                    { return record == pic.object && record->id == pic.identifier; });
    return found ? *found : nullptr;
}

QorOffScreenBuffer::PicRecord* QorOffScreenBuffer::FindPicOrSurface(const QorGuider& pic)
{
    if (!pic.object)
        return nullptr;
    stLookupSlot* slot = m_picLookups ? &m_picLookups[LookupSlot(pic.identifier)] : nullptr;
    if (slot && slot->object == pic.object && slot->identifier == pic.identifier && slot->removals == m_removals)
        return static_cast<PicRecord*>(const_cast<void*>(slot->object));
    if (PicRecord* record = FindPic(pic))
    {
        if (slot)
            *slot = stLookupSlot{record, record->id, m_removals, nullptr};
        return record;
    }
    OffScrBuf** found = FindForward(m_children, [&pic](OffScrBuf*& buffer)
                                    { return &buffer->surface == pic.object && buffer->surface.id == pic.identifier; });
    return found ? &(*found)->surface : nullptr;
}

QorOffScreenBuffer::OffScrBuf* QorOffScreenBuffer::FindBuffer(const QorGuider& buffer)
{
    if (!buffer.object)
        return nullptr;
    OffScrBuf** found = FindForward(m_children, [&buffer](OffScrBuf*& candidate)
                                    { return candidate == buffer.object && candidate->id == buffer.identifier; });
    return found ? *found : nullptr;
}

char QorOffScreenBuffer::IsChildExist(const QorGuider& child)
{
    return FindBuffer(child) ? 1 : 0;
}

QorSprite* QorOffScreenBuffer::FindSpriteIn(OffScrBuf* buffer, const QorGuider& sprite)
{
    if (!buffer || !sprite.object)
        return nullptr;
    return FindForward(buffer->sprites, [&sprite](QorSprite& candidate)
                       { return &candidate == sprite.object && candidate.GetId() == sprite.identifier; });
}

QorSprite* QorOffScreenBuffer::FindSprite(const QorGuider& sprite, OffScrBuf** owner)
{
    if (!sprite.object)
        return nullptr;
    stLookupSlot* slot = m_spriteLookups ? &m_spriteLookups[LookupSlot(sprite.identifier)] : nullptr;
    if (slot && slot->object == sprite.object && slot->identifier == sprite.identifier &&
        slot->removals == m_removals)
    {
        if (owner)
            *owner = slot->owner;
        return static_cast<QorSprite*>(const_cast<void*>(slot->object));
    }
    QorSprite* result = nullptr;
    OffScrBuf* found = nullptr;
    FindForward(m_children,
                [&](OffScrBuf*& buffer)
                {
                    result = FindSpriteIn(buffer, sprite);
                    found = buffer;
                    return result != nullptr;
                });
    if (!result)
        return nullptr;
    if (owner)
        *owner = found;
    if (slot)
        *slot = stLookupSlot{result, static_cast<std::uint32_t>(result->GetId()), m_removals, found};
    return result;
}

QorGuider QorOffScreenBuffer::CreateNewPic()
{
    auto* record = new (std::nothrow) PicRecord(GetSystemColorType());
    if (!record)
    {
        m_pictures.SetException(1);
        return QorGuider();
    }
    record->id = m_nextPictureId;
    if (!Append(m_pictures, record))
    {
        delete record;
        return QorGuider();
    }
    ++m_nextPictureId;
    return MakeGuider(record->id, record);
}

QorGuider QorOffScreenBuffer::CreateBuffer(QorPicBlock::ColorType type)
{
    auto* buffer = new (std::nothrow) OffScrBuf(type);
    if (!buffer)
    {
        m_children.SetException(1);
        return QorGuider();
    }
    buffer->id = m_nextBufferId;
    buffer->surface.id = m_nextPictureId;
    buffer->owner = this;
    RefreshBitmapInfo(*buffer);
    if (!Append(m_children, buffer))
    {
        delete buffer;
        return QorGuider();
    }
    ++m_nextBufferId;
    ++m_nextPictureId;
    return MakeGuider(buffer->id, buffer);
}

QorGuider QorOffScreenBuffer::CreatePic(const QorGuider& pic)
{
    const QorGuider made = CreateNewPic();
    PicRecord* source = FindPicOrSurface(pic);
    if (made.object && source)
    {
        const QorPicBlock& src = source->picture;
        static_cast<PicRecord*>(made.object)->picture.Copy(src, 0, 0, src.GetWidth() - 1, src.GetHeight() - 1);
    }
    return made;
}

QorGuider QorOffScreenBuffer::CreatePic(const QorGuider& pic, long l, long t, long r, long b)
{
    const QorGuider made = CreateNewPic();
    PicRecord* source = FindPicOrSurface(pic);
    if (made.object && source)
        static_cast<PicRecord*>(made.object)->picture.Copy(source->picture, l, t, r, b);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicZoom(const QorGuider& pic, long width, long height)
{
    const QorGuider made = CreateNewPic();
    PicRecord* source = FindPicOrSurface(pic);
    if (made.object && source)
        static_cast<PicRecord*>(made.object)->picture.CreateZoom(source->picture, width, height);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicRotate(const QorGuider& pic, double degrees)
{
    const QorGuider made = CreateNewPic();
    PicRecord* source = FindPicOrSurface(pic);
    if (made.object && source)
        static_cast<PicRecord*>(made.object)->picture.CreateRotate(source->picture, degrees);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicTransparent(const QorGuider& pic, double ratio)
{
    const QorGuider made = CreateNewPic();
    PicRecord* source = FindPicOrSurface(pic);
    if (made.object && source)
        static_cast<PicRecord*>(made.object)->picture.CreateTransparent(source->picture, ratio);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePic(QorFile& file)
{
    const QorGuider made = CreateNewPic();
    if (made.object)
        static_cast<PicRecord*>(made.object)->picture.LoadQBM(file);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePic(QorString& name, QorFile& file)
{
    const QorGuider made = CreateNewPic();
    if (made.object)
    {
        QorString tag = FormatTag(name);
        static_cast<PicRecord*>(made.object)->picture.Load(tag, file);
    }
    return made;
}

QorGuider QorOffScreenBuffer::CreatePic(QorFile& file, unsigned long offset, int origin, char direction)
{
    file.Seek(offset, static_cast<unsigned int>(origin), direction);
    return CreatePic(file);
}

QorGuider QorOffScreenBuffer::CreatePic(QorString& name, QorFile& file, unsigned long offset, int origin,
                                        char direction)
{
    file.Seek(offset, static_cast<unsigned int>(origin), direction);
    return CreatePic(name, file);
}

QorGuider QorOffScreenBuffer::CreatePic(QorPicGroup& group, const char* name)
{
    const QorGuider made = CreateNewPic();
    if (made.object)
        group.LoadData(&static_cast<PicRecord*>(made.object)->picture, name);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePic(QorPicGroup& group, long index)
{
    const QorGuider made = CreateNewPic();
    if (made.object && index >= 0)
        group.LoadData(&static_cast<PicRecord*>(made.object)->picture, static_cast<unsigned long>(index));
    return made;
}

QorGuider QorOffScreenBuffer::CreatePic(const QorPicBlock& picture)
{
    const QorGuider made = CreateNewPic();
    if (made.object)
        static_cast<PicRecord*>(made.object)->picture = picture;
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicFromScreen()
{
    const QorGuider made = CreateNewPic();
    if (made.object && GetMainBuffer())
    {
        const QorPicBlock& src = GetMainBuffer()->surface.picture;
        static_cast<PicRecord*>(made.object)->picture.Copy(src, 0, 0, src.GetWidth() - 1, src.GetHeight() - 1);
    }
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicFromScreen(long l, long t, long r, long b)
{
    const QorGuider made = CreateNewPic();
    if (made.object && GetMainBuffer())
        static_cast<PicRecord*>(made.object)->picture.Copy(GetMainBuffer()->surface.picture, l, t, r, b);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicFromScreen(const QorRect& rect)
{
    return CreatePicFromScreen(rect.left, rect.top, rect.right, rect.bottom);
}

QorGuider QorOffScreenBuffer::CreatePicFromChild(const QorGuider& child)
{
    const QorGuider made = CreateNewPic();
    OffScrBuf* buffer = FindBuffer(child);
    if (made.object && buffer)
    {
        const QorPicBlock& src = buffer->surface.picture;
        static_cast<PicRecord*>(made.object)->picture.Copy(src, 0, 0, src.GetWidth() - 1, src.GetHeight() - 1);
    }
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicFromChild(const QorGuider& child, long l, long t, long r, long b)
{
    const QorGuider made = CreateNewPic();
    OffScrBuf* buffer = FindBuffer(child);
    if (made.object && buffer)
        static_cast<PicRecord*>(made.object)->picture.Copy(buffer->surface.picture, l, t, r, b);
    return made;
}

QorGuider QorOffScreenBuffer::CreatePicFromChild(const QorGuider& child, const QorRect& rect)
{
    return CreatePicFromChild(child, rect.left, rect.top, rect.right, rect.bottom);
}

char QorOffScreenBuffer::RemovePic(QorGuider& pic)
{
    PicRecord* record = FindPic(pic);
    if (!record || record->useCount != 0)
        return 0;
    // FindPic left the list's current position on the record.
    m_pictures.Remove();
    delete record;
    ForgetLookups();
    pic.Reset();
    return 1;
}

long QorOffScreenBuffer::GetPicWidth(const QorGuider& pic)
{
    PicRecord* record = FindPicOrSurface(pic);
    return record ? record->picture.GetWidth() : 0;
}

long QorOffScreenBuffer::GetPicHeight(const QorGuider& pic)
{
    PicRecord* record = FindPicOrSurface(pic);
    return record ? record->picture.GetHeight() : 0;
}
