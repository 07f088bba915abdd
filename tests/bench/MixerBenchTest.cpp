// The mixer module on ALSA's default device against the private sound
// server that scripts/test starts: its mixer offers all five controls, the
// levels set change what comes back from a played tone, and the restore
// puts back exactly what was found.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "mixer/modMixer.h"
#include "platform/HostServices.h"
#include "platform/MixerApi.h"
#include "platform/WaveApi.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"

namespace {

using namespace mm;
using namespace testing_support;

constexpr DWORD kRate = 44100;

bool waitFor(const std::function<bool()>& condition, std::uint32_t limitMs)
{
    const std::uint32_t start = host::tickCount();
    while (!condition()) {
        if (host::tickCount() - start > limitMs) return false;
        host::sleep(1);
    }
    return true;
}

// What pactl prints for its arguments (the server's own view, not the
// program's mixer code).
std::string pactl(const std::string& arguments)
{
    std::string output;
    if (FILE* pipe = ::popen(("pactl " + arguments + " 2>&1").c_str(), "r")) {
        char chunk[256];
        while (std::fgets(chunk, sizeof chunk, pipe) != nullptr) output += chunk;
        ::pclose(pipe);
    }
    return output;
}

// The default sink's and source's volumes and mutes, per channel.
std::string desktopLevels()
{
    return pactl("get-sink-volume @DEFAULT_SINK@") + pactl("get-sink-mute @DEFAULT_SINK@") +
           pactl("get-source-volume @DEFAULT_SOURCE@") + pactl("get-source-mute @DEFAULT_SOURCE@");
}

// Plays a 1 kHz tone at half scale, records 1.5 s of it and returns its
// level over the last half second (the earlier part may still be at the
// level before a change) in dB relative to the tone as played: the median
// of its amplitude in 10 ms windows, which a dropout on a busy machine
// does not move.
double recordedLevelDb()
{
    const WAVEFORMATEX format = pcmFormat(kRate);
    HWAVEOUT output = 0;
    HWAVEIN input = 0;
    EXPECT_EQ(waveOutOpen(&output, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInOpen(&input, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);

    std::vector<std::int16_t> tone = makeTone(441, 10, 16000);
    WAVEHDR play;
    play.lpData = reinterpret_cast<char*>(tone.data());
    play.dwBufferLength = static_cast<DWORD>(tone.size() * 2);
    EXPECT_EQ(waveOutPrepareHeader(output, &play, sizeof play), MMSYSERR_NOERROR);
    headerSetFlags(play, WHDR_BEGINLOOP | WHDR_ENDLOOP, 0);
    play.dwLoops = 2000000000;

    std::vector<std::int16_t> heard(kRate * 3 / 2);
    WAVEHDR record;
    record.lpData = reinterpret_cast<char*>(heard.data());
    record.dwBufferLength = static_cast<DWORD>(heard.size() * 2);
    EXPECT_EQ(waveInPrepareHeader(input, &record, sizeof record), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInAddBuffer(input, &record, sizeof record), MMSYSERR_NOERROR);

    EXPECT_EQ(waveOutWrite(output, &play, sizeof play), MMSYSERR_NOERROR);
    host::sleep(200);
    EXPECT_EQ(waveInStart(input), MMSYSERR_NOERROR);
    EXPECT_TRUE(waitFor([&] { return headerFlags(record) & WHDR_DONE; }, 10000));

    waveInReset(input);
    waveInUnprepareHeader(input, &record, sizeof record);
    waveInClose(input);
    waveOutReset(output);
    waveOutUnprepareHeader(output, &play, sizeof play);
    waveOutClose(output);

    const std::size_t steady = kRate / 2;
    const auto windows = toneWindows(heard.data() + heard.size() - steady, steady, kRate, 1000, 441);
    std::vector<double> amplitudes;
    for (const ToneWindow& window : windows) amplitudes.push_back(window.amplitude);
    std::nth_element(amplitudes.begin(), amplitudes.begin() + amplitudes.size() / 2, amplitudes.end());
    return 20 * std::log10(std::max(amplitudes[amplitudes.size() / 2], 1e-3) / 16000);
}

class MixerBench : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::getenv("WAVELARK_PULSE_PID") == nullptr) {
            GTEST_SKIP() << "needs the private sound server that scripts/test starts";
        }
        ASSERT_EQ(waveBackendName(), "alsa");
    }

    // The server as the other tests expect it: everything at full, nothing
    // muted.
    void TearDown() override
    {
        if (IsSkipped()) return;
        std::string report;
        ErrorFlag error = kFalse;
        gbMixerThereInit(report, error);
        gMixerOutMasterSetLevel(65535, error);
        gMixerOutMasterSetMute(kFalse, error);
        gMixerOutWaveSetLevel(65535, error);
        gMixerOutWaveSetMute(kFalse, error);
        gMixerInMicSetLevel(65535, error);
        EXPECT_EQ(error, kFalse);
    }

    // The walk; expects it to find all five slots without a box.
    std::string walk()
    {
        std::string report;
        ErrorFlag error = kFalse;
        EXPECT_EQ(gbMixerThereInit(report, error), kTrue);
        EXPECT_EQ(error, kFalse);
        for (const auto& box : host.boxes) ADD_FAILURE() << box.title << ": " << box.text;
        for (int entry = 0; entry < 5; ++entry) {
            EXPECT_EQ(gaMixerControlDetails(entry).cbStruct, sizeof(MIXERCONTROLDETAILS))
                << "slot " << entry + 1 << " was not found";
        }
        return report;
    }

