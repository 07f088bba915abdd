// The walk of mixer 0 on mixers the tests lay out: the report's exact text,
// the slots it fills, the sources it leaves out, and how it ends when there
// is no mixer or a read fails.
#include <gtest/gtest.h>

#include "tests/mixer/MixerTestSupport.h"

namespace {

using namespace mixer_testing;

// Two destinations: speakers with three controls (one with signed bounds
// and no value shown), a wave source and a disconnected CD source without
// controls; a recording destination without controls and a microphone whose
// target type is not a known one.
MixerLayout smallCard()
{
    ControlLayout balance = control(MIXERCONTROL_CONTROLTYPE_PAN, "Balance");
    balance.minimum = static_cast<DWORD>(-32768);
    balance.maximum = 32767;

    LineLayout wave = line(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, "Wave", "Wave",
                              {control(MIXERCONTROL_CONTROLTYPE_VOLUME, "Wave Volume", Drives::Wave)});
    wave.targetType = MIXERLINE_TARGETTYPE_WAVEOUT;
    wave.targetName = "Test Card";
    LineLayout cd = line(MIXERLINE_COMPONENTTYPE_SRC_COMPACTDISC, "CD", "CD Player");
    cd.flags = MIXERLINE_LINEF_ACTIVE | MIXERLINE_LINEF_DISCONNECTED;
    LineLayout speakers = line(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, "Spkr", "Speakers",
                                  {control(MIXERCONTROL_CONTROLTYPE_VOLUME, "Master Volume", Drives::Master),
                                   control(MIXERCONTROL_CONTROLTYPE_MUTE, "Master Mute", Drives::MasterMute),
                                   balance},
                                  {wave, cd});
    speakers.targetType = MIXERLINE_TARGETTYPE_WAVEOUT;
    speakers.targetName = "Test Card";

    LineLayout mic = line(MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE, "Mic", "Microphone",
                             {control(MIXERCONTROL_CONTROLTYPE_VOLUME, "Mic Volume", Drives::Mic),
                              control(MIXERCONTROL_CONTROLTYPE_MUTE, "Mic Mute", Drives::MicMute)});
    mic.channels = 1;
    mic.targetType = 9;
    LineLayout recording = line(MIXERLINE_COMPONENTTYPE_DST_WAVEIN, "Rec", "Recording", {}, {mic});
    recording.channels = 1;
    recording.targetType = MIXERLINE_TARGETTYPE_WAVEIN;
    recording.targetName = "Test Card";

    MixerLayout card;
    card.name = "Test Card";
    card.destinations = {speakers, recording};
    return card;
}

class MixerReport : public MixerTest {};

TEST_F(MixerReport, ASmallCardIsReportedExactlyAndItsSlotsAreFilled)
{
    loopback::setMixers({smallCard()});
    loopback::Levels& levels = loopback::levels();
    levels.master = 40000;
    levels.masterMute = true;
    levels.wave = 30000;
    levels.mic = 12345;

    const std::string expected =
        "Mixer Count: 1\r\n"
        "Mixer:  Test Card,  Destinations: 2\r\n"
        "\r\n"
        "Info on Mixer 0 follows\r\n"
        "\r\n"
        "DESTINATION: Speakers  (Spkr)\r\n"
        "************************************************************\r\n"
        "Line ID: FFFF0000 \t Component type: MIXERLINE_COMPONENTTYPE_DST_SPEAKERS\r\n"
        "Line Flag: MIXERLINE_LINEF_ACTIVE \t Source connection count: 2 \t Channel count: 2 \t Control count: 3\r\n"
        "Target media: Test Card \t Type: MIXERLINE_TARGETTYPE_WAVEOUT\r\n"
        "\r\n"
        "(1) CONTROL:  Master Volume\r\n"
        "Type:  MIXERCONTROL_CONTROLTYPE_VOLUME\r\n"
        "Control flag:   \t Multiple items:  0 \t Control ID:  1 \t Bounds. Min: 0  Max: 65535 \t Current: 40000\r\n"
        "\r\n"
        "(2) CONTROL:  Master Mute\r\n"
        "Type:  MIXERCONTROL_CONTROLTYPE_MUTE\r\n"
        "Control flag:  MIXERCONTROL_CONTROLF_UNIFORM \t Multiple items:  0 \t Control ID:  2 \t Bounds. Min: 0  Max: 1 \t Current: 1\r\n"
        "\r\n"
        "(3) CONTROL:  Balance\r\n"
        "Type:  MIXERCONTROL_CONTROLTYPE_PAN\r\n"
        "Control flag:   \t Multiple items:  0 \t Control ID:  3 \t Bounds. Min: -32768  Max: 32767\r\n"
        "\r\n"
        "\tSOURCE: Wave  (Wave)\r\n"
        "\t******************************\r\n"
        "\tSource Line ID: 0 \t Component type: MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT\r\n"
        "\tLine Flag: MIXERLINE_LINEF_ACTIVE | MIXERLINE_LINEF_SOURCE \t Source connection count: 0 \t Channel count: 2 \t Control count: 1\r\n"
        "\tTarget media: Test Card \t Type: MIXERLINE_TARGETTYPE_WAVEOUT\r\n"
        "\r\n"
        "\t(1) CONTROL:  Wave Volume\r\n"
        "\tType:  MIXERCONTROL_CONTROLTYPE_VOLUME\r\n"
        "\tControl flag:   \t Multiple items:  0 \t Control ID:  4 \t Bounds. Min: 0  Max: 65535 \t Current: 30000\r\n"
        "\r\n"
        "\tSOURCE: CD Player  (CD)\r\n"
        "\t******************************\r\n"
        "\tSource Line ID: 10000 \t Component type: MIXERLINE_COMPONENTTYPE_SRC_COMPACTDISC\r\n"
        "\tLine Flag: MIXERLINE_LINEF_ACTIVE | MIXERLINE_LINEF_DISCONNECTED | MIXERLINE_LINEF_SOURCE \t Source connection count: 0 \t Channel count: 2 \t Control count: 0\r\n"
        "\tTarget media:  \t Type: MIXERLINE_TARGETTYPE_UNDEFINED"
        "DESTINATION: Recording  (Rec)\r\n"
        "************************************************************\r\n"
        "Line ID: FFFF0001 \t Component type: MIXERLINE_COMPONENTTYPE_DST_WAVEIN\r\n"
        "Line Flag: MIXERLINE_LINEF_ACTIVE \t Source connection count: 1 \t Channel count: 1 \t Control count: 0\r\n"
        "Target media: Test Card \t Type: MIXERLINE_TARGETTYPE_WAVEIN"
        "\tSOURCE: Microphone  (Mic)\r\n"
        "\t******************************\r\n"
        "\tSource Line ID: 1 \t Component type: MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE\r\n"
        "\tLine Flag: MIXERLINE_LINEF_ACTIVE | MIXERLINE_LINEF_SOURCE \t Source connection count: 0 \t Channel count: 1 \t Control count: 2\r\n"
        "\tTarget media:  \t Type: <invalid>\r\n"
        "\r\n"
        "\t(1) CONTROL:  Mic Volume\r\n"
        "\tType:  MIXERCONTROL_CONTROLTYPE_VOLUME\r\n"
        "\tControl flag:   \t Multiple items:  0 \t Control ID:  5 \t Bounds. Min: 0  Max: 65535 \t Current: 12345\r\n"
        "\r\n"
        "\t(2) CONTROL:  Mic Mute\r\n"
        "\tType:  MIXERCONTROL_CONTROLTYPE_MUTE\r\n"
        "\tControl flag:  MIXERCONTROL_CONTROLF_UNIFORM \t Multiple items:  0 \t Control ID:  6 \t Bounds. Min: 0  Max: 1 \t Current: 0\r\n"
        "\r\n";
    EXPECT_EQ(walk(), expected);

    // Slots 1, 2, 3 and 5 hold the requests of controls 1, 2, 4 and 5 (the
    // setters show the requests work); the wave mute was never found, and
    // the microphone's mute has no slot.
    const DWORD ids[5] = {1, 2, 4, 0, 5};
    const std::int32_t found[5] = {40000, 1, 30000, 0, 12345};
    for (int entry = 0; entry < 5; ++entry) {
        EXPECT_EQ(gaMixerControlDetails(entry).dwControlID, ids[entry]) << "slot " << entry + 1;
        EXPECT_EQ(gaMixerRestore(entry), found[entry]) << "slot " << entry + 1;
    }
    EXPECT_EQ(gaMixerControlDetails(3).cbStruct, 0u) << "an empty request";
}

TEST_F(MixerReport, AnAudigyMixerLeavesOutTheLastSourceOfEveryDestination)
{
    auto sources = [](std::initializer_list<const char*> names) {
        std::vector<LineLayout> list;
        for (const char* name : names) list.push_back(line(MIXERLINE_COMPONENTTYPE_SRC_LINE, name, name));
        return list;
    };
    MixerLayout card;
    card.destinations = {line(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, "Spk", "Speakers", {}, sources({"Src A", "Src B", "Src C"})),
                         line(MIXERLINE_COMPONENTTYPE_DST_WAVEIN, "Rec", "Recording", {}, sources({"Src D", "Src E"}))};
    auto visited = [&](const std::string& report) {
        std::string seen;
        for (const char* name : {"A", "B", "C", "D", "E"}) {
            if (report.find(std::string("SOURCE: Src ") + name) != std::string::npos) seen += name;
        }
        return seen;
    };

    card.name = "SB Live! 5.1";
    loopback::setMixers({card});
    EXPECT_EQ(visited(walk()), "ABCDE");

    card.name = "SB Audigy 2 ZS";
    loopback::setMixers({card});
    const std::string report = walk();
    EXPECT_EQ(visited(report), "ABD");
    EXPECT_NE(report.find("Source connection count: 3"), std::string::npos) << "the line still counts it";
}

TEST_F(MixerReport, TwoMixersAreListedButOnlyMixerZeroIsDetailed)
{
    MixerLayout second;
    second.name = "Second Card";
    second.destinations = {line(MIXERLINE_COMPONENTTYPE_DST_HEADPHONES, "Phones", "Headphones")};
    loopback::setMixers({loopback::standardMixer(), second});

    const std::string report = walk();
    EXPECT_EQ(report.substr(0, report.find("DESTINATION")),
              "Mixer Count: 2\r\n"
              "Mixer:  Wavelark Virtual Card,  Destinations: 2\r\n"
              "Mixer:  Second Card,  Destinations: 1\r\n"
              "\r\n"
              "Info on Mixer 0 follows\r\n"
              "\r\n");
    EXPECT_EQ(report.find("Headphones"), std::string::npos);
    EXPECT_NE(report.find("DESTINATION: Recording"), std::string::npos);
}

TEST_F(MixerReport, NoMixerGivesOnePlainBoxAndFalseWithTheFlagUntouched)
{
    loopback::setMixers({});
    std::string report = "before";
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbMixerThereInit(report, error), kFalse);
    EXPECT_EQ(error, kFalse);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "No mixers on this PC");
    EXPECT_EQ(host.boxes[0].style, host::kOkOnly);
    EXPECT_EQ(report, "before");
}

