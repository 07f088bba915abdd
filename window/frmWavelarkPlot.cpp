// The plot of the signal beside the controls: the made signal as it leaves
// the card, green while it plays and red when it is only made, and the
// recording of a measured burst in yellow.
#include "window/frmWavelark.h"

#include "base/Convert.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/VScrollBar.h"
#include "engine/modTimeResponseShow.h"
#include "mixer/modMixer.h"
#include "platform/Colours.h"

std::int16_t frmWavelark::mnTimeResponseInitDrawAxisForm(ErrorFlag& bError)
{
    std::int16_t halfHeight = 0;
    rt::Trap trap(kModule, "mnTimeResponseInitDrawAxisForm", bError);
    trap.step([&] {
        halfHeight = gnTimeResponseShowInitClsDrawAxis(*picPolarity, 0, 0,
                                                       rt::toInt16(picPolarity->scaleWidth()),
                                                       rt::toInt16(picPolarity->scaleHeight()),
                                                       bError);
    });
    return halfHeight;
}

void frmWavelark::mShowTimeResponse(std::int32_t colour, ErrorFlag& bError)
{
    // The spectrum view shows the same signal in its own way.
    if (mbSpectrumShown()) {
        mShowSpectrum(bError);
        return;
    }
    rt::Trap trap(kModule, "mShowTimeResponse", bError);
    rt::SampleArray scaled;
    trap.step([&] { lblInLevel->setForeColor(ui::kColourButtonText); });
    trap.step([&] {
        gTimeResponseShowClsDrawAxis(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        if (anSamples.empty()) {
            trap.leave();
            return;
        }
        // The level bar's top (0) is full level: the plot shows the signal as
        // the card plays it.
        const float scale = static_cast<float>(kLevelBarBottom - vsbOutLevel->value()) / kLevelBarBottom;
        scaled.redim(anSamples.lbound(), anSamples.ubound());
        for (std::int32_t i = anSamples.lbound(); i <= anSamples.ubound(); ++i)
            scaled(i) = rt::toInt16(static_cast<float>(anSamples(i) * scale));
    });
    trap.step([&] { gTimeResponseShow(scaled, kTrue, kTimeResponseFullScale, colour, bError); });
}

void frmWavelark::picPolarity_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "picPolarity_Click", bError);
    trap.step([&] {
        CommonDialogue->setColor(picPolarity->backColor());
        CommonDialogue->ShowColor();
    });
    trap.step([&] {
        if (CommonDialogue->color() == picPolarity->backColor()) return;
        picPolarity->setBackColor(CommonDialogue->color());
        mShowTimeResponse(lblOutLevel->foreColor(), bError);
    });
}
