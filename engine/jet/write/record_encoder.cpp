#include "engine/jet/write/record_encoder.h"

#include "engine/jet/bytes.h"
#include "engine/jet/format/table_definition.h"

#include <algorithm>
#include <array>

namespace jet {
namespace {

namespace layout = format::record;
namespace definition_layout = format::table_definition;

constexpr std::size_t kNoColumn = ~std::size_t{0};

}  // namespace

RecordEncoder::RecordEncoder(const TableDefinition& definition)
    : columnCount_{definition.columnsEver},
      fixedEnd_{layout::kFixedPart},
      variables_(definition.variableColumnsEver, kNoColumn) {
    if (variables_.size() > definition_layout::kMaxColumns ||
        columnCount_ > definition_layout::kMaxColumnsEver) {
        throwDamaged(definition.page, "the table definition has impossible counts");
    }
    for (std::size_t i = 0; i < definition.columns.size(); ++i) {
        const Column& column = definition.columns[i];
        Place place{.id = column.id, .boolean = column.type == ColumnType::Boolean};
        if (!place.boolean && column.fixed) {
            place.fixed = true;
            place.offset = layout::kFixedPart + column.fixedOffset;
            fixedEnd_ = std::max(fixedEnd_, place.offset + storedSize(column));
        } else if (!place.boolean) {
            if (column.variableIndex >= variables_.size()) {
                throwDamaged(definition.page, "a column's place in the records does not exist");
            }
            variables_[column.variableIndex] = i;
        }
        places_.push_back(place);
    }
    if (fixedEnd_ > layout::kMaxSize) {
        throwDamaged(definition.page, "the fixed columns are larger than a record");
    }
}

void RecordEncoder::encode(std::span<const StoredField> fields,
                           std::vector<std::uint8_t>& out) const {
    out.assign(fixedEnd_, 0);
    store(out, layout::kColumnCount, static_cast<std::uint16_t>(columnCount_));
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!places_[i].fixed || fields[i].null) continue;
        std::copy(fields[i].bytes.begin(), fields[i].bytes.end(),
                  out.begin() + static_cast<std::ptrdiff_t>(places_[i].offset));
    }
    if (!variables_.empty()) {
        std::array<std::uint16_t, definition_layout::kMaxColumns> starts{};
        for (std::size_t k = 0; k < variables_.size(); ++k) {
            starts[k] = static_cast<std::uint16_t>(out.size());
            if (variables_[k] == kNoColumn || fields[variables_[k]].null) continue;
            const Bytes bytes = fields[variables_[k]].bytes;
            if (out.size() + bytes.size() > layout::kMaxSize) throwTooLarge();
            out.insert(out.end(), bytes.begin(), bytes.end());
        }
        append(out, static_cast<std::uint16_t>(out.size()));
        for (std::size_t k = variables_.size(); k-- > 0;) append(out, starts[k]);
        append(out, static_cast<std::uint16_t>(variables_.size()));
    }
    const std::size_t mask = out.size();
    out.resize(mask + layout::maskSize(columnCount_));
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const bool set = places_[i].boolean ? fields[i].truth : !fields[i].null;
        if (set) {
            std::uint8_t& byte = out[mask + places_[i].id / 8];
            byte = static_cast<std::uint8_t>(byte | 1u << (places_[i].id % 8));
        }
    }
    if (out.size() > layout::kMaxSize) throwTooLarge();
}

void RecordEncoder::throwTooLarge() {
    throw Error{Fault::ValueTooLarge, "A record is too large for a page."};
}

}  // namespace jet
