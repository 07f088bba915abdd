// The five setters and the restore at exit on the virtual card's mixer:
// what reaches the card, what is written, and the boxes when the mixer
// refuses, lacks a control or has gone.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "platform/HostServices.h"
#include "tests/support/CardStreams.h"
#include "tests/support/SignalMeasure.h"
#include "tests/mixer/MixerTestSupport.h"

namespace {

using namespace mixer_testing;
using loopback::MixerWrite;

class MixerLevels : public MixerTest {};

TEST_F(MixerLevels, TheSettersDriveTheCardAndTheRestorePutsBackWhatWasFound)
{
    loopback::Levels& levels = loopback::levels();
    levels.master = 50000;
    levels.wave = 60000;
    levels.waveMute = true;
    levels.mic = 20000;
    walk();

    ErrorFlag error = kFalse;
    gMixerOutMasterSetLevel(65534, error);
    gMixerOutMasterSetMute(kTrue, error);
    gMixerOutWaveSetLevel(65535, error);
    gMixerOutWaveSetMute(kFalse, error);
    gMixerInMicSetLevel(0, error);
    EXPECT_EQ(error, kFalse);
    EXPECT_EQ(levels.master, 65534);
    EXPECT_TRUE(levels.masterMute);
    EXPECT_EQ(levels.wave, 65535);
    EXPECT_FALSE(levels.waveMute);
    EXPECT_EQ(levels.mic, 0);

    gMixerSelectedRestore(error);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(levels.master, 50000);
    EXPECT_FALSE(levels.masterMute);
    EXPECT_EQ(levels.wave, 60000);
    EXPECT_TRUE(levels.waveMute);
    EXPECT_EQ(levels.mic, 20000);

    // A Boolean True goes to the mixer as 1, never as -1.
    const std::vector<MixerWrite> expected = {
        {"Master Volume", 65534}, {"Master Mute", 1},   {"Wave Volume", 65535}, {"Wave Mute", 0},
        {"Mic Volume", 0},        {"Master Volume", 50000}, {"Master Mute", 0}, {"Wave Volume", 60000},
        {"Wave Mute", 1},         {"Mic Volume", 20000},
    };
    EXPECT_EQ(loopback::mixerWrites(), expected);
}

TEST_F(MixerLevels, AMissingWaveControlRefusesItsSetterOnly)
{
    MixerLayout card = loopback::standardMixer();
    removeControl(card, "Wave Volume");
    loopback::setMixers({card});
    walk();

    // Start-up's order: outputs unmuted, then the wave level at full.
    ErrorFlag error = kFalse;
    gMixerOutMasterSetMute(kFalse, error);
    gMixerOutWaveSetMute(kFalse, error);
    EXPECT_EQ(error, kFalse);
    gMixerOutWaveSetLevel(65535, error);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "One or more parameters are invalid.");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation);
    EXPECT_EQ(host.boxes[0].title, "modMixer.mMixerSetControl");
    EXPECT_EQ(loopback::mixerWrites(), (std::vector<MixerWrite>{{"Master Mute", 0}, {"Wave Mute", 0}}));
}

TEST_F(MixerLevels, FiveFailingSlotsGiveFiveBoxesInSlotOrderAtRestore)
{
    walk();
    loopback::failMixerWrites("Master Volume", MMSYSERR_ALLOCATED);
    loopback::failMixerWrites("Master Mute", MMSYSERR_NODRIVER);
    loopback::failMixerWrites("Wave Volume", MMSYSERR_NOMEM);
    loopback::failMixerWrites("Wave Mute", MMSYSERR_INVALFLAG);
    loopback::failMixerWrites("Mic Volume", MMSYSERR_INVALHANDLE);

    ErrorFlag error = kFalse;
    gMixerSelectedRestore(error);
    EXPECT_EQ(error, kTrue);
    EXPECT_EQ(boxTexts(), (std::vector<std::string>{
                              "Allocated",
                              "No mixer device available for uMxId",
                              "Unable to allocate resources.",
                              "One or more flags are invalid",
                              "The uMxId parameter specifies an invalid handle",
                          }));
    for (const auto& box : host.boxes) EXPECT_EQ(box.title, "modMixer.mMixerSetControl");
}

TEST_F(MixerLevels, AMixerGoneByExitFailsEverySlotAndTouchesNothing)
{
    loopback::levels().master = 1234;
    walk();
    loopback::levels().master = 4321;
    loopback::vanishMixers();

    ErrorFlag error = kFalse;
    gMixerSelectedRestore(error);
    EXPECT_EQ(error, kTrue);
    EXPECT_EQ(boxTexts(), std::vector<std::string>(5, "Invalid device identifier"));
    EXPECT_TRUE(loopback::mixerWrites().empty());
    EXPECT_EQ(loopback::levels().master, 4321);
}

TEST_F(MixerLevels, AFailedOpenStillTriesTheWriteOnMixerZero)
{
    walk();
    ErrorFlag error = kFalse;
    loopback::refuseMixerOpen(MMSYSERR_ALLOCATED, 1);
    gMixerOutMasterSetLevel(1000, error);
    EXPECT_EQ(error, kFalse) << "the write went through mixer 0 itself";
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(loopback::levels().master, 1000);

    loopback::refuseMixerOpen(MMSYSERR_ALLOCATED);
    gMixerOutMasterSetLevel(2000, error);
    EXPECT_EQ(error, kTrue);
    EXPECT_EQ(boxTexts(), std::vector<std::string>{"Allocated"});
    EXPECT_EQ(loopback::levels().master, 1000);
}

// The card's clock thread plays and records while the mixer changes the
// master level.
TEST(MixerOnAPlayingCard, TheMasterLevelReachesWhatTheCardPlays)
{
    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card(host, testing_support::VirtualCardSession::Clock::Real);
    std::string report;
    ErrorFlag error = kFalse;
    ASSERT_EQ(gbMixerThereInit(report, error), kTrue);

    testing_support::Player player;
    player.play(0, std::vector<std::int16_t>(441, 32000), testing_support::kForever);

    // What the input hears, starting well after the last change: the card
    // applies the gains when it plays, and hears its output 20 ms late.
    auto heardPeak = [&] {
        host::sleep(50);
        testing_support::Recorder recorder(44100, 441);
        recorder.start();
        EXPECT_TRUE(recorder.waitFull(10000));
        const auto heard = recorder.samples();
        return testing_support::peakOf(heard.data(), heard.size());
    };
    EXPECT_EQ(heardPeak(), 32000);
    gMixerOutMasterSetLevel(0, error);  // the bottom of the master law: -60 dB
    EXPECT_NEAR(heardPeak(), 32.0, 1.0);
    gMixerOutMasterSetLevel(65535, error);
    gMixerInMicSetLevel(32768, error);
    EXPECT_NEAR(heardPeak(), 16000.0, 1.0);
    EXPECT_EQ(error, kFalse);
}

}  // namespace
