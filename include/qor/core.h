#pragma once

// Core types and containers: errors, arrays, cyclic lists, strings, geometry and handles, dates, numerics.
#include "core/QorMacrosSave.h"
#include "core/QorObj.h"
#include "core/QorError.h"
#include "core/QorArray.h"
#include "core/QorCycle.h"
#include "core/QorString.h"
#include "core/QorRect.h"
#include "core/QorDate.h"
#include "core/QorNumerics.h"
#include "core/QorMacrosRestore.h"
