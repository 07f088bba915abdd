#pragma once
// The trap idiom. A procedure that traps errors makes a Trap and runs its
// body as guarded steps:
//
//   void gDoSomething(ErrorFlag& bError) {
//       Trap trap("modThing", "gDoSomething", bError);
//       trap.step([&] { firstStatement(); });
//       trap.step([&] { secondStatement(); });
//   }
//
// A step that throws fills the current-error record and calls the installed
// error reporter (gnErrorHandler) with the module, the procedure and the
// failing line, then obeys the answer: Retry runs the step again, Ignore goes
// on with the next step, Abort sets the error flag (when the procedure has
// one) and skips every later step; any other answer skips them without the
// flag. Exceptions never leave a step.
//
// A trap costs two names and a flag pointer to make: procedures that run
// thousands of times in a make trap like every other. The names are not
// copied, so they must outlive the trap (every caller passes literals).
#include <cstdint>
#include <exception>
#include <source_location>
#include <string>
#include <string_view>

#include "base/Types.h"

namespace rt {

// Message-box answers the trap understands.
inline constexpr std::int16_t kAnswerAbort = 3;
inline constexpr std::int16_t kAnswerRetry = 4;
inline constexpr std::int16_t kAnswerIgnore = 5;

// The failure being handled, per thread: filled by the trap before it calls
// the reporter, read by the reporter.
struct CurrentError {
    std::int32_t number = 0;
    std::string description;
    std::int32_t lastOsError = 0;
    std::int32_t line = 0;
};
CurrentError& currentError();
// Fills the current-error record from an exception caught in a step.
void captureError(std::exception_ptr failure, std::int32_t line);

// Reports the current error and returns the user's answer (3, 4 or 5). The
// services layer installs gnErrorHandler; until then every error aborts.
using ErrorReporter = std::int16_t (*)(const std::string& module, const std::string& procedure,
                                       std::int32_t line);
void setErrorReporter(ErrorReporter reporter);

class Trap {
public:
    Trap(std::string_view module, std::string_view procedure, ErrorFlag& errorFlag)
        : module_(module), procedure_(procedure), errorFlag_(&errorFlag)
    {
    }
    // For procedures without an error flag.
    Trap(std::string_view module, std::string_view procedure)
        : module_(module), procedure_(procedure)
    {
    }

    Trap(const Trap&) = delete;
    Trap& operator=(const Trap&) = delete;

    // Runs one guarded step. Returns true when the procedure goes on (the step
    // succeeded or was ignored), false once it is leaving.
    template <class Body>
    bool step(Body&& body, std::source_location where = std::source_location::current())
    {
        while (!leaving_) {
            try {
                body();
                return true;
            } catch (...) {
                const Answer answer = handle(std::current_exception(), where.line());
                if (answer == Answer::Retry) continue;
                return answer == Answer::Ignore;
            }
        }
        return false;
    }

    // True once an answer made the procedure leave.
    bool leaving() const { return leaving_; }
    // Makes the remaining steps do nothing, as a normal early return would.
    void leave() { leaving_ = true; }
    // Leaves when a called procedure has set the error flag.
    void leaveOnError(const ErrorFlag& bError)
    {
        if (bError) leave();
    }

    std::string_view module() const { return module_; }
    std::string_view procedure() const { return procedure_; }

private:
    enum class Answer { Retry, Ignore, Leave };
    Answer handle(std::exception_ptr failure, std::uint_least32_t line);

    std::string_view module_;
    std::string_view procedure_;
    ErrorFlag* errorFlag_ = nullptr;
    bool leaving_ = false;
};

}  // namespace rt
