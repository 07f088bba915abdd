// Buffers of one frequency: their length, how they loop, the shapes, bursts
// and noise.
#include <algorithm>
#include <numeric>

#include "tests/engine/EngineFixture.h"

namespace engine_test {
namespace {

using ToneTest = EngineTest;

TEST_F(ToneTest, OneKilohertzAtCdRateIsTenCyclesIn441Samples)
{
    gWaveOutSetShape("Sine");
    settings(1000);
    std::int32_t rate = 0;
    const auto x = make(&rate);
    EXPECT_EQ(rate, 44100);
    ASSERT_EQ(x.size(), 441u);
    EXPECT_NEAR(measuredFrequency(x, 0, x.size(), rate), 1000.0, 0.05);
    // The first sample is one step into a rising cycle.
    EXPECT_GT(x[0], 0);
    EXPECT_LT(x[0], x[1]);
    EXPECT_EQ(*std::max_element(x.begin(), x.end()), 32767);
}

// A view of what plays reads the buffer the last make left: the same
// samples and rate, cut to the length asked; nothing before a make.
TEST_F(ToneTest, TheMadeBufferIsReadBackWithoutAnotherMake)
{
    rt::SampleArray whole;
    EXPECT_EQ(glWaveOutMadeSamples(0, whole), 0);
    EXPECT_TRUE(whole.empty());

    gWaveOutSetShape("Sine");
    settings(997);
    std::int32_t rate = 0;
    const auto x = make(&rate);
    rt::SampleArray start;
    EXPECT_EQ(glWaveOutMadeSamples(0, whole), rate);
    EXPECT_EQ(whole.items(), x);
    EXPECT_EQ(glWaveOutMadeSamples(100, start), rate);
    EXPECT_EQ(start.items(), std::vector<std::int16_t>(x.begin(), x.begin() + 100));
    EXPECT_EQ(start.lbound(), 1);
}

TEST_F(ToneTest, ContinuousTonesEndOnAWholeCycleAndLoopWithoutAJump)
{
    gWaveOutSetShape("Sine");
    for (const float f : {10.0f, 20.0f, 55.5f, 100.0f, 440.0f, 997.0f, 1234.5f, 3000.0f, 4999.9f,
                          7777.0f, 10000.0f, 12345.6f, 17000.0f, 19999.0f, 20000.0f}) {
        SCOPED_TRACE(f);
        settings(f);
        const auto x = make();
        ASSERT_FALSE(x.empty());
        const double cycles = x.size() * static_cast<double>(f) / 44100;
        const double period = 44100 / static_cast<double>(f);
        // Within the 0.005 radian the length search allows.
        EXPECT_NEAR(cycles, std::round(cycles), 0.005 / (2 * M_PI) + 1e-5);

        // Across the join the samples go on as one sine: x[i-1] + x[i+1] =
        // 2 cos(w) x[i], up to the 0.005 radian the length search allows.
        const double w = 2 * M_PI * f / 44100;
        const std::size_t n = x.size();
        for (std::size_t i : {n - 1, std::size_t{0}}) {
            const double residual = x[(i + n - 1) % n] + x[(i + 1) % n] - 2 * std::cos(w) * x[i];
            EXPECT_LE(std::fabs(residual), 32767 * 0.005 + 3) << i;
        }
        if (period < 20) continue;
        // Played four times over, every cycle is as long as the others,
        // across the joins too.
        std::vector<std::int16_t> looped;
        for (int pass = 0; pass < 4; ++pass) looped.insert(looped.end(), x.begin(), x.end());
        const std::vector<double> c = risingCrossings(looped, 0, looped.size());
        ASSERT_GE(c.size(), 3u);
        for (std::size_t i = 1; i < c.size(); ++i)
            ASSERT_NEAR(c[i] - c[i - 1], period, period * 0.005 / (2 * M_PI) + 0.02) << i;
    }
}

TEST_F(ToneTest, TriangleAtHalfIsSymmetricAndAtFullIsARisingRamp)
{
    // 441 Hz: 100 samples per cycle, so sample i has the phase (i + 1) * 2pi / 100.
    gWaveOutSetShape("Triangle");
    gWaveOutSetPercent(50);
    settings(441);
    auto x = make();
    ASSERT_EQ(x.size(), 100u);
    EXPECT_EQ(*std::max_element(x.begin(), x.end()), 32767);
    EXPECT_EQ(*std::min_element(x.begin(), x.end()), -32767);
    EXPECT_EQ(x[24], 32767);  // the peak, a quarter cycle in
    for (int k = 1; k < 25; ++k) EXPECT_NEAR(x[24 - k], x[24 + k], 1) << k;  // even about the peak
    for (int i = 0; i < 50; ++i) EXPECT_NEAR(x[i], -x[i + 50], 1) << i;  // odd about half a cycle
    for (int i = 1; i < 24; ++i) EXPECT_NEAR(x[i + 1] - x[i], x[i] - x[i - 1], 2) << i;  // straight

    gWaveOutSetPercent(100);
    x = make();
    ASSERT_EQ(x.size(), 100u);
    int falls = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const int next = x[(i + 1) % x.size()];
        if (next < x[i]) {
            ++falls;
            EXPECT_GE(x[i], 32767 - 700);  // drops from the top...
            EXPECT_LE(next, -32767 + 700);  // ...to the bottom
        }
    }
    EXPECT_EQ(falls, 1);
}

TEST_F(ToneTest, MarkSpaceHoldsTheMarkForItsPercentageOfTheCycle)
{
    gWaveOutSetShape("MarkSpace");
    settings(441);
    for (const std::int16_t percent : {10, 30, 50, 73, 90}) {
        SCOPED_TRACE(percent);
        gWaveOutSetPercent(percent);
        const auto x = make();
        ASSERT_EQ(x.size(), 100u);
        const auto marks = std::count(x.begin(), x.end(), 32767);
        const auto spaces = std::count(x.begin(), x.end(), -32767);
        EXPECT_EQ(marks + spaces, 100);
        EXPECT_NEAR(static_cast<double>(marks), percent, 1.0);
        EXPECT_EQ(x.front(), 32767);  // the cycle starts with its mark
    }
}

TEST_F(ToneTest, InvertGivesTheNegatedBuffer)
{
    settings(1000);
    for (const char* shape : {"Sine", "Triangle", "MarkSpace"}) {
        SCOPED_TRACE(shape);
        gWaveOutSetShape(shape);
        gWaveOutSetPercent(30);
        gWaveOutSetInvert(kFalse);
        const auto normal = make();
        gWaveOutSetInvert(kTrue);
        const auto inverted = make();
        ASSERT_EQ(normal.size(), inverted.size());
        for (std::size_t i = 0; i < normal.size(); ++i) ASSERT_EQ(inverted[i], -normal[i]) << i;
    }
}

TEST_F(ToneTest, AnUnknownShapeTextIsASine)
{
    settings(1000);
    gWaveOutSetShape("Sine");
    const auto sine = make();
    gWaveOutSetShape("Square");
    EXPECT_EQ(make(), sine);
}

TEST_F(ToneTest, BurstIsItsCyclesThenSilenceUpToThePeriod)
{
    gWaveOutSetShape("Sine");
    settings(1000, 0, 0, false, false, 0, 1, 100);
    const auto x = make();
    ASSERT_EQ(x.size(), 4410u);
    // 44 samples of signal, the 44th set to 0: a positive then a negative half.
    EXPECT_GT(x[0], 0);
    EXPECT_GT(*std::max_element(x.begin(), x.begin() + 22), 32700);
    EXPECT_LT(*std::min_element(x.begin() + 22, x.begin() + 43), -32700);
    EXPECT_EQ(x[43], 0);
    EXPECT_TRUE(std::all_of(x.begin() + 43, x.end(), [](std::int16_t s) { return s == 0; }));

    // A period shorter than the cycles cuts into them.
    settings(1000, 0, 0, false, false, 0, 10, 5);
    const auto cut = make();
    ASSERT_EQ(cut.size(), 220u);
    EXPECT_NEAR(measuredFrequency(cut, 0, cut.size(), 44100), 1000.0, 0.5);
}

TEST_F(ToneTest, BurstSilenceIsSilentAfterLongerSignalsAndBeyondTheDimension)
{
    // Noise first fills far more of the engine's buffer than the burst uses.
    gWaveOutSetShape("Noise");
    settings(1000);
    ASSERT_EQ(make().size(), 262399u);
    gWaveOutSetShape("Triangle");
    gWaveOutSetPercent(50);
    settings(441, 0, 0, false, false, 0, 3, 2000);
    auto x = make();
    ASSERT_EQ(x.size(), 88200u);
    EXPECT_EQ(x[299], 0);
    EXPECT_TRUE(std::all_of(x.begin() + 299, x.end(), [](std::int16_t s) { return s == 0; }));
    EXPECT_EQ(*std::max_element(x.begin(), x.begin() + 299), 32767);
    EXPECT_EQ(*std::min_element(x.begin(), x.begin() + 299), -32767);

    // A period longer than the 2,099,999-sample dimension, after noise again.
    useDevice(96000, 40000);
    gWaveOutSetShape("Noise");
    ASSERT_EQ(make().size(), 262399u);
    gWaveOutSetShape("Sine");
    settings(1000, 0, 0, false, false, 0, 2, 22000);
    x = make();
    ASSERT_EQ(x.size(), 2112000u);
    EXPECT_EQ(x[191], 0);
    EXPECT_TRUE(std::all_of(x.begin() + 191, x.end(), [](std::int16_t s) { return s == 0; }));
}

TEST_F(ToneTest, NoiseIsUniformOverTheFullRangeAndNeverTheSameTwice)
{
    gWaveOutSetShape("Noise");
    settings(1000);
    gWaveOutSetInvert(kTrue);
    std::int32_t rate = 0;
    const auto x = make(&rate);
    EXPECT_EQ(rate, 44100);
    ASSERT_EQ(x.size(), 262399u);
    const auto [low, high] = std::minmax_element(x.begin(), x.end());
    EXPECT_GE(*low, -32767);
    EXPECT_LE(*high, 32767);
    EXPECT_LT(*low, -32700);
    EXPECT_GT(*high, 32700);
    const double mean = std::accumulate(x.begin(), x.end(), 0.0) / x.size();
    double square = 0;
    for (const std::int16_t s : x) square += (s - mean) * (s - mean);
    EXPECT_NEAR(mean, 0, 200);
    EXPECT_NEAR(std::sqrt(square / x.size()), 32767 / std::sqrt(3.0), 200);  // uniform
    EXPECT_NE(make(), x);
}

TEST_F(ToneTest, RandomIntegersCoverTheirRangeEvenly)
{
    std::vector<int> counts(8, 0);
    for (int i = 0; i < 6000; ++i) {
        const std::int16_t n = gnRandomInteger(1, 6);
        ASSERT_GE(n, 1);
        ASSERT_LE(n, 6);
        ++counts[n];
    }
    for (int face = 1; face <= 6; ++face) EXPECT_NEAR(counts[face], 1000, 150) << face;
    EXPECT_EQ(gnRandomInteger(-5, -5), -5);
}

}  // namespace
}  // namespace engine_test
