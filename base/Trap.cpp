#include "base/Trap.h"

#include <new>
#include <stdexcept>

#include "base/RuntimeError.h"

namespace rt {

namespace {

std::int16_t abortEverything(const std::string&, const std::string&, std::int32_t)
{
    return kAnswerAbort;
}

ErrorReporter gReporter = &abortEverything;

}  // namespace

CurrentError& currentError()
{
    thread_local CurrentError record;
    return record;
}

void captureError(std::exception_ptr failure, std::int32_t line)
{
    CurrentError& record = currentError();
    record = CurrentError{};
    record.line = line;
    try {
        std::rethrow_exception(failure);
    } catch (const RuntimeError& e) {
        record.number = e.number();
        record.description = e.description();
        record.lastOsError = e.osError();
    } catch (const std::bad_alloc&) {
        record.number = kErrOutOfMemory;
        record.description = standardDescription(kErrOutOfMemory);
    } catch (const std::out_of_range&) {
        record.number = kErrSubscript;
        record.description = standardDescription(kErrSubscript);
    } catch (const std::exception& e) {
        record.number = kErrInvalidCall;
        record.description = e.what();
    } catch (...) {
        record.number = kErrInvalidCall;
        record.description = standardDescription(kErrInvalidCall);
    }
}

void setErrorReporter(ErrorReporter reporter) { gReporter = reporter ? reporter : &abortEverything; }

Trap::Answer Trap::handle(std::exception_ptr failure, std::uint_least32_t line)
{
    captureError(failure, static_cast<std::int32_t>(line));
    std::int16_t answer = 0;
    try {
        answer = gReporter(std::string(module_), std::string(procedure_),
                           static_cast<std::int32_t>(line));
    } catch (...) {
        // The reporter itself failed (say the log could not be written). That
        // failure lands here, in this procedure's own trap: it becomes the
        // current error and the procedure gives up.
        captureError(std::current_exception(), static_cast<std::int32_t>(line));
        answer = kAnswerAbort;
    }
    switch (answer) {
    case kAnswerRetry: return Answer::Retry;
    case kAnswerIgnore: return Answer::Ignore;
    case kAnswerAbort:
        if (errorFlag_ != nullptr) *errorFlag_ = kTrue;
        [[fallthrough]];
    default:
        leaving_ = true;
        return Answer::Leave;
    }
}

}  // namespace rt
