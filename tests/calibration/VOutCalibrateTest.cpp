// The calibration dialogue on the virtual card in simulated time. The
// number-entry dialog is answered by the test, either with fixed readings
// or by a simulated voltmeter that measures what the card's output plays
// (full scale being 40 V RMS, as behind a power amplifier) and rounds it
// to the 0.01 V a user would type.
#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <string>
#include <vector>

#include "base/Array.h"
#include "base/NumberText.h"
#include "calibration/modVOut.h"
#include "engine/modWaveInOut.h"
#include "engine/modWaveInOutTesting.h"
#include "entry/modInputNumber.h"
#include "mixer/modMixer.h"
#include "platform/HostServices.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "services/modErrorHandler.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/VirtualCardSession.h"

namespace {

namespace loopback = mm::loopback;

constexpr double kFullScaleVolts = 40;
constexpr const char* kMeterNeeded =
    "You will need a meter to measure AC Volts.  Disconnect any load or test unit and connect "
    "the meter across the output.";

struct Calibration {
    std::string voutMax;
    std::string vout2;
    std::int32_t state = 0;
    ErrorFlag error = kFalse;
};

// What the dialog was asked, with what the card played meanwhile.
struct Ask {
    InputNumber request;
    std::uint16_t masterLevel;
    double frequency;
    double volts;
};

class VOutCalibrate : public ::testing::Test {
protected:
    void SetUp() override
    {
        gWaveOutResetForTests();
        gInstallErrorHandler();
        gSetInputNumberDialog([this](InputNumber& request) { return answer(request); });
    }
    void TearDown() override
    {
        gSetInputNumberDialog(nullptr);
        gWaveOutResetForTests();
        rt::setErrorReporter(nullptr);
    }

    // Finds the devices and walks the mixer as start-up does.
    void startUp()
    {
        ErrorFlag error = kFalse;
        std::string report;
        ASSERT_EQ(gbWaveOutThere(error), kTrue);
        ASSERT_EQ(gbMixerThereInit(report, error), kTrue);
        ASSERT_EQ(error, kFalse);
        ASSERT_TRUE(host.boxes.empty()) << host.boxes.front().text;
    }

    Calibration calibrate(Calibration before)
    {
        gVOutCalibrate(before.voutMax, before.vout2, before.state, before.error);
        return before;
    }

    // The volts a meter across the output shows now: 200 ms of what it plays.
    double meter(double* frequency = nullptr)
    {
        host.sleep(20);
        loopback::startTap();
        host.sleep(200);
        const std::vector<loopback::TapSegment> tap = loopback::takeTap();
        if (tap.empty()) return 0;
        const std::vector<std::int16_t>& heard = tap.back().samples;
        if (frequency != nullptr)
            *frequency = testing_support::measureFrequency(heard.data(), heard.size(), tap.back().rate);
        const double fullScaleRms = 32767 / std::sqrt(2.0);
        return testing_support::rmsOf(heard.data(), heard.size()) / fullScaleRms * kFullScaleVolts;
    }

    std::string answer(InputNumber& request)
    {
        double frequency = 0;
        const double volts = meter(&frequency);
        asks.push_back({request, loopback::levels().master, frequency, volts});
        if (useMeter) return rt::strNumber(static_cast<float>(std::round(volts * 100) / 100));
        if (readings.empty()) return {};
        const std::string reading = readings.front();
        readings.pop_front();
        return reading;
    }

    // Plays the measuring sine again at a master level.
    void playAt(std::int32_t level)
    {
        rt::SampleArray samples;
        rt::SampleArray noRecording;
        ErrorFlag error = kFalse;
        glWaveOutOpenPrepMakeUpdate(0, samples, noRecording, error);
        gMixerOutMasterSetLevel(level, error);
        ASSERT_EQ(error, kFalse);
    }

    static std::vector<mm::DWORD> masterWrites()
    {
        std::vector<mm::DWORD> levels;
        for (const auto& write : loopback::mixerWrites())
            if (write.control == "Master Volume") levels.push_back(write.value);
        return levels;
    }

    static bool outputOpen() { return gWaveIOStateForTests().waveOutHandle != 0; }

