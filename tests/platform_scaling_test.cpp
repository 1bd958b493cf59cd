// Scaled presentation and the mouse mapped back through it, fullscreen, and input-method composition: the
// viewport formulas, the SDL2 port under SDL's dummy drivers (software renderer) and the headless script.
#include "platform/QorScaling.h"
#include "platform/sdl2/QorSdlWindow.h"
#include "qor/platform.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using qor::detail::ComputeViewport;
using qor::detail::OutputToClient;
using qor::detail::PointToOutput;

namespace
{
bool SameRect(const RECT& a, const RECT& b)
{
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

::testing::AssertionResult IsRect(const RECT& actual, LONG left, LONG top, LONG right, LONG bottom)
{
    if (SameRect(actual, RECT{left, top, right, bottom}))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "rect (" << actual.left << ", " << actual.top << ", " << actual.right
                                         << ", " << actual.bottom << ")";
}

void UseSdl()
{
    if (QorGetPortKind() != QorPortKind::kSdl2)
    {
        ASSERT_EQ(QorSelectPort(QorPortKind::kSdl2, "dummy", "dummy"), 1);
    }
    ASSERT_EQ(QorGetPortKind(), QorPortKind::kSdl2);
}

SDL_Event MouseEvent(Uint32 type, Uint32 window, int x, int y)
{
    SDL_Event event;
    std::memset(&event, 0, sizeof(event));
    event.type = type;
    if (type == SDL_MOUSEMOTION)
    {
        event.motion.windowID = window;
        event.motion.x = x;
        event.motion.y = y;
    }
    else
    {
        event.button.windowID = window;
        event.button.button = SDL_BUTTON_LEFT;
        event.button.clicks = 1;
        event.button.state = type == SDL_MOUSEBUTTONDOWN ? SDL_PRESSED : SDL_RELEASED;
        event.button.x = x;
        event.button.y = y;
    }
    return event;
}

std::vector<MSG> Translate(const SDL_Event& event)
{
    std::vector<MSG> out;
    QorSdlTranslateEvent(event, out);
    return out;
}

// A window whose every client pixel shows its own coordinates: red x, green y, blue 0x5A.
struct CoordinateWindow
{
    static constexpr int kW = 40;
    static constexpr int kH = 30;

    CoordinateWindow()
    {
        created = window.Create("scaled", kW, kH) != FALSE;
        if (!created)
            return;
        CClientDC dc(&window);
        for (int y = 0; y < kH; ++y)
            for (int x = 0; x < kW; ++x)
                dc.SetPixel(x, y, RGB(x, y, 0x5A));
        sdl = QorSdlGetWindow(window);
    }

    // Resizes the SDL window and lets the renderer see the new size.
    void Resize(int w, int h)
    {
        SDL_SetWindowSize(sdl, w, h);
        SDL_PumpEvents();
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageA(&msg);
    }

    CWnd window;
    bool created = false;
    SDL_Window* sdl = nullptr;
};

// Every output pixel checked (the edges, the viewport's edges and a spread) shows the client pixel the mouse
// maps it to; presses on the bars arrive nowhere. Returns how many bar pixels were checked.
int ExpectEveryPixelMapsToWhatItShows(CoordinateWindow& w, int outW, int outH)
{
    const Uint32 id = SDL_GetWindowID(w.sdl);
    RECT v;
    EXPECT_TRUE(QorGetWindowViewport(w.window, &v));
    int checked = 0;
    int bars = 0;
    for (int py = 0; py < outH; ++py)
        for (int px = 0; px < outW; ++px)
        {
            const bool edge = px < 2 || py < 2 || px >= outW - 2 || py >= outH - 2 || px == v.left ||
                              px == v.right - 1 || py == v.top || py == v.bottom - 1 || (px + py) % 7 == 0;
            if (!edge)
                continue;
            const COLORREF shown = QorSdlReadOutputPixel(w.window, px, py);
            const std::vector<MSG> press = Translate(MouseEvent(SDL_MOUSEBUTTONDOWN, id, px, py));
            const bool inside = px >= v.left && px < v.right && py >= v.top && py < v.bottom;
            if (!inside)
            {
                EXPECT_EQ(shown, RGB(0, 0, 0)) << px << ", " << py;
                EXPECT_TRUE(press.empty()) << "a press on the bar at " << px << ", " << py << " was delivered";
                ++bars;
                continue;
            }
            EXPECT_EQ(GetBValue(shown), 0x5A) << px << ", " << py;
            if (press.size() != 1u)
            {
                ADD_FAILURE() << "press at " << px << ", " << py << " gave " << press.size() << " messages";
                continue;
            }
            EXPECT_EQ(press[0].message, UINT(WM_LBUTTONDOWN));
            EXPECT_EQ(GET_X_LPARAM(press[0].lParam), GetRValue(shown)) << "output " << px << ", " << py;
            EXPECT_EQ(GET_Y_LPARAM(press[0].lParam), GetGValue(shown)) << "output " << px << ", " << py;
            ++checked;
        }
    EXPECT_GT(checked, 100);
    Translate(MouseEvent(SDL_MOUSEBUTTONUP, id, v.left, v.top));
    return bars;
}
} // namespace

// ---- The formulas

TEST(QorScalingViewport, OneToOneIsCentredUnscaled)
{
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 640, 480, QorScaleMode::kOneToOne), 0, 0, 640, 480));
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 1000, 600, QorScaleMode::kOneToOne), 180, 60, 820, 540));
}

