#include "mixer/modMixer.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "base/Trap.h"
#include "entry/modStringParse.h"
#include "platform/HostServices.h"

using namespace mm;

rt::Array<MIXERCONTROLDETAILS> gaMixerControlDetails(0, 7);
rt::Array<std::array<std::int32_t, 2>> gaMixerValue(0, 7);
rt::Array<std::int32_t> gaMixerRestore(0, 7);

namespace {

constexpr const char* kModule = "modMixer";
const std::string kCrLf = "\r\n";
// Between two items on one line of the report.
const std::string kSeparator = " \t ";

// The capabilities size the walk passes: larger than the record on purpose
// (the call writes only the record).
constexpr UINT kWalkCapsSize = sizeof(MIXERCAPSA) + 32;

// The line tags handed down the walk.
const std::string kTagOutMaster = "OutMaster";
const std::string kTagInMaster = "InMaster";
const std::string kTagOut = "Out";
const std::string kTagIn = "In";
const std::string kTagOutWave = "OutWave";
const std::string kTagInMic = "InMic";

// -------------------------------------------------------------- naming

struct Name {
    DWORD code;
    const char* name;
};

#define WAVELARK_NAME(constant) Name{constant, #constant}

std::string nameOf(const std::vector<Name>& names, DWORD code, const char* unknown)
{
    for (const Name& entry : names) {
        if (entry.code == code) return entry.name;
    }
    return unknown;
}

// The names of the flags set, joined by " | " ("" when none is set).
std::string flagNames(const std::vector<Name>& names, DWORD flags)
{
    std::string text;
    for (const Name& entry : names) {
        if ((flags & entry.code) == 0) continue;
        if (!text.empty()) text += " | ";
        text += entry.name;
    }
    return text;
}

std::string msGetLineFlag(DWORD nFlags)
{
    static const std::vector<Name> names = {
        WAVELARK_NAME(MIXERLINE_LINEF_ACTIVE),
        WAVELARK_NAME(MIXERLINE_LINEF_DISCONNECTED),
        WAVELARK_NAME(MIXERLINE_LINEF_SOURCE),
    };
    return flagNames(names, nFlags);
}

std::string msGetComponentType(DWORD nType)
{
    static const std::vector<Name> names = {
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_UNDEFINED),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_DIGITAL),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_LINE),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_MONITOR),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_HEADPHONES),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_TELEPHONE),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_WAVEIN),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_DST_VOICEIN),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_UNDEFINED),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_DIGITAL),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_LINE),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_COMPACTDISC),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_TELEPHONE),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_PCSPEAKER),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_AUXILIARY),
        WAVELARK_NAME(MIXERLINE_COMPONENTTYPE_SRC_ANALOG),
    };
    return nameOf(names, nType, "");
}

std::string msGetTargetType(DWORD nType)
{
    static const std::vector<Name> names = {
        WAVELARK_NAME(MIXERLINE_TARGETTYPE_UNDEFINED),
        WAVELARK_NAME(MIXERLINE_TARGETTYPE_WAVEOUT),
        WAVELARK_NAME(MIXERLINE_TARGETTYPE_WAVEIN),
        WAVELARK_NAME(MIXERLINE_TARGETTYPE_MIDIOUT),
        WAVELARK_NAME(MIXERLINE_TARGETTYPE_MIDIIN),
        WAVELARK_NAME(MIXERLINE_TARGETTYPE_AUX),
    };
    return nameOf(names, nType, "<invalid>");
}

std::string msGetControlType(DWORD nType)
{
    static const std::vector<Name> names = {
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_CUSTOM),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_BOOLEANMETER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_SIGNEDMETER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_PEAKMETER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_UNSIGNEDMETER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_BOOLEAN),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_ONOFF),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_MUTE),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_MONO),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_LOUDNESS),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_STEREOENH),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_BASS_BOOST),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_BUTTON),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_DECIBELS),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_SIGNED),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_UNSIGNED),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_PERCENT),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_SLIDER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_PAN),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_QSOUNDPAN),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_FADER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_VOLUME),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_BASS),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_TREBLE),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_EQUALIZER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_SINGLESELECT),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_MUX),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_MULTIPLESELECT),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_MIXER),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_MICROTIME),
        WAVELARK_NAME(MIXERCONTROL_CONTROLTYPE_MILLITIME),
    };
    return nameOf(names, nType, "");
}

