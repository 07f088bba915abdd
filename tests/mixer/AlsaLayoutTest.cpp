// How ALSA simple-mixer elements become the mixer's lines: the sound
// server's two elements, a typical card's many, a card without Master.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/alsa/AlsaMixerLayout.h"

namespace {

using namespace mm;
using alsa::ControlBinding;
using alsa::ElementInfo;
using alsa::ValueSource;
using backend::MixerLineModel;
using backend::MixerModel;

ElementInfo element(const std::string& name, bool playback, bool capture, DWORD channels = 2)
{
    ElementInfo e;
    e.baseName = name;
    e.name = name;
    e.playbackVolume = e.playbackSwitch = playback;
    e.captureVolume = e.captureSwitch = capture;
    e.playbackChannels = e.captureChannels = channels;
    e.playbackSteps = e.captureSteps = 31;
    return e;
}

// "Name:TYPE" for every source of a destination, TYPE shortened to what
// follows SRC_.
std::string sourcesOf(const MixerLineModel& destination)
{
    std::string text;
    for (const MixerLineModel& source : destination.sources) {
        static const char* types[] = {"UNDEFINED", "DIGITAL", "LINE",    "MICROPHONE", "SYNTHESIZER", "COMPACTDISC",
                                      "TELEPHONE", "PCSPEAKER", "WAVEOUT", "AUXILIARY", "ANALOG"};
        if (!text.empty()) text += ", ";
        text += source.name + ":" + types[source.componentType - MIXERLINE_COMPONENTTYPE_SRC_FIRST];
    }
    return text;
}

std::string controlsOf(const MixerLineModel& line)
{
    std::string text;
    for (const auto& control : line.controls) text += (text.empty() ? "" : ", ") + control.name;
    return text;
}

TEST(AlsaLayout, TheSoundServersMasterAndCaptureGiveAllFiveControls)
{
    std::vector<ControlBinding> bindings;
    const MixerModel model =
        alsa::layOutMixer("PulseAudio", {element("Master", true, false), element("Capture", false, true)}, bindings);
    ASSERT_EQ(model.destinations.size(), 2u);

    const MixerLineModel& speakers = model.destinations[0];
    EXPECT_EQ(speakers.componentType, MIXERLINE_COMPONENTTYPE_DST_SPEAKERS);
    EXPECT_EQ(speakers.targetName, "PulseAudio");
    EXPECT_EQ(controlsOf(speakers), "Master Volume, Master Mute");
    EXPECT_EQ(sourcesOf(speakers), "Wavelark Wave:WAVEOUT") << "the program's own stream gain";
    const MixerLineModel& wave = speakers.sources[0];
    EXPECT_EQ(wave.shortName, "Wave");
    ASSERT_EQ(wave.controls.size(), 2u);
    EXPECT_EQ(bindings[wave.controls[0].key].source, ValueSource::StreamVolume);
    EXPECT_EQ(bindings[wave.controls[1].key].source, ValueSource::StreamMute);
    EXPECT_EQ(wave.controls[0].steps, 65535u);

    const MixerLineModel& recording = model.destinations[1];
    EXPECT_EQ(recording.componentType, MIXERLINE_COMPONENTTYPE_DST_WAVEIN);
    EXPECT_EQ(controlsOf(recording), "");
    EXPECT_EQ(sourcesOf(recording), "Capture:MICROPHONE") << "no Mic: the main capture element is the microphone";
    const MixerLineModel& mic = recording.sources[0];
    EXPECT_EQ(controlsOf(mic), "Capture Volume, Capture Mute");
    EXPECT_EQ(bindings[mic.controls[0].key].source, ValueSource::CaptureVolume);
    EXPECT_EQ(bindings[mic.controls[0].key].element, 1u);
    EXPECT_EQ(bindings[mic.controls[1].key].source, ValueSource::CaptureSwitch);
    EXPECT_EQ(mic.controls[0].steps, 31u);
}

TEST(AlsaLayout, ATypicalCardTypesItsElementsByName)
{
    std::vector<ElementInfo> elements = {
        element("Master", true, false),    element("Headphone", true, false), element("PCM", true, false),
        element("Front Mic", true, true, 1), element("Mic Boost", false, true), element("Line", true, true),
        element("Capture", false, true),   element("CD", true, false),        element("Beep", true, false, 1),
    };
    elements[5].name = "Line 1";  // a second element of that name: the index is shown
    std::vector<ControlBinding> bindings;
    const MixerModel model = alsa::layOutMixer("HDA Intel", elements, bindings);
    ASSERT_EQ(model.destinations.size(), 2u);
    EXPECT_EQ(sourcesOf(model.destinations[0]),
              "Headphone:UNDEFINED, PCM:WAVEOUT, Front Mic:MICROPHONE, Line 1:LINE, CD:COMPACTDISC, Beep:PCSPEAKER")
        << "a PCM element is the wave source; no stream gain then";
    EXPECT_EQ(controlsOf(model.destinations[1]), "Capture Volume, Capture Mute")
        << "with a microphone of its own, the main capture level is the recording's";
    EXPECT_EQ(sourcesOf(model.destinations[1]), "Front Mic:MICROPHONE, Mic Boost:UNDEFINED, Line 1:LINE");
    EXPECT_EQ(controlsOf(model.destinations[1].sources[0]), "Front Mic Capture Volume, Front Mic Capture Mute");
    EXPECT_EQ(model.destinations[1].sources[0].channels, 1u);
}

TEST(AlsaLayout, WithoutMasterTheFirstPlaybackVolumeIsTheSpeakersAndACardThatCannotRecordHasNoRecording)
{
    std::vector<ControlBinding> bindings;
    const MixerModel model =
        alsa::layOutMixer("USB Audio", {element("Speaker", true, false), element("PCM", true, false)}, bindings);
    ASSERT_EQ(model.destinations.size(), 1u);
    EXPECT_EQ(controlsOf(model.destinations[0]), "Speaker Volume, Speaker Mute");
    EXPECT_EQ(sourcesOf(model.destinations[0]), "PCM:WAVEOUT");

    const MixerModel bare = alsa::layOutMixer("Null", {}, bindings);
    ASSERT_EQ(bare.destinations.size(), 1u);
    EXPECT_EQ(controlsOf(bare.destinations[0]), "");
    EXPECT_EQ(sourcesOf(bare.destinations[0]), "Wavelark Wave:WAVEOUT") << "the program's level is always there";
}

}  // namespace
