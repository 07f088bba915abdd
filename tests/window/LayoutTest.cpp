// The main window's layout: every control with its exact caption, built-in
// text and tooltip, the tab pages, the menus, the accelerators, and a size
// that fits a 1024x768 screen.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSignalSpy>
#include <QStyle>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTest>

#include "base/Types.h"
#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/VScrollBar.h"
#include "services/modControlsEnable.h"
#include "tests/support/ScriptedHost.h"
#include "window/frmWavelark.h"

namespace {

struct Expected {
    const char* name;
    const char* type;
    const char* caption;  // the caption, or a text box's built-in text
    const char* tooltip;
};

const char* const kFreqTip = "Use the Arrow or Page keys + Shift and/or Ctrl to change the frequency";
const char* const kVoltTip = "You can use the Arrow or Page keys + Shift and/or CTRL to change the number";
const char* const kSymTip = "Changing '(%)' alters the waveform's symmetry";

const Expected kControls[] = {
    {"lblFrequency1", "Label", "Frequency &1 (Hz)", ""},
    {"txtFrequency1", "TextBox", "1000", kFreqTip},
    {"optSine", "OptionButton", "S&ine", ""},
    {"optTriangle", "OptionButton", "Trian&gle", kSymTip},
    {"optMarkSpace", "OptionButton", "Mark/Spa&ce", kSymTip},
    {"optNoise", "OptionButton", "&Noise", ""},
    {"lblPercent", "Label", "(&%)", ""},
    {"txtPercent", "TextBox", "50",
     "Use the Arrow or Page keys + Shift and/or Ctrl to change the waveform symmetry"},
    {"updPercent", "UpDown", nullptr, ""},
    {"chkInvert", "CheckBox", "Invert", "Output INVERTED when selected"},
    {"chkSweep", "CheckBox", "Swee&p", "Sweeps from Frequency 1 to Frequency 2 when selected"},
    {"lblOutLevel", "Label", "Ou&t", ""},
    {"vsbOutLevel", "VScrollBar", nullptr, "Output level 50 %"},
    {"lblInLevel", "Label", "Mic", ""},
    {"vsbInLevel", "VScrollBar", nullptr, "Input level 50 %"},
    {"chkMute", "CheckBox", "&Mute", "Mute ON when selected"},
    {"picPolarity", "PictureBox", nullptr, "Click to change the background colour"},
    {"CommonDialogue", "CommonDialog", nullptr, nullptr},
    {"tabTab", "TabStrip", nullptr, ""},
    {"lblFrequency2", "Label", "Frequency 2 (Hz)", ""},
    {"txtFrequency2", "TextBox", "300", kFreqTip},
    {"lblSweepDuration", "Label", "Duration (s)", ""},
    {"txtSweepDuration", "TextBox", nullptr,
     "Use the Arrow or Page keys + Shift and/or Ctrl to change the duration"},
    {"optSweepLin", "OptionButton", "Lin", "Linear sweep"},
    {"optSweepLog", "OptionButton", "Log", "Logarithmic sweep"},
    {"chkSweepBi", "CheckBox", "&Bi-directional", "Sweeps both ways when selected"},
    {"lblBurstCycles", "Label", "Cycles", ""},
    {"txtBurstCycles", "TextBox", nullptr,
     "Use the Arrow or Page keys + Shift and/or Ctrl to change the number of cycles"},
    {"lblBurstPeriod", "Label", "Period (ms)", ""},
    {"txtBurstPeriod", "TextBox", "100",
     "Use the Arrow or Page keys + Shift and/or Ctrl to change the repetition period"},
    {"updBurstPeriod", "UpDown", nullptr, ""},
    {"cmdBurstFire", "CommandButton", "Fir&e", "Fire one burst"},
    {"chkBurstAuto", "CheckBox", "&Auto", "Continuously fires the burst at the repetition rate"},
    {"chkBurstMeasure", "CheckBox", "Measu&re", "Measures and displays the input"},
    {"txtInfo", "TextBox", nullptr, ""},
    {"lblVOutIdent", "Label", "Ident", ""},
    {"txtVOutIdent", "TextBox", "Unknown", "Name to identify the calibration/amplifier"},
    {"lblVOutMax", "Label", "Out Max (V)", ""},
    {"txtVOutMax", "TextBox", nullptr, kVoltTip},
    {"lblVOut2", "Label", "Out 2 (V)", ""},
    {"txtVOut2", "TextBox", nullptr, kVoltTip},
    {"cmdVOutCalibrate", "CommandButton", "Calibrate", "Calibrate your soundboard for output in volts"},
};

const Expected kMenus[] = {
    {"mnuFile", "Menu", "&File", nullptr},
    {"mnuFiPrint", "Menu", "&Print", nullptr},
    {"mnuFiHyphen", "Menu", "-", nullptr},
    {"mnuFiExit", "Menu", "E&xit", nullptr},
    {"mnuWave", "Menu", "&Wave", nullptr},
    {"mnuWaveSine", "Menu", "S&ine", nullptr},
    {"mnuWaveSquare", "Menu", "Square", nullptr},
    {"mnuWaveTriangle", "Menu", "Trian&gle", nullptr},
    {"mnuWaveSawtooth", "Menu", "Sawtooth", nullptr},
    {"mnuHelp", "Menu", "&Help", nullptr},
    {"mnuHAbout", "Menu", "&About Wavelark", nullptr},
    // Analysis: File, Wave and the plot's right-click menu.
    {"mnuFiExport", "Menu", "&Export WAV...", nullptr},
    {"mnuWavePreciseLoop", "Menu", "&Precise loop", nullptr},
    {"mnuPlotTimeResponse", "Menu", "&Time response", nullptr},
    {"mnuPlotSpectrum", "Menu", "&Spectrum", nullptr},
    {"mnuPlotHyphen", "Menu", "-", nullptr},
    {"mnuPlotMeasureTone", "Menu", "&Measure tone", nullptr},
    // Listed last, shown in the File menu above its separator.
    {"mnuFiRemote", "Menu", "&Remote control", nullptr},
};

class LayoutTest : public ::testing::Test {
protected:
    void showActive()
    {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    testing_support::ScriptedHost host;
    frmWavelark window;
};

TEST_F(LayoutTest, EveryControlHasItsNameKindCaptionAndTooltip)
{
    for (const Expected& want : kControls) {
        SCOPED_TRACE(want.name);
        ui::Control* control = window.control(want.name);
        ASSERT_NE(control, nullptr);
        EXPECT_EQ(control->typeName(), want.type);
        if (want.caption != nullptr) {
            EXPECT_EQ(control->text(), want.caption);
        }
        if (want.tooltip == nullptr) continue;
        auto* widget = window.findChild<QWidget*>(want.name);
        ASSERT_NE(widget, nullptr) << "a widget's object name is its control name";
        EXPECT_EQ(widget->toolTip().toStdString(), want.tooltip);
    }
}

TEST_F(LayoutTest, MenusInOrderWithTheirCaptions)
{
    std::vector<std::string> names;
    for (ui::Control* control : window.controls())
        if (control->typeName() == "Menu") names.push_back(control->name());
    ASSERT_EQ(names.size(), std::size(kMenus));
    for (std::size_t i = 0; i < names.size(); ++i) {
        SCOPED_TRACE(kMenus[i].name);
        EXPECT_EQ(names[i], kMenus[i].name);
        EXPECT_EQ(window.control(kMenus[i].name)->text(), kMenus[i].caption);
    }
}

TEST_F(LayoutTest, FourTabPagesInOrder)
{
    ASSERT_EQ(window.tabTab->count(), 4);
    EXPECT_EQ(window.tabTab->tabText(0), "&Sweep");
    EXPECT_EQ(window.tabTab->tabText(1), "B&urst");
    EXPECT_EQ(window.tabTab->tabText(2), "Inf&o");
    EXPECT_EQ(window.tabTab->tabText(3), "S&ystem");
    EXPECT_TRUE(window.tabTab->widget(0)->isAncestorOf(window.txtFrequency2));
    EXPECT_TRUE(window.tabTab->widget(1)->isAncestorOf(window.cmdBurstFire));
    EXPECT_TRUE(window.tabTab->widget(2)->isAncestorOf(window.txtInfo));
    EXPECT_TRUE(window.tabTab->widget(3)->isAncestorOf(window.cmdVOutCalibrate));
    EXPECT_EQ(window.tabTab->currentIndex(), 0);
}

TEST_F(LayoutTest, OpensSilentWithSineAndLinearSweepChosen)
{
    EXPECT_TRUE(window.chkMute->isChecked());
    EXPECT_TRUE(window.optSine->value());
    EXPECT_TRUE(window.optSweepLin->value());
    EXPECT_FALSE(window.optSweepLog->value());
    EXPECT_FALSE(window.chkInvert->isChecked());
}

TEST_F(LayoutTest, ShapeAndSweepButtonsAreSeparateGroups)
{
    window.optSweepLog->setValue(true);
    EXPECT_TRUE(window.optSine->value()) << "choosing Log must not clear the shape";
    window.optNoise->setValue(true);
    EXPECT_TRUE(window.optSweepLog->value());
    EXPECT_FALSE(window.optSine->value());
}

TEST_F(LayoutTest, AcceleratorsReachTheirControls)
{
    showActive();
    QTest::keyClick(&window, Qt::Key_1, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget(), window.txtFrequency1);
    QTest::keyClick(&window, Qt::Key_Percent, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget(), window.txtPercent);
    QTest::keyClick(&window, Qt::Key_U, Qt::AltModifier);
    EXPECT_EQ(window.tabTab->currentIndex(), 1);
    // A button's accelerator clicks it after a short press animation.
    QTest::keyClick(&window, Qt::Key_P, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.chkSweep->isChecked(); }));
    // Noise is never swept: choosing it clears Sweep.
    QTest::keyClick(&window, Qt::Key_N, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.optNoise->value(); }));
    EXPECT_FALSE(window.chkSweep->isChecked());
    QTest::keyClick(&window, Qt::Key_Y, Qt::AltModifier);
    EXPECT_EQ(window.tabTab->currentIndex(), 3);
}

