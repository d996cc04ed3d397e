#include "engine/ado/field.h"

#include "engine/ado/connection_string.h"
#include "engine/ado/constants.h"
#include "engine/ado/error.h"
#include "engine/ado/recordset.h"
#include "engine/jet/text.h"

namespace ado {
namespace {

int typeNumber(jet::ColumnType type) {
    switch (type) {
        case jet::ColumnType::Boolean:
            return adBoolean;
        case jet::ColumnType::Byte:
            return adUnsignedTinyInt;
        case jet::ColumnType::Integer:
            return adSmallInt;
        case jet::ColumnType::Long:
            return adInteger;
        case jet::ColumnType::Currency:
            return adCurrency;
        case jet::ColumnType::Single:
            return adSingle;
        case jet::ColumnType::Double:
            return adDouble;
        case jet::ColumnType::Date:
            return adDate;
        case jet::ColumnType::Text:
            return adVarWChar;
        case jet::ColumnType::Memo:
            return adLongVarWChar;
        case jet::ColumnType::Ole:
            return adLongVarBinary;
        case jet::ColumnType::Guid:
            return adGUID;
        case jet::ColumnType::Numeric:
            return adNumeric;
        default:
            return adVarBinary;
    }
}

}  // namespace

const sql::OutputColumn& Field::column() const { return recordset_->columns()[index_]; }

const std::u16string& Field::name() const { return column().name; }

int Field::type() const { return typeNumber(column().type); }

int Field::definedSize() const {
    return column().type == jet::ColumnType::Text ? column().size / 2 : column().size;
}

jet::Value Field::value() const { return recordset_->currentValue(index_); }

std::optional<std::string> Field::unreadable() const {
    const jet::Value held = value();
    const auto* const damage = std::get_if<jet::Unreadable>(&held);
    return damage == nullptr ? std::nullopt : std::optional{damage->why};
}

std::u16string Field::text() const {
    std::u16string text;
    recordset_->formatter().append(value(), text);
    return text;
}

std::size_t Fields::count() const { return recordset_->columns().size(); }

Field Fields::operator[](std::size_t index) const {
    if (index >= count()) throwItemNotFound(jet::toUtf16(std::to_string(index)));
    return {*recordset_, index};
}

Field Fields::operator[](std::u16string_view name) const {
    const auto& columns = recordset_->columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (equalsIgnoringCase(columns[i].name, name)) return {*recordset_, i};
    }
    throwItemNotFound(name);
}

Property& Properties::operator[](std::u16string_view name) {
    for (Property& property : items_) {
        if (equalsIgnoringCase(property.name(), name)) return property;
    }
    throwItemNotFound(name);
}

}  // namespace ado
