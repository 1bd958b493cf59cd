// The message queue: posted and input messages, the quit message and timers against the port's clock;
// translation of keys to characters, dispatch, message boxes, the screen size and the input method.
#include "platform/GdiInternal.h"
#include "platform/PlatformInternal.h"
#include "platform/QorPlatform.h"
#include "platform/QorWindow.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

namespace qor::detail
{
namespace
{
// Windows raises shorter timer intervals to this.
constexpr UINT kMinimumInterval = 10;
// Ids given to timers without a window.
constexpr UINT_PTR kFirstThreadTimerId = 0x7F00;

struct Timer
{
    HWND window;
    UINT_PTR id;
    unsigned long interval;
    unsigned long due;
    TIMERPROC callback;
    unsigned long order;
};

struct MessageQueue
{
    std::deque<MSG> posted;
    bool quit = false;
    int quitCode = 0;
    std::vector<Timer> timers;
    unsigned long timerOrder = 0;
    UINT_PTR nextThreadTimer = kFirstThreadTimerId;
    bool keyDown[256] = {};
    POINT cursor = {0, 0};
};

MessageQueue& Queue()
{
    static MessageQueue* queue = new MessageQueue();
    return *queue;
}

unsigned long Now()
{
    return QorGetClock().GetMillis();
}

bool Matches(const MSG& msg, HWND window, UINT first, UINT last)
{
    if (window && msg.hwnd != window)
        return false;
    if (first == 0 && last == 0)
        return true;
    return msg.message >= first && msg.message <= last;
}

bool IsMouse(UINT message)
{
    return message >= WM_MOUSEFIRST && message <= WM_MOUSELAST;
}

// Moves the input the port has ready into the queue, stamping time and point.
void PullInput()
{
    MessageQueue& queue = Queue();
    QorEventPort& events = QorGetEventPort();
    MSG msg;
    while (events.Poll(msg))
    {
        msg.time = static_cast<DWORD>(Now());
        if (IsMouse(msg.message) && msg.message != WM_MOUSEWHEEL)
            queue.cursor = POINT{GET_X_LPARAM(msg.lParam), GET_Y_LPARAM(msg.lParam)};
        msg.pt = queue.cursor;
        queue.posted.push_back(msg);
    }
}

void Track(const MSG& msg)
{
    MessageQueue& queue = Queue();
    if ((msg.message == WM_KEYDOWN || msg.message == WM_KEYUP) && msg.wParam < 256)
        queue.keyDown[msg.wParam] = msg.message == WM_KEYDOWN;
}

Timer* DueTimer(HWND window, UINT first, UINT last, unsigned long now)
{
    if (!(first == 0 && last == 0) && (WM_TIMER < first || WM_TIMER > last))
        return nullptr;
    Timer* best = nullptr;
    for (Timer& timer : Queue().timers)
    {
        if ((window && timer.window != window) || timer.due > now)
            continue;
        if (!best || timer.due < best->due || (timer.due == best->due && timer.order < best->order))
            best = &timer;
    }
    return best;
}

// Milliseconds until the first timer a wait with this filter could receive, or kForever.
unsigned long UntilNextTimer(HWND window, UINT first, UINT last, unsigned long now)
{
    if (!(first == 0 && last == 0) && (WM_TIMER < first || WM_TIMER > last))
        return QorEventPort::kForever;
    unsigned long wait = QorEventPort::kForever;
    for (const Timer& timer : Queue().timers)
        if (!window || timer.window == window)
            wait = std::min(wait, timer.due > now ? timer.due - now : 0UL);
    return wait;
}

// The character of a key on a US keyboard: Enter, Backspace, Tab and Escape always; the keys that type
// text only while the input method is off (it delivers their characters itself).
int CharacterOf(WPARAM key, bool shift)
{
    switch (key)
    {
    case VK_RETURN:
        return '\r';
    case VK_BACK:
        return '\b';
    case VK_TAB:
        return '\t';
    case VK_ESCAPE:
        return 0x1B;
    default:
        break;
    }
    if (QorIsTextInputActive())
        return 0;
    if (key >= 'A' && key <= 'Z')
        return shift ? int(key) : int(key - 'A' + 'a');
    if (key >= '0' && key <= '9')
        return shift ? ")!@#$%^&*("[key - '0'] : int(key);
    if (key >= VK_NUMPAD0 && key <= VK_NUMPAD9)
        return int('0' + (key - VK_NUMPAD0));
    switch (key)
    {
    case VK_SPACE:
        return ' ';
    case VK_MULTIPLY:
        return '*';
    case VK_ADD:
        return '+';
    case VK_SUBTRACT:
        return '-';
    case VK_DECIMAL:
        return '.';
    case VK_DIVIDE:
        return '/';
    case VK_OEM_1:
        return shift ? ':' : ';';
    case VK_OEM_PLUS:
        return shift ? '+' : '=';
    case VK_OEM_COMMA:
        return shift ? '<' : ',';
    case VK_OEM_MINUS:
        return shift ? '_' : '-';
    case VK_OEM_PERIOD:
        return shift ? '>' : '.';
    case VK_OEM_2:
        return shift ? '?' : '/';
    case VK_OEM_3:
        return shift ? '~' : '`';
    case VK_OEM_4:
        return shift ? '{' : '[';
    case VK_OEM_5:
        return shift ? '|' : '\\';
    case VK_OEM_6:
        return shift ? '}' : ']';
    case VK_OEM_7:
        return shift ? '"' : '\'';
    default:
        return 0;
    }
}

// The input method's layout (Traditional Chinese) and the US layout.
const HKL kImeLayout = reinterpret_cast<HKL>(std::uintptr_t(0xE0080404u));
const HKL kUsLayout = reinterpret_cast<HKL>(std::uintptr_t(0x04090409u));
} // namespace

void ForgetWindowMessages(HWND window)
{
    MessageQueue& queue = Queue();
    queue.posted.erase(std::remove_if(queue.posted.begin(), queue.posted.end(),
                                      [window](const MSG& msg) { return msg.hwnd == window; }),
                       queue.posted.end());
    queue.timers.erase(std::remove_if(queue.timers.begin(), queue.timers.end(),
                                      [window](const Timer& timer) { return timer.window == window; }),
                       queue.timers.end());
}
} // namespace qor::detail

