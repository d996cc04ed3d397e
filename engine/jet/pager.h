// Writes a database file: changed pages are held back until they are complete, and the
// journal has their original content before the first of them is overwritten.
//
//   pager.begin();                              // a statement
//   try {
//       (*pager.edit(page))[2] = 7;
//       pager.end();
//   } catch (...) {
//       pager.undo();                           // the file is as before the statement
//       throw;
//   }
//   pager.commit();                             // all statements become durable together
//
// To readers it is a storage that shows the changes. Any thread may read; while a statement runs,
// all other threads wait. Everything else is for one thread at a time.
#pragma once

#include "engine/jet/journal.h"
#include "engine/jet/page_cache.h"
#include "engine/jet/read_write_lock.h"

#include <atomic>
#include <functional>
#include <map>
#include <optional>
#include <thread>
#include <unordered_map>

namespace jet {

/// A page that may be changed while this pointer exists.
using PageEdit = std::shared_ptr<Page>;

class Pager final : public Storage {
public:
    /// Changed pages in memory: 48 MiB. More are written to the file, after the journal.
    static constexpr std::size_t kDefaultCapacity = 12288;

    explicit Pager(std::unique_ptr<Storage> file, std::size_t capacity = kDefaultCapacity);

    /// Rolls back uncommitted changes.
    ~Pager() override;
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// Called before a page changes; with kNoPage if any page may have changed.
    void setListener(std::function<void(PageNumber)> listener) { listener_ = std::move(listener); }

    // ---- Reading ----

    std::uint64_t size() const override;
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override;

    bool isOpenElsewhere() const override { return file_->isOpenElsewhere(); }

    // ---- Statements and their end ----

    /// Begins a statement. Throws Error: ReadOnly, InUse, WriteFailed, and has no effect then.
    void begin();

    /// Keeps the statement's changes, though not durably yet.
    void end();

    /// Rolls back the statement's changes. If the storage fails, the file needs recovery by being
    /// opened again, and nothing can be read until then.
    void undo() noexcept;

    /// Whether there are uncommitted changes.
    bool hasChanges() const { return transaction_.has_value(); }

    /// Commits all changes and opens the file to others again. Throws Error: WriteFailed, DiskFull,
    /// ReadFailed; all changes since the last commit are rolled back then.
    void commit();

    /// Rolls back all changes since the last commit and opens the file to others again. If the storage
    /// fails, as undo().
    void rollBack() noexcept;

    // ---- Pages, during a statement ----

    /// The page as it is now. Throws Error: Damaged for a page outside the file, ReadFailed.
    PagePtr page(PageNumber number) const;

    /// The page, to be changed. Throws as page(), and Error: ReadOnly, WriteFailed, DiskFull.
    PageEdit edit(PageNumber number);

    /// Appends a page of zeros.
    /// Throws Error: FileFull, ReadOnly, WriteFailed, DiskFull.
    PageNumber append();

private:
    /// Starts with the first change after the last commit.
    struct Transaction {
        Journal journal;
        std::uint32_t pageCount;   ///< of the file when it began
        std::vector<bool> saved;   ///< pages whose contents at that time are in the journal
        bool fileTouched = false;  ///< whether the file itself has been written to
    };

    struct Statement {
        std::uint32_t pageCount = 0;
        std::vector<bool> saved;  ///< pages whose contents at its start are in the journal
        std::uint64_t journalEnd = Journal::kFirstRecord;
        bool first = false;  ///< of its transaction
    };

    void takeFile();
    Transaction& transaction();
    Journal newJournal();
    void save(PageNumber number, const Page& page);
    PageEdit frame(PageNumber number);
    void makeRoom();
    bool tryToMakeRoom();
    void writeFrames(bool all);
    void takeBackStatement();
    void takeBackTransaction();
    bool leaveTransaction();
    bool isOwner() const { return owner_.load() == std::this_thread::get_id(); }
    void notify(PageNumber number) const;

    std::unique_ptr<Storage> file_;
    const std::size_t capacity_;
    std::function<void(PageNumber)> listener_;

    mutable ReadWriteLock gate_;  ///< locked exclusively by the thread that changes anything
    std::atomic<std::thread::id> owner_{};
    bool locked_ = false;  ///< the file is locked by this process
    bool broken_ = false;  ///< a change could not be rolled back
    std::uint32_t pageCount_ = 0;
    std::map<std::uint32_t, PageEdit> frames_;  ///< changed pages that are not in the file
    std::optional<Transaction> transaction_;
    std::optional<Statement> statement_;
};

}  // namespace jet
