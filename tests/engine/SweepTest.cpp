// Sweeps: the frequency each step plays, measured from the zero crossings of
// the made buffer, the rate they are written at and how they end.
#include <algorithm>

#include "tests/engine/EngineFixture.h"

namespace engine_test {
namespace {

// Sweeps of 10 steps over 1 s at 44.1 kHz: 4,410 samples per step, so every
// segment holds 4,411 samples and segment k starts at index 4,411 k.
constexpr std::size_t kSegment = 4411;
constexpr std::size_t kMargin = 30;

class SweepTest : public EngineTest {
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        gWaveOutSetShape("Sine");
    }

    double segmentFrequency(std::size_t k) const
    {
        return measuredFrequency(x, k * kSegment + kMargin, (k + 1) * kSegment - kMargin, rate);
    }
    double closingFrequency(std::size_t passes) const
    {
        return measuredFrequency(x, passes * 9 * kSegment + kMargin, x.size() - kMargin, rate);
    }
    // The buffer ends on the last sample <= 0 of its closing cycle, so that
    // it loops into its rising first sample across a zero crossing.
    void expectCleanLoop() const
    {
        ASSERT_FALSE(x.empty());
        EXPECT_LE(x.back(), 0);
        EXPECT_GE(x.back(), -largestStep(x));
        EXPECT_GT(x.front(), 0);
    }

    std::vector<std::int16_t> x;
    std::int32_t rate = 0;
};

TEST_F(SweepTest, LinearSweepPlaysEachStepAndClosesOnTheEndFrequency)
{
    settings(1000, 2000, 1, false, false, 10);
    x = make(&rate);
    EXPECT_EQ(rate, 44100);
    for (std::size_t k = 0; k < 9; ++k)
        EXPECT_NEAR(segmentFrequency(k), 1000 + 100.0 * k, 0.5) << k;
    // 1,900 Hz (f1 + 9 steps) is never played: the sweep closes on 2,000.
    EXPECT_NEAR(closingFrequency(1), 2000, 0.5);
    EXPECT_NEAR(static_cast<double>(x.size()), 9 * kSegment + 4410, 30);
    expectCleanLoop();
}

TEST_F(SweepTest, LogarithmicSweepStepsByEqualRatios)
{
    settings(1000, 2000, 1, true, false, 10);
    x = make(&rate);
    EXPECT_EQ(rate, 44100);
    EXPECT_NEAR(segmentFrequency(0), 1000, 0.5);
    // Nine steps per octave: each step 2^(1/9) above the last, the 9th is not played.
    for (std::size_t k = 1; k < 9; ++k)
        EXPECT_NEAR(segmentFrequency(k) / segmentFrequency(k - 1), std::pow(2.0, 1.0 / 9), 1e-4)
            << k;
    EXPECT_NEAR(segmentFrequency(8), 1000 * std::pow(2.0, 8.0 / 9), 0.5);
    EXPECT_NEAR(closingFrequency(1), 2000, 0.5);
    expectCleanLoop();
}

TEST_F(SweepTest, BidirectionalSweepsReturnToTheStartAndCloseOneStepAbove)
{
    settings(1000, 2000, 1, false, true, 10);
    x = make(&rate);
    for (std::size_t k = 0; k < 9; ++k) {
        EXPECT_NEAR(segmentFrequency(k), 1000 + 100.0 * k, 0.5) << k;
        EXPECT_NEAR(segmentFrequency(17 - k), 1000 + 100.0 * k, 0.5) << k;  // the way back
    }
    EXPECT_NEAR(closingFrequency(2), 1100, 0.5);
    expectCleanLoop();

    // Under the logarithmic law the step added is the logarithmic one: the
    // sweep closes a few hundredths of a hertz above where it started.
    settings(1000, 2000, 1, true, true, 10);
    x = make(&rate);
    EXPECT_NEAR(segmentFrequency(9), 1000 * std::pow(2.0, 8.0 / 9), 0.5);
    EXPECT_NEAR(segmentFrequency(17), 1000, 0.5);
    EXPECT_NEAR(closingFrequency(2), 1000.03, 0.5);
    expectCleanLoop();
}

TEST_F(SweepTest, SweepIsWrittenAtEightyTimesItsHighestFrequencyAtMost)
{
    // 80 x 500 Hz = 40 kHz, below the device's 44.1 kHz: the steps are written
    // (and must be played) at 40 kHz.
    settings(100, 500, 1, false, false, 4);
    rt::SampleArray samples;
    ErrorFlag error = kFalse;
    rate = glWaveOutMakeSetFormatEx(16, samples, error);
    ASSERT_EQ(error, kFalse);
    EXPECT_EQ(rate, 40000);
    EXPECT_EQ(gWaveOutFormatForTests().nSamplesPerSec, 40000u);
    EXPECT_EQ(gWaveOutFormatForTests().nAvgBytesPerSec, 80000u);
    x = samples.items();
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR(measuredFrequency(x, k * 10001 + kMargin, (k + 1) * 10001 - kMargin, rate),
                    100 + 100.0 * k, 0.2) << k;
    EXPECT_NEAR(measuredFrequency(x, 30003 + kMargin, x.size(), rate), 500, 0.2);

    // Up to 1 kHz, either way round: 80 kHz when the device allows it.
    useDevice(96000, 40000);
    settings(100, 1000, 1, true, false, 50);
    x = make(&rate);
    EXPECT_EQ(rate, 80000);
    settings(1000, 100, 1, true, false, 50);
    x = make(&rate);
    EXPECT_EQ(rate, 80000);
    useDevice(44100, 20000);
    x = make(&rate);
    EXPECT_EQ(rate, 44100);
}

TEST_F(SweepTest, DownwardSweepAndOtherShapesEndOnASampleAtOrBelowZero)
{
    for (const char* shape : {"Sine", "Triangle", "MarkSpace"}) {
        SCOPED_TRACE(shape);
        gWaveOutSetShape(shape);
        gWaveOutSetPercent(30);
        settings(2000, 1000, 1, false, false, 10);
        x = make(&rate);
        ASSERT_FALSE(x.empty());
        EXPECT_LE(x.back(), 0);
        EXPECT_GT(x.front(), 0);
    }
    gWaveOutSetShape("Sine");
    x = make(&rate);
    EXPECT_NEAR(segmentFrequency(0), 2000, 0.5);
    EXPECT_NEAR(segmentFrequency(8), 1200, 0.5);
    EXPECT_NEAR(closingFrequency(1), 1000, 0.5);
}

}  // namespace
}  // namespace engine_test