    // A slot's present value, read with the request the walk kept.
    static std::int32_t slotValue(int entry)
    {
        HMIXER handle = 0;
        EXPECT_EQ(mixerOpen(&handle, 0, 0, 0, 0), MMSYSERR_NOERROR);
        EXPECT_EQ(mixerGetControlDetailsA(handle, &gaMixerControlDetails(entry), 0), MMSYSERR_NOERROR);
        mixerClose(handle);
        return gaMixerValue(entry)[1];
    }

    ScriptedHost host;  // real time
};

TEST_F(MixerBench, AllFiveSlotsAreFoundThroughTheDefaultDevice)
{
    const std::string report = walk();
    EXPECT_NE(report.find("Mixer:  PulseAudio,  Destinations: 2"), std::string::npos);
    EXPECT_NE(report.find("SOURCE: Wavelark Wave  (Wave)"), std::string::npos);
    EXPECT_NE(report.find("Component type: MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE"), std::string::npos);
    std::string shown = report;
    for (std::size_t at = 0; (at = shown.find("\r\n", at)) != std::string::npos;) shown.erase(at, 1);
    std::cout << "---- mixer report ----\n" << shown << "\n---- end of mixer report ----\n";
}

TEST_F(MixerBench, LowerLevelsLowerTheRecordedLevelOfAPlayedTone)
{
    walk();
    const double full = recordedLevelDb();
    EXPECT_NEAR(full, 0.0, 0.5) << "everything at full passes the tone unchanged";

    ErrorFlag error = kFalse;
    gMixerOutMasterSetLevel(32768, error);
    const double master = recordedLevelDb() - full;
    gMixerOutMasterSetLevel(65535, error);
    gMixerOutWaveSetLevel(32768, error);
    const double wave = recordedLevelDb() - full;
    gMixerOutWaveSetLevel(65535, error);
    gMixerInMicSetLevel(32768, error);
    const double mic = recordedLevelDb() - full;
    gMixerInMicSetLevel(65535, error);
    EXPECT_EQ(error, kFalse);
    std::cout << "half master " << master << " dB, half wave " << wave << " dB, half microphone " << mic
              << " dB\n";

    EXPECT_LT(master, -3.0) << "half the master level is clearly quieter";
    EXPECT_NEAR(wave, -6.02, 0.3) << "the program's own stream gain is linear";
    EXPECT_LT(mic, -3.0) << "half the recording level is clearly quieter";

    gMixerOutMasterSetMute(kTrue, error);
    EXPECT_LT(recordedLevelDb() - full, -60.0) << "muted";
}

TEST_F(MixerBench, TheLevelsFoundAtStartAreExactlyBackAfterTheRestore)
{
    // Start from levels that are neither full nor the defaults.
    walk();
    ErrorFlag error = kFalse;
    gMixerOutMasterSetLevel(40000, error);
    gMixerOutMasterSetMute(kTrue, error);
    gMixerOutWaveSetLevel(30001, error);
    gMixerOutWaveSetMute(kTrue, error);
    gMixerInMicSetLevel(20000, error);
    ASSERT_EQ(error, kFalse);

    walk();
    std::int32_t found[5];
    for (int entry = 0; entry < 5; ++entry) found[entry] = gaMixerRestore(entry);
    EXPECT_EQ(found[1], 1);
    EXPECT_EQ(found[3], 1);

    gMixerOutMasterSetLevel(65534, error);
    gMixerOutMasterSetMute(kFalse, error);
    gMixerOutWaveSetLevel(65535, error);
    gMixerOutWaveSetMute(kFalse, error);
    gMixerInMicSetLevel(1, error);
    ASSERT_EQ(error, kFalse);
    for (int entry = 0; entry < 5; ++entry) EXPECT_NE(slotValue(entry), found[entry]) << "slot " << entry + 1;

    gMixerSelectedRestore(error);
    EXPECT_EQ(error, kFalse);
    for (int entry = 0; entry < 5; ++entry) EXPECT_EQ(slotValue(entry), found[entry]) << "slot " << entry + 1;
    walk();
    for (int entry = 0; entry < 5; ++entry) EXPECT_EQ(gaMixerRestore(entry), found[entry]) << "slot " << entry + 1;
}

TEST_F(MixerBench, TheDesktopsLevelsComeBackChannelByChannelAsTheServerReadsThem)
{
    struct Desktop {
        const char* sink;
        const char* source;
        const char* sinkMuted;
    };
    // Unequal channels (a balance), and exactly half (raw 32768 of 65536).
    const Desktop desktops[] = {{"40% 60%", "70% 90%", "0"}, {"32768 32768", "32768 32768", "1"}};
    for (const Desktop& desktop : desktops) {
        SCOPED_TRACE(desktop.sink);
        pactl(std::string("set-sink-volume @DEFAULT_SINK@ ") + desktop.sink);
        pactl(std::string("set-source-volume @DEFAULT_SOURCE@ ") + desktop.source);
        pactl(std::string("set-sink-mute @DEFAULT_SINK@ ") + desktop.sinkMuted);
        const std::string before = desktopLevels();

        walk();
        ErrorFlag error = kFalse;
        gMixerOutMasterSetLevel(20000, error);
        gMixerOutMasterSetMute(toBool16(desktop.sinkMuted[0] == '0'), error);
        gMixerInMicSetLevel(5000, error);
        ASSERT_EQ(error, kFalse);
        ASSERT_NE(desktopLevels(), before) << "the run changed the levels";

        gMixerSelectedRestore(error);
        EXPECT_EQ(error, kFalse);
        EXPECT_EQ(desktopLevels(), before);
    }
}

}  // namespace
