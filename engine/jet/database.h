// An open database file: its header, its catalog and its tables.
//
//   auto database = jet::Database::open("traces.mdb");
//   auto table = database->table(u"tblTraces");
//
// Opening reads only the header; the catalog is read when it is first needed. A change
// that a crash cut short is taken back first (recovery.h). Any thread may read an open database; one thread at a
// time changes it.
#pragma once

#include "engine/jet/format/catalog.h"
#include "engine/jet/page_cache.h"
#include "engine/jet/pager.h"
#include "engine/jet/recovery.h"
#include "engine/jet/storage.h"
#include "engine/jet/table.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace jet {

/// One object of the catalog.
struct CatalogEntry {
    std::uint32_t id = 0;
    std::uint32_t parentId = 0;
    std::u16string name;
    std::int16_t type = 0;  ///< 1 table, 5 query, ... as stored
    std::uint32_t flags = 0;

    bool isTable() const { return type == format::catalog::kTable; }
    bool isUserTable() const { return isTable() && (flags & format::catalog::kSystemFlags) == 0; }

    /// Of a table: the first page of its definition.
    PageNumber definition() const { return PageNumber{id & format::catalog::kPageMask}; }
};

struct WriteContext;

class Database : public std::enable_shared_from_this<Database> {
public:
    /// Throws Error: what openFile throws; NotADatabase, OlderFormat, NewerFormat, Encrypted,
    /// PasswordProtected, Truncated.
    static std::shared_ptr<Database> open(const std::filesystem::path& path);
    /// `changedPages`: how many changed pages are held in memory, see Pager.
    static std::shared_ptr<Database> open(std::unique_ptr<Storage> storage,
                                          std::size_t changedPages = Pager::kDefaultCapacity);

    /// Commits and ignores failures; call commit() to see them.
    ~Database();

    /// All readable objects, in storage order. If any cannot be read, the tables that no entry leads
    /// to follow, under names that are made up: Table1, Table2, ...
    const std::vector<CatalogEntry>& catalog();

    /// The table of that name, compared by the format's collation.
    /// Throws Error: NoSuchTable, Damaged.
    std::shared_ptr<const Table> table(std::u16string_view name);

    // ---- Damage ----

    /// What opening the file and reading its catalog lost.
    Losses losses() const;

    /// The first loss that any reader of this connection has met; hints do not count.
    std::optional<Loss> firstLoss() const;

    /// To be called by every reader that meets a loss. Any thread.
    void noteLoss(const Loss& loss);

    /// To be called with hints at damage that a PageReader has survived: they forbid writing, too.
    void noteDoubts(const Losses& doubts);

    /// Calls `listener` with each loss and hint: those of losses() now, others when they are met, on
    /// the thread that meets them, one at a time.
    void setLossListener(std::function<void(const Loss&)> listener);

    // ---- Changes ----

    /// Runs `change` as one atomic statement. Its changes are visible in this object at once and
    /// become durable with commit(); until then no other program can open the file.
    /// A file in which any reader of this object has met a loss is not written: all statements since
    /// the last commit are rolled back, and this one and all later ones throw Error{DamagedFile}, which
    /// names the first loss.
    /// Throws Error: DamagedFile, ReadOnly, InUse, WriteFailed, DiskFull; what `change` throws.
    void write(const std::function<void(WriteContext&)>& change);

    /// Commits the statements since the last commit atomically; after that other programs can open
    /// the file again. Throws Error: WriteFailed, DiskFull, ReadFailed; all of them are rolled back
    /// then.
    void commit();

    /// Reads the catalog again when it is needed next. For code that changes it.
    void forgetCatalog();

    bool hasUncommittedChanges() const { return pager_.hasChanges(); }

    /// The clock for the catalog's dates; local time by default.
    void setClock(std::function<Date()> clock) { clock_ = std::move(clock); }

    /// What became of a change that was interrupted before this object opened the file.
    const Recovery& recovery() const { return recovery_; }

    const Storage& storage() const { return pager_; }
    PageCache& cache() { return cache_; }

private:
    Database(std::unique_ptr<Storage> storage, std::size_t changedPages, Recovery recovery);
    void noteMissingPages(std::uint64_t count);
    std::vector<CatalogEntry> readCatalog();
    std::vector<CatalogEntry> readObjects(Losses& losses);
    TableDefinition readDefinition(PageReader& pages, PageNumber page, std::u16string name);
    void refuseDamaged();

    const Recovery recovery_;
    Pager pager_;
    PageCache cache_;
    std::function<Date()> clock_;
    std::mutex catalogMutex_;
    std::optional<std::vector<CatalogEntry>> catalog_;

    mutable std::mutex lossMutex_;
    // Under lossMutex_:
    Losses openingLosses_;
    Losses catalogLosses_;
    std::optional<Loss> firstLoss_;
    std::function<void(const Loss&)> lossListener_;
};

}  // namespace jet
