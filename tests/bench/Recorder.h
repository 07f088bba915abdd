#pragma once
// A recorder of the test's own on the default input of the private sound
// server, which hears what the program plays.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/WaveApi.h"
#include "tests/bench/DoomedServer.h"

namespace testing_support {

inline constexpr mm::DWORD kRecorderRate = 44100;

// Records `seconds` of the default input at 44.1 kHz, 16-bit mono.
class Recorder {
public:
    explicit Recorder(double seconds) : memory_(static_cast<std::size_t>(seconds * kRecorderRate) * 2)
    {
        const mm::WAVEFORMATEX format = mm::pcmFormat(kRecorderRate);
        EXPECT_EQ(mm::waveInOpen(&handle_, 0, &format, 0, 0, mm::CALLBACK_NULL), mm::MMSYSERR_NOERROR);
        header_.lpData = memory_.data();
        header_.dwBufferLength = static_cast<mm::DWORD>(memory_.size());
        EXPECT_EQ(mm::waveInPrepareHeader(handle_, &header_, sizeof header_), mm::MMSYSERR_NOERROR);
        EXPECT_EQ(mm::waveInAddBuffer(handle_, &header_, sizeof header_), mm::MMSYSERR_NOERROR);
        EXPECT_EQ(mm::waveInStart(handle_), mm::MMSYSERR_NOERROR);
    }
    ~Recorder()
    {
        mm::waveInReset(handle_);
        mm::waveInUnprepareHeader(handle_, &header_, sizeof header_);
        mm::waveInClose(handle_);
    }

    // Waits for the whole recording (at most its length and 5 s more).
    std::vector<std::int16_t> take()
    {
        const auto limit = static_cast<std::uint32_t>(memory_.size() / 2 * 1000 / kRecorderRate + 5000);
        EXPECT_TRUE(waitFor([&] { return mm::headerFlags(header_) & mm::WHDR_DONE; }, limit));
        std::vector<std::int16_t> samples(memory_.size() / 2);
        std::memcpy(samples.data(), memory_.data(), samples.size() * 2);
        return samples;
    }

private:
    std::vector<char> memory_;
    mm::HWAVEIN handle_ = 0;
    mm::WAVEHDR header_;
};

}  // namespace testing_support