TEST(QorScalingViewport, PixelPerfectTakesTheLargestWholeFactorThatFits)
{
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 1280, 960, QorScaleMode::kPixelPerfect), 0, 0, 1280, 960));
    // 1920 x 1080 holds 3 x 640 across but only 2 x 480 down.
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 1920, 1080, QorScaleMode::kPixelPerfect), 320, 60, 1600, 1020));
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 1920, 1440, QorScaleMode::kPixelPerfect), 0, 0, 1920, 1440));
    // Smaller than the client area: factor 1, hanging over both sides equally.
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 600, 400, QorScaleMode::kPixelPerfect), -20, -40, 620, 440));
}

TEST(QorScalingViewport, LetterboxKeepsTheAspectAndRoundsTheOtherSideDown)
{
    // Height-limited: 600 high, 800 wide, bars of 100 left and right.
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 1000, 600, QorScaleMode::kLetterbox), 100, 0, 900, 600));
    // Width-limited: 1000 wide, 750 high.
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 1000, 800, QorScaleMode::kLetterbox), 0, 25, 1000, 775));
    // 33 x 25 * 100 / 33 = 75.75: the height rounds down to 75, centred in 80 (top 2).
    EXPECT_TRUE(IsRect(ComputeViewport(33, 25, 100, 80, QorScaleMode::kLetterbox), 0, 2, 100, 77));
}

TEST(QorScalingViewport, EmptySizesLeaveTheClientAreaUnscaled)
{
    EXPECT_TRUE(IsRect(ComputeViewport(640, 480, 0, 0, QorScaleMode::kPixelPerfect), -320, -240, 320, 240));
    EXPECT_TRUE(IsRect(ComputeViewport(0, 0, 100, 100, QorScaleMode::kLetterbox), 50, 50, 50, 50));
}

