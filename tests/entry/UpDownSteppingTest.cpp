// A spin control held down with the mouse, wired as the main window wires
// its spin controls: its own auto-repeat drives the growing increments.
#define QTEST_QPA_MOUSE_HANDLING
#include <gtest/gtest.h>

#include <vector>

#include <QHBoxLayout>
#include <QTest>

#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "entry/modKeyMouseIncrement.h"
#include "entry/modMouseDown.h"
#include "entry/modUpDownSet.h"
#include "tests/support/ScriptedHost.h"

namespace {

class SpinForm : public QWidget {
public:
    SpinForm()
    {
        txtBurstPeriod = new ui::TextBox("txtBurstPeriod", this);
        updBurstPeriod = new ui::UpDown("updBurstPeriod", this);
        updBurstPeriod->setFixedSize(18, 40);
        updBurstPeriod->setBuddy(txtBurstPeriod);
        auto* layout = new QHBoxLayout(this);
        layout->addWidget(txtBurstPeriod);
        layout->addWidget(updBurstPeriod);
        updBurstPeriod->MouseDown = [this](std::int16_t button, std::int16_t) {
            ErrorFlag bError = kFalse;
            gMouseDownInit(button, updBurstPeriod->control(), bError);
        };
        updBurstPeriod->Change = [this] {
            ErrorFlag bError = kFalse;
            gMouseDown(gSteppingState().lastButton, updBurstPeriod->control(), bError);
            increments.push_back(updBurstPeriod->increment());
        };
        updBurstPeriod->MouseUp = [](std::int16_t, std::int16_t) { gKeyMouseIncrementEnd(); };
    }

    ui::TextBox* txtBurstPeriod;
    ui::UpDown* updBurstPeriod;
    std::vector<std::int32_t> increments;
};

class UpDownStepping : public ::testing::Test {
protected:
    void SetUp() override
    {
        gKeyMouseIncrementEnd();
        form.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    }

    void load(std::int32_t value)
    {
        ErrorFlag bError = kFalse;
        gUpDownSet(value, 2000, 0, 1, form.updBurstPeriod->control(), bError);
        ASSERT_FALSE(bError);
        // Loading raised a change, which (wired as the main window wires it)
        // counts as a step after an earlier left-button press: start afresh.
        gKeyMouseIncrementEnd();
        form.increments.clear();
    }

    QPoint upArrow() const { return {9, 5}; }
    QPoint downArrow() const { return {9, 35}; }

    // Holds the arrow until `done` holds (the control repeats by itself).
    template <class Done>
    void hold(QPoint arrow, Done done)
    {
        QTest::mousePress(form.updBurstPeriod, Qt::LeftButton, {}, arrow);
        EXPECT_TRUE(QTest::qWaitFor(done, 20000));
        QTest::mouseRelease(form.updBurstPeriod, Qt::LeftButton, {}, arrow);
    }

    testing_support::ScriptedHost host;
    SpinForm form;
};

TEST_F(UpDownStepping, HoldingAnArrowGrowsTheIncrementToATwentiethOfTheRange)
{
    load(0);
    hold(upArrow(), [&] { return form.increments.size() >= 17; });
    const std::vector<std::int32_t> expected = {1,  2,  4,  7,  11, 16,  22,  29, 37,
                                                46, 56, 67, 79, 92, 106, 106, 106};
    ASSERT_GE(form.increments.size(), expected.size());
    EXPECT_EQ(std::vector<std::int32_t>(form.increments.begin(), form.increments.begin() + 17),
              expected);
    EXPECT_EQ(form.txtBurstPeriod->control().text(), std::to_string(form.updBurstPeriod->value()));
    EXPECT_EQ(host.beeps, 0);

    // Released and pressed again: back to single steps.
    const std::int32_t before = form.updBurstPeriod->value();
    form.increments.clear();
    QTest::mouseClick(form.updBurstPeriod, Qt::LeftButton, {}, downArrow());
    EXPECT_EQ(form.updBurstPeriod->value(), before - 1);
    EXPECT_EQ(form.increments, std::vector<std::int32_t>{1});
}

TEST_F(UpDownStepping, HoldingAgainstTheMaximumBeeps)
{
    load(1900);
    hold(upArrow(), [&] { return host.beeps >= 1; });
    EXPECT_EQ(form.updBurstPeriod->value(), 2000);
    EXPECT_EQ(form.txtBurstPeriod->control().text(), "2000");
    // 1901, 1902, 1904, 1908, 1915, 1926, 1942, 1964, 1993, then 2000 twice.
    ASSERT_GE(form.increments.size(), 11u);
    EXPECT_EQ(form.increments[9], 46);
    EXPECT_EQ(form.increments[10], 46) << "a step that did not move keeps the increment";
}

}  // namespace
