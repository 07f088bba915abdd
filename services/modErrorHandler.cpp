#include "services/modErrorHandler.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <QDateTime>
#include <QLocale>

#include "BuildInfo.h"
#include "base/RuntimeError.h"
#include "base/Trap.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

std::int32_t gnErrorResponse = 0;

namespace {

namespace fs = std::filesystem;

bool folderWritable(const fs::path& folder)
{
    std::error_code error;
    return fs::is_directory(folder, error) && ::access(folder.c_str(), W_OK) == 0;
}

// An installed program never logs beside itself, even when run by root, who
// may write there: the log of a package's binary belongs to the user.
bool installedFolder(const fs::path& folder)
{
    static const char* const kSystemPrefixes[] = {"/usr/", "/bin", "/sbin", "/opt/", "/snap/"};
    const std::string path = folder.string() + "/";
    for (const char* prefix : kSystemPrefixes)
        if (path.starts_with(prefix)) return true;
    return false;
}

fs::path userStateFolder()
{
    const char* state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state != '\0') return fs::path(state) / "Marlo";
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr ? home : ".") / ".local" / "state" / "Marlo";
}

// Opens the file for appending (created when missing), writes the text and a
// line end, closes it; any failure is raised as a file error.
void mLogAppend(const std::string& sFileName, const std::string& sText)
{
    std::FILE* file = std::fopen(sFileName.c_str(), "ab");
    if (file == nullptr) rt::raiseFileError(errno);
    const std::string line = sText + "\r\n";
    const bool written = std::fwrite(line.data(), 1, line.size(), file) == line.size();
    const int writeError = errno;
    const bool closed = std::fclose(file) == 0;
    if (!written) rt::raiseFileError(writeError);
    if (!closed) rt::raiseFileError(errno);
}

// The first two lines of an entry: when and on what, which program and where.
std::string logHeading(const std::string& source)
{
    const std::string dateTime =
        QLocale::system().toString(QDateTime::currentDateTime(), QLocale::ShortFormat).toStdString();
    return dateTime + "  " + gsOSVersion + "\r\n" + buildinfo::kProductName + " " + gsAppVersion() +
           "  " + source + "\r\n";
}

std::string logEntry(const std::string& source)
{
    const rt::CurrentError& error = rt::currentError();
    return logHeading(source) + "DllError: " + std::to_string(error.lastOsError) +
           "  ErrNo: " + std::to_string(error.number) + "  " + error.description;
}

std::int16_t reportAndKeepAnswer(const std::string& module, const std::string& procedure,
                                 std::int32_t line)
{
    gnErrorResponse = gnErrorHandler(module, procedure, line);
    return static_cast<std::int16_t>(gnErrorResponse);
}

}  // namespace

std::string gsAppVersion()
{
    std::string version("v");
    version += std::to_string(buildinfo::kVersionMajor) + "." +
               std::to_string(buildinfo::kVersionMinor) + "." +
               std::to_string(buildinfo::kVersionRevision);
    return version;
}

std::string gsErrorLogFileName()
{
    const fs::path program(host::current().programPath());
    const std::string fileName = program.stem().string() + ".log";
    const fs::path folder = program.parent_path();
    if (!installedFolder(folder) && folderWritable(folder)) return folder.string() + "/" + fileName;

    const fs::path stateFolder = userStateFolder();
    std::error_code ignored;
    fs::create_directories(stateFolder, ignored);  // a failure shows up at the write
    return stateFolder.string() + "/" + fileName;
}

std::int16_t gnErrorHandler(const std::string& sModule, const std::string& sProcedure,
                            std::int32_t nLine)
{
    const std::string source = sModule + "." + sProcedure + "." + std::to_string(nLine);
    const std::string description = rt::currentError().description;

    // The user's box must not be lost to a failing log: remember the failure,
    // show the box, then let the failure reach the caller's trap.
    std::exception_ptr logFailure;
    try {
        mLogAppend(gsErrorLogFileName(), logEntry(source));
    } catch (...) {
        logFailure = std::current_exception();
    }

    const std::int16_t answer =
        host::msgBox("Source: " + source + "\r\n\r\n" + description,
                     host::kAbortRetryIgnore + host::kExclamation + host::kDefaultButton2,
                     "Unexpected Error!");
    if (logFailure) {
        gnErrorResponse = answer;
        std::rethrow_exception(logFailure);
    }
    return answer;
}

bool gbLogWarning(const std::string& sModule, const std::string& sProcedure,
                  const std::string& sText)
{
    try {
        mLogAppend(gsErrorLogFileName(), logHeading(sModule + "." + sProcedure) + "Warning: " + sText);
        return true;
    } catch (...) {
        return false;
    }
}

void gInstallErrorHandler() { rt::setErrorReporter(&reportAndKeepAnswer); }
