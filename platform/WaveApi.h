#pragma once
// The wave-audio part of the operating system's multimedia interface, with
// its published record layouts, field names, flag values, error codes and
// error texts, as the engine is written against them. Only what the program
// calls is here.
//
// Behind the calls sit two back ends, chosen once, at the first call, by the
// environment variable WAVELARK_AUDIO: "alsa" (real devices), "loopback"
// (the in-process virtual sound card), unset or "auto" (ALSA, or the virtual
// card when ALSA offers no usable device at all).
//
// Every call is made from the program's own thread. The back ends run their
// own threads (the ALSA feeder and capture threads, the virtual card's
// clock); they write a queued header's dwFlags and dwBytesRecorded, so the
// program reads those two fields with std::atomic_ref (see headerFlags and
// headerBytesRecorded). A failure a back-end thread meets is never shown
// from there: it is kept and returned by the next call that needs the device.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace mm {

using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using MMRESULT = std::uint32_t;
using MMVERSION = std::uint32_t;
using DWORD_PTR = std::uintptr_t;
// Handles are small non-zero numbers; 0 is never a valid handle.
using HWAVEOUT = std::uint32_t;
using HWAVEIN = std::uint32_t;

inline constexpr std::size_t MAXPNAMELEN = 32;

inline constexpr WORD WAVE_FORMAT_PCM = 1;

// Result codes.
inline constexpr MMRESULT MMSYSERR_NOERROR = 0;
inline constexpr MMRESULT MMSYSERR_ERROR = 1;
inline constexpr MMRESULT MMSYSERR_BADDEVICEID = 2;
inline constexpr MMRESULT MMSYSERR_NOTENABLED = 3;
inline constexpr MMRESULT MMSYSERR_ALLOCATED = 4;
inline constexpr MMRESULT MMSYSERR_INVALHANDLE = 5;
inline constexpr MMRESULT MMSYSERR_NODRIVER = 6;
inline constexpr MMRESULT MMSYSERR_NOMEM = 7;
inline constexpr MMRESULT MMSYSERR_NOTSUPPORTED = 8;
inline constexpr MMRESULT MMSYSERR_BADERRNUM = 9;
inline constexpr MMRESULT MMSYSERR_INVALFLAG = 10;
inline constexpr MMRESULT MMSYSERR_INVALPARAM = 11;
inline constexpr MMRESULT WAVERR_BADFORMAT = 32;
inline constexpr MMRESULT WAVERR_STILLPLAYING = 33;
inline constexpr MMRESULT WAVERR_UNPREPARED = 34;
inline constexpr MMRESULT WAVERR_SYNC = 35;

// Open flags: the program opens without a callback.
inline constexpr DWORD CALLBACK_NULL = 0x00000000;

// PCM wave format.
struct WAVEFORMATEX {
    WORD wFormatTag = 0;
    WORD nChannels = 0;
    DWORD nSamplesPerSec = 0;
    DWORD nAvgBytesPerSec = 0;
    WORD nBlockAlign = 0;
    WORD wBitsPerSample = 0;
    WORD cbSize = 0;
};

// A plain PCM format: the block size and byte rate follow from the rest.
inline WAVEFORMATEX pcmFormat(DWORD rate, WORD bits = 16, WORD channels = 1)
{
    WAVEFORMATEX format;
    format.wFormatTag = WAVE_FORMAT_PCM;
    format.nChannels = channels;
    format.nSamplesPerSec = rate;
    format.wBitsPerSample = bits;
    format.nBlockAlign = static_cast<WORD>(channels * bits / 8);
    format.nAvgBytesPerSec = rate * format.nBlockAlign;
    return format;
}

// Header flags.
inline constexpr DWORD WHDR_DONE = 0x00000001;
inline constexpr DWORD WHDR_PREPARED = 0x00000002;
inline constexpr DWORD WHDR_BEGINLOOP = 0x00000004;
inline constexpr DWORD WHDR_ENDLOOP = 0x00000008;
inline constexpr DWORD WHDR_INQUEUE = 0x00000010;