    testing_support::ScriptedHost host;
    testing_support::VirtualCardSession card{host};
    std::deque<std::string> readings;
    bool useMeter = false;
    std::vector<Ask> asks;
};

TEST_F(VOutCalibrate, AWholeCalibrationAsksThreeReadingsOnASineAndKeepsTheFirstAndLast)
{
    startUp();
    readings = {" 2", " 1.97", " .5"};
    const Calibration after = calibrate({" 1.5", " .4", 0});

    EXPECT_EQ(after.voutMax, " 2");
    EXPECT_EQ(after.vout2, " .5");
    EXPECT_EQ(after.state, 16383);
    EXPECT_EQ(after.error, kFalse);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, kMeterNeeded);
    EXPECT_EQ(host.boxes[0].style, host::kOkCancel);
    EXPECT_EQ(host.boxes[0].title, "Calibrating Output Voltage");

    ASSERT_EQ(asks.size(), 3u);
    const std::vector<std::string> prompts = {"1.  Voltmeter reading (Vrms)",
                                              "2.  Voltmeter reading (Vrms)",
                                              "3.  Voltmeter reading (Vrms)"};
    const std::vector<std::uint16_t> levels = {49151, 48896, 32768};
    // Start, maximum and minimum of each reading.
    const std::vector<std::vector<float>> rules = {{1.5f, 99, 0}, {2, 99, 0}, {0.985f, 2, 0.01f}};
    for (std::size_t i = 0; i < asks.size(); ++i) {
        SCOPED_TRACE(i + 1);
        const InputNumber& r = asks[i].request;
        EXPECT_EQ(r.isHeader, "Calibrating Output Voltage");
        EXPECT_EQ(r.isPrompt, prompts[i]);
        EXPECT_FLOAT_EQ(r.ifValue, rules[i][0]);
        EXPECT_FLOAT_EQ(r.ifMax, rules[i][1]);
        EXPECT_FLOAT_EQ(r.ifMin, rules[i][2]);
        EXPECT_FLOAT_EQ(r.ifResolution, 0.01f);
        EXPECT_FALSE(r.ibInteger);
        EXPECT_TRUE(r.ibAllowCancel);
        EXPECT_EQ(asks[i].masterLevel, levels[i]);
        EXPECT_NEAR(asks[i].frequency, 1000, 1);
    }
    EXPECT_EQ(masterWrites(), (std::vector<mm::DWORD>{49151, 48896, 32768}));
    EXPECT_FALSE(outputOpen());
}

