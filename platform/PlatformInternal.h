#pragma once

// Start-up and shut-down inside the platform layer, shared by its sources.
#include "platform/GdiInternal.h"
#include "platform/QorPlatform.h"
#include "platform/QorWinTypes.h"

class CWnd;

#include <memory>
#include <string>
#include <vector>

namespace qor::detail
{
/// A window as the layer keeps it: the port's window and the frame its contexts draw into.
struct WindowRecord
{
    HWND handle = nullptr;
    CWnd* owner = nullptr;
    std::unique_ptr<QorWindowPort> port;
    long width = 0;
    long height = 0;
    /// width x height pixels of 4 bytes (blue, green, red, unused), rows width * 4 bytes apart: the port's
    /// own frame when it has one, else ownFrame.
    unsigned char* frame = nullptr;
    std::vector<unsigned char> ownFrame;
    /// The input method's composition in progress: Big5 text and the cursor's byte offset.
    bool composing = false;
    std::string composition;
    long compositionCursor = 0;
};

/// The messages a change of window's composition becomes (start, change, end when the text is empty),
/// with the composition kept for ImmGetCompositionStringA. text is UTF-8, cursor counts its characters.
void ComposeMessages(HWND window, const char* utf8, long cursor, std::vector<MSG>& out);
/// Ends window's composition in progress, if any (committed text follows as characters).
void EndComposition(HWND window, std::vector<MSG>& out);

/// The live window a handle names, or null.
WindowRecord* FindWindowRecord(HWND window);
PixelView FrameView(WindowRecord& window);
/// Shows the area (clipped to the client area) of the window's frame through its port.
void PresentArea(WindowRecord& window, const RECT& area);

/// Presents the whole frame again (the port lost what it showed).
void RepaintWindow(HWND window);
/// Drops a destroyed window's timers and queued messages.
void ForgetWindowMessages(HWND window);

/// Makes sure ShutDownPlatform runs at exit, before the sanitizers' leak check: windows are closed and
/// SDL_ttf, SDL_image, fontconfig and SDL are shut down in that order. Later calls find them closed.
void RegisterPlatformShutdown();
/// Closes every window's port (the records stay, so handles remain valid until destroyed).
void CloseAllWindowPorts();
/// Releases fontconfig's configuration and caches.
void ShutDownFontConfig();
} // namespace qor::detail
