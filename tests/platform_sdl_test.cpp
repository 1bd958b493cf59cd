// The SDL2 port under SDL's dummy video and audio drivers, chosen by call: windows and presents, the
// translation of SDL events into messages, timers on SDL's clock and text input.
#include "platform/sdl2/QorSdlWindow.h"
#include "qor/pictures.h"
#include "qor/platform.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace
{
// Each test runs in a process of its own under ctest; run together, the first one chooses the port.
void UseSdl()
{
    if (QorGetPortKind() != QorPortKind::kSdl2)
    {
        ASSERT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 1);
    }
    ASSERT_EQ(QorGetPortKind(), QorPortKind::kSdl2);
}

SDL_Event KeyEvent(Uint32 type, SDL_Keycode key, SDL_Scancode code, Uint32 window = 0, Uint8 repeat = 0)
{
    SDL_Event event;
    std::memset(&event, 0, sizeof(event));
    event.type = type;
    event.key.windowID = window;
    event.key.state = type == SDL_KEYDOWN ? SDL_PRESSED : SDL_RELEASED;
    event.key.repeat = repeat;
    event.key.keysym.sym = key;
    event.key.keysym.scancode = code;
    return event;
}

SDL_Event ButtonEvent(Uint32 type, Uint8 button, Uint8 clicks, int x, int y)
{
    SDL_Event event;
    std::memset(&event, 0, sizeof(event));
    event.type = type;
    event.button.button = button;
    event.button.clicks = clicks;
    event.button.x = x;
    event.button.y = y;
    return event;
}

std::vector<MSG> Translate(const SDL_Event& event)
{
    std::vector<MSG> out;
    QorSdlTranslateEvent(event, out);
    return out;
}

void Drain()
{
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
    {
    }
}
} // namespace

TEST(QorSdlPort, WindowOpensOnTheDummyDriverAndShowsWhatIsDrawn)
{
    UseSdl();
    CWnd window;
    ASSERT_TRUE(window.Create("\xA4\xA4", 40, 30));
    SDL_Window* sdl = QorSdlGetWindow(window);
    ASSERT_NE(sdl, nullptr);
    int w = 0;
    int h = 0;
    SDL_GetWindowSize(sdl, &w, &h);
    EXPECT_EQ(w, 40);
    EXPECT_EQ(h, 30);
    EXPECT_STREQ(SDL_GetWindowTitle(sdl), "\xE4\xB8\xAD");
    EXPECT_EQ(QorSdlReadPresentedPixel(window, 5, 5), RGB(0, 0, 0));
    {
        CClientDC dc(&window);
        dc.FillSolidRect(4, 4, 10, 10, RGB(250, 128, 3));
        QorPicBlock picture(QorPicBlock::Bit32, 3, 3);
        unsigned char blue[4] = {255, 0, 0, 0};
        picture.Fill(blue);
        picture.DrawToDC(&dc, nullptr);
    }
    EXPECT_EQ(QorSdlReadPresentedPixel(window, 5, 5), RGB(250, 128, 3));
    EXPECT_EQ(QorSdlReadPresentedPixel(window, 1, 1), RGB(0, 0, 255));
    EXPECT_EQ(QorSdlReadPresentedPixel(window, 2, 2), RGB(0, 0, 0));
    EXPECT_EQ(QorSdlReadPresentedPixel(window, 40, 0), CLR_INVALID);
    EXPECT_EQ(QorGetHeadlessWindow(window), nullptr);
    EXPECT_EQ(QorGetHeadlessVideo(), nullptr);
    window.DestroyWindow();
    EXPECT_EQ(QorSdlGetWindow(window), nullptr);
}

TEST(QorSdlPort, ScreenSizeComesFromTheDisplay)
{
    UseSdl();
    QorGetVideoPort();
    SDL_DisplayMode mode;
    ASSERT_EQ(SDL_GetDesktopDisplayMode(0, &mode), 0);
    EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), mode.w);
    EXPECT_EQ(GetSystemMetrics(SM_CYSCREEN), mode.h);
    EXPECT_GT(mode.w, 0);
}

