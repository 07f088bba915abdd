#include "engine/modWavePolarity.h"

#include "base/Trap.h"
#include "engine/modTimeResponseShow.h"
#include "engine/modWaveInOut.h"
#include "platform/Colours.h"

namespace {

constexpr const char* kModule = "modWavePolarity";

}  // namespace

void gWavePolarity(float fFrequency, float fBurstCycles, std::int32_t lBurstPeriod,
                   Bool16 bClearPlot, rt::SampleArray& anRecord, ErrorFlag& bError)
{
    rt::SampleArray anSamples;
    rt::Trap trap(kModule, "gWavePolarity", bError);
    const auto stopOnError = [&] {
        trap.leaveOnError(bError);
    };
    trap.step([&] {
        if (!bClearPlot) return;
        gTimeResponseShowClsDrawAxis(bError);
        stopOnError();
    });
    trap.step([&] { anSamples.redim(1, 1); });
    trap.step([&] {
        // A burst of its own, never a sweep.
        gWaveOutSetFrequency1SweepBurst(fFrequency, 0, 0, kFalse, kFalse, 0, fBurstCycles,
                                        lBurstPeriod, bError);
        stopOnError();
    });
    trap.step([&] {
        // Played once, the input recording that one pass.
        gWaveOutChange("Open", 1, kTrue, kTrue, anSamples, anRecord, bError);
        stopOnError();
    });
    trap.step([&] { gTimeResponseShow(anRecord, kTrue, kTimeResponseFullScale, ui::kColourYellow, bError); });
}
