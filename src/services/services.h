// What the parts of the viewer take from the world around them, in one value: main.cpp composes it
// for the program, and a test for itself.
//
//   Services mine = services();              // what is in use, but with another registry
//   mine.registry = &fakeRegistry;
//   const ServicesInUse inUse{mine};         // to the end of the block
//
// The interfaces belong to the layers above; only their names are declared here. What the pointers
// name must outlive ServicesInUse. The user-interface thread; a crash reads them on any.
#pragma once

#include <exception>
#include <functional>
#include <optional>
#include <string>

class classLog;
class LoadingEvents;
struct Failure;
namespace ado {
class Recordset;
}
namespace forms {
class Dialogs;
}
namespace RegistryAPI {
class Registry;
}

struct Services {
    classLog* log = nullptr;                    ///< null: what is logged is lost
    RegistryAPI::Registry* registry = nullptr;  ///< null: an empty one
    forms::Dialogs* dialogs = nullptr;          ///< null: the system's
    LoadingEvents* events = nullptr;            ///< needed before a database is opened
    /// Runs what may take long while the window is painted. Empty: whoever asks for it runs it.
    std::function<void(const std::function<void()>& work)> runWhilePainting = {};
    /// Reads exceptions of a kind that the log does not know; nothing for all others. May be null.
    std::optional<Failure> (*readFailure)(const std::exception_ptr& error) = nullptr;
    /// Reads the macro traces of a database that was opened. May be null.
    void (*readMacroTraces)(ado::Recordset& recordset) = nullptr;
    std::u16string languageFolder = {};  ///< of the language libraries; empty: the program's own
};

/// Those in use; all of them empty until some are.
const Services& services();

/// Puts services into use until the end of the block, when those before come back.
class ServicesInUse {
public:
    explicit ServicesInUse(Services services);
    ~ServicesInUse();
    ServicesInUse(const ServicesInUse&) = delete;
    ServicesInUse& operator=(const ServicesInUse&) = delete;

private:
    Services services_;
    const Services* before_;
};
