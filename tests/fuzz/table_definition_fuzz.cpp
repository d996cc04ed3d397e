// Table definitions of any content, on one page or two.
#include "engine/jet/column_conflicts.h"
#include "engine/jet/table_definition.h"
#include "tests/fuzz/small_pages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kFirst = 2;
    std::vector<std::uint8_t> content(4 * jet::kPageSize);
    std::copy_n(data, std::min(size, 2 * jet::kPageSize),
                content.begin() + kFirst * jet::kPageSize);
    content[kFirst * jet::kPageSize] = 2;
    content[(kFirst + 1) * jet::kPageSize] = 2;
    const jet::MemoryStorage storage{std::move(content)};
    jet::PageCache cache{storage};
    jet::PageReader pages{storage, cache};
    try {
        auto definition = jet::TableDefinition::read(pages, jet::PageNumber{kFirst}, u"Name");
        jet::setAsideConflicts(definition);
        fuzz::require(definition.columns.size() <= 255, "no more columns than a table can have");
        for (const jet::Column& column : definition.columns) {
            if (!column.unreadable.empty()) continue;
            fuzz::require(column.id < definition.columnsEver,
                          "columns have their place in the mask");
            fuzz::require(definition.findColumn(column.id) != nullptr, "columns are found");
        }
        for (const jet::LogicalIndex& index : definition.logicalIndexes) {
            fuzz::require(index.physical < definition.physicalIndexes.size(),
                          "indexes have a tree");
        }
    } catch (const jet::Error& error) {
        fuzz::require(error.fault() == jet::Fault::Damaged, "definitions are damaged at worst");
    }
    return 0;
}
