// Windows, messages, timers, the message box and the input method on the headless port.
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
struct Received
{
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

std::vector<Received> g_received;

LRESULT Record(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    g_received.push_back(Received{window, message, wParam, lParam});
    if (message == WM_USER + 1)
        return 1234;
    return DefWindowProcA(window, message, wParam, lParam);
}

// Drops whatever earlier tests of this process left in the queue.
void Drain()
{
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
    {
    }
}

QorManualClock& Clock()
{
    QorManualClock* clock = QorGetManualClock();
    EXPECT_NE(clock, nullptr);
    return *clock;
}

class QorWindowTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(QorGetPortKind(), QorPortKind::kHeadless);
        Drain();
        g_received.clear();
        ASSERT_TRUE(window.Create("test", 64, 48));
        window.SetWindowProc(Record);
        events = QorGetHeadlessEvents();
        ASSERT_NE(events, nullptr);
    }
    void TearDown() override
    {
        window.DestroyWindow();
        Drain();
        QorStopTextInput();
    }

    CWnd window;
    QorHeadlessEventPort* events = nullptr;
};
} // namespace

TEST_F(QorWindowTest, WindowHasItsClientSizeTitleAndHeadlessScreen)
{
    RECT client = {1, 1, 1, 1};
    window.GetClientRect(&client);
    EXPECT_EQ(client.left, 0);
    EXPECT_EQ(client.top, 0);
    EXPECT_EQ(client.right, 64);
    EXPECT_EQ(client.bottom, 48);
    EXPECT_TRUE(IsWindow(window));
    EXPECT_EQ(CWnd::FromHandle(window), &window);
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    EXPECT_EQ(port->GetWidth(), 64);
    EXPECT_EQ(port->GetTitle(), "test");
    // Titles are Big5 and reach the port as UTF-8.
    window.SetWindowText("\xA4\xA4\xA4\xE5");
    EXPECT_EQ(port->GetTitle(), "\xE4\xB8\xAD\xE6\x96\x87");
    EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), 1024);
    EXPECT_EQ(GetSystemMetrics(SM_CYSCREEN), 768);
    QorGetHeadlessVideo()->SetScreenSize(800, 600);
    EXPECT_EQ(GetSystemMetrics(SM_CXSCREEN), 800);
    EXPECT_EQ(GetSystemMetrics(SM_CYSCREEN), 600);
    QorGetHeadlessVideo()->SetScreenSize(1024, 768);
    CWnd second;
    EXPECT_FALSE(second.Create("zero", 0, 10));
    EXPECT_FALSE(window.Create("again", 10, 10));
}

TEST_F(QorWindowTest, WindowContextsDrawIntoTheFrameAndPresentWhatChanged)
{
    QorHeadlessWindowPort* port = QorGetHeadlessWindow(window);
    ASSERT_NE(port, nullptr);
    const unsigned long before = port->GetPresentCount();
    {
        CClientDC dc(&window);
        dc.FillSolidRect(10, 5, 4, 3, RGB(200, 100, 50));
        EXPECT_EQ(port->GetPresentCount(), before + 1);
        const RECT area = port->GetLastPresentArea();
        EXPECT_EQ(area.left, 10);
        EXPECT_EQ(area.top, 5);
        EXPECT_EQ(area.right, 14);
        EXPECT_EQ(area.bottom, 8);
        EXPECT_EQ(port->GetPresentedPixel(13, 7), RGB(200, 100, 50));
        EXPECT_EQ(port->GetPresentedPixel(14, 7), RGB(0, 0, 0));
        // A window takes no bitmap; its pixels read back through the context.
        HBITMAP bitmap = CreateBitmap(2, 2, 1, 32, nullptr);
        EXPECT_EQ(SelectObject(dc, bitmap), nullptr);
        DeleteObject(bitmap);
        EXPECT_EQ(dc.GetPixel(10, 5), RGB(200, 100, 50));
        // Drawing entirely outside the client area presents nothing.
        dc.FillSolidRect(100, 100, 5, 5, RGB(1, 1, 1));
        EXPECT_EQ(port->GetPresentCount(), before + 1);
    }
    CDC* dc = window.GetDC();
    ASSERT_NE(dc, nullptr);
    CDC memory;
    ASSERT_TRUE(memory.CreateCompatibleDC(dc));
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.CreateCompatibleBitmap(dc, 2, 2));
    CBitmap* old = memory.SelectObject(&bitmap);
    memory.FillSolidRect(0, 0, 2, 2, RGB(0, 255, 0));
    ASSERT_TRUE(dc->BitBlt(62, 46, 4, 4, &memory, 0, 0, SRCCOPY));
    EXPECT_EQ(port->GetPresentedPixel(63, 47), RGB(0, 255, 0));
    EXPECT_EQ(port->GetPresentCount(), before + 2);
    // Stretched to the whole client area.
    ASSERT_TRUE(dc->StretchBlt(0, 0, 64, 48, &memory, 0, 0, 2, 2, SRCCOPY));
    EXPECT_EQ(port->GetPresentedPixel(0, 0), RGB(0, 255, 0));
    EXPECT_EQ(port->GetPresentedPixel(63, 47), RGB(0, 255, 0));
    memory.SelectObject(old);
    EXPECT_EQ(window.ReleaseDC(dc), 1);
}

