#pragma once

// Core types and containers: errors, arrays, cyclic lists, strings, geometry and handles, dates, numerics.
#include "core/QorObj.h"
#include "core/QorArray.h"
#include "core/QorCycle.h"
#include "core/QorString.h"
#include "core/QorRect.h"
#include "core/QorDate.h"
#include "core/QorNumerics.h"
