// The rows of the system tables about a table: its object and its access rights.
//
//   jet::CatalogWriter catalog{context};
//   catalog.requireFree(u"People");
//   catalog.addTable(page, u"People");
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/write/write_context.h"

#include <string_view>

namespace jet {

class CatalogWriter {
public:
    explicit CatalogWriter(WriteContext& context) : context_{context} {}

    /// Throws Error{TableExists} if a table or a query has the name.
    void requireFree(std::u16string_view name);

    /// Throws Error: Damaged if required columns of the system tables are missing; as
    /// TableWriter::insert.
    void addTable(PageNumber definition, std::u16string_view name);

    /// Updates the date of the last change of a table's definition.
    void touch(PageNumber definition);

    /// Throws Error{ReadOnly} for a system table.
    void removeTable(PageNumber definition);

private:
    void grantRights(PageNumber definition);

    WriteContext& context_;
};

}  // namespace jet