TEST_F(QorWindowTest, PostedMessagesComeBackInOrderAndReachTheProcedure)
{
    ASSERT_TRUE(window.PostMessage(WM_USER, 1, 2));
    ASSERT_TRUE(PostMessageA(window, WM_USER + 2, 3, 4));
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(msg.message, WM_USER);
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    EXPECT_EQ(msg.hwnd, window.GetSafeHwnd());
    EXPECT_EQ(msg.message, WM_USER);
    EXPECT_EQ(msg.wParam, 1u);
    EXPECT_EQ(msg.lParam, 2);
    EXPECT_EQ(msg.time, Clock().GetMillis());
    DispatchMessageA(&msg);
    ASSERT_EQ(g_received.size(), 1u);
    EXPECT_EQ(g_received[0].window, window.GetSafeHwnd());
    EXPECT_EQ(g_received[0].message, WM_USER);
    EXPECT_EQ(g_received[0].wParam, 1u);
    EXPECT_EQ(g_received[0].lParam, 2);
    // A range filter skips what lies outside it.
    ASSERT_TRUE(PostMessageA(window, WM_USER + 9, 0, 0));
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, WM_USER + 9, WM_USER + 9, PM_REMOVE));
    EXPECT_EQ(msg.message, WM_USER + 9);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.message, WM_USER + 2);
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    // Sending calls the procedure at once and returns its result.
    EXPECT_EQ(window.SendMessage(WM_USER + 1, 7, 8), 1234);
    EXPECT_EQ(g_received.back().message, WM_USER + 1);
    EXPECT_FALSE(PostMessageA(reinterpret_cast<HWND>(0x1), WM_USER, 0, 0));
}

TEST_F(QorWindowTest, QuitComesAfterThePostedMessagesAndGetMessageReturnsZero)
{
    PostMessageA(window, WM_USER, 0, 0);
    PostQuitMessage(3);
    MSG msg;
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    EXPECT_EQ(msg.message, WM_USER);
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 0);
    EXPECT_EQ(msg.message, WM_QUIT);
    EXPECT_EQ(msg.wParam, 3u);
    // Nothing left to wait for on the headless port.
    EXPECT_EQ(GetMessageA(&msg, nullptr, 0, 0), -1);
}

