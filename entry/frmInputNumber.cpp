#include "entry/frmInputNumber.h"

#include <utility>

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QVBoxLayout>

#include "base/Convert.h"
#include "base/NumberText.h"
#include "base/Trap.h"
#include "entry/modControl.h"
#include "entry/modKeyDown.h"
#include "entry/modKeyMouseIncrement.h"
#include "entry/modKeyPressAscii.h"
#include "entry/modMouseDown.h"
#include "entry/modUpDownSet.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "platform/Forms.h"
#include "platform/KeyCodes.h"
#include "services/modGeneral.h"

namespace {

constexpr const char* kModule = "frmInputNumber";

}  // namespace

frmInputNumber::frmInputNumber(QWidget* parent) : QDialog(parent)
{
    setObjectName(QString::fromLatin1(kModule));

    lblPrompt = new ui::Label("lblPrompt", QString(), this);
    lblPrompt->setWordWrap(true);
    txtNumber = new ui::TextBox("txtNumber", this);
    txtNumber->setToolTip("You can use the Arrow or Page keys + Shift and/or CTRL to change the number");
    updNumber = new ui::UpDown("updNumber", this);
    updNumber->setToolTip("Click to change the number");
    updNumber->setBuddy(txtNumber);
    cmdOK = new ui::CommandButton("cmdOK", "&OK", this);
    cmdOK->setToolTip("Click when you've entered the number");
    cmdCancel = new ui::CommandButton("cmdCancel", "&Cancel", this);
    cmdCancel->setToolTip("Click if you don't want to enter a number");
    // Enter on a focused button presses it; leaving for Cancel never asks.
    cmdOK->setAutoDefault(true);
    cmdCancel->setAutoDefault(true);
    ui::setCausesValidation(cmdCancel, false);

    auto* numberRow = new QHBoxLayout;
    numberRow->setSpacing(0);
    numberRow->addWidget(txtNumber);
    numberRow->addWidget(updNumber);
    numberRow->addStretch();
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addStretch();
    buttonRow->addWidget(cmdOK);
    buttonRow->addWidget(cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblPrompt);
    layout->addLayout(numberRow);
    layout->addLayout(buttonRow);
    setTabOrder(txtNumber, cmdOK);
    setTabOrder(cmdOK, cmdCancel);

    txtNumber->KeyPress = [this](std::int16_t& KeyAscii) { txtNumber_KeyPress(KeyAscii); };
    txtNumber->KeyDown = [this](std::int16_t& KeyCode, std::int16_t Shift) {
        txtNumber_KeyDown(KeyCode, Shift);
    };
    txtNumber->KeyUp = [this](std::int16_t& KeyCode, std::int16_t Shift) {
        txtNumber_KeyUp(KeyCode, Shift);
    };
    txtNumber->Validate = [this](bool& Cancel) { txtNumber_Validate(Cancel); };
    updNumber->Change = [this] { updNumber_Change(); };
    updNumber->MouseDown = [this](std::int16_t Button, std::int16_t Shift) {
        updNumber_MouseDown(Button, Shift);
    };
    updNumber->MouseUp = [this](std::int16_t Button, std::int16_t Shift) {
        updNumber_MouseUp(Button, Shift);
    };
    cmdOK->Click = [this] { cmdOK_Click(); };
    cmdCancel->Click = [this] { cmdCancel_Click(); };

    ui::addOpenForm(this);
}

frmInputNumber::~frmInputNumber() { ui::removeOpenForm(this); }

std::vector<ui::Control*> frmInputNumber::controls() const
{
    return {&lblPrompt->control(), &txtNumber->control(), &updNumber->control(),
            &cmdOK->control(), &cmdCancel->control()};
}

void frmInputNumber::Load(const InputNumber& request, ErrorFlag& bError)
{
    rt::Trap trap(kModule, "Load", bError);
    trap.step([&] {
        mfMax = request.ifMax;
        mfMin = request.ifMin;
        mfResolution = request.ifResolution;
        mbInteger = request.ibInteger;
        setWindowTitle(QString::fromStdString(request.isHeader));
    });
    trap.step([&] {
        lblPrompt->setText(QString::fromStdString(request.isPrompt));
        lblPrompt->setVisible(!request.isPrompt.empty());
        cmdCancel->setVisible(request.ibAllowCancel);
        txtNumber->control().setText(rt::userText(request.ifValue));
    });
    trap.step([&] {
        updNumber->setVisible(request.ibInteger);
        if (!request.ibInteger || !gbCtrlTextValidNumber(txtNumber->control().text(), bError))
            return;
        gUpDownSet(rt::toInt32(request.ifValue), rt::toInt32(request.ifMax),
                   rt::toInt32(request.ifMin), 1, updNumber->control(), bError);
    });
    trap.step([&] {
        txtNumber->selectAll();
        txtNumber->control().setFocus();
    });
}

