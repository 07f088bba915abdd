// The numeric text boxes of the main window and the two up-downs. Every box
// is wired the same way by one table: its rule (maximum, minimum,
// resolution, whole or real), the unit its message names, and what a new
// valid value sets off. The key filters keep out what can never be a
// number, the arrow and page keys step the value, the leave-check holds the
// user in a box until it holds a number inside its rule, and Change passes a
// value on only when it is a number inside the rule, so a half-typed box
// leaves the signal as it was.
#include "window/frmWavelark.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QAction>
#include <QTabWidget>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "calibration/modVOut.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "engine/modWaveInOut.h"
#include "entry/modControl.h"
#include "entry/modKeyDown.h"
#include "entry/modKeyMouseIncrement.h"
#include "entry/modKeyPressAscii.h"
#include "entry/modMouseDown.h"
#include "entry/modUpDownSet.h"
#include "services/modGeneral.h"

namespace {

constexpr float kFrequencyMin = 10;  // Hz
constexpr float kBurstPeriodMax = 2000;  // ms

std::string voutMaxText(const frmWavelark& form) { return form.txtVOutMax->control().text(); }

}  // namespace

// One numeric box. The names are those its handlers report failures under:
// txtFrequency1 reports its key-down and leave-check under the names of
// txtFrequency2's, and txtSweepDuration's change as "txtDuration_Change".
struct frmWavelark::FieldRow {
    ui::TextBox* frmWavelark::*box;
    float (*max)(frmWavelark& form, ErrorFlag& bError);
    float (*min)(frmWavelark& form, ErrorFlag& bError);
    float resolution;
    bool whole;
    const char* unit;
    void (frmWavelark::*changed)(float value, ErrorFlag& bError);
    const char* keyPressName;
    const char* keyDownName;
    const char* changeName;
    const char* validateName;
    // Boxes with stepping and a leave-check of their own (the calibration
    // boxes); the others step and check by their rule.
    std::string (*keyDown)(frmWavelark& form, std::int16_t keyCode, std::int16_t shift,
                           const std::string& text, ErrorFlag& bError) = nullptr;
    Bool16 (*leaveCheck)(frmWavelark& form, const std::string& title, ui::Control& box,
                         ErrorFlag& bError) = nullptr;
};

// The calibration boxes txtVOutMax and txtVOut2 step and check through the
// output calibration, which holds their rule. Any number they hold is passed
// on: a pair that is no usable calibration shows no volts.
const std::vector<frmWavelark::FieldRow>& frmWavelark::fieldRows()
{
    const auto anyMax = [](frmWavelark&, ErrorFlag&) { return std::numeric_limits<float>::max(); };
    const auto anyMin = [](frmWavelark&, ErrorFlag&) { return std::numeric_limits<float>::lowest(); };

    const auto frequencyMax = [](frmWavelark&, ErrorFlag&) { return gWaveOutInfo().frequencyMax; };
    const auto frequencyMin = [](frmWavelark&, ErrorFlag&) { return kFrequencyMin; };
    static const std::vector<FieldRow> rows{
        {&frmWavelark::txtFrequency1, frequencyMax, frequencyMin, 0.1F, false, "Hz",
         &frmWavelark::txtFrequency1Changed, "txtFrequency1_KeyPress", "txtFrequency2_KeyDown",
         "txtFrequency1_Change", "txtFrequency2_Validate"},
        {&frmWavelark::txtFrequency2, frequencyMax, frequencyMin, 0.1F, false, "Hz",
         &frmWavelark::txtFrequency2Changed, "txtFrequency2_KeyPress", "txtFrequency2_KeyDown",
         "txtFrequency2_Change", "txtFrequency2_Validate"},
        {&frmWavelark::txtSweepDuration, [](frmWavelark&, ErrorFlag&) { return 5.0F; },
         [](frmWavelark&, ErrorFlag&) { return 0.2F; }, 0.1F, false, "s",
         &frmWavelark::txtSweepDurationChanged, "txtSweepDuration_KeyPress",
         "txtSweepDuration_KeyDown", "txtDuration_Change", "txtSweepDuration_Validate"},
        {&frmWavelark::txtBurstCycles, [](frmWavelark&, ErrorFlag&) { return 10.0F; },
         [](frmWavelark&, ErrorFlag&) { return 0.25F; }, 0.05F, false, "Cycles",
         &frmWavelark::txtBurstCyclesChanged, "txtBurstCycles_KeyPress",
         "txtBurstCycles_KeyDown", "txtBurstCycles_Change", "txtBurstCycles_Validate"},
        {&frmWavelark::txtBurstPeriod, [](frmWavelark&, ErrorFlag&) { return kBurstPeriodMax; },
         [](frmWavelark& form, ErrorFlag& bError) {
             return static_cast<float>(form.mlBurstPeriodMin(bError));
         },
         1, true, "mS", &frmWavelark::txtBurstPeriodChanged, "txtBurstPeriod_KeyPress",
         "txtBurstPeriod_KeyDown", "txtBurstPeriod_Change", "txtBurstPeriod_Validate"},
        {&frmWavelark::txtPercent,
         [](frmWavelark& form, ErrorFlag&) { return static_cast<float>(form.updPercent->max()); },
         [](frmWavelark& form, ErrorFlag&) { return static_cast<float>(form.updPercent->min()); },
         1, true, "%", &frmWavelark::txtPercentChanged, "txtPercent_KeyPress",
         "txtPercent_KeyDown", "txtPercent_Change", "txtPercent_Validate"},
        {&frmWavelark::txtVOutMax, anyMax, anyMin, 0.01F, false, "", &frmWavelark::txtVOutChanged,
         "txtVOutMax_KeyPress", "txtVOutMax_KeyDown", "txtVOutMax_Change", "txtVOutMax_Validate",
         [](frmWavelark&, std::int16_t keyCode, std::int16_t shift, const std::string& text,
            ErrorFlag& bError) { return gVOutMaxKeyDown(keyCode, shift, text, bError); },
         [](frmWavelark&, const std::string& title, ui::Control& box, ErrorFlag& bError) {
             return gbVOutMaxValidate(kFalse, title, box, bError);
         }},
        {&frmWavelark::txtVOut2, anyMax, anyMin, 0.01F, false, "", &frmWavelark::txtVOutChanged,
         "txtVOut2_KeyPress", "txtVOut2_KeyDown", "txtVOut2_Change", "txtVOut2_Validate",
         [](frmWavelark& form, std::int16_t keyCode, std::int16_t shift, const std::string& text,
            ErrorFlag& bError) { return gVOut2KeyDown(keyCode, shift, text, voutMaxText(form), bError); },
         [](frmWavelark& form, const std::string& title, ui::Control& box, ErrorFlag& bError) {
             return gbVOut2Validate(voutMaxText(form), title, box, bError);
         }},
    };
    return rows;
}

