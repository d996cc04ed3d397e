// The rows that the system tables keep about a table: its object, and who may do what with it.
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

    /// Throws Error: Damaged if the system tables lack what they must have; as TableWriter::insert.
    void addTable(PageNumber definition, std::u16string_view name);

    /// Notes that a table's definition has changed now.
    void touch(PageNumber definition);

    /// Throws Error{ReadOnly} for a system table.
    void removeTable(PageNumber definition);

private:
    void grantRights(PageNumber definition);

    WriteContext& context_;
};

}  // namespace jet
