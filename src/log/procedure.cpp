#include "src/log/procedure.h"

#include "engine/ado/error.h"
#include "src/platform/text.h"

#include <utility>

namespace {

constexpr int kErrorLimit = 10;

FailureReporter& reporter() {
    static FailureReporter current;
    return current;
}

void reportLine(std::u16string_view label, const std::u16string& message) {
    if (reporter()) reporter()(label, message);
}

}  // namespace

Failure toFailure(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const ado::Error& failure) {
        return {failure.number(), failure.description()};
    } catch (const RuntimeError& failure) {
        return failure.failure();
    } catch (const std::exception& failure) {
        return {0, fromAscii(failure.what())};
    } catch (...) {
        return {0, u"unknown failure"};
    }
}

std::u16string describe(const Failure& failure) {
    return u"Err.Number = " + toText(failure.number) + u" Err.Description = " + failure.description;
}

FailureReporter setFailureReporter(FailureReporter newReporter) {
    return std::exchange(reporter(), std::move(newReporter));
}

bool Procedure::step(const std::function<void()>& action,
                     const std::function<Resume(const Failure&)>& decide) {
    for (;;) {
        Failure failure;
        try {
            action();
            return true;
        } catch (...) {
            failure = toFailure(std::current_exception());
        }
        count(failure);
        if (!decide) report(failure);
        if (!decide || decide(failure) == Resume::Next) return false;
    }
}

void Procedure::report(const Failure& failure) const { reportLine(label_, describe(failure)); }

void Procedure::count(const Failure& failure) {
    ++errors_;
    if (limit_ == Limit::None || errors_ <= kErrorLimit) return;
    report(failure);
    reportLine(label_, u"Error count exceeded, forcing exit from " + label_);
    throw ForcedExit{};
}

void runProcedure(std::u16string_view label, Limit limit,
                  const std::function<void(Procedure&)>& body) {
    Procedure procedure{label, limit};
    try {
        body(procedure);
    } catch (const Procedure::ForcedExit&) {
        // Reported where the limit was passed.
    } catch (...) {
        procedure.report(toFailure(std::current_exception()));
    }
}
