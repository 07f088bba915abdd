// Playback on the virtual card: what the output plays, sample by sample,
// across changes, waits and closes.
#include <cmath>

#include "tests/engine/WaveEngineFixture.h"
#include "tests/support/SignalMeasure.h"

namespace engine_test {
namespace {

using testing_support::measureFrequency;
using testing_support::rmsOf;

class PlaybackTest : public WaveEngineTest {
protected:
    void SetUp() override
    {
        WaveEngineTest::SetUp();
        findDevices();
        gWaveOutSetShape("Sine");
        mm::loopback::startTap();
    }
};

TEST_F(PlaybackTest, AChangeLandsAtTheEndOfThePlayingPassAndAResetOneAtOnce)
{
    tone(1000);
    const auto a = change("Open");
    ASSERT_EQ(a.size(), 441u);
    host.sleep(25);  // into the third pass
    tone(2000);
    const auto b = change("");
    host.sleep(30);
    tone(3000);
    const auto c = change("", 0, true);
    host.sleep(20);
    close(true);

    const auto heard = played();
    const std::size_t firstChange = framesIn(25);
    const std::size_t passEnd = (firstChange / a.size() + 1) * a.size();
    const std::size_t secondChange = framesIn(55);
    EXPECT_TRUE(playsLooped(heard, 0, passEnd, a));
    EXPECT_TRUE(playsLooped(heard, passEnd, secondChange, b)) << "the first change waits for the pass";
    EXPECT_TRUE(playsLooped(heard, secondChange, framesIn(75), c)) << "a reset change is heard at once";
    EXPECT_NE((secondChange - passEnd) % b.size(), 0u) << "the reset cut a pass short";
}

TEST_F(PlaybackTest, AFreshHeaderIsNeverWaitedForAndAUsedOneOnlyToTheEndOfItsPass)
{
    tone(1000);
    std::vector<std::int16_t> a, b, c;
    EXPECT_EQ(sleptDuring([&] { a = change("Open"); }), 0u);
    host.sleep(3);
    tone(2000);
    EXPECT_EQ(sleptDuring([&] { b = change(""); }), 0u) << "header 2 is fresh";
    // Header 1 is still finishing its pass: the next change waits for it.
    tone(500);
    const std::uint64_t waited = sleptDuring([&] { c = change(""); });
    EXPECT_GE(waited, 7u);
    EXPECT_LE(waited, 8u);
    host.sleep(40);
    close(true);

    // The second change follows the first after one whole pass of it.
    const auto heard = played();
    EXPECT_TRUE(playsLooped(heard, 0, a.size(), a));
    EXPECT_TRUE(playsLooped(heard, a.size(), a.size() + b.size(), b));
    EXPECT_TRUE(playsLooped(heard, a.size() + b.size(), framesIn(50), c));
}

TEST_F(PlaybackTest, APreciseLoopTakesOverAtThePassEndAndRepeatsWithoutAGap)
{
    tone(997);
    const auto a = change("Open");
    host.sleep(5);
    gWaveOutSetPreciseLoop(kTrue);
    const auto b = change("");
    ASSERT_EQ(b.size(), 44100u);  // 997 whole cycles in a second
    host.sleep(2100);
    close(true);

    const auto heard = played();
    const std::size_t passEnd = (framesIn(5) / a.size() + 1) * a.size();
    EXPECT_TRUE(playsLooped(heard, 0, passEnd, a));
    EXPECT_TRUE(playsLooped(heard, passEnd, framesIn(2100), b));
}

TEST_F(PlaybackTest, LoopCountZeroPlaysForEver)
{
    tone(1000);
    change("Open", 0);
    const auto& header = gWaveOutHdrForTests(gWaveIOStateForTests().currentHdr);
    EXPECT_EQ(header.dwLoops, 2000000000u);
    mm::loopback::takeTap();
    host.sleep(20 * 60 * 1000);  // twenty minutes: 120,000 passes
    mm::loopback::startTap();
    host.sleep(100);
    const auto heard = played();
    ASSERT_EQ(heard.size(), framesIn(100));
    EXPECT_NEAR(measureFrequency(heard.data(), heard.size(), 44100), 1000, 0.5);
    EXPECT_NEAR(rmsOf(heard.data(), heard.size()), 32767 / std::sqrt(2.0), 50);
    EXPECT_FALSE(mm::headerFlags(header) & mm::WHDR_DONE);
}

TEST_F(PlaybackTest, ClosingWithoutResetEndsOnAWholePass)
{
    tone(1000);
    const auto a = change("Open");
    host.sleep(3);
    const std::uint64_t waited = sleptDuring([&] { close(false); });
    EXPECT_GE(waited, 7u);
    EXPECT_LE(waited, 8u);
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
    const auto heard = played();
    ASSERT_GE(heard.size(), a.size());
    EXPECT_TRUE(playsLooped(heard, 0, a.size(), a));
    for (std::size_t i = a.size(); i < heard.size(); ++i) ASSERT_EQ(heard[i], 0) << "at " << i;
}

TEST_F(PlaybackTest, ClosingWithoutResetWaitsAtMostTheBudgetOfTheCurrentHeader)
{
    tone(1000);
    change("Open");
    tone(2000);
    const auto b = change("");  // queued behind header 1, looping for ever
    // The wait is for header 2: (882 / (2 x 2 x 44100) + 1) x 5 loops seconds.
    const std::uint64_t waited = sleptDuring([&] { close(false); });
    EXPECT_GE(waited, 5025u);
    EXPECT_LE(waited, 5027u);
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
    EXPECT_TRUE(host.boxes.empty());
    // Closed for good: the card takes a new opening.
    tone(1000);
    change("Open");
}

TEST_F(PlaybackTest, ClosingTwiceOrWithNothingOpenIsHarmless)
{
    EXPECT_EQ(sleptDuring([&] {
                  close(true);
                  close(false);
              }),
              0u);
    ErrorFlag error = kFalse;
    gWaveInClose(error);
    EXPECT_EQ(error, kFalse);

    tone(1000);
    change("Open");
    close(true);
    close(true);
    close(false);
    gWaveInClose(error);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
}

TEST_F(PlaybackTest, SetHdrChangesThePlayingHeaderInPlace)
{
    tone(1000);
    const auto a = change("Open");
    host.sleep(3);
    gWaveOutSetInvert(kTrue);
    const auto inverted = change("SetHdr");
    ASSERT_EQ(inverted.size(), a.size());
    host.sleep(20);
    close(true);

    // From the next sample on, the same header plays the inverted signal,
    // in the same place of its pass.
    const auto heard = played();
    const std::size_t at = framesIn(3);
    EXPECT_TRUE(playsLooped(heard, 0, at, a));
    for (std::size_t i = at; i < framesIn(23); ++i)
        ASSERT_EQ(heard[i], static_cast<std::int16_t>(-a[i % a.size()])) << "at " << i;
}

TEST_F(PlaybackTest, ANewRateOrAClosedOutputOpensTheOutputAnew)
{
    tone(1000);
    change("Open");
    host.sleep(10);
    ErrorFlag error = kFalse;
    gWaveOutSetFrequency1SweepBurst(100, 200, 1, kFalse, kFalse, 10, 0, 0, error);
    const auto sweep = change("");
    host.sleep(10);
    EXPECT_EQ(gWaveOutFormatForTests().nSamplesPerSec, 16000u) << "80 x 200 Hz";

    // An output closed without a reopen (the end of automatic bursts) is
    // opened again by the next change instead of being written to.
    close(false);
    tone(1000);
    change("");
    host.sleep(10);
    close(true);

    const auto segments = mm::loopback::takeTap();
    ASSERT_EQ(segments.size(), 3u);
    EXPECT_EQ(segments[0].rate, 44100u);
    EXPECT_EQ(segments[1].rate, 16000u);
    EXPECT_TRUE(playsLooped(segments[1].samples, 0, sweep.size(), sweep));
    EXPECT_EQ(segments[2].rate, 44100u);
    EXPECT_NEAR(measureFrequency(segments[2].samples.data(), framesIn(10), 44100), 1000, 1);
}

TEST_F(PlaybackTest, TheShownSignalIsCutToACycleOrTheStartOfTheNoise)
{
    rt::SampleArray samples;
    rt::SampleArray record;
    ErrorFlag error = kFalse;
    tone(1000);
    gWaveOutChange("Make", 0, kFalse, kTrue, samples, record, error);
    EXPECT_EQ(samples.size(), 45) << "44100 \\ 1000 + 1";
    gWaveOutSetShape("Noise");
    gWaveOutChange("Make", 0, kFalse, kFalse, samples, record, error);
    EXPECT_EQ(samples.size(), 200);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(played().empty()) << "Make plays nothing";
}

}  // namespace
}  // namespace engine_test
