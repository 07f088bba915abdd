// The wave calls on the virtual card: records and their checks, error texts,
// device lists and capabilities, the header life cycle and injected faults.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/GlobalMemory.h"
#include "platform/WaveApi.h"
#include "platform/loopback/VirtualCardTesting.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/VirtualCardSession.h"

namespace {

using namespace mm;
using testing_support::ScriptedHost;
using testing_support::VirtualCardSession;

std::string errorText(MMRESULT code, UINT size = 200)
{
    std::vector<char> text(size, 'x');
    waveOutGetErrorTextA(code, text.data(), size);
    return text.data();
}

class WaveApi : public ::testing::Test {
protected:
    ScriptedHost host;
    VirtualCardSession card{host};
    std::vector<std::int16_t> samples = std::vector<std::int16_t>(441, 1000);
    WAVEHDR header;

    void SetUp() override
    {
        header.lpData = reinterpret_cast<char*>(samples.data());
        header.dwBufferLength = static_cast<DWORD>(samples.size() * 2);
    }

    HWAVEOUT openOutput(DWORD rate = 44100)
    {
        HWAVEOUT handle = 0;
        const WAVEFORMATEX format = pcmFormat(rate);
        EXPECT_EQ(waveOutOpen(&handle, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
        return handle;
    }
};

// ------------------------------------------------------------ error texts

TEST(WaveErrorText, PublishedTextsCutToTheBuffer)
{
    EXPECT_EQ(errorText(MMSYSERR_ALLOCATED),
              "The specified device is already in use.  Wait until it is free, and then try again.");
    EXPECT_EQ(errorText(MMSYSERR_NODRIVER), "There is no driver installed on your system.");
    EXPECT_EQ(errorText(WAVERR_BADFORMAT),
              "The specified format is not supported or cannot be translated.  Use the "
              "Capabilities function to determine the supported formats.");
    EXPECT_EQ(errorText(MMSYSERR_BADDEVICEID),
              "A device ID has been used that is out of range for your system.");
    EXPECT_EQ(errorText(WAVERR_STILLPLAYING).substr(0, 64),
              "Cannot perform this operation while media data is still playing.");
    EXPECT_EQ(errorText(MMSYSERR_NODRIVER, 10), "There is ") << "nine characters and the NUL";

    char input[200];
    EXPECT_EQ(waveInGetErrorTextA(WAVERR_UNPREPARED, input, sizeof input), MMSYSERR_NOERROR);
    EXPECT_STREQ(input,
                 "The wave header was not prepared.  Use the Prepare function to prepare the "
                 "header, and then try again.");
}

TEST(WaveErrorText, UnknownCodesAndMissingBuffersAreRefused)
{
    char text[200] = "old";
    EXPECT_EQ(waveOutGetErrorTextA(31, text, sizeof text), MMSYSERR_BADERRNUM);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(waveOutGetErrorTextA(MMSYSERR_ERROR, nullptr, 200), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutGetErrorTextA(MMSYSERR_ERROR, text, 0), MMSYSERR_INVALPARAM);
}

// ------------------------------------------------------- devices and caps

TEST_F(WaveApi, TheVirtualCardServesWhenChosen)
{
    EXPECT_EQ(waveBackendName(), "loopback");
    EXPECT_EQ(waveOutGetNumDevs(), 1u);
    EXPECT_EQ(waveInGetNumDevs(), 1u);

    WAVEOUTCAPSA out;
    ASSERT_EQ(waveOutGetDevCapsA(0, &out, sizeof out), MMSYSERR_NOERROR);
    EXPECT_STREQ(out.szPname, "Wavelark Virtual Card");
    EXPECT_EQ(out.dwFormats, 0x000FFFFFu);
    WAVEINCAPSA in;
    EXPECT_EQ(waveInGetDevCapsA(0, &in, sizeof in), MMSYSERR_NOERROR);
}

TEST_F(WaveApi, CapabilityReadsCheckTheRecordSizeAndTheId)
{
    WAVEOUTCAPSA out;
    WAVEINCAPSA in;
    EXPECT_EQ(waveOutGetDevCapsA(0, &out, sizeof in), MMSYSERR_INVALPARAM)
        << "only the size of this record is accepted";
    EXPECT_EQ(waveInGetDevCapsA(0, &in, sizeof out), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutGetDevCapsA(0, nullptr, sizeof out), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutGetDevCapsA(1, &out, sizeof out), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(waveInGetDevCapsA(7, &in, sizeof in), MMSYSERR_BADDEVICEID);
}

TEST_F(WaveApi, OddDeviceListsAreReportedAsSet)
{
    // The fields the engine reads (ids, formats, a failing read) are checked
    // through its device search.
    loopback::DeviceTraits modem;
    modem.name = "Generic Soft Modem";
    loopback::DeviceTraits audigy;
    audigy.name = "Sound Blaster Audigy 2 ZS Platinum Pro";  // longer than 31
    loopback::setOutputDevices({modem, audigy});
    loopback::setInputDevices({});

    ASSERT_EQ(waveOutGetNumDevs(), 2u);
    EXPECT_EQ(waveInGetNumDevs(), 0u);
    WAVEOUTCAPSA caps;
    ASSERT_EQ(waveOutGetDevCapsA(0, &caps, sizeof caps), MMSYSERR_NOERROR);
    EXPECT_STREQ(caps.szPname, "Generic Soft Modem");
    ASSERT_EQ(waveOutGetDevCapsA(1, &caps, sizeof caps), MMSYSERR_NOERROR);
    EXPECT_EQ(std::string(caps.szPname), std::string("Sound Blaster Audigy 2 ZS Platinum Pro").substr(0, 31));

    WAVEINCAPSA in;
    EXPECT_EQ(waveInGetDevCapsA(0, &in, sizeof in), MMSYSERR_BADDEVICEID);
    HWAVEIN input = 0;
    const WAVEFORMATEX format = pcmFormat(44100);
    EXPECT_EQ(waveInOpen(&input, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_BADDEVICEID);
}

// ------------------------------------------------------------------ opening

TEST_F(WaveApi, OpenChecksItsArguments)
{
    HWAVEOUT handle = 0;
    WAVEFORMATEX format = pcmFormat(44100);
    EXPECT_EQ(waveOutOpen(&handle, 0, &format, 0, 0, 0x00030000), MMSYSERR_INVALFLAG);
    EXPECT_EQ(waveOutOpen(nullptr, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutOpen(&handle, 0, nullptr, 0, 0, CALLBACK_NULL), MMSYSERR_INVALPARAM);
    EXPECT_EQ(waveOutOpen(&handle, 1, &format, 0, 0, CALLBACK_NULL), MMSYSERR_BADDEVICEID);

    WAVEFORMATEX wrong = format;
    wrong.wFormatTag = 3;
    EXPECT_EQ(waveOutOpen(&handle, 0, &wrong, 0, 0, CALLBACK_NULL), WAVERR_BADFORMAT);
    wrong = pcmFormat(44100, 24);
    EXPECT_EQ(waveOutOpen(&handle, 0, &wrong, 0, 0, CALLBACK_NULL), WAVERR_BADFORMAT);
    wrong = format;
    wrong.nBlockAlign = 4;
    EXPECT_EQ(waveOutOpen(&handle, 0, &wrong, 0, 0, CALLBACK_NULL), WAVERR_BADFORMAT);

    loopback::setRateRange(8000, 48000);
    wrong = pcmFormat(96000);
    EXPECT_EQ(waveOutOpen(&handle, 0, &wrong, 0, 0, CALLBACK_NULL), WAVERR_BADFORMAT)
        << "a rate the device does not take";
    EXPECT_EQ(handle, 0u) << "no handle after a refused open";
}

TEST_F(WaveApi, ABusyDeviceRefusesTheOpen)
{
    loopback::refuseOutputOpen(MMSYSERR_ALLOCATED);
    loopback::refuseInputOpen(MMSYSERR_ALLOCATED);
    HWAVEOUT output = 0;
    HWAVEIN input = 0;
    const WAVEFORMATEX format = pcmFormat(44100);
    EXPECT_EQ(waveOutOpen(&output, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_ALLOCATED);
    EXPECT_EQ(waveInOpen(&input, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_ALLOCATED);

    loopback::refuseOutputOpen(MMSYSERR_NOERROR);
    output = openOutput();
    HWAVEOUT second = 0;
    EXPECT_EQ(waveOutOpen(&second, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_ALLOCATED)
        << "the card has one output";
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);
}

// ------------------------------------------------------- header life cycle

TEST_F(WaveApi, HeadersMustBePreparedAndCannotBeTouchedWhileQueued)
{
    const HWAVEOUT output = openOutput();
    EXPECT_EQ(waveOutWrite(output, &header, sizeof header), WAVERR_UNPREPARED);
    EXPECT_EQ(waveOutPrepareHeader(output, &header, sizeof header - 1), MMSYSERR_INVALPARAM);
    ASSERT_EQ(waveOutPrepareHeader(output, &header, sizeof header), MMSYSERR_NOERROR);
    EXPECT_TRUE(headerFlags(header) & WHDR_PREPARED);

    headerSetFlags(header, WHDR_BEGINLOOP | WHDR_ENDLOOP, 0);
    header.dwLoops = 2000000000;
    ASSERT_EQ(waveOutWrite(output, &header, sizeof header), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutWrite(output, &header, sizeof header), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutUnprepareHeader(output, &header, sizeof header), WAVERR_STILLPLAYING);
    EXPECT_EQ(waveOutClose(output), WAVERR_STILLPLAYING);

    EXPECT_EQ(waveOutReset(output), MMSYSERR_NOERROR);
    EXPECT_TRUE(headerFlags(header) & WHDR_DONE);
    EXPECT_EQ(waveOutUnprepareHeader(output, &header, sizeof header), MMSYSERR_NOERROR);
    EXPECT_FALSE(headerFlags(header) & WHDR_PREPARED);
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);

    EXPECT_EQ(waveOutClose(output), MMSYSERR_INVALHANDLE) << "closing twice is refused, harmlessly";
    EXPECT_EQ(waveOutWrite(output, &header, sizeof header), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(waveOutBreakLoop(0), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(waveOutReset(0), MMSYSERR_INVALHANDLE);
}

TEST_F(WaveApi, AHeaderIsDoneWhenItsLastSampleHasPlayed)
{
    const HWAVEOUT output = openOutput();  // 441 samples: 10 ms at 44.1 kHz
    ASSERT_EQ(waveOutPrepareHeader(output, &header, sizeof header), MMSYSERR_NOERROR);
    ASSERT_EQ(waveOutWrite(output, &header, sizeof header), MMSYSERR_NOERROR);
    for (int ms = 0; ms < 9; ++ms) host.sleep(1);
    EXPECT_FALSE(headerFlags(header) & WHDR_DONE) << "after 9 ms";
    host.sleep(1);
    EXPECT_TRUE(headerFlags(header) & WHDR_DONE) << "after 10 ms";
    waveOutUnprepareHeader(output, &header, sizeof header);
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);
}

// ------------------------------------------------------------------- faults

TEST_F(WaveApi, AFailingWriteIsRefusedWithItsCode)
{
    const HWAVEOUT output = openOutput();
    waveOutPrepareHeader(output, &header, sizeof header);
    loopback::failWrites(MMSYSERR_NOMEM);
    EXPECT_EQ(waveOutWrite(output, &header, sizeof header), MMSYSERR_NOMEM);
    EXPECT_FALSE(headerFlags(header) & WHDR_INQUEUE);
    loopback::failWrites(MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutWrite(output, &header, sizeof header), MMSYSERR_NOERROR);
    waveOutReset(output);
    waveOutUnprepareHeader(output, &header, sizeof header);
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);
}

TEST_F(WaveApi, ADeviceThatVanishesWhilePlayingFailsTheNextWriteAndStillCloses)
{
    const HWAVEOUT output = openOutput();
    waveOutPrepareHeader(output, &header, sizeof header);
    headerSetFlags(header, WHDR_BEGINLOOP | WHDR_ENDLOOP, 0);
    header.dwLoops = 2000000000;
    ASSERT_EQ(waveOutWrite(output, &header, sizeof header), MMSYSERR_NOERROR);
    host.sleep(5);
    loopback::vanish();
    host.sleep(1);
    EXPECT_TRUE(headerFlags(header) & WHDR_DONE) << "nothing will ever play it, so nobody waits";

    WAVEHDR second = header;
    second.dwFlags = WHDR_PREPARED;
    EXPECT_EQ(waveOutWrite(output, &second, sizeof second), MMSYSERR_NODRIVER);
    EXPECT_EQ(waveOutGetNumDevs(), 0u);
    EXPECT_EQ(waveOutBreakLoop(output), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutReset(output), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutUnprepareHeader(output, &header, sizeof header), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutClose(output), MMSYSERR_NOERROR);

    HWAVEOUT again = 0;
    const WAVEFORMATEX format = pcmFormat(44100);
    EXPECT_EQ(waveOutOpen(&again, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NODRIVER);
}

TEST_F(WaveApi, AnInputThatNeverDeliversLeavesItsBuffersEmpty)
{
    loopback::silenceInput(true);
    HWAVEIN input = 0;
    const WAVEFORMATEX format = pcmFormat(44100);
    ASSERT_EQ(waveInOpen(&input, 0, &format, 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    std::vector<char> memory(8820);
    WAVEHDR record;
    record.lpData = memory.data();
    record.dwBufferLength = 8820;
    ASSERT_EQ(waveInPrepareHeader(input, &record, sizeof record), MMSYSERR_NOERROR);
    ASSERT_EQ(waveInAddBuffer(input, &record, sizeof record), MMSYSERR_NOERROR);
    ASSERT_EQ(waveInStart(input), MMSYSERR_NOERROR);
    for (int ms = 0; ms < 1000; ++ms) host.sleep(1);
    EXPECT_EQ(headerBytesRecorded(record), 0u);
    EXPECT_FALSE(headerFlags(record) & WHDR_DONE);

    EXPECT_EQ(waveInStop(input), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInClose(input), WAVERR_STILLPLAYING) << "the empty buffer is still queued";
    EXPECT_EQ(waveInReset(input), MMSYSERR_NOERROR);
    EXPECT_TRUE(headerFlags(record) & WHDR_DONE);
    EXPECT_EQ(waveInUnprepareHeader(input, &record, sizeof record), MMSYSERR_NOERROR);
    EXPECT_EQ(waveInClose(input), MMSYSERR_NOERROR);
}

// ------------------------------------------------------------ global memory

TEST(GlobalMemory, BlocksAreZeroedWhenAskedAndFreedByHandleOrPointer)
{
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 4200000);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), 4200000u);
    auto* bytes = static_cast<unsigned char*>(GlobalLock(block));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(bytes[4199999], 0);
    bytes[4199999] = 7;
    EXPECT_EQ(GlobalLock(block), bytes) << "the block never moves";
    EXPECT_EQ(GlobalFree(bytes), nullptr) << "freed through its locked pointer";

    EXPECT_EQ(GlobalLock(nullptr), nullptr);
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
    EXPECT_EQ(GlobalAlloc(GPTR, SIZE_MAX), nullptr) << "an impossible size fails cleanly";
}

}  // namespace
