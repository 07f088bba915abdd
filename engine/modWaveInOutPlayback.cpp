// The signal engine's playback: the made buffer played through two output
// headers in turn, and the wave calls and header handling that capture and
// device discovery share with it.
#include <algorithm>
#include <cstring>

#include "base/Convert.h"
#include "base/RuntimeError.h"
#include "engine/modWaveInOutState.h"
#include "platform/GlobalMemory.h"

using namespace waveio;

namespace {

// Each output header owns a block this big: room for the longest buffer a
// make gives (2,099,999 samples).
constexpr std::int32_t kOutputBlockBytes = 4200000;
// A header this long or longer is never waited for. A fresh header still
// has its whole block as its length, so the first play after opening never
// waits.
constexpr mm::DWORD kNeverWaitedBytes = 2100000;
// The loop count that stands for "for ever"; the wait counts it as 5 passes.
constexpr std::int32_t kLoopForever = 2000000000;
constexpr double kForeverLoopsWaited = 5;
// Noise is shown by its first few samples only.
constexpr std::int32_t kNoiseShown = 200;

// A record asks for a recording when it reaches index 1 (the window parks
// its record at 0..0 between bursts).
bool mbHasElements(const rt::SampleArray& anRecord)
{
    return !anRecord.empty() && anRecord.ubound() >= 1;
}

// A floating-point quotient with the run-time's failures.
double mfQuotient(double numerator, double denominator)
{
    if (denominator == 0.0) rt::raise(numerator == 0.0 ? rt::kErrOverflow : rt::kErrDivisionByZero);
    return numerator / denominator;
}

bool mbHeldByDevice(const mm::WAVEHDR& tHdr)
{
    return (mm::headerFlags(tHdr) & mm::WHDR_INQUEUE) != 0;
}

// The text of an error code from one of the two lookups, cut at its NUL.
template <class Lookup>
std::string msErrorText(Lookup lookup, mm::MMRESULT lError, ErrorFlag& bError)
{
    constexpr mm::UINT kTextRoom = 200;
    char text[kTextRoom] = {};
    if (lookup(lError, text, kTextRoom) != mm::MMSYSERR_NOERROR) {
        bError = kTrue;
        return {};
    }
    return std::string(text, strnlen(text, kTextRoom));
}

void mWaveIOMakeBufferSetHdr(std::int32_t lSize, mm::WAVEHDR& tHdr, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveIOMakeBufferSetHdr", bError);
    trap.step([&] {
        if (lSize < 0) return;
        void* data = mm::GlobalLock(mm::GlobalAlloc(mm::GHND, static_cast<std::size_t>(lSize)));
        if (data != nullptr) gWaveIOSetHdr(static_cast<char*>(data), lSize, tHdr);
    });
}

}  // namespace

// ---- Wave calls shared with capture and discovery ------------------------------------

std::string msWaveOutGetErrorText(mm::MMRESULT lError, ErrorFlag& bError)
{
    return msErrorText(mm::waveOutGetErrorTextA, lError, bError);
}

std::string msWaveInGetErrorText(mm::MMRESULT lError, ErrorFlag& bError)
{
    return msErrorText(mm::waveInGetErrorTextA, lError, bError);
}

void mShowWaveError(Direction direction, mm::MMRESULT result, std::string_view procedure,
                    ErrorFlag& bError)
{
    const std::string text = direction == Direction::Out ? msWaveOutGetErrorText(result, bError)
                                                         : msWaveInGetErrorText(result, bError);
    bError = kTrue;
    host::msgBox(text, host::kExclamation, std::string(kModule) + "." + std::string(procedure));
}

bool mbWaveOk(rt::Trap& trap, mm::MMRESULT result, Direction direction, ErrorFlag& bError,
              const char* title)
{
    if (result == mm::MMSYSERR_NOERROR) return true;
    mShowWaveError(direction, result, title != nullptr ? title : trap.procedure(), bError);
    trap.leave();
    return false;
}

void mOpenPrepareSteps(rt::Trap& trap, const WaveCalls& calls, WaveSide& side,
                       std::int16_t nCount, std::int32_t lBytes, ErrorFlag& bError)
{
    trap.step([&] {
        std::uint32_t handle = 0;
        if (!mbWaveOk(trap, calls.open(&handle, static_cast<mm::UINT>(side.deviceId), &side.format,
                                       0, 0, mm::CALLBACK_NULL),
                      calls.direction, bError))
            return;
        side.handle = static_cast<std::int32_t>(handle);
    });
    trap.step([&] { side.headers.redim(1, nCount); });
    for (std::int16_t i = 1; i <= nCount && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = side.headers.at(i);
            mWaveIOMakeBufferSetHdr(lBytes, header, bError);
            if (bError) {
                trap.leave();
                return;
            }
            mbWaveOk(trap, calls.prepare(static_cast<std::uint32_t>(side.handle), &header, sizeof header),
                     calls.direction, bError);
        });
    }
}

