#include "platform/QorScaling.h"

#include <algorithm>

namespace qor::detail
{
RECT ComputeViewport(long clientW, long clientH, long outW, long outH, QorScaleMode mode)
{
    long w = clientW;
    long h = clientH;
    if (clientW > 0 && clientH > 0 && outW > 0 && outH > 0)
    {
        if (mode == QorScaleMode::kPixelPerfect)
        {
            const long factor = std::max(1L, std::min(outW / clientW, outH / clientH));
            w = clientW * factor;
            h = clientH * factor;
        }
        else if (mode == QorScaleMode::kLetterbox)
        {
            // Width-limited when outW / clientW <= outH / clientH; the other side rounds down.
            if (outW * clientH <= outH * clientW)
            {
                w = outW;
                h = std::max(1L, clientH * outW / clientW);
            }
            else
            {
                h = outH;
                w = std::max(1L, clientW * outH / clientH);
            }
        }
    }
    // Centred; an area larger than the output hangs over both sides equally.
    const long left = (outW - w) / 2;
    const long top = (outH - h) / 2;
    return RECT{LONG(left), LONG(top), LONG(left + w), LONG(top + h)};
}

bool OutputToClient(const RECT& viewport, long clientW, long clientH, long px, long py, long& cx, long& cy)
{
    const long w = viewport.right - viewport.left;
    const long h = viewport.bottom - viewport.top;
    if (w <= 0 || h <= 0 || px < viewport.left || py < viewport.top || px >= viewport.right || py >= viewport.bottom)
        return false;
    cx = (px - viewport.left) * clientW / w;
    cy = (py - viewport.top) * clientH / h;
    return true;
}

void PointToOutput(long x, long y, long windowW, long windowH, long outW, long outH, long& px, long& py)
{
    px = windowW > 0 && outW > 0 ? x * outW / windowW : x;
    py = windowH > 0 && outH > 0 ? y * outH / windowH : y;
}
} // namespace qor::detail