std::string msGetControlFlag(DWORD nFlags)
{
    static const std::vector<Name> names = {
        WAVELARK_NAME(MIXERCONTROL_CONTROLF_UNIFORM),
        WAVELARK_NAME(MIXERCONTROL_CONTROLF_MULTIPLE),
        WAVELARK_NAME(MIXERCONTROL_CONTROLF_DISABLED),
    };
    return flagNames(names, nFlags);
}

#undef WAVELARK_NAME

std::string msGetMixerError(MMRESULT nCode, ErrorFlag& bError)
{
    std::string text;
    rt::Trap trap(kModule, "msGetMixerError", bError);
    trap.step([&] {
        switch (nCode) {
        case 0: text = "No error"; break;
        case 2: text = "Invalid device identifier"; break;
        case 4: text = "Allocated"; break;
        case 5: text = "The uMxId parameter specifies an invalid handle"; break;
        case 6: text = "No mixer device available for uMxId"; break;
        case 7: text = "Unable to allocate resources."; break;
        case 10: text = "One or more flags are invalid"; break;
        case 11: text = "One or more parameters are invalid."; break;
        default: text = "<unknown error>"; break;
        }
    });
    return text;
}

// Shows a failed mixer call in the warning box titled after the procedure
// and sets the error flag.
void mMixerErrorBox(MMRESULT nCode, const char* sProcedure, ErrorFlag& bError)
{
    host::msgBox(msGetMixerError(nCode, bError), host::kExclamation + host::kOkOnly,
                 std::string(kModule) + "." + sProcedure);
    bError = kTrue;
}

// ------------------------------------------------------------ report text

// A name from a fixed-length record field, up to its first NUL.
template <std::size_t N>
std::string msFieldText(const char (&field)[N], ErrorFlag& bError)
{
    std::int16_t start = 1;
    return gsStringParse(std::string(field, N), std::string(1, '\0'), start, bError);
}

std::string hexText(DWORD value)
{
    char text[16];
    std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(value));
    return text;
}

// Counts, ids and values as the program's 32-bit integers.
std::string longText(DWORD value) { return std::to_string(static_cast<std::int32_t>(value)); }

// The bounds as the control's units read them: signed units as signed
// numbers, the others as unsigned ones.
std::string boundsText(const MIXERCONTROLA& control)
{
    const DWORD units = control.dwControlType & MIXERCONTROL_CT_UNITS_MASK;
    const bool isSigned = units == MIXERCONTROL_CT_UNITS_SIGNED || units == MIXERCONTROL_CT_UNITS_DECIBELS;
    const std::string minimum =
        isSigned ? std::to_string(control.Bounds.lMinimum) : std::to_string(control.Bounds.dwMinimum);
    const std::string maximum =
        isSigned ? std::to_string(control.Bounds.lMaximum) : std::to_string(control.Bounds.dwMaximum);
    return "Bounds. Min: " + minimum + "  Max: " + maximum;
}

// The slot a control fills, by its type and its line's tag; 0 for none.
std::int16_t mnSlotFor(DWORD nControlType, const std::string& sTag)
{
    const bool volume = nControlType == MIXERCONTROL_CONTROLTYPE_VOLUME;
    if (sTag == kTagOutMaster) return volume ? kSlotMasterVolume : kSlotMasterMute;
    if (sTag == kTagOutWave) return volume ? kSlotWaveVolume : kSlotWaveMute;
    if (sTag == kTagInMic && volume) return kSlotMicVolume;
    return 0;
}

// The line items a destination and a source line share, every line after
// the first starting with `indent`.
std::string msLineItems(const MIXERLINEA& line, const std::string& indent, ErrorFlag& bError)
{
    return msGetComponentType(line.dwComponentType) + kCrLf + indent + "Line Flag: " +
           msGetLineFlag(line.fdwLine) + kSeparator + "Source connection count: " +
           longText(line.cConnections) + kSeparator + "Channel count: " + longText(line.cChannels) +
           kSeparator + "Control count: " + longText(line.cControls) + kCrLf + indent +
           "Target media: " + msFieldText(line.Target.szPname, bError) + kSeparator + "Type: " +
           msGetTargetType(line.Target.dwType);
}

// ------------------------------------------------------------------ slots

void mMixerClearSlots()
{
    for (MIXERCONTROLDETAILS& request : gaMixerControlDetails) request = MIXERCONTROLDETAILS{};
    for (auto& row : gaMixerValue) row = {0, 0};
    for (std::int32_t& value : gaMixerRestore) value = 0;
}

