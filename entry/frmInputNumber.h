#pragma once
// The number-entry dialog: asks for one number under a field's rule (range,
// resolution, whole or real), with the numeric boxes' key filter, arrow and
// page key stepping, the leave-check, and a spin control for whole numbers.
// Modal; one instance per request, listed among the open forms while open.
#include <cstdint>
#include <string>
#include <vector>

#include <QDialog>

#include "base/Types.h"
#include "entry/modInputNumber.h"
#include "platform/Control.h"

namespace ui {
class CommandButton;
class Label;
class TextBox;
class UpDown;
}  // namespace ui

class frmInputNumber : public QDialog, public ui::Form {
    Q_OBJECT
public:
    explicit frmInputNumber(QWidget* parent = nullptr);
    ~frmInputNumber() override;

    std::string formName() const override { return "frmInputNumber"; }
    std::vector<ui::Control*> controls() const override;

    // Takes the request's rule, caption, prompt, buttons and value, ready to
    // be shown. Sets the error flag when the spin control cannot be loaded.
    void Load(const InputNumber& request, ErrorFlag& bError);
    // After the dialog has closed: the accepted value as locale-independent
    // text, or "" when it was left without OK.
    std::string Result() const;

    ui::Label* lblPrompt = nullptr;
    ui::TextBox* txtNumber = nullptr;
    ui::UpDown* updNumber = nullptr;
    ui::CommandButton* cmdOK = nullptr;
    ui::CommandButton* cmdCancel = nullptr;

    void txtNumber_KeyPress(std::int16_t& KeyAscii);
    void txtNumber_KeyDown(std::int16_t& KeyCode, std::int16_t Shift);
    void txtNumber_KeyUp(std::int16_t& KeyCode, std::int16_t Shift);
    void txtNumber_Validate(bool& Cancel);
    void updNumber_Change();
    void updNumber_MouseDown(std::int16_t Button, std::int16_t Shift);
    void updNumber_MouseUp(std::int16_t Button, std::int16_t Shift);
    void cmdOK_Click();
    void cmdCancel_Click();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    // Brings the spin control to the whole number typed in the box before
    // the spin steps from it.
    void mSpinFromText(ErrorFlag& bError);
    Bool16 mbTextInError(ErrorFlag& bError);

    float mfMax = 0;
    float mfMin = 0;
    float mfResolution = 0;
    bool mbInteger = false;
    float mfValue = 0;
    bool mbAccepted = false;
    bool mbSpinHeld = false;
};

// Shows the dialog for the request and waits for it to close (the procedure
// gsInputNumber reaches through its seam). "" when it was left without OK;
// request.obError is set, and nothing shown, when loading it failed.
std::string gsInputNumberDialog(InputNumber& request);

// Makes gsInputNumber open this dialog (the program calls it at start).
void gInstallInputNumberDialog();