TEST_F(LayoutTest, EveryControlAScreenReaderMeetsHasAName)
{
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (widget->objectName().isEmpty() || widget->focusPolicy() == Qt::NoFocus) continue;
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(reader, nullptr);
        EXPECT_FALSE(reader->text(QAccessible::Name).isEmpty()) << widget->objectName().toStdString();
    }
    EXPECT_EQ(window.vsbOutLevel->accessibleName(), "Output level");
    EXPECT_EQ(window.txtFrequency1->accessibleName(), "Frequency 1 (Hz)") << "named by its label";
}

TEST_F(LayoutTest, TheLevelBarsAreReachedAndMovedByKeysAndSayTheirLevel)
{
    showActive();
    QTest::keyClick(&window, Qt::Key_T, Qt::AltModifier);
    ASSERT_EQ(QApplication::focusWidget(), window.vsbOutLevel) << "the Ou&t accelerator";
    window.vsbOutLevel->setValue(16384);
    QTest::keyClick(window.vsbOutLevel, Qt::Key_Home);
    EXPECT_EQ(window.vsbOutLevel->value(), 0);
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 100 %");
    QTest::keyClick(window.vsbOutLevel, Qt::Key_PageDown);
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 90 %");
    EXPECT_EQ(window.vsbOutLevel->accessibleDescription(), "Output level 90 %");
    QTest::keyClick(window.vsbOutLevel, Qt::Key_Down);
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 89 %");
    QTest::keyClick(window.vsbOutLevel, Qt::Key_End);
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 0 %");

    QTest::keyClick(window.vsbOutLevel, Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), window.vsbInLevel) << "Tab goes on to the input bar";
    QTest::keyClick(window.vsbInLevel, Qt::Key_Home);
    EXPECT_EQ(window.vsbInLevel->toolTip(), "Input level 100 %");
}

