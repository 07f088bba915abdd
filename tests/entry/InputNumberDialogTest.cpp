// The number-entry dialog driven as a user drives it: keys, clicks,
// accelerators and the window frame.
#define QTEST_QPA_MOUSE_HANDLING
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <QTimer>

#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "entry/frmInputNumber.h"
#include "entry/modInputNumber.h"
#include "entry/modKeyMouseIncrement.h"
#include "services/modFormPtr.h"
#include "tests/support/ScriptedHost.h"

namespace {

InputNumber cyclesRequest()
{
    InputNumber request;
    request.isHeader = "Burst Cycles";
    request.isPrompt = "Cycles per burst";
    request.ifValue = 2;
    request.ifMax = 10;
    request.ifMin = 0.25f;
    request.ifResolution = 0.05f;
    request.ibInteger = false;
    request.ibAllowCancel = true;
    return request;
}

InputNumber periodRequest()
{
    InputNumber request;
    request.isHeader = "Burst Period";
    request.ifValue = 100;
    request.ifMax = 2000;
    request.ifMin = 2;
    request.ifResolution = 1;
    request.ibInteger = true;
    request.ibAllowCancel = false;
    return request;
}

void settle()
{
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
}

void retype(ui::TextBox* box, const QString& keys)
{
    box->selectAll();
    QTest::keyClicks(box, keys);
}

class InputNumberDialog : public ::testing::Test {
protected:
    void SetUp() override
    {
        gKeyMouseIncrementEnd();
        gInstallInputNumberDialog();
    }
    void TearDown() override { gSetInputNumberDialog(nullptr); }

    // Asks through gsInputNumber and works the modal dialog with `drive`
    // once it is up. The dialog must be closed by the end of `drive`.
    std::string ask(const InputNumber& r, const std::function<void(frmInputNumber&)>& drive)
    {
        shown = false;
        QTimer driver;
        driver.setSingleShot(true);
        QObject::connect(&driver, &QTimer::timeout, [&] {
            auto* dialog = qobject_cast<frmInputNumber*>(QApplication::activeModalWidget());
            if (dialog == nullptr) return;
            shown = true;
            EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
            drive(*dialog);
            settle();
            if (dialog->isVisible()) {
                ADD_FAILURE() << "the dialog is still open";
                dialog->reject();
            }
        });
        driver.start(0);
        bError = kFalse;
        return gsInputNumber(r.isHeader, r.isPrompt, r.ifValue, r.ifMax, r.ifMin, r.ifResolution,
                             r.ibInteger, r.ibAllowCancel, bError);
    }

    // A dialog shown without its modal loop, for looking at it.
    std::unique_ptr<frmInputNumber> open(const InputNumber& request)
    {
        auto dialog = std::make_unique<frmInputNumber>();
        ErrorFlag loadError = kFalse;
        dialog->Load(request, loadError);
        EXPECT_FALSE(loadError);
        dialog->show();
        dialog->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(dialog.get()));
        return dialog;
    }

    testing_support::ScriptedHost host;
    ErrorFlag bError = kFalse;
    bool shown = false;
};

