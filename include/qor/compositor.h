#pragma once

// Compositor: sprites, the off-screen buffer with its registries of pictures, child buffers and sprites,
// and hit testing.
#include "core/QorMacrosSave.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/pictures.h"
#include "compositor/QorSprite.h"
#include "compositor/QorOffScreenBuffer.h"
#include "compositor/QorScreenShot.h"
#include "core/QorMacrosRestore.h"
