#pragma once

// Pictures: the pixel buffer in 8, 16, 24 and 32 bits, its file formats and picture groups.
#include "core/QorMacrosSave.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/platform.h"
#include "pictures/QorPicBlock.h"
#include "pictures/QorPicGroup.h"
#include "pictures/QorPicFiles.h"
#include "core/QorMacrosRestore.h"
