#pragma once

// Files and text: the binary file stream, group files of named blocks, Big5 text utilities, the
// tokenizer, directory and shortcut utilities, and the record helpers.
#include "core/QorMacrosSave.h"
#include "qor/core.h"
#include "files/QorFile.h"
#include "files/QorDataGroup.h"
#include "files/QorText.h"
#include "files/QorParser.h"
#include "files/QorDirectory.h"
#include "files/QorDatabase.h"
#include "core/QorMacrosRestore.h"