TEST_F(QorWindowTest, TimerCadenceFollowsTheManualClock)
{
    const unsigned long start = Clock().GetMillis();
    ASSERT_EQ(window.SetTimer(7, 100), 7u);
    MSG msg;
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    Clock().Advance(99);
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    Clock().Advance(1);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.message, WM_TIMER);
    EXPECT_EQ(msg.wParam, 7u);
    EXPECT_EQ(msg.hwnd, window.GetSafeHwnd());
    EXPECT_EQ(msg.time, start + 100);
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    // Ten steps of the interval give ten messages, one each.
    int count = 0;
    for (int i = 0; i < 10; ++i)
    {
        Clock().Advance(100);
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            EXPECT_EQ(msg.message, WM_TIMER);
            EXPECT_EQ(msg.time, start + 200 + 100 * unsigned(i));
            ++count;
        }
    }
    EXPECT_EQ(count, 10);
    // Late by 3.5 intervals: one message, and the next stays on the cadence (start + 1500).
    Clock().Advance(350);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    Clock().Advance(49);
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    Clock().Advance(1);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.time, start + 1500);
    EXPECT_TRUE(window.KillTimer(7));
    EXPECT_FALSE(window.KillTimer(7));
    Clock().Advance(1000);
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
}

TEST_F(QorWindowTest, BlockingGetMessageLetsTheClockRunToEachTimer)
{
    const unsigned long start = Clock().GetMillis();
    window.SetTimer(1, 30);
    window.SetTimer(2, 50);
    // Due times in order; on the tie at 150 the timer set first comes first.
    const std::vector<std::pair<unsigned long, WPARAM>> expected = {{30, 1},  {50, 2},  {60, 1},  {90, 1},
                                                                    {100, 2}, {120, 1}, {150, 1}, {150, 2}};
    MSG msg;
    for (const auto& [at, id] : expected)
    {
        ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
        EXPECT_EQ(msg.message, WM_TIMER);
        EXPECT_EQ(msg.wParam, id);
        EXPECT_EQ(msg.time, start + at);
        EXPECT_EQ(Clock().GetMillis(), start + at);
    }
    window.KillTimer(1);
    window.KillTimer(2);
    // Intervals below 10 ms are raised to 10.
    window.SetTimer(3, 1);
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    EXPECT_EQ(msg.time, start + 160);
    window.KillTimer(3);
}

TEST_F(QorWindowTest, TimerCallbacksAreCalledByDispatch)
{
    static std::vector<UINT_PTR> fired;
    fired.clear();
    const UINT_PTR id =
        SetTimer(window, 5, 20,
                 [](HWND, UINT message, UINT_PTR timer, DWORD) { fired.push_back(message == WM_TIMER ? timer : 0); });
    ASSERT_EQ(id, 5u);
    MSG msg;
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    DispatchMessageA(&msg);
    EXPECT_EQ(fired, std::vector<UINT_PTR>{5});
    EXPECT_TRUE(g_received.empty());
    KillTimer(window, 5);
    // A timer without a window gets an id of its own.
    const UINT_PTR thread = SetTimer(nullptr, 0, 15, nullptr);
    EXPECT_NE(thread, 0u);
    EXPECT_NE(SetTimer(nullptr, 0, 15, nullptr), thread);
    EXPECT_TRUE(KillTimer(nullptr, thread));
    EXPECT_TRUE(KillTimer(nullptr, thread + 1));
}

TEST_F(QorWindowTest, ScriptedInputArrivesWhenTheClockReachesIt)
{
    const unsigned long start = Clock().GetMillis();
    MSG key = {window, WM_KEYDOWN, VK_SPACE, 1, 0, {0, 0}};
    events->InjectAt(start + 250, key);
    EXPECT_EQ(events->GetPendingCount(), 1u);
    MSG msg;
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    EXPECT_EQ(msg.message, WM_KEYDOWN);
    EXPECT_EQ(msg.wParam, WPARAM(VK_SPACE));
    EXPECT_EQ(msg.time, start + 250);
    EXPECT_EQ(Clock().GetMillis(), start + 250);
    EXPECT_EQ(events->GetPendingCount(), 0u);
}

