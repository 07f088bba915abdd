#pragma once
// The one place where run-time errors end up: each is appended to the error
// log as a three-line entry and shown in an Abort / Retry / Ignore box whose
// answer the failing procedure's trap obeys (base/Trap.h).
#include <cstdint>
#include <string>

// The answer of the most recent error box: 3 Abort, 4 Retry, 5 Ignore.
extern std::int32_t gnErrorResponse;

// Logs the current error (base/Trap.h's record), shows the box titled
// "Unexpected Error!" and returns the button chosen. When the log cannot be
// written the box is still shown, then the write failure is raised to the
// caller's trap.
std::int16_t gnErrorHandler(const std::string& sModule, const std::string& sProcedure,
                            std::int32_t nLine);

// "v" & major & "." & minor & "." & revision, e.g. "v1.0.0".
std::string gsAppVersion();

// The error log: <program folder>/<program name>.log (of the host's
// programPath) when the program's folder is writable, else the same name in
// $XDG_STATE_HOME/Marlo/ (default ~/.local/state/Marlo/), which is created
// when missing.
std::string gsErrorLogFileName();

// Appends a three-line warning entry to the error log (the same first two
// lines as an error's, then "Warning: " and sText) and shows nothing: for
// what the user is told elsewhere and need not answer, such as a lost sound
// device. False when the log could not be written.
bool gbLogWarning(const std::string& sModule, const std::string& sProcedure,
                  const std::string& sText);

// Makes every trap report through gnErrorHandler, keeping gnErrorResponse.
void gInstallErrorHandler();
