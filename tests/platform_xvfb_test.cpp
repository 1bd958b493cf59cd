// The SDL2 port on a real X server: the test starts this program again under xvfb-run; the child opens
// a window with the x11 driver, presents a picture into it, captures the whole screen with `xwd -root`
// and writes the colours it finds; the parent checks them. Skipped where Xvfb or xwd is missing.
#include "test_util.h"

#include "platform/sdl2/QorSdlWindow.h"
#include "qor/pictures.h"
#include "qor/platform.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace
{
// The child's result file; set by the parent in the child's environment.
const char* const kCaptureVariable = "QOR_XVFB_CAPTURE";

bool HaveCommand(const char* name)
{
    const std::string probe = std::string("command -v ") + name + " > /dev/null 2>&1";
    return std::system(probe.c_str()) == 0;
}

std::uint32_t BigEndian32(const std::vector<std::uint8_t>& bytes, std::size_t at)
{
    return (std::uint32_t(bytes[at]) << 24) | (std::uint32_t(bytes[at + 1]) << 16) |
           (std::uint32_t(bytes[at + 2]) << 8) | std::uint32_t(bytes[at + 3]);
}

int MaskShift(std::uint32_t mask)
{
    int shift = 0;
    while (mask && !(mask & 1u))
    {
        mask >>= 1;
        ++shift;
    }
    return shift;
}

// An X window dump in ZPixmap format of 24 or 32 bits per pixel.
struct WindowDump
{
    bool Read(const std::string& path)
    {
        bytes = qortest::ReadAll(path);
        if (bytes.size() < 100)
            return false;
        const std::uint32_t headerSize = BigEndian32(bytes, 0);
        if (BigEndian32(bytes, 4) != 7 || BigEndian32(bytes, 8) != 2)
            return false;
        width = BigEndian32(bytes, 16);
        height = BigEndian32(bytes, 20);
        msbFirst = BigEndian32(bytes, 28) == 1;
        bitsPerPixel = BigEndian32(bytes, 44);
        bytesPerLine = BigEndian32(bytes, 48);
        redMask = BigEndian32(bytes, 56);
        greenMask = BigEndian32(bytes, 60);
        blueMask = BigEndian32(bytes, 64);
        const std::uint32_t colours = BigEndian32(bytes, 76);
        pixels = headerSize + colours * 12;
        return (bitsPerPixel == 24 || bitsPerPixel == 32) &&
               pixels + std::size_t(bytesPerLine) * height <= bytes.size();
    }

    bool At(long x, long y, int& r, int& g, int& b) const
    {
        if (x < 0 || y < 0 || x >= long(width) || y >= long(height))
            return false;
        const std::size_t at = pixels + std::size_t(y) * bytesPerLine + std::size_t(x) * (bitsPerPixel / 8);
        std::uint32_t value = 0;
        const int n = int(bitsPerPixel / 8);
        for (int i = 0; i < n; ++i)
            value |= std::uint32_t(bytes[at + std::size_t(i)]) << (msbFirst ? 8 * (n - 1 - i) : 8 * i);
        r = int((value & redMask) >> MaskShift(redMask));
        g = int((value & greenMask) >> MaskShift(greenMask));
        b = int((value & blueMask) >> MaskShift(blueMask));
        return true;
    }

    std::vector<std::uint8_t> bytes;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool msbFirst = false;
    std::uint32_t bitsPerPixel = 0;
    std::uint32_t bytesPerLine = 0;
    std::uint32_t redMask = 0;
    std::uint32_t greenMask = 0;
    std::uint32_t blueMask = 0;
    std::size_t pixels = 0;
};

// Lets the X server map the window and the port answer its exposure.
void Pump(unsigned long ms)
{
    const DWORD start = GetTickCount();
    MSG msg;
    while (GetTickCount() - start < ms)
    {
        while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageA(&msg);
        QorGetClock().Delay(10);
    }
}
} // namespace

