#pragma once
// The virtual sound card for one test: reset to its defaults at the start
// and the end, its mixers logging every value written, and in simulated
// time driven by the scripted host's sleep unless real time is asked for.
// Make the ScriptedHost first.
#include <cstdint>
#include <vector>

#include "platform/loopback/VirtualCardTesting.h"
#include "tests/support/ScriptedHost.h"

namespace testing_support {

class VirtualCardSession {
public:
    enum class Clock { Simulated, Real };

    explicit VirtualCardSession(ScriptedHost& host, Clock clock = Clock::Simulated)
    {
        mm::loopback::reset();
        mm::loopback::logMixerWrites();
        if (clock == Clock::Simulated) {
            host.useSimulatedTime();
            mm::loopback::useSimulatedTime();
            host.sleepListeners.push_back([](std::uint32_t ms) { mm::loopback::advance(ms); });
        }
    }
    ~VirtualCardSession() { mm::loopback::reset(); }

    // Everything the card played since the tap started, joined; a new tap
    // starts.
    static std::vector<std::int16_t> takePlayed()
    {
        std::vector<std::int16_t> all;
        for (const auto& segment : mm::loopback::takeTap())
            all.insert(all.end(), segment.samples.begin(), segment.samples.end());
        mm::loopback::startTap();
        return all;
    }

    VirtualCardSession(const VirtualCardSession&) = delete;
    VirtualCardSession& operator=(const VirtualCardSession&) = delete;
};

}  // namespace testing_support
