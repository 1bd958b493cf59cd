// Text sprites: a sprite gets a registry picture of its own, and a line of text (or a copy of a picture)
// is rendered into it.
#include "QorOffScreenBuffer.h"

#include <cstring>

namespace
{
const unsigned char kWhite[4] = {0xFF, 0xFF, 0xFF, 0xFF};
} // namespace

QorPicBlock* QorOffScreenBuffer::PrepareTextPicture(QorSprite* sprite, const QorGuider& guider)
{
    if (sprite->GetPrivatePicture() != 1)
    {
        QorGuider made = CreateNewPic();
        if (made.object)
        {
            if (ChangePicBlock(guider, made))
                sprite->SetPrivatePicture(1);
            else
                RemovePic(made);
        }
    }
    // Only a picture of its own is written: a picture shared with other sprites, or a child's surface shown
    // by a child's sprite, stays untouched.
    if (sprite->GetPrivatePicture() != 1)
        return nullptr;
    PicRecord* record = FindPic(sprite->GetSource());
    return record ? &record->picture : nullptr;
}

char QorOffScreenBuffer::SetText(const QorGuider& sprite, const char* text)
{
    return SetText(sprite, text, kWhite, kWhite, static_cast<CFont*>(nullptr));
}

char QorOffScreenBuffer::SetText(const QorGuider& sprite, const char* text, const unsigned char* color)
{
    return SetText(sprite, text, color, kWhite, static_cast<CFont*>(nullptr));
}

char QorOffScreenBuffer::SetText(const QorGuider& sprite, const char* text, const unsigned char* color,
                                 const unsigned char* mask)
{
    return SetText(sprite, text, color, mask, static_cast<CFont*>(nullptr));
}

char QorOffScreenBuffer::SetText(const QorGuider& sprite, const char* text, const unsigned char* color, CFont* font)
{
    return SetText(sprite, text, color, kWhite, font);
}

char QorOffScreenBuffer::SetText(const QorGuider& sprite, const char* text, const unsigned char* color,
                                 const unsigned char* mask, CFont* font)
{
    QorSprite* found = FindSprite(sprite);
    if (!found)
        return 0;
    QorPicBlock* picture = PrepareTextPicture(found, sprite);
    if (!picture)
        return 1;
    CClientDC client(m_wnd);
    CDC memory;
    if (!memory.CreateCompatibleDC(&client))
        return 1;
    CFont* previousFont = font ? memory.SelectObject(font) : nullptr;
    picture->SetMask(mask ? mask : kWhite);
    // SetText takes a writable colour; the caller's stays untouched.
    unsigned char ink[4];
    std::memcpy(ink, color ? color : kWhite, picture->GetBytesPerPixel() <= 4 ? picture->GetBytesPerPixel() : 4);
    picture->SetText(&memory, text, ink);
    if (previousFont)
        memory.SelectObject(previousFont);
    return 1;
}

char QorOffScreenBuffer::SetText(const QorGuider& sprite, const char* text, const unsigned char* color,
                                 const char* face, int height, int width, int weight, char italic, char underline,
                                 char strikeOut)
{
    CFont font;
    font.CreateFont(height, width, 0, 0, weight, static_cast<BYTE>(italic), static_cast<BYTE>(underline),
                    static_cast<BYTE>(strikeOut), DEFAULT_CHARSET, 0, 15, 0, 0, face);
    const char result = SetText(sprite, text, color, kWhite, font.GetSafeHandle() ? &font : nullptr);
    font.DeleteObject();
    return result;
}

char QorOffScreenBuffer::SetText(const QorGuider& sprite, const QorGuider& picture)
{
    QorSprite* found = FindSprite(sprite);
    if (!found)
        return 0;
    QorPicBlock* own = PrepareTextPicture(found, sprite);
    const PicRecord* source = FindPicOrSurface(picture);
    if (own && source && own != &source->picture)
        own->Copy(source->picture, 0, 0, source->picture.GetWidth() - 1, source->picture.GetHeight() - 1);
    return 1;
}
