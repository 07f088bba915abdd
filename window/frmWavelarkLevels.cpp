// The level bars: the output bar sets the mixer's master level, the Mic bar
// the microphone level. Both run from 0 at the top (loudest) to 32767 at
// the bottom; a drag sets the level at every step of the thumb.
#include "base/Trap.h"
#include "calibration/modVOut.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/VScrollBar.h"
#include "mixer/modMixer.h"
#include "platform/Colours.h"
#include "window/frmWavelark.h"

void frmWavelark::vsbOutLevel_Change()
{
    ErrorFlag bError = kFalse;
    mOutLevelChange(bError);
}

void frmWavelark::vsbOutLevel_Scroll()
{
    ErrorFlag bError = kFalse;
    mOutLevelChange(bError);
}

void frmWavelark::vsbInLevel_Change()
{
    ErrorFlag bError = kFalse;
    mInLevelChange(bError);
}

void frmWavelark::vsbInLevel_Scroll()
{
    ErrorFlag bError = kFalse;
    mInLevelChange(bError);
}

void frmWavelark::mOutLevelChange(ErrorFlag& bError)
{
    // The plot shows the signal at the new level, in the colour it has.
    levelChange("mOutLevelChange", *vsbOutLevel, &gMixerOutMasterSetLevel, lblOutLevel->foreColor(),
                bError);
}

void frmWavelark::mInLevelChange(ErrorFlag& bError)
{
    levelChange("mInLevelChange", *vsbInLevel, &gMixerInMicSetLevel, ui::kColourRed, bError);
}

void frmWavelark::levelChange(const char* procedure, const ui::VScrollBar& bar,
                              void (*setLevel)(std::int32_t, ErrorFlag&), std::int32_t colour,
                              ErrorFlag& bError)
{
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] { setLevel(glMixerLevelOfBar(bar.Value()), bError); });
    if (bError) return;
    trap.step([&] { mShowTimeResponse(colour, bError); });
    trap.step([&] { mVOutUpdate(); });
}

// The output in volts beside the level bar, once the System page holds a
// usable calibration; the plain caption otherwise.
void frmWavelark::mVOutUpdate()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mVOutUpdate", bError);
    std::string caption;
    trap.step([&] {
        caption = gsVOutLevelCaption(vsbOutLevel->Value(), txtVOutMax->control().text(),
                                     txtVOut2->control().text(), bError);
    });
    if (!bError) lblOutLevel->control().setText(caption);
    mLevelTipsUpdate();
}
