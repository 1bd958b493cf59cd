#pragma once

#include "core/QorExport.h"

// The windowing layer in the roles of Windows USER and IMM32: the application window, its message queue
// and window procedure, timers, the message box, the screen size and the input method switch. The port
// chosen with QorSelectPort provides the real window, the input events and the clock.
//
// Messages. Input arrives as key down (0x100) and up (0x101) with Windows virtual-key codes, characters
// (0x102) and mouse messages (0x200-0x209, x and y packed in lParam, MK_ flags in wParam). Characters are
// Big5 bytes: a double-byte character comes as two 0x102 messages, lead byte first, as an ANSI window
// receives it. With the input method on (QorStartTextInput), characters come from the port's text
// input; with it off, TranslateMessage makes them from key-down messages (US layout). Enter, Backspace,
// Tab and Escape always become characters through TranslateMessage.
//
// Timers are kept against QorGetClock(): a due timer yields one 0x113 message when no other message
// waits, and a late timer yields one message, not a burst, keeping its cadence (its next time stays a
// whole number of intervals from when it was set). On the headless port a blocking GetMessageA lets the
// manual clock run to the next timer or scripted event, so waits run deterministically.
#include "platform/QorGdi.h"
#include "platform/QorScaling.h"
#include "platform/QorWinTypes.h"

/// A timer callback: called by DispatchMessageA instead of the window procedure.
typedef void (*TIMERPROC)(HWND, UINT, UINT_PTR, DWORD);

/// A top-level window of the port in use: its client area shows a 32-bit frame that window contexts
/// draw into. Messages dispatched or sent to it reach WindowProc.
class QOR_API CWnd
{
public:
    CWnd() = default;
    virtual ~CWnd();
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;

    /// Opens the window with a client area of width x height and a title (Big5). FALSE when the wrapper
    /// already has a window or the port cannot open one.
    BOOL Create(const char* title, int width, int height);
    /// Closes the window: its timers stop and its queued messages are dropped.
    BOOL DestroyWindow();
    HWND GetSafeHwnd() const { return m_hWnd; }
    operator HWND() const { return m_hWnd; }
    static CWnd* FromHandle(HWND window);

    void GetClientRect(RECT* rect) const;
    void SetWindowText(const char* title);
    CDC* GetDC();
    int ReleaseDC(CDC* dc);
    UINT_PTR SetTimer(UINT_PTR id, UINT elapse, TIMERPROC callback = nullptr);
    BOOL KillTimer(UINT_PTR id);
    int MessageBox(const char* text, const char* caption = nullptr, UINT type = MB_OK);
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

    /// Routes a message to the registered procedure, or to DefWindowProcA without one.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    /// Registers the window procedure; returns the previous one.
    WNDPROC SetWindowProc(WNDPROC procedure);

    HWND m_hWnd = nullptr;

private:
    WNDPROC m_procedure = nullptr;
};

/// The default handling: WM_CLOSE destroys the window; everything else returns 0.
QOR_API LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
QOR_API BOOL DestroyWindow(HWND window);
QOR_API BOOL IsWindow(HWND window);
QOR_API BOOL GetClientRect(HWND window, RECT* rect);

/// Waits for a message of window (null: any) within [first, last] (both 0: any). Returns 0 for WM_QUIT,
/// -1 when nothing can ever arrive (headless: no message, timer or scripted event left), else 1.
QOR_API BOOL GetMessageA(MSG* msg, HWND window, UINT first, UINT last);
/// As GetMessageA without waiting: FALSE when no message is ready. PM_REMOVE takes it from the queue.
QOR_API BOOL PeekMessageA(MSG* msg, HWND window, UINT first, UINT last, UINT remove);
/// Queues a character message for a key-down message that produces one; TRUE when it did.
QOR_API BOOL TranslateMessage(const MSG* msg);
/// Calls the window's procedure (or a timer message's callback); returns its result.
QOR_API LRESULT DispatchMessageA(const MSG* msg);
QOR_API BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// Calls the window's procedure at once.
QOR_API LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
/// WM_QUIT with exitCode is delivered once the posted messages ahead of it are gone.
QOR_API void PostQuitMessage(int exitCode);

