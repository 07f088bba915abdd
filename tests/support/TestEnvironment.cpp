#include "tests/support/TestEnvironment.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace testing_support {

namespace {

namespace fs = std::filesystem;

std::string gHome;

void removeHome()
{
    std::error_code ignored;
    if (!gHome.empty()) fs::remove_all(gHome, ignored);
}

}  // namespace

std::string isolateUserFolders()
{
    if (!gHome.empty()) return gHome;
    std::string pattern = (fs::temp_directory_path() / "wavelark-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    gHome = pattern;
    for (const char* sub : {"config", "state", "data", "cache"}) fs::create_directories(fs::path(gHome) / sub);
    ::setenv("HOME", gHome.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (gHome + "/config").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (gHome + "/state").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (gHome + "/data").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (gHome + "/cache").c_str(), 1);
    std::atexit(&removeHome);
    return gHome;
}

std::string makeTempFolder(const std::string& hint)
{
    std::string pattern = gHome + "/" + hint + "-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    return pattern;
}

void setEnvironment(const std::string& assignments)
{
    std::size_t start = 0;
    while (start < assignments.size()) {
        std::size_t end = assignments.find('|', start);
        if (end == std::string::npos) end = assignments.size();
        const std::string assignment = assignments.substr(start, end - start);
        const std::size_t equals = assignment.find('=');
        if (equals != std::string::npos) {
            ::setenv(assignment.substr(0, equals).c_str(), assignment.substr(equals + 1).c_str(), 1);
        }
        start = end + 1;
    }
}

}  // namespace testing_support
