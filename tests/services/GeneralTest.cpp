// Start-up texts, the text helpers, and enabling a form's controls.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "base/Trap.h"
#include "services/modControlsEnable.h"
#include "services/modErrorHandler.h"
#include "services/modFormPtr.h"
#include "services/modGeneral.h"
#include "tests/support/FakeControls.h"
#include "tests/support/FileFaults.h"
#include "tests/support/ScriptedHost.h"

namespace {

using testing_support::FakeControl;
using testing_support::FakeForm;
using testing_support::ScriptedHost;

class StartUpTest : public ::testing::Test {
protected:
    void SetUp() override { gInstallErrorHandler(); }
    void TearDown() override { rt::setErrorReporter(nullptr); }

    std::string versionOf(const std::string& release)
    {
        host.osVersion = host::SystemVersion{release, "#1 SMP PREEMPT_DYNAMIC Debian 6.1.112-1"};
        return gsGGetOSVersion(flag);
    }

    ScriptedHost host;
    ErrorFlag flag = kFalse;
};

TEST_F(StartUpTest, DescribesTheRunningKernel)
{
    EXPECT_EQ(versionOf("6.1.0-27-amd64"), "Linux v6.1 Build 0 #1 SMP PREEMPT_DYNAMIC Debian 6.1.112-1");
    EXPECT_EQ(versionOf("5.15.167.4-microsoft-standard").substr(0, 22), "Linux v5.15 Build 167 ");
    EXPECT_EQ(versionOf("6.8").substr(0, 18), "Linux v6.8 Build 0");
    EXPECT_EQ(flag, kFalse);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(StartUpTest, AnUnreadableVersionIsReportedThenCalledUnknown)
{
    host.osVersion = host::SystemVersion{"weird", "#1"};
    gGStartUpSetStuff(flag);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_NE(host.boxes[0].text.find("modGeneral.gsGGetOSVersion."), std::string::npos);
    EXPECT_EQ(gsOSVersion, "Windows version unknown");
    EXPECT_EQ(flag, kFalse) << "start-up goes on with the unknown version";
    EXPECT_EQ(gsProgNameVersion, "Wavelark v1.0.0");
}

TEST_F(StartUpTest, KeepsTheRegionalCheckUnlessItFailed)
{
    host.saveSetting("Marlo", "Wavelark", "UserRegion", "49");
    gGStartUpSetStuff(flag);
    EXPECT_EQ(gbUserRegionChanged, kTrue);

    // The settings cannot be read: the check fails into the error reporter.
    ::chmod(host.settingsFile().c_str(), 0);
    testing_support::NoFileOverride asAUser;
    host.regionCode = "49";
    host.boxes.clear();
    gGStartUpSetStuff(flag);
    EXPECT_EQ(gbUserRegionChanged, kTrue) << "a failed check leaves the flag as it was";
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].title, "Unexpected Error!");
    EXPECT_NE(host.boxes[0].text.find("Path/File access error"), std::string::npos);
    EXPECT_EQ(flag, kFalse);
    gbUserRegionChanged = kFalse;
}

TEST(TextHelpers, TrimDropsNulsAndBlanksAtBothEnds)
{
    ErrorFlag flag = kFalse;
    using namespace std::string_literals;
    EXPECT_EQ(gsGTrim(std::nullopt, flag), "");
    EXPECT_EQ(gsGTrim("\0\0  abc  \0\0"s, flag), "abc");
    EXPECT_EQ(gsGTrim(" \0 \0 \0 "s, flag), "");
    EXPECT_EQ(gsGTrim("\0\0\0"s, flag), "");
    EXPECT_EQ(gsGTrim("   "s, flag), "");
    EXPECT_EQ(gsGTrim("a\0b "s, flag), "a\0b"s) << "inner NULs stay";
    EXPECT_EQ(gbGLenTrim("\0 "s, flag), kFalse);
    EXPECT_EQ(gbGLenTrim(" x"s, flag), kTrue);
    EXPECT_EQ(gsGStringLeftStrip("xxaxb", "x", flag), "axb");
    EXPECT_EQ(flag, kFalse);
}

