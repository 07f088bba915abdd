// The frequency range check and its message, what the settings call stores
// when a frequency is refused, and the wave format.
#include "tests/engine/EngineFixture.h"

namespace engine_test {
namespace {

using GeneratorStateTest = EngineTest;

Bool16 inRange(float f, Bool16 show = kTrue)
{
    ErrorFlag error = kFalse;
    const Bool16 result = gbWaveOutFrequencyInRange(f, show, error);
    EXPECT_EQ(error, kFalse);
    return result;
}

TEST_F(GeneratorStateTest, RangeCheckAcceptsTenHertzToTheMaximumInclusive)
{
    EXPECT_EQ(inRange(10.0f), kTrue);
    EXPECT_EQ(inRange(20000.0f), kTrue);
    EXPECT_TRUE(host.boxes.empty());

    EXPECT_EQ(inRange(9.99f), kFalse);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Frequency (9.99) out of range (10-20000 (Hz))");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation);
    EXPECT_EQ(host.boxes[0].title, "modWaveInOut.gbWaveOutFrequencyInRange");

    EXPECT_EQ(inRange(20000.5f), kFalse);
    EXPECT_EQ(host.boxes.at(1).text, "Frequency (20000.5) out of range (10-20000 (Hz))");

    EXPECT_EQ(inRange(5.0f, kFalse), kFalse);  // asked not to say so
    EXPECT_EQ(host.boxes.size(), 2u);
}

TEST_F(GeneratorStateTest, RangeMessageUsesTheUsersDecimalCharacter)
{
    host.decimalChar = ",";
    useDevice(22050, 10000.5f);
    EXPECT_EQ(inRange(10000.75f), kFalse);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Frequency (10000,75) out of range (10-10000,5 (Hz))");
}

TEST_F(GeneratorStateTest, SettingsAreStoredOnlyAsFarAsTheirFrequenciesAreInRange)
{
    ErrorFlag error = kFalse;
    gWaveOutSetFrequency1SweepBurst(1000, 2000, 5, kTrue, kTrue, 600, 3, 250, error);
    WaveOutGenerator g = gWaveOutGeneratorForTests();
    EXPECT_EQ(g.frequency1, 1000);
    EXPECT_EQ(g.frequency2, 2000);
    EXPECT_EQ(g.duration, 5);
    EXPECT_EQ(g.logarithmic, kTrue);
    EXPECT_EQ(g.bidirectional, kTrue);
    EXPECT_EQ(g.sweepSteps, 600);
    EXPECT_EQ(g.burstCycles, 3);
    EXPECT_EQ(g.burstPeriod, 250);

    // Frequency 1 refused: nothing changes.
    gWaveOutSetFrequency1SweepBurst(5, 3000, 1, kFalse, kFalse, 10, 0, 0, error);
    EXPECT_EQ(gWaveOutGeneratorForTests().frequency1, 1000);
    EXPECT_EQ(gWaveOutGeneratorForTests().frequency2, 2000);
    EXPECT_EQ(host.boxes.size(), 1u);

    // Frequency 2 refused: the new frequency 1 stays, the rest keeps its values.
    gWaveOutSetFrequency1SweepBurst(1500, 25000, 1, kFalse, kFalse, 10, 0, 0, error);
    g = gWaveOutGeneratorForTests();
    EXPECT_EQ(g.frequency1, 1500);
    EXPECT_EQ(g.frequency2, 2000);
    EXPECT_EQ(g.duration, 5);
    EXPECT_EQ(g.sweepSteps, 600);
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[1].text, "Frequency (25000) out of range (10-20000 (Hz))");

    // Frequency 2 = 0 is no sweep: not range-checked, the rest stored.
    gWaveOutSetFrequency1SweepBurst(440, 0, 0, kFalse, kFalse, 0, 10, 100, error);
    g = gWaveOutGeneratorForTests();
    EXPECT_EQ(g.frequency1, 440);
    EXPECT_EQ(g.frequency2, 0);
    EXPECT_EQ(g.logarithmic, kFalse);
    EXPECT_EQ(g.burstCycles, 10);
    EXPECT_EQ(g.burstPeriod, 100);
    EXPECT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(error, kFalse);
}

TEST_F(GeneratorStateTest, WaveFormatIsMonoPcmOfTheRateAndBits)
{
    mm::WAVEFORMATEX format;
    ErrorFlag error = kFalse;
    mWaveIOSetFormatEx(44100, 16, format, error);
    EXPECT_EQ(format.wFormatTag, mm::WAVE_FORMAT_PCM);
    EXPECT_EQ(format.nChannels, 1);
    EXPECT_EQ(format.nBlockAlign, 2);
    EXPECT_EQ(format.nAvgBytesPerSec, 88200u);
    EXPECT_EQ(format.cbSize, 0);
    mWaveIOSetFormatEx(22050, 8, format, error);
    EXPECT_EQ(format.nBlockAlign, 1);
    EXPECT_EQ(format.nAvgBytesPerSec, 22050u);
    EXPECT_EQ(error, kFalse);
}

}  // namespace
}  // namespace engine_test
