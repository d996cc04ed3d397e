// Checks of one record: its parts, and the sizes of its values.
//
//   RecordCheck records{context, definition};
//   if (records.check(bytes, row)) use(Record{bytes, row.page()});
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/context.h"
#include "engine/jet/record.h"

namespace jet::checking {

class RecordCheck {
public:
    /// All must stay alive.
    RecordCheck(Context& context, const TableDefinition& definition);

    /// `row` is the row's home. Long values are checked as far as they are stored in the
    /// record. Returns whether all is right.
    bool check(Bytes bytes, RowId row);

private:
    /// What a record with that number of columns must have.
    struct Shape {
        std::size_t fixedEnd = format::record::
            kFixedPart;        ///< first byte behind the fixed columns that there still are
        bool allKnown = true;  ///< no column of a lower number was deleted
        bool hasVariable = false;
    };

    bool fail(RowId row, const std::string& message);
    bool checkTrailer(Bytes bytes, std::size_t maskOffset, const Shape& shape, RowId row);
    bool checkFields(const Record& record, RowId row);
    const char* whatIsWrong(const Column& column, Bytes value);
    std::size_t countCharacters(Bytes text);

    Context& context_;
    const TableDefinition& definition_;
    std::vector<Shape> shapes_;  ///< by the record's number of columns
    std::u16string text_;
};

}  // namespace jet::checking
