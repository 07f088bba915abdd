#include "platform/loopback/VirtualCardTesting.h"

#include <utility>

#include "platform/loopback/VirtualMixerSetup.h"

namespace mm::loopback {

void reset()
{
    restartCard();
    resetMixers();
}

void setOutputDevices(std::vector<DeviceTraits> devices)
{
    withCardSetup([&](CardSetup& setup) { setup.outputs = std::move(devices); });
}

void setInputDevices(std::vector<DeviceTraits> devices)
{
    withCardSetup([&](CardSetup& setup) { setup.inputs = std::move(devices); });
}

void setLatencyMs(std::uint32_t milliseconds)
{
    withCardSetup([&](CardSetup& setup) { setup.latencyMs = milliseconds; });
}

std::uint32_t latencyMs()
{
    std::uint32_t latency = 0;
    withCardSetup([&](CardSetup& setup) { latency = setup.latencyMs; });
    return latency;
}

void setRateRange(DWORD lowest, DWORD highest)
{
    withCardSetup([&](CardSetup& setup) {
        setup.lowestRate = lowest;
        setup.highestRate = highest;
    });
}

void refuseOutputOpen(MMRESULT code)
{
    withCardSetup([&](CardSetup& setup) { setup.refuseOutputOpen = code; });
}

void refuseInputOpen(MMRESULT code)
{
    withCardSetup([&](CardSetup& setup) { setup.refuseInputOpen = code; });
}

void failWrites(MMRESULT code)
{
    withCardSetup([&](CardSetup& setup) { setup.failWrites = code; });
}

void silenceInput(bool silent)
{
    withCardSetup([&](CardSetup& setup) { setup.silentInput = silent; });
}

void setInputGain(double gain)
{
    withCardSetup([&](CardSetup& setup) { setup.inputGain = gain; });
}

void vanish()
{
    withCardSetup([](CardSetup& setup) { setup.vanished = true; });
    vanishMixers();
}

void reappear()
{
    withCardSetup([](CardSetup& setup) { setup.vanished = false; });
    withMixerSetup([](MixerSetup& setup) { setup.vanished = false; });
}

}  // namespace mm::loopback
