// The start-up device check on the virtual card: the wave module's own
// output and input searches, then the mixer walk, each able to end it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutMixer.h"
#include "tests/mixer/MixerTestSupport.h"

namespace {

using namespace mixer_testing;

// A device whose capabilities cannot be read: its search fails.
loopback::DeviceTraits unreadable()
{
    loopback::DeviceTraits device;
    device.capsResult = MMSYSERR_NODRIVER;
    return device;
}

class DeviceCheck : public MixerTest {
protected:
    Bool16 check(Bool16 inputRequired) { return gbWaveInOutMixerThere(inputRequired, report, error); }

    std::string report;
    ErrorFlag error = kFalse;
};

TEST_F(DeviceCheck, TheVirtualCardsOutputInputAndMixerGiveTrueAndTheReport)
{
    EXPECT_EQ(check(kTrue), kTrue);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(report.rfind("Mixer Count: 1\r\nMixer:  Wavelark Virtual Card", 0), 0u);
    EXPECT_GT(gWaveOutInfo().sampleRate, 0);
    EXPECT_EQ(gaMixerControlDetails(4).dwControlID, 5u) << "the microphone's slot is filled";
}

TEST_F(DeviceCheck, NoOutputEndsTheCheckBeforeTheInputIsSearched)
{
    loopback::setOutputDevices({});
    loopback::setInputDevices({unreadable()});
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(error, kFalse);
    EXPECT_EQ(boxTexts(), std::vector<std::string>{"Wave device not found"}) << "the input was not searched";
    EXPECT_EQ(report, "") << "the mixer was not walked";
}

TEST_F(DeviceCheck, AFailedOutputSearchSetsTheFlagAndEndsTheCheck)
{
    loopback::setOutputDevices({unreadable()});
    loopback::setInputDevices({});
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u) << "the output's failure alone";
    EXPECT_EQ(report, "");
}

TEST_F(DeviceCheck, AMissingInputCountsOnlyWhenRequired)
{
    loopback::setInputDevices({});
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(report, "");
    EXPECT_EQ(check(kFalse), kTrue);
    EXPECT_NE(report, "");
    EXPECT_EQ(error, kFalse);
}

TEST_F(DeviceCheck, AFailedInputSearchEndsTheCheckEvenWhenNoInputIsRequired)
{
    loopback::setInputDevices({unreadable()});
    EXPECT_EQ(check(kFalse), kFalse);
    EXPECT_EQ(error, kTrue);
    EXPECT_EQ(report, "");
}

TEST_F(DeviceCheck, NoMixerGivesFalse)
{
    loopback::setMixers({});
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(boxTexts(), std::vector<std::string>{"No mixers on this PC"});
}

}  // namespace
