#pragma once

#include "core/QorExport.h"

// The platform layer's entry: which port the program runs on, and the clock every port shares.
// Each port family (video and events, audio) creates its own objects on first use for the port chosen
// here, so nothing else needs to be wired at start-up.
#include "platform/QorScaling.h"
#include "platform/QorWinTypes.h"

#include <memory>

/// The implementations of the platform ports.
enum class QorPortKind
{
    /// Frames kept in memory, scripted events, a clock that moves only when told, sound recorded.
    kHeadless = 0,
    /// A real window, events, timers and audio through SDL2.
    kSdl2 = 1,
};

/// Chooses the port for the whole program. Call it once at start-up, before any window, timer or sound
/// exists. For the SDL2 port, videoDriver and audioDriver name SDL drivers to use (for example "dummy",
/// "x11", "disk"); null lets SDL choose. Returns 0 when the port cannot be used (SDL fails to start) or
/// when a port was already chosen; the choice then stays as it was.
/// \note Without a call the headless port is used: the library never looks at the environment.
QOR_API char QorSelectPort(QorPortKind kind, const char* videoDriver = nullptr, const char* audioDriver = nullptr);
/// The port in use.
QOR_API QorPortKind QorGetPortKind();

/// Milliseconds for timers, waits and sound playback.
class QOR_API QorClock
{
public:
    virtual ~QorClock() = default;
    /// Milliseconds since the clock started.
    virtual unsigned long GetMillis() = 0;
    /// Lets ms milliseconds pass: sleeps on a real clock, advances a manual one.
    virtual void Delay(unsigned long ms) = 0;
};

/// The clock of the port in use.
QOR_API QorClock& QorGetClock();

/// The headless port's clock: time moves only when Advance (or Delay) is called.
class QOR_API QorManualClock : public QorClock
{
public:
    unsigned long GetMillis() override { return m_now; }
    void Delay(unsigned long ms) override { Advance(ms); }
    /// Moves the time on by ms.
    void Advance(unsigned long ms) { m_now += ms; }

private:
    unsigned long m_now = 0;
};

/// The headless clock, or null when another port is in use.
QOR_API QorManualClock* QorGetManualClock();

// The ports behind the windowing layer (platform/QorWindow.h). Drawing itself is shared software
// (platform/QorGdi.h); a port only shows frames, reports input and opens message boxes.

/// One window of a port. Its client area shows a 32-bit frame: bytes blue, green, red, unused.
class QOR_API QorWindowPort
{
public:
    virtual ~QorWindowPort() = default;
    /// Opens the window with a client area of width x height; title is UTF-8. 0 when it cannot.
    virtual char Open(long width, long height, const char* title) = 0;
    virtual void Close() = 0;
    virtual void SetTitle(const char* title) = 0;
    /// Shows the area (x, y, w, h) of frame, whose rows (top first) are pitch bytes apart and which is
    /// as large as the client area. 0 when nothing could be shown.
    virtual char Present(long x, long y, long w, long h, const unsigned char* frame, long pitch) = 0;
    /// The port's own frame (width x height pixels of 4 bytes, no padding), when the port shows a frame
    /// straight from its memory: windows then draw into it and presenting copies nothing. Null when the
    /// window keeps a frame of its own and Present copies from it.
    virtual unsigned char* GetFrame() { return nullptr; }
    /// How the client area is shown in a drawable area of another size; ports without scaling show it 1:1
    /// and keep the mode only to report it.
    virtual void SetScaling(QorScaleMode mode) { m_scaling = mode; }
    QorScaleMode GetScaling() const { return m_scaling; }
    /// Where the client area is drawn, in drawable pixels (right and bottom exclusive).
    virtual RECT GetViewport() { return RECT{0, 0, 0, 0}; }
    /// The client pixel under window point (x, y); false on the bars around the client area, unless nearest
    /// asks for the client pixel nearest to the point then.
    virtual bool PointToClient(long x, long y, long& cx, long& cy, bool nearest = false)
    {
        (void)nearest;
        cx = x;
        cy = y;
        return true;
    }
    /// Lets the user resize the window; 0 when the port cannot.
    virtual char SetResizable(bool) { return 0; }
    /// Fills the screen with the window (or leaves fullscreen); 0 when the port cannot.
    virtual char SetFullscreen(bool) { return 0; }
    virtual char IsFullscreen() { return 0; }
    /// Places the input method's candidate window by the caret area (client coordinates).
    virtual void SetTextInputArea(const RECT&) {}
    /// The window handle the port's events name.
    void SetHandle(HWND window) { m_window = window; }
    HWND GetHandle() const { return m_window; }

private:
    HWND m_window = nullptr;
    QorScaleMode m_scaling = QorScaleMode::kOneToOne;
};

/// The display: windows, its size, message boxes and text input.
class QOR_API QorVideoPort
{
public:
    virtual ~QorVideoPort() = default;
    virtual std::unique_ptr<QorWindowPort> CreateWindowPort() = 0;
    virtual void GetScreenSize(long& width, long& height) = 0;
    /// Shows a message box with text and caption (UTF-8) and the buttons' labels; returns the index of
    /// the button chosen, or -1 when no box could be shown.
    virtual int ShowMessageBox(QorWindowPort* parent, const char* text, const char* caption, const char* const* buttons,
                               int buttonCount) = 0;
    virtual void StartTextInput() = 0;
    virtual void StopTextInput() = 0;
    virtual char IsTextInputActive() = 0;
};

/// The source of input messages.
class QOR_API QorEventPort
{
public:
    static constexpr unsigned long kForever = ~0UL;
    virtual ~QorEventPort() = default;
    /// Takes the next input message that is ready; 0 when there is none. The time and point are filled in
    /// by the caller.
    virtual char Poll(MSG& msg) = 0;
    /// Waits until input may be ready or timeoutMs milliseconds of QorGetClock() have passed. 0 when
    /// nothing can ever arrive (a headless port without scripted input asked to wait for ever).
    virtual char Wait(unsigned long timeoutMs) = 0;
};

/// The display of the port in use, made on first use.
QOR_API QorVideoPort& QorGetVideoPort();
/// The input source of the port in use, made on first use.
QOR_API QorEventPort& QorGetEventPort();
