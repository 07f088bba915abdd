// The signal engine through ALSA against the private sound server of
// scripts/test: what the engine plays comes back through the null sink's
// monitor, recorded by a recorder of the test's own.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "base/Array.h"
#include "base/Trap.h"
#include "engine/modTimeResponseShow.h"
#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutTesting.h"
#include "engine/modWavePolarity.h"
#include "platform/HostServices.h"
#include "platform/WaveApi.h"
#include "services/modErrorHandler.h"
#include "tests/bench/DoomedServer.h"
#include "tests/bench/Recorder.h"
#include "tests/support/PassWalk.h"
#include "tests/support/RecordingSurface.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"

namespace {

using namespace testing_support;

constexpr mm::DWORD kRate = 44100;

class EngineBench : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::getenv("WAVELARK_PULSE_PID") == nullptr)
            GTEST_SKIP() << "needs the private sound server that scripts/test starts";
        ASSERT_EQ(mm::waveBackendName(), "alsa");
        gWaveOutResetForTests();
        gInstallErrorHandler();
        findDevices();
        gWaveOutSetShape("Sine");
    }
    void TearDown() override
    {
        gWaveOutResetForTests();
        rt::setErrorReporter(nullptr);
    }

    void findDevices()
    {
        ErrorFlag error = kFalse;
        ASSERT_EQ(gbWaveOutThere(error), kTrue);
        ASSERT_EQ(gbWaveInThere(error), kTrue);
        ASSERT_EQ(error, kFalse);
        ASSERT_EQ(gWaveOutInfo().sampleRate, 44100) << "the server takes CD quality";
        ASSERT_EQ(gWaveIOStateForTests().waveOutDeviceId, 0) << "ALSA's default comes first";
    }

    static void tone(float frequency)
    {
        ErrorFlag error = kFalse;
        gWaveOutSetFrequency1SweepBurst(frequency, 0, 0, kFalse, kFalse, 0, 0, 0, error);
        ASSERT_EQ(error, kFalse);
    }

    // gWaveOutChange; the whole made buffer.
    std::vector<std::int16_t> change(const std::string& action, ErrorFlag& error, bool reset = false)
    {
        rt::SampleArray samples;
        rt::SampleArray noRecord;
        gWaveOutChange(action, 0, toBool16(reset), kFalse, samples, noRecord, error);
        return samples.items();
    }
    std::vector<std::int16_t> change(const std::string& action)
    {
        ErrorFlag error = kFalse;
        auto made = change(action, error);
        EXPECT_EQ(error, kFalse);
        EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
        return made;
    }

    // Samples from starting the input to hearing a tone written just before.
    static std::size_t pathLatency()
    {
        const mm::WAVEFORMATEX format = mm::pcmFormat(kRate);
        mm::HWAVEOUT output = 0;
        mm::HWAVEIN input = 0;
        EXPECT_EQ(mm::waveOutOpen(&output, 0, &format, 0, 0, mm::CALLBACK_NULL), mm::MMSYSERR_NOERROR);
        EXPECT_EQ(mm::waveInOpen(&input, 0, &format, 0, 0, mm::CALLBACK_NULL), mm::MMSYSERR_NOERROR);
        std::vector<std::int16_t> tone = makeTone(441, 10, 16000);
        std::vector<char> memory(kRate);  // 0.5 s
        mm::WAVEHDR played;
        played.lpData = reinterpret_cast<char*>(tone.data());
        played.dwBufferLength = static_cast<mm::DWORD>(tone.size() * 2);
        mm::WAVEHDR recorded;
        recorded.lpData = memory.data();
        recorded.dwBufferLength = static_cast<mm::DWORD>(memory.size());
        mm::waveOutPrepareHeader(output, &played, sizeof played);
        mm::headerSetFlags(played, mm::WHDR_BEGINLOOP | mm::WHDR_ENDLOOP, 0);
        played.dwLoops = 2000000000;
        mm::waveInPrepareHeader(input, &recorded, sizeof recorded);
        mm::waveInAddBuffer(input, &recorded, sizeof recorded);
        mm::waveOutWrite(output, &played, sizeof played);
        mm::waveInStart(input);
        EXPECT_TRUE(waitFor([&] { return mm::headerFlags(recorded) & mm::WHDR_DONE; }, 5000));
        mm::waveInReset(input);
        mm::waveInUnprepareHeader(input, &recorded, sizeof recorded);
        mm::waveInClose(input);
        mm::waveOutReset(output);
        mm::waveOutUnprepareHeader(output, &played, sizeof played);
        mm::waveOutClose(output);
        std::vector<std::int16_t> heard(memory.size() / 2);
        std::memcpy(heard.data(), memory.data(), memory.size());
        const std::size_t onset = onsetIndex(heard.data(), heard.size(), 2000);
        return onset < heard.size() ? onset : 0;
    }

    ScriptedHost host;  // real time
};

TEST_F(EngineBench, AToneComesBackAtItsFrequencyAndLevelWithoutAGap)
{
    tone(1000);
    Recorder recorder(2.0);
    ASSERT_TRUE(recorder.ok());
    const auto buffer = change("Open");
    const auto heard = recorder.take();
    ASSERT_FALSE(heard.empty()) << "the recording did not come";
    ErrorFlag error = kFalse;
    gWaveOutClose(kTrue, error);

    const std::size_t onset = onsetIndex(heard.data(), heard.size(), 2000);
    ASSERT_LT(onset, 22050u) << "the tone arrives within half a second";
    const std::int16_t* steady = heard.data() + onset + 44;
    const std::size_t length = heard.size() - onset - 44;
    EXPECT_NEAR(measureFrequency(steady, length, kRate), 1000.0, 0.5);
    const double levelDb = 20 * std::log10(rmsOf(steady, length) / (32767 / std::sqrt(2.0)));
    EXPECT_NEAR(levelDb, 0.0, 0.5);
    // Every pass of the 441 samples comes back whole, one after the other.
    const PassWalk walk = walkPasses(heard, {buffer}, 2);
    EXPECT_TRUE(walk.faults.empty()) << "first fault at " << walk.faults.front();
    EXPECT_GT(walk.end - walk.start, 1.5 * kRate);
}

