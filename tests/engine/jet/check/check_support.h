// What the tests of the checker share: a database in which every rule has something to look at, and
// the comparison of what is found with what is expected.
#pragma once

#include "engine/jet/check/check.h"
#include "tests/support/damage.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>

#include <ostream>

namespace jet {

/// A finding without its words.
struct Expected {
    Rule rule;
    PageNumber page;
    std::optional<unsigned> row{};
    Finding::Severity severity = Finding::Severity::Error;

    Expected(Rule broken, PageNumber where) : rule{broken}, page{where} {}
    Expected(Rule broken, RowId where) : rule{broken}, page{where.page()}, row{where.slot()} {}
    explicit Expected(const Finding& finding)
        : rule{finding.rule}, page{finding.page}, row{finding.row}, severity{finding.severity} {}

    friend bool operator==(const Expected&, const Expected&) = default;
};

inline Expected warning(Expected expected) {
    expected.severity = Finding::Severity::Warning;
    return expected;
}

inline void PrintTo(const Expected& expected, std::ostream* out) {
    *out << (expected.severity == Finding::Severity::Error ? "error" : "warning") << " of "
         << nameOf(expected.rule) << " on page " << raw(expected.page);
    if (expected.row) *out << ", row " << *expected.row;
}

inline void PrintTo(const Finding& finding, std::ostream* out) {
    PrintTo(Expected{finding}, out);
    *out << " in '" << finding.table << "': " << finding.message;
}

inline CheckReport checkBytes(const fixture::ByteVector& file) {
    return check(MemoryStorage{file});
}

/// Everything that is found, in any order.
inline std::vector<Expected> findingsIn(const fixture::ByteVector& file) {
    const CheckReport report = checkBytes(file);
    std::vector<Expected> found;
    for (const Finding& finding : report.findings) found.emplace_back(finding);
    EXPECT_EQ(report.errors + report.warnings, found.size());
    return found;
}

/// Exactly these are found.
inline void expectFindings(const fixture::ByteVector& file, const std::vector<Expected>& expected) {
    EXPECT_THAT(findingsIn(file), testing::UnorderedElementsAreArray(expected))
        << testing::PrintToString(checkBytes(file).findings);
}

inline void expectFinding(const fixture::ByteVector& file, Expected expected) {
    expectFindings(file, {expected});
}

/// Among others, where the damage spoils more than one thing.
inline void expectAmong(const fixture::ByteVector& file, Expected expected) {
    EXPECT_THAT(findingsIn(file), testing::Contains(expected))
        << testing::PrintToString(checkBytes(file).findings);
}

inline void expectClean(const fixture::ByteVector& file) { expectFindings(file, {}); }

/// Where the parts of a definition of one page stand in the file.
class DefinitionOffsets {
public:
    DefinitionOffsets(const fixture::ByteVector& file, PageNumber page)
        : begin_{fixture::pageOffset(page)} {
        columns_ = fixture::get<std::uint16_t>(file, begin_ + 45);
        const auto logical = fixture::get<std::uint32_t>(file, begin_ + 47);
        const auto physical = fixture::get<std::uint32_t>(file, begin_ + 51);
        counters_ = begin_ + 63;
        descriptors_ = counters_ + std::size_t{12} * physical;
        std::size_t at = descriptors_ + std::size_t{25} * columns_;
        for (std::size_t i = 0; i < columns_; ++i) {
            names_.push_back(at + 2);
            at += 2u + fixture::get<std::uint16_t>(file, at);
        }
        physical_ = at;
        logical_ = physical_ + std::size_t{52} * physical;
        at = logical_ + std::size_t{28} * logical;
        for (std::size_t i = 0; i < logical; ++i) {
            indexNames_.push_back(at + 2);
            at += 2u + fixture::get<std::uint16_t>(file, at);
        }
    }

    std::size_t header(std::size_t field) const { return begin_ + field; }
    std::size_t counter(std::size_t index) const { return counters_ + 12 * index; }
    std::size_t column(std::size_t i) const { return descriptors_ + 25 * i; }
    std::size_t columnName(std::size_t i) const { return names_[i]; }
    std::size_t physicalIndex(std::size_t i) const { return physical_ + 52 * i; }
    std::size_t logicalIndex(std::size_t i) const { return logical_ + 28 * i; }
    std::size_t indexName(std::size_t i) const { return indexNames_[i]; }

private:
    std::size_t begin_;
    std::size_t columns_ = 0;
    std::size_t counters_ = 0;
    std::size_t descriptors_ = 0;
    std::size_t physical_ = 0;
    std::size_t logical_ = 0;
    std::vector<std::size_t> names_;
    std::vector<std::size_t> indexNames_;
};

/// A sound database; tests damage `file`.
struct CheckSample {
    fixture::FixtureBuilder builder;

