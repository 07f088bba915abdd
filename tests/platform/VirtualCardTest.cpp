// The virtual card as a sound card: what its output plays (through the tap),
// what its input hears, across rates, gains and both clocks.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "platform/HostServices.h"
#include "platform/WaveApi.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "tests/support/CardStreams.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/VirtualCardSession.h"

namespace {

using namespace mm;
using namespace testing_support;

void sleepMs(std::uint32_t ms)
{
    for (std::uint32_t i = 0; i < ms; ++i) host::sleep(1);
}

// 1 kHz at 44.1 kHz ends on a whole cycle after 441 samples (10 cycles).
const std::vector<std::int16_t> kTone1k = makeTone(441, 10, 16000);

class VirtualCard : public ::testing::Test {
protected:
    ScriptedHost host;
    VirtualCardSession card{host};
};

// ----------------------------------------------------------------- input

TEST_F(VirtualCard, TheInputHearsTheOutputOneLatencyLaterSampleForSample)
{
    Player player;
    player.play(0, kTone1k, kForever);
    sleepMs(100);
    Recorder recorder(44100, 4410);
    recorder.start();
    ASSERT_TRUE(recorder.waitFull(1000));
    const auto heard = recorder.samples();
    // Started 100 ms after the output, one 20 ms latency back: the output's
    // sample 80 ms in, which is a whole number of 441-sample passes.
    for (std::size_t i = 0; i < heard.size(); ++i) {
        ASSERT_EQ(heard[i], kTone1k[(i + 80 * 441 / 10) % 441]) << "sample " << i;
    }
}

struct RateCase {
    DWORD outputRate;
    DWORD inputRate;
    WORD bits;
};

void PrintTo(const RateCase& rates, std::ostream* out)
{
    *out << rates.outputRate << " to " << rates.inputRate << " Hz, " << rates.bits << " bits";
}

class Resampling : public VirtualCard, public ::testing::WithParamInterface<RateCase> {};

TEST_P(Resampling, TheInputHearsTheToneAtItsFrequencyAndLevel)
{
    const RateCase rates = GetParam();
    // 1 kHz in whole cycles: 100 cycles in a tenth of a second.
    const auto tone = makeTone(rates.outputRate / 10, 100, 16000);
    Player player(rates.outputRate);
    player.play(0, tone, kForever);
    sleepMs(50);
    Recorder recorder(rates.inputRate, rates.inputRate / 2, rates.bits);
    recorder.start();
    ASSERT_TRUE(recorder.waitFull(1000));
    const auto heard = recorder.samples();

    EXPECT_NEAR(measureFrequency(heard.data(), heard.size(), rates.inputRate), 1000.0, 0.5);
    const double expectedRms = 16000 / std::sqrt(2.0);
    // Interpolating between samples loses a little level; a fraction of a
    // percent at these rates (8 bits adds its quantisation).
    EXPECT_NEAR(rmsOf(heard.data(), heard.size()) / expectedRms, 1.0, rates.bits == 8 ? 0.02 : 0.01);
    const std::size_t window = rates.inputRate / 100;
    const auto windows = toneWindows(heard.data(), heard.size(), rates.inputRate, 1000, window);
    EXPECT_LT(largestPhaseStep(windows, rates.inputRate, 1000, window), 0.01) << "no jumps";
}

INSTANTIATE_TEST_SUITE_P(Rates, Resampling,
                         ::testing::Values(RateCase{44100, 48000, 16}, RateCase{48000, 44100, 16},
                                           RateCase{96000, 48000, 16}, RateCase{22050, 44100, 16},
                                           RateCase{44100, 11025, 8}, RateCase{80000, 44100, 16}),
                         [](const auto& info) {
                             return std::to_string(info.param.outputRate) + "to" +
                                    std::to_string(info.param.inputRate) + "at" +
                                    std::to_string(info.param.bits);
                         });

// ----------------------------------------------------------------- mixer

double tapPeak(const std::vector<std::int16_t>& samples)
{
    return peakOf(samples.data(), samples.size());
}

TEST_F(VirtualCard, MasterAndWaveGainsShapeTheOutputAndTheMicGainTheInput)
{
    const std::vector<std::int16_t> full(441, 32000);
    auto playFor = [&](std::uint32_t ms) {
        loopback::startTap();
        {
            Player player;
            player.play(0, full, kForever);
            sleepMs(ms);
        }
        return loopback::takeTap().at(0).samples;
    };
    loopback::Levels& levels = loopback::levels();

    EXPECT_EQ(tapPeak(playFor(20)), 32000) << "unity by default";
    levels.wave = 32768;
    EXPECT_NEAR(tapPeak(playFor(20)), 32000 * 32768 / 65535.0, 1.0);
    levels.wave = 65535;
    levels.master = 0;
    EXPECT_NEAR(20 * std::log10(tapPeak(playFor(20)) / 32000), -60.0, 0.3) << "the bottom of the master law";
    levels.master = 32768;
    EXPECT_NEAR(20 * std::log10(tapPeak(playFor(20)) / 32000), -30.0, 0.3) << "halfway is half the decibels";
    levels.master = 65535;
    levels.waveMute = true;
    EXPECT_EQ(tapPeak(playFor(20)), 0);
    levels.waveMute = false;

    levels.mic = 16384;
    Player player;
    player.play(0, full, kForever);
    sleepMs(30);
    Recorder recorder(44100, 441);
    recorder.start();
    ASSERT_TRUE(recorder.waitFull(100));
    const auto heard = recorder.samples();
    EXPECT_NEAR(peakOf(heard.data(), heard.size()), 32000 * 16384 / 65535.0, 1.0);
}

// ----------------------------------------------------------------- clocks

std::vector<std::int16_t> scriptedSession()
{
    Player player(48000);
    player.play(0, makeTone(480, 7, 9000), kForever);
    sleepMs(13);
    Recorder recorder(44100, 3000);
    recorder.start();
    sleepMs(17);
    waveOutBreakLoop(player.handle);
    player.play(1, makeTone(96, 2, -5000), kForever);
    EXPECT_TRUE(recorder.waitFull(1000));
    return recorder.samples();
}

TEST_F(VirtualCard, SimulatedTimeRunsTheSameWayEveryTime)
{
    const std::uint32_t start = host.tickCount();
    const auto first = scriptedSession();
    const std::uint32_t firstTicks = host.tickCount() - start;
    sleepMs(100);  // the input would still hear the end of the first run for a latency
    const auto second = scriptedSession();
    const std::uint32_t secondTicks = host.tickCount() - start - firstTicks - 100;
    EXPECT_EQ(first, second);
    EXPECT_EQ(firstTicks, secondTicks);
    EXPECT_GT(peakOf(first.data(), first.size()), 4000);
}

TEST(VirtualCardRealTime, PlaysAndRecordsOnTheSteadyClock)
{
    ScriptedHost host;  // real time: each sleep really sleeps
    VirtualCardSession card(host, VirtualCardSession::Clock::Real);
    ASSERT_FALSE(loopback::simulatedTime());
    Player player;
    player.play(0, kTone1k, kForever);
    Recorder recorder(44100, 22050);
    const std::uint32_t start = host.tickCount();
    recorder.start();
    ASSERT_TRUE(recorder.waitFull(5000));
    const std::uint32_t elapsed = host.tickCount() - start;
    EXPECT_GE(elapsed, 490u) << "half a second of frames takes half a second";

    const auto heard = recorder.samples();
    const std::size_t onset = onsetIndex(heard.data(), heard.size(), 100);
    ASSERT_LT(onset, 4410u);
    const std::size_t length = heard.size() - onset;
    EXPECT_NEAR(measureFrequency(heard.data() + onset, length, 44100), 1000.0, 0.5);
    const auto windows = toneWindows(heard.data() + onset + 441, length - 441, 44100, 1000, 441);
    EXPECT_LT(largestPhaseStep(windows, 44100, 1000, 441), 0.01) << "no gaps";
    const auto [low, high] = amplitudeSpread(windows);
    EXPECT_GT(low, 0.99);
    EXPECT_LT(high, 1.01);
}

}  // namespace
