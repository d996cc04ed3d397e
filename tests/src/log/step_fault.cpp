#include "tests/src/log/step_fault.h"

#include "src/log/procedure.h"

#include <utility>

// The linker's --wrap gives calls of NAME to __wrap_NAME, and __real_NAME to the function itself.
// NAME is Procedure::step as the compiler writes it.
#define WRAPPED(prefix) prefix##_ZN9Procedure4stepERKSt8functionIFvvEERKS0_IF6ResumeRK7FailureEEi
#ifdef __i386__
#define MEMBER_CALL __attribute__((thiscall))
#else
#define MEMBER_CALL
#endif

namespace {

StepFault& stepFault() {
    static StepFault current;
    return current;
}

using Action = std::function<void()>;
using Decide = std::function<Resume(const Failure&)>;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" MEMBER_CALL bool WRAPPED(__real_)(Procedure* procedure, const Action& action,
                                             const Decide& decide, int line);

extern "C" MEMBER_CALL bool WRAPPED(__wrap_)(Procedure* procedure, const Action& action,
                                             const Decide& decide, int line) {
    const Action faulty = [&] {
        if (stepFault()) stepFault()(procedure->label());
        action();
    };
    return WRAPPED(__real_)(procedure, faulty, decide, line);
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

void setStepFault(StepFault fault) { stepFault() = std::move(fault); }

FailingSteps::FailingSteps(std::u16string label) {
    setStepFault([label = std::move(label)](std::u16string_view running) {
        if (running == label)
            throw RuntimeError{RuntimeError::kPermissionDenied, u"Permission denied"};
    });
}
