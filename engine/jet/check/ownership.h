// The owner of each page of a file, in four bytes a page.
//
//   PageOwners owners{pageCount};
//   if (const auto other = owners.claim(page, {OwnerKind::Rows, table})) report(*other);
//
// One thread, that of the check.
#pragma once

#include "engine/jet/format/types.h"

#include <optional>
#include <string>
#include <vector>

namespace jet::checking {

enum class OwnerKind : std::uint8_t {
    None,
    Header,
    FreePages,   ///< page 1
    Definition,  ///< of a table
    MapRows,     ///< rows of usage maps, which several tables may share
    Bitmap,      ///< of a usage map
    Rows,        ///< of a table
    LongValues,  ///< of a column
    Index,
};

struct Owner {
    OwnerKind kind = OwnerKind::None;
    PageNumber table = kNoPage;  ///< first page of its definition; below format::page::kMaxCount
    unsigned part = 0;           ///< place of the column or index in the definition; below 512

    friend bool operator==(const Owner&, const Owner&) = default;
};

/// "the rows of the table on page 17"
std::string describe(const Owner& owner);

class PageOwners {
public:
    explicit PageOwners(std::uint32_t pageCount) : packed_(pageCount) {}

    /// Claims the page for `owner`, or returns the owner that it already has. Pages of map rows may
    /// be claimed again as such. Requires: the page is in the file.
    std::optional<Owner> claim(PageNumber page, const Owner& owner);

    /// Requires: the page is in the file.
    Owner of(PageNumber page) const;

private:
    std::vector<std::uint32_t> packed_;
};

}  // namespace jet::checking
