#include "engine/jet/database.h"

#include "engine/jet/collation.h"
#include "engine/jet/header.h"
#include "engine/jet/text.h"
#include "engine/jet/usage_map.h"

namespace jet {
namespace {

constexpr PageNumber kCatalogPage{2};
constexpr std::uint32_t kObjectPageMask = 0x00FFFFFF;

template <typename T>
T valueOr(const Value& value, T otherwise) {
    const T* const held = std::get_if<T>(&value);
    return held == nullptr ? otherwise : *held;
}

const Column& requireColumn(const TableDefinition& definition, std::u16string_view name) {
    const Column* const column = definition.findColumn(name);
    if (column == nullptr) throwDamaged(definition.page, "the catalog lacks a column");
    return *column;
}

}  // namespace

Database::Database(std::unique_ptr<Storage> storage)
    : storage_{std::move(storage)}, cache_{*storage_} {}

std::shared_ptr<Database> Database::open(const std::filesystem::path& path) {
    return open(openFile(path));
}

std::shared_ptr<Database> Database::open(std::unique_ptr<Storage> storage) {
    checkHeader(*storage);
    std::shared_ptr<Database> database{new Database{std::move(storage)}};
    PageReader reader{database->storage(), database->cache()};
    checkLength(reader);
    return database;
}

const std::vector<CatalogEntry>& Database::catalog() {
    const std::lock_guard lock{catalogMutex_};
    if (!catalog_) catalog_ = readCatalog();
    return *catalog_;
}

std::vector<CatalogEntry> Database::readCatalog() {
    PageReader reader{*storage_, cache_};
    const Table objects{shared_from_this(),
                        TableDefinition::read(reader, kCatalogPage, u"MSysObjects")};
    const TableDefinition& definition = objects.definition();
    const Column& id = requireColumn(definition, u"Id");
    const Column& parent = requireColumn(definition, u"ParentId");
    const Column& name = requireColumn(definition, u"Name");
    const Column& type = requireColumn(definition, u"Type");
    const Column& flags = requireColumn(definition, u"Flags");

    const auto current = [&](TableScan& scan) {
        const auto field = [&](const Column& column) {
            return decodeField(scan.pages(), column, scan.record().field(column),
                               scan.record().page());
        };
        CatalogEntry entry;
        entry.id = static_cast<std::uint32_t>(valueOr<std::int32_t>(field(id), 0));
        entry.parentId = static_cast<std::uint32_t>(valueOr<std::int32_t>(field(parent), 0));
        entry.name = valueOr<std::u16string>(field(name), {});
        entry.type = valueOr<std::int16_t>(field(type), 0);
        entry.flags = static_cast<std::uint32_t>(valueOr<std::int32_t>(field(flags), 0));
        return entry;
    };

    std::vector<CatalogEntry> entries;
    TableScan scan{objects};
    while (scan.next()) {
        try {
            entries.push_back(current(scan));
        } catch (const Error& error) {
            // One object that cannot be read must not hide the others.
            if (error.fault() != Fault::Damaged) throw;
            scan.skipRow();
        }
    }
    return entries;
}

std::shared_ptr<const Table> Database::table(std::u16string_view name) {
    for (const CatalogEntry& entry : catalog()) {
        if (!entry.isTable() || compareText(entry.name, name) != std::strong_ordering::equal)
            continue;
        PageReader reader{*storage_, cache_};
        const PageNumber page{entry.id & kObjectPageMask};
        return std::make_shared<Table>(shared_from_this(),
                                       TableDefinition::read(reader, page, entry.name));
    }
    throw Error{Fault::NoSuchTable, "There is no table named '" + toUtf8(name) + "'."};
}

}  // namespace jet