void frmWavelark::connectFieldHandlers()
{
    for (const FieldRow& row : fieldRows()) {
        ui::TextBox* box = this->*row.box;
        box->KeyPress = [this, &row](std::int16_t& keyAscii) { fieldKeyPress(row, keyAscii); };
        box->KeyDown = [this, &row](std::int16_t& keyCode, std::int16_t shift) {
            fieldKeyDown(row, keyCode, shift);
        };
        box->KeyUp = [](std::int16_t&, std::int16_t) { gKeyMouseIncrementEnd(); };
        box->Change = [this, &row] { fieldChanged(row); };
        box->Validate = [this, &row](bool& cancel) { cancel = fieldInError(row, row.validateName); };
    }
    // The cycles are checked again when the box loses the focus to a control
    // that does not ask for the leave-check.
    txtBurstCycles->LostFocus = [this] { txtBurstCycles_LostFocus(); };

    updPercent->Change = [this] { updPercent_Change(); };
    updPercent->MouseDown = [this](std::int16_t button, std::int16_t) {
        upDownMouseDown("updPercent_MouseDown", updPercent, button);
    };
    updBurstPeriod->Change = [this] { updBurstPeriod_Change(); };
    updBurstPeriod->MouseDown = [this](std::int16_t button, std::int16_t) {
        upDownMouseDown("updBurstPeriod_UpClick", updBurstPeriod, button);
    };
    for (ui::UpDown* upDown : {updPercent, updBurstPeriod}) {
        upDown->MouseUp = [this](std::int16_t, std::int16_t) {
            heldUpDown = nullptr;
            gKeyMouseIncrementEnd();
        };
    }
}

void frmWavelark::fieldKeyPress(const FieldRow& row, std::int16_t& keyAscii)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, row.keyPressName, bError);
    trap.step([&] {
        const ui::TextBox* box = this->*row.box;
        keyAscii = row.whole ? gnKeyPressAsciiInteger(keyAscii, bError)
                             : gnKeyPressAsciiReal(keyAscii, box->control().unselectedText(), bError);
    });
}

void frmWavelark::fieldKeyDown(const FieldRow& row, std::int16_t& keyCode, std::int16_t shift)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, row.keyDownName, bError);
    trap.step([&] {
        ui::Control& box = (this->*row.box)->control();
        const std::string text = box.text();
        std::string stepped;
        if (row.keyDown != nullptr) {
            stepped = row.keyDown(*this, keyCode, shift, text, bError);
        } else {
            const float max = row.max(*this, bError);
            const float min = row.min(*this, bError);
            if (bError) return;
            stepped = gsKeyDown(keyCode, shift, text, max, min, row.resolution, bError);
        }
        // Writing the same text back would move the caret (plain Home and End
        // must still move it).
        if (!bError && stepped != text) box.setText(stepped);
    });
}

void frmWavelark::fieldChanged(const FieldRow& row)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, row.changeName, bError);
    trap.step([&] {
        const std::string text = (this->*row.box)->control().text();
        if (!gbCtrlTextValidNumber(text, bError) || bError) return;
        const float value = rt::toSingleUser(text);
        const float max = row.max(*this, bError);
        const float min = row.min(*this, bError);
        // Only a value inside the rule reaches the signal; the leave-check
        // tells the user about any other. A fraction in a whole-number box
        // is outside the rule too: passed on, the up-down would round it and
        // write the rounded value back under the user's typing.
        if (bError || value < min || value > max) return;
        if (row.whole && value != std::trunc(value)) return;
        (this->*row.changed)(value, bError);
    });
}

