// How every procedure of the viewer survives its errors: it runs as a row of steps; a step that
// fails is reported under the procedure's label, and the next step follows.
//
//   void connectToDB(const std::u16string& path) {
//       runProcedure(u"[modDatabase]connectToDB", Limit::TenErrors, [&](Procedure& procedure) {
//           procedure.step([&] { connection().close(); });
//           procedure.step([&] { connection().open(path); });
//       });
//   }
//
// The viewer's own thread.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <string>
#include <string_view>

/// What went wrong in a step.
struct Failure {
    std::int32_t number = 0;
    std::u16string description;
};

/// The failure behind an exception: a provider's or the run-time's own number and description; a
/// number of 0 for an exception of another kind.
Failure toFailure(const std::exception_ptr& error);

/// "Err.Number = N Err.Description = TEXT".
std::u16string describe(const Failure& failure);

/// Receives what procedures report: the procedure's label and a line of text.
using FailureReporter =
    std::function<void(std::u16string_view label, const std::u16string& message)>;

/// Installs the receiver and returns the one before. Without one, reports are dropped.
FailureReporter setFailureReporter(FailureReporter reporter);

/// A failure that the viewer raises itself, with one of the run-time's customary numbers.
class RuntimeError : public std::exception {
public:
    static constexpr std::int32_t kSubscript = 9;
    static constexpr std::int32_t kCancelled = 32755;

    RuntimeError(std::int32_t number, std::u16string description)
        : failure_{number, std::move(description)} {}

    const Failure& failure() const { return failure_; }
    const char* what() const noexcept override { return "run-time error"; }

private:
    Failure failure_;
};

/// How to go on after a failed step.
enum class Resume { Next, SameStep };

enum class Limit {
    None,
    TenErrors,  ///< the eleventh error in one call ends the procedure
};

class Procedure {
public:
    Procedure(std::u16string_view label, Limit limit) : label_{label}, limit_{limit} {}

    /// Runs one step. On failure it is counted, then `decide`, if given, says how to go on and
    /// whether anything is to be reported: it gets the failure and may call report itself.
    /// Without `decide` the failure is reported and the procedure goes on. True if it succeeded.
    bool step(const std::function<void()>& action,
              const std::function<Resume(const Failure&)>& decide = {});

    void report(const Failure& failure) const;

private:
    friend void runProcedure(std::u16string_view, Limit, const std::function<void(Procedure&)>&);
    struct ForcedExit {};

    void count(const Failure& failure);

    std::u16string label_;
    Limit limit_;
    int errors_ = 0;
};

/// Runs a procedure's body. An error outside its steps is reported and ends the procedure; nothing
/// is thrown to the caller.
void runProcedure(std::u16string_view label, Limit limit,
                  const std::function<void(Procedure&)>& body);
