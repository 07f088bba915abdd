// Lines of remote commands run against a stand-in instrument that keeps
// what it was told and refuses values outside its fields' ranges as the
// window does.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "remote/ScpiSession.h"

namespace {

using scpi::Number;
using scpi::Switch;

class FakeInstrument : public scpi::Instrument {
public:
    std::map<Number, double> numbers{{Number::Frequency1, 1000}, {Number::BurstPeriod, 100}};
    std::map<Switch, bool> switches;
    scpi::Shape shapeNow = scpi::Shape::Sine;
    scpi::Spacing spacingNow = scpi::Spacing::Linear;
    int resets = 0;
    int bursts = 0;
    std::string infoText = "Output: Virtual\r\nInput: Virtual";

    void reset(scpi::ErrorQueue&) override { ++resets; }
    void setNumber(Number which, double value, scpi::ErrorQueue& errors) override
    {
        if (which == Number::Frequency1 && (value < 10 || value > 22050)) {
            errors.push(scpi::kDataOutOfRange, "In the range  10 to  22050 (Hz) please!");
            return;
        }
        numbers[which] = value;
    }
    std::optional<double> number(Number which, scpi::ErrorQueue&) override { return numbers[which]; }
    void setSwitch(Switch which, bool on, scpi::ErrorQueue&) override { switches[which] = on; }
    bool switchOn(Switch which) override { return switches[which]; }
    void setShape(scpi::Shape shape, scpi::ErrorQueue&) override { shapeNow = shape; }
    scpi::Shape shape() override { return shapeNow; }
    void setSpacing(scpi::Spacing spacing, scpi::ErrorQueue&) override { spacingNow = spacing; }
    scpi::Spacing spacing() override { return spacingNow; }
    void fireBurst(scpi::ErrorQueue&) override { ++bursts; }
    std::optional<scpi::BurstMeasurement> fireMeasuredBurst(scpi::ErrorQueue&) override
    {
        ++bursts;
        return scpi::BurstMeasurement{"Polarity: INVERTED", 0.5, 1.25, -1};
    }
    std::optional<scpi::ToneMeasurement> recording;
    std::optional<scpi::ToneMeasurement> measure(scpi::ErrorQueue& errors) override
    {
        if (!recording) errors.push(scpi::kSettingsConflict, "nothing recorded");
        return recording;
    }
    std::string info() override { return infoText; }
};

class Remote : public ::testing::Test {
protected:
    std::string run(const std::string& line) { return session.execute(line); }
    std::string nextError() { return session.execute("SYST:ERR?"); }

    FakeInstrument instrument;
    scpi::Session session{instrument};
};

// ---- Headers ---------------------------------------------------------------------

TEST_F(Remote, HeadersTakeShortAndLongFormsInAnyCaseWithTheirOptionalNodes)
{
    for (const char* line : {"FREQ 100", "frequency 101", ":SOUR:FREQ:CW 102", "source:Freq1 103",
                             "FREQuency:CW 104"}) {
        run(line);
    }
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 104);
    run("FREQ2 500");
    EXPECT_EQ(instrument.numbers[Number::Frequency2], 500);
    EXPECT_EQ(run("SYST:ERR?"), "0,\"No error\"");
}

TEST_F(Remote, AHeaderThatIsNeitherFormIsUndefinedAndChangesNothing)
{
    for (const char* line : {"FREQU 200", "FREQ3 200", "SOUR:SOUR:FREQ 200", "FRE 200", "BURS:FIRE:MEAS 1"}) {
        run(line);
        EXPECT_EQ(nextError().substr(0, 5), "-113,") << line;
    }
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 1000);
    EXPECT_EQ(instrument.bursts, 0);
}

