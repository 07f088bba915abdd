#include "window/frmWavelark.h"

#include <QAction>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "controls/VScrollBar.h"
#include "mixer/modMixer.h"
#include "platform/Forms.h"

namespace {

// Tooltips shared by several fields.
const char* const kFrequencyTip =
    "Use the Arrow or Page keys + Shift and/or Ctrl to change the frequency";
const char* const kVoltsTip =
    "You can use the Arrow or Page keys + Shift and/or CTRL to change the number";
const char* const kSymmetryTip = "Changing '(%)' alters the waveform's symmetry";

constexpr int kNumberBoxWidth = 80;

QWidget* row(std::initializer_list<QWidget*> widgets)
{
    auto* holder = new QWidget;
    auto* layout = new QHBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    for (QWidget* widget : widgets) layout->addWidget(widget);
    layout->addStretch();
    return holder;
}

}  // namespace

// Makes a control, names it, and lists it among the window's controls.
template <class Widget, class... Args>
Widget* frmWavelark::make(Args&&... args)
{
    auto* widget = new Widget(std::forward<Args>(args)...);
    controls_.add(widget->control());
    return widget;
}

QAction* frmWavelark::addMenuItem(QMenu* menu, const char* name, const char* caption)
{
    QAction* action = std::string(caption) == "-" ? menu->addSeparator() : menu->addAction(caption);
    action->setObjectName(name);
    controls_.adopt(std::make_unique<ui::MenuControl>(action));
    return action;
}

frmWavelark::frmWavelark(QWidget* parent) : QMainWindow(parent)
{
    setObjectName("frmWavelark");
    setWindowTitle("Wavelark");

    makeMenus();

    auto* central = new QWidget;
    auto* top = new QHBoxLayout;
    top->addWidget(makeSignalPanel());
    top->addWidget(makeLevelPanel());
    picPolarity = make<ui::PictureBox>("picPolarity");
    picPolarity->setToolTip("Click to change the background colour");
    picPolarity->setMinimumSize(360, 200);
    top->addWidget(picPolarity, 1);
    CommonDialogue = controls_.adopt(std::make_unique<ui::CommonDialog>(this, "CommonDialogue"));

    auto* whole = new QVBoxLayout(central);
    whole->addLayout(top);
    whole->addWidget(makeTabs());
    setCentralWidget(central);
    makeStatusBar();
    makeAccessible();
    connectSignalHandlers();
    connectLifeHandlers();
    connectCalibrationHandlers();
    connectPrintHandlers();
    connectAnalysisHandlers();
    makeRemote();

    ui::addOpenForm(this);
}

frmWavelark::~frmWavelark() { ui::removeOpenForm(this); }

