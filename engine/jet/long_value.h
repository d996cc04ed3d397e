// Memo and Ole values. In the record stands a header:
//
//   offset  size  meaning
//   0       4     bits 0-29 length in bytes; bit 31: the data follow; bit 30: in one row elsewhere;
//                 neither: in a chain of rows
//   4       4     row id of the (first) row
//   8       4     stamp of a chain
//
// A row of a chain begins with the row id of the next one, 0 in the last.
#pragma once

#include "engine/jet/data_page.h"
#include "engine/jet/value.h"

#include <optional>

namespace jet {

/// Reads the long values of many records. A page is looked up once for the values on it that are
/// read one after the other. Belongs to one thread.
class LongValueReader {
public:
    /// `pages` must stay alive. After any other use of it, and after the block it serves from has
    /// been loaded anew, forgetPage() comes before the next read().
    explicit LongValueReader(PageReader& pages) : pages_{pages} {}

    /// As readLongValue.
    Bytes read(Bytes header, PageNumber page, Binary& scratch) {
        if (header.size() >= kHeaderSize) {
            const auto word = load<std::uint32_t>(header, 0);
            if ((word & (kInlineFlag | kSingleFlag)) == kSingleFlag && (word & kLengthMask) != 0) {
                const auto row = RowId::fromPacked(load<std::uint32_t>(header, 4));
                return single(row, word & kLengthMask);
            }
        }
        return readOther(header, page, scratch);
    }

    void forgetPage() { page_.reset(); }

private:
    static constexpr std::size_t kHeaderSize = 12;
    static constexpr std::uint32_t kLengthMask = 0x3FFFFFFF;
    static constexpr std::uint32_t kInlineFlag = 0x80000000;
    static constexpr std::uint32_t kSingleFlag = 0x40000000;

    Bytes single(RowId row, std::size_t length) {
        if (!page_ || page_->number() != row.page()) turnTo(row.page());
        Bytes bytes = page_->plainRow(row.slot());
        if (bytes.size() < length) bytes = rowBytes(row);
        if (bytes.size() < length) throwDamaged(row.page(), "a long value is cut short");
        return bytes.first(length);
    }

    void turnTo(PageNumber page);
    Bytes rowBytes(RowId row);
    Bytes readOther(Bytes header, PageNumber page, Binary& scratch);
    Bytes chain(RowId row, std::size_t length, Binary& scratch);

    PageReader& pages_;
    std::optional<DataPage> page_;  ///< of the value read last; one of long values
};

}  // namespace jet