namespace qor::detail
{
namespace
{
// The byte length of the first count characters of UTF-8 text.
std::size_t Utf8Prefix(const char* text, long count)
{
    std::size_t i = 0;
    for (long c = 0; text[i] && c < count; ++c)
        do
            ++i;
        while ((static_cast<unsigned char>(text[i]) & 0xC0) == 0x80);
    return i;
}
} // namespace

void ComposeMessages(HWND window, const char* utf8, long cursor, std::vector<MSG>& out)
{
    WindowRecord* record = FindWindowRecord(window);
    if (!record || !utf8)
        return;
    const std::string big5 = Utf8ToBig5(utf8, std::strlen(utf8));
    if (big5.empty())
    {
        EndComposition(window, out);
        return;
    }
    if (!record->composing)
        out.push_back(MSG{window, WM_IME_STARTCOMPOSITION, 0, 0, 0, {0, 0}});
    record->composing = true;
    record->composition = big5;
    // The cursor counts characters; the message's readers count Big5 bytes.
    const std::size_t prefix = Utf8Prefix(utf8, std::max(cursor, 0L));
    record->compositionCursor = long(Utf8ToBig5(utf8, prefix).size());
    out.push_back(MSG{window, WM_IME_COMPOSITION, 0, LPARAM(GCS_COMPSTR | GCS_CURSORPOS), 0, {0, 0}});
}

void EndComposition(HWND window, std::vector<MSG>& out)
{
    WindowRecord* record = FindWindowRecord(window);
    if (!record || !record->composing)
        return;
    record->composing = false;
    record->composition.clear();
    record->compositionCursor = 0;
    out.push_back(MSG{window, WM_IME_ENDCOMPOSITION, 0, 0, 0, {0, 0}});
}
} // namespace qor::detail

using namespace qor::detail;

// An input context is its window's handle under another type.
HIMC ImmGetContext(HWND window)
{
    return FindWindowRecord(window) ? reinterpret_cast<HIMC>(window) : nullptr;
}

BOOL ImmReleaseContext(HWND window, HIMC context)
{
    return FindWindowRecord(window) && context == reinterpret_cast<HIMC>(window) ? TRUE : FALSE;
}

