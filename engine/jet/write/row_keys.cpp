#include "engine/jet/write/row_keys.h"

#include <algorithm>
#include <string>
#include <unordered_map>

namespace jet {
namespace {

/// Codes of known texts by their stored bytes: looking a key up is faster than making it. Cleared
/// when there are too many, or when the sorter starts a new run.
class KnownTexts {
public:
    const std::uint32_t* find(Bytes stored, std::size_t run) {
        if (run != run_) texts_.clear();
        run_ = run;
        const auto found = texts_.find(textOf(stored));
        return found == texts_.end() ? nullptr : &found->second;
    }

    void add(Bytes stored, std::uint32_t code) {
        constexpr std::size_t kMax = 1 << 16;
        if (texts_.size() == kMax) texts_.clear();
        texts_.emplace(textOf(stored), code);
    }

private:
    static std::string textOf(Bytes stored) { return {stored.begin(), stored.end()}; }

    std::unordered_map<std::string, std::uint32_t> texts_;
    std::size_t run_ = 0;
};

}  // namespace

RowKeys::RowKeys(const TableDefinition& definition, const PhysicalIndex& index)
    : index_{index}, fields_(definition.columns.size()) {
    if (!canMakeKeys(definition, index)) {
        throw Error{Fault::IndexNotWritable,
                    "A table has an index in a text order that cannot be written."};
    }
    for (const IndexColumn& part : index.columns) {
        const Column* const column = definition.findColumn(part.columnId);
        parts_.push_back(
            {static_cast<std::size_t>(column - definition.columns.data()), column, part.ascending});
    }
}

bool RowKeys::uses(std::size_t column) const {
    return std::ranges::any_of(parts_, [&](const Part& part) { return part.place == column; });
}

bool RowKeys::make(std::span<const StoredField> fields, PageNumber page, PageReader& pages,
                   Key& key) {
    key.clear();
    bool allNull = true;
    for (const Part& part : parts_) {
        const bool null = append(part, fields[part.place], page, pages, key);
        if (null && index_.required) {
            throw Error{Fault::NullKey, "An index that allows no Null was given one."};
        }
        allNull = allNull && null;
    }
    return !(allNull && index_.ignoreNulls);
}

bool RowKeys::append(const Part& part, const StoredField& field, PageNumber page, PageReader& pages,
                     Key& key) {
    const Value value = decodeField(pages, *part.column, field, page);
    appendKeyPart(value, *part.column, part.ascending, key);
    return isNull(value);
}

void RowKeys::collect(TableScan& scan, KeySorter& keys) {
    const bool oneText = parts_.size() == 1 && parts_[0].column->type == ColumnType::Text;
    KnownTexts known;
    Key key;
    while (scan.next()) {
        const Record& record = scan.record();
        for (const Part& part : parts_) fields_[part.place] = record.field(*part.column);
        const StoredField& first = fields_[parts_[0].place];
        const bool lookUp = oneText && !first.null;
        if (const auto* code = lookUp ? known.find(first.bytes, keys.run()) : nullptr) {
            keys.add(*code, scan.rowId());
            continue;
        }
        if (!make(fields_, record.page(), scan.pages(), key)) continue;
        const std::uint32_t code = keys.code(key);
        if (lookUp) known.add(first.bytes, code);
        keys.add(code, scan.rowId());
    }
    if (scan.losses().any()) {
        throwDamaged(kNoPage, "rows of a table that is to be indexed cannot be read");
    }
}

}  // namespace jet
