#pragma once
// Asking the user for one number: the request handed to the number-entry
// dialog and the procedure every layer calls to ask. The dialog itself is a
// window (frmInputNumber, in the windows library); the program installs it
// at start with gInstallInputNumberDialog(), and tests may install a
// scripted answer instead.
#include <functional>
#include <string>

#include "base/Types.h"

// The input-number record: the caller's request and the dialog's answer.
struct InputNumber {
    std::string isHeader;      // dialog caption
    std::string isPrompt;      // text above the number; empty hides it
    float ifValue = 0;         // value shown first
    float ifMax = 0;
    float ifMin = 0;
    float ifResolution = 0;
    bool ibInteger = false;    // whole numbers, with a spin control
    bool ibAllowCancel = false;// shows the Cancel button
    bool obError = false;      // set on an unexpected failure
};

// Shows the request and returns the accepted number as locale-independent
// text (" 2.5"), or "" when it was left without OK.
using InputNumberDialog = std::function<std::string(InputNumber& request)>;

// Installs the dialog; an empty one removes it.
void gSetInputNumberDialog(InputNumberDialog dialog);

// Asks for a number under the given rule. The accepted number as
// locale-independent text with a leading blank when non-negative, or ""
// when the user left without OK, no dialog is installed, or a failure set
// the error flag.
std::string gsInputNumber(const std::string& isHeader, const std::string& isPrompt, float ifValue,
                          float ifMax, float ifMin, float ifResolution, bool ibInteger,
                          bool ibAllowCancel, ErrorFlag& bError);
