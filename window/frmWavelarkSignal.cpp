// The main window's signal controls: the two procedures every change ends
// in, the shape buttons, Mute, Invert, the sweep controls and the tabs.
#include "window/frmWavelark.h"

#include <algorithm>

#include <QAction>
#include <QTabWidget>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "engine/modWaveInOut.h"
#include "entry/modControl.h"
#include "entry/modUpDownSet.h"
#include "platform/Colours.h"

namespace {

// A sweep always has this many frequency steps.
constexpr std::int16_t kSweepSteps = 600;

}  // namespace

float frmWavelark::singleOf(const ui::TextBox* box) { return rt::toSingleUser(box->control().text()); }

void frmWavelark::mWaveOutChangeShow(const std::string& action, bool reset, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveOutChangeShow", bError);
    std::string applied = action;
    trap.step([&] {
        // Muted, the signal is only built for the plot; automatic bursts play
        // whatever Mute says.
        if (chkMute->value() != 0 && chkBurstAuto->value() == 0) applied = "Make";
    });
    trap.step([&] { mWaveChangeShow(applied, 0, reset, bError); });
}

void frmWavelark::mWaveChangeShow(const std::string& action, std::int32_t loops, bool reset,
                                  ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mWaveChangeShow", bError);
    trap.step([&] {
        // A fired burst disables the window while it plays and records; a
        // change applied then would reopen the output under it, so nothing is
        // applied until the window is enabled again.
        if (!isEnabled()) trap.leave();
    });
    trap.step([&] { mForgetRecording(); });
    trap.step([&] {
        mSetFrequency1SweepBurst(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        const Bool16 trimForDisplay = toBool16(tabTab->currentIndex() != kBurstPage);
        gWaveOutChange(action, loops, toBool16(reset), trimForDisplay, anSamples, anRecord, bError);
        if (!bError) return;
        // The warning has been shown. An output left open on a failed (or
        // vanished) device would fail every later change too; closed, the
        // next change opens it anew.
        ErrorFlag bClosing = kFalse;
        gWaveOutClose(kTrue, bClosing);
        lblOutLevel->setForeColor(ui::kColourRed);
        trap.leave();
    });
    trap.step([&] { lblOutLevel->setForeColor(action == "Make" ? ui::kColourRed : ui::kColourGreen); });
    trap.step([&] { mShowTimeResponse(lblOutLevel->foreColor(), bError); });
    // The words follow the colours, whatever the change came to.
    mStatusUpdate();
}

void frmWavelark::mSetFrequency1SweepBurst(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mSetFrequency1SweepBurst", bError);
    trap.step([&] {
        const float frequency1 = singleOf(txtFrequency1);
        if (tabTab->currentIndex() == kBurstPage) {
            gWaveOutSetFrequency1SweepBurst(frequency1, 0, 0, kFalse, kFalse, 0,
                                            singleOf(txtBurstCycles),
                                            rt::toInt32(singleOf(txtBurstPeriod)), bError);
        } else if (chkSweep->value() != 0) {
            gWaveOutSetFrequency1SweepBurst(frequency1, singleOf(txtFrequency2),
                                            singleOf(txtSweepDuration),
                                            toBool16(optSweepLog->value()),
                                            toBool16(chkSweepBi->value() != 0), kSweepSteps, 0, 0,
                                            bError);
        } else {
            gWaveOutSetFrequency1SweepBurst(frequency1, 0, 0, kFalse, kFalse, 0, 0, 0, bError);
        }
    });
}

void frmWavelark::mSetFrequency1SweepBurstMakeUpdate(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mSetFrequency1SweepBurstMakeUpdate", bError);
    trap.step([&] {
        mSetFrequency1SweepBurst(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mWaveOutChangeShow("", true, bError); });
}

// ---- Shapes ------------------------------------------------------------------

void frmWavelark::mShapeChosen(const char* shape, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mShapeChosen", bError);
    trap.step([&] {
        gWaveOutSetShape(shape);
        // The percentage too: restoring a box that already held the stored
        // value does not pass it on by itself.
        const std::string percent = txtPercent->control().text();
        if (gbCtrlTextValidNumber(percent, bError)) gWaveOutSetPercent(rt::toInt16(rt::toSingleUser(percent)));
    });
    trap.step([&] {
        // A new shape is remade and swapped in at once.
        mSweepFrequencyLoEnableUpdate(true, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mEnableDisableWaveMenu(bError); });
}

void frmWavelark::optSine_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "optSine_Click", bError);
    trap.step([&] { mShapeChosen("Sine", bError); });
}

void frmWavelark::optTriangle_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "optTriangle_Click", bError);
    trap.step([&] {
        // A triangle may rise over 0 % (a falling ramp) up to 100 %.
        gUpDownSet(updPercent->value(), 100, 0, 1, updPercent->control(), bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mShapeChosen("Triangle", bError); });
}

void frmWavelark::optMarkSpace_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "optMarkSpace_Click", bError);
    std::int32_t percent = 0;
    trap.step([&] {
        // A mark/space signal keeps both a mark and a space: 1 to 99 %.
        percent = rt::toInt32(singleOf(txtPercent));
        if (percent < 1) txtPercent->control().setText("1");
        if (percent > 99) txtPercent->control().setText("99");
        percent = std::clamp<std::int32_t>(percent, 1, 99);
    });
    trap.step([&] {
        gUpDownSet(percent, 99, 1, 1, updPercent->control(), bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mShapeChosen("MarkSpace", bError); });
}

