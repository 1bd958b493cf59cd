#pragma once

// Shared between the SDL2 port's sources.
#include "platform/QorWinTypes.h"

#include <cstdint>

namespace qor::detail
{
/// The window handle of an SDL window id, null when the window is not one of ours.
HWND WindowOfSdlId(std::uint32_t id);
} // namespace qor::detail
