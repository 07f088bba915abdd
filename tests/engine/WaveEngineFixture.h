#pragma once
// The signal engine playing and recording on the virtual card in simulated
// time: the card moves only when the engine (or the test) sleeps, so every
// position below is exact. The devices are found the way start-up finds
// them, and a tap hears what the output played.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "base/Array.h"
#include "base/Trap.h"
#include "base/Types.h"
#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutTesting.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/VirtualCardSession.h"

namespace engine_test {

class WaveEngineTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        gWaveOutResetForTests();
        // Unexpected failures show up as boxes too, so no test misses one.
        gInstallErrorHandler();
    }
    void TearDown() override
    {
        gWaveOutResetForTests();
        rt::setErrorReporter(nullptr);
    }

    // The output and input devices found as at start-up, without a box.
    void findDevices()
    {
        ErrorFlag error = kFalse;
        ASSERT_EQ(gbWaveOutThere(error), kTrue);
        ASSERT_EQ(gbWaveInThere(error), kTrue);
        ASSERT_EQ(error, kFalse);
        ASSERT_TRUE(host.boxes.empty()) << host.boxes.front().text;
    }

    static void tone(float frequency)
    {
        ErrorFlag error = kFalse;
        gWaveOutSetFrequency1SweepBurst(frequency, 0, 0, kFalse, kFalse, 0, 0, 0, error);
        ASSERT_EQ(error, kFalse);
    }

    // gWaveOutChange expected to succeed; returns the whole made buffer.
    std::vector<std::int16_t> change(const std::string& action, std::int32_t loops = 0,
                                     bool reset = false)
    {
        rt::SampleArray samples;
        rt::SampleArray noRecord;
        ErrorFlag error = kFalse;
        gWaveOutChange(action, loops, toBool16(reset), kFalse, samples, noRecord, error);
        EXPECT_EQ(error, kFalse);
        EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
        return samples.items();
    }

    void close(bool reset)
    {
        ErrorFlag error = kFalse;
        gWaveOutClose(toBool16(reset), error);
        EXPECT_EQ(error, kFalse);
    }

    // Milliseconds the engine slept (polled) while running `body`.
    template <class Body>
    std::uint64_t sleptDuring(Body&& body)
    {
        const std::uint64_t before = host.sleptMs;
        body();
        return host.sleptMs - before;
    }

    // What the output played, all openings joined (the tap must be on).
    static std::vector<std::int16_t> played()
    {
        std::vector<std::int16_t> all;
        for (const auto& segment : mm::loopback::takeTap())
            all.insert(all.end(), segment.samples.begin(), segment.samples.end());
        return all;
    }

    // Output frames played in `ms` milliseconds at `rate`.
    static std::size_t framesIn(std::uint32_t ms, std::uint32_t rate = 44100)
    {
        return static_cast<std::size_t>(std::uint64_t{ms} * rate / 1000);
    }

    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card{host};
};

// Whether heard[from, to) is `buffer` played over and over from its start;
// on a mismatch, says where.
inline ::testing::AssertionResult playsLooped(const std::vector<std::int16_t>& heard,
                                              std::size_t from, std::size_t to,
                                              const std::vector<std::int16_t>& buffer)
{
    if (buffer.empty() || to > heard.size())
        return ::testing::AssertionFailure() << "only " << heard.size() << " samples heard";
    for (std::size_t i = from; i < to; ++i) {
        const std::int16_t expected = buffer[(i - from) % buffer.size()];
        if (heard[i] != expected)
            return ::testing::AssertionFailure()
                   << "sample " << i << " is " << heard[i] << ", expected " << expected
                   << " (pass " << (i - from) / buffer.size() << ", index "
                   << (i - from) % buffer.size() << ")";
    }
    return ::testing::AssertionSuccess();
}

}  // namespace engine_test
