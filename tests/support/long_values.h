// Memo and Ole contents outside the record: as one row of a page that values share, or as a chain
// of rows on pages of their own.
#pragma once

#include "tests/support/cell.h"
#include "tests/support/record_pages.h"

namespace fixture {

/// The long values of one column.
class LongValueWriter {
public:
    explicit LongValueWriter(PageFile& file) : pages_{file, kLongValueOwner} {}

    /// Stores `content` and appends what stands in the record: the header of 12 bytes and, in the
    /// inline form, the content. Throws std::length_error if the content cannot have that form.
    void store(ByteView content, LongForm form, ByteVector& field);

    void finish() { pages_.finish(); }

    const std::vector<jet::PageNumber>& pages() const { return pages_.pages(); }
    std::vector<jet::PageNumber> pagesWithRoom() const { return pages_.pagesWithRoom(); }

private:
    jet::RowId storeChain(ByteView content);

    RecordPages pages_;
    std::uint32_t stamp_ = 0;  ///< of the last chain; ties its first page to the header
};

}  // namespace fixture
