#pragma once

// Animation: animation set files, the animations that run from them on the timer, and the writer of the
// file format.
#include "core/QorMacrosSave.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/pictures.h"
#include "qor/compositor.h"
#include "animation/QorAnimSet.h"
#include "core/QorMacrosRestore.h"
