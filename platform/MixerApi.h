#pragma once
// The mixer part of the operating system's multimedia interface, with its
// published record layouts, field names, constants and result codes, as the
// mixer module is written against them. Only what the program calls is
// here; the program's own texts for the result codes live in the mixer
// module.
//
// A mixer has destination lines (where sound goes: the speakers, the
// recording) and, under each, source lines (what feeds it: the wave output,
// the microphone ...). Lines carry controls (a volume, a mute ...) whose
// values are read and written through control-details requests.
//
// The mixer follows the wave back end (WaveApi.h): ALSA's simple mixer of
// the output's card, or the virtual card's mixer. Calls come from the
// program's own thread. Record sizes are checked against our records: pass
// sizeof of the record (for the capabilities, at least that).
#include <cstddef>
#include <cstdint>

#include "platform/WaveApi.h"

namespace mm {

using LONG = std::int32_t;
// Handles are non-zero numbers, never small enough to be taken for a mixer
// id; 0 is never a valid handle.
using HMIXER = std::uint32_t;
// A mixer id or an open mixer's handle, told apart by the MIXER_OBJECTF_
// flags (MIXER_OBJECTF_MIXER takes either).
using HMIXEROBJ = std::uint32_t;

inline constexpr std::size_t MIXER_SHORT_NAME_CHARS = 16;
inline constexpr std::size_t MIXER_LONG_NAME_CHARS = 64;

// Result codes beyond the MMSYSERR_ ones of WaveApi.h.
inline constexpr MMRESULT MIXERR_BASE = 1024;
inline constexpr MMRESULT MIXERR_INVALLINE = MIXERR_BASE + 0;
inline constexpr MMRESULT MIXERR_INVALCONTROL = MIXERR_BASE + 1;
inline constexpr MMRESULT MIXERR_INVALVALUE = MIXERR_BASE + 2;

// What the first argument of a call names.
inline constexpr DWORD MIXER_OBJECTF_HANDLE = 0x80000000;
inline constexpr DWORD MIXER_OBJECTF_MIXER = 0x00000000;
inline constexpr DWORD MIXER_OBJECTF_HMIXER = MIXER_OBJECTF_HANDLE | MIXER_OBJECTF_MIXER;

// ------------------------------------------------------------- capabilities

// What a mixer is. 48 bytes; the program passes a larger size on purpose
// (see mixerGetDevCapsA).
struct MIXERCAPSA {
    WORD wMid = 0;
    WORD wPid = 0;
    MMVERSION vDriverVersion = 0;
    char szPname[MAXPNAMELEN] = {};
    DWORD fdwSupport = 0;
    DWORD cDestinations = 0;
};
static_assert(sizeof(MIXERCAPSA) == 48);

// -------------------------------------------------------------------- lines

// Line flags (fdwLine).
inline constexpr DWORD MIXERLINE_LINEF_ACTIVE = 0x00000001;
inline constexpr DWORD MIXERLINE_LINEF_DISCONNECTED = 0x00008000;
inline constexpr DWORD MIXERLINE_LINEF_SOURCE = 0x80000000;

// Component types: destinations from 0, sources from 0x1000.
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_FIRST = 0x00000000;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_UNDEFINED = MIXERLINE_COMPONENTTYPE_DST_FIRST + 0;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_DIGITAL = MIXERLINE_COMPONENTTYPE_DST_FIRST + 1;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_LINE = MIXERLINE_COMPONENTTYPE_DST_FIRST + 2;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_MONITOR = MIXERLINE_COMPONENTTYPE_DST_FIRST + 3;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_SPEAKERS = MIXERLINE_COMPONENTTYPE_DST_FIRST + 4;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_HEADPHONES = MIXERLINE_COMPONENTTYPE_DST_FIRST + 5;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_TELEPHONE = MIXERLINE_COMPONENTTYPE_DST_FIRST + 6;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_WAVEIN = MIXERLINE_COMPONENTTYPE_DST_FIRST + 7;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_VOICEIN = MIXERLINE_COMPONENTTYPE_DST_FIRST + 8;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_LAST = MIXERLINE_COMPONENTTYPE_DST_FIRST + 8;

inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_FIRST = 0x00001000;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_UNDEFINED = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 0;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_DIGITAL = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 1;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_LINE = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 2;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_MICROPHONE = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 3;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_SYNTHESIZER = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 4;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_COMPACTDISC = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 5;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_TELEPHONE = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 6;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_PCSPEAKER = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 7;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 8;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_AUXILIARY = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 9;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_ANALOG = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 10;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_LAST = MIXERLINE_COMPONENTTYPE_SRC_FIRST + 10;

// The kind of device a line ends at (Target.dwType).
inline constexpr DWORD MIXERLINE_TARGETTYPE_UNDEFINED = 0;
inline constexpr DWORD MIXERLINE_TARGETTYPE_WAVEOUT = 1;
inline constexpr DWORD MIXERLINE_TARGETTYPE_WAVEIN = 2;
inline constexpr DWORD MIXERLINE_TARGETTYPE_MIDIOUT = 3;
inline constexpr DWORD MIXERLINE_TARGETTYPE_MIDIIN = 4;
inline constexpr DWORD MIXERLINE_TARGETTYPE_AUX = 5;

// How mixerGetLineInfoA finds the line: by destination index, or by
// destination and source index. (By line id, component type and target
// type are published too, and answered with MMSYSERR_NOTSUPPORTED.)
inline constexpr DWORD MIXER_GETLINEINFOF_DESTINATION = 0x00000000;
inline constexpr DWORD MIXER_GETLINEINFOF_SOURCE = 0x00000001;
inline constexpr DWORD MIXER_GETLINEINFOF_LINEID = 0x00000002;
inline constexpr DWORD MIXER_GETLINEINFOF_COMPONENTTYPE = 0x00000003;
inline constexpr DWORD MIXER_GETLINEINFOF_TARGETTYPE = 0x00000004;
inline constexpr DWORD MIXER_GETLINEINFOF_QUERYMASK = 0x0000000F;

// One line. cbStruct, dwDestination and (by source) dwSource are the
// caller's; the call fills the rest. dwUser is the driver's.
struct MIXERLINEA {
    DWORD cbStruct = 0;
    DWORD dwDestination = 0;
    DWORD dwSource = 0;
    DWORD dwLineID = 0;
    DWORD fdwLine = 0;
    DWORD_PTR dwUser = 0;
    DWORD dwComponentType = 0;
    DWORD cChannels = 0;
    DWORD cConnections = 0;
    DWORD cControls = 0;
    char szShortName[MIXER_SHORT_NAME_CHARS] = {};
    char szName[MIXER_LONG_NAME_CHARS] = {};
    struct {
        DWORD dwType = 0;
        DWORD dwDeviceID = 0;
        WORD wMid = 0;
        WORD wPid = 0;
        MMVERSION vDriverVersion = 0;
        char szPname[MAXPNAMELEN] = {};
    } Target;
};

// ----------------------------------------------------------------- controls

// Control flags (fdwControl).
inline constexpr DWORD MIXERCONTROL_CONTROLF_UNIFORM = 0x00000001;
inline constexpr DWORD MIXERCONTROL_CONTROLF_MULTIPLE = 0x00000002;
inline constexpr DWORD MIXERCONTROL_CONTROLF_DISABLED = 0x80000000;

// Control types: class, subclass and units combined.
inline constexpr DWORD MIXERCONTROL_CT_CLASS_MASK = 0xF0000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_CUSTOM = 0x00000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_METER = 0x10000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_SWITCH = 0x20000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_NUMBER = 0x30000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_SLIDER = 0x40000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_FADER = 0x50000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_TIME = 0x60000000;
inline constexpr DWORD MIXERCONTROL_CT_CLASS_LIST = 0x70000000;

inline constexpr DWORD MIXERCONTROL_CT_SC_SWITCH_BOOLEAN = 0x00000000;
inline constexpr DWORD MIXERCONTROL_CT_SC_SWITCH_BUTTON = 0x01000000;
inline constexpr DWORD MIXERCONTROL_CT_SC_METER_POLLED = 0x00000000;
inline constexpr DWORD MIXERCONTROL_CT_SC_TIME_MICROSECS = 0x00000000;
inline constexpr DWORD MIXERCONTROL_CT_SC_TIME_MILLISECS = 0x01000000;
inline constexpr DWORD MIXERCONTROL_CT_SC_LIST_SINGLE = 0x00000000;
inline constexpr DWORD MIXERCONTROL_CT_SC_LIST_MULTIPLE = 0x01000000;

inline constexpr DWORD MIXERCONTROL_CT_UNITS_MASK = 0x00FF0000;
inline constexpr DWORD MIXERCONTROL_CT_UNITS_CUSTOM = 0x00000000;
inline constexpr DWORD MIXERCONTROL_CT_UNITS_BOOLEAN = 0x00010000;
inline constexpr DWORD MIXERCONTROL_CT_UNITS_SIGNED = 0x00020000;
inline constexpr DWORD MIXERCONTROL_CT_UNITS_UNSIGNED = 0x00030000;
inline constexpr DWORD MIXERCONTROL_CT_UNITS_DECIBELS = 0x00040000;
inline constexpr DWORD MIXERCONTROL_CT_UNITS_PERCENT = 0x00050000;

inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_CUSTOM =
    MIXERCONTROL_CT_CLASS_CUSTOM | MIXERCONTROL_CT_UNITS_CUSTOM;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_BOOLEANMETER =
    MIXERCONTROL_CT_CLASS_METER | MIXERCONTROL_CT_SC_METER_POLLED | MIXERCONTROL_CT_UNITS_BOOLEAN;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_SIGNEDMETER =
    MIXERCONTROL_CT_CLASS_METER | MIXERCONTROL_CT_SC_METER_POLLED | MIXERCONTROL_CT_UNITS_SIGNED;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_PEAKMETER = MIXERCONTROL_CONTROLTYPE_SIGNEDMETER + 1;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_UNSIGNEDMETER =
    MIXERCONTROL_CT_CLASS_METER | MIXERCONTROL_CT_SC_METER_POLLED | MIXERCONTROL_CT_UNITS_UNSIGNED;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_BOOLEAN =
    MIXERCONTROL_CT_CLASS_SWITCH | MIXERCONTROL_CT_SC_SWITCH_BOOLEAN | MIXERCONTROL_CT_UNITS_BOOLEAN;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_ONOFF = MIXERCONTROL_CONTROLTYPE_BOOLEAN + 1;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MUTE = MIXERCONTROL_CONTROLTYPE_BOOLEAN + 2;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MONO = MIXERCONTROL_CONTROLTYPE_BOOLEAN + 3;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_LOUDNESS = MIXERCONTROL_CONTROLTYPE_BOOLEAN + 4;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_STEREOENH = MIXERCONTROL_CONTROLTYPE_BOOLEAN + 5;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_BASS_BOOST = MIXERCONTROL_CONTROLTYPE_BOOLEAN + 0x2277;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_BUTTON =
    MIXERCONTROL_CT_CLASS_SWITCH | MIXERCONTROL_CT_SC_SWITCH_BUTTON | MIXERCONTROL_CT_UNITS_BOOLEAN;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_DECIBELS =
    MIXERCONTROL_CT_CLASS_NUMBER | MIXERCONTROL_CT_UNITS_DECIBELS;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_SIGNED =
    MIXERCONTROL_CT_CLASS_NUMBER | MIXERCONTROL_CT_UNITS_SIGNED;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_UNSIGNED =
    MIXERCONTROL_CT_CLASS_NUMBER | MIXERCONTROL_CT_UNITS_UNSIGNED;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_PERCENT =
    MIXERCONTROL_CT_CLASS_NUMBER | MIXERCONTROL_CT_UNITS_PERCENT;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_SLIDER =
    MIXERCONTROL_CT_CLASS_SLIDER | MIXERCONTROL_CT_UNITS_SIGNED;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_PAN = MIXERCONTROL_CONTROLTYPE_SLIDER + 1;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_QSOUNDPAN = MIXERCONTROL_CONTROLTYPE_SLIDER + 2;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_FADER =
    MIXERCONTROL_CT_CLASS_FADER | MIXERCONTROL_CT_UNITS_UNSIGNED;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_VOLUME = MIXERCONTROL_CONTROLTYPE_FADER + 1;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_BASS = MIXERCONTROL_CONTROLTYPE_FADER + 2;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_TREBLE = MIXERCONTROL_CONTROLTYPE_FADER + 3;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_EQUALIZER = MIXERCONTROL_CONTROLTYPE_FADER + 4;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_SINGLESELECT =
    MIXERCONTROL_CT_CLASS_LIST | MIXERCONTROL_CT_SC_LIST_SINGLE | MIXERCONTROL_CT_UNITS_BOOLEAN;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MUX = MIXERCONTROL_CONTROLTYPE_SINGLESELECT + 1;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MULTIPLESELECT =
    MIXERCONTROL_CT_CLASS_LIST | MIXERCONTROL_CT_SC_LIST_MULTIPLE | MIXERCONTROL_CT_UNITS_BOOLEAN;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MIXER = MIXERCONTROL_CONTROLTYPE_MULTIPLESELECT + 1;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MICROTIME =
    MIXERCONTROL_CT_CLASS_TIME | MIXERCONTROL_CT_SC_TIME_MICROSECS | MIXERCONTROL_CT_UNITS_UNSIGNED;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MILLITIME =
    MIXERCONTROL_CT_CLASS_TIME | MIXERCONTROL_CT_SC_TIME_MILLISECS | MIXERCONTROL_CT_UNITS_UNSIGNED;

// One control. Bounds: lMinimum/lMaximum for signed units, dwMinimum/
// dwMaximum for the others (volumes run 0..65535, switches 0..1).
struct MIXERCONTROLA {
    DWORD cbStruct = 0;
    DWORD dwControlID = 0;
    DWORD dwControlType = 0;
    DWORD fdwControl = 0;
    DWORD cMultipleItems = 0;
    char szShortName[MIXER_SHORT_NAME_CHARS] = {};
    char szName[MIXER_LONG_NAME_CHARS] = {};
    union {
        struct {
            LONG lMinimum;
            LONG lMaximum;
        };
        struct {
            DWORD dwMinimum;
            DWORD dwMaximum;
        };
        DWORD dwReserved[6];
    } Bounds = {};
    union {
        DWORD cSteps;
        DWORD cbCustomData;
        DWORD dwReserved[6];
    } Metrics = {};
};
static_assert(sizeof(MIXERCONTROLA) == 148);

// Which controls of a line mixerGetLineControlsA returns: all of them. (One
// by id and one by type are published too, and answered with
// MMSYSERR_NOTSUPPORTED.)
inline constexpr DWORD MIXER_GETLINECONTROLSF_ALL = 0x00000000;
inline constexpr DWORD MIXER_GETLINECONTROLSF_ONEBYID = 0x00000001;
inline constexpr DWORD MIXER_GETLINECONTROLSF_ONEBYTYPE = 0x00000002;
inline constexpr DWORD MIXER_GETLINECONTROLSF_QUERYMASK = 0x0000000F;

// The controls of the line dwLineID: cControls records of cbmxctrl bytes
// (sizeof(MIXERCONTROLA)) at pamxctrl, as many as the line has.
struct MIXERLINECONTROLSA {
    DWORD cbStruct = 0;
    DWORD dwLineID = 0;
    union {
        DWORD dwControlID = 0;
        DWORD dwControlType;
    };
    DWORD cControls = 0;
    DWORD cbmxctrl = 0;
    MIXERCONTROLA* pamxctrl = nullptr;
};

// ------------------------------------------------------------ control values

// Reading and writing: the value (a list's item texts are published too,
// and answered with MMSYSERR_NOTSUPPORTED).
inline constexpr DWORD MIXER_GETCONTROLDETAILSF_VALUE = 0x00000000;
inline constexpr DWORD MIXER_GETCONTROLDETAILSF_LISTTEXT = 0x00000001;
inline constexpr DWORD MIXER_GETCONTROLDETAILSF_QUERYMASK = 0x0000000F;
inline constexpr DWORD MIXER_SETCONTROLDETAILSF_VALUE = 0x00000000;
inline constexpr DWORD MIXER_SETCONTROLDETAILSF_CUSTOM = 0x00000001;
inline constexpr DWORD MIXER_SETCONTROLDETAILSF_QUERYMASK = 0x0000000F;

// A request to read or write a control's value: cChannels 1 treats every
// channel alike (the only form served), cMultipleItems 0, cbDetails the size
// of one value record, paDetails where the value is read from or written to.
// The request holds no handle, so one kept from an earlier opening of the
// mixer serves a later one.
struct MIXERCONTROLDETAILS {
    DWORD cbStruct = 0;
    DWORD dwControlID = 0;
    DWORD cChannels = 0;
    DWORD cMultipleItems = 0;
    DWORD cbDetails = 0;
    void* paDetails = nullptr;
};

// The value records: a volume, and a switch (0 off, anything else on).
struct MIXERCONTROLDETAILS_UNSIGNED {
    DWORD dwValue = 0;
};
struct MIXERCONTROLDETAILS_BOOLEAN {
    LONG fValue = 0;
};
static_assert(sizeof(MIXERCONTROLDETAILS_UNSIGNED) == 4 && sizeof(MIXERCONTROLDETAILS_BOOLEAN) == 4);

// ------------------------------------------------------------------- calls

UINT mixerGetNumDevs();
// capsSize may be larger than the record; only the record is written.
MMRESULT mixerGetDevCapsA(UINT mixerId, MIXERCAPSA* caps, UINT capsSize);
// Opens without a callback (flags 0 or MIXER_OBJECTF_MIXER).
MMRESULT mixerOpen(HMIXER* handle, UINT mixerId, DWORD_PTR callback, DWORD_PTR instance,
                   DWORD flags);
MMRESULT mixerClose(HMIXER handle);
MMRESULT mixerGetLineInfoA(HMIXEROBJ mixer, MIXERLINEA* line, DWORD flags);
MMRESULT mixerGetLineControlsA(HMIXEROBJ mixer, MIXERLINECONTROLSA* controls, DWORD flags);
MMRESULT mixerGetControlDetailsA(HMIXEROBJ mixer, MIXERCONTROLDETAILS* details, DWORD flags);
MMRESULT mixerSetControlDetails(HMIXEROBJ mixer, const MIXERCONTROLDETAILS* details, DWORD flags);

}  // namespace mm