// Reads a control's value; with a slot from 1 to 5 also keeps the request
// and the value in that slot.
std::int32_t mlGetValue(HMIXER hMixer, std::int32_t nControlId, std::int16_t nSlot, ErrorFlag& bError)
{
    std::int32_t value = 0;
    rt::Trap trap(kModule, "mlGetValue", bError);
    std::int32_t local[1] = {0};
    std::int32_t* cell = local;
    MIXERCONTROLDETAILS request;
    trap.step([&] {
        if (nSlot != 0) cell = &gaMixerValue.at(slotEntry(nSlot))[1];
        request.cbStruct = sizeof(MIXERCONTROLDETAILS);
        request.dwControlID = static_cast<DWORD>(nControlId);
        request.cChannels = 1;
        request.cMultipleItems = 0;
        request.cbDetails = sizeof(MIXERCONTROLDETAILS_UNSIGNED);
        request.paDetails = cell;
    });
    trap.step([&] {
        const MMRESULT result = mixerGetControlDetailsA(hMixer, &request, MIXER_GETCONTROLDETAILSF_VALUE);
        if (result != MMSYSERR_NOERROR) {
            mMixerErrorBox(result, "mlGetValue", bError);
            trap.leave();
        }
    });
    trap.step([&] {
        if (nSlot != 0) {
            gaMixerControlDetails.at(slotEntry(nSlot)) = request;
            gaMixerRestore.at(slotEntry(nSlot)) = *cell;
        }
        value = *cell;
    });
    return value;
}

// ------------------------------------------------------------ the report

// One control; a volume or a mute also fills its slot and shows its value.
std::string msGetControl(const MIXERCONTROLA& control, HMIXER hMixer, const std::string& sIndent,
                         const std::string& sTag, ErrorFlag& bError)
{
    std::string text;
    rt::Trap trap(kModule, "msGetControl", bError);
    trap.step([&] {
        text = msFieldText(control.szName, bError) + kCrLf + sIndent + "Type:  " +
               msGetControlType(control.dwControlType) + kCrLf + sIndent + "Control flag:  " +
               msGetControlFlag(control.fdwControl) + kSeparator + "Multiple items:  " +
               longText(control.cMultipleItems) + kSeparator + "Control ID:  " +
               longText(control.dwControlID) + kSeparator + boundsText(control);
    });
    trap.step([&] {
        if (control.dwControlType != MIXERCONTROL_CONTROLTYPE_VOLUME &&
            control.dwControlType != MIXERCONTROL_CONTROLTYPE_MUTE) {
            return;
        }
        const std::int16_t slot = mnSlotFor(control.dwControlType, sTag);
        const std::int32_t value =
            mlGetValue(hMixer, static_cast<std::int32_t>(control.dwControlID), slot, bError);
        if (bError) return;  // the report stops at a failed read
        text += kSeparator + "Current: " + std::to_string(value);
    });
    return text;
}

// All controls of a line, each block indented by nIndent tabs.
std::string msGetControls(HMIXER hMixer, const MIXERLINEA& line, std::int16_t nIndent,
                          const std::string& sTag, ErrorFlag& bError)
{
    std::string text;
    rt::Trap trap(kModule, "msGetControls", bError);
    std::string indent;
    std::vector<MIXERCONTROLA> controls;
    trap.step([&] {
        indent.assign(static_cast<std::size_t>(std::max<std::int16_t>(nIndent, 0)), '\t');
        controls.assign(line.cControls, MIXERCONTROLA{});
        for (MIXERCONTROLA& control : controls) control.cbStruct = sizeof(MIXERCONTROLA);
        MIXERLINECONTROLSA request;
        request.cbStruct = sizeof(MIXERLINECONTROLSA);
        request.dwLineID = line.dwLineID;
        request.dwControlID = 0;
        request.cControls = line.cControls;
        request.cbmxctrl = sizeof(MIXERCONTROLA);
        request.pamxctrl = controls.data();
        const MMRESULT result = mixerGetLineControlsA(hMixer, &request, MIXER_GETLINECONTROLSF_ALL);
        if (result != MMSYSERR_NOERROR) {
            mMixerErrorBox(result, "msGetControls", bError);
            trap.leave();
        }
    });
    trap.step([&] {
        for (std::size_t i = 0; i < controls.size(); ++i) {
            text += indent + "(" + std::to_string(i + 1) + ") CONTROL:  " +
                    msGetControl(controls[i], hMixer, indent, sTag, bError);
            if (bError) return;
            text += kCrLf + kCrLf;
        }
    });
    return text;
}

