#include "engine/ado/scanned_rows.h"

#include "engine/ado/order_keys.h"
#include "engine/jet/collation.h"
#include "engine/jet/text.h"

namespace ado {
namespace {

using jet::ColumnType;

std::vector<const jet::Column*> storedColumns(const sql::Query& query) {
    std::vector<const jet::Column*> columns;
    for (const sql::OutputColumn& column : query.columns()) columns.push_back(column.stored);
    return columns;
}

/// Requires: a type that the row store keeps, other than text.
jet::Value numberValue(ColumnType type, const PackedColumn& packed, std::size_t place) {
    switch (type) {
        case ColumnType::Boolean:
            return packed.whole(place) != 0;
        case ColumnType::Byte:
            return static_cast<std::uint8_t>(packed.whole(place));
        case ColumnType::Integer:
            return static_cast<std::int16_t>(packed.whole(place));
        case ColumnType::Long:
            return static_cast<std::int32_t>(packed.whole(place));
        case ColumnType::Currency:
            return jet::Currency{packed.whole(place)};
        case ColumnType::Single:
            return static_cast<float>(packed.real(place));
        case ColumnType::Double:
            return packed.real(place);
        default:
            return jet::Date{packed.real(place)};
    }
}

}  // namespace

ScannedRows::ScannedRows(std::shared_ptr<const sql::Query> query)
    : query_{std::move(query)},
      table_{query_->scannedTable()},
      store_{storedColumns(*query_), table_->definition().rowCount},
      lostFields_{std::make_unique<LostFields>(table_)},
      anyRow_{table_, FieldReader::Reading::AnyRow} {}

void ScannedRows::startPass() { inOrder_.emplace(table_, FieldReader::Reading::InOrder); }

void ScannedRows::endPass() { inOrder_.reset(); }

jet::Value ScannedRows::value(std::uint32_t row, std::size_t column) {
    const std::size_t place = row % RowStore::kGroupRows;
    const PackedColumn& packed = store_.packed(row, column);
    if (packed.unit() == Unit::None) {
        jet::Value value = readValue(row, column);
        noteDamage(row, column);
        return value;
    }
    if (packed.isNull(place)) return nullOf(row, column);
    if (const Dictionary* dictionary = store_.dictionary(column)) {
        std::u16string text;
        jet::appendUtf16(dictionary->stored(static_cast<std::uint32_t>(packed.whole(place))), text);
        return text;
    }
    return numberValue(store_.stored(column).type, packed, place);
}

bool ScannedRows::appendText(std::uint32_t row, std::size_t column, const ValueFormatter& formatter,
                             std::u16string& out) {
    const std::size_t place = row % RowStore::kGroupRows;
    const PackedColumn& packed = store_.packed(row, column);
    if (packed.unit() == Unit::None) return appendFromFile(row, column, formatter, out);
    if (packed.isNull(place)) return true;
    if (const Dictionary* dictionary = store_.dictionary(column)) {
        jet::appendUtf16(dictionary->stored(static_cast<std::uint32_t>(packed.whole(place))), out);
    } else {
        formatter.append(numberValue(store_.stored(column).type, packed, place), out);
    }
    return true;
}

std::int64_t ScannedRows::code(std::uint32_t row, std::size_t column) const {
    const std::size_t place = row % RowStore::kGroupRows;
    const PackedColumn& packed = store_.packed(row, column);
    if (!store_.dictionary(column) || packed.unit() == Unit::None || packed.isNull(place))
        return -1;
    return packed.whole(place);
}

jet::Value ScannedRows::readValue(std::uint32_t row, std::size_t column) {
    jet::StoredField field;
    const jet::Column& stored = store_.stored(column);
    if (reader().read(store_.rowId(row), stored, field)) return reader().value(field, stored);
    if (const std::string* const why = reader().damage()) return jet::Unreadable{*why};
    return {};
}

/// A Null of the store may stand for a value that the fetch could not read, and has counted.
jet::Value ScannedRows::nullOf(std::uint32_t row, std::size_t column) {
    if (!store_.hasUnreadable(column)) return {};
    return readValue(row, column);
}

/// Counts the field just read if it was damaged.
void ScannedRows::noteDamage(std::uint32_t row, std::size_t column) {
    const std::string* const why = reader().damage();
    if (why != nullptr) lostFields_->add(store_.rowId(row), store_.stored(column), *why);
}

bool ScannedRows::appendFromFile(std::uint32_t row, std::size_t column,
                                 const ValueFormatter& formatter, std::u16string& out) {
    jet::StoredField field;
    const jet::Column& stored = store_.stored(column);
    bool appended = reader().read(store_.rowId(row), stored, field);
    if (appended && stored.isText()) {
        appended = reader().appendText(field, stored, out);
    } else if (appended) {
        formatter.append(reader().value(field, stored), out);
    }
    noteDamage(row, column);
    return appended;
}

std::vector<std::uint64_t> ScannedRows::orderKeys(std::size_t column, std::uint32_t count) {
    for (std::uint32_t row = 0; row < count; row += RowStore::kGroupRows) {
        if (store_.packed(row, column).unit() == Unit::None) return fileKeys(column, count);
    }
    return store_.dictionary(column) ? codeKeys(column, count) : numberKeys(column, count);
}

/// The unit of the column in all groups, if it is one and orders as the values do.
std::optional<Unit> ScannedRows::commonUnit(std::size_t column, std::uint32_t count) const {
    std::optional<Unit> common;
    for (std::uint32_t row = 0; row < count; row += RowStore::kGroupRows) {
        const Unit unit = store_.packed(row, column).unit();
        if (common && *common != unit) return std::nullopt;
        common = unit;
    }
    return common == Unit::Bits ? std::nullopt : common;
}

std::vector<std::uint64_t> ScannedRows::numberKeys(std::size_t column, std::uint32_t count) const {
    const ColumnType type = store_.stored(column).type;
    const bool real =
        type == ColumnType::Single || type == ColumnType::Double || type == ColumnType::Date;
    const bool asPacked = !real || commonUnit(column, count).has_value();
    std::vector<std::uint64_t> keys(count);
    std::vector<bool> nulls(count);
    bool negative = false;
    for (std::uint32_t row = 0; row < count; ++row) {
        const std::size_t place = row % RowStore::kGroupRows;
        const PackedColumn& packed = store_.packed(row, column);
        if (packed.isNull(place)) {
            nulls[row] = true;
        } else if (asPacked) {
            const std::int64_t whole = packed.whole(place);
            negative = negative || whole < 0;
            keys[row] = orderedBits(whole);
        } else {
            keys[row] = orderedBits(packed.real(place));
        }
    }
    if (type == ColumnType::Boolean) {
        for (std::uint64_t& key : keys) key = ~key;  // True is -1, so it comes first
    }
    if (negative && asPacked && type == ColumnType::Date) {
        // Neighbouring doubles below zero run the other way than their ticks.
        for (std::uint32_t row = 0; row < count; ++row) {
            const std::size_t place = row % RowStore::kGroupRows;
            const PackedColumn& packed = store_.packed(row, column);
            if (!nulls[row]) keys[row] = orderedBits(packed.real(place));
        }
    }
    packKeys(keys, nulls);
    return keys;
}

std::vector<std::uint64_t> ScannedRows::codeKeys(std::size_t column, std::uint32_t count) const {
    const Dictionary& dictionary = *store_.dictionary(column);
    std::u16string text;
    const auto ranks = ranksOf(dictionary.size(), [&](std::uint32_t code, sql::OrderKey& key) {
        text.clear();
        jet::appendUtf16(dictionary.stored(code), text);
        jet::appendTextKey(text, true, key);
        return true;
    });
    std::vector<std::uint64_t> keys(count);
    for (std::uint32_t row = 0; row < count; ++row) {
        const std::size_t place = row % RowStore::kGroupRows;
        const PackedColumn& packed = store_.packed(row, column);
        if (!packed.isNull(place)) keys[row] = ranks[static_cast<std::size_t>(packed.whole(place))];
    }
    return keys;
}

/// Keys of what stands in the file, for some rows at least.
std::vector<std::uint64_t> ScannedRows::fileKeys(std::size_t column, std::uint32_t count) {
    const ColumnType type = store_.stored(column).type;
    if (type != ColumnType::Text && type != ColumnType::Memo) {
        return ranksOf(count, [&](std::uint32_t row, sql::OrderKey& key) {
            const jet::Value found = value(row, column);
            if (jet::isNull(found)) return false;
            sql::appendOrderKey(found, type, true, key);
            return true;
        });
    }
    std::u16string text;
    return ranksOf(count, [&](std::uint32_t row, sql::OrderKey& key) {
        text.clear();
        appendText(row, column, ValueFormatter{}, text);
        if (text.empty() && jet::isNull(value(row, column))) return false;
        jet::appendTextKey(text, true, key);
        return true;
    });
}

MaterialisedRows::MaterialisedRows(const sql::Query& query) : columns_{query.columns()} {
    const auto cursor = query.execute();
    while (cursor->next()) rows_.push_back(cursor->row());
    losses_ = cursor->losses();
}

bool MaterialisedRows::appendText(std::uint32_t row, std::size_t column,
                                  const ValueFormatter& formatter, std::u16string& out) {
    formatter.append(rows_[row][column], out);
    return true;
}

std::vector<std::uint64_t> MaterialisedRows::orderKeys(std::size_t column, std::uint32_t count) {
    return ranksOf(count, [&](std::uint32_t row, sql::OrderKey& key) {
        const jet::Value& found = rows_[row][column];
        if (jet::isNull(found)) return false;
        sql::appendOrderKey(found, columns_[column].type, true, key);
        return true;
    });
}

std::size_t MaterialisedRows::byteCount() const {
    std::size_t bytes = sizeof *this + rows_.capacity() * sizeof(decltype(rows_)::value_type);
    for (const auto& row : rows_) {
        bytes += row.capacity() * sizeof(jet::Value);
        for (const jet::Value& value : row) {
            if (const auto* text = std::get_if<std::u16string>(&value)) {
                bytes += text->capacity() * sizeof(char16_t);
            } else if (const auto* binary = std::get_if<jet::Binary>(&value)) {
                bytes += binary->capacity();
            }
        }
    }
    return bytes;
}

}  // namespace ado
