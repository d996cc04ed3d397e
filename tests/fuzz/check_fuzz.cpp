// The checker on a small database in which an input changes bytes: three bytes say where, one what.
#include "engine/jet/check/check.h"
#include "tests/fuzz/small_pages.h"
#include "tests/support/fixture_builder.h"

namespace {

/// Moved and deleted rows, long values of all forms, a tree of three levels, bitmap pages.
std::vector<std::uint8_t> build() {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"T",
         .columns = {fixture::column(u"N", jet::ColumnType::Long), fixture::textColumn(u"S", 50),
                     fixture::memoColumn(u"M"), fixture::numericColumn(u"D", 18, 4)},
         .indexes = {{.name = u"byS", .columns = {{u"S"}, {u"N"}}, .entriesPerPage = 3},
                     {.name = u"byM", .columns = {{u"M", false}}, .ignoreNulls = true},
                     {.name = u"byN", .columns = {{u"N"}}, .unique = true, .primary = true}},
         .maps = fixture::MapForm::Reference});
    std::vector<jet::RowId> rows;
    for (int n = 0; n < 24; ++n) {
        rows.push_back(table.insert({n, u"text", std::u16string(n % 4 == 0 ? 5000u : 70u, u'm'),
                                     n % 5 == 0 ? fixture::kNull : jet::Numeric{}}));
    }
    table.moveRow(rows[3], {3, u"moved", u"", fixture::kNull});
    table.deleteRow(rows[5]);
    return builder.bytes();
}

void checkEverything(const jet::Storage& storage) {
    const jet::CheckReport report = jet::check(storage);
    fuzz::require(report.findings.size() <= 2 * jet::CheckReport::kMaxKept, "findings are bounded");
    fuzz::require(report.rows <= storage.size() / jet::kPageSize * 256, "no more rows than slots");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<std::uint8_t> original = build();
    std::vector<std::uint8_t> file = original;
    for (fuzz::Input input{data, size}; !input.rest().empty();) {
        const auto change = input.next<std::uint32_t>();
        file[(change & 0xFFFFFF) % file.size()] = static_cast<std::uint8_t>(change >> 24);
    }
    try {
        checkEverything(jet::MemoryStorage{std::move(file)});
    } catch (const jet::Error& error) {
        fuzz::require(error.fault() != jet::Fault::Damaged, "damage is reported, not thrown");
        fuzz::require(error.fault() != jet::Fault::ReadFailed, "memory does not fail");
    }
    return 0;
}
