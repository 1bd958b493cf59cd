// How long a sound waits between QorMixer::Play and the device's callback mixing its first frame, on the
// SDL2 port. Usage: qor_mixer_latency [audio driver (dummy)] [buffer frames (0: the default)] [plays (200)]
// The callback's time is taken inside it, as soon as the mixed buffer shows the first non-silent frame.
#include "qor/audio.h"
#include "qor/platform.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

namespace
{
using Clock = std::chrono::steady_clock;

// Notes when the first frame that is not silence leaves Fill.
class TimedMixer : public QorMixer
{
public:
    void Fill(unsigned char* out, unsigned long bytes) override
    {
        QorMixer::Fill(out, bytes);
        if (!m_waiting.load(std::memory_order_acquire))
            return;
        for (unsigned long i = 0; i < bytes; ++i)
            if (out[i] != 0)
            {
                m_heard = Clock::now();
                m_waiting.store(false, std::memory_order_release);
                return;
            }
    }

    void Arm() { m_waiting.store(true, std::memory_order_release); }
    bool Heard() const { return !m_waiting.load(std::memory_order_acquire); }
    Clock::time_point HeardAt() const { return m_heard; }

private:
    std::atomic<bool> m_waiting{false};
    Clock::time_point m_heard;
};
} // namespace

int main(int argc, char** argv)
{
    const char* driver = argc > 1 ? argv[1] : "dummy";
    const unsigned long frames = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 0;
    const int plays = argc > 3 ? std::atoi(argv[3]) : 200;
    if (!QorSelectPort(QorPortKind::kSdl2, "dummy", driver))
    {
        std::printf("the SDL2 port did not start with audio driver %s\n", driver);
        return 1;
    }
    TimedMixer mixer;
    if (!mixer.Open(2, 44100, 16, QorMixer::kDefaultVoices, frames))
    {
        std::printf("the mixer did not open (device result %lu)\n", mixer.GetLastResult());
        return 1;
    }
    std::vector<unsigned char> samples(4410 * 4, 0x10);
    QorSndBlock click;
    click.SetSamples(2, 44100, 16, samples.data(), samples.size());
    mixer.Prepare(click);

    std::mt19937 rng(1);
    std::uniform_int_distribution<int> pause(0, 20000);
    std::vector<double> ms;
    for (int i = 0; i < plays; ++i)
    {
        // Start at a random point of the buffer period.
        std::this_thread::sleep_for(std::chrono::microseconds(pause(rng)));
        mixer.Arm();
        const Clock::time_point start = Clock::now();
        const QorGuider voice = mixer.Play(click);
        while (!mixer.Heard())
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        ms.push_back(std::chrono::duration<double, std::milli>(mixer.HeardAt() - start).count());
        mixer.Stop(voice);
    }
    std::sort(ms.begin(), ms.end());
    const unsigned long buffer = mixer.GetBufferFrames();
    std::printf("driver %s, %lu-frame buffers at 44100 Hz (%.1f ms), %d plays\n", driver, buffer,
                buffer * 1000.0 / 44100, plays);
    std::printf("Play to first frame mixed in the callback: min %.2f, median %.2f, p90 %.2f, max %.2f ms\n", ms.front(),
                ms[ms.size() / 2], ms[ms.size() * 9 / 10], ms.back());
    mixer.Close();
    return 0;
}
