// The rollback journal: pages as they were before they were changed, so that a change which was
// cut short can be taken back (recovery.h). The layout is in format/journal.h.
//
//   const std::uint32_t count = storage.pageCount();
//   jet::Journal journal{storage.createJournal(), count, jet::fingerprintOf(storage, count)};
//   journal.append(jet::Journal::Kind::Transaction, number, bytes);
//   journal.sync();                             // before the first page is overwritten
//   journal.invalidate();                       // the commit point
//
// The head counts the records. It is written and synced before the first record, with a count of 0;
// after records have been synced, with their number, and synced again; only then is a page of the
// file overwritten. The head lies in one sector, so a power failure leaves the old or the new one:
//
//  what is found                            what it means
//  nothing but zeros, no longer than a head  the head was not synced: the file is untouched
//  count 0, whatever follows                no page has been overwritten, or the change is complete
//  count n, n good records, whatever follows  pages of these n may have been overwritten, no others
//  count n, fewer good records              damage: no power failure leaves that
//  anything else                            damage, or a file that is not ours
//
// One thread, that of the holder of the file's lock.
#pragma once

#include "engine/jet/format/journal.h"
#include "engine/jet/storage.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace jet {

/// What the head of a journal says.
struct JournalHead {
    std::uint32_t pageCount = 0;  ///< of the file before the change
    std::uint32_t records = 0;    ///< that are durable; 0: nothing has to be put back
    std::uint64_t salt = 0;
    std::uint64_t fingerprint = 0;
};

class Journal {
public:
    enum class Kind : std::uint32_t {
        Transaction = 1,  ///< the page before the transaction, for recovery
        Statement = 2,    ///< the page before the current statement, for this process alone
    };

    /// Starts a journal in an empty file; its head is durable then. Throws what the storage throws.
    Journal(std::unique_ptr<Storage> file, std::uint32_t pageCount, std::uint64_t fingerprint);

    /// Adds a page. It is not durable before sync().
    void append(Kind kind, PageNumber number, Bytes page);

    /// Returns when all records are durable and counted; does nothing if there are no new ones.
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
    void writeHead(std::uint64_t records);

    std::unique_ptr<Storage> file_;
    JournalHead head_;
    std::vector<std::uint8_t> buffer_;  ///< records not yet written to the storage
    std::uint64_t end_ = kFirstRecord;
    bool synced_ = false;
};

/// The head of the journal in `file`; nothing if there is no valid one.
std::optional<JournalHead> readJournalHead(const Storage& file);

/// Calls `use` with the records from `from` to before `end`, up to the first that is damaged or
/// missing. Returns where it stopped.
std::uint64_t replayRecords(const Storage& journal, std::uint64_t salt, std::uint64_t from,
                            std::uint64_t end, const Journal::Use& use);

/// What ties a journal to its file: a checksum of some of its pages when the change began. The
/// header alone would not do: files copied from one template share it, and another one may have
/// taken the place of this file.
std::uint64_t fingerprintOf(const Storage& file, std::uint32_t pageCount);

}  // namespace jet
