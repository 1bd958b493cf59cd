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
