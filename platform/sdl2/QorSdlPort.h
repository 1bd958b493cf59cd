#pragma once

// The SDL2 port's start-up and clock. Only this folder includes SDL's headers.
#include "platform/QorPlatform.h"

#include <memory>

namespace qor::detail
{
/// Sets the driver hints and starts SDL's timer and event subsystems; false when SDL fails.
bool StartSdl(const char* videoDriver, const char* audioDriver);
/// A clock on SDL's millisecond counter.
std::unique_ptr<QorClock> MakeSdlClock();
} // namespace qor::detail

namespace qor::detail
{
/// The SDL2 display: windows with a streaming texture each; SDL's video starts on the port's creation.
std::unique_ptr<QorVideoPort> MakeSdlVideoPort();
/// Input from SDL's event queue.
std::unique_ptr<QorEventPort> MakeSdlEventPort();
/// Closes the rasteriser's fonts and shuts SDL_ttf down.
void ShutDownTextRaster();
/// Shuts SDL_image down.
void ShutDownSdlImage();
/// Shuts SDL down when it was started.
void StopSdl();
} // namespace qor::detail
