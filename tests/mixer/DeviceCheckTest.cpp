// The start-up device check with stand-in device searches: output, then
// input (required or not), then the mixer walk on the virtual card.
#include <gtest/gtest.h>

#include <string>

#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutMixer.h"
#include "tests/mixer/MixerTestSupport.h"

namespace {

using namespace mixer_testing;

// A device search that answers as told and counts its calls.
struct Search {
    Bool16 found = kTrue;
    bool fails = false;
    int calls = 0;

    WaveDeviceSearch function()
    {
        return [this](ErrorFlag& bError) {
            ++calls;
            if (fails) bError = kTrue;
            return found;
        };
    }
};

class DeviceCheck : public MixerTest {
protected:
    DeviceCheck()
    {
        gWaveOutThereSearch = output.function();
        gWaveInThereSearch = input.function();
    }
    ~DeviceCheck() override
    {
        gWaveOutThereSearch = &gbWaveOutThere;
        gWaveInThereSearch = &gbWaveInThere;
    }

    Bool16 check(Bool16 inputRequired)
    {
        return gbWaveInOutMixerThere(inputRequired, report, error);
    }

    Search output;
    Search input;
    std::string report;
    ErrorFlag error = kFalse;
};

TEST_F(DeviceCheck, AllThreeFoundGiveTrueAndTheMixerReport)
{
    EXPECT_EQ(check(kTrue), kTrue);
    EXPECT_EQ(error, kFalse);
    EXPECT_EQ(report.rfind("Mixer Count: 1\r\nMixer:  Wavelark Virtual Card", 0), 0u);
    EXPECT_EQ(gaMixerControlDetails(4).dwControlID, 5u) << "the microphone's slot is filled";
}

TEST_F(DeviceCheck, NoOutputOrAFailedOutputSearchEndsTheCheck)
{
    output.found = kFalse;
    EXPECT_EQ(check(kTrue), kFalse);
    output.found = kTrue;
    output.fails = true;
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(error, kTrue);
    EXPECT_EQ(input.calls, 0);
    EXPECT_EQ(report, "") << "the mixer was not walked";
}

TEST_F(DeviceCheck, AMissingInputCountsOnlyWhenRequired)
{
    input.found = kFalse;
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(report, "");
    EXPECT_EQ(check(kFalse), kTrue);
    EXPECT_NE(report, "");
    EXPECT_EQ(error, kFalse);

    input.found = kTrue;
    input.fails = true;
    report.clear();
    EXPECT_EQ(check(kFalse), kFalse) << "a failed input search";
    EXPECT_EQ(report, "");
}

TEST_F(DeviceCheck, NoMixerGivesFalse)
{
    loopback::setMixers({});
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(boxTexts(), std::vector<std::string>{"No mixers on this PC"});
    EXPECT_EQ(output.calls, 1);
    EXPECT_EQ(input.calls, 1);
}

TEST_F(DeviceCheck, ASearchNotConnectedFailsIntoTheErrorReporter)
{
    gWaveOutThereSearch = nullptr;
    EXPECT_EQ(check(kTrue), kFalse);
    EXPECT_EQ(error, kTrue);
}

// The check as start-up makes it: the wave module's own searches on the
// virtual card, then its mixer.
TEST_F(MixerTest, TheStartUpCheckFindsTheVirtualCardsDevicesAndMixer)
{
    std::string report;
    ErrorFlag error = kFalse;
    EXPECT_EQ(gbWaveInOutMixerThere(kTrue, report, error), kTrue);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_TRUE(report.starts_with("Mixer Count: 1")) << report;
    EXPECT_GT(gWaveOutInfo().sampleRate, 0);
}

}  // namespace
