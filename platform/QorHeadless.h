#pragma once

#include "core/QorExport.h"

// The headless port as tests and tools drive it: windows keep the last presented frame in memory and
// count presents, message boxes are logged, input comes from a script, and time is the manual clock.
#include "platform/QorPlatform.h"
#include "platform/QorWinTypes.h"

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

/// A headless window: the frame as last presented. Windows draw straight into it (presenting copies
/// nothing); every drawing call presents what it changed at once.
class QOR_API QorHeadlessWindowPort : public QorWindowPort
{
public:
    char Open(long width, long height, const char* title) override;
    void Close() override { m_open = false; }
    void SetTitle(const char* title) override { m_title = title ? title : ""; }
    /// Counts the present of the area; a frame other than the port's own is copied in first.
    char Present(long x, long y, long w, long h, const unsigned char* frame, long pitch) override;
    unsigned char* GetFrame() override { return m_frame.empty() ? nullptr : m_frame.data(); }
    /// The headless output is the client area itself: every mode shows it 1:1.
    RECT GetViewport() override { return RECT{0, 0, LONG(m_width), LONG(m_height)}; }
    char SetFullscreen(bool fullscreen) override
    {
        m_fullscreen = fullscreen;
        return 1;
    }
    char IsFullscreen() override { return m_fullscreen; }
    void SetTextInputArea(const RECT& area) override { m_textInputArea = area; }
    /// The caret area the program last gave the input method (client coordinates).
    RECT GetTextInputArea() const { return m_textInputArea; }

    char IsOpen() const { return m_open; }
    long GetWidth() const { return m_width; }
    long GetHeight() const { return m_height; }
    const std::string& GetTitle() const { return m_title; }
    unsigned long GetPresentCount() const { return m_presents; }
    /// The area of the last present (right and bottom exclusive).
    RECT GetLastPresentArea() const { return m_lastArea; }
    /// The colour presented at (x, y); CLR_INVALID (0xFFFFFFFF) outside the window.
    COLORREF GetPresentedPixel(long x, long y) const;
    /// The presented frame: width x height pixels of 4 bytes (blue, green, red, unused), no padding.
    const std::vector<unsigned char>& GetPresentedFrame() const { return m_frame; }

private:
    bool m_open = false;
    long m_width = 0;
    long m_height = 0;
    std::string m_title;
    unsigned long m_presents = 0;
    RECT m_lastArea = {0, 0, 0, 0};
    bool m_fullscreen = false;
    RECT m_textInputArea = {0, 0, 0, 0};
    std::vector<unsigned char> m_frame;
};

/// The headless display: a screen of a fixed size (1024 x 768 unless set) and a log of message boxes.
class QOR_API QorHeadlessVideoPort : public QorVideoPort
{
public:
    std::unique_ptr<QorWindowPort> CreateWindowPort() override;
    void GetScreenSize(long& width, long& height) override;
    /// Writes "caption: text" as one line on stderr, logs it and chooses the first button.
    int ShowMessageBox(QorWindowPort* parent, const char* text, const char* caption, const char* const* buttons,
                       int buttonCount) override;
    void StartTextInput() override { m_textInput = true; }
    void StopTextInput() override { m_textInput = false; }
    char IsTextInputActive() override { return m_textInput; }

    void SetScreenSize(long width, long height);
    unsigned long GetMessageBoxCount() const { return m_boxes; }
    /// The last message box's text and caption, in UTF-8.
    const std::string& GetLastMessageBoxText() const { return m_lastText; }
    const std::string& GetLastMessageBoxCaption() const { return m_lastCaption; }

private:
    long m_screenWidth = 1024;
    long m_screenHeight = 768;
    bool m_textInput = false;
    unsigned long m_boxes = 0;
    std::string m_lastText;
    std::string m_lastCaption;
};

/// The headless input script. Messages are delivered in the order given, each once the manual clock
/// has reached its time; a blocking GetMessageA lets the clock run to the next one.
class QOR_API QorHeadlessEventPort : public QorEventPort
{
public:
    char Poll(MSG& msg) override;
    /// Advances the manual clock to the next scripted message or by timeoutMs, whichever comes first.
    char Wait(unsigned long timeoutMs) override;

    /// Queues msg for now.
    void Inject(const MSG& msg);
    /// Queues msg for the moment the manual clock reads at least ms.
    void InjectAt(unsigned long ms, const MSG& msg);
    /// Queues the character messages of UTF-8 text for window, as the text input of the SDL2 port makes them.
    void InjectText(HWND window, const char* utf8);
    /// Queues key-down and key-up of a virtual key for window.
    void InjectKey(HWND window, int virtualKey);
    /// Queues a mouse message at (x, y) of window's client area.
    void InjectMouse(HWND window, UINT message, int x, int y, WPARAM keys = 0);
    /// Queues a change of the input method's composition, as the SDL2 port's text editing makes it: the
    /// UTF-8 text with the cursor after cursor characters; an empty text ends the composition.
    void InjectComposition(HWND window, const char* utf8, long cursor);
    /// Scripted messages not yet delivered.
    std::size_t GetPendingCount() const { return m_script.size(); }

private:
    struct Entry
    {
        Entry(unsigned long at, const MSG& message) : due(at), msg(message) {}
        unsigned long due;
        MSG msg;
        bool composition = false;
        std::string text;
        long cursor = 0;
    };
    std::deque<Entry> m_script;
};

/// The headless display, or null on another port.
QOR_API QorHeadlessVideoPort* QorGetHeadlessVideo();
/// The headless input script, or null on another port.
QOR_API QorHeadlessEventPort* QorGetHeadlessEvents();
/// The headless port of a live window, or null.
QOR_API QorHeadlessWindowPort* QorGetHeadlessWindow(HWND window);