TEST(QorSdlPort, KeysTranslateToVirtualKeyCodes)
{
    UseSdl();
    struct Row
    {
        SDL_Keycode key;
        SDL_Scancode code;
        WPARAM expected;
    };
    const Row table[] = {
        {SDLK_a, SDL_SCANCODE_A, 'A'},
        {SDLK_z, SDL_SCANCODE_Z, 'Z'},
        {SDLK_0, SDL_SCANCODE_0, '0'},
        {SDLK_7, SDL_SCANCODE_7, '7'},
        {SDLK_RETURN, SDL_SCANCODE_RETURN, VK_RETURN},
        {SDLK_KP_ENTER, SDL_SCANCODE_KP_ENTER, VK_RETURN},
        {SDLK_ESCAPE, SDL_SCANCODE_ESCAPE, VK_ESCAPE},
        {SDLK_BACKSPACE, SDL_SCANCODE_BACKSPACE, VK_BACK},
        {SDLK_TAB, SDL_SCANCODE_TAB, VK_TAB},
        {SDLK_SPACE, SDL_SCANCODE_SPACE, VK_SPACE},
        {SDLK_LSHIFT, SDL_SCANCODE_LSHIFT, VK_SHIFT},
        {SDLK_RSHIFT, SDL_SCANCODE_RSHIFT, VK_SHIFT},
        {SDLK_LCTRL, SDL_SCANCODE_LCTRL, VK_CONTROL},
        {SDLK_RALT, SDL_SCANCODE_RALT, VK_MENU},
        {SDLK_LEFT, SDL_SCANCODE_LEFT, VK_LEFT},
        {SDLK_UP, SDL_SCANCODE_UP, VK_UP},
        {SDLK_RIGHT, SDL_SCANCODE_RIGHT, VK_RIGHT},
        {SDLK_DOWN, SDL_SCANCODE_DOWN, VK_DOWN},
        {SDLK_PAGEUP, SDL_SCANCODE_PAGEUP, VK_PRIOR},
        {SDLK_PAGEDOWN, SDL_SCANCODE_PAGEDOWN, VK_NEXT},
        {SDLK_HOME, SDL_SCANCODE_HOME, VK_HOME},
        {SDLK_END, SDL_SCANCODE_END, VK_END},
        {SDLK_INSERT, SDL_SCANCODE_INSERT, VK_INSERT},
        {SDLK_DELETE, SDL_SCANCODE_DELETE, VK_DELETE},
        {SDLK_F1, SDL_SCANCODE_F1, VK_F1},
        {SDLK_F12, SDL_SCANCODE_F12, VK_F12},
        {SDLK_KP_0, SDL_SCANCODE_KP_0, VK_NUMPAD0},
        {SDLK_KP_3, SDL_SCANCODE_KP_3, 0x63},
        {SDLK_KP_9, SDL_SCANCODE_KP_9, VK_NUMPAD9},
        {SDLK_KP_MULTIPLY, SDL_SCANCODE_KP_MULTIPLY, VK_MULTIPLY},
        {SDLK_KP_PLUS, SDL_SCANCODE_KP_PLUS, VK_ADD},
        {SDLK_KP_MINUS, SDL_SCANCODE_KP_MINUS, VK_SUBTRACT},
        {SDLK_KP_PERIOD, SDL_SCANCODE_KP_PERIOD, VK_DECIMAL},
        {SDLK_KP_DIVIDE, SDL_SCANCODE_KP_DIVIDE, VK_DIVIDE},
        {SDLK_SEMICOLON, SDL_SCANCODE_SEMICOLON, VK_OEM_1},
        {SDLK_EQUALS, SDL_SCANCODE_EQUALS, VK_OEM_PLUS},
        {SDLK_COMMA, SDL_SCANCODE_COMMA, VK_OEM_COMMA},
        {SDLK_MINUS, SDL_SCANCODE_MINUS, VK_OEM_MINUS},
        {SDLK_PERIOD, SDL_SCANCODE_PERIOD, VK_OEM_PERIOD},
        {SDLK_SLASH, SDL_SCANCODE_SLASH, VK_OEM_2},
        {SDLK_BACKQUOTE, SDL_SCANCODE_GRAVE, VK_OEM_3},
        {SDLK_LEFTBRACKET, SDL_SCANCODE_LEFTBRACKET, VK_OEM_4},
        {SDLK_BACKSLASH, SDL_SCANCODE_BACKSLASH, VK_OEM_5},
        {SDLK_RIGHTBRACKET, SDL_SCANCODE_RIGHTBRACKET, VK_OEM_6},
        {SDLK_QUOTE, SDL_SCANCODE_APOSTROPHE, VK_OEM_7},
        {SDLK_PAUSE, SDL_SCANCODE_PAUSE, VK_PAUSE},
        {SDLK_CAPSLOCK, SDL_SCANCODE_CAPSLOCK, VK_CAPITAL},
    };
    for (const Row& row : table)
    {
        const std::vector<MSG> down = Translate(KeyEvent(SDL_KEYDOWN, row.key, row.code));
        ASSERT_EQ(down.size(), 1u) << SDL_GetKeyName(row.key);
        EXPECT_EQ(down[0].message, WM_KEYDOWN);
        EXPECT_EQ(down[0].wParam, row.expected) << SDL_GetKeyName(row.key);
        const std::vector<MSG> up = Translate(KeyEvent(SDL_KEYUP, row.key, row.code));
        ASSERT_EQ(up.size(), 1u);
        EXPECT_EQ(up[0].message, WM_KEYUP);
        EXPECT_EQ(up[0].wParam, row.expected);
    }
    // Key data: repeat count 1 and the scan code; a repeat sets bit 30, a release bits 30 and 31.
    const MSG first = Translate(KeyEvent(SDL_KEYDOWN, SDLK_a, SDL_SCANCODE_A))[0];
    EXPECT_EQ(first.lParam, LPARAM(1 | (SDL_SCANCODE_A << 16)));
    const MSG repeated = Translate(KeyEvent(SDL_KEYDOWN, SDLK_a, SDL_SCANCODE_A, 0, 1))[0];
    EXPECT_EQ(repeated.lParam, LPARAM(1 | (SDL_SCANCODE_A << 16) | (1 << 30)));
    const MSG released = Translate(KeyEvent(SDL_KEYUP, SDLK_a, SDL_SCANCODE_A))[0];
    EXPECT_EQ(DWORD(released.lParam), DWORD(1u | (SDL_SCANCODE_A << 16) | (1u << 30) | (1u << 31)));
    // Keys without a virtual-key code give no message.
    EXPECT_TRUE(Translate(KeyEvent(SDL_KEYDOWN, SDLK_AUDIOPLAY, SDL_SCANCODE_AUDIOPLAY)).empty());
}

