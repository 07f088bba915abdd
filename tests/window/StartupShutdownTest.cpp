// The main window's life on the virtual card: what start-up restores, makes
// and refuses, what shutdown stores and gives back, in a real settings file.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QApplication>
#include <QTabWidget>
#include <QTest>

#include "controls/PictureBox.h"
#include "controls/SimpleControls.h"
#include "controls/TextBox.h"
#include "controls/UpDown.h"
#include "controls/VScrollBar.h"
#include "engine/modWaveInOut.h"
#include "platform/Colours.h"
#include "services/modErrorHandler.h"
#include "services/modGeneral.h"
#include "tests/support/FileFaults.h"
#include "tests/support/VirtualCardSession.h"
#include "tests/window/WindowLifeFixture.h"

namespace {

using namespace testing_support;
using Settings = std::map<std::string, std::string>;
namespace loopback = mm::loopback;

// ---- Start-up ------------------------------------------------------------

TEST_F(WindowLife, ASecondCopyBringsTheFirstForwardAndTouchesNothing)
{
    host.earlierCopyRunning = true;
    start();
    EXPECT_TRUE(window->unloadedUnseen());
    EXPECT_EQ(host.activationRequests, 1);
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_FALSE(std::ifstream(host.settingsFile()).good()) << "no settings read or written";
    EXPECT_TRUE(loopback::mixerWrites().empty());
    EXPECT_EQ(text(window->txtInfo), "");
}

TEST_F(WindowLife, AFirstCopyThatVanishedBeforeTheRequestIsReported)
{
    gsProgNameVersion.clear();  // start-up has not built the title yet
    host.earlierCopyRunning = true;
    host.earlierCopyAnswers = false;
    start();
    EXPECT_TRUE(window->unloadedUnseen());
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "No previous instance found in gActivatePrevInstance!");
    EXPECT_EQ(host.boxes[0].style, host::kExclamation + host::kOkOnly);
    EXPECT_EQ(host.boxes[0].title, "");
    EXPECT_FALSE(std::ifstream(host.settingsFile()).good());
}

TEST_F(WindowLife, AFirstRunShowsTheDefaultsAndMakesTheSignalSilently)
{
    start();
    EXPECT_EQ(window->windowTitle(), "Wavelark v1.0.0");
    EXPECT_TRUE(host.boxes.empty());
    EXPECT_EQ(text(window->txtPercent), "50");
    EXPECT_EQ(text(window->txtFrequency1), "440");
    EXPECT_EQ(text(window->txtFrequency2), "4400");
    EXPECT_EQ(window->vsbOutLevel->Value(), 16384);
    EXPECT_EQ(window->vsbInLevel->Value(), 16384);
    EXPECT_TRUE(window->optSine->value());
    EXPECT_EQ(window->chkInvert->value(), 0);
    EXPECT_EQ(window->chkSweep->value(), 0);
    EXPECT_TRUE(window->optSweepLin->value());
    EXPECT_EQ(window->chkSweepBi->value(), 0);
    EXPECT_EQ(text(window->txtSweepDuration), "5");
    EXPECT_EQ(text(window->txtBurstCycles), "2");
    EXPECT_EQ(text(window->txtBurstPeriod), "9") << "2 cycles of 440 Hz, twice over, rounded";
    EXPECT_EQ(window->chkBurstMeasure->value(), 0);
    EXPECT_EQ(text(window->txtVOutIdent), "");
    EXPECT_EQ(text(window->txtVOutMax), "0");
    EXPECT_EQ(text(window->txtVOut2), "0");
    EXPECT_EQ(window->tabTab->currentIndex(), 0);
    EXPECT_EQ(window->picPolarity->backColor(), ui::kColourButtonFace);

    // Silent: made, not played; outputs unmuted with the wave at full.
    EXPECT_EQ(window->chkMute->value(), 1);
    EXPECT_EQ(window->lblOutLevel->foreColor(), ui::kColourRed);
    const std::vector<loopback::MixerWrite> unmuted = {
        {"Master Mute", 0}, {"Wave Mute", 0}, {"Wave Volume", 65535}};
    EXPECT_EQ(loopback::mixerWrites(), unmuted);

    showWindow();
    EXPECT_EQ(QApplication::focusWidget(), window->chkMute);
    EXPECT_GT(redColumns(), window->picPolarity->scaleWidth() / 2) << "the made cycle is drawn";
}

