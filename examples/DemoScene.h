#pragma once

// The scene of qor_demo: a 640 x 480 8-bit screen with a background, a dozen moving sprites at several
// depths, two child buffers shown inside the main buffer, a line of Big5 text as a text sprite, and a
// timeline of effects (fade out and in, mosaic in, random dissolve) driven by a window timer.
#include "qor.h"

#include <string>
#include <vector>

struct stDemoOptions
{
    /// Where screenshots (PNG) and summary.txt go; nothing is written when empty.
    std::string outputDirectory;
    /// The timer interval and the compositor's timer click, in milliseconds.
    unsigned int tickMillis = 50;
    /// Ticks to run; the timeline needs kDemoTicks.
    int ticks = 0;
};

/// Ticks the whole timeline takes.
constexpr int kDemoTicks = 160;

/// One screenshot of the demo: the tick after which it was taken, a name, and the picture as the window
/// shows it (32 bits: blue, green, red, 0).
struct stDemoShot
{
    int tick = 0;
    std::string name;
    QorPicBlock picture{QorPicBlock::Bit32};
};

/// What a run produced.
struct stDemoResult
{
    int ticksRun = 0;
    std::vector<stDemoShot> shots;
    /// One line per effect.
    std::vector<std::string> summary;
};

/// Opens the window on the port already chosen, runs the timeline through the window's timer and the
/// message loop, and closes the window. Returns false when the window cannot be opened.
bool RunDemo(const stDemoOptions& options, stDemoResult& result);