TEST(QorScalingMapping, CornersAndEdgesMapToTheClientsCornersAndEdges)
{
    const RECT v = ComputeViewport(640, 480, 1920, 1080, QorScaleMode::kPixelPerfect);
    long cx = -1;
    long cy = -1;
    ASSERT_TRUE(OutputToClient(v, 640, 480, 320, 60, cx, cy));
    EXPECT_EQ(cx, 0);
    EXPECT_EQ(cy, 0);
    ASSERT_TRUE(OutputToClient(v, 640, 480, 1599, 1019, cx, cy));
    EXPECT_EQ(cx, 639);
    EXPECT_EQ(cy, 479);
    ASSERT_TRUE(OutputToClient(v, 640, 480, 321, 61, cx, cy));
    EXPECT_EQ(cx, 0);
    EXPECT_EQ(cy, 0);
    ASSERT_TRUE(OutputToClient(v, 640, 480, 322, 1018, cx, cy));
    EXPECT_EQ(cx, 1);
    EXPECT_EQ(cy, 479);
    // The bars.
    EXPECT_FALSE(OutputToClient(v, 640, 480, 319, 500, cx, cy));
    EXPECT_FALSE(OutputToClient(v, 640, 480, 1600, 500, cx, cy));
    EXPECT_FALSE(OutputToClient(v, 640, 480, 700, 59, cx, cy));
    EXPECT_FALSE(OutputToClient(v, 640, 480, 700, 1020, cx, cy));
}

TEST(QorScalingMapping, LetterboxMapsByTheStretchFormula)
{
    const RECT v = ComputeViewport(640, 480, 1000, 600, QorScaleMode::kLetterbox);
    long cx = -1;
    long cy = -1;
    // Output column 100 + X shows client column X * 640 / 800.
    ASSERT_TRUE(OutputToClient(v, 640, 480, 100 + 5, 7, cx, cy));
    EXPECT_EQ(cx, 4);
    EXPECT_EQ(cy, 5);
    ASSERT_TRUE(OutputToClient(v, 640, 480, 899, 599, cx, cy));
    EXPECT_EQ(cx, 639);
    EXPECT_EQ(cy, 479);
}

TEST(QorScalingMapping, HiDpiPointsCoverSeveralDrawablePixels)
{
    long px = 0;
    long py = 0;
    // A 640 x 480 window whose drawable is 1280 x 960: point (10, 20) is pixel (20, 40).
    PointToOutput(10, 20, 640, 480, 1280, 960, px, py);
    EXPECT_EQ(px, 20);
    EXPECT_EQ(py, 40);
    // With pixel-perfect scaling the drawable size decides: factor 2, so the point is client pixel (10, 20).
    const RECT v = ComputeViewport(640, 480, 1280, 960, QorScaleMode::kPixelPerfect);
    long cx = 0;
    long cy = 0;
    ASSERT_TRUE(OutputToClient(v, 640, 480, px, py, cx, cy));
    EXPECT_EQ(cx, 10);
    EXPECT_EQ(cy, 20);
    PointToOutput(639, 479, 640, 480, 1280, 960, px, py);
    ASSERT_TRUE(OutputToClient(v, 640, 480, px, py, cx, cy));
    EXPECT_EQ(cx, 639);
    EXPECT_EQ(cy, 479);
}

// ---- The SDL2 port

TEST(QorSdlScaling, FactorOneShowsTheClientAreaUnscaled)
{
    UseSdl();
    CoordinateWindow w;
    ASSERT_TRUE(w.created);
    EXPECT_EQ(QorGetWindowScaling(w.window), QorScaleMode::kOneToOne);
    RECT v;
    ASSERT_TRUE(QorGetWindowViewport(w.window, &v));
    EXPECT_TRUE(IsRect(v, 0, 0, 40, 30));
    EXPECT_EQ(ExpectEveryPixelMapsToWhatItShows(w, 40, 30), 0);
}

