#pragma once

// Where a window's client area is shown when the window's drawable area is larger (or smaller) than it,
// and which client pixel an output pixel shows. One set of formulas serves drawing and the mouse, so a
// click on any output pixel maps to the client pixel drawn there.
#include "platform/QorWinTypes.h"

/// How a window shows its client area in a drawable area of another size.
enum class QorScaleMode
{
    /// Unscaled, centred.
    kOneToOne = 0,
    /// The largest whole factor that fits (at least 1), centred, bars around.
    kPixelPerfect = 1,
    /// As large as fits with the aspect kept (nearest neighbour), centred, bars around.
    kLetterbox = 2,
};

namespace qor::detail
{
/// The rectangle (right and bottom exclusive, in drawable pixels) that shows a client area of
/// clientW x clientH in a drawable area of outW x outH.
RECT ComputeViewport(long clientW, long clientH, long outW, long outH, QorScaleMode mode);

/// The client pixel shown at drawable pixel (px, py) of viewport; false on the bars around it.
bool OutputToClient(const RECT& viewport, long clientW, long clientH, long px, long py, long& cx, long& cy);

/// The drawable pixel under window point (x, y): HiDPI displays have several pixels a point, and the
/// drawable size, not the window size, decides the scale.
void PointToOutput(long x, long y, long windowW, long windowH, long outW, long outH, long& px, long& py);
} // namespace qor::detail
