#pragma once
// The inside of the signal engine: the module's state, grouped by who owns
// it, and the private procedures that more than one of its parts calls. The
// engine is one module (modWaveInOut.h) written in four parts: synthesis,
// playback, capture and device discovery. Only those parts and the
// engine's testing header include this.
#include <cstdint>
#include <string>
#include <string_view>

#include "base/Array.h"
#include "base/Trap.h"
#include "base/Types.h"
#include "engine/SampleStore.h"
#include "engine/modWaveInOut.h"
#include "platform/HostServices.h"
#include "platform/WaveApi.h"

namespace waveio {

inline constexpr const char* kModule = "modWaveInOut";

// The shapes the makers tell apart.
enum class Shape { Sine, Triangle, MarkSpace, Noise };

// What the main window set through the setters, and the buffer made from it.
struct Generator {
    std::string shapeText;             // as set, for what reads it back
    Shape shape = Shape::Sine;         // shapeText read once, when set
    std::int32_t percent = 0;          // mark (mark/space) or rise (triangle)
    std::int16_t invert = 0;           // +1, -1; 0 counts as +1
    float frequency1 = 0;              // Hz; 0 gives silence
    float frequency2 = 0;              // Hz; 0: no sweep
    float duration = 0;                // s, of a sweep
    Bool16 logarithmic = kFalse;
    Bool16 bidirectional = kFalse;
    std::int16_t sweepSteps = 0;
    float burstCycles = 0;             // <= 0: continuous
    std::int16_t burstPeriod = 0;      // ms
    bool preciseLoop = false;          // a continuous tone as a precise loop (ToneLoop.h)
    SampleStore samples;
    double playedFrequency = 0;        // Hz, of the tone last made; 0: not a tone
    std::int32_t madeRate = 0;         // samples/s of the buffer last made; 0: none
    std::uint64_t randomCounter = 0;   // the noise source's position
    bool exactSamplesOnly = false;     // no vectorised blocks (tests compare the two)
};

// One direction of the wave device as it is open.
struct WaveSide {
    std::int32_t deviceId = 0;         // chosen by device discovery
    std::int32_t handle = 0;           // 0 when closed
    mm::WAVEFORMATEX format;           // what the device is opened with
    rt::Array<mm::WAVEHDR> headers;    // 1-based
};

struct OutputSide : WaveSide {
    std::int16_t currentHdr = 0;       // the header last loaded; 0: none yet
};

// What device discovery read and made of it.
struct DeviceRecords {
    WaveOutDeviceInfo output;
    WaveInDeviceInfo input;
    mm::WAVEOUTCAPSA outputCaps;       // the last record read
    mm::WAVEINCAPSA inputCaps;
};

struct EngineState {
    Generator generator;
    OutputSide output;
    WaveSide input;
    DeviceRecords devices;
};

extern EngineState gState;

// ---- Wave calls ---------------------------------------------------------------

enum class Direction { Out, In };

// The calls in which the two directions differ only by name.
struct WaveCalls {
    Direction direction;
    decltype(&mm::waveOutOpen) open;
    decltype(&mm::waveOutPrepareHeader) prepare;
    decltype(&mm::waveOutUnprepareHeader) unprepare;
};
inline constexpr WaveCalls kOutputCalls{Direction::Out, mm::waveOutOpen, mm::waveOutPrepareHeader,
                                        mm::waveOutUnprepareHeader};
inline constexpr WaveCalls kInputCalls{Direction::In, mm::waveInOpen, mm::waveInPrepareHeader,
                                       mm::waveInUnprepareHeader};

inline mm::HWAVEOUT outputHandle() { return static_cast<mm::HWAVEOUT>(gState.output.handle); }
inline mm::HWAVEIN inputHandle() { return static_cast<mm::HWAVEIN>(gState.input.handle); }

}  // namespace waveio

// ---- Private procedures the parts share ----------------------------------------

// A mono PCM format of lSampleRate and nBits into tFormat.
void mWaveIOSetFormatEx(std::int32_t lSampleRate, std::int16_t nBits, mm::WAVEFORMATEX& tFormat,
                        ErrorFlag& bError);

// The platform's texts for an output or input error code; empty, with the
// error flag set, for a code it does not know.
std::string msWaveOutGetErrorText(mm::MMRESULT lError, ErrorFlag& bError);
std::string msWaveInGetErrorText(mm::MMRESULT lError, ErrorFlag& bError);

// The warning box of a failed wave call: the platform's text for the code
// from the direction's lookup, titled with the module and the procedure;
// sets the error flag.
void mShowWaveError(waveio::Direction direction, mm::MMRESULT result, std::string_view procedure,
                    ErrorFlag& bError);
// True when the call succeeded; otherwise its box is shown (titled with the
// trap's procedure unless a title is given), the error flag set and the
// procedure leaves.
bool mbWaveOk(rt::Trap& trap, mm::MMRESULT result, waveio::Direction direction, ErrorFlag& bError,
              const char* title = nullptr);

// Steps of the calling procedure's trap: opens the side's device with its
// format, no callback, and gives it nCount prepared headers of lBytes each.
void mOpenPrepareSteps(rt::Trap& trap, const waveio::WaveCalls& calls, waveio::WaveSide& side,
                       std::int16_t nCount, std::int32_t lBytes, ErrorFlag& bError);
// Steps of the calling procedure's trap: unprepares each header of atHdr on
// the open device and frees its memory.
void mUnPrepareFreeSteps(rt::Trap& trap, const waveio::WaveCalls& calls, std::uint32_t handle,
                         rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError);

// Milliseconds since `start` on the tick count, across its wrap.
inline double mfElapsedMs(std::uint32_t start)
{
    return static_cast<double>(static_cast<std::uint32_t>(host::tickCount() - start));
}
