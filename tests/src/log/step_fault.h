// Failures of steps that cannot be made to fail from outside.
//
//   const FailingSteps failing{u"[frmMain]centerDisplay"};
//
// The program knows nothing of it: the linker of the test programs puts the function in
// step_fault.cpp in front of Procedure::step. The user-interface thread.
#pragma once

#include <functional>
#include <string>
#include <string_view>

/// Called at the beginning of every step; what it throws is the step's failure.
using StepFault = std::function<void(std::u16string_view label)>;

/// An empty one takes it away.
void setStepFault(StepFault fault);

/// Fails every step of one procedure until the end of the block.
class FailingSteps {
public:
    explicit FailingSteps(std::u16string label);
    ~FailingSteps() { setStepFault({}); }
    FailingSteps(const FailingSteps&) = delete;
    FailingSteps& operator=(const FailingSteps&) = delete;
};