TEST_F(EngineBench, TwentyChangesEachLandOnAPassBoundaryWithNothingMissingOrRepeated)
{
    // Neighbours differ, so a pass of one cannot pass for the other.
    const float frequencies[] = {1000, 1500, 750, 2000, 1200, 600, 1800, 900, 2500, 1100, 700,
                                 1600, 800, 2200, 1300, 650, 1900, 950, 2400, 1050, 1400};
    std::vector<std::vector<std::int16_t>> buffers;
    Recorder recorder(4.0);
    ASSERT_TRUE(recorder.ok());
    host.sleep(200);
    tone(frequencies[0]);
    buffers.push_back(change("Open"));
    for (std::size_t i = 1; i < std::size(frequencies); ++i) {
        host.sleep(120);
        tone(frequencies[i]);
        buffers.push_back(change(""));
    }
    const auto heard = recorder.take();
    ASSERT_FALSE(heard.empty()) << "the recording did not come";
    ErrorFlag error = kFalse;
    gWaveOutClose(kTrue, error);

    const PassWalk walk = walkPasses(heard, buffers, 2);
    ASSERT_LT(walk.start, heard.size()) << "the first tone never came back";
    EXPECT_TRUE(walk.faults.empty()) << walk.faults.size() << " faults, the first at "
                                     << walk.faults.front();
    EXPECT_EQ(walk.changes.size(), 20u) << "every change was heard, each at a pass boundary";
}

TEST_F(EngineBench, AMeasuredBurstComesBackPositiveFirstAtThePathsLatency)
{
    // The path's latency first, measured the way the engine records: a
    // tone written, the input started straight after.
    const std::size_t toneOnset = pathLatency();
    ASSERT_GT(toneOnset, 0u);

    RecordingSurface surface;
    ErrorFlag error = kFalse;
    gnTimeResponseInit(surface, 0, 0, 400, 200, error);
    rt::SampleArray record(1, 1);
    gWavePolarity(1000, 2, 500, kTrue, record, error);
    ASSERT_EQ(error, kFalse);
    ASSERT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
    ASSERT_EQ(record.size(), 22050) << "one pass of 500 ms";

    const std::vector<std::int16_t>& heard = record.items();
    const std::size_t onset = onsetIndex(heard.data(), heard.size(), 2000);
    ASSERT_LT(onset + 200, heard.size()) << "the burst is in the recording";
    ::testing::Test::RecordProperty("latency_ms", static_cast<int>(onset * 1000 / kRate));
    EXPECT_NEAR(static_cast<double>(onset), static_cast<double>(toneOnset), 0.025 * kRate)
        << "burst at " << onset * 1000.0 / kRate << " ms, tone at " << toneOnset * 1000.0 / kRate
        << " ms";
    // The first half-cycle (22 samples) is positive, the second negative;
    // two cycles and silence after them.
    for (std::size_t i = onset; i < onset + 18; ++i) EXPECT_GT(heard[i], 0) << i - onset;
    for (std::size_t i = onset + 25; i < onset + 40; ++i) EXPECT_LT(heard[i], 0) << i - onset;
    EXPECT_GT(peakOf(heard.data() + onset, 88), 30000);
    EXPECT_LT(peakOf(heard.data() + onset + 95, heard.size() - onset - 95), 100);
    EXPECT_FALSE(surface.lines().empty());
}

TEST_F(EngineBench, AKilledServerIsToldAsLostAndTheNextChangeGivesTheBoxWithoutAHang)
{
    DoomedServer server;
    ASSERT_TRUE(server.playThrough()) << "a second private server could not be started";

    tone(1000);
    ASSERT_TRUE(waitFor(
        [&] {
            ErrorFlag error = kFalse;
            host.boxes.clear();
            change("Open", error);
            return !error;
        },
        5000));
    host.sleep(300);
    server.kill();
    const auto killed = std::chrono::steady_clock::now();

    // The loss is told without any call but the window's cheap query, and
    // nothing waits on the playing header any more.
    std::string lost;
    EXPECT_TRUE(waitFor([&] { return gbWaveOutLost(lost) != kFalse; }, 3000));
    std::cout << "lost output told after "
              << std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - killed).count()
              << " ms\n";
    EXPECT_EQ(lost, "There is no driver installed on your system.");
    const auto& playing = gWaveOutHdrForTests(gWaveIOStateForTests().currentHdr);
    EXPECT_TRUE(waitFor([&] { return mm::headerFlags(playing) & mm::WHDR_DONE; }, 10000));

    // The next change opens the output anew, which the missing server refuses.
    tone(2000);
    ErrorFlag error = kFalse;
    change("", error);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].title, "modWaveInOut.mWaveOutOpenPrepare");
    EXPECT_EQ(host.boxes[0].text, "There is no driver installed on your system.");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation);

    const auto start = std::chrono::steady_clock::now();
    error = kFalse;
    gWaveOutClose(kTrue, error);
    EXPECT_EQ(error, kFalse);
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));

    // No server, no device: opening again is refused with a box, not a hang.
    host.boxes.clear();
    change("Open", error);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].title, "modWaveInOut.mWaveOutOpenPrepare");
    EXPECT_FALSE(host.boxes[0].text.empty());
    EXPECT_EQ(gWaveIOStateForTests().waveOutHandle, 0);
}

}  // namespace