TEST(QorXvfb, ChildPresentsAPictureAndCapturesTheScreen)
{
    const char* output = std::getenv(kCaptureVariable);
    if (!output)
        GTEST_SKIP() << "runs as the child of RealWindowShowsThePresentedPictureOnTheXServer";
    ASSERT_EQ(QorSelectPort(QorPortKind::kSdl2, "x11", "dummy"), 1);
    // SDL's software path to the X server (XShm) rather than OpenGL: Mesa's software GL driver, unloaded
    // at exit, leaves an allocation that the leak checker can no longer attribute to any library.
    SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    SDL_SetHint(SDL_HINT_RENDER_DRIVER, "software");
    CWnd window;
    ASSERT_TRUE(window.Create("xvfb", 160, 120));
    Pump(300);
    // The whole client area in orange, a blue square at (20, 30) to (29, 39).
    unsigned char orange[4] = {0x30, 0x90, 0xE0, 0};
    unsigned char blue[4] = {0xC0, 0x20, 0x10, 0};
    QorPicBlock picture(QorPicBlock::Bit32, 160, 120, orange);
    picture.Fill(20, 30, 29, 39, blue);
    {
        CClientDC dc(&window);
        picture.DrawToDC(&dc, nullptr);
    }
    Pump(300);
    int x = 0;
    int y = 0;
    SDL_GetWindowPosition(QorSdlGetWindow(window), &x, &y);
    const std::string dump = std::string(output) + ".xwd";
    ASSERT_EQ(std::system(("xwd -root -silent -out " + dump).c_str()), 0);
    WindowDump screen;
    ASSERT_TRUE(screen.Read(dump));
    std::ofstream out(output);
    out << x << " " << y << "\n";
    for (const auto& [px, py] :
         std::vector<std::pair<long, long>>{{x + 80, y + 60}, {x + 25, y + 35}, {x + 159, y + 119}})
    {
        int r = -1, g = -1, b = -1;
        screen.At(px, py, r, g, b);
        out << r << " " << g << " " << b << "\n";
    }
    // Composition through the real event queue: a text-editing event as the input method sends it.
    SDL_Event edit;
    std::memset(&edit, 0, sizeof(edit));
    edit.type = SDL_TEXTEDITING;
    edit.edit.windowID = SDL_GetWindowID(QorSdlGetWindow(window));
    std::strcpy(edit.edit.text, "\xE3\x84\x93\xE3\x84\xA8");
    edit.edit.start = 1;
    ASSERT_EQ(SDL_PushEvent(&edit), 1);
    std::vector<UINT> codes;
    MSG msg;
    for (int i = 0; i < 100 && codes.size() < 2; ++i)
    {
        while (PeekMessageA(&msg, window, 0, 0, PM_REMOVE))
            if (msg.message == WM_IME_STARTCOMPOSITION || msg.message == WM_IME_COMPOSITION)
                codes.push_back(msg.message);
        SDL_Delay(10);
    }
    HIMC context = ImmGetContext(window);
    out << codes.size() << " " << ImmGetCompositionStringA(context, GCS_COMPSTR, nullptr, 0) << " "
        << ImmGetCompositionStringA(context, GCS_CURSORPOS, nullptr, 0) << "\n";
    ASSERT_TRUE(out.good());
}

TEST(QorXvfb, RealWindowShowsThePresentedPictureOnTheXServer)
{
    if (std::getenv(kCaptureVariable))
        GTEST_SKIP() << "the child does not start another child";
    if (!HaveCommand("xvfb-run") || !HaveCommand("Xvfb") || !HaveCommand("xwd"))
        GTEST_SKIP() << "xvfb-run, Xvfb or xwd (x11-apps) is not installed";
    const std::string result = qortest::TempPath("colours.txt");
    std::remove(result.c_str());
    const std::string command =
        std::string(kCaptureVariable) + "=" + result + " xvfb-run -a -s '-screen 0 640x480x24' " +
        std::filesystem::read_symlink("/proc/self/exe").string() +
        " --gtest_filter=QorXvfb.ChildPresentsAPictureAndCapturesTheScreen > " + result + ".log 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream log(result + ".log");
    std::stringstream text;
    text << log.rdbuf();
    ASSERT_EQ(status, 0) << text.str();
    std::ifstream in(result);
    int x = -1, y = -1;
    ASSERT_TRUE(in >> x >> y) << text.str();
    EXPECT_GE(x, 0);
    EXPECT_GE(y, 0);
    int r = 0, g = 0, b = 0;
    // Inside the window: the picture's orange, and its blue square.
    ASSERT_TRUE(in >> r >> g >> b);
    EXPECT_EQ(r, 0xE0);
    EXPECT_EQ(g, 0x90);
    EXPECT_EQ(b, 0x30);
    ASSERT_TRUE(in >> r >> g >> b);
    EXPECT_EQ(r, 0x10);
    EXPECT_EQ(g, 0x20);
    EXPECT_EQ(b, 0xC0);
    // The last column and row of the picture are not drawn: the window's black shows.
    ASSERT_TRUE(in >> r >> g >> b);
    EXPECT_EQ(r, 0);
    EXPECT_EQ(g, 0);
    EXPECT_EQ(b, 0);
    // The composition: start and change messages, two Big5 characters, the cursor after the first.
    int messages = 0, length = 0, cursor = 0;
    ASSERT_TRUE(in >> messages >> length >> cursor) << text.str();
    EXPECT_EQ(messages, 2);
    EXPECT_EQ(length, 4);
    EXPECT_EQ(cursor, 2);
}
