// A record of any bytes, read with columns of any description.
#include "engine/jet/record.h"
#include "engine/jet/value.h"
#include "tests/fuzz/small_pages.h"

namespace {

constexpr unsigned kColumns = 6;

jet::Column nextColumn(fuzz::Input& input) {
    jet::Column column;
    column.type = jet::ColumnType{static_cast<std::uint8_t>(input.next<std::uint8_t>() % 20)};
    column.id = input.next<std::uint8_t>();
    const auto flags = input.next<std::uint8_t>();
    column.fixed = (flags & 1) != 0;
    column.size = static_cast<std::uint16_t>((flags & 2) != 0 ? 0xFFFF : flags);
    column.scale = flags;
    column.fixedOffset = input.next<std::uint16_t>();
    column.variableIndex = column.fixedOffset;
    return column;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input{data, size};
    std::vector<jet::Column> columns;
    for (unsigned i = 0; i < kColumns; ++i) columns.push_back(nextColumn(input));
    const jet::MemoryStorage storage{std::vector<std::uint8_t>(2 * jet::kPageSize)};
    jet::PageCache cache{storage};
    jet::PageReader pages{storage, cache};
    for (const jet::Column& column : columns) {
        try {
            const jet::Record record{input.rest(), jet::PageNumber{1}};
            const jet::StoredField field = record.field(column);
            fuzz::require(fuzz::isWithin(field.bytes, input.rest()), "a field lies in its record");
            const jet::Value value = jet::decodeField(pages, column, field, record.page());
            fuzz::require(jet::isNull(value) == field.null, "null stays null");
            if (const auto* number = std::get_if<jet::Numeric>(&value)) jet::toDecimalText(*number);
        } catch (const jet::Error& error) {
            fuzz::require(error.fault() == jet::Fault::Damaged, "records are damaged at worst");
        }
    }
    return 0;
}
