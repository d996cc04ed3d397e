// The one exception type of this layer.
//
//   try { auto database = jet::Database::open(path); }
//   catch (const jet::Error& e) { report(e.fault(), e.what()); }
#pragma once

#include "engine/jet/types.h"

#include <stdexcept>
#include <string>

namespace jet {

enum class Fault {
    FileNotFound,       ///< no such file or folder
    AccessDenied,       ///< the system refuses to open it
    InUse,              ///< another program holds it so that it cannot be shared
    ReadFailed,         ///< the storage failed: a vanished share, a bad disk
    NotADatabase,       ///< the file's first bytes are something else
    OlderFormat,        ///< Jet 3 (Access 97)
    NewerFormat,        ///< ACE (Access 2007 and later)
    Encrypted,          ///< pages are encrypted with a database key
    PasswordProtected,  ///< a database password is set
    Truncated,          ///< the file ends in the middle of what it promises
    Damaged,            ///< a structure in the file contradicts the format
    NoSuchTable,
};

/// A failure to read the file. what() is one UTF-8 sentence for a person: it says what is wrong
/// and, for damage, in which table and on which page.
class Error : public std::runtime_error {
public:
    Error(Fault fault, const std::string& message, PageNumber page = kNoPage)
        : std::runtime_error{message}, fault_{fault}, page_{page} {}

    Fault fault() const { return fault_; }

    /// The page on which damage was found; kNoPage where that has no meaning.
    PageNumber page() const { return page_; }

private:
    Fault fault_;
    PageNumber page_;
};

/// Throws Error{Fault::Damaged} that names the page and the reason.
[[noreturn]] void throwDamaged(PageNumber page, const std::string& reason);

}  // namespace jet
