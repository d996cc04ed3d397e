// A column of a result: its name and type, and the table's column if that is what it shows.
//
//   const auto query = sql::Query::prepare(database, u"SELECT Name, Age + 1 FROM People");
//   for (const sql::OutputColumn& each : query->columns()) show(each.name, each.type);
//
// A plain value; any thread may use it.
#pragma once

#include "engine/jet/table_definition.h"

#include <cstdint>
#include <string>

namespace sql {

struct OutputColumn {
    std::u16string name;
    jet::ColumnType type = jet::ColumnType::Text;  ///< of a computed column: the type it yields
    std::uint16_t size = 0;                        ///< declared size in bytes; 0 where it has none
    const jet::Column* stored = nullptr;           ///< the table's column; null if computed
};

}  // namespace sql