LONG ImmGetCompositionStringA(HIMC context, DWORD index, void* buffer, DWORD size)
{
    const WindowRecord* record = FindWindowRecord(reinterpret_cast<HWND>(context));
    if (!record)
        return 0;
    if (index == GCS_CURSORPOS)
        return LONG(record->compositionCursor);
    if (index != GCS_COMPSTR)
        return 0;
    const std::size_t length = record->composition.size();
    if (buffer && size > 0)
        std::memcpy(buffer, record->composition.data(), std::min<std::size_t>(length, size));
    return LONG(length);
}

BOOL ImmSetCompositionWindow(HIMC context, const COMPOSITIONFORM* form)
{
    WindowRecord* record = FindWindowRecord(reinterpret_cast<HWND>(context));
    if (!record || !record->port || !form)
        return FALSE;
    RECT area = form->rcArea;
    if (!(form->dwStyle & CFS_RECT))
        area = RECT{form->ptCurrentPos.x, form->ptCurrentPos.y, form->ptCurrentPos.x + 1, form->ptCurrentPos.y + 1};
    record->port->SetTextInputArea(area);
    return TRUE;
}

BOOL PeekMessageA(MSG* msg, HWND window, UINT first, UINT last, UINT remove)
{
    if (!msg)
        return FALSE;
    MessageQueue& queue = Queue();
    PullInput();
    for (auto it = queue.posted.begin(); it != queue.posted.end(); ++it)
    {
        if (!Matches(*it, window, first, last))
            continue;
        *msg = *it;
        if (remove & PM_REMOVE)
        {
            queue.posted.erase(it);
            Track(*msg);
        }
        return TRUE;
    }
    const unsigned long now = Now();
    if (queue.quit)
    {
        *msg = MSG{nullptr, WM_QUIT, WPARAM(queue.quitCode), 0, DWORD(now), queue.cursor};
        if (remove & PM_REMOVE)
            queue.quit = false;
        return TRUE;
    }
    if (Timer* timer = DueTimer(window, first, last, now))
    {
        *msg = MSG{timer->window, WM_TIMER,    timer->id, reinterpret_cast<LPARAM>(timer->callback),
                   DWORD(now),    queue.cursor};
        // One message however late, and the next due time stays on the timer's cadence.
        if (remove & PM_REMOVE)
            timer->due += ((now - timer->due) / timer->interval + 1) * timer->interval;
        return TRUE;
    }
    return FALSE;
}

BOOL GetMessageA(MSG* msg, HWND window, UINT first, UINT last)
{
    if (!msg)
        return -1;
    for (;;)
    {
        if (PeekMessageA(msg, window, first, last, PM_REMOVE))
            return msg->message == WM_QUIT ? 0 : 1;
        if (!QorGetEventPort().Wait(UntilNextTimer(window, first, last, Now())))
        {
            *msg = MSG{};
            return -1;
        }
    }
}

BOOL TranslateMessage(const MSG* msg)
{
    if (!msg || msg->message != WM_KEYDOWN)
        return FALSE;
    MessageQueue& queue = Queue();
    if (queue.keyDown[VK_CONTROL] || queue.keyDown[VK_MENU])
        return FALSE;
    const int character = CharacterOf(msg->wParam, queue.keyDown[VK_SHIFT]);
    if (!character)
        return FALSE;
    MSG chr = *msg;
    chr.message = WM_CHAR;
    chr.wParam = WPARAM(character);
    // The character is the next message retrieved, ahead of anything queued after the key.
    queue.posted.push_front(chr);
    return TRUE;
}

LRESULT DispatchMessageA(const MSG* msg)
{
    if (!msg)
        return 0;
    if (msg->message == WM_TIMER && msg->lParam)
    {
        reinterpret_cast<TIMERPROC>(msg->lParam)(msg->hwnd, WM_TIMER, msg->wParam, msg->time);
        return 0;
    }
    return msg->hwnd ? SendMessageA(msg->hwnd, msg->message, msg->wParam, msg->lParam) : 0;
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (window && !IsWindow(window))
        return FALSE;
    MessageQueue& queue = Queue();
    queue.posted.push_back(MSG{window, message, wParam, lParam, DWORD(Now()), queue.cursor});
    return TRUE;
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    WindowRecord* record = FindWindowRecord(window);
    if (!record)
        return 0;
    if (!record->owner)
        return DefWindowProcA(window, message, wParam, lParam);
    return record->owner->WindowProc(message, wParam, lParam);
}