TEST_F(WindowLife, StoredFrequenciesAreClampedToWhatTheDeviceCanPlay)
{
    struct Case {
        const char* first;
        const char* second;
        const char* firstShown;
        const char* secondShown;
    };
    // The first is compared as a real number, the second rounded: 9.6 rounds
    // to 10 and stays as written, 9.4 rounds to 9 and is raised.
    const Case cases[] = {
        {"5", "9.6", "10", "9.6"},
        {"30000", "9.4", "20000", "10"},
        {"9.99", "25000", "10", "20000"},
        {"20000", "20000.4", "20000", "20000.4"},
    };
    for (const Case& c : cases) {
        store({{"txtFrequency1", c.first}, {"txtFrequency2", c.second}});
        start();
        EXPECT_EQ(text(window->txtFrequency1), c.firstShown) << c.first;
        EXPECT_EQ(text(window->txtFrequency2), c.secondShown) << c.second;
        window.reset();
    }
}

TEST_F(WindowLife, NumbersUseTheUsersDecimalCharacter)
{
    host.decimalChar = ",";
    store({{"txtPercent", "37,6"}, {"txtFrequency1", "5,5"}, {"txtFrequency2", "9,6"}});
    start();
    EXPECT_EQ(text(window->txtPercent), "38") << "read into the up-down, rounded";
    EXPECT_EQ(text(window->txtFrequency1), "10");
    EXPECT_EQ(text(window->txtFrequency2), "9,6");
}

TEST_F(WindowLife, AChangedRegionReadsNothingAndStoresEverythingAtTheNextExit)
{
    store({{"UserRegion", "49"}, {"txtFrequency1", "777"}, {"vsbOutLevel", "100"}});
    start();
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text, "Your region setting has changed\r\n\r\nResetting start up defaults");
    EXPECT_EQ(text(window->txtFrequency1), "1000") << "the built-in value";
    EXPECT_EQ(text(window->txtFrequency2), "300");
    EXPECT_EQ(text(window->txtBurstPeriod), "100");
    EXPECT_EQ(text(window->txtVOutIdent), "Unknown");
    EXPECT_TRUE(loopback::mixerWrites().empty()) << "the mixer is left as found";

    window->close();
    EXPECT_EQ(stored("UserRegion"), "44");
    EXPECT_EQ(stored("txtFrequency1"), "1000");
    EXPECT_EQ(stored("vsbOutLevel"), "16384");

    host.boxes.clear();
    start();
    EXPECT_TRUE(host.boxes.empty()) << "quiet once the new region is stored";
}

TEST_F(WindowLife, WithoutAnInputDeviceOnlyExitAndAboutWorkAndNothingIsStored)
{
    store({{"txtFrequency1", "777"}});
    const std::string before = fileContent(host.settingsFile());
    loopback::setInputDevices({});
    start();
    EXPECT_EQ(window->windowTitle(), "Wave Device Problem!");
    ASSERT_FALSE(host.boxes.empty());
    EXPECT_EQ(host.boxes[0].text, "Wave Input device not found");
    std::vector<std::string> enabled;
    for (ui::Control* control : window->controls())
        if (control->enabled() && control->typeName() != "CommonDialog" && control->text() != "-")
            enabled.push_back(control->name());
    EXPECT_EQ(enabled, (std::vector<std::string>{"mnuFile", "mnuFiExit", "mnuHelp", "mnuHAbout"}));
    EXPECT_EQ(text(window->txtFrequency1), "1000") << "nothing read";

    window->mnuFiExit->trigger();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(fileContent(host.settingsFile()), before);
    EXPECT_TRUE(loopback::mixerWrites().empty());
}

TEST_F(WindowLife, AnEightBitOutputKeepsTheSettingsButGetsNoClampInfoOrSignal)
{
    loopback::DeviceTraits eightBit;
    eightBit.formats = mm::WAVE_FORMAT_4M08;
    loopback::setOutputDevices({eightBit});
    store({{"txtFrequency1", "5"}, {"txtPercent", "30"}});
    start();
    EXPECT_EQ(window->windowTitle(), "Wavelark v1.0.0");
    EXPECT_EQ(text(window->txtFrequency1), "5");
    EXPECT_EQ(text(window->txtPercent), "30");
    EXPECT_EQ(text(window->txtInfo), "");
    EXPECT_EQ(text(window->txtBurstPeriod), "800") << "its default comes from the unclamped 5 Hz";
}

// ---- The Info page ---------------------------------------------------------

loopback::DeviceTraits device(const char* name, mm::DWORD support)
{
    loopback::DeviceTraits layout;
    layout.name = name;
    layout.formats = mm::WAVE_FORMAT_4S16;
    layout.support = support;
    layout.mid = 4;
    layout.pid = 77;
    return layout;
}

