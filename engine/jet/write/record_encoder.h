// Encodes records: the inverse of jet::Record.
//
//   jet::RecordEncoder encoder{definition};
//   encoder.encode(fields, bytes);
//
// The layout is in format/record.h. Immutable; any thread may call it.
#pragma once

#include "engine/jet/record.h"

#include <vector>

namespace jet {

class RecordEncoder {
public:
    explicit RecordEncoder(const TableDefinition& definition);

    /// Sets `out` to a record with all columns. `fields` are in the order of the definition's
    /// columns; fixed ones have their full size. Throws Error{ValueTooLarge} if the record does not
    /// fit on a page.
    void encode(std::span<const StoredField> fields, std::vector<std::uint8_t>& out) const;

private:
    [[noreturn]] static void throwTooLarge();
    struct Place {
        std::uint16_t id = 0;
        bool boolean = false;
        bool fixed = false;
        std::size_t offset = 0;  ///< of a fixed column, in the record
    };

    std::size_t columnCount_;
    std::size_t fixedEnd_;  ///< where the fixed part of a record ends
    std::vector<Place> places_;
    /// For each place in the offset table the column that has it; places of deleted columns have
    /// none and are empty.
    std::vector<std::size_t> variables_;
};

}  // namespace jet
