// The plain form of results: tab-separated UTF-8. Null is \N, a value that cannot be read \?; backslash, tab, CR and LF in texts
// are written \\ \t \r \n; dates yyyy-mm-dd hh:mm:ss; Booleans 1 and 0; binary 0x and hex digits.
//
//   plain::FieldWriter writer{out};
//   writer.field(pages, column, record.field(column), record.page());
//
// A writer belongs to one thread.
#pragma once

#include "engine/jet/value.h"

#include <array>
#include <string>

namespace plain {

class FieldWriter {
public:
    /// `out` must outlive the writer.
    explicit FieldWriter(std::string& out) : out_{out} {}

    void value(const jet::Value& value);

    /// The same for a stored field, without decoding common types to a Value.
    /// Throws jet::Error{Damaged}, with nothing written.
    void field(jet::PageReader& pages, const jet::Column& column, const jet::StoredField& field,
               jet::PageNumber page);

    void text(std::u16string_view text);

private:
    void storedText(jet::Bytes stored);
    void escapeFrom(std::size_t start);
    void date(jet::Date date);
    void currency(jet::Currency amount);
    void binary(jet::Bytes bytes);

    std::string& out_;
    std::string unescaped_;
    jet::Binary longValue_;
    double lastDay_ = 0;  ///< the day in dayText_, which is empty if there is none
    std::string dayText_;
};

}  // namespace plain
