// Changes to data pages: appending a row, or rewriting a whole page.
//
//   const auto slot = jet::appendRow(*page, bytes, 0);  // nothing if it does not fit
//
//   jet::PageLayout layout{*page, number};
//   layout.rows[3].bytes = longerRecord;
//   if (layout.fits()) layout.writeTo(*page);
//
// The layout of a page is in format/data_page.h. One thread, that of the statement.
#pragma once

#include "engine/jet/data_page.h"

#include <optional>
#include <vector>

namespace jet {

/// Makes `page` an empty data page.
void formatDataPage(Page& page, std::uint32_t owner);

/// Whether all rows are within the page and do not overlap. Throws Error{Damaged} if it is not a
/// data page.
bool isSound(const Page& page, PageNumber number);

/// Free bytes for rows and their slots; 0 on a page whose slots are damaged.
std::size_t freeBytes(const Page& page);
unsigned slotCount(const Page& page);

/// Whether a row of `size` bytes, with its slot, fits.
bool hasRoom(const Page& page, std::size_t size);

/// Adds a row in a new slot; nothing if it does not fit. Requires: a sound data page.
std::optional<unsigned> appendRow(Page& page, Bytes row, std::uint16_t flags);

/// The bytes of an existing row, to be overwritten. Throws Error{Damaged} if there is none.
std::span<std::uint8_t> rowBytes(Page& page, PageNumber number, unsigned slot);

/// All rows of a page, to be rewritten. Their bytes are in a copy of the page, or wherever they are
/// set to, which must stay alive until the page is written.
class PageLayout {
public:
    struct Row {
        std::uint16_t flags = 0;  ///< as in format/data_page.h
        Bytes bytes;              ///< none of a deleted row
    };

    /// Throws Error{Damaged} if it is not a data page or a row is outside it: what cannot be read
    /// must not be written.
    PageLayout(const Page& page, PageNumber number);

    std::vector<Row> rows;

    /// Bytes of rows and slots together.
    std::size_t size() const;
    bool fits() const { return size() <= format::data_page::kCapacity; }

    /// Throws Error{Damaged} if it does not fit, which after reading means that rows overlapped.
    void writeTo(Page& page) const;

private:
    PageNumber number_;
    Page copy_;
};

}  // namespace jet
