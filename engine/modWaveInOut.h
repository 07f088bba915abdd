#pragma once
// The signal engine. One generator state, filled by the main window through
// the setters below, from which glWaveOutMake builds the 16-bit sample buffer
// that is played: one frequency as a whole number of cycles that loops
// without a click, a stepped sweep written at a reduced rate, a burst of
// cycles followed by silence, or noise.
#include <cstdint>
#include <string>

#include "base/Array.h"
#include "base/Types.h"
#include "platform/WaveApi.h"

// What the engine uses of the chosen output device. Filled from the device's
// capabilities at start-up.
struct WaveOutDeviceInfo {
    std::int16_t manufacturerId = 0;
    std::int16_t productId = 0;
    std::string driverVersion;
    std::string name;
    Bool16 noFormats = kFalse;             // the device reported no formats
    std::int32_t sampleRate = 0;           // samples/s
    float frequencyMax = 0;                // Hz, the highest frequency offered
    float frequencyMaxNonSine = 0;         // Hz, a tenth of it: limit of the other shapes
    std::int16_t bits = 0;
    std::int16_t channels = 0;
    std::int16_t deviceChannels = 0;       // the word after the channel count
    Bool16 supportsLRVolume = kFalse;
    Bool16 supportsPitch = kFalse;
    Bool16 supportsPlaybackRate = kFalse;
    Bool16 supportsSync = kFalse;
    Bool16 supportsVolume = kFalse;
    Bool16 supportsSampleAccurate = kFalse;
};

// What the engine uses of the chosen input device.
struct WaveInDeviceInfo {
    std::int16_t manufacturerId = 0;
    std::int16_t productId = 0;
    std::string driverVersion;
    std::string name;
    Bool16 noFormats = kFalse;
    std::int32_t sampleRate = 0;
    std::int16_t bits = 0;
    std::int16_t channels = 0;
    std::int16_t deviceChannels = 0;
};

// The device records of the generator state.
WaveOutDeviceInfo& gWaveOutInfo();
WaveInDeviceInfo& gWaveInInfo();

// ---- Generator state -------------------------------------------------------

// "Sine", "Triangle", "MarkSpace" or "Noise", stored as given; any other text
// makes a sine.
void gWaveOutSetShape(const std::string& sShape);
// The mark (mark/space) or rise (triangle) percentage of the cycle.
void gWaveOutSetPercent(std::int16_t nPercent);
// True inverts the signal (amplitude -32767).
void gWaveOutSetInvert(Bool16 bInvert);
// True makes a continuous tone a precise loop: as many cycles as it takes,
// up to the buffer's 2,099,999 samples, for the loop to close within
// 1e-5 radian and play the frequency set within 1 ppm, each sample worked
// out from the exact ratio of cycles to samples. False (the default) keeps
// the loop of at most 32,767 cycles that closes within 0.005 radian. Sweeps,
// bursts and noise are the same either way. Takes effect at the next make.
void gWaveOutSetPreciseLoop(Bool16 bPrecise);
// Stores the tone, sweep and burst settings. A frequency 1 out of range
// stores nothing; a frequency 2 (0 = no sweep) out of range stores only
// frequency 1. The burst period (ms) is kept as a 16-bit number.
void gWaveOutSetFrequency1SweepBurst(float fFrequency1, float fFrequency2, float fDuration,
                                     Bool16 bLogarithmic, Bool16 bBidirectional,
                                     std::int16_t nSteps, float fBurstCycles,
                                     std::int32_t lBurstPeriod, ErrorFlag& bError);
// True when 10 Hz <= fFrequency <= the output device's maximum frequency;
// otherwise, when asked, says so in a warning box.
Bool16 gbWaveOutFrequencyInRange(float fFrequency, Bool16 bShowMessage, ErrorFlag& bError);
// Makes the buffer (glWaveOutMake) and builds the output format for the rate
// it is to be played at and nBits; returns that rate.
std::int32_t glWaveOutMakeSetFormatEx(std::int16_t nBits, rt::SampleArray& anSamples,
                                      ErrorFlag& bError);

// ---- Synthesis ---------------------------------------------------------------

// Builds the engine's buffer from the generator state, hands out a copy
// (indexed from 1) and returns the sample rate to play it at: the device's,
// or a sweep's reduced rate. Frequency 1 = 0 gives silence of the previous
// length. On failure the engine's buffer keeps its full dimension.
std::int32_t glWaveOutMake(rt::SampleArray& anSamples, ErrorFlag& bError);
// Writes a whole sweep into the engine's buffer from index 1 at lSampleRate
// and returns its last index: steps up, down again when bidirectional, and a
// closing segment that ends on a whole cycle and on a sample <= 0.
std::int32_t glWaveOutMakeSweep(std::int32_t lSampleRate, ErrorFlag& bError);
// A whole number nLow..nHigh, uniformly drawn.
std::int16_t gnRandomInteger(std::int16_t nLow, std::int16_t nHigh);
// A copy (indexed from 1) of the buffer the last make left, the first lMax
// samples of it (all when lMax < 1), and the rate it plays at; 0 and no
// samples when the last make failed or none was made. A view of what
// plays reads this rather than making a long loop a second time.
std::int32_t glWaveOutMadeSamples(std::int32_t lMax, rt::SampleArray& anSamples);
// The frequency the last made continuous tone plays when looped: rate x
// cycles / length of its buffer (440.022 Hz for 440 Hz at 44.1 kHz without
// the precise loop, 440 with it). 0 when the last make made a sweep, a
// burst, noise or silence, or failed.
double gfWaveOutFrequencyPlayed();

