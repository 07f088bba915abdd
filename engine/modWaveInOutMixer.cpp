#include "engine/modWaveInOutMixer.h"

#include "base/Trap.h"
#include "engine/modWaveInOut.h"
#include "mixer/modMixer.h"

Bool16 gbWaveInOutMixerThere(Bool16 bInputRequired, std::string& sMixerReport, ErrorFlag& bError)
{
    Bool16 there = kFalse;
    rt::Trap trap("modWaveInOut", "gbWaveInOutMixerThere", bError);
    trap.step([&] {
        if (!gbWaveOutThere(bError) || bError) trap.leave();
    });
    trap.step([&] {
        const Bool16 input = gbWaveInThere(bError);
        if ((!input && bInputRequired) || bError) trap.leave();
    });
    trap.step([&] { there = gbMixerThereInit(sMixerReport, bError); });
    return there;
}