TEST(TextHelpers, CharacterCodeOfTheFirstCharacter)
{
    EXPECT_EQ(gnGAscii(""), 0);
    EXPECT_EQ(gnGAscii("A"), 65);
    EXPECT_EQ(gnGAscii(",5"), 44);
    EXPECT_EQ(gnGAscii("\xC3\xA9"), 233);  // é
}

TEST(FrequencyText, APlayedFrequencyIsNeverShownRoundedToTheOneAsked)
{
    ScriptedHost host;
    ErrorFlag flag = kFalse;
    // 440 Hz looped in 44.1 kHz: 9 cycles in 902 samples.
    EXPECT_EQ(gsFrequencyText(44100.0 * 9 / 902, 440, flag), "440.022");
    EXPECT_EQ(gsFrequencyText(1000.0004, 1000, flag), "1000.0004") << "more decimals until it differs";
    EXPECT_EQ(gsFrequencyText(999.99996, 1000, flag), "999.99996");
    EXPECT_EQ(gsFrequencyText(10.5, 10, flag), "10.500") << "three decimals at least";
    // Exact, the asked text: the float's own binary digits are no difference.
    EXPECT_EQ(gsFrequencyText(1000, 1000, flag), "1000");
    EXPECT_EQ(gsFrequencyText(440.1, 440.1f, flag), "440.1");
    EXPECT_EQ(gsFrequencyText(440.1 + 1e-11, 440.1f, flag), "440.1") << "beyond nine decimals";
    host.decimalChar = ",";
    EXPECT_EQ(gsFrequencyText(44100.0 * 9 / 902, 440, flag), "440,022");
    EXPECT_EQ(gsFrequencyText(997.5, 997.5f, flag), "997,5");
    EXPECT_EQ(flag, kFalse);
}

TEST(Focus, OnlyAnEnabledVisibleControlTakesIt)
{
    FakeControl box("txtFrequency1", "TextBox");
    EXPECT_EQ(gbGSetFocus(box), kTrue);
    EXPECT_EQ(box.focusCount, 1);
    box.setVisible(false);
    EXPECT_EQ(gbGSetFocus(box), kFalse);
    box.setVisible(true);
    box.setEnabled(false);
    EXPECT_EQ(gbGSetFocus(box), kFalse);
    EXPECT_EQ(box.focusCount, 1);
}

TEST(ControlsEnable, SwitchesEverythingButSeparatorsAndTheColourDialog)
{
    FakeForm other("frmOther");
    FakeForm form("frmWavelark");
    FakeControl& text = form.add("txtFrequency1", "TextBox");
    FakeControl& menu = form.add("mnuFile", "Menu", "&File");
    FakeControl& separator = form.add("mnuFiHyphen", "Menu", "-");
    FakeControl& dialog = form.add("CommonDialogue", "CommonDialog");
    FakeControl& label = form.add("lblPercent", "Label", "-");  // only menu separators are skipped
    ErrorFlag flag = kFalse;

    EXPECT_EQ(gnFormPtr("frmWavelark", flag), 1);
    EXPECT_EQ(gnFormPtr("frmAbout", flag), -1);

    gControlsEnable("frmWavelark", kFalse, flag);
    EXPECT_FALSE(text.enabled());
    EXPECT_FALSE(menu.enabled());
    EXPECT_FALSE(label.enabled());
    EXPECT_TRUE(separator.enabled());
    EXPECT_TRUE(dialog.enabled());

    gControlsEnable("frmWavelark", kTrue, flag);
    EXPECT_TRUE(text.enabled());
    EXPECT_TRUE(menu.enabled());
    EXPECT_EQ(flag, kFalse);
}

TEST(ControlsEnable, AFormThatIsNotOpenIsLeftAlone)
{
    FakeForm form("frmAbout");
    FakeControl& button = form.add("cmdOK", "CommandButton");
    ErrorFlag flag = kFalse;
    gControlsEnable("frmWavelark", kFalse, flag);
    EXPECT_TRUE(button.enabled());
    EXPECT_EQ(flag, kFalse);
}

}  // namespace