// ---- Playback ----------------------------------------------------------------
// Two output headers of 4,200,000 bytes each take turns: a change is loaded
// into the idle one, the playing one's loop is broken, and the new one
// follows it at the end of its pass, without a gap. Completion is learnt by
// polling the headers' done flags; nothing calls back. A failed wave call
// shows the platform's error text in a warning box titled "modWaveInOut."
// and the procedure's name, and sets the error flag.

// The one entry of the main window. sAction "Make" makes the signal only;
// "Open" (re)opens the output and plays it; "SetHdr" remakes it into the
// current header in place; any other text remakes it and swaps it in at
// the end of the playing pass (at once with bReset). lLoops < 1 plays for
// ever. A record array that reaches index 1 asks for the input to be
// recorded over one pass of the new signal. Afterwards anSamples is cut for
// display: noise to 200 samples; with bTrimForDisplay, a tone to one cycle
// and a sample.
void gWaveOutChange(const std::string& sAction, std::int32_t lLoops, Bool16 bReset,
                    Bool16 bTrimForDisplay, rt::SampleArray& anSamples,
                    rt::SampleArray& anRecord, ErrorFlag& bError);
// Makes the signal, opens the output at its rate with two fresh headers and
// plays it (the output playing before is stopped); a record array that
// holds elements is sized to span one pass. Returns the rate.
std::int32_t glWaveOutOpenPrepMakeUpdate(std::int32_t lLoops, rt::SampleArray& anSamples,
                                         rt::SampleArray& anRecord, ErrorFlag& bError);
// Remakes the signal and swaps it in; a new rate (or a closed output) opens
// the output anew.
void gWaveOutMakeUpdate(std::int32_t lLoops, Bool16 bReset, rt::SampleArray& anSamples,
                        rt::SampleArray& anRecord, ErrorFlag& bError);
// Remakes the signal into the current header without writing it: a playing
// header plays the new signal from its next sample on.
void gWaveOutMakeLoadSetHdr(rt::SampleArray& anSamples, ErrorFlag& bError);
// A fresh header over lLength bytes at lpData: nothing recorded, no flags,
// no loops.
void gWaveIOSetHdr(char* lpData, std::int32_t lLength, mm::WAVEHDR& tHdr);
// Writes output headers nFirst..nLast as one block looped lLoops times,
// starting the input straight after each write when asked. Its failure
// boxes are titled "modWaveInOut.gWaveInRecordOpen", whichever call failed.
void gWaveOutPlay(std::int32_t lLoops, std::int16_t nFirst, std::int16_t nLast,
                  Bool16 bStartRecording, ErrorFlag& bError);
// Whether the current output header is done, waiting for it within its
// budget (mbWaveOutDoneHdrPtr).
Bool16 gbWaveOutDone(ErrorFlag& bError);
// Whether the open output has been lost (its device or sound server gone or
// stalled), with the platform's text for it in sText. Cheap: a window may
// ask every few hundred milliseconds. A closed output is not lost. The next
// change after a loss opens the output anew.
Bool16 gbWaveOutLost(std::string& sText);
// Closes the output when open: the loop is broken, then the output is reset
// (bReset) or the current header is waited for within its budget; headers
// are unprepared and freed. The handle is 0 afterwards in every case, and
// closing what is not open does nothing.
void gWaveOutClose(Bool16 bReset, ErrorFlag& bError);

// ---- Capture -----------------------------------------------------------------
// A burst measurement records the input during one pass of the output: the
// input is opened with two headers before the output write, started right
// after it, and header 1 is polled until it holds the pass.

// Opens the chosen input device (an input still open is closed first) as
// mono at lSampleRate and nBits, with nCount prepared headers of lBytes.
void gWaveInOpenPrepare(std::int16_t nCount, std::int32_t lSampleRate, std::int16_t nBits,
                        std::int32_t lBytes, ErrorFlag& bError);
// gWaveInOpenPrepare with two headers, both added to the input.
void gWaveInRecordOpen(std::int32_t lSampleRate, std::int16_t nBits, std::int32_t lBytes,
                       ErrorFlag& bError);
// Waits, for at most one pass of the output buffer plus 2 seconds, until
// header 1 holds lBytes, stops the input, copies those bytes into anRecord
// from index 1 and closes the input. An input that delivers too little in
// time is closed, nothing is copied, and a warning box says so.
void gWaveInRecordStop(std::int32_t lBytes, rt::SampleArray& anRecord, ErrorFlag& bError);
// Closes the input when open (reset, headers unprepared and freed); the
// handle is 0 afterwards in every case.
void gWaveInClose(ErrorFlag& bError);

// ---- Device discovery ----------------------------------------------------------

// Chooses the first output device that is not a modem and fills the output
// device record from its capabilities. "Wave device not found", or the text
// of a failed capability read, is shown in a critical box titled with the
// program's title; a failed read also sets the error flag, and no device is
// chosen after it. True when a device was chosen.
Bool16 gbWaveOutThere(ErrorFlag& bError);
// The same for input ("Wave Input device not found").
Bool16 gbWaveInThere(ErrorFlag& bError);