TEST_F(VOutCalibrate, AMeterReadCalibrationGivesTheVoltsTheCardPlaysAtOtherLevels)
{
    startUp();
    useMeter = true;
    const Calibration after = calibrate({"0", "0", 0});
    ASSERT_EQ(after.error, kFalse);
    ASSERT_EQ(after.state, 16383);
    EXPECT_EQ(after.voutMax, " 7.11");  // 40 V at -15 dB

    for (const std::int32_t level : {65534, 56000, 40000, 24000, 16384}) {
        SCOPED_TRACE(level);
        playAt(level);
        const double measured = meter();
        ErrorFlag error = kFalse;
        const float predicted = gfStep2VOut(level, rt::toSingleUser(after.voutMax),
                                            rt::toSingleUser(after.vout2), error);
        EXPECT_FALSE(error);
        EXPECT_NEAR(predicted / measured, 1.0, 0.02) << predicted << " V predicted, " << measured
                                                      << " V measured";
    }
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(VOutCalibrate, AnEndedDialogueChangesNothing)
{
    startUp();
    struct Ending {
        const char* how;
        std::int16_t meterBox;
        std::deque<std::string> readings;
        std::size_t asked;
    };
    const std::vector<Ending> endings = {
        {"Cancel at the meter box", host::kResultCancel, {}, 0},
        {"reading 1 left empty", host::kResultOk, {""}, 1},
        {"reading 1 of 0", host::kResultOk, {" 0"}, 1},
        {"reading 2 left empty", host::kResultOk, {" 2", ""}, 2},
        {"reading 2 of 0", host::kResultOk, {" 2", " 0"}, 2},
        {"reading 3 left empty", host::kResultOk, {" 2", " 1.97", ""}, 3},
    };
    for (const Ending& ending : endings) {
        SCOPED_TRACE(ending.how);
        host.boxes.clear();
        host.answers = {ending.meterBox};
        readings = ending.readings;
        asks.clear();
        loopback::startTap();

        const Calibration after = calibrate({" 1.5", " .4", 0});

        EXPECT_EQ(after.voutMax, " 1.5");
        EXPECT_EQ(after.vout2, " .4");
        EXPECT_EQ(after.state, 0);
        EXPECT_EQ(after.error, kFalse);
        EXPECT_EQ(asks.size(), ending.asked);
        EXPECT_EQ(host.boxes.size(), 1u);
        EXPECT_FALSE(outputOpen());
        // Cancelled at once, nothing was played at all.
        if (ending.asked == 0) {
            EXPECT_TRUE(loopback::takeTap().empty());
        }
    }
    EXPECT_EQ(masterWrites().size(), 1u + 1 + 2 + 2 + 3);
}

TEST_F(VOutCalibrate, AnOutputThatDoesNotFallWithTheMasterLevelIsNotSuitable)
{
    loopback::MixerLayout mixer = loopback::standardMixer();
    for (auto& control : mixer.destinations[0].controls)
        if (control.name == "Master Volume") control.drives = loopback::Drives::Nothing;
    loopback::setMixers({mixer});
    startUp();
    useMeter = true;

    const Calibration flat = calibrate({" 2", " .5", 16383});
    useMeter = false;
    readings = {" 2", " 2.5"};
    const Calibration rising = calibrate({" 2", " .5", 0});

    for (const Calibration& after : {flat, rising}) {
        EXPECT_EQ(after.voutMax, "0");
        EXPECT_EQ(after.vout2, "0");
        EXPECT_EQ(after.error, kFalse);
    }
    EXPECT_EQ(flat.state, 16383);
    EXPECT_EQ(rising.state, 0);
    ASSERT_EQ(asks.size(), 4u);
    EXPECT_NEAR(asks[0].volts, kFullScaleVolts, 0.01);
    EXPECT_NEAR(asks[1].volts, kFullScaleVolts, 0.01);
    ASSERT_EQ(host.boxes.size(), 4u);
    for (const std::size_t i : {1u, 3u}) {
        EXPECT_EQ(host.boxes[i].text, "Sorry - your soundboard is not suitable for calibration");
        EXPECT_EQ(host.boxes[i].style, host::kExclamation);
        EXPECT_EQ(host.boxes[i].title, "Calibration");
    }
    EXPECT_FALSE(outputOpen());
}

TEST_F(VOutCalibrate, ARecalibrationInTheSameRunKeepsTheFallAlreadyMeasured)
{
    startUp();
    readings = {" 2", " 1.97", " .5"};
    const Calibration first = calibrate({"0", "0", 0});
    ASSERT_EQ(first.state, 16383);

    // A new amplifier after the card: twice the volts, the same fall.
    asks.clear();
    readings = {" 4", " 3.94"};
    const Calibration again = calibrate(first);
    EXPECT_EQ(again.voutMax, " 4");
    EXPECT_EQ(again.vout2, " 1");
    EXPECT_EQ(again.state, 16383);
    ASSERT_EQ(asks.size(), 2u);
    EXPECT_EQ(asks[1].masterLevel, 48896);

    // Without a usable calibration to take the fall from, it is measured.
    asks.clear();
    readings = {" 4", " 3.94", " 1.1"};
    const Calibration measured = calibrate({"0", " 1", 16383});
    EXPECT_EQ(measured.voutMax, " 4");
    EXPECT_EQ(measured.vout2, " 1.1");
    EXPECT_EQ(asks.size(), 3u);
    EXPECT_FALSE(outputOpen());
}

TEST_F(VOutCalibrate, AMixerThatRefusesTheLevelStopsTheSineAndChangesNothing)
{
    startUp();
    loopback::failMixerWrites("Master Volume", mm::MMSYSERR_NOTSUPPORTED);
    readings = {" 2", " 1.97", " .5"};

    const Calibration after = calibrate({" 1.5", " .4", 0});

    EXPECT_EQ(after.error, kTrue);
    EXPECT_EQ(after.voutMax, " 1.5");
    EXPECT_EQ(after.vout2, " .4");
    EXPECT_EQ(after.state, 0);
    EXPECT_TRUE(asks.empty());
    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[1].title, "modMixer.mMixerSetControl");
    EXPECT_FALSE(outputOpen());
}

}  // namespace
