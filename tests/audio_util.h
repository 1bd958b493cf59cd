#pragma once

// What the audio tests share: sound blocks made from bytes, and the headless device brought back to its
// starting state (one device playing every format, nothing recorded) before each test.
#include "qor/audio.h"
#include "qor/platform.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace qortest
{
/// A sound block of the given format holding samples.
inline QorSndBlock Sound(short channels, long rate, short bits, const std::vector<std::uint8_t>& samples)
{
    QorSndBlock b;
    EXPECT_TRUE(b.SetSamples(channels, rate, bits, samples.data(), samples.size()));
    return b;
}

/// The headless device and the manual clock, the device reset before each test.
class HeadlessAudioTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        port = QorGetHeadlessAudioPort();
        ASSERT_NE(port, nullptr);
        port->SetDeviceCount(1);
        port->SetDeviceFormats(0, kWaveAllFormats);
        port->ClearPlayedBytes();
        clock = QorGetManualClock();
        ASSERT_NE(clock, nullptr);
    }

    QorHeadlessAudioPort* port = nullptr;
    QorManualClock* clock = nullptr;
};
} // namespace qortest