TEST(QorSdlPort, MouseEventsTranslateToMouseMessagesWithPackedPoints)
{
    UseSdl();
    struct Row
    {
        Uint32 type;
        Uint8 button;
        Uint8 clicks;
        UINT expected;
        WPARAM keys;
    };
    const Row table[] = {
        {SDL_MOUSEBUTTONDOWN, SDL_BUTTON_LEFT, 1, WM_LBUTTONDOWN, MK_LBUTTON},
        {SDL_MOUSEBUTTONUP, SDL_BUTTON_LEFT, 1, WM_LBUTTONUP, 0},
        {SDL_MOUSEBUTTONDOWN, SDL_BUTTON_LEFT, 2, WM_LBUTTONDBLCLK, MK_LBUTTON},
        {SDL_MOUSEBUTTONUP, SDL_BUTTON_LEFT, 2, WM_LBUTTONUP, 0},
        {SDL_MOUSEBUTTONDOWN, SDL_BUTTON_RIGHT, 1, WM_RBUTTONDOWN, MK_RBUTTON},
        {SDL_MOUSEBUTTONUP, SDL_BUTTON_RIGHT, 1, WM_RBUTTONUP, 0},
        {SDL_MOUSEBUTTONDOWN, SDL_BUTTON_RIGHT, 2, WM_RBUTTONDBLCLK, MK_RBUTTON},
        {SDL_MOUSEBUTTONUP, SDL_BUTTON_RIGHT, 2, WM_RBUTTONUP, 0},
        {SDL_MOUSEBUTTONDOWN, SDL_BUTTON_MIDDLE, 1, WM_MBUTTONDOWN, MK_MBUTTON},
        {SDL_MOUSEBUTTONUP, SDL_BUTTON_MIDDLE, 1, WM_MBUTTONUP, 0},
    };
    for (const Row& row : table)
    {
        const std::vector<MSG> out = Translate(ButtonEvent(row.type, row.button, row.clicks, 12, 34));
        ASSERT_EQ(out.size(), 1u);
        EXPECT_EQ(out[0].message, row.expected);
        EXPECT_EQ(out[0].wParam, row.keys);
        EXPECT_EQ(out[0].lParam, LPARAM((34 << 16) | 12));
    }
    SDL_Event motion;
    std::memset(&motion, 0, sizeof(motion));
    motion.type = SDL_MOUSEMOTION;
    motion.motion.x = 300;
    motion.motion.y = 7;
    motion.motion.state = SDL_BUTTON_LMASK;
    const std::vector<MSG> moved = Translate(motion);
    ASSERT_EQ(moved.size(), 1u);
    EXPECT_EQ(moved[0].message, WM_MOUSEMOVE);
    EXPECT_EQ(moved[0].wParam, WPARAM(MK_LBUTTON));
    EXPECT_EQ(GET_X_LPARAM(moved[0].lParam), 300);
    EXPECT_EQ(GET_Y_LPARAM(moved[0].lParam), 7);
}

