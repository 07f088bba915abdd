// The polarity and delay verdict on a burst played and "recorded": the
// recording is the played pass moved, scaled, turned over and buried in
// noise by known amounts, and the verdict must give them back.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "analysis/modPolarityVerdict.h"
#include "tests/analysis/TestSignals.h"

namespace {

using namespace analysis_test;

constexpr double kRate = 48000;
constexpr std::size_t kPass = 4800;          // a 100 ms burst period
constexpr double kBurstAmplitude = 0.9 * kFullScale;

// A pass as the engine plays it: 10 cycles of 1 kHz (480 samples) from
// `start`, silence around them.
std::vector<double> playedPass(std::size_t start = 0)
{
    std::vector<double> pass(kPass, 0.0);
    for (std::size_t i = 0; i < 480; ++i)
        pass[start + i] = kBurstAmplitude * std::sin(2 * std::numbers::pi * 1000 * i / kRate);
    return pass;
}

// What comes back: the pass `delay` samples later (earlier when negative),
// scaled by the gain and turned over when inverted, plus white noise whose
// rms stands `noiseDb` from the returned burst's rms.
std::vector<double> recordingOf(const std::vector<double>& played, int delay, double gainDb,
                                bool inverted, double noiseDb, unsigned seed = 1)
{
    const double gain = (inverted ? -1 : 1) * std::pow(10, gainDb / 20);
    std::vector<double> recording(played.size(), 0.0);
    for (std::size_t i = 0; i < played.size(); ++i) {
        const long from = static_cast<long>(i) - delay;
        if (from >= 0 && from < static_cast<long>(played.size())) recording[i] = gain * played[from];
    }
    const double burstRms = std::abs(gain) * kBurstAmplitude / std::numbers::sqrt2;
    if (noiseDb > -200) addNoise(recording, burstRms * std::pow(10, noiseDb / 20), seed);
    return recording;
}

PolarityVerdict verdictOn(const std::vector<double>& played, const std::vector<double>& recorded)
{
    ErrorFlag error = kFalse;
    const PolarityVerdict verdict =
        gPolarityVerdict(toSamples(played), toSamples(recorded), kRate, error);
    EXPECT_FALSE(error);
    return verdict;
}

constexpr double kNoNoise = -300;

struct Case {
    std::string name;
    std::size_t burstStart;
    int delay;
    double gainDb;
    bool inverted;
    double noiseDb;
    double gainTolerance;
};

TEST(PolarityVerdict, GivesBackTheDelayGainAndPolarityTheRecordingWasMadeWith)
{
    const std::vector<Case> cases = {
        {"straight through", 0, 0, 0, false, kNoNoise, 0.01},
        {"inverted", 0, 0, 0, true, kNoNoise, 0.01},
        {"delayed 37 samples", 0, 37, 0, false, kNoNoise, 0.01},
        {"attenuated 12 dB", 0, 0, -12, false, kNoNoise, 0.01},
        {"inverted, delayed, attenuated, in noise", 0, 37, -12, true, -20, 0.1},
        // Half a cycle later and turned over looks almost the same: 95 %.
        {"inverted half a cycle late", 0, 24, 0, true, -20, 0.1},
        {"burst later in its pass, recording started late", 1000, -20, -3, false, -20, 0.1},
        {"as loud as the noise", 0, 500, -30, true, 0, 1.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<double> played = playedPass(c.burstStart);
        const PolarityVerdict v =
            verdictOn(played, recordingOf(played, c.delay, c.gainDb, c.inverted, c.noiseDb));
        ASSERT_TRUE(v.signal);
        EXPECT_EQ(v.inverted != kFalse, c.inverted);
        EXPECT_EQ(v.delaySamples, c.delay);
        EXPECT_DOUBLE_EQ(v.delayMs, c.delay * 1000 / kRate);
        EXPECT_NEAR(v.gainDb, c.gainDb, c.gainTolerance);
        EXPECT_GE(v.peakToNoiseDb, 20);
        EXPECT_EQ(gsPolarityText(v), c.inverted ? "Polarity: INVERTED" : "Polarity: normal");
    }
}

TEST(PolarityVerdict, NoSignalWhenNothingLikeTheBurstCameBack)
{
    const std::vector<double> played = playedPass();
    std::vector<double> steadyTone(kPass, 0.0);
    addSine(steadyTone, kRate, 1000, kBurstAmplitude / 4);
    const std::vector<double> silence(kPass, 0.0);
    struct NoSignal {
        std::string name;
        std::vector<double> played;
        std::vector<double> recorded;
    };
    std::vector<NoSignal> cases = {
        {"silence", played, silence},
        {"a steady tone at the burst's frequency", played, steadyTone},
        {"nothing played", silence, recordingOf(played, 0, 0, false, -20)},
        {"nothing recorded", played, {}},
    };
    for (unsigned seed = 1; seed <= 5; ++seed) {
        std::vector<double> noiseOnly(kPass, 0.0);
        addNoise(noiseOnly, 3000, seed);
        cases.push_back({"noise only, seed " + std::to_string(seed), played, noiseOnly});
    }
    for (const NoSignal& c : cases) {
        SCOPED_TRACE(c.name);
        const PolarityVerdict v = verdictOn(c.played, c.recorded);
        EXPECT_FALSE(v.signal);
        EXPECT_LT(v.peakToNoiseDb, 20);
        EXPECT_EQ(gsPolarityText(v), "No signal");
    }
}

TEST(PolarityVerdict, RateBelowOneIsAnError)
{
    ErrorFlag error = kFalse;
    const PolarityVerdict v =
        gPolarityVerdict(toSamples(playedPass()), toSamples(playedPass()), 0, error);
    EXPECT_TRUE(error);
    EXPECT_FALSE(v.signal);
}

}  // namespace
