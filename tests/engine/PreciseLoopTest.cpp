// Continuous tones as precise loops: how pure they are and how close to the
// frequency set, over the whole range at the three common rates; the loop
// search against a brute-force one; the shapes that share the loop; the
// frequency played as the engine reports it; and what the setting leaves
// alone.
#include <algorithm>
#include <numbers>

#include "engine/ToneLoop.h"
#include "tests/engine/EngineFixture.h"
#include "tests/support/LoopFigures.h"

namespace engine_test {
namespace {

using testing_support::loopFigures;

constexpr std::int32_t kLongest = 2099999;

class PreciseLoopTest : public EngineTest {
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        gWaveOutSetShape("Sine");
        gWaveOutSetPreciseLoop(kTrue);
    }
};

// The largest distance of a sample from what its two neighbours make of it
// as a sine of w radian per sample (x[i-1] + x[i+1] = 2 cos(w) x[i]), all
// round the loop and across its join. Rounding alone gives at most 2.
double largestSineResidual(const std::vector<std::int16_t>& x, double w)
{
    const std::size_t n = x.size();
    const double twiceCos = 2 * std::cos(w);
    double largest = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const double residual = x[(i + n - 1) % n] + x[(i + 1) % n] - twiceCos * x[i];
        largest = std::max(largest, std::fabs(residual));
    }
    return largest;
}

struct Device {
    std::int32_t rate;
    float maximum;
};

class EveryFrequency : public PreciseLoopTest, public testing::WithParamInterface<Device> {};

