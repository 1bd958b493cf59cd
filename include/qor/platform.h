#pragma once

// Platform layer: the Windows structure and integer names the library's signatures use.
#include "platform/QorWinTypes.h"