/// A repeating timer of window (id replaces a timer with the same id) every elapse milliseconds (at
/// least 10). A null window gets a fresh id. Returns the id, 0 on failure.
QOR_API UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT elapse, TIMERPROC callback);
QOR_API BOOL KillTimer(HWND window, UINT_PTR id);

/// The state of a key as the retrieved messages left it: the high bit set while it is down.
QOR_API SHORT GetKeyState(int virtualKey);
/// SM_CXSCREEN and SM_CYSCREEN: the display's size (headless: the size set on its video port).
QOR_API int GetSystemMetrics(int index);
/// A message box with text and caption (Big5) over window. Headless: one line on stderr and the default
/// button's result.
QOR_API int MessageBoxA(HWND window, const char* text, const char* caption, UINT type);
/// Milliseconds of QorGetClock().
QOR_API DWORD GetTickCount();

inline BOOL GetMessage(MSG* msg, HWND window, UINT first, UINT last)
{
    return GetMessageA(msg, window, first, last);
}
inline BOOL PeekMessage(MSG* msg, HWND window, UINT first, UINT last, UINT remove)
{
    return PeekMessageA(msg, window, first, last, remove);
}
inline LRESULT DispatchMessage(const MSG* msg)
{
    return DispatchMessageA(msg);
}

// Input method. The keyboard layout is the input method's while text input is on.

QOR_API void QorStartTextInput();
QOR_API void QorStopTextInput();
QOR_API char QorIsTextInputActive();
/// The Traditional Chinese input method's layout while text input is on, else the US layout.
QOR_API HKL GetKeyboardLayout(DWORD thread);
/// True for the input method's layout.
QOR_API BOOL ImmIsIME(HKL layout);
/// IME_THOTKEY_IME_NONIME_TOGGLE switches text input on or off; other keys are refused.
QOR_API BOOL ImmSimulateHotKey(HWND window, DWORD hotKey);

// Composition. While the user composes with the input method, the window receives WM_IME_STARTCOMPOSITION,
// a WM_IME_COMPOSITION (lParam GCS_COMPSTR | GCS_CURSORPOS) at every change of the text, and
// WM_IME_ENDCOMPOSITION; the committed text then arrives as WM_CHAR messages.

/// The input context of window (null when window is not live).
QOR_API HIMC ImmGetContext(HWND window);
QOR_API BOOL ImmReleaseContext(HWND window, HIMC context);
/// GCS_COMPSTR: copies the composition (Big5, no terminator) into buffer, at most size bytes, and returns
/// its length in bytes (just the length with a null buffer or size 0). GCS_CURSORPOS: the cursor's byte
/// offset in it. Other indices, or no context: 0.
QOR_API LONG ImmGetCompositionStringA(HIMC context, DWORD index, void* buffer, DWORD size);
/// Places the candidate window by the caret: CFS_POINT (ptCurrentPos) or CFS_RECT (rcArea), client
/// coordinates.
QOR_API BOOL ImmSetCompositionWindow(HIMC context, const COMPOSITIONFORM* form);

// Scaling and fullscreen. The SDL2 port scales; the headless port shows the client area 1:1 in every mode.

/// How window shows its client area when its drawable area has another size (resized, fullscreen or HiDPI;
/// the drawable size decides). Mouse messages keep client coordinates: a point maps to the client pixel
/// drawn under it; presses and moves on the bars around the client area are not delivered, and a release
/// there arrives at the nearest client edge.
QOR_API BOOL QorSetWindowScaling(HWND window, QorScaleMode mode);
QOR_API QorScaleMode QorGetWindowScaling(HWND window);
/// Where window's client area is drawn, in drawable pixels (right and bottom exclusive).
QOR_API BOOL QorGetWindowViewport(HWND window, RECT* viewport);
/// Lets the user resize window. FALSE when the port cannot.
QOR_API BOOL QorSetWindowResizable(HWND window, BOOL resizable);
/// Fills the screen with window, or returns it to its size. FALSE when the port cannot.
QOR_API BOOL QorSetWindowFullscreen(HWND window, BOOL fullscreen);
QOR_API BOOL QorIsWindowFullscreen(HWND window);
/// Alt+Enter switches the window it is pressed in between fullscreen and its size (on unless turned off);
/// the key's messages are then not delivered.
QOR_API void QorSetFullscreenToggle(BOOL enabled);
QOR_API BOOL QorIsFullscreenToggleOn();

