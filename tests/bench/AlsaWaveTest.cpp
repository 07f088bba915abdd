// The ALSA back end against the private sound server that scripts/test
// starts: ALSA's default device plays into a null sink whose monitor is the
// default input, so what is played comes back as what is recorded.
#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/HostServices.h"
#include "platform/MixerApi.h"
#include "platform/WaveApi.h"
#include "tests/bench/DoomedServer.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/ThreadClasses.h"

namespace {

using namespace mm;
using namespace testing_support;

constexpr DWORD kForever = 2000000000;

class AlsaBench : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::getenv("WAVELARK_PULSE_PID") == nullptr) {
            GTEST_SKIP() << "needs the private sound server that scripts/test starts";
        }
        ASSERT_EQ(waveBackendName(), "alsa");
    }

    ScriptedHost host;  // real time
};

// A looped buffer on an open output.
struct Looping {
    std::vector<std::int16_t> samples;
    WAVEHDR header;

    Looping(HWAVEOUT output, std::vector<std::int16_t> data) : samples(std::move(data))
    {
        header.lpData = reinterpret_cast<char*>(samples.data());
        header.dwBufferLength = static_cast<DWORD>(samples.size() * 2);
        EXPECT_EQ(waveOutPrepareHeader(output, &header, sizeof header), MMSYSERR_NOERROR);
        headerSetFlags(header, WHDR_BEGINLOOP | WHDR_ENDLOOP, 0);
        header.dwLoops = kForever;
    }
};

// A 1 kHz tone looping on ALSA's default device of a server of the test's
// own, which the test may stop or kill.
class OwnServerBench : public AlsaBench {
protected:
    void SetUp() override
    {
        AlsaBench::SetUp();
        if (IsSkipped()) return;
        ASSERT_TRUE(server.playThrough()) << "a second private server could not be started";
        ASSERT_TRUE(waitFor([&] { return waveOutOpen(&output, 0, &format, 0, 0, CALLBACK_NULL) == 0; }, 5000));
        tone.emplace(output, makeTone(441, 10, 16000));
        ASSERT_EQ(waveOutWrite(output, &tone->header, sizeof tone->header), MMSYSERR_NOERROR);
    }

    DoomedServer server;
    const WAVEFORMATEX format = pcmFormat(44100);
    HWAVEOUT output = 0;
    std::optional<Looping> tone;
};

TEST_F(AlsaBench, TheDefaultDeviceComesFirstWithWhatItCanDo)
{
    ASSERT_GE(waveOutGetNumDevs(), 1u);
    WAVEOUTCAPSA out;
    ASSERT_EQ(waveOutGetDevCapsA(0, &out, sizeof out), MMSYSERR_NOERROR);
    EXPECT_STREQ(out.szPname, "PulseAudio sound server") << "named by the server it goes through, whole";
    const DWORD cdQuality = WAVE_FORMAT_4M16 | WAVE_FORMAT_4S16;
    EXPECT_EQ(out.dwFormats & cdQuality, cdQuality) << "the server takes 44.1 kHz 16-bit";
    EXPECT_GE(out.wChannels, 2);
    EXPECT_TRUE(out.dwSupport & WAVECAPS_VOLUME) << "the server's mixer has a playback volume";
    EXPECT_TRUE(out.dwSupport & WAVECAPS_SAMPLEACCURATE);

    ASSERT_GE(waveInGetNumDevs(), 1u);
    WAVEINCAPSA in;
    ASSERT_EQ(waveInGetDevCapsA(0, &in, sizeof in), MMSYSERR_NOERROR);
    EXPECT_EQ(in.dwFormats & cdQuality, cdQuality);
}