TEST_P(EveryFrequency, SineIsPureOnFrequencyAndJoinsWithoutAJump)
{
    const Device device = GetParam();
    useDevice(device.rate, device.maximum);
    const std::vector<float> frequencies = testing_support::loopTestFrequencies(device.maximum);
    ASSERT_GE(frequencies.size(), 300u);
    EXPECT_EQ(frequencies.front(), 10.0f);
    EXPECT_EQ(*std::max_element(frequencies.begin(), frequencies.end()), device.maximum);
    for (const float f : frequencies) {
        SCOPED_TRACE(f);
        settings(f);
        const auto x = make();
        ASSERT_FALSE(x.empty());
        ASSERT_LE(x.size(), static_cast<std::size_t>(kLongest));
        const auto figures = loopFigures(x, device.rate, f);
        EXPECT_GE(figures.sinadDb, 95);
        EXPECT_LT(std::fabs(figures.errorPpm), 1);
        EXPECT_LT(figures.closingRadian, 1e-5);
        EXPECT_DOUBLE_EQ(gfWaveOutFrequencyPlayed(), figures.frequency);
        const double w = 2 * std::numbers::pi * figures.cycles / static_cast<double>(x.size());
        EXPECT_LE(largestSineResidual(x, w), 2.0);
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, EveryFrequency,
                         testing::Values(Device{44100, 20000}, Device{48000, 21768},
                                         Device{96000, 40000}),
                         [](const testing::TestParamInfo<Device>& info) {
                             return std::to_string(info.param.rate);
                         });

// ---- The search ----------------------------------------------------------------

// How far a loop of `length` samples at the nearest whole number of cycles
// misses fFrequency, in cycles per pass (the float's exact value; long
// double holds every product exactly).
long double missedCycles(std::int32_t rate, float frequency, std::int32_t length)
{
    const long double cycles = static_cast<long double>(length) * frequency / rate;
    return std::fabs(cycles - std::round(cycles));
}

bool closeEnough(std::int32_t rate, float frequency, std::int32_t length)
{
    const long double missed = missedCycles(rate, frequency, length);
    const long double cycles = static_cast<long double>(length) * frequency / rate;
    return 2 * std::numbers::pi_v<long double> * missed < synth::kLoopPhaseError &&
           missed < synth::kLoopFrequencyError * cycles;
}

TEST(ToneLoop, IsTheShortestLoopWithinBothErrors)
{
    // An exact ratio of frequency to rate gives its lowest terms (length
    // given); the others are checked against every shorter length.
    struct Case {
        std::int32_t rate;
        float frequency;
        std::int32_t length;
    };
    for (const Case c : {Case{44100, 19999.9f, 0}, Case{44100, 10.0123f, 0}, Case{44100, 3567.89f, 0},
                         Case{48000, 441.5f, 0}, Case{96000, 33333.3f, 0}, Case{96000, 10.0f, 0},
                         Case{44100, 1000, 441}, Case{44100, 440, 2205}, Case{96000, 24000, 4}}) {
        SCOPED_TRACE(testing::Message() << c.rate << " " << c.frequency);
        const synth::ToneLoop loop = synth::preciseToneLoop(c.rate, c.frequency, kLongest);
        ASSERT_GE(loop.length, 1);
        if (c.length != 0) {
            EXPECT_EQ(loop.length, c.length);
        }
        EXPECT_EQ(loop.cycles, std::llround(static_cast<long double>(loop.length) * c.frequency /
                                            c.rate));
        EXPECT_TRUE(closeEnough(c.rate, c.frequency, loop.length));
        for (std::int32_t shorter = 1; shorter < loop.length; ++shorter)
            ASSERT_FALSE(closeEnough(c.rate, c.frequency, shorter)) << shorter;
    }
}

TEST(ToneLoop, TooShortALimitGivesTheClosestLoopWithinIt)
{
    const synth::ToneLoop loop = synth::preciseToneLoop(44100, 997.3f, 1000);
    ASSERT_GE(loop.length, 1);
    ASSERT_LE(loop.length, 1000);
    const long double best = missedCycles(44100, 997.3f, loop.length);
    for (std::int32_t length = 1; length <= 1000; ++length)
        ASSERT_GE(missedCycles(44100, 997.3f, length), best) << length;
}

TEST(ToneLoop, ImpossibleRequestsRaise)
{
    const auto errorOf = [](std::int32_t rate, float frequency) {
        try {
            synth::preciseToneLoop(rate, frequency, kLongest);
        } catch (const rt::RuntimeError& e) {
            return e.number();
        }
        return 0;
    };
    // Not one cycle fits in the longest loop.
    EXPECT_EQ(errorOf(96000, 0.04f), rt::kErrOverflow);
    EXPECT_EQ(errorOf(44100, 1e-30f), rt::kErrOverflow);
    EXPECT_EQ(errorOf(44100, 0), rt::kErrInvalidCall);
    EXPECT_EQ(errorOf(44100, -440), rt::kErrInvalidCall);
    EXPECT_EQ(errorOf(44100, 44100), rt::kErrInvalidCall);
    EXPECT_EQ(errorOf(0, 440), rt::kErrInvalidCall);
    EXPECT_EQ(errorOf(44100, std::nanf("")), rt::kErrInvalidCall);
}

// ---- The shapes, the frequency played, what stays as it was ----------------------

TEST_F(PreciseLoopTest, TriangleAndMarkSpaceFollowTheSinesExactPhase)
{
    for (const float f : {997.0f, 1234.5f, 15432.1f}) {
        SCOPED_TRACE(f);
        settings(f);
        const std::size_t length = make().size();
        const std::int64_t cycles = std::llround(length * static_cast<double>(f) / 44100);
        // Sample i (from 1) lies at the fraction u of a cycle.
        const auto fraction = [&](std::size_t i) {
            return static_cast<double>((cycles * static_cast<std::int64_t>(i)) %
                                       static_cast<std::int64_t>(length)) /
                   length;
        };
        for (const std::int16_t percent : {0, 30, 100}) {
            SCOPED_TRACE(percent);
            gWaveOutSetShape("Triangle");
            gWaveOutSetPercent(percent);
            const auto triangle = make();
            ASSERT_EQ(triangle.size(), length);
            const double h = percent / 200.0;  // the end of the rise, in cycles
            for (std::size_t i = 1; i <= length; ++i) {
                const double u = fraction(i);
                double ideal;
                if (u == 0 && h == 0)
                    ideal = 0;  // the sawtooth's jump
                else if (u <= h)
                    ideal = 32767 * u / h;
                else if (u <= 1 - h)
                    ideal = 32767 * (0.5 - u) / (0.5 - h);
                else
                    ideal = 32767 * (u - 1) / h;
                ASSERT_NEAR(triangle[i - 1], ideal, 0.5 + 1e-6) << i;
            }
            gWaveOutSetShape("MarkSpace");
            const auto markSpace = make();
            ASSERT_EQ(markSpace.size(), length);
            for (std::size_t i = 1; i <= length; ++i) {
                const bool mark = 100 * ((cycles * static_cast<std::int64_t>(i)) %
                                         static_cast<std::int64_t>(length)) <=
                                  percent * static_cast<std::int64_t>(length);
                ASSERT_EQ(markSpace[i - 1], mark ? 32767 : -32767) << i;
            }
        }
        gWaveOutSetShape("Sine");
    }
}

TEST_F(PreciseLoopTest, FrequencyPlayedIsTheLoopsNotTheOneSet)
{
    gWaveOutSetPreciseLoop(kFalse);
    settings(440);
    auto x = make();
    EXPECT_NEAR(gfWaveOutFrequencyPlayed(), 440.022, 0.0005);
    EXPECT_DOUBLE_EQ(gfWaveOutFrequencyPlayed(), loopFigures(x, 44100, 440).frequency);
    settings(1000);
    make();
    EXPECT_EQ(gfWaveOutFrequencyPlayed(), 1000);

    gWaveOutSetPreciseLoop(kTrue);
    settings(440);
    x = make();
    EXPECT_EQ(x.size(), 2205u);
    EXPECT_EQ(gfWaveOutFrequencyPlayed(), 440);

    // Nothing is a single looped tone but a continuous one.
    settings(1000, 0, 0, false, false, 0, 10, 100);
    make();
    EXPECT_EQ(gfWaveOutFrequencyPlayed(), 0);
    settings(20, 20000, 5, true, true, 600);
    make();
    EXPECT_EQ(gfWaveOutFrequencyPlayed(), 0);
    gWaveOutSetShape("Noise");
    settings(1000);
    make();
    EXPECT_EQ(gfWaveOutFrequencyPlayed(), 0);
}

TEST_F(PreciseLoopTest, SweepsBurstsAndNoiseAreMadeAsWithout)
{
    const auto makeBoth = [&] {
        gWaveOutSetPreciseLoop(kFalse);
        const auto without = make();
        gWaveOutSetPreciseLoop(kTrue);
        EXPECT_EQ(make(), without);
    };
    settings(20, 20000, 5, true, true, 600);
    makeBoth();
    settings(997, 0, 0, false, false, 0, 10, 100);
    makeBoth();

    // Noise draws on from where it stopped: each make starts afresh.
    std::vector<std::int16_t> noise[2];
    for (const Bool16 precise : {kFalse, kTrue}) {
        gWaveOutResetForTests();
        useDevice(44100, 20000);
        gWaveOutSetShape("Noise");
        gWaveOutSetPreciseLoop(precise);
        settings(1000);
        noise[precise ? 1 : 0] = make();
    }
    EXPECT_EQ(noise[0], noise[1]);
}

}  // namespace
}  // namespace engine_test