// A buffer handed to a wave device. dwFlags and dwBytesRecorded are written
// by the device side while the program polls them (std::atomic_ref on both
// sides).
struct WAVEHDR {
    char* lpData = nullptr;
    DWORD dwBufferLength = 0;
    DWORD dwBytesRecorded = 0;
    std::uintptr_t dwUser = 0;
    DWORD dwFlags = 0;
    DWORD dwLoops = 0;
    WAVEHDR* lpNext = nullptr;
    std::uintptr_t reserved = 0;
};

// The header fields the device side writes, read and changed atomically.
DWORD headerFlags(const WAVEHDR& header);
DWORD headerBytesRecorded(const WAVEHDR& header);
// Sets and clears flag bits of a header the device is not holding (the loop
// bits before a write).
void headerSetFlags(WAVEHDR& header, DWORD set, DWORD clear);

// Standard formats in dwFormats: rate (1 = 11.025 kHz, 2 = 22.05 kHz,
// 4 = 44.1 kHz, 48 and 96 kHz), mono/stereo, 8/16 bits.
inline constexpr DWORD WAVE_FORMAT_1M08 = 0x00000001;
inline constexpr DWORD WAVE_FORMAT_1S08 = 0x00000002;
inline constexpr DWORD WAVE_FORMAT_1M16 = 0x00000004;
inline constexpr DWORD WAVE_FORMAT_1S16 = 0x00000008;
inline constexpr DWORD WAVE_FORMAT_2M08 = 0x00000010;
inline constexpr DWORD WAVE_FORMAT_2S08 = 0x00000020;
inline constexpr DWORD WAVE_FORMAT_2M16 = 0x00000040;
inline constexpr DWORD WAVE_FORMAT_2S16 = 0x00000080;
inline constexpr DWORD WAVE_FORMAT_4M08 = 0x00000100;
inline constexpr DWORD WAVE_FORMAT_4S08 = 0x00000200;
inline constexpr DWORD WAVE_FORMAT_4M16 = 0x00000400;
inline constexpr DWORD WAVE_FORMAT_4S16 = 0x00000800;
inline constexpr DWORD WAVE_FORMAT_48M08 = 0x00001000;
inline constexpr DWORD WAVE_FORMAT_48S08 = 0x00002000;
inline constexpr DWORD WAVE_FORMAT_48M16 = 0x00004000;
inline constexpr DWORD WAVE_FORMAT_48S16 = 0x00008000;
inline constexpr DWORD WAVE_FORMAT_96M08 = 0x00010000;
inline constexpr DWORD WAVE_FORMAT_96S08 = 0x00020000;
inline constexpr DWORD WAVE_FORMAT_96M16 = 0x00040000;
inline constexpr DWORD WAVE_FORMAT_96S16 = 0x00080000;

// Output support bits in dwSupport.
inline constexpr DWORD WAVECAPS_PITCH = 0x0001;
inline constexpr DWORD WAVECAPS_PLAYBACKRATE = 0x0002;
inline constexpr DWORD WAVECAPS_VOLUME = 0x0004;
inline constexpr DWORD WAVECAPS_LRVOLUME = 0x0008;
inline constexpr DWORD WAVECAPS_SYNC = 0x0010;
inline constexpr DWORD WAVECAPS_SAMPLEACCURATE = 0x0020;

// What an output device can do. 52 bytes in the 32-bit layout; callers
// pass sizeof(WAVEOUTCAPSA).
struct WAVEOUTCAPSA {
    WORD wMid = 0;
    WORD wPid = 0;
    MMVERSION vDriverVersion = 0;
    char szPname[MAXPNAMELEN] = {};
    DWORD dwFormats = 0;
    WORD wChannels = 0;
    WORD wReserved1 = 0;
    DWORD dwSupport = 0;
};

// What an input device can do. 48 bytes in the 32-bit layout.
struct WAVEINCAPSA {
    WORD wMid = 0;
    WORD wPid = 0;
    MMVERSION vDriverVersion = 0;
    char szPname[MAXPNAMELEN] = {};
    DWORD dwFormats = 0;
    WORD wChannels = 0;
    WORD wReserved1 = 0;
};

