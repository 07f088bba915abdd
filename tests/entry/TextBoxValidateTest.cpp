// The text box's leave-check, driven with real key and mouse events: a bad
// value keeps the focus whichever way the user tries to leave, the message
// comes once, and the control that would have taken the focus does nothing.
#define QTEST_QPA_MOUSE_HANDLING  // presses reach the window first, as real ones do
#include <gtest/gtest.h>

#include <QApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QSpontaneKeyEvent>
#include <QTest>
#include <QTimer>

#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "entry/modControl.h"
#include "tests/support/ScriptedHost.h"

namespace {

// A window with a numeric box under the burst-cycles rule, a button with an
// accelerator, a second box, a button that leaves without asking, and a label.
class TestForm : public QWidget {
public:
    TestForm()
    {
        txtCycles = new ui::TextBox("txtCycles", this);
        cmdGo = new ui::CommandButton("cmdGo", "&Go", this);
        txtOther = new ui::TextBox("txtOther", this);
        cmdQuit = new ui::CommandButton("cmdQuit", "&Quit", this);
        lblNote = new ui::Label("lblNote", "Note", this);
        ui::setCausesValidation(cmdQuit, false);
        auto* layout = new QHBoxLayout(this);
        for (QWidget* widget : std::initializer_list<QWidget*>{txtCycles, cmdGo, txtOther, cmdQuit, lblNote})
            layout->addWidget(widget);
        txtCycles->Validate = [this](bool& cancel) {
            ErrorFlag bError = kFalse;
            ++validations;
            cancel = gbCtrlTxtError(10, 0.25f, 0.05f, kFalse, "Cycles", "Test", txtCycles->control(), bError);
        };
        cmdGo->Click = [this] { ++goClicks; };
        cmdQuit->Click = [this] { ++quitClicks; };
        cmdGo->installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::FocusIn) ++goFocusIns;
        return false;
    }

    ui::TextBox* txtCycles;
    ui::CommandButton* cmdGo;
    ui::TextBox* txtOther;
    ui::CommandButton* cmdQuit;
    ui::Label* lblNote;
    int validations = 0;
    int goClicks = 0;
    int quitClicks = 0;
    int goFocusIns = 0;
};

class TextBoxValidate : public ::testing::Test {
protected:
    void SetUp() override
    {
        form.show();
        form.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
        form.txtCycles->setFocus();
        QCoreApplication::processEvents();
        ASSERT_TRUE(form.txtCycles->hasFocus());
    }

    // Lets deferred focus changes happen.
    static void settle()
    {
        for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
    }

    void expectRefusedOnce()
    {
        settle();
        EXPECT_EQ(host.boxes.size(), 1u);
        if (!host.boxes.empty()) {
            EXPECT_EQ(host.boxes[0].text, "In the range  .25 to  10 (Cycles) please!");
        }
        EXPECT_TRUE(form.txtCycles->hasFocus()) << "the focus stays in the box";
    }

    testing_support::ScriptedHost host;
    TestForm form;
};

