// Hands out pages and keeps the map of free pages (format/usage_map.h).
//
//   const jet::PageNumber number = allocator.allocate();
//   (*pager.edit(number))[0] = 1;
//   allocator.release(number);
//
// New pages come from the end of the file, or are pages that the same statement freed: in real
// files the map may list pages as free that are not.
//
// One thread, that of the statement.
#pragma once

#include "engine/jet/pager.h"

#include <vector>

namespace jet {

/// What the pages of a map are.
enum class PageKind : std::uint8_t { Data, Index, Bitmap };

/// Throws Error{Damaged} if the page is not of that kind or, for Data and Index, not of that owner:
/// a page that a damaged map lists must not be taken from its owner.
void requireOwned(Pager& pager, PageNumber number, PageKind kind, std::uint32_t owner = 0);

class PageAllocator {
public:
    explicit PageAllocator(Pager& pager) : pager_{pager} {}

    /// Allocates a page of zeros. Throws Error: FileFull; Damaged if the map is; as Pager::edit.
    PageNumber allocate();

    /// Requires: nothing refers to the page any more. Throws as allocate.
    void release(PageNumber number);

private:
    void requireMap();
    bool isFree(PageNumber number) const;
    void mark(PageNumber number, bool free);
    bool markInline(PageNumber number, bool free);
    void markReferenced(PageNumber number, bool free);
    void convertToReferences();
    PageNumber addBitmap(std::size_t slot);

    Pager& pager_;
    std::vector<PageNumber> released_;  ///< by this statement
    bool mapChecked_ = false;
};

}  // namespace jet
