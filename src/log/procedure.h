// Error handling of the viewer's procedures: each runs as a sequence of steps; a step that fails is
// logged under the procedure's label, and the next one follows.
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
#include <string>
#include <string_view>

class classLog;

/// What went wrong in a step.
struct Failure {
    std::int32_t number = 0;
    std::u16string description;
};

/// The failure behind an exception: number and description of the provider, the run-time or the
/// system; number 0 for any other kind of exception.
Failure toFailure(const std::exception_ptr& error);

/// "Err.Number = N Err.Description = TEXT".
std::u16string describe(const Failure& failure);

/// Whether a step is running on the user-interface thread.
bool isInStep();

/// A failure raised by the viewer itself, with one of the customary run-time error numbers.
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
    Next,      ///< with the next step, without logging
    SameStep,  ///< retry the step, without logging
    AsUsual,   ///< log it; then the next step, or under development the same one
};

enum class Limit {
    None,
    TenErrors,  ///< the eleventh error in one call ends the procedure
};

/// How a procedure deviates from the defaults.
struct Convention {
    Limit limit = Limit::None;
    bool numbersLines = false;  ///< reports end with the source line of the step
    bool timed = false;         ///< entry and exit are logged
    bool quiet = false;         ///< failures are not logged, and no step is repeated
    classLog* log = nullptr;    ///< for the log's own procedures; null: the shared log
};

class Procedure {
public:
    Procedure(std::u16string_view label, const Convention& convention)
        : label_{label}, convention_{convention} {}

    /// Runs one step; true if it succeeded. A failure is counted, and `decide`, if given, says how
    /// to continue.
    bool step(const std::function<void()>& action,
              const std::function<Resume(const Failure&)>& decide = {},
              int line = __builtin_LINE());

    std::u16string_view label() const { return label_; }

    /// For a `decide` that logs the failure but continues in its own way.
    void report(const Failure& failure) const;

private:
    friend void runProcedure(std::u16string_view, const Convention&,
                             const std::function<void(Procedure&)>&);
    struct ForcedExit {};

    void count(const Failure& failure);
    void reportLine(const std::u16string& message) const;
    classLog& log() const;

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
