// Burst capture on the virtual card: the polarity burst is played once while
// the input records one pass of it, 20 ms of card latency later.
#include <algorithm>
#include <cstdlib>

#include "engine/modTimeResponseShow.h"
#include "engine/modWavePolarity.h"
#include "platform/Colours.h"
#include "tests/engine/WaveEngineFixture.h"
#include "tests/support/RecordingSurface.h"
#include "tests/support/SignalMeasure.h"

namespace engine_test {
namespace {

using testing_support::RecordingSurface;

class CaptureTest : public WaveEngineTest {
protected:
    // Inputs listing only `formats` (8-bit mono at 22.05 kHz, say).
    void useInput(mm::DWORD formats, const std::string& name = "Line In")
    {
        mm::loopback::DeviceTraits input;
        input.name = name;
        input.formats = formats;
        mm::loopback::setInputDevices({input});
        findDevices();
        gWaveOutSetShape("Sine");
        ErrorFlag error = kFalse;
        gnTimeResponseInit(surface, 0, 0, 400, 200, error);
    }

    // Fires the polarity burst; the recording, or nothing when it failed.
    rt::SampleArray fire(float cycles, std::int32_t periodMs, ErrorFlag& error)
    {
        rt::SampleArray record(1, 1);
        gWavePolarity(1000, cycles, periodMs, kTrue, record, error);
        return record;
    }

    std::vector<RecordingSurface::Op> yellowLines() const
    {
        std::vector<RecordingSurface::Op> found;
        for (const auto& op : surface.lines())
            if (op.colour == ui::kColourYellow) found.push_back(op);
        return found;
    }

