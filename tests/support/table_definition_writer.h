// The definition of a table: one buffer of bytes, cut into a chain of pages.
#pragma once

#include "tests/support/page_file.h"
#include "tests/support/table_index.h"

#include <map>

namespace fixture {

/// The maps of a table or of a long-value column: all its pages, and those with room.
struct MapPair {
    jet::RowId owned;
    jet::RowId free;
};

struct IndexPart {
    const TableIndex* index = nullptr;
    jet::RowId map;
    bool builtInBulk = true;  ///< else its statistics are those of single insertions
};

struct DefinitionParts {
    const TableLayout* layout = nullptr;
    bool system = false;
    std::uint32_t rowCount = 0;
    std::uint32_t lastAutonumber = 0;
    MapPair maps;
    std::vector<IndexPart> indexes;                  ///< in the order they were made
    std::map<std::uint16_t, MapPair> longValueMaps;  ///< by column id
};

ByteVector encodeDefinition(const DefinitionParts& parts);

/// Writes the buffer to page `first` and as many further ones as it takes. Returns all of them.
std::vector<jet::PageNumber> writeDefinition(PageFile& file, jet::PageNumber first,
                                             const ByteVector& definition);

}  // namespace fixture