TEST_F(MixerReport, AFailedReadStopsTheReportWhereItFailed)
{
    loopback::failMixerReads("Wave Volume", MMSYSERR_NOMEM);
    std::string report;
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbMixerThereInit(report, error), kFalse);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Unable to allocate resources.");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation);
    EXPECT_EQ(host.boxes[0].title, "modMixer.mlGetValue");
    const std::string tail = "\t(1) CONTROL:  Wave Volume\r\n"
                             "\tType:  MIXERCONTROL_CONTROLTYPE_VOLUME\r\n"
                             "\tControl flag:   \t Multiple items:  0 \t Control ID:  3 \t Bounds. Min: 0  Max: 65535";
    ASSERT_GE(report.size(), tail.size());
    EXPECT_EQ(report.substr(report.size() - tail.size()), tail) << "no value, nothing after";
    EXPECT_EQ(report.find("Recording"), std::string::npos);
}

TEST_F(MixerReport, AMixerThatCannotBeReadIsReportedUnderTheListAndAnUnknownCodeHasNoText)
{
    loopback::refuseMixerOpen(MIXERR_INVALLINE);
    std::string report;
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbMixerThereInit(report, error), kFalse);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "<unknown error>");
    EXPECT_EQ(host.boxes[0].title, "modMixer.mListMixers");
    EXPECT_EQ(report, "Mixer Count: 1Info on Mixer 0 follows\r\n\r\n");
}

}  // namespace
