#pragma once

// qor: a class library for 2D multimedia applications and educational games.
// Families in layer order; each may be included on its own.
#include "core/QorMacrosSave.h"
#include "qor/core.h"
#include "qor/files.h"
#include "qor/platform.h"
#include "qor/pictures.h"
#include "qor/audio.h"
#include "qor/compositor.h"
#include "qor/animation.h"
#include "qor/charts.h"
#include "core/QorMacrosRestore.h"