// One destination line and its controls; sTag comes back as the tag for
// its sources ("Out", "In" or "").
std::string msDestinationLine(HMIXER hMixer, const MIXERLINEA& line, std::string& sTag, ErrorFlag& bError)
{
    std::string text;
    rt::Trap trap(kModule, "msDestinationLine", bError);
    trap.step([&] {
        sTag = line.dwComponentType == MIXERLINE_COMPONENTTYPE_DST_SPEAKERS ? kTagOutMaster
               : line.dwComponentType == MIXERLINE_COMPONENTTYPE_DST_WAVEIN ? kTagInMaster
                                                                            : std::string();
        text = "DESTINATION: " + msFieldText(line.szName, bError) + "  (" +
               msFieldText(line.szShortName, bError) + ")" + kCrLf + std::string(60, '*') + kCrLf +
               "Line ID: " + hexText(line.dwLineID) + kSeparator + "Component type: " +
               msLineItems(line, "", bError);
    });
    trap.step([&] {
        if (line.cControls > 0) text += kCrLf + kCrLf + msGetControls(hMixer, line, 0, sTag, bError);
    });
    trap.step([&] {
        sTag = sTag == kTagOutMaster ? kTagOut : sTag == kTagInMaster ? kTagIn : std::string();
    });
    return text;
}

// Source line nSource of destination nDestination and its controls.
std::string msGetSourceLineCtrls(HMIXER hMixer, std::int32_t nSource, std::int32_t nDestination,
                                 const std::string& sParentTag, ErrorFlag& bError)
{
    std::string text;
    rt::Trap trap(kModule, "msGetSourceLineCtrls", bError);
    MIXERLINEA line;
    std::string tag;
    trap.step([&] {
        line.cbStruct = sizeof(MIXERLINEA);
        line.dwDestination = static_cast<DWORD>(nDestination);
        line.dwSource = static_cast<DWORD>(nSource);
        const MMRESULT result = mixerGetLineInfoA(hMixer, &line, MIXER_GETLINEINFOF_SOURCE);
        if (result != MMSYSERR_NOERROR) {
            mMixerErrorBox(result, "msGetSourceLineCtrls", bError);
            trap.leave();
        }
    });
    trap.step([&] {
        const std::string type = msGetComponentType(line.dwComponentType);
        if (sParentTag == kTagOut && type == "MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT") {
            tag = kTagOutWave;
        } else if (sParentTag == kTagIn && type == "MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE") {
            tag = kTagInMic;
        }
        const std::string tab = "\t";
        text = tab + "SOURCE: " + msFieldText(line.szName, bError) + "  (" +
               msFieldText(line.szShortName, bError) + ")" + kCrLf + tab + std::string(30, '*') + kCrLf +
               tab + "Source Line ID: " + hexText(line.dwLineID) + kSeparator + "Component type: " +
               msLineItems(line, tab, bError);
    });
    trap.step([&] {
        if (line.cControls > 0) text += kCrLf + kCrLf + msGetControls(hMixer, line, 1, tag, bError);
    });
    return text;
}

// One line per mixer, then a blank line when all were read.
void mListMixers(UINT nMixers, std::string& sReport, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mListMixers", bError);
    trap.step([&] {
        for (UINT id = 0; id < nMixers; ++id) {
            MIXERCAPSA caps;
            const MMRESULT result = mixerGetDevCapsA(id, &caps, sizeof caps);
            if (result != MMSYSERR_NOERROR) {
                mMixerErrorBox(result, "mListMixers", bError);
                return;
            }
            sReport += kCrLf + "Mixer:  " + msFieldText(caps.szPname, bError) + ",  Destinations: " +
                       longText(caps.cDestinations);
        }
        sReport += kCrLf + kCrLf;
    });
}

// ---------------------------------------------------------------- setting

// Opens mixer 0, writes nValue (True, -1, as 1) through the slot's kept
// request and closes the mixer again. The open's result is tested by its
// bitwise complement, so the write is tried after a failed open too.
void mMixerSetControl(std::int16_t nSlot, std::int32_t nValue, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mMixerSetControl", bError);
    HMIXER handle = 0;
    MMRESULT result = MMSYSERR_NOERROR;
    trap.step([&] { result = mixerOpen(&handle, 0, 0, 0, 0); });
    trap.step([&] {
        if (~static_cast<std::int32_t>(result) != 0) {
            if (nValue == -1) nValue = 1;
            gaMixerValue.at(slotEntry(nSlot))[1] = nValue;
            result = mixerSetControlDetails(handle, &gaMixerControlDetails.at(slotEntry(nSlot)),
                                            MIXER_SETCONTROLDETAILSF_VALUE);
        }
    });
    mixerClose(handle);
    trap.step([&] {
        if (result != MMSYSERR_NOERROR) mMixerErrorBox(result, "mMixerSetControl", bError);
    });
}

}  // namespace

