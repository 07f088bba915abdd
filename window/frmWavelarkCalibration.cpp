// Calibrating the output in volts from the System page. The calibration
// plays its own 1000 Hz sine and moves the master level; the window puts
// back what the user had (the shape, the signal, the level and Mute) however
// the dialogue ended, and writes the new calibration into the System page's
// boxes only when it succeeded.
#include <string>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "calibration/modVOut.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/VScrollBar.h"
#include "engine/modWaveInOut.h"
#include "entry/modControl.h"
#include "window/frmWavelark.h"

namespace {

// A calibration value as the box shows it: the user's form of the
// locale-independent text the calibration gives back (" 1.97" -> "1,97").
std::string boxText(const std::string& calibrated)
{
    const auto value = rt::parseNumber(calibrated, ".");
    return value ? rt::userText(static_cast<float>(*value)) : calibrated;
}

}  // namespace

void frmWavelark::cmdVOutCalibrate_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "cmdVOutCalibrate_Click", bError);
    const std::int16_t mute = chkMute->value();
    std::string voutMax = txtVOutMax->control().text();
    std::string vout2 = txtVOut2->control().text();
    const std::string voutMaxBefore = voutMax;
    const std::string vout2Before = vout2;

    // While the meter is read the master level is the measurement's, not the
    // bar's: the Out label claims no volts meanwhile.
    trap.step([&] { mClearLblVout(); });
    trap.step([&] {
        gVOutCalibrate(voutMax, vout2, mlVOutState, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        // A calibration that ended early gives the texts back untouched. A
        // successful one gives them in the locale-independent form (" 2"),
        // never equal to what a box shows, and a refused card gives "0".
        if (voutMax == voutMaxBefore && vout2 == vout2Before) return;
        txtVOutMax->control().setText(boxText(voutMax));
        txtVOut2->control().setText(boxText(vout2));
        if (voutMax != "0") txtVOutIdent->control().setText(gsVOutIdent(bError));
    });
    // Whatever happened above, the user's signal, level and Mute come back.
    ErrorFlag bRestore = kFalse;
    mRestoreAfterCalibration(mute, bRestore);
    if (bRestore) bError = kTrue;
}

void frmWavelark::mRestoreAfterCalibration(std::int16_t mute, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mRestoreAfterCalibration", bError);
    trap.step([&] {
        if (chkMute->value() != mute) chkMute->setValue(mute);
    });
    trap.step([&] {
        // The calibration played a sine: the shape the option buttons show
        // goes back into the generator, and the percent with it.
        const char* shape = optTriangle->value()     ? "Triangle"
                            : optMarkSpace->value() ? "MarkSpace"
                            : optNoise->value()     ? "Noise"
                                                     : "Sine";
        gWaveOutSetShape(shape);
        const std::string percent = txtPercent->control().text();
        if (gbCtrlTextValidNumber(percent, bError)) gWaveOutSetPercent(rt::toInt16(rt::toSingleUser(percent)));
    });
    // The window's own signal is remade as any change is: a closed output
    // opens again (Mute off), a muted one is only made, and an output still
    // playing (the dialogue cancelled before it began) takes the same signal
    // at the end of its pass, without a gap.
    trap.step([&] { mWaveOutChangeShow("", false, bError); });
    // The bar's level back on the mixer, the plot at that level, the volts.
    trap.step([&] { mOutLevelChange(bError); });
}

void frmWavelark::mClearLblVout() { lblOutLevel->control().setText(kVOutPlainCaption); }

// A new calibration value shows at once beside the level bar; a pair that is
// not a usable calibration shows the plain caption.
void frmWavelark::txtVOutChanged(float, ErrorFlag&) { mVOutUpdate(); }

void frmWavelark::connectCalibrationHandlers()
{
    cmdVOutCalibrate->Click = [this] { cmdVOutCalibrate_Click(); };
}