TEST_F(Remote, ACommandContinuesFromThePathOfTheOneBeforeUnlessItStartsWithAColon)
{
    run("SWE:SPAC LOG;TIME 2");
    EXPECT_EQ(instrument.spacingNow, scpi::Spacing::Logarithmic);
    EXPECT_EQ(instrument.numbers[Number::SweepTime], 2);

    // A common command leaves the path as it was.
    EXPECT_EQ(run("SOUR:BURS:NCYC 3;*OPC?;PER 50"), "1");
    EXPECT_EQ(instrument.numbers[Number::BurstCycles], 3);
    EXPECT_EQ(instrument.numbers[Number::BurstPeriod], 50);

    run("SWE:TIME 1;:FREQ 300");
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 300);
    run("SWE:TIME 1;FREQ 400");
    EXPECT_EQ(nextError().substr(0, 5), "-113,") << "SWE:FREQ is no command";
}

// ---- Parameters -------------------------------------------------------------------

TEST_F(Remote, NumbersTakeExponentsAndUnitsThatFitTheirSetting)
{
    run("FREQ 2kHz");
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 2000);
    run("FREQ 1.5E+3 hz");
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 1500);
    run("FREQ .25 KHZ");
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 250);
    run("BURS:PER 0.2 S");
    EXPECT_EQ(instrument.numbers[Number::BurstPeriod], 200) << "the period's own unit is ms";
    run("BURS:PER 30");
    EXPECT_EQ(instrument.numbers[Number::BurstPeriod], 30);
    run("VOLT:VRMS 250mV");
    EXPECT_EQ(instrument.numbers[Number::OutputVolts], 0.25);
    EXPECT_EQ(nextError(), "0,\"No error\"");

    run("FREQ 5 V");
    run("FUNC:PERC 20 HZ");
    EXPECT_EQ(nextError().substr(0, 5), "-131,");
    EXPECT_EQ(nextError().substr(0, 5), "-131,");
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 250);
    EXPECT_EQ(instrument.numbers.count(Number::Percent), 0U);
}

TEST_F(Remote, BooleansAndMnemonicsTakeTheirFormsAndRefuseOthers)
{
    run("OUTP ON;OUTP:INV 1;:SWE:BID on;:BURS:AUTO 0");
    EXPECT_TRUE(instrument.switches[Switch::Output]);
    EXPECT_TRUE(instrument.switches[Switch::Invert]);
    EXPECT_TRUE(instrument.switches[Switch::SweepBidirectional]);
    EXPECT_FALSE(instrument.switches[Switch::BurstAuto]);
    EXPECT_EQ(run("OUTP?;OUTP:INV?;:BURS:AUTO?"), "1;1;0");
    EXPECT_EQ(nextError(), "0,\"No error\"");

    run("FUNC squ");
    EXPECT_EQ(run("FUNC?"), "SQU");
    run("FUNCTION:SHAPE SAWTOOTH");
    EXPECT_EQ(run("FUNC?"), "SAW");
    run("FUNC MSP");
    EXPECT_EQ(run("FUNC?"), "MSP");
    run("SWE:SPAC LOGARITHMIC");
    EXPECT_EQ(run("SWE:SPAC?"), "LOG");

    run("OUTP MAYBE");
    EXPECT_EQ(nextError().substr(0, 5), "-224,");
    run("FUNC SAWT");
    EXPECT_EQ(nextError().substr(0, 5), "-224,");
    EXPECT_EQ(run("FUNC?"), "MSP");
}

TEST_F(Remote, MissingExtraOrMistypedParametersAreRefused)
{
    const std::pair<const char*, const char*> refused[] = {
        {"FREQ", "-109,"},    {"FREQ 100,200", "-108,"}, {"FREQ? 5", "-108,"},
        {"FREQ ON", "-104,"}, {"FREQ 'ten'", "-104,"},   {"FREQ 1e999", "-222,"},
    };
    for (const auto& [line, code] : refused) {
        run(line);
        EXPECT_EQ(nextError().substr(0, 5), code) << line;
    }
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 1000);
}

TEST_F(Remote, MalformedTextIsASyntaxErrorAndSkipsTheRestOfItsLine)
{
    for (const char* line : {"FREQ 100,", "FREQ:", "FREQ?X", "FREQ #5", "*", "FREQ 'open", "FREQ 1 2"}) {
        run(std::string(line) + ";FREQ 20");
        EXPECT_EQ(nextError().substr(0, 5), "-102,") << line;
    }
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 1000);
    // A semicolon inside quotes does not cut the line.
    run("FREQ 'a;b';FREQ 20");
    EXPECT_EQ(nextError().substr(0, 5), "-104,");
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 20) << "an execution error does not stop the line";
}

