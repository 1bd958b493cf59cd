#pragma once

#include "core/QorExport.h"

#include "qor/core.h"
#include "qor/pictures.h"

#include <cstdint>

/// One picture placed at a position and depth inside a buffer of the compositor, with its drawing flags.
/// \note The sprite never owns its picture: the compositor that made the sprite owns it. Width and height
///       are always those of the current picture (0 without one).
class QOR_API QorSprite
{
public:
    QorSprite() = default;
    QorSprite(const QorSprite& other) = default;
    /// Copies everything: id, private mark, picture, source, position, depth, last-shown area and flags.
    QorSprite& operator=(const QorSprite& other) = default;
    /// Same picture shown the same way at the same place: private mark, picture pointer, x, y, z and the
    /// nine flags. Id, source and the last-shown area are deliberately not compared.
    bool operator==(const QorSprite& other) const;

    unsigned long GetId() const { return m_id; }
    void SetId(unsigned long id) { m_id = static_cast<std::uint32_t>(id); }
    /// 1 when the picture was made for this sprite alone and goes when the sprite drops it.
    unsigned long GetPrivatePicture() const { return m_privatePicture; }
    void SetPrivatePicture(unsigned long mark) { m_privatePicture = static_cast<std::uint32_t>(mark); }
    /// The picture shown, null when none.
    QorPicBlock* GetPicBlock() const { return m_picture; }
    /// The guider of the picture in the compositor's registry.
    QorGuider& GetSource() { return m_source; }
    const QorGuider& GetSource() const { return m_source; }
    void SetSource(QorGuider source) { m_source = source; }

    long GetX() const { return m_x; }
    long GetY() const { return m_y; }
    long GetZ() const { return m_z; }
    /// lastX takes the current x, then x takes the new value; the last size is left alone.
    void SetX(long x)
    {
        m_lastX = m_x;
        m_x = static_cast<std::int32_t>(x);
    }
    /// lastY takes the current y, then y takes the new value; the last size is left alone.
    void SetY(long y)
    {
        m_lastY = m_y;
        m_y = static_cast<std::int32_t>(y);
    }
    /// Stores z as given: the compositor does the clamping when it orders its sprites.
    void SetZ(long z) { m_z = static_cast<std::int32_t>(z); }

    long GetLastX() const { return m_lastX; }
    long GetLastY() const { return m_lastY; }
    long GetLastWidth() const { return m_lastWidth; }
    long GetLastHeight() const { return m_lastHeight; }

    /// Shows p instead; returns the previous picture. The last area becomes the current position with the
    /// previous picture's size (0 x 0 without one) and the private mark is cleared.
    QorPicBlock* ChangePicBlock(QorPicBlock* p);
    /// The last size becomes the current picture's size; the last position is left alone.
    void SameSize()
    {
        m_lastWidth = static_cast<std::int32_t>(GetWidth());
        m_lastHeight = static_cast<std::int32_t>(GetHeight());
    }
    long GetWidth() const { return m_picture ? m_picture->GetWidth() : 0; }
    long GetHeight() const { return m_picture ? m_picture->GetHeight() : 0; }
    /// Writes the current area, inclusive: (x, y, x + width - 1, y + height - 1). Nothing for a null r.
    void ReceiveRect(QorRect* r) const
    {
        if (!r)
            return;
        r->left = m_x;
        r->top = m_y;
        r->right = static_cast<std::int32_t>(m_x + GetWidth() - 1);
        r->bottom = static_cast<std::int32_t>(m_y + GetHeight() - 1);
    }
    /// Writes the last-shown area, inclusive. Nothing for a null r.
    void ReceiveLastRect(QorRect* r) const;
    /// Whether (px, py) falls inside the picture; with exact, also on a pixel that differs from the
    /// picture's mask colour in at least one byte.
    /// \note Tested in the picture's own orientation: mirroring and the Show flag are not applied.
    char IsHit(long px, long py, char exact) const;

    char IsCheckRegion() const { return m_checkRegion; }
    void SetCheckRegion(char on) { m_checkRegion = on; }
    char IsColorReverse() const { return m_colorReverse; }
    void SetColorReverse(char on) { m_colorReverse = on; }
    char IsShow() const { return m_show; }
    void SetShow(char on) { m_show = on; }
    char IsMask() const { return m_mask; }
    void SetMask(char on) { m_mask = on; }
    char IsAttachToWindow() const { return m_attachToWindow; }
    void SetAttachToWindow(char on) { m_attachToWindow = on; }
    char IsHReverse() const { return m_hReverse; }
    void SetHReverse(char on) { m_hReverse = on; }
    char IsVReverse() const { return m_vReverse; }
    void SetVReverse(char on) { m_vReverse = on; }
    /// Kept for the owner; the sprite itself never consults it.
    char IsAlwaysOnTop() const { return m_alwaysOnTop; }
    void SetAlwaysOnTop(char on) { m_alwaysOnTop = on; }
    /// The picture is a child buffer's surface.
    char IsChild() const { return m_child; }
    void SetChild(char on) { m_child = on; }

private:
    std::uint32_t m_id = 0;
    std::uint32_t m_privatePicture = 0;
    QorPicBlock* m_picture = nullptr;
    QorGuider m_source;
    std::int32_t m_x = 0;
    std::int32_t m_y = 0;
    std::int32_t m_z = 0;
    std::int32_t m_lastX = 0;
    std::int32_t m_lastY = 0;
    std::int32_t m_lastWidth = 0;
    std::int32_t m_lastHeight = 0;
    char m_checkRegion = 1;
    char m_colorReverse = 0;
    char m_show = 1;
    char m_mask = 1;
    char m_attachToWindow = 0;
    char m_hReverse = 0;
    char m_vReverse = 0;
    char m_alwaysOnTop = 0;
    char m_child = 0;
};
