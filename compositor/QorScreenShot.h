#pragma once

#include "core/QorExport.h"

#include "compositor/QorOffScreenBuffer.h"

// Screenshots: what the compositor's window shows, as a picture or a PNG file.

/// Draws the screen as DrawToDC(dc, 0, 0) draws it (8-bit modes through the realised palette) into
/// picture, which becomes 32-bit (blue, green, red, 0) of the main buffer's size. 0 when the compositor
/// has no main buffer or memory runs out; picture is then unchanged.
QOR_API char QorCaptureScreen(QorOffScreenBuffer& screen, QorPicBlock& picture);
/// Captures the screen and writes it as a PNG file. 0 on failure, with QorGetLastError saying why.
QOR_API char QorSaveScreenPng(QorOffScreenBuffer& screen, const char* path);
