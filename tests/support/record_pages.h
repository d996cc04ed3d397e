// Data pages: rows packed at the end of the page, the table of slots in front of them. The rows of
// tables, long values and usage maps all stand on such pages.
//
//   fixture::RecordPages pages{file, owner};
//   const jet::RowId row = pages.append(record);
//   pages.finish();
#pragma once

#include "tests/support/page_file.h"

#include <optional>
#include <set>

namespace fixture {

inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C;  ///< "LVAL"
inline constexpr std::uint16_t kSlotPointer = 0x4000;         ///< the record moved elsewhere
inline constexpr std::uint16_t kSlotMoved = 0x8000;  ///< a record reached by a pointer only
inline constexpr std::uint16_t kSlotDeleted = 0xC000;
inline constexpr unsigned kMaxSlots = 255;

/// The longest row that a page can take.
inline constexpr std::size_t kMaxRowBytes = jet::kPageSize - 14 - 2;

/// One data page.
class DataPageImage {
public:
    /// An empty page. `stamp` marks the first page of a chained long value.
    explicit DataPageImage(std::uint32_t owner, std::uint32_t stamp = 0);
    explicit DataPageImage(const PageImage& image) : image_{image} {}

    unsigned slotCount() const { return get<std::uint16_t>(image_, 12); }
    std::size_t freeBytes() const { return get<std::uint16_t>(image_, 2); }
    bool hasRoomFor(std::size_t length) const;

    /// Requires: hasRoomFor(row.size()).
    unsigned append(ByteView row, std::uint16_t flags);

    /// Takes the row's bytes out, so that the lower rows move up; its slot stays, as deleted.
    void remove(unsigned slot);

    /// Makes the row a pointer to `target`; its further bytes stay as they are.
    void redirect(unsigned slot, jet::RowId target);

    std::uint16_t slotWord(unsigned slot) const {
        return get<std::uint16_t>(image_, 14 + 2 * slot);
    }

    /// Where the row's bytes begin and end on the page.
    std::size_t rowBegin(unsigned slot) const { return slotWord(slot) & 0x1FFFu; }
    std::size_t rowEnd(unsigned slot) const;

    const PageImage& image() const { return image_; }

private:
    PageImage image_{};
};

/// A growing set of data pages with one owner.
class RecordPages {
public:
    RecordPages(PageFile& file, std::uint32_t owner) : file_{file}, owner_{owner} {}

    /// Puts the row on the last page, or on a new one if it has no room.
    /// Throws std::length_error for a row that no page can take.
    jet::RowId append(ByteView row, std::uint16_t flags = 0);

    /// Puts the row on a page of its own, made before with allocateAlone.
    void writeAlone(jet::PageNumber page, ByteView row, std::uint32_t stamp);
    jet::PageNumber allocateAlone();

    /// The next row goes to a new page, which is allocated now.
    void startNewPage();

    void remove(jet::RowId row);
    void redirect(jet::RowId row, jet::RowId target);

    /// The page that takes the next row; kNoPage before the first.
    jet::PageNumber openPage() const { return openPage_; }

    DataPageImage page(jet::PageNumber number);

    /// Writes the page that is still open.
    void finish();

    /// All pages, ascending.
    const std::vector<jet::PageNumber>& pages() const { return pages_; }

    /// Those that still take rows.
    std::vector<jet::PageNumber> pagesWithRoom() const;

private:
    template <typename Change>
    void modify(jet::PageNumber number, Change change);

    PageFile& file_;
    std::uint32_t owner_;
    std::vector<jet::PageNumber> pages_;
    std::set<jet::PageNumber> emptied_;  ///< closed pages on which rows were deleted
    jet::PageNumber openPage_ = jet::kNoPage;
    std::optional<DataPageImage> open_;
};

}  // namespace fixture
