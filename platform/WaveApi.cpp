#include "platform/WaveApi.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include "platform/SoundBackends.h"
#include "platform/WaveBackend.h"

namespace mm {

namespace {

using backend::CaptureQueue;
using backend::InputStream;
using backend::OutputStream;
using backend::PlayQueue;

// Members are destroyed in reverse: the stream (and its thread) goes before
// the queue it reads.
struct OutputHandle {
    std::unique_ptr<PlayQueue> queue;
    std::unique_ptr<OutputStream> stream;
};

struct InputHandle {
    std::unique_ptr<CaptureQueue> queue;
    std::unique_ptr<InputStream> stream;
};

// The open handles. The calls come from the program's thread; the lock only
// keeps the tables sound should a test call from elsewhere.
struct Handles {
    std::mutex mutex;
    std::map<HWAVEOUT, OutputHandle> outputs;
    std::map<HWAVEIN, InputHandle> inputs;
    std::uint32_t next = 1;
};

Handles& handles()
{
    static Handles table;
    return table;
}

OutputHandle* findOutput(HWAVEOUT handle)
{
    auto& table = handles().outputs;
    auto found = table.find(handle);
    return found == table.end() ? nullptr : &found->second;
}

InputHandle* findInput(HWAVEIN handle)
{
    auto& table = handles().inputs;
    auto found = table.find(handle);
    return found == table.end() ? nullptr : &found->second;
}

std::uint32_t newHandle()
{
    std::uint32_t& next = handles().next;
    const std::uint32_t handle = next;
    next = next == 0xFFFFFFFFu ? 1 : next + 1;
    return handle;
}

backend::WaveBackend& activeWave() { return backend::activeSoundBackend().wave(); }

// Only plain PCM, 8 or 16 bits, mono or stereo, with a consistent block.
bool isPlayableFormat(const WAVEFORMATEX& format)
{
    if (format.wFormatTag != WAVE_FORMAT_PCM) return false;
    if (format.nChannels < 1 || format.nChannels > 2) return false;
    if (format.wBitsPerSample != 8 && format.wBitsPerSample != 16) return false;
    if (format.nBlockAlign != format.nChannels * format.wBitsPerSample / 8) return false;
    return format.nSamplesPerSec >= 1000 && format.nSamplesPerSec <= 384000;
}

MMRESULT checkHeader(const WAVEHDR* header, UINT size)
{
    if (header == nullptr || size != sizeof(WAVEHDR)) return MMSYSERR_INVALPARAM;
    return MMSYSERR_NOERROR;
}

MMRESULT openCheck(const void* handle, const WAVEFORMATEX* format, DWORD flags)
{
    if (handle == nullptr || format == nullptr) return MMSYSERR_INVALPARAM;
    if (flags != CALLBACK_NULL) return MMSYSERR_INVALFLAG;
    if (!isPlayableFormat(*format)) return WAVERR_BADFORMAT;
    return MMSYSERR_NOERROR;
}

MMRESULT prepare(WAVEHDR* header, UINT size)
{
    if (MMRESULT result = checkHeader(header, size)) return result;
    if (header->lpData == nullptr && header->dwBufferLength > 0) return MMSYSERR_INVALPARAM;
    headerSetFlags(*header, WHDR_PREPARED, 0);
    return MMSYSERR_NOERROR;
}

template <class Queue>
MMRESULT unprepare(const Queue& queue, WAVEHDR* header, UINT size)
{
    if (MMRESULT result = checkHeader(header, size)) return result;
    if (queue.holds(header)) return WAVERR_STILLPLAYING;
    headerSetFlags(*header, 0, WHDR_PREPARED);
    return MMSYSERR_NOERROR;
}

MMRESULT errorText(MMRESULT error, char* text, UINT size)
{
    if (text == nullptr || size == 0) return MMSYSERR_INVALPARAM;
    // The published texts, two blanks after a full stop as published.
    static const std::map<MMRESULT, const char*> texts = {
        {MMSYSERR_NOERROR, "The specified command was carried out."},
        {MMSYSERR_ERROR, "Undefined external error."},
        {MMSYSERR_BADDEVICEID, "A device ID has been used that is out of range for your system."},
        {MMSYSERR_NOTENABLED, "The driver was not enabled."},
        {MMSYSERR_ALLOCATED,
         "The specified device is already in use.  Wait until it is free, and then try again."},
        {MMSYSERR_INVALHANDLE, "The specified device handle is invalid."},
        {MMSYSERR_NODRIVER, "There is no driver installed on your system."},
        {MMSYSERR_NOMEM,
         "There is not enough memory available for this task.  Quit one or more applications to "
         "increase available memory, and then try again."},
        {MMSYSERR_NOTSUPPORTED,
         "This function is not supported.  Use the Capabilities function to determine which "
         "functions and messages the driver supports."},
        {MMSYSERR_BADERRNUM, "An error number was specified that is not defined in the system."},
        {MMSYSERR_INVALFLAG, "An invalid flag was passed to a system function."},
        {MMSYSERR_INVALPARAM, "An invalid parameter was passed to a system function."},
        {WAVERR_BADFORMAT,
         "The specified format is not supported or cannot be translated.  Use the Capabilities "
         "function to determine the supported formats."},
        {WAVERR_STILLPLAYING,
         "Cannot perform this operation while media data is still playing.  Reset the device, or "
         "wait until the data is finished playing."},
        {WAVERR_UNPREPARED,
         "The wave header was not prepared.  Use the Prepare function to prepare the header, and "
         "then try again."},
        {WAVERR_SYNC,
         "Cannot open the device without using the WAVE_ALLOWSYNC flag.  Use the flag, and then "
         "try again."},
    };
    auto found = texts.find(error);
    if (found == texts.end()) {
        text[0] = '\0';
        return MMSYSERR_BADERRNUM;
    }
    const std::size_t length = std::min<std::size_t>(std::strlen(found->second), size - 1);
    std::memcpy(text, found->second, length);
    text[length] = '\0';
    return MMSYSERR_NOERROR;
}

}  // namespace

// ------------------------------------------------------------------ output

UINT waveOutGetNumDevs() { return activeWave().outputCount(); }

MMRESULT waveOutGetDevCapsA(UINT deviceId, WAVEOUTCAPSA* caps, UINT capsSize)
{
    if (caps == nullptr || capsSize != sizeof(WAVEOUTCAPSA)) return MMSYSERR_INVALPARAM;
    return activeWave().outputCaps(deviceId, *caps);
}

MMRESULT waveOutOpen(HWAVEOUT* handle, UINT deviceId, const WAVEFORMATEX* format,
                     DWORD_PTR /*callback*/, DWORD_PTR /*instance*/, DWORD flags)
{
    if (MMRESULT result = openCheck(handle, format, flags)) return result;
    auto queue = std::make_unique<PlayQueue>(*format);
    std::unique_ptr<OutputStream> stream;
    if (MMRESULT result = activeWave().openOutput(deviceId, *format, *queue, stream)) {
        return result;
    }
    std::lock_guard lock(handles().mutex);
    const HWAVEOUT opened = newHandle();
    handles().outputs[opened] = OutputHandle{std::move(queue), std::move(stream)};
    *handle = opened;
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutPrepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT headerSize)
{
    std::lock_guard lock(handles().mutex);
    if (findOutput(handle) == nullptr) return MMSYSERR_INVALHANDLE;
    return prepare(header, headerSize);
}

MMRESULT waveOutWrite(HWAVEOUT handle, WAVEHDR* header, UINT headerSize)
{
    std::lock_guard lock(handles().mutex);
    OutputHandle* output = findOutput(handle);
    if (output == nullptr) return MMSYSERR_INVALHANDLE;
    if (MMRESULT result = checkHeader(header, headerSize)) return result;
    const DWORD flags = headerFlags(*header);
    if (!(flags & WHDR_PREPARED)) return WAVERR_UNPREPARED;
    if (flags & WHDR_INQUEUE) return WAVERR_STILLPLAYING;
    if (MMRESULT refused = output->stream->admitWrite()) return refused;
    output->queue->write(header);
    output->stream->queueChanged();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutBreakLoop(HWAVEOUT handle)
{
    std::lock_guard lock(handles().mutex);
    OutputHandle* output = findOutput(handle);
    if (output == nullptr) return MMSYSERR_INVALHANDLE;
    output->queue->breakLoop();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutReset(HWAVEOUT handle)
{
    std::lock_guard lock(handles().mutex);
    OutputHandle* output = findOutput(handle);
    if (output == nullptr) return MMSYSERR_INVALHANDLE;
    output->queue->reset();
    return MMSYSERR_NOERROR;
}

MMRESULT waveOutUnprepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT headerSize)
{
    std::lock_guard lock(handles().mutex);
    OutputHandle* output = findOutput(handle);
    if (output == nullptr) return MMSYSERR_INVALHANDLE;
    return unprepare(*output->queue, header, headerSize);
}

MMRESULT waveOutClose(HWAVEOUT handle)
{
    OutputHandle closing;
    {
        std::lock_guard lock(handles().mutex);
        OutputHandle* output = findOutput(handle);
        if (output == nullptr) return MMSYSERR_INVALHANDLE;
        if (!output->queue->empty()) return WAVERR_STILLPLAYING;
        closing = std::move(*output);
        handles().outputs.erase(handle);
    }
    return MMSYSERR_NOERROR;  // the stream's thread stops as `closing` goes
}

MMRESULT waveOutGetFailure(HWAVEOUT handle)
{
    std::lock_guard lock(handles().mutex);
    OutputHandle* output = findOutput(handle);
    if (output == nullptr) return MMSYSERR_INVALHANDLE;
    return output->stream->failure();
}

MMRESULT waveOutGetErrorTextA(MMRESULT error, char* text, UINT size)
{
    return errorText(error, text, size);
}

MMRESULT waveOutRewriteHeader(HWAVEOUT handle, WAVEHDR* header, UINT headerSize,
                              const std::function<void()>& rewrite)
{
    std::lock_guard lock(handles().mutex);
    OutputHandle* output = findOutput(handle);
    if (output == nullptr) return MMSYSERR_INVALHANDLE;
    if (MMRESULT result = checkHeader(header, headerSize)) return result;
    if (!(headerFlags(*header) & WHDR_PREPARED)) return WAVERR_UNPREPARED;
    output->queue->holdOff(rewrite);
    // A header being refilled before it is written again changes nothing
    // the device holds.
    if (output->queue->holds(header)) output->stream->queueChanged();
    return MMSYSERR_NOERROR;
}

// ------------------------------------------------------------------- input

UINT waveInGetNumDevs() { return activeWave().inputCount(); }

MMRESULT waveInGetDevCapsA(UINT deviceId, WAVEINCAPSA* caps, UINT capsSize)
{
    if (caps == nullptr || capsSize != sizeof(WAVEINCAPSA)) return MMSYSERR_INVALPARAM;
    return activeWave().inputCaps(deviceId, *caps);
}

MMRESULT waveInOpen(HWAVEIN* handle, UINT deviceId, const WAVEFORMATEX* format,
                    DWORD_PTR /*callback*/, DWORD_PTR /*instance*/, DWORD flags)
{
    if (MMRESULT result = openCheck(handle, format, flags)) return result;
    auto queue = std::make_unique<CaptureQueue>(*format);
    std::unique_ptr<InputStream> stream;
    if (MMRESULT result = activeWave().openInput(deviceId, *format, *queue, stream)) {
        return result;
    }
    std::lock_guard lock(handles().mutex);
    const HWAVEIN opened = newHandle();
    handles().inputs[opened] = InputHandle{std::move(queue), std::move(stream)};
    *handle = opened;
    return MMSYSERR_NOERROR;
}

MMRESULT waveInPrepareHeader(HWAVEIN handle, WAVEHDR* header, UINT headerSize)
{
    std::lock_guard lock(handles().mutex);
    if (findInput(handle) == nullptr) return MMSYSERR_INVALHANDLE;
    return prepare(header, headerSize);
}

MMRESULT waveInAddBuffer(HWAVEIN handle, WAVEHDR* header, UINT headerSize)
{
    std::lock_guard lock(handles().mutex);
    InputHandle* input = findInput(handle);
    if (input == nullptr) return MMSYSERR_INVALHANDLE;
    if (MMRESULT result = checkHeader(header, headerSize)) return result;
    const DWORD flags = headerFlags(*header);
    if (!(flags & WHDR_PREPARED)) return WAVERR_UNPREPARED;
    if (flags & WHDR_INQUEUE) return WAVERR_STILLPLAYING;
    if (MMRESULT failed = input->stream->failure()) return failed;
    input->queue->add(header);
    return MMSYSERR_NOERROR;
}

MMRESULT waveInStart(HWAVEIN handle)
{
    std::lock_guard lock(handles().mutex);
    InputHandle* input = findInput(handle);
    if (input == nullptr) return MMSYSERR_INVALHANDLE;
    if (MMRESULT failed = input->stream->failure()) return failed;
    input->queue->start();
    input->stream->start();
    return MMSYSERR_NOERROR;
}

MMRESULT waveInStop(HWAVEIN handle)
{
    std::lock_guard lock(handles().mutex);
    InputHandle* input = findInput(handle);
    if (input == nullptr) return MMSYSERR_INVALHANDLE;
    input->queue->stop();
    input->stream->stop();
    return MMSYSERR_NOERROR;
}

MMRESULT waveInReset(HWAVEIN handle)
{
    std::lock_guard lock(handles().mutex);
    InputHandle* input = findInput(handle);
    if (input == nullptr) return MMSYSERR_INVALHANDLE;
    input->queue->reset();
    input->stream->stop();
    return MMSYSERR_NOERROR;
}

MMRESULT waveInUnprepareHeader(HWAVEIN handle, WAVEHDR* header, UINT headerSize)
{
    std::lock_guard lock(handles().mutex);
    InputHandle* input = findInput(handle);
    if (input == nullptr) return MMSYSERR_INVALHANDLE;
    return unprepare(*input->queue, header, headerSize);
}

MMRESULT waveInClose(HWAVEIN handle)
{
    InputHandle closing;
    {
        std::lock_guard lock(handles().mutex);
        InputHandle* input = findInput(handle);
        if (input == nullptr) return MMSYSERR_INVALHANDLE;
        if (!input->queue->empty()) return WAVERR_STILLPLAYING;
        closing = std::move(*input);
        handles().inputs.erase(handle);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT waveInGetErrorTextA(MMRESULT error, char* text, UINT size)
{
    return errorText(error, text, size);
}

std::string waveBackendName() { return backend::activeSoundBackend().name; }

namespace backend {

void copyDeviceName(const std::string& name, char (&field)[MAXPNAMELEN])
{
    std::memset(field, 0, MAXPNAMELEN);
    std::memcpy(field, name.data(), std::min(name.size(), MAXPNAMELEN - 1));
}

}  // namespace backend

}  // namespace mm
