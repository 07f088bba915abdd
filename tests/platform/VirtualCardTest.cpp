// The virtual card as a sound card: what its output plays (through the tap),
// what its input hears, across rates, gains and both clocks.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "platform/HostServices.h"
#include "platform/WaveApi.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/VirtualCardSession.h"

namespace {

using namespace mm;
using namespace testing_support;

constexpr DWORD kForever = 2000000000;

// An open output with its own sample buffers.
class Player {
public:
    explicit Player(DWORD rate = 44100)
    {
        const WAVEFORMATEX format = pcmFormat(rate);
        EXPECT_EQ(waveOutOpen(&handle, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    }
    ~Player()
    {
        waveOutReset(handle);
        for (auto& slot : slots_) waveOutUnprepareHeader(handle, &slot.header, sizeof(WAVEHDR));
        EXPECT_EQ(waveOutClose(handle), MMSYSERR_NOERROR);
    }

    // Queues `samples`, looped `loops` times, in buffer `slot` (0 or 1).
    WAVEHDR& play(int slot, const std::vector<std::int16_t>& samples, DWORD loops)
    {
        Slot& s = slots_[slot];
        s.samples = samples;
        s.header = WAVEHDR{};
        s.header.lpData = reinterpret_cast<char*>(s.samples.data());
        s.header.dwBufferLength = static_cast<DWORD>(s.samples.size() * 2);
        EXPECT_EQ(waveOutPrepareHeader(handle, &s.header, sizeof(WAVEHDR)), MMSYSERR_NOERROR);
        headerSetFlags(s.header, WHDR_BEGINLOOP | WHDR_ENDLOOP, 0);
        s.header.dwLoops = loops;
        EXPECT_EQ(waveOutWrite(handle, &s.header, sizeof(WAVEHDR)), MMSYSERR_NOERROR);
        return s.header;
    }

    HWAVEOUT handle = 0;

private:
    struct Slot {
        std::vector<std::int16_t> samples;
        WAVEHDR header;
    };
    Slot slots_[2];
};

// An open input recording one buffer of `frames` frames.
class Recorder {
public:
    Recorder(DWORD rate, std::size_t frames, WORD bits = 16)
        : memory_(frames * bits / 8), bits_(bits)
    {
        const WAVEFORMATEX format = pcmFormat(rate, bits);
        EXPECT_EQ(waveInOpen(&handle, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
        header.lpData = memory_.data();
        header.dwBufferLength = static_cast<DWORD>(memory_.size());
        EXPECT_EQ(waveInPrepareHeader(handle, &header, sizeof header), MMSYSERR_NOERROR);
        EXPECT_EQ(waveInAddBuffer(handle, &header, sizeof header), MMSYSERR_NOERROR);
    }
    ~Recorder()
    {
        waveInReset(handle);
        waveInUnprepareHeader(handle, &header, sizeof header);
        EXPECT_EQ(waveInClose(handle), MMSYSERR_NOERROR);
    }
    void start() { EXPECT_EQ(waveInStart(handle), MMSYSERR_NOERROR); }

    // Polls (1 ms sleeps) until the buffer is full, at most `limitMs`.
    bool waitFull(std::uint32_t limitMs)
    {
        const std::uint32_t start = host::tickCount();
        while (!(headerFlags(header) & WHDR_DONE)) {
            if (host::tickCount() - start > limitMs) return false;
            host::sleep(1);
        }
        return true;
    }

    // The recording as 16-bit samples (8-bit ones scaled up).
    std::vector<std::int16_t> samples() const
    {
        std::vector<std::int16_t> out;
        if (bits_ == 8) {
            for (char byte : memory_) out.push_back(static_cast<std::int16_t>((static_cast<unsigned char>(byte) - 128) * 256));
        } else {
            out.resize(memory_.size() / 2);
            std::memcpy(out.data(), memory_.data(), out.size() * 2);
        }
        return out;
    }

    HWAVEIN handle = 0;
    WAVEHDR header;

private:
    std::vector<char> memory_;
    WORD bits_;
};

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

// ------------------------------------------------------------- change-over

TEST_F(VirtualCard, BreakLoopLandsTheNextBufferExactlyAtTheEndOfThePass)
{
    loopback::startTap();
    {
        Player player;
        const auto first = makeTone(300, 3, 8000);   // a pass of 300 samples
        const auto second = makeTone(200, 1, -12000);
        player.play(0, first, kForever);
        sleepMs(37);  // into the sixth pass
        waveOutBreakLoop(player.handle);
        player.play(1, second, kForever);
        sleepMs(20);
    }
    const auto tap = loopback::takeTap();
    ASSERT_EQ(tap.size(), 1u);
    const auto& played = tap[0].samples;
    ASSERT_GE(played.size(), 6 * 300 + 2 * 200u);
    for (std::size_t i = 0; i < 6 * 300; ++i) {
        ASSERT_EQ(played[i], makeTone(300, 3, 8000)[i % 300]) << "sample " << i;
    }
    for (std::size_t i = 0; i < 2 * 200; ++i) {
        ASSERT_EQ(played[6 * 300 + i], makeTone(200, 1, -12000)[i % 200]) << "new sample " << i;
    }
}

TEST_F(VirtualCard, ResetSwapsTheSignalAtOnce)
{
    loopback::startTap();
    {
        Player player;
        player.play(0, std::vector<std::int16_t>(10000, 1111), kForever);
        sleepMs(50);
        waveOutBreakLoop(player.handle);
        waveOutReset(player.handle);
        player.play(1, std::vector<std::int16_t>(100, 2222), kForever);
        sleepMs(5);
    }
    const auto played = loopback::takeTap().at(0).samples;
    const auto change = std::find(played.begin(), played.end(), 2222) - played.begin();
    EXPECT_EQ(change, 50 * 441 / 10) << "the new signal starts where the clock stood, mid-pass";
    EXPECT_EQ(std::count(played.begin(), played.end(), 0), 0) << "no silence in between";
}

TEST_F(VirtualCard, ALoopCountOfTwoBillionPlaysOnAndOn)
{
    Player player;
    WAVEHDR& header = player.play(0, kTone1k, kForever);
    sleepMs(3000);
    EXPECT_FALSE(headerFlags(header) & WHDR_DONE);
    EXPECT_TRUE(headerFlags(header) & WHDR_INQUEUE);
}

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

TEST_F(VirtualCard, TheInputIsSilentBeforeTheOutputPlays)
{
    Player player;
    Recorder recorder(44100, 2205);
    recorder.start();
    player.play(0, kTone1k, kForever);
    ASSERT_TRUE(recorder.waitFull(1000));
    const auto heard = recorder.samples();
    const std::size_t onset = onsetIndex(heard.data(), heard.size(), 0);
    EXPECT_EQ(onset, 20 * 441 / 10 + 1) << "20 ms of silence, then the tone's first non-zero sample";
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