    /// Columns by place: Id, Name, Count, Flag, Note; indexes: byCount, byId, byName.
    fixture::TableBuilder& table = builder.addTable(
        {.name = u"Rows",
         .columns = {{.name = u"Id", .type = ColumnType::Long, .autonumber = true},
                     fixture::textColumn(u"Name", 50, false),
                     fixture::column(u"Count", ColumnType::Integer),
                     fixture::column(u"Flag", ColumnType::Boolean),
                     fixture::memoColumn(u"Note", false)},
         .indexes = {{.name = u"byCount", .columns = {{u"Count", false}}, .ignoreNulls = true},
                     {.name = u"byId",
                      .columns = {{u"Id"}},
                      .unique = true,
                      .required = true,
                      .primary = true},
                     {.name = u"byName", .columns = {{u"Name"}, {u"Id"}}, .entriesPerPage = 4}}});

    /// Has definitions to spoil and no rows that would be spoilt with them.
    fixture::TableBuilder& empty = builder.addTable(
        {.name = u"Empty",
         .columns = {fixture::column(u"A", ColumnType::Long), fixture::textColumn(u"B", 20),
                     fixture::textColumn(u"C", 20), fixture::column(u"D", ColumnType::Long)},
         .indexes = {{.name = u"one", .columns = {{u"A"}}, .unique = true, .primary = true},
                     {.name = u"two", .columns = {{u"D"}}}}});

    static constexpr std::size_t kSingle = 6;  ///< place in ids of a row whose note is one part
    static constexpr std::size_t kOtherSingle = 16;
    static constexpr std::size_t kChain = 3;
    static constexpr std::size_t kMoved = 4;
    static constexpr std::size_t kOtherMoved = 24;
    static constexpr std::size_t kDeleted = 8;
    static constexpr std::size_t kPlain = 1;

    std::vector<RowId> ids;
    fixture::ByteVector file;

    CheckSample() {
        for (int n = 0; n < 40; ++n) {
            if (n == 20) table.startNewPage();
            ids.push_back(table.insert(rowOf(n)));
        }
        table.moveRow(ids[kMoved], rowOf(kMoved));
        table.moveRow(ids[kOtherMoved], rowOf(kOtherMoved));
        table.deleteRow(ids[kDeleted]);
        file = builder.bytes();
    }

    static fixture::Row rowOf(std::size_t n) {
        const auto number = static_cast<std::int32_t>(n);
        fixture::Row row{number + 1, u"name " + std::u16string(n % 20 + 1, u'x'), number % 5,
                         n % 2 == 0};
        if (n % 7 == 0) row[2] = fixture::kNull;
        if (n == kChain) row.push_back(std::u16string(6000, u'c'));
        if (n % 10 == kSingle) row.push_back(std::u16string(300, u's'));
        if (n % 10 == 5) row.push_back(u"in the record");
        return row;
    }

    std::size_t record(std::size_t n) const { return fixture::rowOffset(file, ids[n]); }
    std::size_t recordEnd(std::size_t n) const {
        return record(n) + fixture::rowLength(file, ids[n]);
    }
    std::size_t note(std::size_t n) const {
        return fixture::longValueHeaderOffset(file, ids[n], 1);
    }
    RowId notePart(std::size_t n) const {
        return RowId::fromPacked(fixture::get<std::uint32_t>(file, note(n) + 4));
    }
    RowId movedTo(std::size_t n) const {
        return RowId::fromPacked(fixture::get<std::uint32_t>(file, record(n)));
    }
    PageNumber definition() const { return table.definitionPage(); }
    DefinitionOffsets offsets() const { return {file, table.definitionPage()}; }
    DefinitionOffsets emptyOffsets() const { return {file, empty.definitionPage()}; }

    /// Of the index byName, which has three levels: leaves first to last, and the root.
    PageNumber leaf(std::size_t n) const { return table.index(u"byName").pages()[n + 1]; }
    PageNumber root() const { return table.index(u"byName").root(); }
    std::size_t at(PageNumber page, std::size_t offset) const {
        return fixture::pageOffset(page) + offset;
    }

    /// The bit of a page in an inline map whose window begins with page 0.
    void setBit(RowId map, PageNumber page, bool value) {
        std::uint8_t& byte = file[fixture::rowOffset(file, map) + 5 + raw(page) / 8];
        const auto bit = static_cast<std::uint8_t>(1u << (raw(page) % 8));
        byte = static_cast<std::uint8_t>(value ? byte | bit : byte & ~bit);
    }
    static RowId freePages() { return {PageNumber{1}, 0}; }
};

}  // namespace jet
