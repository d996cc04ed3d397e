#include "engine/sql/run/stored_key.h"

#include <algorithm>

namespace sql {

bool haveStoredKeys(const Columns& columns) {
    return std::none_of(columns.begin(), columns.end(), [](const jet::Column* column) {
        return column->isLongValue() || !column->unreadable.empty();
    });
}

namespace {

void appendStoredKey(const jet::Record& record, const Columns& columns, OrderKey& key) {
    for (const jet::Column* column : columns) {
        const jet::StoredField field = record.field(*column);
        const auto length = static_cast<std::uint16_t>(field.bytes.size());
        key.insert(key.end(),
                   {static_cast<std::uint8_t>((field.null ? 1 : 0) | (field.truth ? 2 : 0)),
                    static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(length >> 8)});
        key.insert(key.end(), field.bytes.begin(), field.bytes.end());
    }
}

}  // namespace

bool makeStoredKey(const jet::Record& record, const Columns& columns, OrderKey& key) {
    key.clear();
    try {
        appendStoredKey(record, columns, key);
        return true;
    } catch (const jet::Error& error) {
        if (!jet::isDamage(error)) throw;
        return false;
    }
}

}  // namespace sql
