#include "QorSprite.h"

bool QorSprite::operator==(const QorSprite& other) const
{
    return m_privatePicture == other.m_privatePicture && m_picture == other.m_picture && m_x == other.m_x &&
           m_y == other.m_y && m_z == other.m_z && m_checkRegion == other.m_checkRegion &&
           m_colorReverse == other.m_colorReverse && m_show == other.m_show && m_mask == other.m_mask &&
           m_attachToWindow == other.m_attachToWindow && m_hReverse == other.m_hReverse &&
           m_vReverse == other.m_vReverse && m_alwaysOnTop == other.m_alwaysOnTop && m_child == other.m_child;
}

QorPicBlock* QorSprite::ChangePicBlock(QorPicBlock* p)
{
    QorPicBlock* previous = m_picture;
    m_lastWidth = static_cast<std::int32_t>(GetWidth());
    m_lastHeight = static_cast<std::int32_t>(GetHeight());
    m_lastX = m_x;
    m_lastY = m_y;
    m_privatePicture = 0;
    m_picture = p;
    return previous;
}

void QorSprite::ReceiveLastRect(QorRect* r) const
{
    if (!r)
        return;
    r->left = m_lastX;
    r->top = m_lastY;
    r->right = static_cast<std::int32_t>(static_cast<long>(m_lastX) + m_lastWidth - 1);
    r->bottom = static_cast<std::int32_t>(static_cast<long>(m_lastY) + m_lastHeight - 1);
}

char QorSprite::IsHit(long px, long py, char exact) const
{
    const long width = GetWidth();
    const long height = GetHeight();
    // Compared before subtracting: px - x could overflow for points far outside the 32-bit plane.
    if (px < m_x || py < m_y || px >= m_x + width || py >= m_y + height)
        return 0;
    if (!exact || !m_picture)
        return 1;
    const long bytes = m_picture->GetBytesPerPixel();
    const unsigned char* data = m_picture->GetDataPtr();
    const unsigned char* mask = m_picture->GetMask();
    if (bytes == 0 || !data || !mask)
        return 0;
    const long dx = px - m_x;
    const long dy = py - m_y;
    const unsigned char* pixel = data + (dy * width + dx) * bytes;
    for (long i = 0; i < bytes; ++i)
        if (pixel[i] != mask[i])
            return 1;
    return 0;
}
