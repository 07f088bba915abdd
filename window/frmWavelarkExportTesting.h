#pragma once
// Lets a test answer File > Export WAV's save dialog without showing it.
// Part of the tests only; the program never calls it.
#include <optional>
#include <string>

namespace export_testing {

// The next save dialogs return sPath ("" as if cancelled) without being
// shown; std::nullopt shows them again.
void answerSaveDialog(std::optional<std::string> sPath);

}  // namespace export_testing
