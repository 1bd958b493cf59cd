#pragma once

// Platform layer: the Windows structure and integer names the library's signatures use, and the record
// store classes (over SQLite) that the record helpers work through.
#include "platform/QorPlatform.h"
#include "platform/QorWinTypes.h"
#include "platform/QorDao.h"