void PostQuitMessage(int exitCode)
{
    MessageQueue& queue = Queue();
    queue.quit = true;
    queue.quitCode = exitCode;
}

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT elapse, TIMERPROC callback)
{
    if (window && !IsWindow(window))
        return 0;
    MessageQueue& queue = Queue();
    if (!window)
        id = queue.nextThreadTimer++;
    const unsigned long interval = std::max(elapse, kMinimumInterval);
    const unsigned long now = Now();
    for (Timer& timer : queue.timers)
        if (timer.window == window && timer.id == id)
        {
            timer.interval = interval;
            timer.due = now + interval;
            timer.callback = callback;
            return id ? id : 1;
        }
    queue.timers.push_back(Timer{window, id, interval, now + interval, callback, queue.timerOrder++});
    return id ? id : 1;
}

BOOL KillTimer(HWND window, UINT_PTR id)
{
    auto& timers = Queue().timers;
    const auto it = std::find_if(timers.begin(), timers.end(),
                                 [&](const Timer& timer) { return timer.window == window && timer.id == id; });
    if (it == timers.end())
        return FALSE;
    timers.erase(it);
    return TRUE;
}

SHORT GetKeyState(int virtualKey)
{
    if (virtualKey < 0 || virtualKey > 255)
        return 0;
    return Queue().keyDown[virtualKey] ? SHORT(0x8000) : SHORT(0);
}

int GetSystemMetrics(int index)
{
    long width = 0;
    long height = 0;
    QorGetVideoPort().GetScreenSize(width, height);
    switch (index)
    {
    case SM_CXSCREEN:
        return int(width);
    case SM_CYSCREEN:
        return int(height);
    default:
        return 0;
    }
}

int MessageBoxA(HWND window, const char* text, const char* caption, UINT type)
{
    struct Choice
    {
        const char* label;
        int result;
    };
    static const std::vector<Choice> kChoices[] = {
        {{"OK", IDOK}},
        {{"OK", IDOK}, {"Cancel", IDCANCEL}},
        {{"Abort", IDABORT}, {"Retry", IDRETRY}, {"Ignore", IDIGNORE}},
        {{"Yes", IDYES}, {"No", IDNO}, {"Cancel", IDCANCEL}},
        {{"Yes", IDYES}, {"No", IDNO}},
        {{"Retry", IDRETRY}, {"Cancel", IDCANCEL}},
    };
    const UINT kind = type & 0xF;
    const std::vector<Choice>& choices = kChoices[kind < 6 ? kind : 0];
    std::vector<const char*> labels;
    for (const Choice& choice : choices)
        labels.push_back(choice.label);
    const std::string body = text ? Big5ToUtf8(text, std::strlen(text)) : std::string();
    const std::string title = caption ? Big5ToUtf8(caption, std::strlen(caption)) : std::string("Error");
    WindowRecord* record = FindWindowRecord(window);
    const int chosen = QorGetVideoPort().ShowMessageBox(record ? record->port.get() : nullptr, body.c_str(),
                                                        title.c_str(), labels.data(), int(labels.size()));
    if (chosen < 0 || chosen >= int(choices.size()))
    {
        // No box could be shown: say it on stderr and take the default button.
        std::fprintf(stderr, "%s: %s\n", title.c_str(), body.c_str());
        return choices.front().result;
    }
    return choices[std::size_t(chosen)].result;
}

DWORD GetTickCount()
{
    return static_cast<DWORD>(Now());
}

void QorStartTextInput()
{
    QorGetVideoPort().StartTextInput();
}

void QorStopTextInput()
{
    QorGetVideoPort().StopTextInput();
}

char QorIsTextInputActive()
{
    return QorGetVideoPort().IsTextInputActive();
}

HKL GetKeyboardLayout(DWORD)
{
    return QorIsTextInputActive() ? kImeLayout : kUsLayout;
}

BOOL ImmIsIME(HKL layout)
{
    return layout == kImeLayout ? TRUE : FALSE;
}

BOOL ImmSimulateHotKey(HWND, DWORD hotKey)
{
    if (hotKey != IME_THOTKEY_IME_NONIME_TOGGLE)
        return FALSE;
    if (QorIsTextInputActive())
        QorStopTextInput();
    else
        QorStartTextInput();
    return TRUE;
}
