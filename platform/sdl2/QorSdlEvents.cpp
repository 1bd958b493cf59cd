// SDL events as window messages: keys with Windows virtual-key codes, text input as Big5 character
// messages, the mouse with packed coordinates, closing and exposure of windows.
#include "platform/GdiInternal.h"
#include "platform/PlatformInternal.h"
#include "platform/sdl2/QorSdlPort.h"
#include "platform/sdl2/QorSdlWindow.h"
#include "platform/sdl2/SdlInternal.h"
#include "platform/QorWindow.h"

#include <SDL.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <deque>
#include <vector>

namespace qor::detail
{
namespace
{
int VirtualKeyOfScancode(SDL_Scancode code)
{
    if (code >= SDL_SCANCODE_F1 && code <= SDL_SCANCODE_F12)
        return VK_F1 + (code - SDL_SCANCODE_F1);
    if (code >= SDL_SCANCODE_KP_1 && code <= SDL_SCANCODE_KP_9)
        return VK_NUMPAD0 + 1 + (code - SDL_SCANCODE_KP_1);
    switch (code)
    {
    case SDL_SCANCODE_RETURN:
    case SDL_SCANCODE_KP_ENTER:
        return VK_RETURN;
    case SDL_SCANCODE_ESCAPE:
        return VK_ESCAPE;
    case SDL_SCANCODE_BACKSPACE:
        return VK_BACK;
    case SDL_SCANCODE_TAB:
        return VK_TAB;
    case SDL_SCANCODE_SPACE:
        return VK_SPACE;
    case SDL_SCANCODE_LSHIFT:
    case SDL_SCANCODE_RSHIFT:
        return VK_SHIFT;
    case SDL_SCANCODE_LCTRL:
    case SDL_SCANCODE_RCTRL:
        return VK_CONTROL;
    case SDL_SCANCODE_LALT:
    case SDL_SCANCODE_RALT:
        return VK_MENU;
    case SDL_SCANCODE_LGUI:
        return VK_LWIN;
    case SDL_SCANCODE_RGUI:
        return VK_RWIN;
    case SDL_SCANCODE_APPLICATION:
        return VK_APPS;
    case SDL_SCANCODE_PAUSE:
        return VK_PAUSE;
    case SDL_SCANCODE_CAPSLOCK:
        return VK_CAPITAL;
    case SDL_SCANCODE_PAGEUP:
        return VK_PRIOR;
    case SDL_SCANCODE_PAGEDOWN:
        return VK_NEXT;
    case SDL_SCANCODE_END:
        return VK_END;
    case SDL_SCANCODE_HOME:
        return VK_HOME;
    case SDL_SCANCODE_LEFT:
        return VK_LEFT;
    case SDL_SCANCODE_UP:
        return VK_UP;
    case SDL_SCANCODE_RIGHT:
        return VK_RIGHT;
    case SDL_SCANCODE_DOWN:
        return VK_DOWN;
    case SDL_SCANCODE_PRINTSCREEN:
        return VK_SNAPSHOT;
    case SDL_SCANCODE_INSERT:
        return VK_INSERT;
    case SDL_SCANCODE_DELETE:
        return VK_DELETE;
    case SDL_SCANCODE_NUMLOCKCLEAR:
        return VK_NUMLOCK;
    case SDL_SCANCODE_SCROLLLOCK:
        return VK_SCROLL;
    case SDL_SCANCODE_KP_0:
        return VK_NUMPAD0;
    case SDL_SCANCODE_KP_MULTIPLY:
        return VK_MULTIPLY;
    case SDL_SCANCODE_KP_PLUS:
        return VK_ADD;
    case SDL_SCANCODE_KP_MINUS:
        return VK_SUBTRACT;
    case SDL_SCANCODE_KP_PERIOD:
        return VK_DECIMAL;
    case SDL_SCANCODE_KP_DIVIDE:
        return VK_DIVIDE;
    default:
        return 0;
    }
}

// Letters, digits and punctuation follow the key's meaning in the layout (its key code); the other
// keys follow their position (scan code).
int VirtualKey(const SDL_Keysym& key)
{
    const SDL_Keycode c = key.sym;
    if (c >= SDLK_a && c <= SDLK_z)
        return 'A' + (c - SDLK_a);
    if (c >= SDLK_0 && c <= SDLK_9)
        return '0' + (c - SDLK_0);
    switch (c)
    {
    case SDLK_SEMICOLON:
        return VK_OEM_1;
    case SDLK_EQUALS:
        return VK_OEM_PLUS;
    case SDLK_COMMA:
        return VK_OEM_COMMA;
    case SDLK_MINUS:
        return VK_OEM_MINUS;
    case SDLK_PERIOD:
        return VK_OEM_PERIOD;
    case SDLK_SLASH:
        return VK_OEM_2;
    case SDLK_BACKQUOTE:
        return VK_OEM_3;
    case SDLK_LEFTBRACKET:
        return VK_OEM_4;
    case SDLK_BACKSLASH:
        return VK_OEM_5;
    case SDLK_RIGHTBRACKET:
        return VK_OEM_6;
    case SDLK_QUOTE:
        return VK_OEM_7;
    default:
        return VirtualKeyOfScancode(key.scancode);
    }
}

WPARAM MouseKeys(Uint32 buttons)
{
    WPARAM keys = 0;
    if (buttons & SDL_BUTTON_LMASK)
        keys |= MK_LBUTTON;
    if (buttons & SDL_BUTTON_RMASK)
        keys |= MK_RBUTTON;
    if (buttons & SDL_BUTTON_MMASK)
        keys |= MK_MBUTTON;
    const SDL_Keymod mods = SDL_GetModState();
    if (mods & KMOD_SHIFT)
        keys |= MK_SHIFT;
    if (mods & KMOD_CTRL)
        keys |= MK_CONTROL;
    return keys;
}

MSG Message(HWND window, UINT code, WPARAM wParam, LPARAM lParam)
{
    MSG msg = {};
    msg.hwnd = window;
    msg.message = code;
    msg.wParam = wParam;
    msg.lParam = lParam;
    return msg;
}

UINT ButtonMessage(Uint8 button, bool down, Uint8 clicks)
{
    // The second press of a double click comes as the double-click message, as on Windows.
    const bool twice = down && clicks >= 2 && clicks % 2 == 0;
    switch (button)
    {
    case SDL_BUTTON_LEFT:
        return down ? (twice ? WM_LBUTTONDBLCLK : WM_LBUTTONDOWN) : WM_LBUTTONUP;
    case SDL_BUTTON_RIGHT:
        return down ? (twice ? WM_RBUTTONDBLCLK : WM_RBUTTONDOWN) : WM_RBUTTONUP;
    case SDL_BUTTON_MIDDLE:
        return down ? (twice ? WM_MBUTTONDBLCLK : WM_MBUTTONDOWN) : WM_MBUTTONUP;
    default:
        return 0;
    }
}

Uint32 ButtonMask(Uint8 button)
{
    return button >= 1 && button <= 32 ? SDL_BUTTON(button) : 0;
}

// Mouse buttons as the translated events left them: pushed events do not move SDL's own state.
Uint32 g_buttons = 0;
// The Return key whose press switched fullscreen: its release is not delivered either.
bool g_toggleKeyDown = false;

// Where window point (x, y) falls in the client area of an SDL window of ours; false on the bars, unless
// nearest asks for the nearest client pixel then.
bool ClientPoint(std::uint32_t windowId, long x, long y, long& cx, long& cy, bool nearest = false)
{
    WindowRecord* record = FindWindowRecord(WindowOfSdlId(windowId));
    if (!record || !record->port)
    {
        cx = x;
        cy = y;
        return true;
    }
    return record->port->PointToClient(x, y, cx, cy, nearest);
}

void Translate(const SDL_Event& event, std::vector<MSG>& out)
{
    switch (event.type)
    {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
    {
        // Alt+Enter switches fullscreen; neither its press nor its release reaches the program.
        if (event.key.keysym.scancode == SDL_SCANCODE_RETURN)
        {
            if (event.type == SDL_KEYDOWN && (event.key.keysym.mod & KMOD_ALT) && QorIsFullscreenToggleOn())
            {
                if (!event.key.repeat)
                {
                    const HWND window = WindowOfSdlId(event.key.windowID);
                    QorSetWindowFullscreen(window, !QorIsWindowFullscreen(window));
                }
                g_toggleKeyDown = true;
                break;
            }
            if (event.type == SDL_KEYUP && g_toggleKeyDown)
            {
                g_toggleKeyDown = false;
                break;
            }
        }
        const int key = VirtualKey(event.key.keysym);
        if (!key)
            break;
        const bool down = event.type == SDL_KEYDOWN;
        // Repeat count 1, scan code, context (Alt) bit, previous state and transition bits.
        DWORD data = 1u | ((DWORD(event.key.keysym.scancode) & 0xFFu) << 16);
        if (event.key.keysym.mod & KMOD_ALT)
            data |= 1u << 29;
        if (!down || event.key.repeat)
            data |= 1u << 30;
        if (!down)
            data |= 1u << 31;
        out.push_back(
            Message(WindowOfSdlId(event.key.windowID), down ? WM_KEYDOWN : WM_KEYUP, WPARAM(key), LPARAM(data)));
        break;
    }
    case SDL_TEXTINPUT:
    {
        const HWND window = WindowOfSdlId(event.text.windowID);
        EndComposition(window, out);
        for (unsigned char byte : Utf8ToBig5(event.text.text, std::strlen(event.text.text)))
            out.push_back(Message(window, WM_CHAR, WPARAM(byte), 1));
        break;
    }
    case SDL_TEXTEDITING:
        ComposeMessages(WindowOfSdlId(event.edit.windowID), event.edit.text, event.edit.start, out);
        break;
    case SDL_MOUSEMOTION:
    {
        long x = 0;
        long y = 0;
        if (ClientPoint(event.motion.windowID, event.motion.x, event.motion.y, x, y))
            out.push_back(Message(WindowOfSdlId(event.motion.windowID), WM_MOUSEMOVE, MouseKeys(event.motion.state),
                                  MAKELPARAM(WORD(x), WORD(y))));
        break;
    }
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
    {
        const bool down = event.type == SDL_MOUSEBUTTONDOWN;
        const UINT code = ButtonMessage(event.button.button, down, event.button.clicks);
        if (down)
            g_buttons |= ButtonMask(event.button.button);
        else
            g_buttons &= ~ButtonMask(event.button.button);
        long x = 0;
        long y = 0;
        if (code && ClientPoint(event.button.windowID, event.button.x, event.button.y, x, y, !down))
            out.push_back(
                Message(WindowOfSdlId(event.button.windowID), code, MouseKeys(g_buttons), MAKELPARAM(WORD(x), WORD(y))));
        break;
    }
    case SDL_MOUSEWHEEL:
    {
        int x = 0;
        int y = 0;
        SDL_GetMouseState(&x, &y);
        long cx = 0;
        long cy = 0;
        const WPARAM delta = WPARAM(WORD(SHORT(event.wheel.y * 120))) << 16;
        if (ClientPoint(event.wheel.windowID, x, y, cx, cy))
            out.push_back(Message(WindowOfSdlId(event.wheel.windowID), WM_MOUSEWHEEL, MouseKeys(g_buttons) | delta,
                                  MAKELPARAM(WORD(cx), WORD(cy))));
        break;
    }
    case SDL_WINDOWEVENT:
    {
        const HWND window = WindowOfSdlId(event.window.windowID);
        if (event.window.event == SDL_WINDOWEVENT_CLOSE && window)
            out.push_back(Message(window, WM_CLOSE, 0, 0));
        else if ((event.window.event == SDL_WINDOWEVENT_EXPOSED ||
                  event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) &&
                 window)
            RepaintWindow(window); // a new size places the client area anew
        break;
    }
    default:
        break;
    }
}

class SdlEventPort : public QorEventPort
{
public:
    char Poll(MSG& msg) override
    {
        SDL_Event event;
        while (m_ready.empty() && SDL_PollEvent(&event))
        {
            std::vector<MSG> messages;
            Translate(event, messages);
            m_ready.insert(m_ready.end(), messages.begin(), messages.end());
        }
        if (m_ready.empty())
            return 0;
        msg = m_ready.front();
        m_ready.pop_front();
        return 1;
    }

    char Wait(unsigned long timeoutMs) override
    {
        if (!m_ready.empty())
            return 1;
        // A null event leaves the event in SDL's queue for Poll.
        if (timeoutMs == kForever)
            SDL_WaitEvent(nullptr);
        else
            SDL_WaitEventTimeout(nullptr, int(std::min<unsigned long>(timeoutMs, INT_MAX)));
        return 1;
    }

private:
    std::deque<MSG> m_ready;
};
} // namespace

std::unique_ptr<QorEventPort> MakeSdlEventPort()
{
    return std::make_unique<SdlEventPort>();
}
} // namespace qor::detail

void QorSdlTranslateEvent(const SDL_Event& event, std::vector<MSG>& out)
{
    qor::detail::Translate(event, out);
}
