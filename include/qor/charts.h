#pragma once

// Charts: chart objects that take typed value arrays.
#include "qor/core.h"
#include "qor/pictures.h"
#include "charts/QorPlot.h"
