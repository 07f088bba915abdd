#pragma once
// The sound card's mixer as the generator uses it. At start-up
// gbMixerThereInit walks mixer 0 (every destination line, every source line
// under it, every control of each), writes the mixer report for the Info
// page, and keeps, for the five controls the program sets, a ready request
// and the value found. The setters write those slots later with a fresh
// opening of the mixer each time; gMixerSelectedRestore puts the values
// found back at exit.
//
// The tables have entries 0 to 7; slot s uses entry s - 1 (slotEntry), and
// a slot outside them is a subscript error.
#include <array>
#include <cstdint>
#include <string>

#include "base/Array.h"
#include "base/Types.h"
#include "platform/MixerApi.h"

// The five controls the program sets, by slot number.
enum MixerSlot : std::int16_t {
    kSlotMasterVolume = 1,
    kSlotMasterMute = 2,
    kSlotWaveVolume = 3,
    kSlotWaveMute = 4,
    kSlotMicVolume = 5,
};

// The table entry a slot uses.
constexpr std::int32_t slotEntry(std::int16_t nSlot) { return nSlot - 1; }

// The window's level bars run from 0 at the top (full level) to
// kLevelBarBottom (silent); a bar's position sets the mixer level
// (kLevelBarBottom - position) x 2, 65534 at the top and 0 at the bottom.
inline constexpr std::int32_t kLevelBarBottom = 32767;
constexpr std::int32_t glMixerLevelOfBar(std::int32_t lBarValue) { return (kLevelBarBottom - lBarValue) * 2; }

// One value request per slot: empty (every field 0) while its control has
// not been found, else the request the walk read the value with, pointing at
// the slot's value cell gaMixerValue(slot - 1)[1].
extern rt::Array<mm::MIXERCONTROLDETAILS> gaMixerControlDetails;
// 32-bit values by slot entry and column (0 and 1); column 1 is the value
// cell a slot's request reads and writes.
extern rt::Array<std::array<std::int32_t, 2>> gaMixerValue;
// Each slot's value as found at start-up.
extern rt::Array<std::int32_t> gaMixerRestore;

// The walk of mixer 0. sReport gets "Mixer Count: " and the count, one line
// per mixer, "Info on Mixer 0 follows" and the report of every line and
// control of mixer 0; the five slots are filled from what is found (and
// emptied first). No mixer at all: a plain "No mixers on this PC" box and
// False, with the error flag untouched. A failing mixer call is shown in a
// box titled "modMixer." and the procedure's name and sets the error flag;
// the report keeps what was built until then. True when the walk ended
// without either.
Bool16 gbMixerThereInit(std::string& sReport, ErrorFlag& bError);

// The five setters: volumes 0..65535, mutes True or False (written as 1 or
// 0). Each opens mixer 0, writes its slot with the request kept by the walk
// and closes the mixer; a refused write (also that of a slot never found) is
// shown in a box titled "modMixer.mMixerSetControl" and sets the error flag.
void gMixerOutMasterSetLevel(std::int32_t lLevel, ErrorFlag& bError);
void gMixerOutMasterSetMute(Bool16 bMute, ErrorFlag& bError);
void gMixerOutWaveSetLevel(std::int32_t lLevel, ErrorFlag& bError);
void gMixerOutWaveSetMute(Bool16 bMute, ErrorFlag& bError);
void gMixerInMicSetLevel(std::int32_t lLevel, ErrorFlag& bError);

// Writes the values found at start-up back to all five slots in order,
// going on after a slot that fails.
void gMixerSelectedRestore(ErrorFlag& bError);
