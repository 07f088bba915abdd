#pragma once
// Run-time failures: a numbered error with its standard description. Thrown
// inside a procedure's guarded steps and caught by its trap (Trap.h); never
// allowed to leave the procedure.
#include <cstdint>
#include <stdexcept>
#include <string>

namespace rt {

// Standard run-time error numbers used by the program.
enum ErrorNumber : std::int32_t {
    kErrInvalidCall = 5,
    kErrOverflow = 6,
    kErrOutOfMemory = 7,
    kErrSubscript = 9,
    kErrDivisionByZero = 11,
    kErrTypeMismatch = 13,
    kErrBadFileName = 52,
    kErrFileNotFound = 53,
    kErrDeviceIO = 57,
    kErrDiskFull = 61,
    kErrPathFileAccess = 75,
    kErrPathNotFound = 76,
    kErrObjectNotSet = 91,
    kErrInvalidPropertyValue = 380,
};

// The standard description of an error number ("Overflow" for 6); empty for
// numbers the program never raises.
std::string standardDescription(std::int32_t number);

class RuntimeError : public std::runtime_error {
public:
    RuntimeError(std::int32_t number, std::string description, std::int32_t osError = 0);
    explicit RuntimeError(std::int32_t number);

    std::int32_t number() const { return number_; }
    const std::string& description() const { return description_; }
    std::int32_t osError() const { return osError_; }

private:
    std::int32_t number_;
    std::string description_;
    std::int32_t osError_;
};

[[noreturn]] void raise(std::int32_t number);
[[noreturn]] void raise(std::int32_t number, std::string description, std::int32_t osError = 0);

// The error a failed file operation's OS error (errno) stands for: Disk
// full for no space, an exceeded quota or file size limit; Path not found
// for a missing folder; Path/File access error for anything else.
std::int32_t fileErrorNumber(int osError);
// Raises that error with its standard description and the OS error.
[[noreturn]] void raiseFileError(int osError);

}  // namespace rt
