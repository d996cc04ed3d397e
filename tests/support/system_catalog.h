// The system tables of an empty database and the rows by which they describe themselves.
#pragma once

#include "tests/support/table_builder.h"

namespace fixture {

/// Security identifiers as the catalog stores them, valid for the creation date of the header.
namespace sid {
inline const ByteVector kEngine{0x65, 0x89};
inline const ByteVector kAdmin{0x64, 0x8B};
inline const ByteVector kUsers{0x65, 0x8B};
inline const ByteVector kCreator{0x65, 0x8E};
}  // namespace sid

/// Parents in the catalog.
inline constexpr std::uint32_t kTablesContainer = 0x0F000001;
inline constexpr std::uint32_t kDatabasesContainer = 0x0F000002;
inline constexpr std::uint32_t kRelationshipsContainer = 0x0F000003;

/// An object of the catalog.
struct CatalogRow {
    std::uint32_t id = 0;
    std::uint32_t parentId = kTablesContainer;
    std::u16string name;
    std::int16_t type = 1;  ///< 1 table, 2 document, 3 container, 5 query, 6 linked table
    ByteVector owner = sid::kAdmin;
    std::uint32_t flags = 0;
};

/// A right to an object.
struct AccessRow {
    std::uint32_t objectId = 0;
    ByteVector sid;
    std::uint32_t rights = 0;
    bool inheritable = false;
};

Row toRow(const CatalogRow& object);
Row toRow(const AccessRow& right);

/// The definitions of the system tables, in the order of their pages from 2 on.
std::vector<TableSpec> systemTables();

/// What an empty database holds in the first two of them.
std::vector<CatalogRow> systemObjects();
std::vector<AccessRow> systemRights();

}  // namespace fixture
