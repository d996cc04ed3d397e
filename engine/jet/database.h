// An open database file: its header, its catalog and its tables.
//
//   auto database = jet::Database::open("traces.mdb");
//   auto table = database->table(u"tblTraces");
//
// Opening reads the header and nothing else; the catalog is read when first asked for. Any thread
// may call an open database.
#pragma once

#include "engine/jet/page_cache.h"
#include "engine/jet/storage.h"
#include "engine/jet/table.h"

#include <memory>
#include <mutex>
#include <optional>

namespace jet {

/// One object of the catalog.
struct CatalogEntry {
    std::uint32_t id = 0;  ///< of a table: the first page of its definition
    std::uint32_t parentId = 0;
    std::u16string name;
    std::int16_t type = 0;  ///< 1 table, 5 query, ... as stored
    std::uint32_t flags = 0;

    bool isTable() const { return type == 1; }
    bool isUserTable() const { return isTable() && (flags & 0x80000002u) == 0; }
};

class Database : public std::enable_shared_from_this<Database> {
public:
    /// Throws Error: what openFile throws; NotADatabase, OlderFormat, NewerFormat, Encrypted,
    /// PasswordProtected, Truncated.
    static std::shared_ptr<Database> open(const std::filesystem::path& path);
    static std::shared_ptr<Database> open(std::unique_ptr<Storage> storage);

    /// All objects that can be read, in storage order. Throws Error{Damaged} if the catalog as a
    /// whole cannot.
    const std::vector<CatalogEntry>& catalog();

    /// The table of that name, case ignored as the format's own collation does.
    /// Throws Error: NoSuchTable, Damaged.
    std::shared_ptr<const Table> table(std::u16string_view name);

    const Storage& storage() const { return *storage_; }
    PageCache& cache() { return cache_; }

private:
    explicit Database(std::unique_ptr<Storage> storage);
    std::vector<CatalogEntry> readCatalog();

    std::unique_ptr<Storage> storage_;
    PageCache cache_;
    std::mutex catalogMutex_;
    std::optional<std::vector<CatalogEntry>> catalog_;
};

}  // namespace jet
