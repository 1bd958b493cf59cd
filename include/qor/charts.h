#pragma once

// Charts: chart objects that take typed value arrays.
#include "core/QorMacrosSave.h"
#include "qor/core.h"
#include "qor/pictures.h"
#include "charts/QorPlot.h"
#include "core/QorMacrosRestore.h"