// ------------------------------------------------------------------ public

Bool16 gbMixerThereInit(std::string& sReport, ErrorFlag& bError)
{
    Bool16 there = kFalse;
    rt::Trap trap(kModule, "gbMixerThereInit", bError);
    UINT count = 0;
    MIXERCAPSA caps;
    HMIXER handle = 0;
    bool opened = false;
    MMRESULT result = MMSYSERR_NOERROR;
    trap.step([&] {
        mMixerClearSlots();
        count = mixerGetNumDevs();
        if (count == 0) {
            host::msgBox("No mixers on this PC");
            trap.leave();
        }
    });
    trap.step([&] {
        sReport = "Mixer Count: " + std::to_string(count);
        mListMixers(count, sReport, bError);
        sReport += "Info on Mixer 0 follows" + kCrLf + kCrLf;
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        result = mixerGetDevCapsA(0, &caps, kWalkCapsSize);
        if (result == MMSYSERR_NOERROR) result = mixerOpen(&handle, 0, 0, 0, 0);
        opened = result == MMSYSERR_NOERROR;
    });
    trap.step([&] {
        if (!opened) return;
        const bool audigy = msFieldText(caps.szPname, bError).find("Audigy") != std::string::npos;
        for (DWORD d = 0; d < caps.cDestinations; ++d) {
            MIXERLINEA line;
            line.cbStruct = sizeof(MIXERLINEA);
            line.dwDestination = d;
            line.dwSource = 0;
            result = mixerGetLineInfoA(handle, &line, MIXER_GETLINEINFOF_DESTINATION);
            if (result != MMSYSERR_NOERROR) return;
            std::string tag;
            sReport += msDestinationLine(handle, line, tag, bError);
            if (bError) return;
            // On such a mixer the last source of every destination is left out.
            const std::int64_t last = static_cast<std::int64_t>(line.cConnections) - (audigy ? 2 : 1);
            for (std::int64_t s = 0; s <= last; ++s) {
                sReport += msGetSourceLineCtrls(handle, static_cast<std::int32_t>(s),
                                                static_cast<std::int32_t>(d), tag, bError);
                if (bError) return;
            }
        }
    });
    trap.step([&] {
        there = toBool16(result == MMSYSERR_NOERROR && !bError);
        if (result != MMSYSERR_NOERROR) mMixerErrorBox(result, "gbMixerThereInit", bError);
    });
    if (opened) mixerClose(handle);
    return there;
}

void gMixerOutMasterSetLevel(std::int32_t lLevel, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gMixerOutMasterSetLevel", bError);
    trap.step([&] { mMixerSetControl(kSlotMasterVolume, lLevel, bError); });
}

void gMixerOutMasterSetMute(Bool16 bMute, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gMixerOutMasterSetMute", bError);
    trap.step([&] { mMixerSetControl(kSlotMasterMute, bMute, bError); });
}

void gMixerOutWaveSetLevel(std::int32_t lLevel, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gMixerOutWaveSetLevel", bError);
    trap.step([&] { mMixerSetControl(kSlotWaveVolume, lLevel, bError); });
}

void gMixerOutWaveSetMute(Bool16 bMute, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gMixerOutWaveSetMute", bError);
    trap.step([&] { mMixerSetControl(kSlotWaveMute, bMute, bError); });
}

void gMixerInMicSetLevel(std::int32_t lLevel, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gMixerInMicSetLevel", bError);
    trap.step([&] { mMixerSetControl(kSlotMicVolume, lLevel, bError); });
}

void gMixerSelectedRestore(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gMixerSelectedRestore", bError);
    const auto found = [](MixerSlot slot) { return gaMixerRestore.at(slotEntry(slot)); };
    trap.step([&] { gMixerOutMasterSetLevel(found(kSlotMasterVolume), bError); });
    trap.step([&] { gMixerOutMasterSetMute(toBool16(found(kSlotMasterMute) != 0), bError); });
    trap.step([&] { gMixerOutWaveSetLevel(found(kSlotWaveVolume), bError); });
    trap.step([&] { gMixerOutWaveSetMute(toBool16(found(kSlotWaveMute) != 0), bError); });
    trap.step([&] { gMixerInMicSetLevel(found(kSlotMicVolume), bError); });
}
