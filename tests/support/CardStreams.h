#pragma once
// An output playing looped buffers and an input recording one buffer on the
// wave calls, opened on device 0 and closed again when they go.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/HostServices.h"
#include "platform/WaveApi.h"

namespace testing_support {

inline constexpr mm::DWORD kForever = 2000000000;

// An open output with its own sample buffers.
class Player {
public:
    explicit Player(mm::DWORD rate = 44100)
    {
        const mm::WAVEFORMATEX format = mm::pcmFormat(rate);
        EXPECT_EQ(mm::waveOutOpen(&handle, 0, &format, 0, 0, mm::CALLBACK_NULL), mm::MMSYSERR_NOERROR);
    }
    ~Player()
    {
        mm::waveOutReset(handle);
        for (auto& slot : slots_) mm::waveOutUnprepareHeader(handle, &slot.header, sizeof(mm::WAVEHDR));
        EXPECT_EQ(mm::waveOutClose(handle), mm::MMSYSERR_NOERROR);
    }

    // Queues `samples`, looped `loops` times, in buffer `slot` (0 or 1).
    mm::WAVEHDR& play(int slot, const std::vector<std::int16_t>& samples, mm::DWORD loops)
    {
        Slot& s = slots_[slot];
        s.samples = samples;
        s.header = mm::WAVEHDR{};
        s.header.lpData = reinterpret_cast<char*>(s.samples.data());
        s.header.dwBufferLength = static_cast<mm::DWORD>(s.samples.size() * 2);
        EXPECT_EQ(mm::waveOutPrepareHeader(handle, &s.header, sizeof(mm::WAVEHDR)), mm::MMSYSERR_NOERROR);
        mm::headerSetFlags(s.header, mm::WHDR_BEGINLOOP | mm::WHDR_ENDLOOP, 0);
        s.header.dwLoops = loops;
        EXPECT_EQ(mm::waveOutWrite(handle, &s.header, sizeof(mm::WAVEHDR)), mm::MMSYSERR_NOERROR);
        return s.header;
    }

    mm::HWAVEOUT handle = 0;

private:
    struct Slot {
        std::vector<std::int16_t> samples;
        mm::WAVEHDR header;
    };
    Slot slots_[2];
};

// An open input recording one buffer of `frames` frames.
class Recorder {
public:
    Recorder(mm::DWORD rate, std::size_t frames, mm::WORD bits = 16)
        : memory_(frames * bits / 8), bits_(bits)
    {
        const mm::WAVEFORMATEX format = mm::pcmFormat(rate, bits);
        EXPECT_EQ(mm::waveInOpen(&handle, 0, &format, 0, 0, mm::CALLBACK_NULL), mm::MMSYSERR_NOERROR);
        header.lpData = memory_.data();
        header.dwBufferLength = static_cast<mm::DWORD>(memory_.size());
        EXPECT_EQ(mm::waveInPrepareHeader(handle, &header, sizeof header), mm::MMSYSERR_NOERROR);
        EXPECT_EQ(mm::waveInAddBuffer(handle, &header, sizeof header), mm::MMSYSERR_NOERROR);
    }
    ~Recorder()
    {
        mm::waveInReset(handle);
        mm::waveInUnprepareHeader(handle, &header, sizeof header);
        EXPECT_EQ(mm::waveInClose(handle), mm::MMSYSERR_NOERROR);
    }
    void start() { EXPECT_EQ(mm::waveInStart(handle), mm::MMSYSERR_NOERROR); }

    // Polls (1 ms sleeps) until the buffer is full, at most `limitMs`.
    bool waitFull(std::uint32_t limitMs)
    {
        const std::uint32_t start = host::tickCount();
        while (!(mm::headerFlags(header) & mm::WHDR_DONE)) {
            if (host::tickCount() - start > limitMs) return false;
            host::sleep(1);
        }
        return true;
    }

    // The recording as 16-bit samples (8-bit ones scaled up).
    std::vector<std::int16_t> samples() const
    {
        std::vector<std::int16_t> out;
        if (bits_ == 8) {
            for (char byte : memory_) out.push_back(static_cast<std::int16_t>((static_cast<unsigned char>(byte) - 128) * 256));
        } else {
            out.resize(memory_.size() / 2);
            std::memcpy(out.data(), memory_.data(), out.size() * 2);
        }
        return out;
    }

    mm::HWAVEIN handle = 0;
    mm::WAVEHDR header;

private:
    std::vector<char> memory_;
    mm::WORD bits_;
};

}  // namespace testing_support
