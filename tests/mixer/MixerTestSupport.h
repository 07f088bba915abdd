#pragma once
// Building blocks for mixer tests on the virtual card's mixer: lines and
// controls in a line or two, and a fixture with the scripted host, the card
// in simulated time and the mixer slots emptied.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mixer/modMixer.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/VirtualCardSession.h"

namespace mixer_testing {

using namespace mm;
using loopback::Drives;
using loopback::MixerControlSpec;
using loopback::MixerLineSpec;
using loopback::MixerSpec;

inline MixerControlSpec control(DWORD type, const std::string& name, Drives drives = Drives::Nothing,
                                DWORD value = 0)
{
    MixerControlSpec spec;
    spec.type = type;
    spec.shortName = name.substr(0, 6);
    spec.name = name;
    spec.drives = drives;
    spec.value = value;
    if (type == MIXERCONTROL_CONTROLTYPE_MUTE) {
        spec.flags = MIXERCONTROL_CONTROLF_UNIFORM;
        spec.maximum = 1;
    }
    return spec;
}

inline MixerLineSpec line(DWORD type, const std::string& shortName, const std::string& name,
                          std::vector<MixerControlSpec> controls = {}, std::vector<MixerLineSpec> sources = {})
{
    MixerLineSpec spec;
    spec.componentType = type;
    spec.shortName = shortName;
    spec.name = name;
    spec.controls = std::move(controls);
    spec.sources = std::move(sources);
    return spec;
}

// Removes the control of that name wherever it is.
inline void removeControl(MixerSpec& mixer, const std::string& name)
{
    auto strip = [&](MixerLineSpec& l) {
        std::erase_if(l.controls, [&](const MixerControlSpec& c) { return c.name == name; });
    };
    for (MixerLineSpec& destination : mixer.destinations) {
        strip(destination);
        for (MixerLineSpec& source : destination.sources) strip(source);
    }
}

class MixerTest : public ::testing::Test {
protected:
    // The walk of mixer 0; expects it to succeed without a box.
    std::string walk()
    {
        std::string report;
        ErrorFlag error = kFalse;
        EXPECT_EQ(gbMixerThereInit(report, error), kTrue);
        EXPECT_EQ(error, kFalse);
        EXPECT_TRUE(host.boxes.empty()) << host.boxes.front().title << ": " << host.boxes.front().text;
        return report;
    }

    std::vector<std::string> boxTexts() const
    {
        std::vector<std::string> texts;
        for (const auto& box : host.boxes) texts.push_back(box.text);
        return texts;
    }

    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card{host};
};

}  // namespace mixer_testing
