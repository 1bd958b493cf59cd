#pragma once

// The SDL2 port's wave output device. Only this folder includes SDL's headers.
#include "platform/QorAudioPort.h"

#include <memory>

namespace qor::detail
{
/// A wave output device on SDL's audio subsystem, which it starts and, when destroyed, stops.
std::unique_ptr<QorAudioPort> MakeSdlAudioPort();
/// The name QorSetAudioDeviceName chose, null for SDL's listed names.
const char* GetChosenAudioDeviceName();
} // namespace qor::detail
