#pragma once
// The main window: the signal panel (frequency, shape, symmetry, inversion,
// sweep switch, levels, mute, the time-response picture) above a four-page
// tab control (Sweep, Burst, Info, System), and the File, Wave and Help menus.
// Members carry the control names; handlers carry the event names.
#include <QMainWindow>

#include "platform/Control.h"
#include "controls/ControlAdapters.h"

class QAction;
class QMenu;
class QTabWidget;

namespace ui {
class CheckBox;
class CommandButton;
class Label;
class MultiLineTextBox;
class OptionButton;
class PictureBox;
class TextBox;
class UpDown;
class VScrollBar;
}  // namespace ui

class frmWavelark : public QMainWindow, public ui::Form {
    Q_OBJECT
public:
    explicit frmWavelark(QWidget* parent = nullptr);
    ~frmWavelark() override;

    // ui::Form
    std::string formName() const override { return "frmWavelark"; }
    std::vector<ui::Control*> controls() const override { return controls_.all(); }
    ui::Control* control(const std::string& name) const { return controls_.find(name); }

    // Brings the system up; runs once, before the window is shown.
    void Form_Load();
    void mnuFiExit_Click();

    // Signal panel
    ui::Label* lblFrequency1 = nullptr;
    ui::TextBox* txtFrequency1 = nullptr;
    ui::OptionButton* optSine = nullptr;
    ui::OptionButton* optTriangle = nullptr;
    ui::OptionButton* optMarkSpace = nullptr;
    ui::OptionButton* optNoise = nullptr;
    ui::Label* lblPercent = nullptr;
    ui::TextBox* txtPercent = nullptr;
    ui::UpDown* updPercent = nullptr;
    ui::CheckBox* chkInvert = nullptr;
    ui::CheckBox* chkSweep = nullptr;
    ui::Label* lblOutLevel = nullptr;
    ui::VScrollBar* vsbOutLevel = nullptr;
    ui::Label* lblInLevel = nullptr;
    ui::VScrollBar* vsbInLevel = nullptr;
    ui::CheckBox* chkMute = nullptr;
    ui::PictureBox* picPolarity = nullptr;
    ui::CommonDialog* CommonDialogue = nullptr;
    QTabWidget* tabTab = nullptr;

    // Sweep page
    ui::Label* lblFrequency2 = nullptr;
    ui::TextBox* txtFrequency2 = nullptr;
    ui::Label* lblSweepDuration = nullptr;
    ui::TextBox* txtSweepDuration = nullptr;
    ui::OptionButton* optSweepLin = nullptr;
    ui::OptionButton* optSweepLog = nullptr;
    ui::CheckBox* chkSweepBi = nullptr;

    // Burst page
    ui::Label* lblBurstCycles = nullptr;
    ui::TextBox* txtBurstCycles = nullptr;
    ui::Label* lblBurstPeriod = nullptr;
    ui::TextBox* txtBurstPeriod = nullptr;
    ui::UpDown* updBurstPeriod = nullptr;
    ui::CommandButton* cmdBurstFire = nullptr;
    ui::CheckBox* chkBurstAuto = nullptr;
    ui::CheckBox* chkBurstMeasure = nullptr;

    // Info page
    ui::MultiLineTextBox* txtInfo = nullptr;

    // System page
    ui::Label* lblVOutIdent = nullptr;
    ui::TextBox* txtVOutIdent = nullptr;
    ui::Label* lblVOutMax = nullptr;
    ui::TextBox* txtVOutMax = nullptr;
    ui::Label* lblVOut2 = nullptr;
    ui::TextBox* txtVOut2 = nullptr;
    ui::CommandButton* cmdVOutCalibrate = nullptr;

    // Menus
    QAction* mnuFile = nullptr;
    QAction* mnuFiPrint = nullptr;
    QAction* mnuFiHyphen = nullptr;
    QAction* mnuFiExit = nullptr;
    QAction* mnuWave = nullptr;
    QAction* mnuWaveSine = nullptr;
    QAction* mnuWaveSquare = nullptr;
    QAction* mnuWaveTriangle = nullptr;
    QAction* mnuWaveSawtooth = nullptr;
    QAction* mnuHelp = nullptr;
    QAction* mnuHAbout = nullptr;

private:
    QWidget* makeSignalPanel();
    QWidget* makeLevelPanel();
    QWidget* makeTabs();
    QWidget* makeSweepPage();
    QWidget* makeBurstPage();
    QWidget* makeInfoPage();
    QWidget* makeSystemPage();
    void makeMenus();
    void makeAccessible();

    template <class Widget, class... Args>
    Widget* make(Args&&... args);
    QAction* addMenuItem(QMenu* menu, const char* name, const char* caption);

    ui::ControlList controls_;
};
