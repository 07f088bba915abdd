#pragma once
// The wave-audio records of the operating system's multimedia interface, with
// their published field names and values, as the engine is written against
// them. The calls and the back ends that serve them come with the sound
// output layer.
#include <cstdint>

namespace mm {

using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using MMRESULT = std::uint32_t;

inline constexpr WORD WAVE_FORMAT_PCM = 1;

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

}  // namespace mm
