#pragma once
// The remote-control error queue: what went wrong with the commands a
// client sent, oldest first, read back one at a time with SYST:ERR?. Each
// entry is a standard error number, its standard text and, after a
// semicolon, what exactly failed ("Data out of range;In the range 10 to
// 22050 (Hz) please!").
#include <cstddef>
#include <deque>
#include <string>

namespace scpi {

// The error numbers the remote control reports.
enum ErrorCode : int {
    kNoError = 0,
    kCommandError = -100,
    kSyntaxError = -102,
    kDataTypeError = -104,
    kParameterNotAllowed = -108,
    kMissingParameter = -109,
    kUndefinedHeader = -113,
    kHeaderSuffixOutOfRange = -114,
    kInvalidSuffix = -131,
    kExecutionError = -200,
    kSettingsConflict = -221,
    kDataOutOfRange = -222,
    kIllegalParameterValue = -224,
    kDataStale = -230,
    kHardwareError = -240,
    kQueueOverflow = -350,
    kInputBufferOverrun = -363,
};

// The standard text of an error number ("Undefined header").
const char* errorText(int code);

class ErrorQueue {
public:
    // The queue holds this many entries; the last place is kept for "Queue
    // overflow" once it fills, and later errors are dropped.
    static constexpr std::size_t kCapacity = 16;

    // Adds an error; detail (may be empty) says what exactly failed.
    void push(int code, const std::string& detail = {});
    // Takes the oldest error as the query answers it: -222,"Data out of
    // range;detail", or 0,"No error" when the queue is empty.
    std::string pop();
    void clear() { entries_.clear(); }
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }

private:
    struct Entry {
        int code;
        std::string detail;
    };
    std::deque<Entry> entries_;
};

// Text as a quoted string: "a ""b""".
std::string quoted(const std::string& text);

}  // namespace scpi
