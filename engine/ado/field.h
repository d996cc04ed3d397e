// The fields of a recordset and its provider-specific properties.
//
//   recordset.fields()[u"Process"].value();
//   recordset.properties()[u"Initial Fetch Size"].setValue(100);
//
// One thread: the owner's. A Field is a name for a column and follows the current record.
#pragma once

#include "engine/sql/run/query.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ado {

class Recordset;

class Field {
public:
    Field(Recordset& recordset, std::size_t index) : recordset_{&recordset}, index_{index} {}

    std::size_t index() const { return index_; }
    const std::u16string& name() const;

    /// adDate, adVarWChar, ...
    int type() const;

    /// In characters for a text column, else in bytes.
    int definedSize() const;

    /// Of the current record; Null if another program has deleted it meanwhile.
    /// Throws Error: 3704, 3021, 0x80004005.
    jet::Value value() const;

    /// Why the value cannot be read, UTF-8; nothing if it can, or is Null. Throws as value().
    std::optional<std::string> unreadable() const;

    /// The value's text form.
    std::u16string text() const;

private:
    const sql::OutputColumn& column() const;

    Recordset* recordset_;
    std::size_t index_;
};

class Fields {
public:
    explicit Fields(Recordset& recordset) : recordset_{&recordset} {}

    // All throw Error{3704} if the recordset is closed.

    std::size_t count() const;

    /// Throws Error{3265} if there is no such field.
    Field operator[](std::size_t index) const;
    Field operator[](int index) const { return (*this)[static_cast<std::size_t>(index)]; }

    /// Not case-sensitive. Throws Error{3265} if there is no such field.
    Field operator[](std::u16string_view name) const;
    Field operator[](const char16_t* name) const { return (*this)[std::u16string_view{name}]; }

private:
    Recordset* recordset_;
};

class Property {
public:
    Property(std::u16string name, std::int32_t value) : name_{std::move(name)}, value_{value} {}

    const std::u16string& name() const { return name_; }
    std::int32_t value() const { return value_; }
    void setValue(std::int32_t value) { value_ = value; }

private:
    std::u16string name_;
    std::int32_t value_;
};

class Properties {
public:
    std::size_t count() const { return items_.size(); }

    /// Throws Error{3265} if there is no such property.
    Property& operator[](std::u16string_view name);

private:
    /// The number of rows that an asynchronous open waits for.
    std::vector<Property> items_{{u"Initial Fetch Size", 50}};
};

}  // namespace ado
