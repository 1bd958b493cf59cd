#pragma once

// Audio: sound blocks with their formats and conversions, sound groups, and the table of sounds played
// one at a time on the platform's wave output device, and the mixer that plays several at once.
#include "core/QorMacrosSave.h"
#include "qor/core.h"
#include "qor/files.h"
#include "platform/QorAudioPort.h"
#include "audio/QorSndBlock.h"
#include "audio/QorSndGroup.h"
#include "audio/QorAudio.h"
#include "audio/QorMixer.h"
#include "core/QorMacrosRestore.h"