    RecordingSurface surface;
};

TEST_F(CaptureTest, APolarityBurstComesBackWithItsSignAtTheCardsLatency)
{
    useInput(mm::WAVE_FORMAT_2M16);  // 22.05 kHz, 16 bits
    for (const bool inverted : {false, true}) {
        SCOPED_TRACE(inverted ? "inverted" : "normal");
        gWaveOutSetInvert(toBool16(inverted));
        surface.ops.clear();
        ErrorFlag error = kFalse;
        const rt::SampleArray record = fire(2, 100, error);
        ASSERT_EQ(error, kFalse);
        ASSERT_TRUE(host.boxes.empty()) << host.boxes.front().text;

        // One pass (100 ms) at the input's rate; the burst 20 ms in.
        ASSERT_EQ(record.size(), 2205);
        const std::vector<std::int16_t>& heard = record.items();
        const std::size_t onset = testing_support::onsetIndex(heard.data(), heard.size(), 1000);
        EXPECT_EQ(onset, 441u);
        const int sign = inverted ? -1 : 1;
        for (std::size_t i = onset; i < onset + 10; ++i) EXPECT_GT(sign * heard[i], 0) << i;
        for (std::size_t i = onset + 12; i < onset + 21; ++i) EXPECT_LT(sign * heard[i], 0) << i;
        // Two cycles at 1 kHz are 44 input samples; silence after them.
        EXPECT_GT(testing_support::peakOf(heard.data() + onset, 44), 30000);
        EXPECT_EQ(testing_support::peakOf(heard.data() + onset + 45, heard.size() - onset - 45), 0);

        // Plotted in yellow over a cleared plot; the input is closed again.
        EXPECT_EQ(surface.only(RecordingSurface::Kind::Cls).size(), 1u);
        EXPECT_GT(yellowLines().size(), 50u);
        EXPECT_EQ(gWaveIOStateForTests().waveInHandle, 0);
    }
}

TEST_F(CaptureTest, TheRecordSpansOnePassAtTheInputRate)
{
    // 33 ms at 44.1 kHz is 1,455 samples; at half the rate 727.5 rounds to
    // the even 728; at 48 kHz 1,583.7 rounds to 1,584.
    struct Case {
        mm::DWORD formats;
        const char* name;
        std::int32_t length;
    };
    for (const Case& c : {Case{mm::WAVE_FORMAT_2M16, "Line In", 728},
                          Case{mm::WAVE_FORMAT_4M16, "Audigy Line In", 1584}}) {
        SCOPED_TRACE(c.name);
        useInput(c.formats, c.name);
        ErrorFlag error = kFalse;
        const rt::SampleArray record = fire(1, 33, error);
        EXPECT_EQ(error, kFalse);
        EXPECT_EQ(record.lbound(), 1);
        EXPECT_EQ(record.size(), c.length);
    }
}

TEST_F(CaptureTest, EightBitInputFillsTheFirstHalfOfTheRecord)
{
    useInput(mm::WAVE_FORMAT_2M08);  // 22.05 kHz, 8 bits
    ErrorFlag error = kFalse;
    const rt::SampleArray record = fire(2, 100, error);
    ASSERT_EQ(error, kFalse);
    ASSERT_EQ(record.size(), 2205);

    // 2,205 bytes: two 8-bit samples to an element, 1,102 full elements and
    // one half-filled one; the rest of the record stays 0.
    std::vector<int> bytes;
    for (std::int32_t i = 1; i <= 1102; ++i) {
        const auto word = static_cast<std::uint16_t>(record(i));
        bytes.push_back(word & 0xFF);
        bytes.push_back(word >> 8);
    }
    EXPECT_EQ(static_cast<std::uint16_t>(record(1103)) >> 8, 0);
    for (std::int32_t i = 1104; i <= 2205; ++i) ASSERT_EQ(record(i), 0) << i;
    // Unsigned samples around 128: silence, then the burst, positive first.
    EXPECT_EQ(bytes[0], 128);
    EXPECT_EQ(bytes[440], 128);
    for (std::size_t i = 441; i < 451; ++i) EXPECT_GT(bytes[i], 128) << i;
    EXPECT_GT(*std::max_element(bytes.begin() + 441, bytes.begin() + 485), 250);
    EXPECT_EQ(bytes[500], 128);
}

TEST_F(CaptureTest, AnInputThatNeverDeliversIsGivenUpAfterOnePassAndTwoSeconds)
{
    useInput(mm::WAVE_FORMAT_2M16);
    mm::loopback::silenceInput(true);
    ErrorFlag error = kFalse;
    rt::SampleArray record;
    // One pass of the 100 ms burst buffer plus 2 seconds.
    const std::uint64_t waited = sleptDuring([&] { record = fire(2, 100, error); });
    EXPECT_GE(waited, 2100u);
    EXPECT_LE(waited, 2102u);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].title, "modWaveInOut.gWaveInRecordStop");
    EXPECT_EQ(host.boxes[0].text, "No data arrived from the wave input device");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation);
    // Nothing copied, nothing plotted, the input closed.
    EXPECT_EQ(record.size(), 2205);
    EXPECT_TRUE(std::all_of(record.begin(), record.end(), [](std::int16_t s) { return s == 0; }));
    EXPECT_TRUE(yellowLines().empty());
    EXPECT_EQ(gWaveIOStateForTests().waveInHandle, 0);

    // The engine is still usable once the input delivers again.
    mm::loopback::silenceInput(false);
    host.boxes.clear();
    error = kFalse;
    record = fire(2, 100, error);
    EXPECT_EQ(error, kFalse);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(testing_support::onsetIndex(record.data(), record.size(), 1000), 441u);
}

TEST_F(CaptureTest, ABusyInputIsReportedAndNothingIsPlayed)
{
    useInput(mm::WAVE_FORMAT_2M16);
    mm::loopback::refuseInputOpen(mm::MMSYSERR_ALLOCATED);
    mm::loopback::startTap();
    ErrorFlag error = kFalse;
    fire(2, 100, error);
    EXPECT_EQ(error, kTrue);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].title, "modWaveInOut.gWaveInOpenPrepare");
    EXPECT_EQ(host.boxes[0].text,
              "The specified device is already in use.  Wait until it is free, and then try again.");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation);
    EXPECT_EQ(gWaveIOStateForTests().waveInHandle, 0);
    host.sleep(200);
    const auto heard = played();
    EXPECT_EQ(testing_support::peakOf(heard.data(), heard.size()), 0);

    mm::loopback::refuseInputOpen(mm::MMSYSERR_NOERROR);
    host.boxes.clear();
    error = kFalse;
    fire(2, 100, error);
    EXPECT_EQ(error, kFalse);
}

}  // namespace
}  // namespace engine_test
