#include "base/RuntimeError.h"

#include <cerrno>

namespace rt {

std::string standardDescription(std::int32_t number)
{
    switch (number) {
    case kErrInvalidCall: return "Invalid procedure call or argument";
    case kErrOverflow: return "Overflow";
    case kErrOutOfMemory: return "Out of memory";
    case kErrSubscript: return "Subscript out of range";
    case kErrDivisionByZero: return "Division by zero";
    case kErrTypeMismatch: return "Type mismatch";
    case kErrBadFileName: return "Bad file name or number";
    case kErrFileNotFound: return "File not found";
    case kErrDeviceIO: return "Device I/O error";
    case kErrDiskFull: return "Disk full";
    case kErrPathFileAccess: return "Path/File access error";
    case kErrPathNotFound: return "Path not found";
    case kErrObjectNotSet: return "Object variable or With block variable not set";
    case kErrInvalidPropertyValue: return "Invalid property value";
    default: return {};
    }
}

RuntimeError::RuntimeError(std::int32_t number, std::string description, std::int32_t osError)
    : std::runtime_error(description), number_(number), description_(std::move(description)),
      osError_(osError)
{
}

RuntimeError::RuntimeError(std::int32_t number) : RuntimeError(number, standardDescription(number))
{
}

void raise(std::int32_t number) { throw RuntimeError(number); }

void raise(std::int32_t number, std::string description, std::int32_t osError)
{
    throw RuntimeError(number, std::move(description), osError);
}

std::int32_t fileErrorNumber(int osError)
{
    switch (osError) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return kErrDiskFull;
    case ENOENT:
    case ENOTDIR: return kErrPathNotFound;
    default: return kErrPathFileAccess;
    }
}

void raiseFileError(int osError)
{
    const std::int32_t number = fileErrorNumber(osError);
    raise(number, standardDescription(number), osError);
}

}  // namespace rt