TEST_F(WindowLife, TheInfoPageDescribesBothDevicesAndTheMixer)
{
    loopback::setOutputDevices({device("Bench Out", mm::WAVECAPS_VOLUME | mm::WAVECAPS_LRVOLUME)});
    loopback::setInputDevices({device("Bench In", mm::WAVECAPS_VOLUME)});
    start();
    const std::string info = text(window->txtInfo);
    const std::string devices =
        "WAVEOUT\r\nBench Out\r\n44.1kHz  16 bits  2 channels\r\n"
        "Supports: \r\n  volume control\r\n  separate L&R volume control\r\n"
        "Manufacturer ID: 4\r\nProduct ID: 77\r\n\r\n"
        "WAVEIN\r\nBench In\r\n44.1kHz  16 bits  2 channels\r\n"
        "Manufacturer ID: 4\r\nProduct ID: 77\r\n\r\nMIXER\r\nMixer Count: ";
    EXPECT_EQ(info.substr(0, devices.size()), devices);
    EXPECT_EQ(info.find("Info on Mixer"), std::string::npos) << "the report is cut before it";
}

TEST_F(WindowLife, ACardWithoutSupportFlagsHasNoSupportsLine)
{
    loopback::setOutputDevices({device("Plain", 0)});
    start();
    const std::string info = text(window->txtInfo);
    EXPECT_NE(info.find("2 channels\r\nManufacturer ID: 4\r\n"), std::string::npos) << info;
    EXPECT_EQ(info.find("Supports"), std::string::npos);
}

TEST_F(WindowLife, TheInfoPageCannotBeEditedAndTabMovesOn)
{
    start();
    showWindow();
    window->tabTab->setCurrentIndex(2);
    window->txtInfo->setFocus();
    const std::string before = text(window->txtInfo);
    QTest::keyClicks(window->txtInfo, "typed");
    EXPECT_EQ(text(window->txtInfo), before);
    QTest::keyClick(window->txtInfo, Qt::Key_Tab);
    EXPECT_EQ(text(window->txtInfo), before);
    EXPECT_FALSE(window->txtInfo->hasFocus());
}

// ---- Levels and the mixer ----------------------------------------------------

TEST_F(WindowLife, TheLevelBarsEndsReachTheMixer)
{
    start();
    showWindow();
    loopback::Levels& levels = loopback::levels();
    for (ui::VScrollBar* bar : {window->vsbOutLevel, window->vsbInLevel}) {
        bar->setFocus();
        QTest::keyClick(bar, Qt::Key_Home);
        EXPECT_EQ(bar->Value(), 0);
        QTest::keyClick(bar, Qt::Key_End);
        EXPECT_EQ(bar->Value(), 32767);
    }
    const std::vector<loopback::MixerWrite> expected = {
        {"Master Volume", 65534}, {"Master Volume", 0}, {"Mic Volume", 65534}, {"Mic Volume", 0}};
    std::vector<loopback::MixerWrite> levelWrites;
    for (const auto& write : loopback::mixerWrites())
        if (write.control != "Master Mute" && write.control != "Wave Mute" && write.control != "Wave Volume")
            levelWrites.push_back(write);
    EXPECT_EQ(levelWrites, expected);
    EXPECT_EQ(levels.master, 0);
    EXPECT_EQ(levels.mic, 0);
}

TEST_F(WindowLife, ClosingGivesTheMixerBackExactlyWhatItHadOnce)
{
    loopback::Levels& levels = loopback::levels();
    levels.master = 50001;
    levels.masterMute = true;
    levels.wave = 1234;
    levels.waveMute = true;
    levels.mic = 20003;
    store({{"vsbOutLevel", "0"}, {"vsbInLevel", "100"}});
    start();
    EXPECT_EQ(levels.master, 65534);
    EXPECT_FALSE(levels.masterMute);
    EXPECT_EQ(levels.wave, 65535);

    window->close();
    window->close();  // a second close finds the window unloaded
    EXPECT_EQ(levels.master, 50001);
    EXPECT_TRUE(levels.masterMute);
    EXPECT_EQ(levels.wave, 1234);
    EXPECT_TRUE(levels.waveMute);
    EXPECT_EQ(levels.mic, 20003);
    int restores = 0;
    for (const auto& write : loopback::mixerWrites()) restores += write.control == "Mic Volume" && write.value == 20003;
    EXPECT_EQ(restores, 1);
}

// ---- Settings through the file -------------------------------------------------