void mUnPrepareFreeSteps(rt::Trap& trap, const WaveCalls& calls, std::uint32_t handle,
                         rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError)
{
    for (std::int32_t i = atHdr.lbound(); i <= atHdr.ubound() && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = atHdr.at(i);
            if (!mbWaveOk(trap, calls.unprepare(handle, &header, sizeof header), calls.direction,
                          bError))
                return;
            mm::GlobalFree(header.lpData);
            header.lpData = nullptr;
            header.dwBufferLength = 0;
        });
    }
}

void gWaveIOSetHdr(char* lpData, std::int32_t lLength, mm::WAVEHDR& tHdr)
{
    tHdr.lpData = lpData;
    tHdr.dwBufferLength = static_cast<mm::DWORD>(lLength);
    tHdr.dwBytesRecorded = 0;
    tHdr.dwUser = 0;
    mm::headerSetFlags(tHdr, 0, ~mm::DWORD{0});
    tHdr.dwLoops = 0;
    tHdr.lpNext = nullptr;
    tHdr.reserved = 0;
}

// ---- Playback ----------------------------------------------------------------------------

namespace {

// Whether output header nHdr is done, polled within a budget: a header of
// 2,100,000 bytes or more (a fresh one) is never waited for; otherwise at
// most (length / (bytes per sample x 2 x rate) + 1) x loops seconds, a
// header looping for ever counting 5 loops.
Bool16 mbWaveOutDoneHdrPtr(std::int16_t nHdr, ErrorFlag& bError)
{
    const OutputSide& output = gState.output;
    Bool16 bDone = kFalse;
    rt::Trap trap(kModule, "mbWaveOutDoneHdrPtr", bError);
    trap.step([&] {
        const mm::WAVEHDR& header = output.headers.at(nHdr);
        if (header.dwBufferLength >= kNeverWaitedBytes) return;
        const double loops =
            header.dwLoops == static_cast<mm::DWORD>(kLoopForever) ? kForeverLoopsWaited
                                                                   : header.dwLoops;
        const double bytesPerSample = output.format.wBitsPerSample / 8.0;
        // Half a pass and a second per loop: the factor 2 is part of the rule.
        const double budgetMs =
            (mfQuotient(header.dwBufferLength, bytesPerSample * 2 * output.format.nSamplesPerSec) +
             1) *
            loops * 1000;
        const std::uint32_t start = host::tickCount();
        while (!(mm::headerFlags(header) & mm::WHDR_DONE) && mfElapsedMs(start) <= budgetMs)
            host::sleep(1);
        bDone = toBool16(mm::headerFlags(header) & mm::WHDR_DONE);
    });
    return bDone;
}

// The made signal as the window shows it: noise by its start, a tone by one
// cycle and a sample.
void mTrimForDisplay(Bool16 bTrimForDisplay, rt::SampleArray& anSamples)
{
    const Generator& generator = gState.generator;
    if (anSamples.empty()) return;
    const std::int32_t length = anSamples.size();
    if (generator.shape == Shape::Noise) {
        if (length > kNoiseShown) anSamples.redimPreserve(kNoiseShown);
        return;
    }
    if (!bTrimForDisplay || generator.frequency2 != 0) return;
    const std::int32_t n =
        rt::intDiv(gState.devices.output.sampleRate, rt::roundHalfEven(generator.frequency1));
    if (n + 1.0 <= length)
        anSamples.redimPreserve(n + 1);
    else if (n == length)
        anSamples.redimPreserve(n);
}

void mWaveOutOpenPrepare(std::int16_t nCount, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutOpenPrepare", bError);
    trap.step([&] {
        // A burst fired while a tone plays reopens the output: the one open
        // is closed first, so its headers are never redimensioned under it.
        if (gState.output.handle == 0) return;
        gWaveOutClose(kTrue, bError);
        trap.leaveOnError(bError);
    });
    mOpenPrepareSteps(trap, kOutputCalls, gState.output, nCount, kOutputBlockBytes, bError);
}

void mWaveOutLoadSetHdr(ErrorFlag& bError)
{
    OutputSide& output = gState.output;
    rt::Trap trap(kModule, "mWaveOutLoadSetHdr", bError);
    trap.step([&] {
        // A closed output has no header memory to load into.
        if (output.handle == 0) return;
        const std::span<const std::int16_t> samples = gState.generator.samples.settled();
        const std::int32_t bytes = rt::toInt32(output.format.wBitsPerSample / 8.0 *
                                               static_cast<double>(samples.size()));
        mm::WAVEHDR& header = output.headers.at(output.currentHdr);
        if (bytes < 0 || static_cast<std::size_t>(bytes) > mm::GlobalSize(header.lpData))
            rt::raise(rt::kErrOutOfMemory);
        const std::size_t copied = std::min(static_cast<std::size_t>(bytes), samples.size_bytes());
        // The header may be playing ("SetHdr"): the device is held off while
        // its data and length change.
        mbWaveOk(trap, mm::waveOutRewriteHeader(outputHandle(), &header, sizeof header, [&] {
                     header.dwBufferLength = static_cast<mm::DWORD>(bytes);
                     if (copied > 0) std::memcpy(header.lpData, samples.data(), copied);
                 }),
                 Direction::Out, bError);
    });
}

void mWaveOutUpdate(std::int32_t lLoops, Bool16 bReset, rt::SampleArray& anRecord,
                    ErrorFlag& bError)
{
    OutputSide& output = gState.output;
    const WaveInDeviceInfo& input = gState.devices.input;
    std::int32_t lBytes = 0;
    rt::Trap trap(kModule, "mWaveOutUpdate", bError);
    trap.step([&] { output.currentHdr = output.currentHdr == 2 ? 1 : output.currentHdr + 1; });
    trap.step([&] {
        // The header about to be refilled finishes first (its answer is not
        // needed). One the device still holds after that, a fresh long
        // buffer that was never waited for, is taken back by a reset: a
        // header being played is never refilled.
        mbWaveOutDoneHdrPtr(output.currentHdr, bError);
        trap.leaveOnError(bError);
        if (!trap.leaving() && mbHeldByDevice(output.headers.at(output.currentHdr)))
            mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
    });
    trap.step([&] {
        mWaveOutLoadSetHdr(bError);
        trap.leaveOnError(bError);
    });
    // The header playing now finishes its pass and the new one follows it.
    trap.step([&] { mbWaveOk(trap, mm::waveOutBreakLoop(outputHandle()), Direction::Out, bError); });
    trap.step([&] {
        if (bReset) mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
    });
    trap.step([&] {
        if (lLoops < 1) lLoops = kLoopForever;
    });
    trap.step([&] {
        if (!mbHasElements(anRecord)) return;
        lBytes = rt::toInt32(input.bits / 8.0 * anRecord.size());
        gWaveInRecordOpen(input.sampleRate, input.bits, lBytes, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        gWaveOutPlay(lLoops, output.currentHdr, output.currentHdr, toBool16(lBytes >= 1), bError);
        if (!bError) return;
        // Nothing plays: an input opened for it is not left waiting.
        ErrorFlag closing = kFalse;
        if (lBytes >= 1) gWaveInClose(closing);
        trap.leave();
    });
    trap.step([&] {
        if (mbHasElements(anRecord)) gWaveInRecordStop(lBytes, anRecord, bError);
    });
}

void mWaveOutUnPrepareFree(rt::Array<mm::WAVEHDR>& atHdr, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutUnPrepareFree", bError);
    mUnPrepareFreeSteps(trap, kOutputCalls, outputHandle(), atHdr, bError);
}

}  // namespace

void gWaveOutChange(const std::string& sAction, std::int32_t lLoops, Bool16 bReset,
                    Bool16 bTrimForDisplay, rt::SampleArray& anSamples,
                    rt::SampleArray& anRecord, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveOutChange", bError);
    trap.step([&] { anSamples.erase(); });
    trap.step([&] {
        if (sAction == "Make")
            glWaveOutMake(anSamples, bError);
        else if (sAction == "Open")
            glWaveOutOpenPrepMakeUpdate(lLoops, anSamples, anRecord, bError);
        else if (sAction == "SetHdr")
            gWaveOutMakeLoadSetHdr(anSamples, bError);
        else
            gWaveOutMakeUpdate(lLoops, bReset, anSamples, anRecord, bError);
    });
    // A signal made before a device failure is still shown.
    trap.step([&] { mTrimForDisplay(bTrimForDisplay, anSamples); });
}

std::int32_t glWaveOutOpenPrepMakeUpdate(std::int32_t lLoops, rt::SampleArray& anSamples,
                                         rt::SampleArray& anRecord, ErrorFlag& bError)
{
    std::int32_t lSampleRate = 0;
    rt::Trap trap(kModule, "glWaveOutOpenPrepMakeUpdate", bError);
    trap.step([&] {
        lSampleRate = glWaveOutMakeSetFormatEx(16, anSamples, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        mWaveOutOpenPrepare(2, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        if (!mbHasElements(anRecord)) return;
        // The record spans one pass of the signal at the input's rate.
        const double length =
            mfQuotient(gState.devices.input.sampleRate, lSampleRate) * anSamples.size();
        anRecord.redim(1, rt::toInt32(length));
    });
    trap.step([&] { mWaveOutUpdate(lLoops, kTrue, anRecord, bError); });
    return lSampleRate;
}

void gWaveOutMakeUpdate(std::int32_t lLoops, Bool16 bReset, rt::SampleArray& anSamples,
                        rt::SampleArray& anRecord, ErrorFlag& bError)
{
    std::int32_t lOpenRate = 0;
    std::int32_t lMadeRate = 0;
    rt::Trap trap(kModule, "gWaveOutMakeUpdate", bError);
    trap.step([&] {
        lOpenRate = static_cast<std::int32_t>(gState.output.format.nSamplesPerSec);
        lMadeRate = glWaveOutMake(anSamples, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        // A closed output (after a close that left the format behind), or
        // one whose device was lost, is opened as a new rate would be.
        std::string sLost;
        if (lMadeRate == lOpenRate && gState.output.handle != 0 && !gbWaveOutLost(sLost)) {
            mWaveOutUpdate(lLoops, bReset, anRecord, bError);
            return;
        }
        gWaveOutClose(kTrue, bError);
        if (bError) {
            trap.leave();
            return;
        }
        glWaveOutOpenPrepMakeUpdate(lLoops, anSamples, anRecord, bError);
    });
}

Bool16 gbWaveOutLost(std::string& sText)
{
    if (gState.output.handle == 0) return kFalse;
    const mm::MMRESULT failure = mm::waveOutGetFailure(outputHandle());
    if (failure == mm::MMSYSERR_NOERROR) return kFalse;
    ErrorFlag bUnknown = kFalse;
    sText = msWaveOutGetErrorText(failure, bUnknown);
    return kTrue;
}

void gWaveOutMakeLoadSetHdr(rt::SampleArray& anSamples, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "gWaveOutMakeLoadSetHdr", bError);
    trap.step([&] {
        glWaveOutMake(anSamples, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mWaveOutLoadSetHdr(bError); });
}

void gWaveOutPlay(std::int32_t lLoops, std::int16_t nFirst, std::int16_t nLast,
                  Bool16 bStartRecording, ErrorFlag& bError)
{
    // Every failure here is titled as the recording's, as it always was.
    constexpr const char* kTitle = "gWaveInRecordOpen";
    rt::Trap trap(kModule, "gWaveOutPlay", bError);
    for (std::int32_t i = nFirst; i <= nLast && !trap.leaving(); ++i) {
        trap.step([&] {
            mm::WAVEHDR& header = gState.output.headers.at(i);
            mm::DWORD loopFlags = 0;
            if (i == nFirst) loopFlags |= mm::WHDR_BEGINLOOP;
            if (i == nLast) loopFlags |= mm::WHDR_ENDLOOP;
            mm::headerSetFlags(header, loopFlags, (mm::WHDR_BEGINLOOP | mm::WHDR_ENDLOOP) & ~loopFlags);
            header.dwLoops = i == nFirst ? static_cast<mm::DWORD>(lLoops) : 0;
            if (!mbWaveOk(trap, mm::waveOutWrite(outputHandle(), &header, sizeof header),
                          Direction::Out, bError, kTitle))
                return;
            if (bStartRecording)
                mbWaveOk(trap, mm::waveInStart(inputHandle()), Direction::In, bError, kTitle);
        });
    }
}

Bool16 gbWaveOutDone(ErrorFlag& bError)
{
    Bool16 bDone = kFalse;
    rt::Trap trap(kModule, "gbWaveOutDone", bError);
    trap.step([&] { bDone = mbWaveOutDoneHdrPtr(gState.output.currentHdr, bError); });
    return bDone;
}

void gWaveOutClose(Bool16 bReset, ErrorFlag& bError)
{
    OutputSide& output = gState.output;
    rt::Trap trap(kModule, "gWaveOutClose", bError);
    trap.step([&] {
        if (output.handle == 0) trap.leave();
    });
    trap.step([&] { mbWaveOk(trap, mm::waveOutBreakLoop(outputHandle()), Direction::Out, bError); });
    trap.step([&] {
        if (bReset) {
            mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
        } else if (output.currentHdr >= 1) {
            gbWaveOutDone(bError);
            trap.leaveOnError(bError);
        }
    });
    trap.step([&] {
        // Past the budget whatever still plays is stopped, so that the
        // headers can go and the device closes.
        const bool held = std::any_of(output.headers.begin(), output.headers.end(),
                                      [](const mm::WAVEHDR& header) { return mbHeldByDevice(header); });
        if (held) mbWaveOk(trap, mm::waveOutReset(outputHandle()), Direction::Out, bError);
    });
    trap.step([&] {
        mWaveOutUnPrepareFree(output.headers, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mbWaveOk(trap, mm::waveOutClose(outputHandle()), Direction::Out, bError); });
    output.handle = 0;
}
