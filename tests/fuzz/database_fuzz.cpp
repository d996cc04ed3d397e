// A whole small database in which an input changes bytes: three bytes say where, one what.
#include "engine/jet/database.h"
#include "tests/fuzz/small_pages.h"
#include "tests/support/fixture_builder.h"

namespace {

std::vector<std::uint8_t> build() {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"T",
         .columns = {fixture::column(u"N", jet::ColumnType::Long), fixture::textColumn(u"S", 50),
                     fixture::memoColumn(u"M"), fixture::numericColumn(u"D", 18, 4)},
         .maps = fixture::MapForm::Reference});
    std::vector<jet::RowId> rows;
    for (int n = 0; n < 12; ++n) {
        rows.push_back(table.insert(
            {n, u"text", std::u16string(n % 4 == 0 ? 5000u : 70u, u'm'), jet::Numeric{}}));
    }
    table.moveRow(rows[3], {3, u"moved", u"", fixture::kNull});
    table.deleteRow(rows[5]);
    return builder.bytes();
}

void scan(const jet::Table& table, std::size_t fileSize) {
    jet::TableScan scan{table};
    std::size_t rows = 0;
    while (scan.next()) {
        fuzz::require(++rows <= fileSize / jet::kPageSize * 256, "no more rows than slots");
        for (const jet::Column& column : table.definition().columns) {
            try {
                jet::decodeField(scan.pages(), column, scan.record().field(column),
                                 scan.record().page());
            } catch (const jet::Error& error) {
                fuzz::require(error.fault() == jet::Fault::Damaged, "fields are damaged at worst");
            }
        }
    }
}

void readEverything(std::vector<std::uint8_t> file) {
    const std::size_t size = file.size();
    const auto database =
        jet::Database::open(std::make_unique<jet::MemoryStorage>(std::move(file)));
    for (const jet::CatalogEntry& entry : database->catalog()) {
        if (!entry.isTable()) continue;
        try {
            scan(*database->table(entry.name), size);
        } catch (const jet::Error& error) {
            fuzz::require(
                error.fault() == jet::Fault::Damaged || error.fault() == jet::Fault::NoSuchTable,
                "tables are damaged at worst");
        }
    }
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
        readEverything(std::move(file));
    } catch (const jet::Error& error) {
        fuzz::require(error.fault() != jet::Fault::ReadFailed, "memory does not fail");
    }
    return 0;
}
