#include "engine/jet/database.h"

#include "engine/jet/collation.h"
#include "engine/jet/column_conflicts.h"
#include "engine/jet/definition_search.h"
#include "engine/jet/header.h"
#include "engine/jet/text.h"
#include "engine/jet/usage_map.h"

#include <chrono>
#include <ctime>

namespace jet {
namespace {

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

/// Local time to the second, as the catalog's dates have it.
Date localTime() {
    constexpr double kUnixEpoch = 25569;  // 1970-01-01
    constexpr double kSecondsADay = 86400;
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    const std::chrono::year_month_day day{
        std::chrono::year{local.tm_year + 1900},
        std::chrono::month{static_cast<unsigned>(local.tm_mon + 1)},
        std::chrono::day{static_cast<unsigned>(local.tm_mday)}};
    const auto days = std::chrono::sys_days{day}.time_since_epoch().count();
    const int seconds = (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec;
    return Date{kUnixEpoch + static_cast<double>(days) + seconds / kSecondsADay};
}

}  // namespace

Database::Database(std::unique_ptr<Storage> storage, std::size_t changedPages, Recovery recovery)
    : recovery_{std::move(recovery)},
      pager_{std::move(storage), changedPages},
      cache_{pager_},
      clock_{localTime} {
    pager_.setListener([this](PageNumber number) {
        if (number == kNoPage) {
            cache_.clear();
        } else {
            cache_.forget(number);
        }
    });
}

Database::~Database() {
    try {
        commit();
    } catch (const std::exception&) {
        // Rolled back by then; a caller who needs to know commits first.
    }
}

std::shared_ptr<Database> Database::open(const std::filesystem::path& path) {
    return open(openFile(path));
}

std::shared_ptr<Database> Database::open(std::unique_ptr<Storage> storage,
                                         std::size_t changedPages) {
    Recovery recovery;
    storage = recover(std::move(storage), recovery);
    checkHeader(*storage);
    std::shared_ptr<Database> database{
        new Database{std::move(storage), changedPages, std::move(recovery)}};
    PageReader reader{database->storage(), database->cache()};
    database->noteMissingPages(missingPages(reader));
    return database;
}

void Database::noteMissingPages(std::uint64_t count) {
    if (count == 0) return;
    const std::uint32_t pageCount = pager_.pageCount();
    Loss loss{Loss::Kind::MissingPages, PageNumber{pageCount}, Loss::kNoSlot,
              "The file is truncated: it holds " + std::to_string(pageCount) + " of " +
                  std::to_string(pageCount + count) + " pages."};
    noteLoss(loss);
    const std::lock_guard lock{lossMutex_};
    openingLosses_.add(std::move(loss), count);
}

TableDefinition Database::readDefinition(PageReader& pages, PageNumber page, std::u16string name) {
    TableDefinition definition = TableDefinition::read(pages, page, std::move(name));
    setAsideConflicts(definition);
    for (const Loss& loss : definition.losses.reasons) noteLoss(loss);
    return definition;
}

const std::vector<CatalogEntry>& Database::catalog() {
    const std::lock_guard lock{catalogMutex_};
    if (!catalog_) catalog_ = readCatalog();
    return *catalog_;
}

Losses Database::losses() const {
    const std::lock_guard lock{lossMutex_};
    Losses all = openingLosses_;
    all += catalogLosses_;
    return all;
}

std::optional<Loss> Database::firstLoss() const {
    const std::lock_guard lock{lossMutex_};
    return firstLoss_;
}

void Database::noteLoss(const Loss& loss) {
    const std::lock_guard lock{lossMutex_};
    if (!firstLoss_ && loss.kind != Loss::Kind::Hints) firstLoss_ = loss;
    if (lossListener_) lossListener_(loss);
}

void Database::noteDoubts(const Losses& doubts) {
    const std::lock_guard lock{lossMutex_};
    for (const Loss& doubt : doubts.reasons) {
        if (!firstLoss_) firstLoss_ = doubt;
        if (lossListener_) lossListener_(doubt);
    }
}

void Database::setLossListener(std::function<void(const Loss&)> listener) {
    const std::lock_guard lock{lossMutex_};
    lossListener_ = std::move(listener);
    if (!lossListener_) return;
    for (const Loss& loss : openingLosses_.reasons) lossListener_(loss);
    for (const Loss& loss : catalogLosses_.reasons) lossListener_(loss);
}

void Database::commit() {
    try {
        pager_.commit();
    } catch (...) {
        forgetCatalog();
        throw;
    }
}

void Database::forgetCatalog() {
    const std::lock_guard lock{catalogMutex_};
    catalog_.reset();
}

/// Entries that cannot be read are lost. Then, the tables that they led to are looked for.
std::vector<CatalogEntry> Database::readCatalog() {
    Losses losses;
    std::vector<CatalogEntry> entries;
    try {
        entries = readObjects(losses);
    } catch (const Error& error) {
        if (!isDamage(error)) throw;
        losses.add({Loss::Kind::Tables, format::catalog::kObjects, Loss::kNoSlot, error.what()});
        noteLoss(losses.reasons.back());
    }
    if (losses.any()) {
        PageReader reader{pager_, cache_};
        for (CatalogEntry& entry : entriesOfLostTables(reader, entries)) {
            entries.push_back(std::move(entry));
        }
    }
    const std::lock_guard lock{lossMutex_};
    catalogLosses_ = std::move(losses);
    return entries;
}

std::vector<CatalogEntry> Database::readObjects(Losses& losses) {
    PageReader reader{pager_, cache_};
    const Table objects{shared_from_this(),
                        readDefinition(reader, format::catalog::kObjects, u"MSysObjects")};
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
        entry.parentId = static_cast<std::uint32_t>(
            valueOr<std::int32_t>(readField(scan.pages(), parent, scan.record()), 0));
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
            scan.loseRow(error);
        }
    }
    losses = scan.losses();
    return entries;
}

std::shared_ptr<const Table> Database::table(std::u16string_view name) {
    for (const CatalogEntry& entry : catalog()) {
        if (!entry.isTable() || compareText(entry.name, name) != std::strong_ordering::equal)
            continue;
        PageReader reader{pager_, cache_};
        return std::make_shared<Table>(shared_from_this(),
                                       readDefinition(reader, entry.definition(), entry.name));
    }
    throw Error{Fault::NoSuchTable, "There is no table named '" + toUtf8(name) + "'."};
}

}  // namespace jet