TEST_F(InputNumberDialog, ShowsTheRequestWithItsCaptionsAndTips)
{
    ErrorFlag formError = kFalse;
    auto real = open(cyclesRequest());
    EXPECT_EQ(real->windowTitle(), "Burst Cycles");
    EXPECT_TRUE(real->lblPrompt->isVisible());
    EXPECT_EQ(real->lblPrompt->control().text(), "Cycles per burst");
    EXPECT_TRUE(real->cmdCancel->isVisible());
    EXPECT_FALSE(real->updNumber->isVisible()) << "no spin control for real numbers";
    EXPECT_EQ(real->txtNumber->control().text(), "2");
    EXPECT_TRUE(real->txtNumber->hasFocus());
    EXPECT_EQ(real->cmdOK->control().text(), "&OK");
    EXPECT_EQ(real->cmdCancel->control().text(), "&Cancel");
    EXPECT_EQ(real->txtNumber->toolTip(),
              "You can use the Arrow or Page keys + Shift and/or CTRL to change the number");
    EXPECT_EQ(real->updNumber->toolTip(), "Click to change the number");
    EXPECT_EQ(real->cmdOK->toolTip(), "Click when you've entered the number");
    EXPECT_EQ(real->cmdCancel->toolTip(), "Click if you don't want to enter a number");
    EXPECT_GE(gnFormPtr("frmInputNumber", formError), 0);
    real.reset();
    EXPECT_EQ(gnFormPtr("frmInputNumber", formError), -1) << "unloaded with the dialog";

    auto whole = open(periodRequest());
    EXPECT_FALSE(whole->lblPrompt->isVisible()) << "an empty prompt is hidden";
    EXPECT_FALSE(whole->cmdCancel->isVisible());
    EXPECT_TRUE(whole->updNumber->isVisible());
    EXPECT_EQ(whole->updNumber->value(), 100);
    EXPECT_EQ(whole->updNumber->min(), 2);
    EXPECT_EQ(whole->updNumber->max(), 2000);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(InputNumberDialog, TheKeyboardAloneEntersANumber)
{
    const std::string answer = ask(cyclesRequest(), [](frmInputNumber& dialog) {
        EXPECT_EQ(dialog.lblPrompt->control().text(), "Cycles per burst");
        QTest::keyClicks(dialog.txtNumber, "2.5");  // the shown value is selected
        QTest::keyClick(dialog.txtNumber, Qt::Key_Return);
    });
    EXPECT_TRUE(shown);
    EXPECT_EQ(answer, " 2.5");
    EXPECT_FALSE(bError);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(InputNumberDialog, ACommaLocaleWorksEndToEnd)
{
    host.decimalChar = ",";
    const std::string answer = ask(cyclesRequest(), [&](frmInputNumber& dialog) {
        retype(dialog.txtNumber, "2.4");
        EXPECT_EQ(dialog.txtNumber->control().text(), "24");
        EXPECT_EQ(host.beeps, 1);
        retype(dialog.txtNumber, "2,4");
        QTest::keyClick(dialog.txtNumber, Qt::Key_Up);
        EXPECT_EQ(dialog.txtNumber->control().text(), "2,45");
        QTest::keyClick(dialog.txtNumber, Qt::Key_Return);
    });
    EXPECT_EQ(answer, " 2.45");
}

TEST_F(InputNumberDialog, EnterRunsTheLeaveCheckFirst)
{
    const std::string answer = ask(cyclesRequest(), [&](frmInputNumber& dialog) {
        retype(dialog.txtNumber, "12");
        QTest::keyClick(dialog.txtNumber, Qt::Key_Return);
        settle();
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_TRUE(dialog.txtNumber->hasFocus());
        ASSERT_EQ(host.boxes.size(), 1u);
        EXPECT_EQ(host.boxes[0].text, "In the range  .25 to  10 please!");
        EXPECT_EQ(host.boxes[0].title, "Burst Cycles");

        retype(dialog.txtNumber, "3");
        QTest::keyClick(dialog.txtNumber, Qt::Key_Return);
        EXPECT_EQ(dialog.txtNumber->control().text(), "3.00");
    });
    EXPECT_EQ(answer, " 3");
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(InputNumberDialog, PastedJunkIsRefusedByOKAndItsAccelerator)
{
    const std::string answer = ask(cyclesRequest(), [&](frmInputNumber& dialog) {
        std::size_t attempts = 0;
        for (const char* pasted : {"1e9", "12abc", "-", ","}) {
            QApplication::clipboard()->setText(pasted);
            dialog.txtNumber->selectAll();
            dialog.txtNumber->paste();
            EXPECT_EQ(dialog.txtNumber->control().text(), pasted);
            QTest::mouseClick(dialog.cmdOK, Qt::LeftButton);
            settle();
            EXPECT_TRUE(dialog.isVisible()) << pasted;
            EXPECT_TRUE(dialog.txtNumber->hasFocus()) << pasted;
            EXPECT_EQ(host.boxes.size(), ++attempts) << pasted;
        }
        QTest::keyClick(dialog.txtNumber, Qt::Key_O, Qt::AltModifier);
        settle();
        EXPECT_TRUE(dialog.isVisible()) << "the accelerator is refused as well";
        EXPECT_EQ(host.boxes.size(), ++attempts);
        for (const auto& box : host.boxes) EXPECT_EQ(box.text, "In the range  .25 to  10 please!");

        retype(dialog.txtNumber, "5");
        QTest::keyClick(dialog.txtNumber, Qt::Key_Tab);
        EXPECT_TRUE(dialog.cmdOK->hasFocus());
        QTest::keyClick(dialog.cmdOK, Qt::Key_Return);  // Enter on the focused OK button
    });
    EXPECT_EQ(answer, " 5");
    EXPECT_EQ(host.boxes.size(), 5u);
}

TEST_F(InputNumberDialog, ClipboardKeysAndTypingOverASelectionWorkInBothLocales)
{
    for (const char* decimalChar : {".", ","}) {
        host.decimalChar = decimalChar;
        const QString point = QString::fromLatin1(decimalChar);
        auto dialog = open(cyclesRequest());
        ui::TextBox* box = dialog->txtNumber;

        retype(box, "1" + point + "5");
        QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        EXPECT_EQ(box->selectedText(), "1" + point + "5") << "Ctrl+A selects";
        QTest::keyClick(box, Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QApplication::clipboard()->text(), "1" + point + "5") << "Ctrl+C copies";
        QTest::keyClicks(box, point);
        EXPECT_EQ(box->text(), point) << "the decimal character replaces the selection";
        QTest::keyClicks(box, point);
        EXPECT_EQ(box->text(), point) << "a second one is still refused";
        QTest::keyClick(box, Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(box->text(), "1" + point + "5") << "Ctrl+Z undoes";

        retype(box, "-2");
        QTest::keyClicks(box, "-");
        EXPECT_EQ(box->text(), "-2") << "a second minus is refused";
        box->selectAll();
        QTest::keyClicks(box, "-");
        EXPECT_EQ(box->text(), "-") << "a minus over the selected \"-2\" is taken";

        QApplication::clipboard()->setText("3" + point + "25");
        box->selectAll();
        QTest::keyClick(box, Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(box->text(), "3" + point + "25") << "Ctrl+V pastes over the selection";
        QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(box, Qt::Key_X, Qt::ControlModifier);
        EXPECT_EQ(box->text(), "") << "Ctrl+X cuts";
        EXPECT_EQ(QApplication::clipboard()->text(), "3" + point + "25");

        QTest::keyClick(box, Qt::Key_Up);
        QTest::keyClick(box, Qt::Key_Up);
        EXPECT_EQ(box->text(), "0" + point + "30") << "an emptied box steps on from its limit";
        gKeyMouseIncrementEnd();
        EXPECT_EQ(host.beeps, 2) << "only the refused decimal character and minus beep";
        host.beeps = 0;
    }
}

TEST_F(InputNumberDialog, AWholeNumberBoxRefusesAPastedFraction)
{
    const std::string answer = ask(periodRequest(), [&](frmInputNumber& dialog) {
        QApplication::clipboard()->setText("12.5");
        dialog.txtNumber->selectAll();
        QTest::keyClick(dialog.txtNumber, Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(dialog.txtNumber->control().text(), "12.5");
        QTest::keyClick(dialog.txtNumber, Qt::Key_Return);
        settle();
        EXPECT_TRUE(dialog.isVisible());
        ASSERT_EQ(host.boxes.size(), 1u);
        EXPECT_EQ(host.boxes[0].text, "In the range  2 to  2000 please!");
        retype(dialog.txtNumber, "12");
        QTest::keyClick(dialog.txtNumber, Qt::Key_Return);
    });
    EXPECT_EQ(answer, " 12");
}

TEST_F(InputNumberDialog, CancelEscapeAndTheFrameLeaveWithNothing)
{
    EXPECT_EQ(ask(cyclesRequest(),
                  [](frmInputNumber& dialog) {
                      retype(dialog.txtNumber, "99");
                      QTest::mouseClick(dialog.cmdCancel, Qt::LeftButton);
                  }),
              "");
    EXPECT_TRUE(host.boxes.empty()) << "Cancel does not check the number";

    EXPECT_EQ(ask(cyclesRequest(),
                  [](frmInputNumber& dialog) { QTest::keyClick(dialog.txtNumber, Qt::Key_Escape); }),
              "");

    EXPECT_EQ(ask(periodRequest(),
                  [](frmInputNumber& dialog) {
                      QTest::keyClick(dialog.txtNumber, Qt::Key_Escape);
                      settle();
                      EXPECT_TRUE(dialog.isVisible()) << "no Cancel button, no Escape";
                      dialog.close();  // the frame's close button
                  }),
              "");
    EXPECT_FALSE(bError);
}

TEST_F(InputNumberDialog, WholeNumbersTakeDigitsAndTheSpinControl)
{
    auto dialog = open(periodRequest());
    retype(dialog->txtNumber, "5.0");
    EXPECT_EQ(dialog->txtNumber->control().text(), "50");
    EXPECT_EQ(host.beeps, 1);

    const QPoint upArrow(dialog->updNumber->width() / 2, 2);
    const QPoint downArrow(dialog->updNumber->width() / 2, dialog->updNumber->height() - 3);
    QTest::mouseClick(dialog->updNumber, Qt::LeftButton, {}, upArrow);
    EXPECT_EQ(dialog->txtNumber->control().text(), "51") << "the spin steps from the typed number";
    QTest::mouseClick(dialog->updNumber, Qt::LeftButton, {}, downArrow);
    QTest::mouseClick(dialog->updNumber, Qt::LeftButton, {}, downArrow);
    EXPECT_EQ(dialog->txtNumber->control().text(), "49");
    EXPECT_TRUE(dialog->txtNumber->hasFocus());
    EXPECT_FALSE(gSteppingState().stepping);
}

TEST_F(InputNumberDialog, ArrowAndPageKeysStepTheNumber)
{
    InputNumber frequency = cyclesRequest();
    frequency.ifValue = 10;
    frequency.ifMax = 2000;
    frequency.ifMin = 10;
    frequency.ifResolution = 0.1f;
    auto dialog = open(frequency);
    ui::TextBox* box = dialog->txtNumber;
    std::vector<std::string> held;
    for (int i = 0; i < 5; ++i) {
        QTest::keyPress(box, Qt::Key_Up);
        held.push_back(box->control().text());
    }
    QTest::keyRelease(box, Qt::Key_Up);
    EXPECT_EQ(held, (std::vector<std::string>{"10.1", "10.3", "10.7", "11.4", "12.5"}));
    QTest::keyClick(box, Qt::Key_PageUp, Qt::ControlModifier);
    EXPECT_EQ(box->control().text(), "112.5") << "released: a new press starts at one resolution";
    QTest::keyClick(box, Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(box->control().text(), "10.0");
    QTest::keyClick(box, Qt::Key_Down);
    EXPECT_EQ(host.beeps, 1) << "against the minimum";
    QTest::keyClick(box, Qt::Key_Home, Qt::ShiftModifier);
    EXPECT_EQ(box->control().text(), "2000.0");

    // Plain Home moves the caret and leaves the number alone.
    box->setCursorPosition(3);
    QTest::keyClick(box, Qt::Key_Home);
    EXPECT_EQ(box->control().text(), "2000.0");
    EXPECT_EQ(box->cursorPosition(), 0);
    // As X11 delivers it: with the DEL character as its text.
    QTest::sendKeyEvent(QTest::Click, box, Qt::Key_Delete, QString(QChar(0x7F)), Qt::NoModifier);
    EXPECT_EQ(box->control().text(), "000.0") << "Delete edits without passing the key filter";
    EXPECT_EQ(host.beeps, 1);
}

TEST_F(InputNumberDialog, AFailingLoadShowsNoDialog)
{
    InputNumber outside = periodRequest();
    outside.ifValue = 5000;
    EXPECT_EQ(ask(outside, [](frmInputNumber& dialog) { dialog.reject(); }), "");
    EXPECT_FALSE(shown);
    EXPECT_TRUE(bError);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Value (5000) > Max (2000)");
}

}  // namespace