// Neither record holds a pointer, so both keep their published sizes.
static_assert(sizeof(WAVEOUTCAPSA) == 52 && sizeof(WAVEINCAPSA) == 48);

// Wave output. A written header plays after those before it; a header with
// WHDR_BEGINLOOP starts a block that ends at the header with WHDR_ENDLOOP
// and is played dwLoops times (dwLoops of the begin header). WHDR_DONE is set
// once a header's data has all been handed to the device.
UINT waveOutGetNumDevs();
MMRESULT waveOutGetDevCapsA(UINT deviceId, WAVEOUTCAPSA* caps, UINT capsSize);
// Opens without a callback (flags CALLBACK_NULL); the format must be PCM.
MMRESULT waveOutOpen(HWAVEOUT* handle, UINT deviceId, const WAVEFORMATEX* format,
                     DWORD_PTR callback, DWORD_PTR instance, DWORD flags);
MMRESULT waveOutPrepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT headerSize);
MMRESULT waveOutWrite(HWAVEOUT handle, WAVEHDR* header, UINT headerSize);
// The loop under way finishes its present pass; then the header after the
// loop follows without a gap. No effect when nothing loops.
MMRESULT waveOutBreakLoop(HWAVEOUT handle);
// Stops at once; every queued header is marked done and leaves the queue.
MMRESULT waveOutReset(HWAVEOUT handle);
MMRESULT waveOutUnprepareHeader(HWAVEOUT handle, WAVEHDR* header, UINT headerSize);
// Refused with WAVERR_STILLPLAYING while headers are queued.
MMRESULT waveOutClose(HWAVEOUT handle);
// The published text of an error code, cut to fit `size` characters with
// the terminating NUL.
MMRESULT waveOutGetErrorTextA(MMRESULT error, char* text, UINT size);
// Not one of the published calls: what the device side of an open output
// has met, MMSYSERR_NOERROR while it plays (MMSYSERR_NODRIVER once its
// device or sound server is gone or has stalled). It asks nothing of the
// device, so a window may poll it from a timer.
MMRESULT waveOutGetFailure(HWAVEOUT handle);
// Not one of the published calls: rewrites the data and length of a
// prepared header that the device may be playing. `rewrite` runs while the
// device side is held off, so the device reads all of the old data or all
// of the new, never a torn mix; a looping header plays the new data from
// the next sample on. The engine changes a playing signal in place with it.
MMRESULT waveOutRewriteHeader(HWAVEOUT handle, WAVEHDR* header, UINT headerSize,
                              const std::function<void()>& rewrite);

// Wave input. Added buffers fill in order once started; a buffer is marked
// done when full (dwBytesRecorded grows as it fills).
UINT waveInGetNumDevs();
MMRESULT waveInGetDevCapsA(UINT deviceId, WAVEINCAPSA* caps, UINT capsSize);
MMRESULT waveInOpen(HWAVEIN* handle, UINT deviceId, const WAVEFORMATEX* format,
                    DWORD_PTR callback, DWORD_PTR instance, DWORD flags);
MMRESULT waveInPrepareHeader(HWAVEIN handle, WAVEHDR* header, UINT headerSize);
MMRESULT waveInAddBuffer(HWAVEIN handle, WAVEHDR* header, UINT headerSize);
MMRESULT waveInStart(HWAVEIN handle);
// Stops recording; the buffer being filled is marked done with what it holds.
MMRESULT waveInStop(HWAVEIN handle);
// Stops recording and marks every queued buffer done.
MMRESULT waveInReset(HWAVEIN handle);
MMRESULT waveInUnprepareHeader(HWAVEIN handle, WAVEHDR* header, UINT headerSize);
MMRESULT waveInClose(HWAVEIN handle);
MMRESULT waveInGetErrorTextA(MMRESULT error, char* text, UINT size);

// The back end serving the calls: "alsa" or "loopback" (the virtual card,
// which the device information page mentions).
std::string waveBackendName();

}  // namespace mm
