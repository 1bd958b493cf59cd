// The demo's scene and timeline; see DemoScene.h.
#include "DemoScene.h"

#include "qor/pictures.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace
{
const long kScreenW = 640;
const long kScreenH = 480;
const UINT_PTR kTimerId = 1;

// "歡迎使用 qor" in Big5.
const char kWelcome[] = "\xC5\x77\xAA\xEF\xA8\xCF\xA5\xCE qor";

// The timeline, in ticks.
const int kFadeOutAt = 40;
const int kFadeInAt = 62;
const int kMosaicAt = 84;
const int kDissolveAt = 108;
const unsigned long kFadeLength = 1000;
const unsigned long kMosaicLength = 1000;
const unsigned long kDissolveLength = 1500;
// Ticks after which a screenshot is taken, and their names.
const struct
{
    int tick;
    const char* name;
} kShots[] = {{20, "scene"},  {50, "fading-out"},  {60, "faded-out"}, {72, "fading-in"},
              {90, "mosaic"}, {120, "dissolving"}, {159, "final"}};

// The animations: a loop of balls of the six colours circling over the ground from the start, and a
// play-once drop of balls, large to small, that starts at kDropAt and stays on its last frame.
const int kDropAt = 46;
const long kOrbitX = 470, kOrbitY = 380;
const long kDropX = 300, kDropY = 60;

// Panels: where the children stand and how large they are.
const long kPanelX = 410, kPanelY = 40, kPanelW = 200, kPanelH = 150;
const long kDissolveX = 30, kDissolveY = 290, kDissolveW = 240, kDissolveH = 160;
// The card that dissolves in: 203 x 118 = 23954 points.
const long kCardX = 18, kCardY = 20, kCardW = 203, kCardH = 118;

// The palette index of a colour of the 6 x 6 x 6 cube (levels 0-5) in the standard colour palette:
// cube colour n sits at index n, except colours 0-9, which wrapped round to 216-225.
unsigned char Cube(int r, int g, int b)
{
    const int n = r * 36 + g * 6 + b;
    return static_cast<unsigned char>(n >= 10 ? n : 216 + n);
}

struct Mover
{
    QorGuider sprite;
    long x, y, dx, dy, size;
};

class DemoScene
{
public:
    DemoScene(const stDemoOptions& options, stDemoResult& result) : m_options(options), m_result(result) {}

    bool Open();
    /// One timer tick: the timeline, the moving sprites, the effects, one presentation. False when done.
    bool Tick();
    void Finish();
    CWnd& Window() { return m_window; }

private:
    /// A registry picture made by drawing into the corner of the main picture and copying it from there;
    /// its mask colour (the key) is index 0. The first redraw paints over the corner.
    /// With drawn, a copy of the picture is kept there too.
    template <class Painter> QorGuider MakePicture(long w, long h, Painter paint, QorPicBlock* drawn = nullptr)
    {
        QorPicBlock& main = *m_screen.GetMainBufferPicBlockPtr();
        const unsigned char key = 0;
        main.SetMask(&key);
        for (long y = 0; y < h; ++y)
            for (long x = 0; x < w; ++x)
                main.GetPixel(x, y)[0] = paint(x, y);
        if (drawn)
            drawn->Copy(main, 0, 0, w - 1, h - 1);
        return m_screen.CreatePicFromScreen(0, 0, w - 1, h - 1);
    }

    void Build();
    /// The animation set: written from pictures the scene draws, opened, and its two animations made.
    void BuildAnimations(const std::vector<QorPicBlock>& balls);
    void Animate(int t);
    void Timeline(int t);
    void StartEffect(const char* name, char started);
    void EndEffect();
    void MoveSprites();
    void AnimatePanel();
    void Shoot(int t);
    PALETTEENTRY Yellow();

    const stDemoOptions& m_options;
    stDemoResult& m_result;
    CWnd m_window;
    QorOffScreenBuffer m_screen;
    int m_tick = 0;
    std::vector<Mover> m_movers;
    QorGuider m_panel;
    QorGuider m_panelBall;
    long m_ballX = 10, m_ballY = 10, m_ballDx = 5, m_ballDy = 3;
    bool m_panelPaused = false;
    QorGuider m_dissolve;
    QorGuider m_card;
    QorGuider m_text;
    QorGuider m_shadow;
    // The effect in progress: its name, the steps seen and the colour of yellow when it started.
    std::string m_effect;
    int m_steps = 0;
    PALETTEENTRY m_yellowBefore = {};
    // The animation set, its file, and the two animations with what they did.
    QorAnimSet m_anims;
    std::string m_animPath;
    bool m_animPathTemporary = false;
    QorGuider m_orbit;
    QorGuider m_drop;
    int m_dropStopped = -1;
    int m_dropReported = -1;
};

bool DemoScene::Open()
{
    if (!m_window.Create("qor demo", int(kScreenW), int(kScreenH)))
        return false;
    m_screen.Initialize(QorPicBlock::Bit8, QorOffScreenBuffer::kDeviceBitmap, kScreenW, kScreenH, &m_window);
    m_screen.SetMainVisibleRect(QorRect(0, 0, kScreenW - 1, kScreenH - 1));
    m_screen.SetStdColorPalette();
    m_screen.SetTimerClick(m_options.tickMillis);
    Build();
    m_screen.Redraw(1, 1);
    return true;
}

void DemoScene::Build()
{
    // The background: a sky of blues over green ground, with a grid.
    QorGuider sky = MakePicture(kScreenW, kScreenH,
                                [](long x, long y) -> unsigned char
                                {
                                    if (x % 40 == 0 || y % 40 == 0)
                                        return y < 300 ? Cube(2, 3, 5) : Cube(1, 4, 1);
                                    if (y < 300)
                                        return Cube(0, int(y / 75), 5 - int(y / 100));
                                    return Cube(0, 3 - int((y - 300) / 60), 0);
                                });
    QorGuider back = m_screen.CreateSprite(sky, QorOffScreenBuffer::kMaxDepth);
    m_screen.SetMask(back, 0);

    // Twelve balls of three sizes and six colours, with a highlight, at three depths: the large ones pass
    // under the panels, the small ones over them.
    static const int kColours[6][3] = {{5, 0, 0}, {5, 3, 0}, {5, 5, 0}, {0, 4, 0}, {0, 3, 5}, {4, 0, 5}};
    const long sizes[3] = {48, 32, 24};
    const long depths[3] = {600, 400, 200};
    std::vector<QorPicBlock> balls(12, QorPicBlock(QorPicBlock::Bit8));
    for (int i = 0; i < 12; ++i)
    {
        const long d = sizes[i / 4];
        const int* c = kColours[i % 6];
        QorGuider ball = MakePicture(d, d,
                                     [d, c](long x, long y) -> unsigned char
                                     {
                                         const long r = d / 2;
                                         const long dx = x - r, dy = y - r;
                                         if (dx * dx + dy * dy > r * r)
                                             return 0;
                                         const long hx = x - d / 3, hy = y - d / 3;
                                         if (hx * hx + hy * hy < r * r / 9)
                                             return Cube(5, 5, 5);
                                         return Cube(c[0], c[1], c[2]);
                                     },
                                     &balls[i]);
        Mover m;
        m.sprite = m_screen.CreateSprite(ball, depths[i / 4]);
        m.size = d;
        m.x = 30 + (i * 97) % 560;
        m.y = 20 + (i * 61) % 400;
        m.dx = (i % 2 ? 1 : -1) * (3 + i % 4);
        m.dy = (i % 3 ? 1 : -1) * (2 + i % 3);
        m_screen.MoveSprite(m.sprite, m.x, m.y);
        m_movers.push_back(m);
    }
    BuildAnimations(balls);

    // A child panel with a checked background and a ball of its own bouncing inside it.
    QorGuider checks = MakePicture(kPanelW, kPanelH,
                                   [](long x, long y) -> unsigned char
                                   { return ((x / 20) + (y / 20)) % 2 ? Cube(4, 4, 5) : Cube(2, 2, 4); });
    QorGuider small = MakePicture(30, 30,
                                  [](long x, long y) -> unsigned char
                                  {
                                      const long dx = x - 15, dy = y - 15;
                                      return dx * dx + dy * dy <= 225 ? Cube(5, 1, 1) : 0;
                                  });
    m_panel = m_screen.CreateChild(kPanelW, kPanelH);
    m_screen.CreateSprite(m_panel, checks, 100);
    m_panelBall = m_screen.CreateSprite(m_panel, small, 10);
    m_screen.MoveSprite(m_panel, m_panelBall, m_ballX, m_ballY);
    m_screen.MoveChild(m_panel, kPanelX, kPanelY);
    m_screen.SetChildMask(m_panel, 0);

    // A second panel that a framed card dissolves into; the card's sprite stays hidden until then.
    QorGuider card = MakePicture(kCardW, kCardH,
                                 [](long x, long y) -> unsigned char
                                 {
                                     const long edge =
                                         std::min(std::min(x, kCardW - 1 - x), std::min(y, kCardH - 1 - y));
                                     if (edge < 6)
                                         return Cube(5, 4, 0);
                                     return (x + y) % 24 < 12 ? Cube(5, 5, 4) : Cube(3, 1, 4);
                                 });
    m_dissolve = m_screen.CreateChild(kDissolveW, kDissolveH);
    const unsigned char dark = Cube(0, 0, 1);
    m_screen.GetChildPicBlockPtr(m_dissolve)->SetMask(&dark);
    m_card = m_screen.CreateSprite(m_dissolve, card, 10);
    m_screen.MoveSprite(m_dissolve, m_card, kCardX, kCardY);
    m_screen.SetSpriteVisible(m_card, 0);
    m_screen.MoveChild(m_dissolve, kDissolveX, kDissolveY);
    m_screen.SetChildMask(m_dissolve, 0);

    // The greeting as a text sprite, over a shadow.
    const unsigned char yellow = Cube(5, 5, 0);
    const unsigned char black = Cube(0, 0, 0);
    m_shadow = m_screen.CreateSprite(QorGuider(), 21);
    m_screen.SetText(m_shadow, kWelcome, &black, "", -32, 0, FW_BOLD, 0, 0, 0);
    m_screen.MoveSprite(m_shadow, 42, 26);
    m_text = m_screen.CreateSprite(QorGuider(), 20);
    m_screen.SetText(m_text, kWelcome, &yellow, "", -32, 0, FW_BOLD, 0, 0, 0);
    m_screen.MoveSprite(m_text, 40, 24);

    QorRect area;
    m_screen.ReceiveSpriteRect(m_text, &area);
    char line[160];
    std::snprintf(line, sizeof line, "text sprite: %zu Big5 bytes rendered as a %ld x %ld picture at (%d, %d)",
                  std::strlen(kWelcome), area.Width(), area.Height(), area.left, area.top);
    m_result.summary.push_back(line);
}

void DemoScene::BuildAnimations(const std::vector<QorPicBlock>& balls)
{
    // Pool: a ball of each colour (the small ones of the movers, 8-11, then 4 and 5 of the middle size for
    // the last two colours), and a ball of each size for the drop.
    QorAnimSetWriter writer;
    const int small[6] = {8, 9, 10, 11, 4, 5};
    for (int i : small)
        writer.AddPicture(balls[i]);
    const long large = writer.AddPicture(balls[0]);
    const long middle = writer.AddPicture(balls[6]);
    const long little = writer.AddPicture(balls[8]);

    // Six places on a circle of radius 40, one frame each.
    const long orbitPics[6] = {0, 1, 2, 3, 4, 5};
    const long orbitXs[6] = {40, 20, -20, -40, -20, 20};
    const long orbitYs[6] = {0, 35, 35, 0, -35, -35};
    writer.AddUnit("orbit", 1, kOrbitX, kOrbitY, 150, orbitPics, orbitXs, orbitYs, 6);
    const long dropPics[6] = {large, large, middle, middle, little, little};
    const long dropXs[6] = {0, 6, 16, 22, 28, 32};
    const long dropYs[6] = {0, 30, 70, 120, 170, 210};
    writer.AddUnit("drop", 0, kDropX, kDropY, 150, dropPics, dropXs, dropYs, 6);
    writer.SetDefaultOpenFlag(QorAnimSet::kReadHeaders);

    if (!m_options.outputDirectory.empty())
        m_animPath = m_options.outputDirectory + "/demo.qas";
    else
    {
        char name[] = "/tmp/qor-demo-XXXXXX";
        const int fd = ::mkstemp(name);
        if (fd >= 0)
        {
            ::close(fd);
            m_animPath = name;
            m_animPathTemporary = true;
        }
    }
    const unsigned long bytes = m_animPath.empty() ? 0 : writer.Write(m_animPath.c_str());
    m_anims.SetOffScreenBufferPtr(&m_screen);
    const char opened = bytes > 0 && m_anims.Open(m_animPath.c_str(), QorAnimSet::kFileDefault);
    m_orbit = m_anims.CreateAnim("orbit");
    m_drop = m_anims.CreateAnim("drop");
    m_anims.ActiveAnim(m_orbit);

    char line[160];
    std::snprintf(line, sizeof line, "animation set: %lu bytes, %ld pictures, %ld units, opened %d with flag %ld",
                  bytes, m_anims.GetPicCount(), m_anims.GetUnitCount(), opened, m_anims.GetOpenFlag());
    m_result.summary.push_back(line);
}

void DemoScene::Animate(int t)
{
    if (t == kDropAt)
        m_anims.ActiveAnim(m_drop);
    const auto* drop = static_cast<QorAnimSet::QorAnimUnitRun*>(m_drop.object);
    const bool finishedBefore = drop && drop->IsFinished();
    m_anims.TimerClick(1);
    if (drop && t >= kDropAt && m_dropStopped < 0 && m_anims.IsAnimActive(m_drop) == 0)
        m_dropStopped = t;
    if (drop && finishedBefore && !drop->IsFinished())
        m_dropReported = t;
}

bool DemoScene::Tick()
{
    const int t = m_tick;
    Timeline(t);
    MoveSprites();
    if (!m_panelPaused)
        AnimatePanel();
    Animate(t);
    if (m_screen.OnTimer())
        ++m_steps;
    else if (!m_effect.empty())
        EndEffect();
    m_screen.DrawToScreen(0, 0);
    Shoot(t);
    ++m_tick;
    m_result.ticksRun = m_tick;
    return m_tick < m_options.ticks;
}

void DemoScene::Timeline(int t)
{
    if (t == kFadeOutAt)
        StartEffect("fade out", m_screen.FadeOut(kFadeLength));
    else if (t == kFadeInAt)
        StartEffect("fade in", m_screen.FadeIn(kFadeLength));
    else if (t == kMosaicAt)
    {
        // The panel's own animation would paint over the mosaic.
        m_panelPaused = true;
        StartEffect("mosaic in", m_screen.MosiacIn(m_panel, kMosaicLength, 1, 16));
    }
    else if (t == kDissolveAt)
    {
        // The dissolve's order comes from rand(): seeded, every run shows the same frames.
        std::srand(2024);
        StartEffect("random dissolve", m_screen.PutImageRandomly(m_dissolve, kDissolveLength, m_card, 1));
    }
}

PALETTEENTRY DemoScene::Yellow()
{
    // Mode 0 keeps library entry i at logical entry i - 10.
    PALETTEENTRY e = {};
    m_screen.GetPalettePtr()->GetPaletteEntries(Cube(5, 5, 0) - 10, 1, &e);
    return e;
}

void DemoScene::StartEffect(const char* name, char started)
{
    if (!started)
    {
        m_result.summary.push_back(std::string(name) + ": refused");
        return;
    }
    m_effect = name;
    m_steps = 0;
    m_yellowBefore = Yellow();
}

void DemoScene::EndEffect()
{
    char line[200];
    const unsigned long click = m_options.tickMillis;
    if (m_effect == "fade out" || m_effect == "fade in")
    {
        const PALETTEENTRY after = Yellow();
        std::snprintf(line, sizeof line, "%s: %d steps of %lu ms over %lu ms; yellow (%d, %d, %d) -> (%d, %d, %d)",
                      m_effect.c_str(), m_steps, click, kFadeLength, m_yellowBefore.peRed, m_yellowBefore.peGreen,
                      m_yellowBefore.peBlue, after.peRed, after.peGreen, after.peBlue);
    }
    else if (m_effect == "mosaic in")
    {
        std::snprintf(line, sizeof line, "mosaic in: %d steps of %lu ms over a %ld x %ld child, cells 16 down to 1",
                      m_steps, click, kPanelW, kPanelH);
        m_panelPaused = false;
    }
    else
    {
        // What the dissolve left in the panel: the card's pixels where they were pasted.
        const QorPicBlock& panel = *m_screen.GetChildPicBlockPtr(m_dissolve);
        const unsigned char dark = Cube(0, 0, 1);
        long pasted = 0;
        for (long y = kCardY; y < kCardY + kCardH; ++y)
            for (long x = kCardX; x < kCardX + kCardW; ++x)
                pasted += panel.GetPixel(x, y)[0] != dark ? 1 : 0;
        const long points = kCardW * kCardH;
        const long steps = long(kDissolveLength / click);
        std::snprintf(line, sizeof line,
                      "random dissolve: %ld points, %ld a step over %d steps; %ld pasted, %ld never pasted", points,
                      points / steps, m_steps, pasted, points - pasted);
        // From now on the card is part of the panel: shown by its sprite, repainted with it.
        m_screen.SetSpriteVisible(m_card, 1);
        m_screen.RedrawChild(m_dissolve, 0);
        m_screen.Redraw(kDissolveX, kDissolveY, kDissolveX + kDissolveW - 1, kDissolveY + kDissolveH - 1, 0, 0);
    }
    m_result.summary.push_back(line);
    m_effect.clear();
}

void DemoScene::MoveSprites()
{
    for (Mover& m : m_movers)
    {
        m.x += m.dx;
        m.y += m.dy;
        if (m.x < 0 || m.x + m.size > kScreenW)
        {
            m.dx = -m.dx;
            m.x += 2 * m.dx;
        }
        if (m.y < 0 || m.y + m.size > kScreenH)
        {
            m.dy = -m.dy;
            m.y += 2 * m.dy;
        }
        m_screen.MoveSprite(m.sprite, m.x, m.y);
        m_screen.RedrawSprite(m.sprite, 0);
    }
}

void DemoScene::AnimatePanel()
{
    m_ballX += m_ballDx;
    m_ballY += m_ballDy;
    if (m_ballX < 0 || m_ballX + 30 > kPanelW)
    {
        m_ballDx = -m_ballDx;
        m_ballX += 2 * m_ballDx;
    }
    if (m_ballY < 0 || m_ballY + 30 > kPanelH)
    {
        m_ballDy = -m_ballDy;
        m_ballY += 2 * m_ballDy;
    }
    m_screen.MoveSprite(m_panel, m_panelBall, m_ballX, m_ballY);
    m_screen.RedrawSprite(m_panel, m_panelBall, 0, 0);
    // The panel's place in the main buffer, with whatever lies over it.
    m_screen.Redraw(kPanelX, kPanelY, kPanelX + kPanelW - 1, kPanelY + kPanelH - 1, 0, 0);
}

void DemoScene::Shoot(int t)
{
    const auto* shot = std::find_if(std::begin(kShots), std::end(kShots), [t](const auto& s) { return s.tick == t; });
    if (shot == std::end(kShots))
        return;
    stDemoShot taken;
    taken.tick = t;
    taken.name = shot->name;
    if (!QorCaptureScreen(m_screen, taken.picture))
        return;

    if (!m_options.outputDirectory.empty())
    {
        char file[64];
        std::snprintf(file, sizeof file, "/demo-%03d-%s.png", t, shot->name);
        QorSavePicturePng(taken.picture, (m_options.outputDirectory + file).c_str());
    }
    m_result.shots.push_back(std::move(taken));
}

void DemoScene::Finish()
{
    const auto* orbit = static_cast<QorAnimSet::QorAnimUnitRun*>(m_orbit.object);
    const auto* drop = static_cast<QorAnimSet::QorAnimUnitRun*>(m_drop.object);
    QorRect orbitArea, dropArea;
    m_screen.ReceiveSpriteRect(*m_anims.GetSprite(m_orbit), &orbitArea);
    m_screen.ReceiveSpriteRect(*m_anims.GetSprite(m_drop), &dropArea);
    char line[200];
    std::snprintf(line, sizeof line, "looping animation: %lu frames, %d ticks, next frame %lu, at (%d, %d)",
                  orbit ? orbit->GetFrameCount() : 0, m_tick, orbit ? orbit->GetFrameIndex() : 0, orbitArea.left,
                  orbitArea.top);
    m_result.summary.push_back(line);
    std::snprintf(line, sizeof line,
                  "play-once animation: %lu frames from tick %d, stopped at tick %d, reported at tick %d, "
                  "resting at (%d, %d); %ld animations counted active",
                  drop ? drop->GetFrameCount() : 0, kDropAt, m_dropStopped, m_dropReported, dropArea.left,
                  dropArea.top, m_anims.GetActAnimNum());
    m_result.summary.push_back(line);
    m_anims.Close();
    if (m_animPathTemporary)
        ::unlink(m_animPath.c_str());

    if (m_options.outputDirectory.empty())
        return;
    const std::string path = m_options.outputDirectory + "/summary.txt";
    if (FILE* file = std::fopen(path.c_str(), "w"))
    {
        for (const std::string& line : m_result.summary)
            std::fprintf(file, "%s\n", line.c_str());
        std::fclose(file);
    }
}

// The running scene, for the window procedure.
DemoScene* g_scene = nullptr;

LRESULT DemoProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_TIMER && wParam == kTimerId && g_scene)
    {
        if (!g_scene->Tick())
        {
            ::KillTimer(window, kTimerId);
            ::PostQuitMessage(0);
        }
        return 0;
    }
    if (message == WM_DESTROY)
        ::PostQuitMessage(0);
    return DefWindowProcA(window, message, wParam, lParam);
}
} // namespace

bool RunDemo(const stDemoOptions& options, stDemoResult& result)
{
    result = stDemoResult();
    DemoScene scene(options, result);
    if (!scene.Open())
        return false;
    g_scene = &scene;
    scene.Window().SetWindowProc(DemoProcedure);
    if (options.ticks > 0 && scene.Window().SetTimer(kTimerId, options.tickMillis))
    {
        MSG msg;
        while (::GetMessageA(&msg, nullptr, 0, 0) > 0)
        {
            ::TranslateMessage(&msg);
            ::DispatchMessageA(&msg);
        }
    }
    g_scene = nullptr;
    scene.Finish();
    return true;
}
