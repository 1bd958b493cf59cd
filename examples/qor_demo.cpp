// qor_demo: a 640 x 480 scene of moving sprites, two child buffers, a Big5 text sprite and the screen
// effects (fade out and in, mosaic in, random dissolve), driven by a window timer. In a window when
// $DISPLAY is set (SDL2), headless otherwise. Screenshots of chosen frames (PNG) and one line per effect
// (summary.txt) go to the output directory.
// Usage: qor_demo [output-directory]
#include "DemoScene.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    stDemoOptions options;
    options.outputDirectory = argc > 1 ? argv[1] : "out";
    options.ticks = kDemoTicks;
    ::mkdir(options.outputDirectory.c_str(), 0777);

    const char* display = std::getenv("DISPLAY");
    const bool windowed = display && *display && QorSelectPort(QorPortKind::kSdl2);
    std::printf("qor_demo: %s, %d ticks of %u ms\n", windowed ? "SDL2 window" : "headless", options.ticks,
                options.tickMillis);

    stDemoResult result;
    if (!RunDemo(options, result))
    {
        std::fprintf(stderr, "qor_demo: cannot open the window\n");
        return 1;
    }
    for (const std::string& line : result.summary)
        std::printf("%s\n", line.c_str());
    for (const stDemoShot& shot : result.shots)
        std::printf("screenshot after tick %d: %s/demo-%03d-%s.png\n", shot.tick, options.outputDirectory.c_str(),
                    shot.tick, shot.name.c_str());
    std::printf("ran %d ticks\n", result.ticksRun);
    return result.ticksRun == options.ticks ? 0 : 1;
}
