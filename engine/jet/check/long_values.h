// Checks of the long values of one column that are stored outside their records.
//
//   LongValueCheck values{context, definition, place};
//   values.check(field.bytes, row);  // for each row
//   values.finish();
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/context.h"
#include "engine/jet/data_page.h"
#include "engine/jet/table_definition.h"

namespace jet::checking {

class LongValueCheck {
public:
    /// Claims the column's pages and checks them. `place` is the column's in the
    /// definition.
    LongValueCheck(Context& context, const TableDefinition& definition, std::size_t place);

    /// The value whose stored field is `field`, in the record of `row`. Returns whether it is
    /// right.
    bool check(Bytes field, RowId row);

    /// Reports unused rows. Requires: all records have been checked.
    void finish();

private:
    struct Page {
        PageNumber number;
        std::size_t firstPart;  ///< place of its row 0 in parts_
    };
    enum class Part : std::uint8_t { Absent, Unused, Used };

    void takePages(const std::vector<PageNumber>& pages, const Owner& owner);
    Part* find(RowId part);
    bool fail(RowId row, const std::string& message);
    std::optional<Bytes> takePart(RowId part, RowId row);
    bool checkInline(Bytes field, std::size_t length, RowId row);
    bool checkSingle(RowId part, std::size_t length, RowId row);
    bool checkChain(Bytes field, RowId part, std::size_t length, RowId row);
    bool checkCharacters(Bytes beginning, std::size_t length, RowId row);

    Context& context_;
    const Column& column_;
    PageReader reader_;
    std::vector<Page> pages_;  ///< ascending
    std::vector<Part> parts_;  ///< the rows of all pages, one after the other
    bool complete_ = true;
};

}  // namespace jet::checking
