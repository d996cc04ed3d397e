// The rows of a recordset, shared by its clones: in the order of the fetch, reached by number.
//
//   for (std::uint32_t row = 0; row < rows->count(); ++row) use(rows->value(row, 0));
//
// One thread: the owner's. count() may grow meanwhile, rows below it stay.
#pragma once

#include "engine/ado/value_formatter.h"
#include "engine/sql/run/query.h"

#include <cstdint>
#include <vector>

namespace ado {

class Rows {
public:
    virtual ~Rows() = default;

    /// Rows so far.
    virtual std::uint32_t count() const = 0;

    // Requires of all below: row < a count() seen before, column < the number of columns.

    /// The value; also Null if the row has been deleted from the file or its value is damaged.
    /// Throws jet::Error for failures of the storage.
    virtual jet::Value value(std::uint32_t row, std::size_t column) = 0;

    /// Appends the value's text; false if the row is deleted. Throws as value().
    virtual bool appendText(std::uint32_t row, std::size_t column, const ValueFormatter& formatter,
                            std::u16string& out) = 0;

    /// Numbers that order the first `count` rows as the column's values do, Null first; equal
    /// exactly for equal values. Throws as value().
    virtual std::vector<std::uint64_t> orderKeys(std::size_t column, std::uint32_t count) = 0;

    /// A small number that all rows with the same stored text share; negative if there is none.
    virtual std::int64_t code(std::uint32_t row, std::size_t column) const = 0;

    /// Hints: between these calls many rows are read, mostly in the order of the fetch.
    virtual void startPass() {}
    virtual void endPass() {}

    /// Memory used by the rows.
    virtual std::size_t byteCount() const = 0;
};

/// A pass over the rows, for the lifetime of the object. Passes do not nest.
class Pass {
public:
    explicit Pass(Rows& rows) : rows_{rows} { rows_.startPass(); }
    ~Pass() { rows_.endPass(); }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

private:
    Rows& rows_;
};

}  // namespace ado
