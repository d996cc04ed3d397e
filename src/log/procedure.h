// How every procedure of the viewer survives its errors: it runs as a row of steps; a step that
// fails is logged under the procedure's label, and the next step follows.
//
//   void connectToDB(const std::u16string& path) {
//       constexpr std::u16string_view kLabel = u"[modDatabase]connectToDB";
//       runProcedure(kLabel, {.limit = Limit::TenErrors, .timed = true}, [&](Procedure& procedure) {
//           procedure.step([&] { connection().close(); });
//           procedure.step([&] { connection().open(path); });
//       });
//   }
//
// The user-interface thread.
#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

class classLog;

/// What went wrong in a step.
struct Failure {
    std::int32_t number = 0;
    std::u16string description;
};

/// The failure behind an exception: a provider's, the run-time's or the system's own number and
/// description; a number of 0 for an exception of another kind.
Failure toFailure(const std::exception_ptr& error);

/// "Err.Number = N Err.Description = TEXT".
std::u16string describe(const Failure& failure);

/// Reads exceptions of a kind that is not known here; nothing for all others.
using FailureTranslator = std::function<std::optional<Failure>(const std::exception_ptr&)>;
void setFailureTranslator(FailureTranslator translator);

/// Receives what procedures report: the procedure's label and a line of text.
using FailureReporter =
    std::function<void(std::u16string_view label, const std::u16string& message)>;

/// Installs a receiver in the place of the shared log and returns the one before; an empty one
/// brings the log back.
FailureReporter setFailureReporter(FailureReporter reporter);

/// Called at the beginning of every step; what it throws is the step's failure. For tests, to fail
/// what cannot be made to fail from outside. An empty one takes it away.
using StepFault = std::function<void(std::u16string_view label)>;
void setStepFault(StepFault fault);

/// Whether a step is running on the viewer's own thread.
bool isInStep();

/// A failure that the viewer raises itself, with one of the run-time's customary numbers.
class RuntimeError : public std::exception {
public:
    static constexpr std::int32_t kInvalidCall = 5;
    static constexpr std::int32_t kOverflow = 6;
    static constexpr std::int32_t kOutOfMemory = 7;
    static constexpr std::int32_t kSubscript = 9;
    static constexpr std::int32_t kTypeMismatch = 13;
    static constexpr std::int32_t kLibraryMissing = 48;
    static constexpr std::int32_t kBadFileName = 52;
    static constexpr std::int32_t kFileNotFound = 53;
    static constexpr std::int32_t kDeviceError = 57;
    static constexpr std::int32_t kDiskFull = 61;
    static constexpr std::int32_t kPermissionDenied = 70;
    static constexpr std::int32_t kPathFileAccess = 75;
    static constexpr std::int32_t kPathNotFound = 76;
    static constexpr std::int32_t kObjectNotSet = 91;
    static constexpr std::int32_t kInvalidResource = 325;
    static constexpr std::int32_t kKeyExists = 457;
    static constexpr std::int32_t kCancelled = 32755;

    RuntimeError(std::int32_t number, std::u16string description)
        : failure_{number, std::move(description)} {}

    const Failure& failure() const { return failure_; }
    const char* what() const noexcept override { return "run-time error"; }

private:
    Failure failure_;
};

/// How to go on after a failed step.
enum class Resume {
    Next,      ///< with the next step; nothing is logged
    SameStep,  ///< once more with this one; nothing is logged
    AsUsual,   ///< it is logged; the next step, or the same one under development
};

enum class Limit {
    None,
    TenErrors,  ///< the eleventh error in one call ends the procedure
};

/// What of the common rules a procedure follows.
struct Convention {
    Limit limit = Limit::None;
    bool numbersLines = false;  ///< reports end with the source line of the step
    bool timed = false;         ///< entry and exit are logged
    bool quiet = false;         ///< failures are not logged, and no step is repeated
    classLog* log = nullptr;    ///< the log's own procedures name themselves; null: the shared one
};

class Procedure {
public:
    Procedure(std::u16string_view label, const Convention& convention)
        : label_{label}, convention_{convention} {}

    /// Runs one step. On failure it is counted, and `decide`, if given, says how to go on. True if
    /// it succeeded.
    bool step(const std::function<void()>& action,
              const std::function<Resume(const Failure&)>& decide = {},
              int line = __builtin_LINE());

    /// For a `decide` that logs the failure but goes on in a way of its own.
    void report(const Failure& failure) const;

private:
    friend void runProcedure(std::u16string_view, const Convention&,
                             const std::function<void(Procedure&)>&);
    struct ForcedExit {};

    void count(const Failure& failure);
    void reportLine(const std::u16string& message) const;
    bool retries() const;

    std::u16string label_;
    Convention convention_;
    int errors_ = 0;
    int line_ = 0;  ///< of the step that failed; 0 outside of steps
};

/// Runs a procedure's body. An error outside its steps is reported and ends the procedure; nothing
/// is thrown to the caller.
void runProcedure(std::u16string_view label, const Convention& convention,
                  const std::function<void(Procedure&)>& body);
void runProcedure(std::u16string_view label, Limit limit,
                  const std::function<void(Procedure&)>& body);