std::string frmInputNumber::Result() const { return mbAccepted ? rt::strNumber(mfValue) : std::string(); }

void frmInputNumber::txtNumber_KeyPress(std::int16_t& KeyAscii)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "txtNumber_KeyPress", bError);
    trap.step([&] {
        KeyAscii = mbInteger ? gnKeyPressAsciiInteger(KeyAscii, bError)
                             : gnKeyPressAsciiReal(KeyAscii, txtNumber->control().unselectedText(), bError);
    });
    trap.step([&] {
        if (KeyAscii != ui::kAsciiEnter) return;
        KeyAscii = 0;
        const Bool16 inError = mbTextInError(bError);
        if (inError || bError) return;
        gbGSetFocus(cmdOK->control());
        cmdOK_Click();
    });
}

void frmInputNumber::txtNumber_KeyDown(std::int16_t& KeyCode, std::int16_t Shift)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "txtNumber_KeyDown", bError);
    trap.step([&] {
        const std::string text = txtNumber->control().text();
        const std::string stepped = gsKeyDown(KeyCode, Shift, text, mfMax, mfMin, mfResolution, bError);
        // Writing the same text back would move the caret (plain Home and End
        // must still move it).
        if (!bError && stepped != text) txtNumber->control().setText(stepped);
    });
}

void frmInputNumber::txtNumber_KeyUp(std::int16_t&, std::int16_t) { gKeyMouseIncrementEnd(); }

void frmInputNumber::txtNumber_Validate(bool& Cancel)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "txtNumber_Validate", bError);
    trap.step([&] {
        Cancel = mbTextInError(bError) != kFalse;
    });
}

// The leave-check by the stored rule, zero allowed, no unit.
Bool16 frmInputNumber::mbTextInError(ErrorFlag& bError)
{
    const auto check = mbInteger ? gbCtrlTxtErrorWhole : gbCtrlTxtError;
    return check(mfMax, mfMin, mfResolution, kFalse, "", windowTitle().toStdString(),
                 txtNumber->control(), bError);
}

void frmInputNumber::mSpinFromText(ErrorFlag& bError)
{
    const std::string text = txtNumber->control().text();
    if (!gbCtrlTextValidNumber(text, bError)) return;
    const double typed = rt::roundHalfEven(rt::toSingleUser(text));
    if (typed < updNumber->min() || typed > updNumber->max()) return;
    const auto value = static_cast<std::int32_t>(typed);
    if (value == updNumber->value()) return;
    // Quietly: this is not a step of the spin control.
    const auto change = std::exchange(updNumber->Change, nullptr);
    updNumber->setValue(value);
    updNumber->Change = change;
}

void frmInputNumber::updNumber_MouseDown(std::int16_t Button, std::int16_t)
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "updNumber_MouseDown", bError);
    trap.step([&] { mSpinFromText(bError); });
    trap.step([&] {
        mbSpinHeld = true;
        gMouseDownInit(Button, updNumber->control(), bError);
    });
}

void frmInputNumber::updNumber_Change()
{
    // Only the control's own steps while held grow its increment; a value
    // set from code is not a press.
    if (!mbSpinHeld) return;
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "updNumber_Change", bError);
    trap.step([&] { gMouseDown(gSteppingState().lastButton, updNumber->control(), bError); });
}

void frmInputNumber::updNumber_MouseUp(std::int16_t, std::int16_t)
{
    mbSpinHeld = false;
    gKeyMouseIncrementEnd();
}

void frmInputNumber::cmdOK_Click()
{
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "cmdOK_Click", bError);
    trap.step([&] {
        mfValue = rt::toSingleUser(txtNumber->control().text());
        mbAccepted = true;
        accept();
    });
}

void frmInputNumber::cmdCancel_Click()
{
    mbAccepted = false;
    reject();
}

void frmInputNumber::keyPressEvent(QKeyEvent* event)
{
    // Escape is the Cancel button's key, and does nothing without it.
    if (event->key() == Qt::Key_Escape) {
        if (cmdCancel->isVisible()) cmdCancel->click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

std::string gsInputNumberDialog(InputNumber& request)
{
    std::string result;
    ErrorFlag bError = kFalse;
    rt::Trap trap(kModule, "gsInputNumber", bError);
    frmInputNumber form(QApplication::activeWindow());
    trap.step([&] {
        form.Load(request, bError);
        trap.leaveOnError(bError);  // not shown
    });
    trap.step([&] {
        form.exec();
        result = form.Result();
    });
    if (bError) {
        request.obError = true;
        result.clear();
    }
    return result;
}

void gInstallInputNumberDialog() { gSetInputNumberDialog(&gsInputNumberDialog); }
