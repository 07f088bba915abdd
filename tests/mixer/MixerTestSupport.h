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
using loopback::ControlLayout;
using loopback::LineLayout;
using loopback::MixerLayout;

inline ControlLayout control(DWORD type, const std::string& name, Drives drives = Drives::Nothing,
                                DWORD value = 0)
{
    ControlLayout layout;
    layout.type = type;
    layout.shortName = name.substr(0, 6);
    layout.name = name;
    layout.drives = drives;
    layout.value = value;
    if (type == MIXERCONTROL_CONTROLTYPE_MUTE) {
        layout.flags = MIXERCONTROL_CONTROLF_UNIFORM;
        layout.maximum = 1;
    }
    return layout;
}

inline LineLayout line(DWORD type, const std::string& shortName, const std::string& name,
                          std::vector<ControlLayout> controls = {}, std::vector<LineLayout> sources = {})
{
    LineLayout layout;
    layout.componentType = type;
    layout.shortName = shortName;
    layout.name = name;
    layout.controls = std::move(controls);
    layout.sources = std::move(sources);
    return layout;
}

// Removes the control of that name wherever it is.
inline void removeControl(MixerLayout& mixer, const std::string& name)
{
    auto strip = [&](LineLayout& l) {
        std::erase_if(l.controls, [&](const ControlLayout& c) { return c.name == name; });
    };
    for (LineLayout& destination : mixer.destinations) {
        strip(destination);
        for (LineLayout& source : destination.sources) strip(source);
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
