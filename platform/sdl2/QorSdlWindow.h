#pragma once

// The SDL2 port's windows and events as tests and tools reach them. SDL's own types are only declared
// here; include <SDL.h> to use them.
#include "platform/QorWinTypes.h"

#include <vector>

struct SDL_Window;
union SDL_Event;

/// The SDL window of a live window on the SDL2 port, or null.
SDL_Window* QorSdlGetWindow(HWND window);
/// The colour the window's renderer shows at (x, y) of the client area after drawing its texture
/// again; CLR_INVALID (0xFFFFFFFF) when it cannot be read.
COLORREF QorSdlReadPresentedPixel(HWND window, long x, long y);
/// The colour the window shows at drawable pixel (px, py), bars and scaling included, after drawing the
/// output again; CLR_INVALID when it cannot be read.
COLORREF QorSdlReadOutputPixel(HWND window, long px, long py);
/// The area last given to the input method for its candidate window, in window points.
BOOL QorSdlGetTextInputArea(HWND window, RECT* area);
/// The messages one SDL event becomes, appended to out (none for events the layer does not use).
/// Mouse and key messages name the window of the event's window id.
void QorSdlTranslateEvent(const SDL_Event& event, std::vector<MSG>& out);