TEST_F(WindowLife, EveryValueSurvivesARoundTripThroughTheFile)
{
    // Values that agree with each other, so no control's rule changes
    // another (a triangle sweep stays below a tenth of the maximum).
    const Settings values = {
        {"txtPercent", "30"},          {"txtFrequency1", "1234.5"},   {"txtFrequency2", "1500"},
        {"vsbOutLevel", "1000"},       {"vsbInLevel", "2000"},        {"optSine", "False"},
        {"optTriangle", "True"},       {"optNoise", "False"},         {"optMarkSpace", "False"},
        {"chkInvert", "1"},            {"chkSweep", "1"},             {"optSweepLog", "True"},
        {"chkSweepBi", "1"},           {"txtSweepDuration", "7"},     {"txtBurstCycles", "3"},
        {"txtBurstPeriod", "50"},      {"chkBurstMeasure", "1"},      {"txtVOutIdent", "Bench amp"},
        {"txtVOutMax", "2.5"},         {"txtVOut2", "1.25"},          {"tabTab.Tab", "3"},
        {"picPolarity.BackColor", "1193046"},
    };
    store(values);
    start();
    EXPECT_TRUE(window->optTriangle->value());
    EXPECT_TRUE(window->optSweepLog->value());
    EXPECT_FALSE(window->optSweepLin->value());
    EXPECT_EQ(window->tabTab->currentIndex(), 3);
    EXPECT_EQ(window->picPolarity->backColor(), 0x123456);
    window->close();
    for (const auto& [key, value] : values) EXPECT_EQ(stored(key), value) << key;
}

TEST_F(WindowLife, BadStoredValuesAreReportedOneByOneAndIgnoreGoesOn)
{
    gInstallErrorHandler();
    store({{"vsbOutLevel", "loud"}, {"vsbInLevel", "40000"}, {"chkInvert", "7"},
           {"txtFrequency2", "5000"}});
    host.answers = {host::kResultIgnore, host::kResultIgnore, host::kResultIgnore};
    start();
    ASSERT_EQ(host.boxes.size(), 3u);
    for (const auto& box : host.boxes) EXPECT_EQ(box.title, "Unexpected Error!");
    EXPECT_EQ(window->vsbOutLevel->Value(), 16384);
    EXPECT_EQ(window->vsbInLevel->Value(), 16384);
    EXPECT_EQ(text(window->txtFrequency2), "5000") << "the keys before and after are read";
    EXPECT_EQ(window->lblOutLevel->foreColor(), ui::kColourRed) << "start-up went on";
    const std::string log = fileContent(gsErrorLogFileName());
    EXPECT_NE(log.find("mGetSettings"), std::string::npos);
    EXPECT_NE(log.find("Invalid property value"), std::string::npos);
    EXPECT_NE(log.find("Type mismatch"), std::string::npos);
}

TEST_F(WindowLife, ACorruptFileNeverKeepsTheProgramFromStarting)
{
    const std::vector<std::string> files = {
        std::string("\x00\xff\xfe[Wav\x01\x02 = \xc3\x28\n\n", 16),
        "[Wavelark]\ntxtFrequency1=12",  // cut short
        "[Other]\ntxtFrequency1=777\n",  // no section of ours
    };
    for (const std::string& content : files) {
        writeFile(content);
        start();
        EXPECT_EQ(window->windowTitle(), "Wavelark v1.0.0");
        EXPECT_EQ(window->lblOutLevel->foreColor(), ui::kColourRed) << "the signal was made";
        window.reset();
    }
}

TEST_F(WindowLife, AFailedWriteAtExitKeepsTheOldFileIsReportedAndStillCloses)
{
    gInstallErrorHandler();
    store({{"txtFrequency1", "777"}});
    const std::string before = fileContent(host.settingsFile());
    start();
    showWindow();
    window->txtFrequency1->control().setText("1500");
    host.answers = {host::kResultIgnore};
    {
        const FileSizeLimit diskFull(16);
        window->close();
    }
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(fileContent(host.settingsFile()), before);
    ASSERT_FALSE(host.boxes.empty());
    EXPECT_EQ(host.boxes.back().title, "Unexpected Error!");
    EXPECT_NE(host.boxes.back().text.find("frmWavelark.Form_Unload"), std::string::npos);
    EXPECT_NE(host.boxes.back().text.find("Disk full"), std::string::npos);
}

// ---- The plot ------------------------------------------------------------------

TEST_F(WindowLife, ThePlotFillsThePictureBoxAfterAResizeAndOutlivesBeingCovered)
{
    start();
    showWindow();
    window->resize(window->width() + 300, window->height() + 100);
    QApplication::processEvents();
    const int width = window->picPolarity->scaleWidth();
    EXPECT_EQ(window->picPolarity->image().width(), width);
    EXPECT_GT(redColumns(), width / 2) << "drawn again across the new width";

    const QImage before = window->picPolarity->image();
    QWidget cover;
    cover.setGeometry(window->geometry());
    cover.show();
    QApplication::processEvents();
    cover.hide();
    QApplication::processEvents();
    EXPECT_EQ(window->picPolarity->image(), before);
    const QRect inside = window->picPolarity->contentsRect();
    EXPECT_EQ(window->picPolarity->grab(inside).toImage().convertToFormat(QImage::Format_RGB32), before)
        << "painted again from the retained image";
}

}  // namespace
