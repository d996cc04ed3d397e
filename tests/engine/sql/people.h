// A small database for the tests of the dialect, and the rows of a statement as texts.
#pragma once

#include "engine/jet/text.h"
#include "engine/sql/run/query.h"
#include "engine/sql/values/text_form.h"
#include "tests/support/fixture_builder.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sqltest {

inline std::shared_ptr<jet::Database> open(fixture::FixtureBuilder& builder) {
    return jet::Database::open(std::make_unique<jet::MemoryStorage>(builder.bytes()));
}

/// Five people; Dora's fields are null, Eve's texts are empty.
inline std::shared_ptr<jet::Database> people() {
    using fixture::kNull;
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable({
        .name = u"People",
        .columns = {fixture::textColumn(u"Name", 50),
                    fixture::column(u"Age", jet::ColumnType::Integer),
                    fixture::column(u"Date", jet::ColumnType::Date),
                    fixture::column(u"Pay", jet::ColumnType::Currency),
                    fixture::column(u"Member", jet::ColumnType::Boolean),
                    fixture::memoColumn(u"Notes"),
                    fixture::column(u"Ratio", jet::ColumnType::Double),
                    fixture::numericColumn(u"Price", 10, 2), fixture::textColumn(u"Order", 10),
                    fixture::column(u"Key", jet::ColumnType::Guid)},
    });
    const auto price = [](std::uint32_t cents) { return jet::Numeric{false, 2, {0, 0, 0, cents}}; };
    const jet::Guid guid{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
    table.insert({u"Ada", std::int16_t{36}, jet::Date{38840.5}, jet::Currency{125000}, true,
                  u"first programmer", 0.5, price(1250), u"b", guid});
    table.insert({u"bob", std::int16_t{20}, jet::Date{38841.0}, jet::Currency{-5000}, false,
                  u"builder", 2.0, price(5), u"a", kNull});
    table.insert({u"Célia", std::int16_t{36}, jet::Date{-1.25}, jet::Currency{125000}, true,
                  u"coach", -1.5, price(1250), u"c", kNull});
    table.insert({kNull, kNull, kNull, kNull, false, kNull, kNull, kNull, kNull, kNull});
    table.insert({u"", std::int16_t{0}, jet::Date{0.0}, jet::Currency{0}, false, u"", 0.0, price(0),
                  u"B", kNull});
    return open(builder);
}

inline std::string show(const jet::Value& value) {
    if (jet::isNull(value)) return "NULL";
    if (const auto* truth = std::get_if<bool>(&value)) return *truth ? "True" : "False";
    std::u16string text;
    sql::appendText(value, text);
    return jet::toUtf8(text);
}

/// The rows of a result, their fields joined by bars.
inline std::vector<std::string> rows(const std::shared_ptr<jet::Database>& database,
                                     std::u16string_view statement,
                                     const sql::Definitions& definitions = {}) {
    std::vector<std::string> result;
    const auto query = sql::Query::prepare(database, statement, definitions);
    for (const auto cursor = query->execute(); cursor->next();) {
        std::string line;
        for (const jet::Value& value : cursor->row())
            line += (&value == cursor->row().data() ? "" : "|") + show(value);
        result.push_back(line);
    }
    return result;
}

/// The names of the people who satisfy a condition, each followed by a blank.
inline std::string who(const std::shared_ptr<jet::Database>& database,
                       const std::u16string& condition) {
    std::string names;
    for (const auto& row : rows(database, u"SELECT Name FROM People WHERE " + condition)) {
        names += (row.empty() ? "(empty)" : row) + " ";
    }
    return names;
}

/// What an expression yields for Ada.
inline std::string yields(const std::shared_ptr<jet::Database>& database,
                          const std::u16string& expression) {
    const auto found = rows(database, u"SELECT " + expression + u" FROM People WHERE Name = 'Ada'");
    return found.size() == 1 ? found.front() : "not one row";
}

/// The failure of a statement: its fault and text. Fails the test if there is none.
inline sql::Error failure(const std::shared_ptr<jet::Database>& database,
                          std::u16string_view statement) {
    try {
        rows(database, statement);
    } catch (const sql::Error& error) {
        return error;
    }
    throw std::logic_error{"no failure: " + jet::toUtf8(statement)};
}

inline sql::Fault faultOf(const std::shared_ptr<jet::Database>& database,
                          std::u16string_view statement) {
    return failure(database, statement).fault();
}

}  // namespace sqltest
