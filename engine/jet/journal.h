// The rollback journal: pages as they were before they were changed, so that a change which was
// cut short can be taken back. The layout is in format/journal.h.
//
//   const std::uint32_t count = storage.pageCount();
//   jet::Journal journal{storage.createJournal(), count, jet::fingerprintOf(storage, count)};
//   journal.append(jet::Journal::Kind::Transaction, number, bytes);
//   journal.sync();                             // before the first page is overwritten
//   journal.invalidate();                       // the commit point
//
// A record counts only if its checksum is right, so it does not matter where a crash cut the
// journal off. A journal whose head is not valid is ignored.
//
// One thread, that of the holder of the file's lock.
#pragma once

#include "engine/jet/format/journal.h"
#include "engine/jet/storage.h"

#include <functional>
#include <memory>
#include <vector>

namespace jet {

class Journal {
public:
    enum class Kind : std::uint32_t {
        Transaction = 1,  ///< the page before the transaction, for recovery
        Statement = 2,    ///< the page before the current statement, for this process alone
    };

    /// Starts a journal in an empty file. Throws what the storage throws.
    Journal(std::unique_ptr<Storage> file, std::uint32_t pageCount, std::uint64_t fingerprint);

    /// Adds a page. It is not durable before sync().
    void append(Kind kind, PageNumber number, Bytes page);

    /// Returns when all records are durable; does nothing if there are no new ones.
    void sync();

    /// Where the next record will be.
    std::uint64_t end() const { return end_; }

    /// Calls `use` with kind, number and bytes of each record from `from` to the current end.
    /// Throws Error{ReadFailed}, also for a record with a wrong checksum.
    using Use = std::function<void(Kind, PageNumber, Bytes)>;
    void replay(std::uint64_t from, const Use& use);
    static constexpr std::uint64_t kFirstRecord = format::journal::kHeadSize;

    /// Invalidates the journal: the commit point, at which a change becomes durable.
    void invalidate();

private:
    void flush();

    std::unique_ptr<Storage> file_;
    std::uint64_t salt_;
    std::vector<std::uint8_t> buffer_;  ///< records not yet written to the storage
    std::uint64_t end_ = 0;
    bool synced_ = false;
};

/// What ties a journal to its file: a checksum of some of its pages when the change began. The
/// header alone would not do: files copied from one template share it, and another one may have
/// taken the place of this file.
std::uint64_t fingerprintOf(const Storage& file, std::uint32_t pageCount);

/// Rolls back a change that was interrupted by a crash: restores the pages in the storage's
/// journal. Does nothing without a valid journal for this file. Throws Error: ReadOnly or InUse if
/// a rollback is needed and not possible, ReadFailed, WriteFailed.
void recover(Storage& file);

/// The same for the holder of the file's lock.
void recoverLocked(Storage& file);

}  // namespace jet
