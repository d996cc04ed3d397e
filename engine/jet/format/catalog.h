// The catalog: which objects a database has, and who may do what with them. It is kept in tables
// like any other, whose definitions stand on fixed pages:
//
//  page  table              a row
//  2     MSysObjects        an object: Id, ParentId, Name, Type, dates, Owner, Flags
//  3     MSysACEs           a right: ObjectId, SID, ACM, FInheritable
//  4     MSysQueries        a part of a query
//  5     MSysRelationships  a pair of columns of a relation
//
// The Id of a table is the page of its definition, in the lower 24 bits. Tables and queries share
// the container Tables, and in it their names.
//
//  object         Id
//  containers     0F000000, as ParentId alone
//  Tables         0F000001
//  Databases      0F000002
//  Relationships  0F000003
//  MSysDb         10000000, the database itself; its owner is the user Admin
//
// Security identifiers are scrambled by a key that depends on the creation date in the header, in a
// way that is not known.
//
//   const auto objects =
//       jet::TableDefinition::read(pages, jet::format::catalog::kObjects, u"MSysObjects");
//
// Constants; any thread.
#pragma once

#include "engine/jet/format/types.h"

namespace jet::format::catalog {

inline constexpr PageNumber kObjects{2};
inline constexpr PageNumber kRights{3};
inline constexpr PageNumber kQueries{4};
inline constexpr PageNumber kRelationships{5};

/// Of a table's Id.
inline constexpr std::uint32_t kPageMask = 0x00FFFFFF;

// ---- MSysObjects ----

inline constexpr std::uint32_t kContainers = 0x0F000000;
inline constexpr std::uint32_t kTablesContainer = 0x0F000001;
inline constexpr std::uint32_t kDatabasesContainer = 0x0F000002;
inline constexpr std::uint32_t kRelationshipsContainer = 0x0F000003;
inline constexpr std::uint32_t kDatabaseObject = 0x10000000;

// Of Type.
inline constexpr std::int16_t kTable = 1;
inline constexpr std::int16_t kDatabase = 2;
inline constexpr std::int16_t kContainer = 3;

// Of Flags.
inline constexpr std::uint32_t kEngineObject = 0x80000000;
inline constexpr std::uint32_t kSystemFlags = 0x80000002;  ///< any of them: no table of users

// ---- MSysACEs: rights, in ACM ----

inline constexpr std::int32_t kAllRights = 0x000FFEFF;

/// Of the container Tables, where it stands for whoever makes a table.
inline constexpr std::int32_t kCreatorRights = 0x000F00FE;

}  // namespace jet::format::catalog
