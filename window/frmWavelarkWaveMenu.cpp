// Which signal controls are offered in which state, and the Wave menu, whose
// items name the signal the controls make (a square is mark/space at 50 %, a
// sawtooth a triangle rising over 0 % of the cycle).
#include "window/frmWavelark.h"

#include <QAction>
#include <QTabWidget>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "engine/modWaveInOut.h"

void frmWavelark::mForceNonSineWaveFrequencies(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mForceNonSineWaveFrequencies", bError);
    trap.step([&] {
        const float nonSineMax = gWaveOutInfo().frequencyMaxNonSine;
        if (singleOf(txtFrequency1) > nonSineMax)
            txtFrequency1->control().setText(rt::userText(nonSineMax));
        if (chkSweep->value() != 0 && singleOf(txtFrequency2) > nonSineMax)
            txtFrequency2->control().setText(rt::userText(nonSineMax));
    });
}

void frmWavelark::mTriangleMarkEnable(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mTriangleMarkEnable", bError);
    bool allowed = true;
    trap.step([&] {
        const float nonSineMax = gWaveOutInfo().frequencyMaxNonSine;
        allowed = singleOf(txtFrequency1) <= nonSineMax &&
                  (chkSweep->value() == 0 || singleOf(txtFrequency2) <= nonSineMax);
    });
    trap.step([&] {
        if (!allowed && (optTriangle->value() || optMarkSpace->value())) optSine->setValue(true);
    });
    trap.step([&] {
        optTriangle->setEnabled(allowed);
        optMarkSpace->setEnabled(allowed);
    });
    trap.step([&] { mPercentEnable(optMarkSpace->value() || optTriangle->value()); });
}

void frmWavelark::mPercentEnable(bool enable)
{
    lblPercent->setEnabled(enable);
    txtPercent->setEnabled(enable);
    updPercent->setEnabled(enable);
}

void frmWavelark::mFreq2DurationLogLinBiEnable(bool enable)
{
    for (QWidget* control : std::initializer_list<QWidget*>{
             lblFrequency2, txtFrequency2, lblSweepDuration, txtSweepDuration, optSweepLog,
             optSweepLin, chkSweepBi})
        control->setEnabled(enable);
}

void frmWavelark::mBurstEnable(bool enable)
{
    for (QWidget* control : std::initializer_list<QWidget*>{
             lblBurstCycles, txtBurstCycles, lblBurstPeriod, txtBurstPeriod, chkBurstAuto})
        control->setEnabled(enable);
    // No single firing while bursts repeat by themselves.
    cmdBurstFire->setEnabled(enable && chkBurstAuto->value() == 0);
}

void frmWavelark::mSweepFrequencyLoEnableUpdate(bool update, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mSweepFrequencyLoEnableUpdate", bError);
    trap.step([&] {
        const bool notNoise = !optNoise->value();
        for (QWidget* control : std::initializer_list<QWidget*>{chkSweep, chkBurstAuto,
                                                                lblFrequency1, txtFrequency1,
                                                                chkInvert})
            control->setEnabled(notNoise);
        mFreq2DurationLogLinBiEnable(notNoise && chkSweep->value() != 0);
        mPercentEnable(optMarkSpace->value() || optTriangle->value());
        // A swept signal is never fired as a burst, and noise has no cycles to
        // count.
        mBurstEnable(notNoise && chkSweep->value() == 0);
    });
    trap.step([&] { mWaveOutChangeShow(update ? "" : "SetHdr", true, bError); });
}

void frmWavelark::mEnableDisableWaveMenu(ErrorFlag& bError)
{
    rt::Trap trap(kModule, "mEnableDisableWaveMenu", bError);
    trap.step([&] {
        const std::int32_t percent = rt::toInt32(singleOf(txtPercent));
        // The item that names the signal playing now is greyed out.
        mnuWaveSine->setEnabled(!optSine->value());
        mnuWaveSquare->setEnabled(!(optMarkSpace->value() && percent == 50));
        mnuWaveTriangle->setEnabled(!(optTriangle->value() && percent == 50));
        mnuWaveSawtooth->setEnabled(!(optTriangle->value() && percent == 0));
    });
}

void frmWavelark::mnuWaveSine_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mnuWaveSine_Click", bError);
    trap.step([&] { optSine->setValue(true); });
}

void frmWavelark::mWaveMenuShape(const char* procedure, ui::OptionButton* shape,
                                 const char* percent)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] {
        // The other shapes are not offered above a tenth of the maximum.
        mForceNonSineWaveFrequencies(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { shape->setValue(true); });
    trap.step([&] { txtPercent->control().setText(percent); });
}

void frmWavelark::mnuWaveSquare_Click() { mWaveMenuShape("mnuWaveSquare_Click", optMarkSpace, "50"); }
void frmWavelark::mnuWaveTriangle_Click() { mWaveMenuShape("mnuWaveTriangle_Click", optTriangle, "50"); }
void frmWavelark::mnuWaveSawtooth_Click() { mWaveMenuShape("mnuWaveSawtooth_Click", optTriangle, "0"); }

void frmWavelark::mnuWavePreciseLoop_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "mnuWavePreciseLoop_Click", bError);
    // The item has already changed. The loop playing was made the other way:
    // a precise one, whose pass may last seconds, is left at once; a plain
    // one is followed without a gap.
    const bool precise = mnuWavePreciseLoop->isChecked();
    trap.step([&] { gWaveOutSetPreciseLoop(toBool16(precise)); });
    trap.step([&] { mWaveOutChangeShow("", mbLongPassWith(!precise), bError); });
}
