// Changes of a small database in which an input changes bytes: three bytes say where, one what.
// Whatever it finds, a statement happens or is a typed error that changes nothing.
#include "engine/jet/database.h"
#include "engine/jet/write/new_database.h"
#include "engine/jet/write/schema.h"
#include "engine/jet/write/table_writer.h"
#include "tests/fuzz/small_pages.h"
#include "tests/support/faulty_disk.h"

namespace {

using jet::ColumnType;
using jet::Value;
using jet::WriteContext;

constexpr jet::Date kNow{42000};

Value text(std::size_t length, char16_t unit) { return std::u16string(length, unit); }

/// Rows that moved, were removed or have long values of all forms; two indexes.
std::vector<std::uint8_t> build() {
    auto storage = std::make_unique<jet::MemoryStorage>(jet::emptyDatabase(kNow));
    const jet::MemoryStorage& file = *storage;
    const auto database = jet::Database::open(std::move(storage));
    database->write([&](WriteContext& context) {
        context.now = kNow;
        jet::createTable(context, u"T",
                         {{.name = u"N", .type = ColumnType::Long, .autonumber = true},
                          {.name = u"S", .type = ColumnType::Text, .size = 100},
                          {.name = u"M", .type = ColumnType::Memo},
                          {.name = u"D", .type = ColumnType::Numeric, .scale = 4}});
        jet::createIndex(context, u"T", {.name = u"byS", .columns = {{u"S"}, {u"N", false}}});
        jet::createIndex(context, u"T", {.name = u"byN", .columns = {{u"N"}}, .primary = true});
    });
    database->write([&](WriteContext& context) {
        jet::TableWriter writer{context, database->table(u"T")->definition()};
        std::vector<jet::RowId> rows;
        for (std::size_t i = 0; i < 60; ++i) {
            const std::vector<Value> values{Value{}, text(i % 30 + 1, u's'),
                                            text(i % 9 == 0 ? 2500 * (i % 2 + 1) : i, u'm'),
                                            Value{}};
            rows.push_back(writer.insert(values));
        }
        const jet::Assignments longer{{1, text(50, u'\u4E01')}};
        for (std::size_t i = 0; i < 60; i += 4) writer.update(rows[i], longer);
        writer.remove(rows[7]);
        writer.remove(rows[8]);
        writer.finish();
    });
    database->commit();
    return file.content();
}

std::vector<std::uint8_t> contentOf(const jet::Storage& storage) {
    std::vector<std::uint8_t> content(static_cast<std::size_t>(storage.size()));
    storage.readAt(0, content);
    return content;
}

struct Opened {
    jet::Database& database;
    std::vector<std::uint8_t> committed = contentOf(database.storage());
};

/// Runs one statement. One that meets damage takes back all that is not yet committed.
void change(const Opened& file, const std::function<void(WriteContext&)>& statement) {
    const std::vector<std::uint8_t> before = contentOf(file.database.storage());
    try {
        file.database.write(statement);
    } catch (const jet::Error& error) {
        fuzz::require(error.fault() != jet::Fault::ReadFailed, "memory does not fail");
        const bool damaged = error.fault() == jet::Fault::DamagedFile;
        fuzz::require(contentOf(file.database.storage()) == (damaged ? file.committed : before),
                      "what failed changes nothing");
    }
}

/// Runs one statement that changes the rows of the table.
void changeRows(const Opened& file, const std::function<void(jet::TableWriter&)>& rows) {
    change(file, [&](WriteContext& context) {
        jet::TableWriter writer{context, file.database.table(u"T")->definition()};
        rows(writer);
        writer.finish();
    });
}

std::vector<jet::RowId> somePlaces(jet::Database& database) {
    std::vector<jet::RowId> places;
    try {
        const auto table = database.table(u"T");
        for (jet::TableScan scan{*table}; scan.next() && places.size() < 30;) {
            places.push_back(scan.rowId());
        }
    } catch (const jet::Error&) {
        // Then there are none.
    }
    return places;
}

void changeEverything(const Opened& file) {
    change(file, [](WriteContext& context) {
        jet::addColumn(context, u"T", {.name = u"B", .type = ColumnType::Boolean});
        jet::addColumn(context, u"T", {.name = u"K", .type = ColumnType::Text, .size = 320});
        jet::addColumn(context, u"T", {.name = u"O", .type = ColumnType::Ole});
    });
    changeRows(file, [](jet::TableWriter& writer) {
        const std::size_t last = writer.definition().columns.size() - 1;
        writer.updateRows([&](const jet::Record&, jet::PageReader&, jet::Assignments& changes) {
            using Kind = ColumnType;
            for (std::size_t i = 1; i <= last; ++i) {
                const Kind type = writer.definition().columns[i].type;
                if (type == Kind::Text || type == Kind::Memo)
                    changes.push_back({i, text(20, u'k')});
                if (type == Kind::Ole) changes.push_back({i, jet::Binary(300, 1)});
            }
            return true;
        });
    });
    change(file, [](WriteContext& context) {
        jet::createIndex(context, u"T", {.name = u"byK", .columns = {{u"K"}, {u"M"}}});
    });
    for (const jet::RowId place : somePlaces(file.database)) {
        changeRows(file, [&](jet::TableWriter& writer) {
            if (place.slot() % 3 == 0) return writer.remove(place);
            const jet::Assignments changes{{1, text(45, u'\u4E02')}, {2, text(4000, u'n')}};
            writer.update(place, changes);
        });
    }
    changeRows(file, [](jet::TableWriter& writer) {
        std::vector<Value> values(writer.definition().columns.size());
        for (std::size_t i = 0; i < 20; ++i) {
            if (values.size() > 2) values[2] = text(i * 300, u'i');
            writer.insert(values);
        }
    });
    change(file, [](WriteContext& context) {
        jet::createTable(context, u"U", {{.name = u"X", .type = ColumnType::Memo}});
        jet::dropTable(context, u"T");
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<std::uint8_t> original = build();
    std::vector<std::uint8_t> file = original;
    for (fuzz::Input input{data, size}; !input.rest().empty();) {
        const auto byte = input.next<std::uint32_t>();
        file[(byte & 0xFFFFFF) % file.size()] = static_cast<std::uint8_t>(byte >> 24);
    }
    fixture::FaultyDisk disk{std::move(file)};
    try {
        const auto database = jet::Database::open(disk.open(), 8);
        changeEverything({*database});
        database->commit();
    } catch (const jet::Error& error) {
        fuzz::require(error.fault() != jet::Fault::ReadFailed, "memory does not fail");
    }
    fuzz::require(!disk.hasJournal(), "no journal is left");
    return 0;
}
