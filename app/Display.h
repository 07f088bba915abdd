#pragma once
// Opening the display. Left to itself, the toolkit ends a program that finds
// no display with an abort and advice to reinstall; here that becomes one
// plain sentence on how to run the program, and exit status 1.
#include <memory>

class QApplication;

namespace app {

// Constructs the application on the display that the environment names.
// When none can be opened, prints why and how to run the program instead,
// and ends the process with status 1. Messages the toolkit gives while it
// starts are held back until it has started, so a failed start shows only
// that sentence.
std::unique_ptr<QApplication> openDisplayOrExit(int& argc, char* argv[]);

}  // namespace app
