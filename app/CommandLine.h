#pragma once
// The program's command line. It is read before the toolkit starts, so that
// --help, --version and a wrong option never need a display.
#include <optional>

namespace app {

// Reads the options: prints the help or the version to standard output, or a
// usage error to standard error. Returns the exit status when the program
// ends here (0 after the help or the version, 2 after an unknown option or
// an argument), nothing when it goes on to open its window.
std::optional<int> commandLineExitStatus(int argc, char* argv[]);

}  // namespace app