TEST_F(TextBoxValidate, TabAsksBeforeLeaving)
{
    form.txtCycles->setText("12");
    QTest::keyClick(form.txtCycles, Qt::Key_Tab);
    expectRefusedOnce();

    form.txtCycles->setText("3");
    QTest::keyClick(form.txtCycles, Qt::Key_Tab);
    settle();
    EXPECT_TRUE(form.cmdGo->hasFocus());
    EXPECT_EQ(form.txtCycles->control().text(), "3.00");
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(TextBoxValidate, ARefusedClickDoesNotReachTheClickedControl)
{
    form.txtCycles->setText("12abc");
    QTest::mouseClick(form.cmdGo, Qt::LeftButton);
    expectRefusedOnce();
    EXPECT_EQ(form.goClicks, 0);
    EXPECT_EQ(form.goFocusIns, 0) << "the focus never left the box";
    EXPECT_EQ(form.validations, 1);

    QTest::mouseClick(form.txtOther, Qt::LeftButton);
    settle();
    EXPECT_TRUE(form.txtCycles->hasFocus());
    EXPECT_EQ(host.boxes.size(), 2u);

    form.txtCycles->setText("5");
    QTest::mouseClick(form.cmdGo, Qt::LeftButton);
    settle();
    EXPECT_EQ(form.goClicks, 1);
    EXPECT_TRUE(form.cmdGo->hasFocus());
    EXPECT_EQ(form.txtCycles->control().text(), "5.00");
    EXPECT_EQ(form.validations, 3) << "an allowed leave is asked once";
}

TEST_F(TextBoxValidate, ARefusedAcceleratorDoesNotPressItsButton)
{
    form.txtCycles->setText("-");
    QTest::keyClick(form.txtCycles, Qt::Key_G, Qt::AltModifier);
    expectRefusedOnce();
    EXPECT_EQ(form.goClicks, 0);

    form.txtCycles->setText("0.25");
    QTest::keyClick(form.txtCycles, Qt::Key_G, Qt::AltModifier);
    settle();
    QTest::qWait(300);  // the accelerator's animated click
    EXPECT_EQ(form.goClicks, 1);
    EXPECT_EQ(host.boxes.size(), 1u);
}

TEST_F(TextBoxValidate, ClicksThatLeaveTheFocusWhereItIsDoNotAsk)
{
    form.txtCycles->setText("");
    QTest::mouseClick(form.lblNote, Qt::LeftButton);
    QTest::mouseClick(form.txtCycles, Qt::LeftButton);
    QTest::mouseClick(&form, Qt::LeftButton, {}, QPoint(1, 1));
    settle();
    EXPECT_EQ(form.validations, 0);
    EXPECT_TRUE(form.txtCycles->hasFocus());
}

TEST_F(TextBoxValidate, AControlMarkedNotToAskActsAtOnce)
{
    form.txtCycles->setText(",");
    QTest::mouseClick(form.cmdQuit, Qt::LeftButton);
    QTest::keyClick(form.cmdQuit, Qt::Key_Q, Qt::AltModifier);
    settle();
    QTest::qWait(300);
    EXPECT_EQ(form.quitClicks, 2);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(TextBoxValidate, AFocusChangeFromCodeIsAskedAndTakenBack)
{
    form.txtCycles->setText("1e9");
    form.txtOther->setFocus();
    expectRefusedOnce();
}

TEST_F(TextBoxValidate, APressSentStraightToAWidgetIsRefusedToo)
{
    form.txtCycles->setText("11");
    const QPointF centre = QRectF(form.cmdGo->rect()).center();
    QMouseEvent press(QEvent::MouseButtonPress, centre, form.cmdGo->mapToGlobal(centre),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, centre, form.cmdGo->mapToGlobal(centre),
                        Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
    QSpontaneKeyEvent::setSpontaneous(&press);
    QSpontaneKeyEvent::setSpontaneous(&release);
    QApplication::instance()->notify(form.cmdGo, &press);
    QApplication::instance()->notify(form.cmdGo, &release);
    expectRefusedOnce();
    EXPECT_EQ(form.goClicks, 0);
}

TEST_F(TextBoxValidate, AnotherWindowOrAPopupIsNotLeaving)
{
    form.txtCycles->setText("99");
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    other.close();
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));

    QMenu menu;
    menu.addAction("Copy");
    QTimer::singleShot(50, &menu, &QMenu::close);
    menu.exec(form.mapToGlobal(QPoint(5, 5)));
    settle();
    EXPECT_EQ(form.validations, 0);
    EXPECT_TRUE(form.txtCycles->hasFocus());
}

TEST_F(TextBoxValidate, TheMessageWindowTakingTheFocusDoesNotAskAgain)
{
    // Stand in for a real message box: a window that takes the focus while
    // the message is up, then gives it back.
    host.onBox = [this](const testing_support::ScriptedHost::Box&) {
        QWidget box;
        box.show();
        box.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&box));
        box.close();
        form.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&form));
    };
    form.txtCycles->setText("0");
    QTest::mouseClick(form.cmdGo, Qt::LeftButton);
    expectRefusedOnce();
    EXPECT_EQ(form.validations, 1);
}

}  // namespace
