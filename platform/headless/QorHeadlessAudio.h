#pragma once

// The headless port's wave output device.
#include "platform/QorAudioPort.h"

#include <memory>

namespace qor::detail
{
/// One device playing all twelve formats; it plays on QorGetClock's time.
std::unique_ptr<QorAudioPort> MakeHeadlessAudioPort();
} // namespace qor::detail
