#pragma once

// Pictures as SDL surfaces and PNG files (SDL_image), for golden-image tests and tools. SDL's types are
// only declared here; include <SDL.h> to use the surface.
#include "pictures/QorPicBlock.h"

struct SDL_Surface;

/// A new 32-bit surface (SDL_PIXELFORMAT_ARGB8888, opaque) showing the picture: 16-bit pixels read as
/// X1R5G5B5, 8-bit pixels through the picture's palette (a grey ramp without one). Null for an empty
/// picture. The caller frees it with SDL_FreeSurface.
SDL_Surface* QorPictureToSurface(const QorPicBlock& picture);
/// Writes the picture as an RGB PNG file, as QorPictureToSurface shows it. 0 on failure.
char QorSavePicturePng(const QorPicBlock& picture, const char* path);
/// Reads a PNG file (any format SDL_image reads) into picture as type Bit16, Bit24 or Bit32 (blue first,
/// the fourth byte 0), or as Bit8 from a palette image (indices kept). 0, picture unchanged, on failure.
char QorLoadPicturePng(QorPicBlock& picture, const char* path, QorPicBlock::ColorType type);
