// Data pages being changed: rows added at the end of a page, or a whole page laid out anew.
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

/// Whether each row lies within the page and behind none of the others. Throws Error{Damaged} if it
/// is no data page.
bool isSound(const Page& page, PageNumber number);

/// Bytes for rows and their slots; none on a page whose slots are damaged.
std::size_t freeBytes(const Page& page);
unsigned slotCount(const Page& page);

/// Whether a row of `size` bytes, with its slot, fits.
bool hasRoom(const Page& page, std::size_t size);

/// Adds a row in a new slot; nothing if it does not fit. Requires: a sound data page.
std::optional<unsigned> appendRow(Page& page, Bytes row, std::uint16_t flags);

/// The bytes of a row that is there, to be overwritten. Throws Error{Damaged} if it is not.
std::span<std::uint8_t> rowBytes(Page& page, PageNumber number, unsigned slot);

/// All rows of a page, to be laid out anew. Their bytes are those of a copy of the page, or
/// whatever they are set to, which must live until the page is written.
class PageLayout {
public:
    struct Row {
        std::uint16_t flags = 0;  ///< as in format/data_page.h
        Bytes bytes;              ///< none of a deleted row
    };

    /// Throws Error{Damaged} if it is no data page or a row lies outside it: what cannot be read
    /// must not be written.
    PageLayout(const Page& page, PageNumber number);

    std::vector<Row> rows;

    /// Bytes of rows and slots together.
    std::size_t size() const;
    bool fits() const { return size() <= format::data_page::kCapacity; }

    /// Throws Error{Damaged} if it does not fit: as it was read, that is, as rows overlapped.
    void writeTo(Page& page) const;

private:
    PageNumber number_;
    Page copy_;
};

}  // namespace jet
