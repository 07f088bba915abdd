// The error reporter: the log entry, the box, and what happens when the log
// cannot be written.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "services/modErrorHandler.h"
#include "services/modGeneral.h"
#include "tests/support/FileFaults.h"
#include "tests/support/ScriptedHost.h"
#include "tests/support/TestEnvironment.h"

namespace {

using testing_support::ScriptedHost;

std::vector<std::string> crlfLines(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::stringstream content;
    content << file.rdbuf();
    const std::string text = content.str();
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    EXPECT_EQ(start, text.size()) << "the log must end with a line end";
    return lines;
}

// A procedure whose only step fails with the given error.
void gFailing(std::int32_t number, const std::string& description, ErrorFlag& bError)
{
    rt::Trap trap("modTest", "gFailing", bError);
    trap.step([&] { rt::raise(number, description); });
}

// Writes the settings a batch holds, as the window does at exit.
void gSaveSettings(host::SettingsBatch& batch, ErrorFlag& bError)
{
    rt::Trap trap("modTest", "gSaveSettings", bError);
    trap.step([&] { batch.commit(); });
}

class ErrorHandlerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder = testing_support::makeTempFolder("program");
        host.programFile = folder + "/wavelark";
        gInstallErrorHandler();
        gsOSVersion = "Linux v6.1 Build 0 #1 SMP PREEMPT_DYNAMIC Debian 6.1.112-1";
    }
    void TearDown() override { rt::setErrorReporter(nullptr); }

    ScriptedHost host;
    std::string folder;
};

TEST_F(ErrorHandlerTest, EachErrorAppendsAThreeLineEntryAndAsksAbortRetryIgnore)
{
    host.answers = {5, 5};
    ErrorFlag flag = kFalse;
    gFailing(rt::kErrOverflow, "Overflow", flag);
    gFailing(rt::kErrSubscript, "Subscript out of range", flag);
    EXPECT_EQ(flag, kFalse);
    EXPECT_EQ(gnErrorResponse, 5);

    EXPECT_EQ(gsErrorLogFileName(), folder + "/wavelark.log");
    const auto lines = crlfLines(folder + "/wavelark.log");
    ASSERT_EQ(lines.size(), 6u);
    const std::string source = "modTest.gFailing." + std::to_string(rt::currentError().line);
    for (int entry = 0; entry < 2; ++entry) {
        const auto& first = lines[entry * 3];
        EXPECT_TRUE(first.ends_with("  " + gsOSVersion)) << first;
        EXPECT_GT(first.size(), gsOSVersion.size() + 8) << "a date and time comes first";
        EXPECT_EQ(lines[entry * 3 + 1], "Wavelark v1.0.0  " + source);
    }
    EXPECT_EQ(lines[2], "DllError: 0  ErrNo: 6  Overflow");
    EXPECT_EQ(lines[5], "DllError: 0  ErrNo: 9  Subscript out of range");

    ASSERT_EQ(host.boxes.size(), 2u);
    EXPECT_EQ(host.boxes[0].title, "Unexpected Error!");
    EXPECT_EQ(host.boxes[0].style, 306);
    EXPECT_EQ(host.boxes[0].text, "Source: " + source + "\r\n\r\nOverflow");
}

TEST_F(ErrorHandlerTest, AnEmptyDescriptionEndsTheBoxInTwoLineEnds)
{
    ErrorFlag flag = kFalse;
    gFailing(1000, "", flag);
    EXPECT_EQ(flag, kTrue);  // unanswered: Abort
    ASSERT_FALSE(host.boxes.empty());
    EXPECT_TRUE(host.boxes[0].text.ends_with("\r\n\r\n"));
    EXPECT_EQ(crlfLines(folder + "/wavelark.log").back(), "DllError: 0  ErrNo: 1000  ");
}

TEST_F(ErrorHandlerTest, TheLogGoesToTheStateFolderWhenTheProgramFolderIsNotWritable)
{
    host.programFile = "/nonexistent-folder/bin/wavelark";
    host.answers = {5};
    ErrorFlag flag = kFalse;
    gFailing(rt::kErrOverflow, "Overflow", flag);
    const std::string expected = std::string(std::getenv("XDG_STATE_HOME")) + "/Marlo/wavelark.log";
    EXPECT_EQ(gsErrorLogFileName(), expected);
    EXPECT_EQ(crlfLines(expected).size(), 3u);

    // An installed binary logs to the state folder even for root, who could
    // write beside it.
    const std::string stateLog = expected;
    for (const char* installed : {"/usr/bin/wavelark", "/usr/local/bin/wavelark", "/opt/wavelark/wavelark"}) {
        host.programFile = installed;
        EXPECT_EQ(gsErrorLogFileName(), stateLog) << installed;
    }
}

