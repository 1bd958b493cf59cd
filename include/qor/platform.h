#pragma once

// Platform layer: the Windows structure and integer names the library's signatures use, and the record
// store classes (over SQLite) that the record helpers work through. Drawing contexts, bitmaps, palettes
// and fonts (QorGdi.h), windows, messages and timers (QorWindow.h) and the headless port's controls for
// tests and tools (QorHeadless.h).
#include "core/QorMacrosSave.h"
#include "platform/QorPlatform.h"
#include "platform/QorWinTypes.h"
#include "platform/QorDao.h"
#include "platform/QorGdi.h"
#include "platform/QorWindow.h"
#include "platform/QorHeadless.h"
#include "core/QorMacrosRestore.h"
