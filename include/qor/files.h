#pragma once

// Files and text: the binary file stream and group files of named blocks.
#include "qor/core.h"
#include "files/QorFile.h"
#include "files/QorDataGroup.h"
