// The command line and a start without a display, run as a user's shell runs
// the program: judged by the exit status and what it prints.
#include <gtest/gtest.h>

#include <QProcessEnvironment>
#include <QStringList>

#include "tests/app/ProcessRun.h"

namespace {

using testing_support::ProcessRun;

// The test's environment with no display of any kind, plus `extra` (NAME=value).
QProcessEnvironment withoutDisplay(const QStringList& extra = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) environment.remove(name);
    for (const QString& assignment : extra) {
        const auto equals = assignment.indexOf('=');
        environment.insert(assignment.left(equals), assignment.mid(equals + 1));
    }
    return environment;
}

ProcessRun runWavelark(const QStringList& arguments, const QProcessEnvironment& environment = withoutDisplay())
{
    return testing_support::runProcess(WAVELARK_PROGRAM, arguments, environment);
}

constexpr const char* kUsageLine = "Usage: wavelark [--help | --version]";

}  // namespace

TEST(CommandLine, HelpAndVersionPrintAndSucceedWithoutADisplay)
{
    for (const QString& option : {QString("--help"), QString("-h")}) {
        SCOPED_TRACE(option.toStdString());
        const ProcessRun help = runWavelark({option});
        ASSERT_TRUE(help.finished) << help.err.toStdString();
        EXPECT_EQ(help.status, 0);
        EXPECT_TRUE(help.out.startsWith(kUsageLine)) << help.out.toStdString();
        for (const char* topic : {"WAVELARK_AUDIO", "loopback", "~/.config/Marlo/Wavelark.conf",
                                  "~/.local/state/Marlo/wavelark.log", "wavelark(1)"}) {
            EXPECT_TRUE(help.out.contains(topic)) << "the help does not mention " << topic;
        }
        EXPECT_EQ(help.err, "");
    }

    const ProcessRun version = runWavelark({"--version"});
    ASSERT_TRUE(version.finished) << version.err.toStdString();
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.section('\n', 0, 0), "Wavelark " WAVELARK_VERSION);
    EXPECT_TRUE(version.out.contains("GPL-3.0-or-later"));
    EXPECT_EQ(version.err, "");
}

// Every wrong command line ends before the window is tried: no display is
// needed to be told so.
TEST(CommandLine, AWrongArgumentGivesTheUsageLineAndStatus2)
{
    const struct {
        QStringList arguments;
        const char* complaint;
    } cases[] = {
        {{"--bogus"}, "wavelark: unknown option '--bogus'"},
        {{"-v"}, "wavelark: unknown option '-v'"},
        {{"--help=all"}, "wavelark: unknown option '--help=all'"},
        {{"signal.wav"}, "wavelark: unexpected argument 'signal.wav'"},
        {{"--bogus", "--help"}, "wavelark: unknown option '--bogus'"},
    };
    for (const auto& wrong : cases) {
        SCOPED_TRACE(wrong.arguments.join(' ').toStdString());
        const ProcessRun run = runWavelark(wrong.arguments);
        ASSERT_TRUE(run.finished) << run.err.toStdString();
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.err, QString(wrong.complaint) + "\n" + kUsageLine + "\n");
        EXPECT_EQ(run.out, "");
    }
}

// Without a display the toolkit would abort (status 134) with advice to
// reinstall; the program ends with one sentence that says what to do.
TEST(CommandLine, WithoutAReachableDisplayOneSentenceAndStatus1)
{
    const struct {
        QStringList environment;
        const char* tried;
    } cases[] = {
        {{}, "(DISPLAY is not set, WAYLAND_DISPLAY is not set)"},
        {{"DISPLAY=:4711"}, "(DISPLAY=:4711, WAYLAND_DISPLAY is not set)"},
        {{"WAYLAND_DISPLAY=wavelark-no-such-socket", "QT_QPA_PLATFORM=xcb"},
         "(DISPLAY is not set, WAYLAND_DISPLAY=wavelark-no-such-socket, QT_QPA_PLATFORM=xcb)"},
    };
    for (const auto& setting : cases) {
        SCOPED_TRACE(setting.environment.join(' ').toStdString());
        const ProcessRun run = runWavelark({}, withoutDisplay(setting.environment));
        ASSERT_TRUE(run.finished) << "status " << run.status << ": " << run.err.toStdString();
        EXPECT_EQ(run.status, 1);
        EXPECT_EQ(run.err,
                  QString("wavelark: there is no display to show the window on %1; run it from a desktop "
                          "session, or without a screen as 'xvfb-run -a wavelark' (Debian package xvfb).\n")
                      .arg(setting.tried));
        EXPECT_EQ(run.out, "");
    }
}
