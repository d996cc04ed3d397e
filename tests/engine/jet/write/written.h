// What every test of a change ends with: the file keeps all rules, and another reader sees in it
// what this one does.
//
//   Written file;                                          // a new database, in memory
//   file.database->write([](WriteContext& context) {...});
//   file.expectSound();
#pragma once

#include "engine/jet/check/check.h"
#include "engine/jet/database.h"
#include "engine/jet/write/new_database.h"
#include "engine/jet/write/schema.h"
#include "engine/jet/write/table_writer.h"
#include "tests/engine/jet/plain_value.h"
#include "tests/support/expected.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace jet {

inline constexpr Date kTestNow{42000.5};

/// All findings, a line each.
inline std::string describe(const CheckReport& report) {
    std::string text;
    for (const Finding& finding : report.findings) {
        text += std::string{nameOf(finding.rule)} + " on page " + std::to_string(raw(finding.page));
        if (finding.row) text += ", row " + std::to_string(*finding.row);
        text += " of " + finding.table + ": " + finding.message + "\n";
    }
    return text;
}

/// A database that was written here keeps the rules of which others only warn, too.
inline void expectClean(const Storage& storage) {
    const CheckReport report = check(storage);
    EXPECT_TRUE(report.sound() && report.warnings == 0) << describe(report);
}

/// A database in memory.
class Written {
public:
    explicit Written(std::vector<std::uint8_t> bytes = emptyDatabase(kTestNow)) {
        auto storage = std::make_unique<MemoryStorage>(std::move(bytes));
        content_ = storage.get();
        database = Database::open(std::move(storage));
        database->setClock([] { return kTestNow; });
    }

    void write(const std::function<void(WriteContext&)>& change) { database->write(change); }

    /// Adds rows in one statement.
    void insert(std::u16string_view table, const std::vector<std::vector<Value>>& rows) {
        write([&](WriteContext& context) {
            TableWriter writer{context, database->table(table)->definition()};
            for (const auto& row : rows) writer.insert(row);
            writer.finish();
        });
    }

    std::vector<fixture::PlainRow> rows(std::u16string_view table) {
        return plainRows(*database->table(table));
    }

    void expectClean() { jet::expectClean(database->storage()); }

    /// What the file holds: what has been committed.
    const std::vector<std::uint8_t>& bytes() const { return content_->content(); }

    std::shared_ptr<Database> database;

private:
    const MemoryStorage* content_;
};

template <typename... T>
std::vector<Value> row(T... values) {
    return {Value{std::move(values)}...};
}

inline Value text(std::u16string value) { return value; }

}  // namespace jet