QWidget* frmWavelark::makeSignalPanel()
{
    auto* panel = new QFrame;
    panel->setFrameShape(QFrame::StyledPanel);
    auto* grid = new QGridLayout(panel);

    lblFrequency1 = make<ui::Label>("lblFrequency1", "Frequency &1 (Hz)");
    txtFrequency1 = make<ui::TextBox>("txtFrequency1");
    txtFrequency1->setText("1000");
    txtFrequency1->setToolTip(kFrequencyTip);
    txtFrequency1->setFixedWidth(kNumberBoxWidth);
    lblFrequency1->setBuddy(txtFrequency1);
    grid->addWidget(lblFrequency1, 0, 0);
    grid->addWidget(txtFrequency1, 0, 1);

    optSine = make<ui::OptionButton>("optSine", "S&ine");
    optTriangle = make<ui::OptionButton>("optTriangle", "Trian&gle");
    optTriangle->setToolTip(kSymmetryTip);
    optMarkSpace = make<ui::OptionButton>("optMarkSpace", "Mark/Spa&ce");
    optMarkSpace->setToolTip(kSymmetryTip);
    optNoise = make<ui::OptionButton>("optNoise", "&Noise");
    optSine->setChecked(true);
    grid->addWidget(optSine, 1, 0);
    grid->addWidget(optTriangle, 1, 1);
    grid->addWidget(optMarkSpace, 2, 0);
    grid->addWidget(optNoise, 2, 1);

    lblPercent = make<ui::Label>("lblPercent", "(&%)");
    txtPercent = make<ui::TextBox>("txtPercent");
    txtPercent->setText("50");
    txtPercent->setToolTip(
        "Use the Arrow or Page keys + Shift and/or Ctrl to change the waveform symmetry");
    txtPercent->setFixedWidth(kNumberBoxWidth / 2);
    updPercent = make<ui::UpDown>("updPercent");
    updPercent->setMin(0);
    updPercent->setMax(100);
    updPercent->setValue(50);
    updPercent->setBuddy(txtPercent);
    lblPercent->setBuddy(txtPercent);
    grid->addWidget(lblPercent, 3, 0);
    grid->addWidget(row({txtPercent, updPercent}), 3, 1);

    chkInvert = make<ui::CheckBox>("chkInvert", "Invert");
    chkInvert->setToolTip("Output INVERTED when selected");
    chkSweep = make<ui::CheckBox>("chkSweep", "Swee&p");
    chkSweep->setToolTip("Sweeps from Frequency 1 to Frequency 2 when selected");
    grid->addWidget(chkInvert, 4, 0);
    grid->addWidget(chkSweep, 4, 1);

    chkMute = make<ui::CheckBox>("chkMute", "&Mute");
    chkMute->setToolTip("Mute ON when selected");
    chkMute->setChecked(true);
    grid->addWidget(chkMute, 5, 0);
    grid->setRowStretch(6, 1);
    return panel;
}

QWidget* frmWavelark::makeLevelPanel()
{
    auto* panel = new QFrame;
    panel->setFrameShape(QFrame::StyledPanel);
    auto* grid = new QGridLayout(panel);

    lblOutLevel = make<ui::Label>("lblOutLevel", "Ou&t");
    vsbOutLevel = make<ui::VScrollBar>("vsbOutLevel");
    lblInLevel = make<ui::Label>("lblInLevel", "Mic");
    vsbInLevel = make<ui::VScrollBar>("vsbInLevel");
    lblOutLevel->setBuddy(vsbOutLevel);
    lblInLevel->setBuddy(vsbInLevel);
    for (ui::VScrollBar* bar : {vsbOutLevel, vsbInLevel}) {
        bar->setRange(0, kLevelBarBottom);  // 0 at the top is full level
        bar->setSingleStep(kLevelBarBottom / 100);
        bar->setPageStep(kLevelBarBottom / 10);
        bar->setValue(16384);
        bar->setMinimumHeight(140);
    }
    grid->addWidget(lblOutLevel, 0, 0, Qt::AlignHCenter);
    grid->addWidget(lblInLevel, 0, 1, Qt::AlignHCenter);
    grid->addWidget(vsbOutLevel, 1, 0, Qt::AlignHCenter);
    grid->addWidget(vsbInLevel, 1, 1, Qt::AlignHCenter);
    grid->setRowStretch(1, 1);
    return panel;
}

QWidget* frmWavelark::makeTabs()
{
    tabTab = new QTabWidget;
    tabTab->setObjectName("tabTab");
    controls_.adopt(std::make_unique<ui::WidgetControl>(tabTab, "TabStrip"));
    tabTab->addTab(makeSweepPage(), "&Sweep");
    tabTab->addTab(makeBurstPage(), "B&urst");
    tabTab->addTab(makeInfoPage(), "Inf&o");
    tabTab->addTab(makeSystemPage(), "S&ystem");
    tabTab->setMinimumHeight(150);
    return tabTab;
}

