#pragma once

#include "core/QorExport.h"

#include "pictures/QorPicBlock.h"

// Pictures in and out as image files: PNG both ways, BMP (and the other formats SDL_image reads) in.

/// Reads a PNG or BMP file into picture as type. Bit16, Bit24 and Bit32 take the colours (16 bits as
/// X1R5G5B5; 32 bits blue, green, red, then 0); Bit8 keeps the indices of a palette image. key, when
/// given, becomes the mask colour (bytes in type's layout). palette, when given, receives 256 entries
/// from a palette image (unused entries black) and picture then points at it; otherwise an 8-bit
/// picture keeps the palette pointer it had.
/// \note Returns 0 and leaves picture unchanged when the file is missing or unreadable, the type is not
///       one of the four, or Bit8 is asked of an image without a palette; QorGetLastError says which.
QOR_API char QorLoadPicture(QorPicBlock& picture, const char* path, QorPicBlock::ColorType type,
                            const unsigned char* key = nullptr, stPaletteEntry* palette = nullptr);
/// The same call under the name the PNG writer pairs with.
QOR_API char QorLoadPicturePng(QorPicBlock& picture, const char* path, QorPicBlock::ColorType type,
                               const unsigned char* key = nullptr, stPaletteEntry* palette = nullptr);
/// Writes the picture as a PNG file: an 8-bit picture as a palette image of its indices and palette (a
/// grey ramp when it has none), the other types as RGB, 16-bit pixels read as X1R5G5B5. 0 on failure
/// (empty picture, unwritable path), with QorGetLastError saying why.
QOR_API char QorSavePicturePng(const QorPicBlock& picture, const char* path);