bool frmWavelark::fieldInError(const FieldRow& row, const char* procedure)
{
    ErrorFlag bError = kFalse;
    bool inError = false;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] {
        const std::string title = windowTitle().toStdString();
        ui::Control& box = (this->*row.box)->control();
        if (row.leaveCheck != nullptr) {
            inError = row.leaveCheck(*this, title, box, bError) != kFalse;
            return;
        }
        const float max = row.max(*this, bError);
        const float min = row.min(*this, bError);
        if (bError) return;
        const auto check = row.whole ? gbCtrlTxtErrorWhole : gbCtrlTxtError;
        inError = check(max, min, row.resolution, kFalse, row.unit, title, box, bError) != kFalse;
    });
    return inError;
}

void frmWavelark::txtBurstCycles_LostFocus()
{
    const auto& rows = fieldRows();
    const auto cycles = std::find_if(rows.begin(), rows.end(), [](const FieldRow& row) {
        return row.box == &frmWavelark::txtBurstCycles;
    });
    if (fieldInError(*cycles, "txtBurstCycles_LostFocus")) gbGSetFocus(txtBurstCycles->control());
}

// ---- What a new value sets off ------------------------------------------------

bool frmWavelark::mbLongPass() const
{
    return mbLongPassWith(mnuWavePreciseLoop != nullptr && mnuWavePreciseLoop->isChecked());
}

bool frmWavelark::mbLongPassWith(bool preciseLoop) const
{
    // A precise loop may run for seconds before it comes round.
    return chkSweep->value() != 0 || tabTab->currentIndex() == kBurstPage || preciseLoop;
}

void frmWavelark::txtFrequency1Changed(float, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "txtFrequency1_Change", bError);
    trap.step([&] {
        mTriangleMarkEnable(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mShowSweepTab(); });
    trap.step([&] {
        // The period's minimum follows the frequency; the period itself is
        // the user's and is not raised by a frequency typed on the way.
        const std::int32_t periodMin = mlBurstPeriodMin(bError);
        trap.leaveOnError(bError);
        if (!bError && updBurstPeriod->value() >= periodMin) updBurstPeriod->setMin(periodMin);
    });
    trap.step([&] { mWaveOutChangeShow("", mbLongPass(), bError); });
}

void frmWavelark::txtFrequency2Changed(float, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "txtFrequency2_Change", bError);
    trap.step([&] {
        mTriangleMarkEnable(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mSetFrequency1SweepBurstMakeUpdate(bError); });
}

void frmWavelark::txtSweepDurationChanged(float, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "txtDuration_Change", bError);
    trap.step([&] {
        mSetFrequency1SweepBurst(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mWaveOutChangeShow("", mbLongPass(), bError); });
}

void frmWavelark::txtBurstCyclesChanged(float, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "txtBurstCycles_Change", bError);
    trap.step([&] {
        // More cycles may need a longer period: the up-down takes the new
        // minimum before the burst is remade.
        mSetBurstPeriodUpDown(bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mWaveOutChangeShow("", mbLongPass(), bError); });
}

void frmWavelark::txtBurstPeriodChanged(float value, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "txtBurstPeriod_Change", bError);
    trap.step([&] { updBurstPeriod->setValue(rt::toInt32(value)); });
    trap.step([&] { mWaveOutChangeShow("", mbLongPass(), bError); });
}

void frmWavelark::txtPercentChanged(float value, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "txtPercent_Change", bError);
    std::int16_t percent = 0;
    trap.step([&] {
        percent = rt::toInt16(value);
        updPercent->setValue(percent);
        gWaveOutSetPercent(percent);
    });
    trap.step([&] {
        mSweepFrequencyLoEnableUpdate(true, bError);
        trap.leaveOnError(bError);
    });
    trap.step([&] { mEnableDisableWaveMenu(bError); });
}

// ---- The up-downs ----------------------------------------------------------------

// An up-down has already written its value into its buddy box, whose Change
// applies it. Here only a held arrow's step grows: a value set from code
// (restoring the settings, a typed value) is not a press.
void frmWavelark::upDownMouseDown(const char* procedure, ui::UpDown* upDown, std::int16_t button)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] {
        heldUpDown = upDown;
        gMouseDownInit(button, upDown->control(), bError);
    });
}

void frmWavelark::upDownChanged(const char* procedure, ui::UpDown* upDown)
{
    if (heldUpDown != upDown) return;
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, procedure, bError);
    trap.step([&] { gMouseDown(gSteppingState().lastButton, upDown->control(), bError); });
}

void frmWavelark::updPercent_Change() { upDownChanged("updPercent_Change", updPercent); }
void frmWavelark::updBurstPeriod_Change() { upDownChanged("updBurstPeriod_Change", updBurstPeriod); }
