// The Qt stand-ins for the window's controls raise the events the handlers
// are written for.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "controls/PictureBox.h"
#include "controls/QtConversions.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "controls/VScrollBar.h"
#include "platform/Colours.h"

namespace {

TEST(TextBoxEvents, KeyPressCanSwallowOrReplaceACharacter)
{
    ui::TextBox box("txtTest");
    std::vector<int> pressed;
    box.KeyPress = [&](std::int16_t& key) {
        pressed.push_back(key);
        if (key == 'x') key = 0;          // swallowed
        if (key == ',') key = '.';        // replaced
    };
    QTest::keyClicks(&box, "1x,5");
    EXPECT_EQ(box.control().text(), "1.5");
    EXPECT_EQ(pressed, (std::vector<int>{'1', 'x', ',', '5'}));
    QTest::keyClick(&box, Qt::Key_Backspace);
    EXPECT_EQ(pressed.back(), 8);
    QTest::keyClick(&box, Qt::Key_Return);
    EXPECT_EQ(pressed.back(), 13);
}

TEST(TextBoxEvents, KeyDownAndKeyUpCarryKeyCodeAndShiftState)
{
    ui::TextBox box("txtTest");
    std::vector<std::pair<int, int>> downs;
    std::vector<int> ups;
    // Shift, Ctrl and Alt raise their own key events (codes 16 to 18); leave them out.
    const auto isModifier = [](int code) { return code >= 16 && code <= 18; };
    box.KeyDown = [&](std::int16_t& code, std::int16_t shift) {
        if (!isModifier(code)) downs.emplace_back(code, shift);
    };
    box.KeyUp = [&](std::int16_t& code, std::int16_t) {
        if (!isModifier(code)) ups.push_back(code);
    };
    QTest::keyClick(&box, Qt::Key_Up);
    QTest::keyClick(&box, Qt::Key_PageUp, Qt::ControlModifier);
    QTest::keyClick(&box, Qt::Key_Home, Qt::ShiftModifier | Qt::ControlModifier);
    QTest::keyClick(&box, Qt::Key_Down, Qt::AltModifier);
    ASSERT_EQ(downs.size(), 4u);
    EXPECT_EQ(downs[0], std::make_pair(38, 0));
    EXPECT_EQ(downs[1], std::make_pair(33, 2));
    EXPECT_EQ(downs[2], std::make_pair(36, 3));
    EXPECT_EQ(downs[3], std::make_pair(40, 4));
    EXPECT_EQ(ups, (std::vector<int>{38, 33, 36, 40}));
}

TEST(TextBoxEvents, ChangeRunsForTypedAndSetText)
{
    ui::TextBox box("txtTest");
    int changes = 0;
    box.Change = [&] { ++changes; };
    box.control().setText("440");
    QTest::keyClicks(&box, "0");
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(box.control().text(), "4400");
}

TEST(UpDownControl, StepsWithinItsLimitsAndRaisesChangeEvenAtALimit)
{
    ui::UpDown spin("updTest");
    ui::TextBox buddy("txtBuddy");
    spin.setBuddy(&buddy);
    spin.setMin(0);
    spin.setMax(10);
    spin.setIncrement(4);
    spin.setValue(5);
    EXPECT_EQ(buddy.control().text(), "5");
    int changes = 0;
    spin.Change = [&] { ++changes; };
    spin.stepBy(+1);
    EXPECT_EQ(spin.value(), 9);
    spin.stepBy(+1);
    EXPECT_EQ(spin.value(), 10);
    spin.stepBy(+1);
    EXPECT_EQ(spin.value(), 10);
    EXPECT_EQ(changes, 3) << "a step against the limit still raises Change";
    EXPECT_EQ(buddy.control().text(), "10");
    spin.setValue(10);
    EXPECT_EQ(changes, 3) << "setting the same value is no change";
}

TEST(UpDownControl, MouseButtonsAndAutoRepeatWhileHeld)
{
    ui::UpDown spin("updTest");
    spin.resize(18, 24);
    spin.setMax(1000);
    std::vector<int> downs;
    std::vector<int> upsReleased;
    int changes = 0;
    spin.MouseDown = [&](std::int16_t button, std::int16_t) { downs.push_back(button); };
    spin.MouseUp = [&](std::int16_t button, std::int16_t) { upsReleased.push_back(button); };
    spin.Change = [&] { ++changes; };

    QTest::mousePress(&spin, Qt::LeftButton, {}, QPoint(9, 3));
    QTest::qWait(700);  // held: the first repeat after 400 ms, then every 60 ms
    QTest::mouseRelease(&spin, Qt::LeftButton, {}, QPoint(9, 3));
    EXPECT_EQ(downs, std::vector<int>{1});
    EXPECT_EQ(upsReleased, std::vector<int>{1});
    EXPECT_GE(changes, 3);
    EXPECT_EQ(spin.value(), changes) << "every step went up by one";

    const int before = spin.value();
    QTest::mouseClick(&spin, Qt::LeftButton, {}, QPoint(9, 20));
    EXPECT_EQ(spin.value(), before - 1);
    QTest::mouseClick(&spin, Qt::RightButton, {}, QPoint(9, 3));
    EXPECT_EQ(spin.value(), before - 1) << "only the left button steps";
    EXPECT_EQ(downs.back(), 2);
}

TEST(ScrollBar, ChangeForClicksAndSetsScrollWhileDragging)
{
    ui::VScrollBar bar("vsbTest");
    bar.setRange(0, 32767);
    int changes = 0;
    int scrolls = 0;
    bar.Change = [&] { ++changes; };
    bar.Scroll = [&] { ++scrolls; };
    bar.setValue16(100);
    EXPECT_EQ(changes, 1);
    bar.setSliderDown(true);
    bar.setSliderPosition(200);  // a drag
    EXPECT_EQ(scrolls, 1);
    EXPECT_EQ(changes, 1);
    bar.setSliderDown(false);
    EXPECT_EQ(bar.Value(), 200);
    EXPECT_THROW(bar.setValue16(-1), std::exception);
}

TEST(PictureBoxSurface, DrawsInTheForeColourAndKeepsItUntilCleared)
{
    ui::PictureBox picture("picTest");
    picture.resize(110, 60);
    picture.setBackColor(0x000000);
    picture.setForeColor(ui::kColourGreen);
    picture.line(0, 10, 50, 10);
    const QPoint inside = picture.contentsRect().topLeft();
    Q_UNUSED(inside);
    EXPECT_EQ(picture.image().pixelColor(25, 10), QColor(0, 255, 0));
    picture.lineTo(50, 40);  // from the end of the last line
    EXPECT_EQ(picture.image().pixelColor(50, 30), QColor(0, 255, 0));
    picture.setForeColor(ui::kColourRed);
    picture.box(60, 5, 90, 30);
    EXPECT_EQ(picture.image().pixelColor(60, 20), QColor(255, 0, 0));
    EXPECT_EQ(picture.image().pixelColor(75, 20), QColor(0, 0, 0)) << "a box is not filled";
    picture.cls();
    EXPECT_EQ(picture.image().pixelColor(25, 10), QColor(0, 0, 0));
}

TEST(Colours, BlueGreenRedValuesAndSystemColours)
{
    EXPECT_EQ(ui::toQColor(0x0000FF), QColor(255, 0, 0));
    EXPECT_EQ(ui::toQColor(0x00FFFF), QColor(255, 255, 0));
    EXPECT_EQ(ui::fromQColor(QColor(1, 2, 3)), 0x030201);
    EXPECT_EQ(ui::toQColor(ui::kColourButtonFace), QApplication::palette().color(QPalette::Button));
    EXPECT_EQ(ui::toQColor(ui::kColourButtonText),
              QApplication::palette().color(QPalette::ButtonText));
}

TEST(Buttons, SettingAValueFromCodeRunsClick)
{
    QWidget group;
    auto* first = new ui::OptionButton("optFirst", "First", &group);
    auto* second = new ui::OptionButton("optSecond", "Second", &group);
    int firstClicks = 0;
    int secondClicks = 0;
    first->Click = [&] { ++firstClicks; };
    second->Click = [&] { ++secondClicks; };
    first->setValue(true);
    first->setValue(true);  // already selected: Click runs again
    EXPECT_EQ(firstClicks, 2);
    second->setValue(true);
    EXPECT_FALSE(first->value());
    EXPECT_EQ(secondClicks, 1);
    second->setValue(false);  // clears it alone, no Click, no partner chosen
    EXPECT_FALSE(second->value());
    EXPECT_FALSE(first->value());
    EXPECT_EQ(firstClicks + secondClicks, 3);

    ui::CheckBox check("chkTest", "Test");
    int checks = 0;
    check.Click = [&] { ++checks; };
    check.setValue(1);
    check.setValue(0);
    EXPECT_EQ(checks, 2);
    EXPECT_EQ(check.value(), 0);
}

// The core reaches every kind through control(): the text it reads and sets
// is the box's text or the caption, lines end in "\r\n", an up-down's value
// and limits are the widget's, and focus and enabling act on the widget
// itself, whichever pointer the window holds.
TEST(CoreView, EveryKindReadsAndSetsThroughItsControl)
{
    QWidget form;
    auto* box = new ui::TextBox("txtBox", &form);
    auto* report = new ui::MultiLineTextBox("txtReport", &form);
    auto* label = new ui::Label("lblCaption", "&Level", &form);
    auto* check = new ui::CheckBox("chkMute", "&Mute", &form);
    auto* spin = new ui::UpDown("updSpin", &form);
    auto* bar = new ui::VScrollBar("vsbLevel", &form);

    int changes = 0;
    box->Change = [&] { ++changes; };
    box->control().setText("12.5");
    EXPECT_EQ(box->text(), "12.5");
    EXPECT_EQ(changes, 1) << "a text set by the core is a change";
    report->control().setText("one\r\ntwo");
    EXPECT_EQ(report->toPlainText(), "one\ntwo");
    EXPECT_EQ(report->control().text(), "one\r\ntwo");
    label->control().setText("Ou&t");
    EXPECT_EQ(label->text(), "Ou&t");
    EXPECT_EQ(check->control().text(), "&Mute");
    EXPECT_EQ(bar->control().text(), "") << "a scroll bar has no text";

    ui::UpDownControl& upDown = spin->control();
    upDown.setMax(40);
    upDown.setValue(30);
    EXPECT_EQ(spin->value(), 30);
    EXPECT_EQ(upDown.max(), 40);

    const std::pair<ui::Control*, const char*> kinds[] = {
        {&box->control(), "TextBox"},  {&report->control(), "TextBox"},
        {&label->control(), "Label"},  {&check->control(), "CheckBox"},
        {&spin->control(), "UpDown"},  {&bar->control(), "VScrollBar"}};
    for (const auto& [control, type] : kinds) EXPECT_EQ(control->typeName(), type);
    EXPECT_EQ(box->control().name(), "txtBox");

    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    check->control().setFocus();
    EXPECT_TRUE(check->hasFocus());
    static_cast<QWidget*>(box)->setFocus();
    EXPECT_TRUE(box->hasFocus()) << "Qt's own setFocus is not hidden";
    box->control().setEnabled(false);
    EXPECT_FALSE(box->isEnabled());
    box->hide();
    EXPECT_FALSE(box->control().visible());
    EXPECT_TRUE(label->control().visible());
}

}  // namespace
