// Failures inside the makers go to the error reporter under the failing
// procedure's name and end as the error flag; none is a silent result.
#include <algorithm>

#include "engine/modLog10.h"
#include "services/modErrorHandler.h"
#include "tests/engine/EngineFixture.h"

namespace engine_test {
namespace {

class ErrorPathTest : public EngineTest {
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        gInstallErrorHandler();
    }

    void answer(std::initializer_list<std::int16_t> answers)
    {
        host.answers.assign(answers.begin(), answers.end());
    }
    // The error box names the source as module.procedure.line, then the text.
    void expectReport(std::size_t box, const std::string& source, const std::string& text)
    {
        ASSERT_GT(host.boxes.size(), box);
        const std::string& shown = host.boxes[box].text;
        EXPECT_EQ(shown.rfind("Source: " + source + ".", 0), 0u) << shown;
        EXPECT_TRUE(shown.ends_with("\r\n\r\n" + text)) << shown;
        EXPECT_EQ(host.boxes[box].title, "Unexpected Error!");
    }
};

TEST_F(ErrorPathTest, CycleSearchThatNeverEndsInToleranceOverflowsItsCounter)
{
    answer({rt::kAnswerAbort});
    ErrorFlag error = kFalse;
    // No end lies within 0 radian: the count passes 32,767.
    EXPECT_EQ(mlPtrEndInTolerance(44100, 1000, 0, error), 0);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    expectReport(0, "modWaveInOut.mlPtrEndInTolerance", "Overflow");
}

TEST_F(ErrorPathTest, LogarithmicSweepOfOneStepDividesByZero)
{
    gWaveOutSetShape("Sine");
    settings(1000);
    rt::SampleArray samples;
    ErrorFlag error = kFalse;
    glWaveOutMake(samples, error);  // a tone fills the start of the buffer
    ASSERT_EQ(error, kFalse);

    settings(100, 1000, 1, true, false, 1);
    answer({rt::kAnswerAbort});
    samples.erase();
    glWaveOutMake(samples, error);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    expectReport(0, "modWaveInOut.glWaveOutMakeSweep", "Division by zero");
    // Nothing handed out; the engine's buffer keeps its full dimension, silent.
    EXPECT_TRUE(samples.empty());
    const auto buffer = gWaveOutBufferForTests();
    EXPECT_EQ(buffer.size(), 2099999u);
    EXPECT_TRUE(std::all_of(buffer.begin(), buffer.end(), [](std::int16_t s) { return s == 0; }));
}

TEST_F(ErrorPathTest, LogarithmOfZeroOrLessIsReportedWithItsArgument)
{
    ErrorFlag error = kFalse;
    EXPECT_FLOAT_EQ(gfLog10(1000, error), 3.0f);
    EXPECT_FLOAT_EQ(gfLog10(2, error), 0.30103f);
    EXPECT_EQ(error, kFalse);

    answer({rt::kAnswerAbort, rt::kAnswerAbort});
    EXPECT_EQ(gfLog10(0, error), 0.0f);
    EXPECT_EQ(error, kTrue);
    host.decimalChar = ",";
    error = kFalse;
    gfLog10(-2.5f, error);
    EXPECT_EQ(error, kTrue);
    expectReport(0, "modLog10.gfLog10", "fIn(0) <= 0");
    expectReport(1, "modLog10.gfLog10", "fIn(-2,5) <= 0");
}

TEST_F(ErrorPathTest, SegmentFromBeforeTheBufferRetriesThenIgnoresThatSample)
{
    // A quarter of the rate: four samples at phase steps of a quarter cycle.
    gWaveOutSetShape("Sine");
    settings(11025);
    rt::SampleArray samples;
    ErrorFlag error = kFalse;
    glWaveOutMake(samples, error);
    ASSERT_EQ(samples.size(), 4);

    // Index 0 lies outside the buffer: Retry meets it again, Ignore steps
    // over it, its phase step included, and the segment goes on.
    answer({rt::kAnswerRetry, rt::kAnswerIgnore});
    float phase = 0;
    mWaveOutMakeOneFrequency(11025, 44100, 0, 4, phase, error);
    EXPECT_EQ(error, kFalse);
    ASSERT_EQ(host.boxes.size(), 2u);
    expectReport(1, "modWaveInOut.mWaveOutMakeOneFrequency", "Subscript out of range");
    const auto buffer = gWaveOutBufferForTests();
    ASSERT_EQ(buffer.size(), 4u);
    EXPECT_EQ(buffer[0], 0);       // half a cycle
    EXPECT_EQ(buffer[1], -32767);  // three quarters
    EXPECT_EQ(buffer[2], 0);       // the whole cycle
    EXPECT_EQ(buffer[3], 32767);   // a quarter into the next
}

TEST_F(ErrorPathTest, BurstPeriodBeyondSixteenBitsIsAnOverflow)
{
    answer({rt::kAnswerAbort});
    ErrorFlag error = kFalse;
    gWaveOutSetFrequency1SweepBurst(1000, 0, 0, kFalse, kFalse, 0, 5, 40000, error);
    EXPECT_EQ(error, kTrue);
    expectReport(0, "modWaveInOut.gWaveOutSetFrequency1SweepBurst", "Overflow");
    EXPECT_EQ(gWaveOutGeneratorForTests().frequency1, 1000);
}

TEST_F(ErrorPathTest, SilenceBeforeAnySignalWasMadeHasNoLengthToKeep)
{
    // Frequency 1 is still 0: silence of the last signal's length, but there
    // has been none.
    answer({rt::kAnswerAbort});
    rt::SampleArray samples;
    ErrorFlag error = kFalse;
    glWaveOutMake(samples, error);
    EXPECT_EQ(error, kTrue);
    expectReport(0, "modWaveInOut.glWaveOutMake", "Subscript out of range");
}

}  // namespace
}  // namespace engine_test
