#include "platform/loopback/VirtualMixerTesting.h"

#include <map>
#include <utility>

namespace mm::loopback {

namespace {

void setFault(std::map<std::string, MMRESULT>& faults, const std::string& name, MMRESULT code)
{
    if (code == MMSYSERR_NOERROR) {
        faults.erase(name);
    } else {
        faults[name] = code;
    }
}

}  // namespace

void setMixers(std::vector<MixerLayout> mixers)
{
    withMixerSetup([&](MixerSetup& setup) { setup.mixers = std::move(mixers); });
}

void refuseMixerOpen(MMRESULT code, unsigned times)
{
    withMixerSetup([&](MixerSetup& setup) {
        setup.refuseOpen = code;
        setup.refusals = times;
    });
}

void failMixerReads(const std::string& controlName, MMRESULT code)
{
    withMixerSetup([&](MixerSetup& setup) { setFault(setup.readFaults, controlName, code); });
}

void failMixerWrites(const std::string& controlName, MMRESULT code)
{
    withMixerSetup([&](MixerSetup& setup) { setFault(setup.writeFaults, controlName, code); });
}

void vanishMixers()
{
    withMixerSetup([](MixerSetup& setup) { setup.vanished = true; });
}

void logMixerWrites()
{
    withMixerSetup([](MixerSetup& setup) {
        setup.logWrites = true;
        setup.writes.clear();
    });
}

std::vector<MixerWrite> mixerWrites()
{
    std::vector<MixerWrite> writes;
    withMixerSetup([&](MixerSetup& setup) { writes = setup.writes; });
    return writes;
}

void resetMixers()
{
    withMixerSetup([](MixerSetup& setup) { setup = MixerSetup{}; });
}

}  // namespace mm::loopback
