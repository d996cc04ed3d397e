// Changes to a database that were cut short, and what else lies beside it under the name of its
// journal (journal.h).
//
//   jet::Recovery recovery;
//   const auto storage = jet::recover(jet::openFile(path), recovery);
//   if (recovery.pagesPutBack != 0) report(recovery.pagesPutBack);
//
// Only a journal that this engine made for this very file is ever put back or removed. One thread.
#pragma once

#include "engine/jet/journal.h"

#include <memory>
#include <string>

namespace jet {

/// What became of an interrupted change when the file was opened.
struct Recovery {
    std::uint32_t pagesPutBack = 0;   ///< in the file
    std::uint32_t pagesLaidOver = 0;  ///< when reading: the file itself could not be written

    /// Why the file cannot be changed: a sentence that names the file in the way. Empty if it can.
    std::string obstacle;

    /// The journal of an interrupted change is damaged: the file may hold half of that change.
    bool incomplete = false;

    /// A file of the journal's name is still there.
    bool journalRemains = false;
};

/// Takes back a change that a crash cut short. Returns the storage to read from: `file`, or, if it
/// cannot be written, a read-only view with the journal's pages laid over its own. A journal that is
/// damaged and a file that is no journal of this database are left alone and named in `recovery`.
/// Throws Error{ReadFailed}.
std::unique_ptr<Storage> recover(std::unique_ptr<Storage> file, Recovery& recovery);

/// The same without writing.
std::unique_ptr<Storage> viewRecovered(std::unique_ptr<Storage> file, Recovery& recovery);

/// Makes way for a journal: takes back a change that was cut short and removes what is left of
/// complete ones. Returns the number of pages put back. Requires: the file is locked.
/// Throws Error: JournalInTheWay for a file that is not removed; ReadFailed, WriteFailed.
std::uint32_t recoverLocked(Storage& file);

}  // namespace jet