QWidget* frmWavelark::makeSweepPage()
{
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);

    lblFrequency2 = make<ui::Label>("lblFrequency2", "Frequency 2 (Hz)");
    txtFrequency2 = make<ui::TextBox>("txtFrequency2");
    txtFrequency2->setText("300");
    txtFrequency2->setToolTip(kFrequencyTip);
    lblSweepDuration = make<ui::Label>("lblSweepDuration", "Duration (s)");
    txtSweepDuration = make<ui::TextBox>("txtSweepDuration");
    txtSweepDuration->setText("5");
    txtSweepDuration->setToolTip(
        "Use the Arrow or Page keys + Shift and/or Ctrl to change the duration");
    for (ui::TextBox* box : {txtFrequency2, txtSweepDuration}) box->setFixedWidth(kNumberBoxWidth);

    optSweepLin = make<ui::OptionButton>("optSweepLin", "Lin");
    optSweepLin->setToolTip("Linear sweep");
    optSweepLog = make<ui::OptionButton>("optSweepLog", "Log");
    optSweepLog->setToolTip("Logarithmic sweep");
    optSweepLin->setChecked(true);
    chkSweepBi = make<ui::CheckBox>("chkSweepBi", "&Bi-directional");
    chkSweepBi->setToolTip("Sweeps both ways when selected");

    grid->addWidget(lblFrequency2, 0, 0);
    grid->addWidget(txtFrequency2, 0, 1);
    grid->addWidget(lblSweepDuration, 1, 0);
    grid->addWidget(txtSweepDuration, 1, 1);
    grid->addWidget(row({optSweepLin, optSweepLog}), 0, 2);
    grid->addWidget(chkSweepBi, 1, 2);
    grid->setColumnStretch(3, 1);
    grid->setRowStretch(2, 1);
    return page;
}

QWidget* frmWavelark::makeBurstPage()
{
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);

    lblBurstCycles = make<ui::Label>("lblBurstCycles", "Cycles");
    txtBurstCycles = make<ui::TextBox>("txtBurstCycles");
    txtBurstCycles->setText("2");
    txtBurstCycles->setToolTip(
        "Use the Arrow or Page keys + Shift and/or Ctrl to change the number of cycles");
    lblBurstPeriod = make<ui::Label>("lblBurstPeriod", "Period (ms)");
    txtBurstPeriod = make<ui::TextBox>("txtBurstPeriod");
    txtBurstPeriod->setText("100");
    txtBurstPeriod->setToolTip(
        "Use the Arrow or Page keys + Shift and/or Ctrl to change the repetition period");
    updBurstPeriod = make<ui::UpDown>("updBurstPeriod");
    updBurstPeriod->setMin(1);
    updBurstPeriod->setMax(2000);
    updBurstPeriod->setValue(100);
    updBurstPeriod->setBuddy(txtBurstPeriod);
    for (ui::TextBox* box : {txtBurstCycles, txtBurstPeriod}) box->setFixedWidth(kNumberBoxWidth);

    cmdBurstFire = make<ui::CommandButton>("cmdBurstFire", "Fir&e");
    cmdBurstFire->setToolTip("Fire one burst");
    chkBurstAuto = make<ui::CheckBox>("chkBurstAuto", "&Auto");
    chkBurstAuto->setToolTip("Continuously fires the burst at the repetition rate");
    chkBurstMeasure = make<ui::CheckBox>("chkBurstMeasure", "Measu&re");
    chkBurstMeasure->setToolTip("Measures and displays the input");

    grid->addWidget(lblBurstCycles, 0, 0);
    grid->addWidget(txtBurstCycles, 0, 1);
    grid->addWidget(lblBurstPeriod, 1, 0);
    grid->addWidget(row({txtBurstPeriod, updBurstPeriod}), 1, 1);
    grid->addWidget(cmdBurstFire, 0, 2);
    grid->addWidget(chkBurstAuto, 1, 2);
    grid->addWidget(chkBurstMeasure, 2, 2);
    grid->setColumnStretch(3, 1);
    grid->setRowStretch(3, 1);
    return page;
}

