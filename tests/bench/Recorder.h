#pragma once
// A recorder of the test's (or measurement's) own on the default input of
// the private sound server, which hears what the program plays.
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/HostServices.h"
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
        header_.lpData = memory_.data();
        header_.dwBufferLength = static_cast<mm::DWORD>(memory_.size());
        ok_ = mm::waveInOpen(&handle_, 0, &format, 0, 0, mm::CALLBACK_NULL) == mm::MMSYSERR_NOERROR &&
              mm::waveInPrepareHeader(handle_, &header_, sizeof header_) == mm::MMSYSERR_NOERROR &&
              mm::waveInAddBuffer(handle_, &header_, sizeof header_) == mm::MMSYSERR_NOERROR;
        startTick_ = host::tickCount();
        ok_ = ok_ && mm::waveInStart(handle_) == mm::MMSYSERR_NOERROR;
    }
    ~Recorder()
    {
        mm::waveInReset(handle_);
        mm::waveInUnprepareHeader(handle_, &header_, sizeof header_);
        mm::waveInClose(handle_);
    }

    // Whether the input opened and started.
    bool ok() const { return ok_; }
    // The host's tick count when the input started.
    std::uint32_t startTick() const { return startTick_; }

    // Waits for the whole recording (at most its length and 5 s more); empty
    // when it did not come.
    std::vector<std::int16_t> take()
    {
        const auto limit = static_cast<std::uint32_t>(memory_.size() / 2 * 1000 / kRecorderRate + 5000);
        if (!ok_ || !waitFor([&] { return mm::headerFlags(header_) & mm::WHDR_DONE; }, limit)) return {};
        std::vector<std::int16_t> samples(memory_.size() / 2);
        std::memcpy(samples.data(), memory_.data(), samples.size() * 2);
        return samples;
    }

private:
    std::vector<char> memory_;
    mm::HWAVEIN handle_ = 0;
    mm::WAVEHDR header_{};
    bool ok_ = false;
    std::uint32_t startTick_ = 0;
};

}  // namespace testing_support