TEST_F(AlsaBench, AToneComesBackAtItsFrequencyAndLevelWithoutAGap)
{
    const WAVEFORMATEX format = pcmFormat(44100);
    HWAVEOUT output = 0;
    HWAVEIN input = 0;
    ASSERT_EQ(waveOutOpen(&output, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    ASSERT_EQ(waveInOpen(&input, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);

    std::vector<char> memory(2 * 44100 * 2);  // 2 s
    WAVEHDR record;
    record.lpData = memory.data();
    record.dwBufferLength = static_cast<DWORD>(memory.size());
    ASSERT_EQ(waveInPrepareHeader(input, &record, sizeof record), MMSYSERR_NOERROR);
    ASSERT_EQ(waveInAddBuffer(input, &record, sizeof record), MMSYSERR_NOERROR);

    Looping tone(output, makeTone(441, 10, 16000));  // 1 kHz, half scale
    ASSERT_EQ(waveOutWrite(output, &tone.header, sizeof tone.header), MMSYSERR_NOERROR);
    ASSERT_EQ(waveInStart(input), MMSYSERR_NOERROR);
    EXPECT_TRUE(waitFor([&] { return headerFlags(record) & WHDR_DONE; }, 10000));

    EXPECT_EQ(waveInReset(input), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInUnprepareHeader(input, &record, sizeof record), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInClose(input), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutReset(output), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(output, &tone.header, sizeof tone.header), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);

    std::vector<std::int16_t> heard(memory.size() / 2);
    std::memcpy(heard.data(), memory.data(), memory.size());
    const std::size_t onset = onsetIndex(heard.data(), heard.size(), 2000);
    ASSERT_LT(onset, 22050u) << "the tone arrives within half a second";
    // From one cycle after the onset to the end: at least 1.5 s of tone.
    const std::int16_t* steady = heard.data() + onset + 44;
    const std::size_t length = heard.size() - onset - 44;
    EXPECT_NEAR(measureFrequency(steady, length, 44100), 1000.0, 0.5);
    const double levelDb = 20 * std::log10(rmsOf(steady, length) / (16000 / std::sqrt(2.0)));
    EXPECT_NEAR(levelDb, 0.0, 0.5);
    const auto windows = toneWindows(steady, length, 44100, 1000, 441);
    EXPECT_LT(largestPhaseStep(windows, 44100, 1000, 441), 0.05)
        << "a missing or repeated sample moves the phase by 0.14 rad";
    const auto [low, high] = amplitudeSpread(windows);
    EXPECT_GT(low, 0.95) << "no silent stretch";
    EXPECT_LT(high, 1.05);
}

TEST_F(OwnServerBench, KillingTheServerWhilePlayingFailsTheNextWriteWithoutAHang)
{
    host::sleep(300);
    server.kill();

    // The feeder finds the server gone; the program hears of it at its next
    // write, and nothing waits on the playing header any more.
    EXPECT_TRUE(waitFor([&] { return headerFlags(tone->header) & WHDR_DONE; }, 10000));
    Looping next(output, makeTone(441, 20, 16000));
    EXPECT_EQ(waveOutWrite(output, &next.header, sizeof next.header), MMSYSERR_NODRIVER);

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(waveOutBreakLoop(output), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutReset(output), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(output, &tone->header, sizeof tone->header), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(output, &next.header, sizeof next.header), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));

    HWAVEOUT again = 0;
    EXPECT_NE(waveOutOpen(&again, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR)
        << "no server, no device";
}

// Whether a thread of this process may enter the real-time class.
bool mayRunRealtime()
{
    bool allowed = false;
    std::thread([&] {
        sched_param parameter{};
        parameter.sched_priority = 1;
        allowed = sched_setscheduler(0, SCHED_RR, &parameter) == 0;
    }).join();
    return allowed;
}

// The output's thread talks to the server itself; the input's thread
// starts the server's client thread inside ALSA's plugin. All of them carry
// sound to or from the server: they must run raised, or a loaded machine
// holds one of them off until the server runs dry or the recording drops.
TEST_F(OwnServerBench, TheStreamThreadsAndThePluginsClientThreadRunRaisedWhereTheUserMay)
{
    if (!mayRunRealtime()) GTEST_SKIP() << "this user may not raise a thread to the real-time class";
    const auto realtime = [] {
        std::vector<std::string> names;
        for (const auto& thread : threadClasses()) {
            if (thread.realtime()) names.push_back(thread.name);
        }
        return names;
    };
    HWAVEIN input = 0;
    ASSERT_EQ(waveInOpen(&input, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    ASSERT_EQ(waveInStart(input), MMSYSERR_NOERROR);
    std::vector<std::string> raised;
    EXPECT_TRUE(waitFor([&] { return (raised = realtime()).size() >= 3; }, 2000))
        << raised.size() << " threads raised: the output's, the input's and the plugin's are expected";
    const bool clientRaised = std::find(raised.begin(), raised.end(), "threaded-ml") != raised.end();
    EXPECT_TRUE(clientRaised) << "the plugin's client thread runs time-shared";
    EXPECT_EQ(waveInReset(input), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInClose(input), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutReset(output), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(output, &tone->header, sizeof tone->header), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);
}

// Times calls; prints each and keeps the longest.
class CallClock {
public:
    template <class Call>
    auto operator()(const char* name, Call&& call)
    {
        const auto start = std::chrono::steady_clock::now();
        auto result = call();
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        std::cout << "  " << name << " " << ms << " ms\n";
        if (ms > longest) {
            longest = ms;
            longestName = name;
        }
        EXPECT_LT(ms, 3000) << name << " waited on the stopped server";
        return result;
    }
    double longest = 0;
    std::string longestName;
};

TEST_F(OwnServerBench, AStoppedServerHoldsNoCallAndPlaysAgainOnceResumed)
{
    HMIXER mixer = 0;
    ASSERT_EQ(mixerOpen(&mixer, 0, 0, 0, 0), MMSYSERR_NOERROR);
    MIXERLINEA speakers;
    speakers.cbStruct = sizeof speakers;
    speakers.dwDestination = 0;
    ASSERT_EQ(mixerGetLineInfoA(mixer, &speakers, MIXER_GETLINEINFOF_DESTINATION), MMSYSERR_NOERROR);
    std::vector<MIXERCONTROLA> all(speakers.cControls);
    MIXERLINECONTROLSA controls;
    controls.cbStruct = sizeof controls;
    controls.dwLineID = speakers.dwLineID;
    controls.cControls = speakers.cControls;
    controls.cbmxctrl = sizeof(MIXERCONTROLA);
    controls.pamxctrl = all.data();
    ASSERT_EQ(mixerGetLineControlsA(mixer, &controls, MIXER_GETLINECONTROLSF_ALL), MMSYSERR_NOERROR);
    ASSERT_FALSE(all.empty());
    const MIXERCONTROLA control = all.front();
    ASSERT_EQ(mixerClose(mixer), MMSYSERR_NOERROR);
    host::sleep(500);

    server.stop();
    const auto stopped = std::chrono::steady_clock::now();
    CallClock timed;
    // Each call the program may make now comes back; the stalled stream is
    // told as lost well within a second.
    EXPECT_TRUE(waitFor([&] { return waveOutGetFailure(output) != 0; },
                        3000));
    std::cout << "stalled stream told as lost after "
              << std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - stopped).count()
              << " ms\n";
    Looping next(output, makeTone(441, 20, 16000));
    EXPECT_EQ(timed("waveOutWrite", [&] { return waveOutWrite(output, &next.header, sizeof next.header); }),
              MMSYSERR_NODRIVER);
    timed("waveOutReset", [&] { return waveOutReset(output); });
    timed("waveOutUnprepareHeader", [&] { return waveOutUnprepareHeader(output, &tone->header, sizeof tone->header); });
    timed("waveOutUnprepareHeader", [&] { return waveOutUnprepareHeader(output, &next.header, sizeof next.header); });
    EXPECT_EQ(timed("waveOutClose", [&] { return waveOutClose(output); }), MMSYSERR_NOERROR);
    HWAVEOUT again = 0;
    const MMRESULT reopened =
        timed("waveOutOpen", [&] { return waveOutOpen(&again, 0, &format, 0, 0, CALLBACK_NULL); });
    if (reopened == MMSYSERR_NOERROR) timed("waveOutClose", [&] { return waveOutClose(again); });
    timed("mixerOpen", [&] { return mixerOpen(&mixer, 0, 0, 0, 0); });
    MIXERCONTROLDETAILS details;
    details.cbStruct = sizeof details;
    DWORD value = 32768;
    details.dwControlID = control.dwControlID;
    details.cChannels = 1;
    details.cbDetails = sizeof value;
    details.paDetails = &value;
    timed("mixerSetControlDetails", [&] { return mixerSetControlDetails(mixer, &details, 0); });
    timed("mixerGetControlDetailsA", [&] { return mixerGetControlDetailsA(mixer, &details, 0); });
    timed("mixerClose", [&] { return mixerClose(mixer); });
    std::cout << "longest call while the server was stopped: " << timed.longest << " ms ("
              << timed.longestName << ")\n";

    // Resumed, the server plays again.
    server.resume();
    HWAVEOUT resumed = 0;
    ASSERT_TRUE(waitFor([&] { return waveOutOpen(&resumed, 0, &format, 0, 0, CALLBACK_NULL) == 0; }, 10000));
    std::vector<std::int16_t> shortTone = makeTone(441, 10, 16000);
    WAVEHDR once;
    once.lpData = reinterpret_cast<char*>(shortTone.data());
    once.dwBufferLength = static_cast<DWORD>(shortTone.size() * 2);
    ASSERT_EQ(waveOutPrepareHeader(resumed, &once, sizeof once), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutWrite(resumed, &once, sizeof once), MMSYSERR_NOERROR);
    EXPECT_TRUE(waitFor([&] { return headerFlags(once) & WHDR_DONE; }, 5000));
    EXPECT_EQ(waveOutUnprepareHeader(resumed, &once, sizeof once), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutClose(resumed), MMSYSERR_NOERROR);
}

}  // namespace
