#include "src/log/procedure.h"

#include "engine/ado/error.h"
#include "src/log/class_log.h"
#include "src/services/services.h"
#include "src/text/text.h"

#include <new>
#include <optional>
#include <system_error>
#include <utility>

namespace {

constexpr int kErrorLimit = 10;

/// How many steps are running, one inside the other.
int runningSteps = 0;

class RunningStep {
public:
    RunningStep() { ++runningSteps; }
    ~RunningStep() { --runningSteps; }
    RunningStep(const RunningStep&) = delete;
    RunningStep& operator=(const RunningStep&) = delete;
};

}  // namespace

Failure toFailure(const std::exception_ptr& error) {
    if (services().readFailure != nullptr) {
        if (std::optional<Failure> failure = services().readFailure(error)) {
            return *std::move(failure);
        }
    }
    try {
        std::rethrow_exception(error);
    } catch (const ado::Error& failure) {
        return {failure.number(), failure.description()};
    } catch (const RuntimeError& failure) {
        return failure.failure();
    } catch (const std::system_error& failure) {
        return {failure.code().value(), fromAscii(failure.what())};
    } catch (const std::bad_alloc&) {
        return {RuntimeError::kOutOfMemory, u"Out of memory"};
    } catch (const std::exception& failure) {
        return {0, fromAscii(failure.what())};
    } catch (...) {
        return {0, u"unknown failure"};
    }
}

std::u16string describe(const Failure& failure) {
    return u"Err.Number = " + toText(failure.number) + u" Err.Description = " + failure.description;
}

bool isInStep() { return runningSteps > 0; }

bool Procedure::step(const std::function<void()>& action,
                     const std::function<Resume(const Failure&)>& decide, int line) {
    for (;;) {
        Failure failure;
        try {
            const RunningStep running;
            action();
            return true;
        } catch (const ForcedExit&) {
            throw;  // the limit was passed in a step within this one
        } catch (...) {
            failure = toFailure(std::current_exception());
        }
        line_ = line;
        count(failure);
        const Resume usual = convention_.quiet ? Resume::Next : Resume::AsUsual;
        const Resume resume = decide ? decide(failure) : usual;
        if (resume == Resume::AsUsual) report(failure);
        line_ = 0;
        const bool again =
            resume == Resume::SameStep || (resume == Resume::AsUsual && log().DebugMode());
        if (!again) return false;
    }
}

classLog& Procedure::log() const {
    return convention_.log != nullptr ? *convention_.log : theLog();
}

void Procedure::report(const Failure& failure) const {
    std::u16string message = describe(failure);
    if (convention_.numbersLines) message += u" Line: " + toText(line_);
    reportLine(message);
}

void Procedure::reportLine(const std::u16string& message) const {
    log().log(message, classLog::kError, label_);
}

void Procedure::count(const Failure& failure) {
    ++errors_;
    if (convention_.limit == Limit::None || errors_ <= kErrorLimit) return;
    reportLine(describe(failure));
    reportLine(u"Error count exceeded, forcing exit from " + label_);
    throw ForcedExit{};
}

void runProcedure(std::u16string_view label, const Convention& convention,
                  const std::function<void(Procedure&)>& body) {
    Procedure procedure{label, convention};
    if (convention.timed) theLog().enterProc(label);
    try {
        body(procedure);
    } catch (const Procedure::ForcedExit&) {
        // Reported where the limit was passed.
    } catch (...) {
        if (!convention.quiet) procedure.report(toFailure(std::current_exception()));
    }
    if (convention.timed) theLog().exitProc(label);
}

void runProcedure(std::u16string_view label, Limit limit,
                  const std::function<void(Procedure&)>& body) {
    runProcedure(label, Convention{.limit = limit}, body);
}