TEST_F(QorWindowTest, MouseMessagesPackTheirPointAndKeepTheCursor)
{
    events->InjectMouse(window, WM_LBUTTONDOWN, 12, 34, MK_LBUTTON);
    events->InjectMouse(window, WM_MOUSEMOVE, -3, 40);
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.message, WM_LBUTTONDOWN);
    EXPECT_EQ(msg.wParam, WPARAM(MK_LBUTTON));
    EXPECT_EQ(msg.lParam, (34 << 16) | 12);
    EXPECT_EQ(GET_X_LPARAM(msg.lParam), 12);
    EXPECT_EQ(GET_Y_LPARAM(msg.lParam), 34);
    EXPECT_EQ(msg.pt.x, 12);
    EXPECT_EQ(msg.pt.y, 34);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(GET_X_LPARAM(msg.lParam), -3);
    EXPECT_EQ(msg.pt.x, -3);
    DispatchMessageA(&msg);
    ASSERT_EQ(g_received.size(), 1u);
    EXPECT_EQ(g_received[0].message, WM_MOUSEMOVE);
}

TEST_F(QorWindowTest, KeysBecomeCharactersThroughTranslateWhileTheInputMethodIsOff)
{
    ASSERT_FALSE(QorIsTextInputActive());
    events->InjectKey(window, 'A');
    events->Inject(MSG{window, WM_KEYDOWN, VK_SHIFT, 1, 0, {0, 0}});
    events->InjectKey(window, '2');
    events->Inject(MSG{window, WM_KEYUP, VK_SHIFT, 1, 0, {0, 0}});
    events->InjectKey(window, VK_RETURN);
    events->InjectKey(window, VK_LEFT);
    std::vector<std::pair<UINT, WPARAM>> seen;
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
    {
        seen.emplace_back(msg.message, msg.wParam);
        TranslateMessage(&msg);
    }
    const std::vector<std::pair<UINT, WPARAM>> expected = {
        {WM_KEYDOWN, 'A'},     {WM_CHAR, 'a'},        {WM_KEYUP, 'A'},      {WM_KEYDOWN, VK_SHIFT},  {WM_KEYDOWN, '2'},
        {WM_CHAR, '@'},        {WM_KEYUP, '2'},       {WM_KEYUP, VK_SHIFT}, {WM_KEYDOWN, VK_RETURN}, {WM_CHAR, '\r'},
        {WM_KEYUP, VK_RETURN}, {WM_KEYDOWN, VK_LEFT}, {WM_KEYUP, VK_LEFT},
    };
    EXPECT_EQ(seen, expected);
    EXPECT_EQ(GetKeyState(VK_SHIFT), 0);
}

TEST_F(QorWindowTest, TextInputGivesBig5CharacterMessagesLeadByteFirst)
{
    QorStartTextInput();
    // With the input method on, letters come from text input, not from TranslateMessage.
    events->InjectKey(window, 'Z');
    events->InjectText(window, "\xE4\xB8\xAD"
                               "a\xE6\x96\x87");
    std::vector<std::pair<UINT, WPARAM>> seen;
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
    {
        TranslateMessage(&msg);
        seen.emplace_back(msg.message, msg.wParam);
    }
    const std::vector<std::pair<UINT, WPARAM>> expected = {
        {WM_KEYDOWN, 'Z'}, {WM_KEYUP, 'Z'}, {WM_CHAR, 0xA4}, {WM_CHAR, 0xA4},
        {WM_CHAR, 'a'},    {WM_CHAR, 0xA4}, {WM_CHAR, 0xE5},
    };
    EXPECT_EQ(seen, expected);
}

TEST_F(QorWindowTest, KeyStateFollowsRetrievedKeyMessages)
{
    events->Inject(MSG{window, WM_KEYDOWN, VK_CONTROL, 1, 0, {0, 0}});
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(GetKeyState(VK_CONTROL), 0);
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_NE(GetKeyState(VK_CONTROL) & 0x8000, 0);
    // Control held: no character.
    MSG letter = {window, WM_KEYDOWN, 'C', 1, 0, {0, 0}};
    EXPECT_FALSE(TranslateMessage(&letter));
    events->Inject(MSG{window, WM_KEYUP, VK_CONTROL, 1, 0, {0, 0}});
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(GetKeyState(VK_CONTROL), 0);
    EXPECT_TRUE(TranslateMessage(&letter));
}

