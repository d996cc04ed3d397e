// Hands out pages and keeps the map of free pages (page 1, row 0), in which a set bit is a free
// page and pages behind the map's end are free too.
//
// New pages come from the end of the file, or are pages that the same statement gave back: a map
// found in the wild may call a page free that is not.
#pragma once

#include "engine/jet/pager.h"

#include <vector>

namespace jet {

class PageAllocator {
public:
    explicit PageAllocator(Pager& pager) : pager_{pager} {}

    /// A page of zeros, no longer free. Throws Error: FileFull; Damaged if the map is; as
    /// Pager::edit.
    PageNumber allocate();

    /// Requires: nothing refers to the page any more. Throws as Pager::edit.
    void release(PageNumber number);

private:
    void mark(PageNumber number, bool free);
    bool markInline(PageNumber number, bool free);
    void markReferenced(PageNumber number, bool free);
    void convertToReferences();
    PageNumber addBitmap(std::size_t slot);

    Pager& pager_;
    std::vector<PageNumber> released_;  ///< by this statement
};

}  // namespace jet
