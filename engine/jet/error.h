// The one exception type of this layer.
//
//   try {
//       auto database = jet::Database::open(path);
//   } catch (const jet::Error& error) {
//       report(error.fault(), error.what());
//   }
//
// Any thread; an error is a plain value.
#pragma once

#include "engine/jet/format/types.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace jet {

enum class Fault {
    FileNotFound,       ///< no such file or folder
    AccessDenied,       ///< the system refuses to open it
    InUse,              ///< another program has it open without sharing
    ReadFailed,         ///< the storage failed: a vanished share, a bad disk
    NotADatabase,       ///< the file's first bytes are something else
    OlderFormat,        ///< Jet 3 (Access 97)
    NewerFormat,        ///< ACE (Access 2007 and later)
    Encrypted,          ///< pages are encrypted with a database key
    PasswordProtected,  ///< a database password is set
    Truncated,          ///< the file is shorter than it says
    Damaged,            ///< a structure in the file contradicts the format
    NoSuchTable,
    ReadOnly,         ///< the file or its folder may not be written
    JournalInTheWay,  ///< a file of the journal's name is not a journal that can be put back
    DamagedFile,      ///< the file is not written because something in it cannot be read
    WriteFailed,      ///< the storage failed while it was written to
    DiskFull,         ///< no room for the change
    FileFull,         ///< the change would take the file beyond the format's 2 GB
    TableExists,      ///< an object of that name is in the catalog
    AlreadyExists,    ///< the table has a column or an index of that name
    NoSuchColumn,     ///< the table has no such column
    TooMany,          ///< more columns or indexes, or a longer name, than the format allows
    ValueTooLarge,    ///< a value or a record is longer than its column or a page
    WrongType,        ///< a value is not of its column's type, or the type is not allowed there
    DuplicateKey,     ///< a unique index contains the key already
    NullKey,          ///< Null in an index that forbids it
    IndexNotWritable  ///< an index with an unsupported collation
};

/// A failure to read or write the file. what() is one readable UTF-8 sentence: what is wrong and,
/// for damage, in which table and on which page.
class Error : public std::runtime_error {
public:
    Error(Fault fault, const std::string& message, PageNumber page = kNoPage)
        : std::runtime_error{message}, fault_{fault}, page_{page} {}

    Fault fault() const { return fault_; }

    /// The damaged page; kNoPage if it does not apply.
    PageNumber page() const { return page_; }

private:
    Fault fault_;
    PageNumber page_;
};

/// Whether an error says that a part of the file is damaged or missing, which leaves the rest of it
/// readable; others are failures of the storage itself.
inline bool isDamage(const Error& error) {
    return error.fault() == Fault::Damaged || error.fault() == Fault::Truncated;
}

/// Throws Error{Fault::Damaged} that names the page and the reason.
[[noreturn]] void throwDamaged(PageNumber page, std::string_view reason);

}  // namespace jet