TEST_F(ErrorHandlerTest, AFailingLogWriteStillShowsTheBoxAndReachesTheCallersTrap)
{
    host.programFile = "/nonexistent-folder/bin/wavelark";
    const std::string stateBefore = std::getenv("XDG_STATE_HOME");
    const std::string blocker = folder + "/not-a-folder";
    std::ofstream(blocker) << "a file where the state folder should be";
    ::setenv("XDG_STATE_HOME", blocker.c_str(), 1);

    host.answers = {5};
    ErrorFlag flag = kFalse;
    gFailing(rt::kErrOverflow, "Overflow", flag);
    ::setenv("XDG_STATE_HOME", stateBefore.c_str(), 1);

    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0].text.substr(0, 8), "Source: ");
    EXPECT_EQ(flag, kTrue) << "the log failure makes the procedure give up";
    EXPECT_TRUE(rt::currentError().number == rt::kErrPathNotFound ||
                rt::currentError().number == rt::kErrPathFileAccess);
    EXPECT_EQ(gnErrorResponse, 5) << "the user's answer is still recorded";
}

TEST_F(ErrorHandlerTest, AWarningIsLoggedWithoutABoxAndAnUnwritableLogCostsNothing)
{
    EXPECT_TRUE(gbLogWarning("frmTest", "tmrCheck", "Output lost: the card is gone"));
    const auto lines = crlfLines(folder + "/wavelark.log");
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(lines[0].ends_with("  " + gsOSVersion));
    EXPECT_EQ(lines[1], "Wavelark v1.0.0  frmTest.tmrCheck");
    EXPECT_EQ(lines[2], "Warning: Output lost: the card is gone");
    EXPECT_TRUE(host.boxes.empty());

    host.programFile = "/nonexistent-folder/bin/wavelark";
    const std::string stateBefore = std::getenv("XDG_STATE_HOME");
    const std::string blocker = folder + "/not-a-folder";
    std::ofstream(blocker) << "a file where the state folder should be";
    ::setenv("XDG_STATE_HOME", blocker.c_str(), 1);
    EXPECT_FALSE(gbLogWarning("frmTest", "tmrCheck", "unwritten"));
    ::setenv("XDG_STATE_HOME", stateBefore.c_str(), 1);
    EXPECT_TRUE(host.boxes.empty());
}

TEST_F(ErrorHandlerTest, TheOperatingSystemLineSaysUnknownWhenTheVersionCannotBeRead)
{
    host.osVersion.reset();
    ErrorFlag flag = kFalse;
    gGStartUpSetStuff(flag);
    EXPECT_EQ(gsOSVersion, "Windows version unknown");

    host.answers = {5};
    gFailing(rt::kErrOverflow, "Overflow", flag);
    EXPECT_TRUE(crlfLines(folder + "/wavelark.log")[0].ends_with("  Windows version unknown"));
}

TEST_F(ErrorHandlerTest, ASettingsWriteOnAFullDiskIsReportedAndARetryWritesIt)
{
    host.saveSetting("Marlo", "Wavelark", "txtPercent", "50");
    const std::string before = testing_support::fileContent(host.settingsFile());
    auto batch = host.openSettings("Marlo", "Wavelark");
    batch->save("txtVOutIdent", std::string(8192, 'v'));

    std::optional<testing_support::FileSizeLimit> fullDisk(std::in_place, 4096);
    host.answers = {host::kResultRetry};
    host.onBox = [&](const ScriptedHost::Box&) {
        EXPECT_EQ(testing_support::fileContent(host.settingsFile()), before) << "the old file, whole";
        fullDisk.reset();  // the user makes room, then answers Retry
    };
    ErrorFlag flag = kFalse;
    gSaveSettings(*batch, flag);

    EXPECT_EQ(flag, kFalse);
    ASSERT_EQ(host.boxes.size(), 1u);
    EXPECT_TRUE(host.boxes[0].text.ends_with("\r\n\r\nDisk full")) << host.boxes[0].text;
    EXPECT_EQ(crlfLines(folder + "/wavelark.log").at(2), "DllError: 27  ErrNo: 61  Disk full") << "EFBIG";
    EXPECT_EQ(host.getSetting("Marlo", "Wavelark", "txtVOutIdent", "").size(), 8192u) << "the retry wrote it";
    EXPECT_EQ(host.getSetting("Marlo", "Wavelark", "txtPercent", ""), "50");
}

}  // namespace