TEST_F(QorWindowTest, DestroyingSendsDestroyAndDropsQueuedMessagesAndTimers)
{
    window.PostMessage(WM_USER, 0, 0);
    window.SetTimer(1, 10);
    const HWND handle = window;
    EXPECT_TRUE(window.DestroyWindow());
    EXPECT_EQ(window.GetSafeHwnd(), nullptr);
    EXPECT_FALSE(IsWindow(handle));
    ASSERT_EQ(g_received.size(), 1u);
    EXPECT_EQ(g_received[0].message, WM_DESTROY);
    Clock().Advance(100);
    MSG msg;
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(QorGetHeadlessWindow(handle), nullptr);
    EXPECT_EQ(GetDC(handle), nullptr);
}

TEST_F(QorWindowTest, CloseThroughTheDefaultProcedureDestroysTheWindow)
{
    const HWND handle = window;
    events->Inject(MSG{window, WM_CLOSE, 0, 0, 0, {0, 0}});
    MSG msg;
    ASSERT_EQ(GetMessageA(&msg, nullptr, 0, 0), 1);
    EXPECT_EQ(msg.message, WM_CLOSE);
    DispatchMessageA(&msg);
    EXPECT_FALSE(IsWindow(handle));
    ASSERT_EQ(g_received.size(), 2u);
    EXPECT_EQ(g_received[0].message, WM_CLOSE);
    EXPECT_EQ(g_received[1].message, WM_DESTROY);
}

TEST_F(QorWindowTest, HeadlessMessageBoxLogsAndChoosesTheDefaultButton)
{
    QorHeadlessVideoPort* video = QorGetHeadlessVideo();
    ASSERT_NE(video, nullptr);
    const unsigned long before = video->GetMessageBoxCount();
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(window, "NULL WND", "ERROR", MB_OK), IDOK);
    const std::string line = testing::internal::GetCapturedStderr();
    EXPECT_EQ(line, "ERROR: NULL WND\n");
    EXPECT_EQ(video->GetMessageBoxCount(), before + 1);
    EXPECT_EQ(video->GetLastMessageBoxText(), "NULL WND");
    EXPECT_EQ(video->GetLastMessageBoxCaption(), "ERROR");
    testing::internal::CaptureStderr();
    EXPECT_EQ(window.MessageBox("\xA4\xA4", nullptr, MB_YESNO), IDYES);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(video->GetLastMessageBoxText(), "\xE4\xB8\xAD");
    EXPECT_EQ(video->GetLastMessageBoxCaption(), "Error");
}

TEST_F(QorWindowTest, InputMethodSwitchesThroughTheHotKey)
{
    EXPECT_FALSE(QorIsTextInputActive());
    HKL layout = GetKeyboardLayout(0);
    EXPECT_FALSE(ImmIsIME(layout));
    EXPECT_TRUE(ImmSimulateHotKey(window, IME_THOTKEY_IME_NONIME_TOGGLE));
    EXPECT_TRUE(QorIsTextInputActive());
    EXPECT_TRUE(ImmIsIME(GetKeyboardLayout(0)));
    // The layout read before the toggle still names the old state.
    EXPECT_FALSE(ImmIsIME(layout));
    EXPECT_FALSE(ImmSimulateHotKey(window, 0x71));
    EXPECT_TRUE(ImmSimulateHotKey(window, IME_THOTKEY_IME_NONIME_TOGGLE));
    EXPECT_FALSE(QorIsTextInputActive());
}

TEST_F(QorWindowTest, TickCountIsTheClock)
{
    const DWORD before = GetTickCount();
    Clock().Advance(42);
    EXPECT_EQ(GetTickCount(), before + 42);
}