TEST(QorSdlPort, TextInputBecomesBig5CharacterMessagesLeadByteFirst)
{
    UseSdl();
    SDL_Event text;
    std::memset(&text, 0, sizeof(text));
    text.type = SDL_TEXTINPUT;
    std::strcpy(text.text.text, "\xE4\xB8\xAD"
                                "b\xE6\x96\x87");
    const std::vector<MSG> out = Translate(text);
    const std::vector<WPARAM> bytes = {0xA4, 0xA4, 'b', 0xA4, 0xE5};
    ASSERT_EQ(out.size(), bytes.size());
    for (std::size_t i = 0; i < out.size(); ++i)
    {
        EXPECT_EQ(out[i].message, WM_CHAR);
        EXPECT_EQ(out[i].wParam, bytes[i]);
    }
    // A character without a Big5 form becomes "?".
    std::strcpy(text.text.text, "\xF0\x9F\x98\x80");
    const std::vector<MSG> unknown = Translate(text);
    ASSERT_EQ(unknown.size(), 1u);
    EXPECT_EQ(unknown[0].wParam, WPARAM('?'));
}

TEST(QorSdlPort, PushedEventsReachTheQueueForTheirWindow)
{
    UseSdl();
    CWnd window;
    ASSERT_TRUE(window.Create("events", 20, 20));
    Drain();
    const Uint32 id = SDL_GetWindowID(QorSdlGetWindow(window));
    SDL_Event key = KeyEvent(SDL_KEYDOWN, SDLK_F5, SDL_SCANCODE_F5, id);
    ASSERT_EQ(SDL_PushEvent(&key), 1);
    SDL_Event close;
    std::memset(&close, 0, sizeof(close));
    close.type = SDL_WINDOWEVENT;
    close.window.windowID = id;
    close.window.event = SDL_WINDOWEVENT_CLOSE;
    ASSERT_EQ(SDL_PushEvent(&close), 1);
    MSG msg;
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    EXPECT_EQ(msg.hwnd, window.GetSafeHwnd());
    EXPECT_EQ(msg.message, WM_KEYDOWN);
    EXPECT_EQ(msg.wParam, WPARAM(VK_F1 + 4));
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    EXPECT_EQ(msg.message, WM_CLOSE);
    DispatchMessageA(&msg);
    EXPECT_FALSE(IsWindow(msg.hwnd));
}

TEST(QorSdlPort, TimersRunOnSdlsClock)
{
    UseSdl();
    CWnd window;
    ASSERT_TRUE(window.Create("timer", 10, 10));
    Drain();
    const DWORD start = GetTickCount();
    ASSERT_EQ(window.SetTimer(9, 25), 9u);
    MSG msg;
    for (int i = 1; i <= 3; ++i)
    {
        ASSERT_EQ(GetMessageA(&msg, nullptr, WM_TIMER, WM_TIMER), 1);
        EXPECT_EQ(msg.wParam, 9u);
        EXPECT_GE(msg.time - start, DWORD(25 * i));
    }
    EXPECT_GE(GetTickCount() - start, 75u);
    window.KillTimer(9);
}

TEST(QorSdlPort, TextInputSwitchesWithTheInputMethod)
{
    UseSdl();
    QorGetVideoPort();
    EXPECT_FALSE(QorIsTextInputActive());
    EXPECT_FALSE(SDL_IsTextInputActive());
    QorStartTextInput();
    EXPECT_TRUE(SDL_IsTextInputActive());
    EXPECT_TRUE(ImmIsIME(GetKeyboardLayout(0)));
    EXPECT_TRUE(ImmSimulateHotKey(nullptr, IME_THOTKEY_IME_NONIME_TOGGLE));
    EXPECT_FALSE(SDL_IsTextInputActive());
}

TEST(QorSdlPort, TextRendersTheSameAsOnTheHeadlessPort)
{
    UseSdl();
    // Drawing is shared software: the same Big5 text gives the same pixels whatever the port.
    CDC dc;
    ASSERT_TRUE(dc.CreateCompatibleDC(nullptr));
    QorPicBlock picture(QorPicBlock::Bit8);
    unsigned char colour = 1;
    picture.SetText(&dc, "\xA4\xA4", &colour);
    EXPECT_EQ(picture.GetWidth(), 32);
    EXPECT_EQ(picture.GetHeight(), 16);
    long ink = 0;
    for (long i = 0; i < 32 * 16; ++i)
        ink += picture.GetDataPtr()[i] == 1;
    EXPECT_GT(ink, 20);
}
