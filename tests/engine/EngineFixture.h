#pragma once
// A fresh signal engine on a 44.1 kHz, 16-bit output device (maximum
// frequency 20 kHz) with a scripted host, and the measurements the engine
// tests make on the buffers it returns.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstdint>
#include <string>
#include <vector>

#include "base/Array.h"
#include "base/Trap.h"
#include "base/Types.h"
#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutTesting.h"
#include "tests/support/ScriptedHost.h"

namespace engine_test {

class EngineTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gWaveOutResetForTests();
        useDevice(44100, 20000);
    }
    void TearDown() override
    {
        rt::setErrorReporter(nullptr);
        gWaveOutResetForTests();
    }

    static void useDevice(std::int32_t rate, float frequencyMax)
    {
        WaveOutDeviceInfo& info = gWaveOutInfo();
        info.sampleRate = rate;
        info.frequencyMax = frequencyMax;
        info.frequencyMaxNonSine = frequencyMax * 0.1f;
        info.bits = 16;
        info.channels = 1;
    }

    // Stores the settings and expects them accepted without a message.
    void settings(float f1, float f2 = 0, float duration = 0, bool logarithmic = false,
                  bool bidirectional = false, std::int16_t steps = 0, float burstCycles = 0,
                  std::int32_t burstPeriod = 0)
    {
        ErrorFlag error = kFalse;
        gWaveOutSetFrequency1SweepBurst(f1, f2, duration, toBool16(logarithmic),
                                        toBool16(bidirectional), steps, burstCycles, burstPeriod,
                                        error);
        ASSERT_EQ(error, kFalse);
        ASSERT_TRUE(host.boxes.empty()) << host.boxes.front().text;
    }

    // glWaveOutMake, expected to succeed; the samples as a plain vector.
    std::vector<std::int16_t> make(std::int32_t* rate = nullptr)
    {
        rt::SampleArray samples;
        ErrorFlag error = kFalse;
        const std::int32_t made = glWaveOutMake(samples, error);
        EXPECT_EQ(error, kFalse);
        EXPECT_EQ(samples.lbound(), 1);
        if (rate != nullptr) *rate = made;
        return samples.items();
    }

    testing_support::ScriptedHost host;
};

// Positions (in samples, interpolated) where the signal crosses zero upwards,
// within [from, to).
inline std::vector<double> risingCrossings(const std::vector<std::int16_t>& x, std::size_t from,
                                           std::size_t to)
{
    std::vector<double> positions;
    for (std::size_t i = from; i + 1 < to && i + 1 < x.size(); ++i) {
        if (x[i] < 0 && x[i + 1] >= 0)
            positions.push_back(static_cast<double>(i) +
                                static_cast<double>(-x[i]) / (x[i + 1] - x[i]));
    }
    return positions;
}

// The frequency played in [from, to), from its first and last upward zero
// crossings; 0 when there are fewer than two.
inline double measuredFrequency(const std::vector<std::int16_t>& x, std::size_t from,
                                std::size_t to, double rate)
{
    const std::vector<double> c = risingCrossings(x, from, to);
    if (c.size() < 2) return 0;
    return rate * static_cast<double>(c.size() - 1) / (c.back() - c.front());
}

// The largest difference between neighbouring samples.
inline int largestStep(const std::vector<std::int16_t>& x)
{
    int largest = 0;
    for (std::size_t i = 1; i < x.size(); ++i)
        largest = std::max(largest, std::abs(x[i] - x[i - 1]));
    return largest;
}

}  // namespace engine_test
