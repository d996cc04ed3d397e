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
// To readers it is a storage like any other, which shows the changes. Any thread may read; while a
// statement runs, all but the thread that runs it wait. Everything else is for
// one thread at a time.
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

/// A page that may be changed as long as this is held.
using PageEdit = std::shared_ptr<Page>;

class Pager final : public Storage {
public:
    /// Changed pages held in memory: 48 MiB. More are written to the file, behind the journal.
    static constexpr std::size_t kDefaultCapacity = 12288;

    explicit Pager(std::unique_ptr<Storage> file, std::size_t capacity = kDefaultCapacity);

    /// Takes back what was not committed.
    ~Pager() override;
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// Called for every page that changes, before it does; with kNoPage if any may have.
    void setListener(std::function<void(PageNumber)> listener) { listener_ = std::move(listener); }

    // ---- Reading ----

    std::uint64_t size() const override;
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override;

    // ---- Statements and their end ----

    /// Begins a statement. Throws Error: ReadOnly, InUse, WriteFailed; nothing has begun then.
    void begin();

    /// Keeps the statement's changes, though not durably yet.
    void end();

    /// Takes back the statement's changes. If the storage fails at that, the file is left to
    /// recovery when it is opened next, and nothing can be read until then.
    void undo() noexcept;

    /// Whether there are changes that are not durable.
    bool hasChanges() const { return transaction_.has_value(); }

    /// Makes all changes durable and opens the file to others again. Throws Error: WriteFailed,
    /// DiskFull, ReadFailed; all changes since the last commit are taken back then.
    void commit();

    // ---- Pages, during a statement ----

    /// The page as it is now. Throws Error: Damaged for a page outside the file, ReadFailed.
    PagePtr page(PageNumber number) const;

    /// The page, to be changed. Throws as page(), and Error: ReadOnly, WriteFailed, DiskFull.
    PageEdit edit(PageNumber number);

    /// A new page of zeros behind the last one.
    /// Throws Error: FileFull, ReadOnly, WriteFailed, DiskFull.
    PageNumber append();

private:
    /// What began with the first change after the last commit.
    struct Transaction {
        Journal journal;
        std::uint32_t pageCount;   ///< of the file when it began
        std::vector<bool> saved;   ///< pages that the journal holds as they were then
        bool fileTouched = false;  ///< whether the file itself has been written to
    };

    struct Statement {
        std::uint32_t pageCount = 0;
        std::vector<bool> saved;  ///< pages that the journal holds as they were when it began
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

    mutable ReadWriteLock gate_;  ///< held alone by the thread that changes anything
    std::atomic<std::thread::id> owner_{};
    bool locked_ = false;  ///< the file, for this process alone
    bool broken_ = false;  ///< a change could not be taken back
    std::uint32_t pageCount_ = 0;
    std::map<std::uint32_t, PageEdit> frames_;  ///< pages that the file does not have as they are
    std::optional<Transaction> transaction_;
    std::optional<Statement> statement_;
};

}  // namespace jet