TEST(QorSdlScaling, PixelPerfectAtFactorsTwoAndThreeMapsEveryPixelBack)
{
    UseSdl();
    CoordinateWindow w;
    ASSERT_TRUE(w.created);
    ASSERT_TRUE(QorSetWindowScaling(w.window, QorScaleMode::kPixelPerfect));
    ASSERT_TRUE(QorSetWindowResizable(w.window, TRUE));
    w.Resize(90, 64);
    RECT v;
    ASSERT_TRUE(QorGetWindowViewport(w.window, &v));
    EXPECT_TRUE(IsRect(v, 5, 2, 85, 62));
    EXPECT_GT(ExpectEveryPixelMapsToWhatItShows(w, 90, 64), 0);
    w.Resize(125, 100);
    ASSERT_TRUE(QorGetWindowViewport(w.window, &v));
    EXPECT_TRUE(IsRect(v, 2, 5, 122, 95));
    EXPECT_GT(ExpectEveryPixelMapsToWhatItShows(w, 125, 100), 0);
}

TEST(QorSdlScaling, LetterboxStretchesWithTheAspectKeptAndMapsEveryPixelBack)
{
    UseSdl();
    CoordinateWindow w;
    ASSERT_TRUE(w.created);
    ASSERT_TRUE(QorSetWindowScaling(w.window, QorScaleMode::kLetterbox));
    w.Resize(100, 60);
    RECT v;
    ASSERT_TRUE(QorGetWindowViewport(w.window, &v));
    // Height-limited: 60 high, 80 wide.
    EXPECT_TRUE(IsRect(v, 10, 0, 90, 60));
    EXPECT_GT(ExpectEveryPixelMapsToWhatItShows(w, 100, 60), 0);
    w.Resize(57, 70);
    ASSERT_TRUE(QorGetWindowViewport(w.window, &v));
    // Width-limited: 57 wide, 30 * 57 / 40 = 42 high.
    EXPECT_TRUE(IsRect(v, 0, 14, 57, 56));
    EXPECT_GT(ExpectEveryPixelMapsToWhatItShows(w, 57, 70), 0);
}

TEST(QorSdlScaling, ReleaseOnTheBarArrivesAtTheNearestEdgeAndMovesThereAreDropped)
{
    UseSdl();
    CoordinateWindow w;
    ASSERT_TRUE(w.created);
    ASSERT_TRUE(QorSetWindowScaling(w.window, QorScaleMode::kPixelPerfect));
    w.Resize(90, 64);
    const Uint32 id = SDL_GetWindowID(w.sdl);
    EXPECT_TRUE(Translate(MouseEvent(SDL_MOUSEMOTION, id, 1, 30)).empty());
    const std::vector<MSG> moved = Translate(MouseEvent(SDL_MOUSEMOTION, id, 9, 30));
    ASSERT_EQ(moved.size(), 1u);
    EXPECT_EQ(GET_X_LPARAM(moved[0].lParam), 2);
    EXPECT_EQ(GET_Y_LPARAM(moved[0].lParam), 14);
    ASSERT_EQ(Translate(MouseEvent(SDL_MOUSEBUTTONDOWN, id, 40, 30)).size(), 1u);
    const std::vector<MSG> released = Translate(MouseEvent(SDL_MOUSEBUTTONUP, id, 88, 63));
    ASSERT_EQ(released.size(), 1u);
    EXPECT_EQ(released[0].message, UINT(WM_LBUTTONUP));
    EXPECT_EQ(GET_X_LPARAM(released[0].lParam), 39);
    EXPECT_EQ(GET_Y_LPARAM(released[0].lParam), 29);
}

