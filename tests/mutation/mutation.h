// Damage of one kind put into a database at random: what a failing disk, a broken transfer or a
// careless repair leaves behind.
//
//   fixture::Random random{7};
//   const fixture::ByteVector damaged = mutation::mutate(mutation::Kind::PageZeroed, file, random);
//
// The same seed gives the same damage.
#pragma once

#include "tests/support/header_page.h"
#include "tests/support/random.h"

#include <span>

namespace mutation {

enum class Kind {
    PageHead,      ///< one byte of a page's first 16
    AnyByte,       ///< one byte of a page behind the header
    PageZeroed,    ///< a page of zeros
    PagesSwapped,  ///< two pages in each other's place
    CutOff,        ///< the end of the file missing
    Definition,    ///< one byte of a table's definition
    SlotTable,     ///< one byte of the slots of a data page
    RowFlags,      ///< a row marked as deleted, moved or a pointer
    UsageMap,      ///< one byte of a usage map
};

std::span<const Kind> allKinds();

const char* nameOf(Kind kind);

/// The file with one damage of the kind. Requires: a database with user tables.
fixture::ByteVector mutate(Kind kind, fixture::ByteVector file, fixture::Random& random);

}  // namespace mutation
