#include "remote/ScpiErrors.h"

namespace scpi {

const char* errorText(int code)
{
    switch (code) {
    case kNoError: return "No error";
    case kCommandError: return "Command error";
    case kSyntaxError: return "Syntax error";
    case kDataTypeError: return "Data type error";
    case kParameterNotAllowed: return "Parameter not allowed";
    case kMissingParameter: return "Missing parameter";
    case kUndefinedHeader: return "Undefined header";
    case kHeaderSuffixOutOfRange: return "Header suffix out of range";
    case kInvalidSuffix: return "Invalid suffix";
    case kExecutionError: return "Execution error";
    case kSettingsConflict: return "Settings conflict";
    case kDataOutOfRange: return "Data out of range";
    case kIllegalParameterValue: return "Illegal parameter value";
    case kDataStale: return "Data corrupt or stale";
    case kHardwareError: return "Hardware error";
    case kQueueOverflow: return "Queue overflow";
    case kInputBufferOverrun: return "Input buffer overrun";
    default: return "Error";
    }
}

void ErrorQueue::push(int code, const std::string& detail)
{
    if (entries_.size() >= kCapacity) return;
    if (entries_.size() == kCapacity - 1) {
        entries_.push_back({kQueueOverflow, {}});
        return;
    }
    entries_.push_back({code, detail});
}

std::string ErrorQueue::pop()
{
    Entry entry{kNoError, {}};
    if (!entries_.empty()) {
        entry = entries_.front();
        entries_.pop_front();
    }
    std::string text = errorText(entry.code);
    if (!entry.detail.empty()) text += ";" + entry.detail;
    return std::to_string(entry.code) + "," + quoted(text);
}

std::string quoted(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text) {
        out += c;
        if (c == '"') out += '"';
    }
    return out + "\"";
}

}  // namespace scpi