TEST(QorSdlScaling, AltEnterTogglesFullscreenUnlessTurnedOffAndItsKeysAreNotDelivered)
{
    UseSdl();
    CoordinateWindow w;
    ASSERT_TRUE(w.created);
    EXPECT_TRUE(QorIsFullscreenToggleOn());
    const Uint32 id = SDL_GetWindowID(w.sdl);
    SDL_Event down;
    std::memset(&down, 0, sizeof(down));
    down.type = SDL_KEYDOWN;
    down.key.windowID = id;
    down.key.keysym.scancode = SDL_SCANCODE_RETURN;
    down.key.keysym.sym = SDLK_RETURN;
    down.key.keysym.mod = KMOD_LALT;
    SDL_Event up = down;
    up.type = SDL_KEYUP;
    EXPECT_FALSE(QorIsWindowFullscreen(w.window));
    EXPECT_TRUE(Translate(down).empty());
    EXPECT_TRUE(Translate(up).empty());
    EXPECT_TRUE(QorIsWindowFullscreen(w.window));
    EXPECT_TRUE(Translate(down).empty());
    Translate(up);
    EXPECT_FALSE(QorIsWindowFullscreen(w.window));

    QorSetFullscreenToggle(FALSE);
    const std::vector<MSG> delivered = Translate(down);
    QorSetFullscreenToggle(TRUE);
    ASSERT_EQ(delivered.size(), 1u);
    EXPECT_EQ(delivered[0].message, UINT(WM_KEYDOWN));
    EXPECT_EQ(delivered[0].wParam, WPARAM(VK_RETURN));
    EXPECT_FALSE(QorIsWindowFullscreen(w.window));
    // Plain Enter is a key as always.
    down.key.keysym.mod = KMOD_NONE;
    ASSERT_EQ(Translate(down).size(), 1u);
}

TEST(QorSdlComposition, TextEditingBecomesCompositionMessagesWithTheTextInBig5)
{
    UseSdl();
    CWnd window;
    ASSERT_TRUE(window.Create("ime", 20, 20));
    const Uint32 id = SDL_GetWindowID(QorSdlGetWindow(window));
    SDL_Event edit;
    std::memset(&edit, 0, sizeof(edit));
    edit.type = SDL_TEXTEDITING;
    edit.edit.windowID = id;
    // "ㄓㄨㄥ" composing, the cursor after two characters.
    std::strcpy(edit.edit.text, "\xE3\x84\x93\xE3\x84\xA8\xE3\x84\xA5");
    edit.edit.start = 2;
    const std::vector<MSG> first = Translate(edit);
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(first[0].message, UINT(WM_IME_STARTCOMPOSITION));
    EXPECT_EQ(first[1].message, UINT(WM_IME_COMPOSITION));
    EXPECT_EQ(first[1].lParam, LPARAM(GCS_COMPSTR | GCS_CURSORPOS));
    HIMC context = ImmGetContext(window);
    ASSERT_NE(context, nullptr);
    char text[16] = {};
    // Bopomofo in Big5: A3 A4, A3 B9, A3 B6.
    ASSERT_EQ(ImmGetCompositionStringA(context, GCS_COMPSTR, text, sizeof text), 6);
    EXPECT_EQ(std::string(text, 6), "\xA3\xA4\xA3\xB9\xA3\xB6");
    // A short buffer takes what fits; the length stays the whole text's.
    char shortText[3] = {};
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_COMPSTR, shortText, 3), 6);
    EXPECT_EQ(std::string(shortText, 3), "\xA3\xA4\xA3");
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_CURSORPOS, nullptr, 0), 4);
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_COMPSTR, nullptr, 0), 6);

    // Committing ends the composition, then the characters follow.
    SDL_Event commit;
    std::memset(&commit, 0, sizeof(commit));
    commit.type = SDL_TEXTINPUT;
    commit.text.windowID = id;
    std::strcpy(commit.text.text, "\xE4\xB8\xAD");
    const std::vector<MSG> committed = Translate(commit);
    ASSERT_EQ(committed.size(), 3u);
    EXPECT_EQ(committed[0].message, UINT(WM_IME_ENDCOMPOSITION));
    EXPECT_EQ(committed[1].message, UINT(WM_CHAR));
    EXPECT_EQ(committed[1].wParam, WPARAM(0xA4));
    EXPECT_EQ(committed[2].wParam, WPARAM(0xA4));
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_COMPSTR, nullptr, 0), 0);
    EXPECT_TRUE(ImmReleaseContext(window, context));
}