QWidget* frmWavelark::makeInfoPage()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    txtInfo = make<ui::MultiLineTextBox>("txtInfo");
    txtInfo->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    txtInfo->setLineWrapMode(QPlainTextEdit::NoWrap);
    txtInfo->setReadOnly(true);
    txtInfo->setTabChangesFocus(true);
    txtInfo->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    txtInfo->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    layout->addWidget(txtInfo);
    return page;
}

QWidget* frmWavelark::makeSystemPage()
{
    auto* page = new QWidget;
    auto* grid = new QGridLayout(page);

    lblVOutIdent = make<ui::Label>("lblVOutIdent", "Ident");
    txtVOutIdent = make<ui::TextBox>("txtVOutIdent");
    txtVOutIdent->setText("Unknown");
    txtVOutIdent->setToolTip("Name to identify the calibration/amplifier");
    txtVOutIdent->setMinimumWidth(2 * kNumberBoxWidth);
    lblVOutMax = make<ui::Label>("lblVOutMax", "Out Max (V)");
    txtVOutMax = make<ui::TextBox>("txtVOutMax");
    txtVOutMax->setText("0");
    txtVOutMax->setToolTip(kVoltsTip);
    lblVOut2 = make<ui::Label>("lblVOut2", "Out 2 (V)");
    txtVOut2 = make<ui::TextBox>("txtVOut2");
    txtVOut2->setText("0");
    txtVOut2->setToolTip(kVoltsTip);
    for (ui::TextBox* box : {txtVOutMax, txtVOut2}) box->setFixedWidth(kNumberBoxWidth);
    cmdVOutCalibrate = make<ui::CommandButton>("cmdVOutCalibrate", "Calibrate");
    cmdVOutCalibrate->setToolTip("Calibrate your soundboard for output in volts");

    grid->addWidget(lblVOutIdent, 0, 0);
    grid->addWidget(txtVOutIdent, 0, 1);
    grid->addWidget(lblVOutMax, 1, 0);
    grid->addWidget(txtVOutMax, 1, 1);
    grid->addWidget(lblVOut2, 2, 0);
    grid->addWidget(txtVOut2, 2, 1);
    grid->addWidget(cmdVOutCalibrate, 0, 2);
    grid->setColumnStretch(3, 1);
    grid->setRowStretch(3, 1);
    return page;
}

void frmWavelark::makeMenus()
{
    QMenu* file = menuBar()->addMenu("&File");
    mnuFile = file->menuAction();
    mnuFile->setObjectName("mnuFile");
    controls_.adopt(std::make_unique<ui::MenuControl>(mnuFile));
    mnuFiPrint = addMenuItem(file, "mnuFiPrint", "&Print");
    mnuFiHyphen = addMenuItem(file, "mnuFiHyphen", "-");
    mnuFiExit = addMenuItem(file, "mnuFiExit", "E&xit");
    connect(mnuFiExit, &QAction::triggered, this, &frmWavelark::mnuFiExit_Click);

    QMenu* wave = menuBar()->addMenu("&Wave");
    mnuWave = wave->menuAction();
    mnuWave->setObjectName("mnuWave");
    controls_.adopt(std::make_unique<ui::MenuControl>(mnuWave));
    mnuWaveSine = addMenuItem(wave, "mnuWaveSine", "S&ine");
    mnuWaveSquare = addMenuItem(wave, "mnuWaveSquare", "Square");
    mnuWaveTriangle = addMenuItem(wave, "mnuWaveTriangle", "Trian&gle");
    mnuWaveSawtooth = addMenuItem(wave, "mnuWaveSawtooth", "Sawtooth");

    QMenu* help = menuBar()->addMenu("&Help");
    mnuHelp = help->menuAction();
    mnuHelp->setObjectName("mnuHelp");
    controls_.adopt(std::make_unique<ui::MenuControl>(mnuHelp));
    mnuHAbout = addMenuItem(help, "mnuHAbout", "&About Wavelark");

    // Analysis: Export WAV in File, Precise loop in Wave, the plot's menu.
    makeAnalysisMenus(file, wave);
}

