#pragma once
// Every test process runs in its own temporary HOME with its own XDG
// folders, so nothing a test does can reach the user's settings or log.
#include <string>

namespace testing_support {

// Points HOME and the XDG folders at a fresh temporary folder (removed when
// the process ends) and returns that folder.
std::string isolateUserFolders();

// A new empty folder under the temporary HOME.
std::string makeTempFolder(const std::string& hint);

// Sets the variables of "NAME=value|NAME=value", overriding the process's.
void setEnvironment(const std::string& assignments);

}  // namespace testing_support
