// Where the parts of a table's definition stand, also where its counts or the lengths of its names are
// damaged: the constants in its blocks tell.
//
//   const jet::DefinitionParts parts = jet::findParts(bytes, number);
//   const std::size_t names = jet::format::column::kSize * parts.columns;
//   use(jet::readColumnNames(bytes, names, parts).names);
//
// Pure functions; any thread.
#pragma once

#include "engine/jet/format/table_definition.h"

#include <string>
#include <string_view>
#include <vector>

namespace jet {

struct DefinitionParts {
    std::size_t physicalIndexes = 0;
    std::size_t columns = 0;
    bool countsAreRight = true;  ///< those in the definition's head
};

/// `bytes`: all pages of the definition that starts on `first`, as one buffer.
/// Throws Error{Damaged} if no columns can be found.
DefinitionParts findParts(Bytes bytes, PageNumber first);

struct ColumnNames {
    std::vector<std::u16string> names;  ///< empty where one cannot be read
    std::size_t end = 0;                ///< the first byte behind them; 0 if that is not known
};

/// The names of all columns, from the byte `begin` on.
ColumnNames readColumnNames(Bytes bytes, std::size_t begin, const DefinitionParts& parts);

/// Whether a column may have the name.
bool isUsableName(std::u16string_view name);

}  // namespace jet
