#pragma once

// Pictures as SDL surfaces, under the PNG reader and writer (SDL_image). SDL's types are only declared
// here; include <SDL.h> to use the surface.
#include "pictures/QorPicBlock.h"
#include "pictures/QorPicFiles.h"

struct SDL_Surface;

/// A new 32-bit surface (SDL_PIXELFORMAT_ARGB8888, opaque) showing the picture: 16-bit pixels read as
/// X1R5G5B5, 8-bit pixels through the picture's palette (a grey ramp without one). Null for an empty
/// picture. The caller frees it with SDL_FreeSurface.
SDL_Surface* QorPictureToSurface(const QorPicBlock& picture);
