#pragma once

// The platform layer's entry: which port the program runs on, and the clock every port shares.
// Each port family (video and events, audio) creates its own objects on first use for the port chosen
// here, so nothing else needs to be wired at start-up.

/// The implementations of the platform ports.
enum class QorPortKind
{
    /// Frames kept in memory, scripted events, a clock that moves only when told, sound recorded.
    kHeadless = 0,
    /// A real window, events, timers and audio through SDL2.
    kSdl2 = 1,
};

/// Chooses the port for the whole program. Call it once at start-up, before any window, timer or sound
/// exists. For the SDL2 port, videoDriver and audioDriver name SDL drivers to use (for example "dummy",
/// "x11", "disk"); null lets SDL choose. Returns 0 when the port cannot be used (SDL fails to start) or
/// when a port was already chosen; the choice then stays as it was.
/// \note Without a call the headless port is used: the library never looks at the environment.
char QorSelectPort(QorPortKind kind, const char* videoDriver = nullptr, const char* audioDriver = nullptr);
/// The port in use.
QorPortKind QorGetPortKind();

/// Milliseconds for timers, waits and sound playback.
class QorClock
{
public:
    virtual ~QorClock() = default;
    /// Milliseconds since the clock started.
    virtual unsigned long GetMillis() = 0;
    /// Lets ms milliseconds pass: sleeps on a real clock, advances a manual one.
    virtual void Delay(unsigned long ms) = 0;
};

/// The clock of the port in use.
QorClock& QorGetClock();

/// The headless port's clock: time moves only when Advance (or Delay) is called.
class QorManualClock : public QorClock
{
public:
    unsigned long GetMillis() override { return m_now; }
    void Delay(unsigned long ms) override { Advance(ms); }
    /// Moves the time on by ms.
    void Advance(unsigned long ms) { m_now += ms; }

private:
    unsigned long m_now = 0;
};

/// The headless clock, or null when another port is in use.
QorManualClock* QorGetManualClock();
