// The signal engine's capture: the input recorded over one pass of the
// output for a burst measurement.
#include <algorithm>
#include <cstring>

#include "base/RuntimeError.h"
#include "engine/modWaveInOutState.h"

using namespace waveio;

namespace {

// Shown when the input delivers less than a pass in time.
constexpr const char* kNoInputData = "No data arrived from the wave input device";
// How long the input may take beyond one pass of the output.
constexpr double kInputGraceMs = 2000;

// One pass of the current output header, in milliseconds; 0 when nothing
// is open.
double mfOutputPassMs()
{
    const OutputSide& output = gState.output;
    const mm::DWORD bytesPerSecond = output.format.nAvgBytesPerSec;
    if (output.handle == 0 || bytesPerSecond == 0 || output.currentHdr < 1 ||
        output.currentHdr > output.headers.ubound())
        return 0;
    return output.headers.at(output.currentHdr).dwBufferLength * 1000.0 / bytesPerSecond;
}

void mWaveInUnPrepareFree(rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveInUnPrepareFree", bError);
    mUnPrepareFreeSteps(trap, kInputCalls, inputHandle(), atHdr, bError);
}

}  // namespace

void gWaveInOpenPrepare(std::int16_t nCount, std::int32_t lSampleRate, std::int16_t nBits,
                        std::int32_t lBytes, ErrorFlag& bError)
{
    WaveSide& input = gState.input;
    rt::Trap trap(kModule, "gWaveInOpenPrepare", bError);
    trap.step([&] {
        // An input left open by a failed measurement is closed first.
        if (input.handle == 0) return;
        gWaveInClose(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        mWaveIOSetFormatEx(lSampleRate, nBits, input.format, bError);
        trap.leaveOnError(bError);
    });
    mOpenPrepareSteps(trap, kInputCalls, input, nCount, lBytes, bError);
}

void gWaveInRecordOpen(std::int32_t lSampleRate, std::int16_t nBits, std::int32_t lBytes,
                       ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveInRecordOpen", bError);
    trap.step([&] {
        gWaveInOpenPrepare(2, lSampleRate, nBits, lBytes, bError);
        trap.leaveOnError(bError);
    });
    for (std::int16_t i = 1; i <= 2 && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = gState.input.headers.at(i);
            mbWaveOk(trap, mm::waveInAddBuffer(inputHandle(), &header, sizeof header),
                     Direction::In, bError);
        });
    }
}

void gWaveInRecordStop(std::int32_t lBytes, rt::SampleArray& anRecord, ErrorFlag& bError)
{
    const WaveSide& input = gState.input;
    rt::Trap trap(kModule, "gWaveInRecordStop", bError);
    trap.step([&] {
        // Bounded: an input that never delivers must not hold the program.
        const mm::WAVEHDR& first = input.headers.at(1);
        const mm::DWORD wanted = static_cast<mm::DWORD>(std::max(lBytes, 0));
        const double budgetMs = mfOutputPassMs() + kInputGraceMs;
        const std::uint32_t start = host::tickCount();
        while (mm::headerBytesRecorded(first) < wanted &&
               !(mm::headerFlags(first) & mm::WHDR_DONE) && mfElapsedMs(start) <= budgetMs)
            host::sleep(1);
        if (mm::headerBytesRecorded(first) >= wanted) return;
        ErrorFlag closing = kFalse;
        gWaveInClose(closing);
        bError = kTrue;
        host::msgBox(kNoInputData, host::kExclamation, std::string(kModule) + ".gWaveInRecordStop");
        trap.leave();
    });
    trap.step([&] {
        const mm::MMRESULT result = mm::waveInStop(inputHandle());
        if (result == mm::MMSYSERR_NOERROR) return;
        // The output lookup gives this text, as it always has.
        mShowWaveError(Direction::Out, result, trap.procedure(), bError);
        ErrorFlag closing = kFalse;
        gWaveInClose(closing);
        trap.leave();
    });
    trap.step([&] {
        if (lBytes <= 0) return;
        const std::int64_t room = (static_cast<std::int64_t>(anRecord.ubound()) - 1 + 1) * 2;
        if (lBytes > room) rt::raise(rt::kErrSubscript);
        std::memcpy(&anRecord.at(1), input.headers.at(1).lpData, static_cast<std::size_t>(lBytes));
    });
    trap.step([&] { gWaveInClose(bError); });
}

void gWaveInClose(ErrorFlag& bError)
{
    WaveSide& input = gState.input;
    rt::Trap trap(kModule, "gWaveInClose", bError);
    trap.step([&] {
        if (input.handle == 0) trap.leave();
    });
    trap.step([&] { mbWaveOk(trap, mm::waveInReset(inputHandle()), Direction::In, bError); });
    trap.step([&] {
        mWaveInUnPrepareFree(input.headers, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mbWaveOk(trap, mm::waveInClose(inputHandle()), Direction::In, bError); });
    input.handle = 0;
}