// ---- Replies ----------------------------------------------------------------------

TEST_F(Remote, QueriesOfALineAnswerInOneReplyAndCommandsAloneAnswerNothing)
{
    EXPECT_EQ(run("*IDN?"), "Marlo,Wavelark,0,1.0.0");
    EXPECT_EQ(run("FREQ 1234.5;FREQ?;FUNC?;BURS:PER?"), "1234.5;SIN;100");
    EXPECT_EQ(run("FREQ 50\r"), "");
    EXPECT_EQ(run(""), "");
    EXPECT_EQ(run("  ;  "), "");
    EXPECT_EQ(run("BURS:FIRE:MEAS?"), "\"Polarity: INVERTED\",0.5,1.25,INV");
    EXPECT_EQ(instrument.bursts, 1);
}

TEST_F(Remote, TheInfoPageComesAsABlockOfItsExactLength)
{
    EXPECT_EQ(run("SYST:INFO?"), "#231Output: Virtual\r\nInput: Virtual");
    instrument.infoText = std::string(1234, 'x');
    EXPECT_EQ(run("SYST:INFO?").substr(0, 6), "#41234");
}

TEST_F(Remote, AFigureThatCannotBeGivenStillAnswersAndQueuesWhy)
{
    EXPECT_EQ(run("MEAS:FREQ?"), "9.91E+37");
    EXPECT_EQ(nextError().substr(0, 5), "-221,");
    instrument.recording = scpi::ToneMeasurement{false, 0, -3};
    EXPECT_EQ(run("MEAS:THDN?;FREQ?"), "9.91E+37;9.91E+37");
    EXPECT_EQ(nextError().substr(0, 5), "-230,");
    EXPECT_EQ(nextError().substr(0, 5), "-230,");
    instrument.recording = scpi::ToneMeasurement{true, 2000.25, -93.5};
    EXPECT_EQ(run("MEAS:FREQ?;THDN?"), "2000.25;-93.5");
    EXPECT_EQ(nextError(), "0,\"No error\"");
}

// ---- The error queue -----------------------------------------------------------------

TEST_F(Remote, ErrorsComeBackOldestFirstWithWhatFailed)
{
    run("FREQ 5");
    run("NONSENSE");
    EXPECT_EQ(nextError(), "-222,\"Data out of range;In the range  10 to  22050 (Hz) please!\"");
    EXPECT_EQ(nextError(), "-113,\"Undefined header;NONSENSE\"");
    EXPECT_EQ(nextError(), "0,\"No error\"");
    EXPECT_EQ(instrument.numbers[Number::Frequency1], 1000);
}

TEST_F(Remote, AFullQueueEndsInOverflowAndClearsOnRequest)
{
    for (int i = 0; i < 40; ++i) run("FREQ 1");
    EXPECT_EQ(session.errors().size(), scpi::ErrorQueue::kCapacity);
    for (std::size_t i = 1; i < scpi::ErrorQueue::kCapacity; ++i) EXPECT_EQ(nextError().substr(0, 5), "-222,");
    EXPECT_EQ(nextError(), "-350,\"Queue overflow\"");
    EXPECT_EQ(nextError(), "0,\"No error\"");

    run("FREQ 1;*CLS");
    EXPECT_EQ(nextError(), "0,\"No error\"");
}

TEST_F(Remote, QuotesInAnErrorAreDoubled)
{
    run("FUNC \"SIN\"");
    EXPECT_EQ(nextError().substr(0, 5), "-224,");
    scpi::ErrorQueue queue;
    queue.push(scpi::kExecutionError, "the box said \"no\"");
    EXPECT_EQ(queue.pop(), "-200,\"Execution error;the box said \"\"no\"\"\"");
}

}  // namespace