TEST_F(LayoutTest, TheOutputBarSaysItsVoltsOnceCalibratedByTheRuleOfItsCaption)
{
    window.vsbOutLevel->setValue(16384);  // 16383 level steps below the reference
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 50 %");
    window.txtVOutMax->setText("2");
    window.txtVOut2->setText("1");
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 50 % (1.00 V)");
    EXPECT_EQ(window.vsbOutLevel->accessibleDescription(), "Output level 50 % (1.00 V)");
    EXPECT_EQ(window.lblOutLevel->text(), "Ou&t  1.00 (V) ") << "the caption agrees";
    window.vsbOutLevel->setValue(8192);
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 75 % (2.00 V)");
    EXPECT_EQ(window.vsbInLevel->toolTip(), "Input level 50 %") << "the input has no volts";

    // A calibration that can no longer be used shows no volts anywhere.
    window.txtVOut2->setText("3");
    EXPECT_EQ(window.vsbOutLevel->toolTip(), "Output level 75 %");
    EXPECT_EQ(window.lblOutLevel->text(), "Ou&t");
}

TEST_F(LayoutTest, CommonShortcutsSitBesideTheAccelerators)
{
    EXPECT_EQ(window.mnuFiExit->shortcut(), QKeySequence("Ctrl+Q"));
    EXPECT_EQ(window.mnuFiPrint->shortcut(), QKeySequence("Ctrl+P"));
    EXPECT_EQ(window.mnuHAbout->shortcut(), QKeySequence("F1"));
    EXPECT_EQ(window.mnuFiExit->text(), "E&xit") << "the caption stays as it is";
    showActive();
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(LayoutTest, FileExitClosesTheWindow)
{
    showActive();
    window.mnuFiExit->trigger();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(LayoutTest, FitsASmallScreenUnderLightAndDarkStyles)
{
    for (const char* styleName : {"Fusion", "Windows"}) {
        QStyle* style = QStyleFactory::create(styleName);
        ASSERT_NE(style, nullptr);
        QApplication::setStyle(style);
        QPalette palette = style->standardPalette();
        if (std::string(styleName) == "Fusion") {  // a dark scheme
            palette.setColor(QPalette::Window, QColor(40, 40, 40));
            palette.setColor(QPalette::WindowText, Qt::white);
            palette.setColor(QPalette::Button, QColor(50, 50, 50));
            palette.setColor(QPalette::ButtonText, Qt::white);
        }
        QApplication::setPalette(palette);
        window.adjustSize();
        const QSize size = window.sizeHint();
        EXPECT_LE(size.width(), 1024) << styleName;
        EXPECT_LE(size.height(), 768 - 40) << styleName << ": room for a task bar";
        EXPECT_GE(window.picPolarity->width(), 300);
    }
}

TEST_F(LayoutTest, DisablingTheWholeWindowSparesOnlyTheSeparatorAndDialog)
{
    ErrorFlag flag = kFalse;
    gControlsEnable("frmWavelark", kFalse, flag);
    EXPECT_FALSE(window.mnuFiExit->isEnabled());
    EXPECT_FALSE(window.txtFrequency1->isEnabled());
    EXPECT_FALSE(window.tabTab->isEnabled());
    EXPECT_TRUE(window.mnuFiHyphen->isEnabled());
    EXPECT_EQ(flag, kFalse);
}

}  // namespace
