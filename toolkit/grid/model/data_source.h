// DataSource: where a grid gets its rows from.
//
//   void cellText(std::int64_t row, int column, std::wstring& text) const override {
//       text = column == 0 ? std::to_wstring(row + 1) : L"";
//   }
//
// The user-interface thread, on which the grid calls every member, most of them while it paints.
// The source's changes are reported through the grid's notifications (grid.h). The grid must be
// given another source before this one is destroyed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace grid {

enum class Alignment { left, center, right };

class DataSource {
public:
    virtual ~DataSource() = default;

    /// The columns are fixed while the source is set.
    virtual int columnCount() const = 0;
    virtual std::wstring fieldName(int column) const = 0;
    virtual Alignment alignment(int column) const = 0;

    /// How many rows there are by now.
    virtual std::int64_t rowCount() const = 0;

    /// Sets `text` to the text of a cell. Must be cheap: it is called for every visible cell in
    /// every paint. A deleted row has empty texts.
    virtual void cellText(std::int64_t row, int column, std::wstring& text) const = 0;

    /// A rank for every row, for grouping: equal only for rows that belong together, smaller for
    /// those that come first, and dense (the memory for grouping grows with the greatest). Called
    /// only when the user groups by the column. The default reads all texts and orders them by the
    /// user's language.
    virtual std::vector<std::uint32_t> valueRanks(int column) const;

    /// The current row, counted from 0; -1 for none.
    virtual std::int64_t currentRow() const = 0;
    /// The user moved to another row. The source may refuse by keeping its own.
    virtual void setCurrentRow(std::int64_t row) = 0;
};

}  // namespace grid