TEST(QorSdlComposition, CaretAreaPlacesTheCandidateWindowThroughTheViewport)
{
    UseSdl();
    CoordinateWindow w;
    ASSERT_TRUE(w.created);
    ASSERT_TRUE(QorSetWindowScaling(w.window, QorScaleMode::kPixelPerfect));
    w.Resize(90, 64);
    COMPOSITIONFORM form = {CFS_RECT, {0, 0}, {10, 5, 12, 9}};
    EXPECT_TRUE(ImmSetCompositionWindow(ImmGetContext(w.window), &form));
    // Factor 2 at (5, 2): client x 10 to 12 is window x 25 to 29, y 5 to 9 is 12 to 20.
    RECT area;
    ASSERT_TRUE(QorSdlGetTextInputArea(w.window, &area));
    EXPECT_TRUE(IsRect(area, 25, 12, 29, 20));
    // A caret point is a one-pixel area: client (3, 4) is window (11, 10) to (13, 12).
    COMPOSITIONFORM point = {CFS_POINT, {3, 4}, {0, 0, 0, 0}};
    EXPECT_TRUE(ImmSetCompositionWindow(ImmGetContext(w.window), &point));
    ASSERT_TRUE(QorSdlGetTextInputArea(w.window, &area));
    EXPECT_TRUE(IsRect(area, 11, 10, 13, 12));
    EXPECT_FALSE(ImmSetCompositionWindow(nullptr, &form));
}

// ---- The headless port

TEST(QorHeadlessComposition, ScriptedCompositionArrivesAsMessagesAndEmptyTextEndsIt)
{
    ASSERT_EQ(QorGetPortKind(), QorPortKind::kHeadless);
    CWnd window;
    ASSERT_TRUE(window.Create("ime", 20, 20));
    QorHeadlessEventPort* events = QorGetHeadlessEvents();
    ASSERT_NE(events, nullptr);
    // The program reads the composition as it is when it handles a message: one change at a time here.
    const auto deliver = [&](const char* utf8, long cursor) {
        events->InjectComposition(window, utf8, cursor);
        std::vector<UINT> codes;
        MSG msg;
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
            codes.push_back(msg.message);
        return codes;
    };
    HIMC context = ImmGetContext(window);
    EXPECT_EQ(deliver("\xE3\x84\x93", 1), (std::vector<UINT>{WM_IME_STARTCOMPOSITION, WM_IME_COMPOSITION}));
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_COMPSTR, nullptr, 0), 2);
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_CURSORPOS, nullptr, 0), 2);
    EXPECT_EQ(deliver("\xE3\x84\x93\xE3\x84\xA8", 1), (std::vector<UINT>{WM_IME_COMPOSITION}));
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_COMPSTR, nullptr, 0), 4);
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_CURSORPOS, nullptr, 0), 2);
    EXPECT_EQ(deliver("", 0), (std::vector<UINT>{WM_IME_ENDCOMPOSITION}));
    EXPECT_EQ(ImmGetCompositionStringA(context, GCS_COMPSTR, nullptr, 0), 0);
    // An empty text with no composition in progress says nothing.
    EXPECT_EQ(deliver("", 0), (std::vector<UINT>{}));
    EXPECT_EQ(events->GetPendingCount(), 0u);
}

TEST(QorHeadlessComposition, CaretAreaIsKeptForTheInputMethod)
{
    CWnd window;
    ASSERT_TRUE(window.Create("ime", 20, 20));
    COMPOSITIONFORM form = {CFS_POINT, {3, 4}, {0, 0, 0, 0}};
    ASSERT_TRUE(ImmSetCompositionWindow(ImmGetContext(window), &form));
    const RECT area = QorGetHeadlessWindow(window)->GetTextInputArea();
    EXPECT_TRUE(IsRect(area, 3, 4, 4, 5));
    RECT v;
    ASSERT_TRUE(QorGetWindowViewport(window, &v));
    EXPECT_TRUE(IsRect(v, 0, 0, 20, 20));
}
