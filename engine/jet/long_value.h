// Memo and Ole values, which may be stored outside their record. The layout is in
// format/long_value.h.
//
//   jet::LongValueReader values{pages};
//   jet::Binary scratch;
//   use(values.read(field.bytes, record.page(), scratch));
//
// Belongs to one thread.
#pragma once

#include "engine/jet/data_page.h"
#include "engine/jet/format/long_value.h"
#include "engine/jet/value.h"

#include <optional>

namespace jet {

/// Reads the long values of many records. The page of consecutive values is looked up only once.
/// Belongs to one thread.
class LongValueReader {
public:
    /// `pages` must stay alive. After any other use of it, and after its block has been reloaded,
    /// call forgetPage() before the next read().
    explicit LongValueReader(PageReader& pages) : pages_{pages} {}

    /// As readLongValue.
    Bytes read(Bytes header, PageNumber page, Binary& scratch) {
        namespace layout = format::long_value;
        if (header.size() >= layout::kHeadSize) {
            const std::uint32_t word = load(header, layout::kLength);
            const std::uint32_t length = word & layout::kLengthMask;
            if ((word & (layout::kInline | layout::kSingle)) == layout::kSingle && length != 0) {
                return single(load(header, layout::kRow), length);
            }
        }
        return readOther(header, page, scratch);
    }

    void forgetPage() { page_.reset(); }

private:
    Bytes single(RowId row, std::size_t length) {
        if (!page_ || page_->number() != row.page()) turnTo(row.page());
        Bytes bytes = page_->plainRow(row.slot());
        if (bytes.size() != length) bytes = rowBytes(row);
        if (bytes.size() != length) throwOtherLength(row.page());
        return bytes;
    }

    [[noreturn]] static void throwOtherLength(PageNumber page);
    void turnTo(PageNumber page);
    Bytes rowBytes(RowId row);
    Bytes readOther(Bytes header, PageNumber page, Binary& scratch);
    Bytes chain(RowId row, std::size_t length, Binary& scratch);

    PageReader& pages_;
    std::optional<DataPage> page_;  ///< of the value read last; one of long values
};

}  // namespace jet