void frmWavelark::optNoise_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "optNoise_Click", bError);
    trap.step([&] { chkSweep->setValue(0); });
    trap.step([&] { mShapeChosen("Noise", bError); });
}

// ---- Mute, Invert, Sweep, tabs ---------------------------------------------------

void frmWavelark::chkMute_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "chkMute_Click", bError);
    std::string action;
    trap.step([&] {
        mSetFrequency1SweepBurst(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] {
        if (chkMute->value() == 0) {
            if (chkSweep->value() != 0) tabTab->setCurrentIndex(kSweepPage);
            action = "Open";
        } else {
            // Mute stops the sound by closing the output, not through the mixer.
            gWaveOutClose(kTrue, bError);
            trap.leaveOnError(bError);
            action = "Make";
        }
    });
    trap.step([&] {
        mWaveChangeShow(action, 0, false, bError);
        trap.leaveOnError(bError);
    });
    // The signal was just made: the enabling only rebuilds the header.
    trap.step([&] { mSweepFrequencyLoEnableUpdate(false, bError); });
}

void frmWavelark::chkInvert_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "chkInvert_Click", bError);
    trap.step([&] {
        gWaveOutSetInvert(toBool16(chkInvert->value() != 0));
    });
    trap.step([&] {
        // A sweep's pass lasts seconds, so the inverted sweep is written into
        // the playing header and heard at once; a tone's pass lasts
        // milliseconds, so it is remade and swapped in without a gap.
        const char* action = chkSweep->value() != 0 ? "SetHdr" : "";
        mWaveOutChangeShow(action, false, bError);
    });
}

void frmWavelark::chkSweep_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "chkSweep_Click", bError);
    const bool sweep = chkSweep->value() != 0;
    trap.step([&] {
        mTriangleMarkEnable(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mShowSweepTab(); });
    trap.step([&] { mFreq2DurationLogLinBiEnable(sweep); });
    trap.step([&] {
        if (sweep) tabTab->setCurrentIndex(kSweepPage);
    });
    trap.step([&] { mFreq2DurationLogLinBiEnable(sweep && !optNoise->value()); });
    trap.step([&] { mWaveOutChangeShow("Update", true, bError); });
}

void frmWavelark::mSweepSettingChanged(const char* procedure)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] { tabTab->setCurrentIndex(kSweepPage); });
    trap.step([&] { mSetFrequency1SweepBurstMakeUpdate(bError); });
}

void frmWavelark::chkSweepBi_Click() { mSweepSettingChanged("chkSweepBi_Click"); }
void frmWavelark::optSweepLin_Click() { mSweepSettingChanged("optSweepLin_Click"); }
void frmWavelark::optSweepLog_Click() { mSweepSettingChanged("optSweepLog_Click"); }

void frmWavelark::tabTab_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "tabTab_Click", bError);
    trap.step([&] {
        // Muted, moving onto or off the Burst page shows the burst or the
        // continuous signal; while it plays, a page changes nothing.
        if (chkMute->value() == 0 || chkBurstAuto->value() != 0) return;
        mWaveChangeShow("Make", 0, chkSweep->value() != 0, bError);
    });
}

void frmWavelark::mShowSweepTab()
{
    if (chkSweep->value() != 0 && tabTab->tabText(tabTab->currentIndex()) != "Inf&o")
        tabTab->setCurrentIndex(kSweepPage);
}

void frmWavelark::connectSignalHandlers()
{
    optSine->Click = [this] { optSine_Click(); };
    optTriangle->Click = [this] { optTriangle_Click(); };
    optMarkSpace->Click = [this] { optMarkSpace_Click(); };
    optNoise->Click = [this] { optNoise_Click(); };
    optSweepLin->Click = [this] { optSweepLin_Click(); };
    optSweepLog->Click = [this] { optSweepLog_Click(); };
    chkSweep->Click = [this] { chkSweep_Click(); };
    chkSweepBi->Click = [this] { chkSweepBi_Click(); };
    chkInvert->Click = [this] { chkInvert_Click(); };
    chkMute->Click = [this] { chkMute_Click(); };
    chkBurstAuto->Click = [this] { chkBurstAuto_Click(); };
    cmdBurstFire->Click = [this] { cmdBurstFire_Click(); };
    picPolarity->Click = [this] { picPolarity_Click(); };
    connect(tabTab, &QTabWidget::currentChanged, this, &frmWavelark::tabTab_Click);
    connect(mnuWaveSine, &QAction::triggered, this, &frmWavelark::mnuWaveSine_Click);
    connect(mnuWaveSquare, &QAction::triggered, this, &frmWavelark::mnuWaveSquare_Click);
    connect(mnuWaveTriangle, &QAction::triggered, this, &frmWavelark::mnuWaveTriangle_Click);
    connect(mnuWaveSawtooth, &QAction::triggered, this, &frmWavelark::mnuWaveSawtooth_Click);
    connectFieldHandlers();
}
