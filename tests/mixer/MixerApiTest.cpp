// The mixer calls on the virtual card's mixer: record checks, handles and
// ids, line and control numbering, value checks and faults.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/MixerApi.h"
#include "tests/mixer/MixerTestSupport.h"

namespace {

using namespace mixer_testing;

class MixerCalls : public MixerTest {
protected:
    HMIXER open()
    {
        HMIXER handle = 0;
        EXPECT_EQ(mixerOpen(&handle, 0, 0, 0, 0), MMSYSERR_NOERROR);
        return handle;
    }

    static MIXERLINEA lineRecord(DWORD destination, DWORD source = 0)
    {
        MIXERLINEA line;
        line.cbStruct = sizeof line;
        line.dwDestination = destination;
        line.dwSource = source;
        return line;
    }

    static MIXERCONTROLDETAILS request(DWORD controlId, DWORD* value)
    {
        MIXERCONTROLDETAILS details;
        details.cbStruct = sizeof details;
        details.dwControlID = controlId;
        details.cChannels = 1;
        details.cbDetails = sizeof(MIXERCONTROLDETAILS_UNSIGNED);
        details.paDetails = value;
        return details;
    }
};

TEST_F(MixerCalls, TheCapabilitiesTakeALargerSizeButWriteOnlyTheRecord)
{
    struct {
        MIXERCAPSA caps;
        unsigned char beyond[32];
    } buffer;
    for (unsigned char& byte : buffer.beyond) byte = 0x5A;
    ASSERT_EQ(mixerGetNumDevs(), 1u);
    EXPECT_EQ(mixerGetDevCapsA(0, &buffer.caps, sizeof buffer.caps - 1), MMSYSERR_INVALPARAM);
    ASSERT_EQ(mixerGetDevCapsA(0, &buffer.caps, sizeof buffer), MMSYSERR_NOERROR);
    EXPECT_EQ(buffer.caps.cDestinations, 2u);
    for (unsigned char byte : buffer.beyond) ASSERT_EQ(byte, 0x5A);
    EXPECT_EQ(mixerGetDevCapsA(1, &buffer.caps, sizeof buffer.caps), MMSYSERR_BADDEVICEID);
}

TEST_F(MixerCalls, AHandleOrMixerZeroNamesTheSameMixerUntilTheHandleIsClosed)
{
    const HMIXER handle = open();
    EXPECT_GE(handle, 0x10000u) << "never taken for a mixer id";
    MIXERLINEA byHandle = lineRecord(1);
    MIXERLINEA byId = lineRecord(1);
    ASSERT_EQ(mixerGetLineInfoA(handle, &byHandle, MIXER_GETLINEINFOF_DESTINATION), MMSYSERR_NOERROR);
    ASSERT_EQ(mixerGetLineInfoA(0, &byId, MIXER_GETLINEINFOF_DESTINATION), MMSYSERR_NOERROR);
    EXPECT_EQ(std::memcmp(&byHandle, &byId, sizeof byId), 0);
    EXPECT_STREQ(byHandle.szName, "Recording");
    EXPECT_EQ(mixerGetLineInfoA(0, &byId, MIXER_GETLINEINFOF_DESTINATION | MIXER_OBJECTF_HMIXER),
              MMSYSERR_INVALHANDLE);

    EXPECT_EQ(mixerClose(handle), MMSYSERR_NOERROR);
    EXPECT_EQ(mixerClose(handle), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(mixerGetLineInfoA(handle, &byHandle, MIXER_OBJECTF_HMIXER), MMSYSERR_INVALHANDLE);
    HMIXER other = 0;
    EXPECT_EQ(mixerOpen(&other, 1, 0, 0, 0), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(mixerOpen(&other, 0, 0, 0, 0x00010000), MMSYSERR_INVALFLAG) << "callbacks are not offered";
}

TEST_F(MixerCalls, LinesAndControlsOutsideTheMixerOrAskedForWronglyAreRefused)
{
    // The numbering itself shows in the mixer report's exact text.
    const HMIXER handle = open();
    MIXERLINEA mic = lineRecord(1, 0);
    ASSERT_EQ(mixerGetLineInfoA(handle, &mic, MIXER_GETLINEINFOF_SOURCE), MMSYSERR_NOERROR);

    MIXERLINEA beyond = lineRecord(2);
    EXPECT_EQ(mixerGetLineInfoA(handle, &beyond, MIXER_GETLINEINFOF_DESTINATION), MIXERR_INVALLINE);
    beyond = lineRecord(1, 1);
    EXPECT_EQ(mixerGetLineInfoA(handle, &beyond, MIXER_GETLINEINFOF_SOURCE), MIXERR_INVALLINE);
    beyond.cbStruct = 280;
    EXPECT_EQ(mixerGetLineInfoA(handle, &beyond, MIXER_GETLINEINFOF_SOURCE), MMSYSERR_INVALPARAM);
    EXPECT_EQ(mixerGetLineInfoA(handle, &mic, MIXER_GETLINEINFOF_LINEID), MMSYSERR_NOTSUPPORTED);

    MIXERCONTROLA controls[2];
    MIXERLINECONTROLSA request;
    request.cbStruct = sizeof request;
    request.dwLineID = mic.dwLineID;
    request.cControls = 2;
    request.cbmxctrl = sizeof(MIXERCONTROLA);
    request.pamxctrl = controls;
    ASSERT_EQ(mixerGetLineControlsA(handle, &request, MIXER_GETLINECONTROLSF_ALL), MMSYSERR_NOERROR);
    EXPECT_EQ(controls[0].dwControlID, 5u) << "after the speakers' two and the wave's two";

    request.cControls = 1;
    EXPECT_EQ(mixerGetLineControlsA(handle, &request, MIXER_GETLINECONTROLSF_ALL), MMSYSERR_INVALPARAM);
    request.cControls = 2;
    request.cbmxctrl = 147;
    EXPECT_EQ(mixerGetLineControlsA(handle, &request, MIXER_GETLINECONTROLSF_ALL), MMSYSERR_INVALPARAM);
    request.cbmxctrl = sizeof(MIXERCONTROLA);
    request.dwLineID = 0x00020000;
    EXPECT_EQ(mixerGetLineControlsA(handle, &request, MIXER_GETLINECONTROLSF_ALL), MIXERR_INVALLINE);
    mixerClose(handle);
}

TEST_F(MixerCalls, NamesAreCutToTheirFieldsWithATerminatingNul)
{
    MixerLayout card = loopback::standardMixer();
    card.name = std::string(40, 'M');
    card.destinations[0].shortName = std::string(20, 's');
    card.destinations[0].name = std::string(70, 'n');
    loopback::setMixers({card});
    MIXERCAPSA caps;
    ASSERT_EQ(mixerGetDevCapsA(0, &caps, sizeof caps), MMSYSERR_NOERROR);
    EXPECT_EQ(std::string(caps.szPname), std::string(31, 'M'));
    MIXERLINEA speakers = lineRecord(0);
    ASSERT_EQ(mixerGetLineInfoA(0, &speakers, MIXER_GETLINEINFOF_DESTINATION), MMSYSERR_NOERROR);
    EXPECT_EQ(std::string(speakers.szShortName), std::string(15, 's'));
    EXPECT_EQ(std::string(speakers.szName), std::string(63, 'n'));
}

TEST_F(MixerCalls, ValuesAreCheckedAgainstTheControlAndPassedAsWritten)
{
    const HMIXER handle = open();
    DWORD value = 70000;
    MIXERCONTROLDETAILS volume = request(1, &value);
    EXPECT_EQ(mixerSetControlDetails(handle, &volume, 0), MIXERR_INVALVALUE);
    value = 0xFFFFFFFF;
    MIXERCONTROLDETAILS mute = request(2, &value);
    EXPECT_EQ(mixerSetControlDetails(handle, &mute, 0), MMSYSERR_NOERROR) << "any non-zero switch is on";
    EXPECT_TRUE(loopback::levels().masterMute);
    EXPECT_EQ(loopback::mixerWrites().back().value, 0xFFFFFFFFu);
    value = 7;
    ASSERT_EQ(mixerGetControlDetailsA(handle, &mute, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(value, 1u);

    MIXERCONTROLDETAILS unknown = request(99, &value);
    EXPECT_EQ(mixerGetControlDetailsA(handle, &unknown, 0), MIXERR_INVALCONTROL);
    MIXERCONTROLDETAILS empty;
    EXPECT_EQ(mixerSetControlDetails(handle, &empty, 0), MMSYSERR_INVALPARAM) << "a slot never filled";
    MIXERCONTROLDETAILS stereo = request(1, &value);
    stereo.cChannels = 2;
    EXPECT_EQ(mixerGetControlDetailsA(handle, &stereo, 0), MMSYSERR_INVALPARAM);
    EXPECT_EQ(mixerGetControlDetailsA(handle, &volume, MIXER_GETCONTROLDETAILSF_LISTTEXT),
              MMSYSERR_NOTSUPPORTED);
    EXPECT_EQ(mixerGetControlDetailsA(handle, &volume, 0x100), MMSYSERR_INVALFLAG);
    mixerClose(handle);
}

TEST_F(MixerCalls, TheProgramsMixerKeepsNoLogOfWhatItWrites)
{
    loopback::resetMixers();  // the mixers as the program has them
    const HMIXER handle = open();
    DWORD value = 0;
    MIXERCONTROLDETAILS volume = request(1, &value);
    for (value = 0; value < 1000; ++value) ASSERT_EQ(mixerSetControlDetails(handle, &volume, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(loopback::levels().master, 999);
    EXPECT_TRUE(loopback::mixerWrites().empty());
    mixerClose(handle);
}

TEST_F(MixerCalls, FaultsComeBackAsTheirCodes)
{
    const HMIXER handle = open();
    DWORD value = 0;
    MIXERCONTROLDETAILS volume = request(1, &value);
    loopback::failMixerReads("", MMSYSERR_NOMEM);
    EXPECT_EQ(mixerGetControlDetailsA(handle, &volume, 0), MMSYSERR_NOMEM);
    loopback::failMixerReads("", MMSYSERR_NOERROR);
    EXPECT_EQ(mixerGetControlDetailsA(handle, &volume, 0), MMSYSERR_NOERROR);

    loopback::vanishMixers();
    EXPECT_EQ(mixerGetNumDevs(), 0u);
    EXPECT_EQ(mixerGetControlDetailsA(handle, &volume, 0), MMSYSERR_NODRIVER) << "the open mixer is gone";
    HMIXER again = 0;
    EXPECT_EQ(mixerOpen(&again, 0, 0, 0, 0), MMSYSERR_BADDEVICEID);
    EXPECT_EQ(mixerClose(handle), MMSYSERR_NOERROR) << "what is open can always be closed";
}

}  // namespace
