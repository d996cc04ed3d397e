// The trace recordset as the grid's data source.
//
//   TraceSource source{recordset};
//   tdbgridData.setDataSource(&source);
//
// The user-interface thread.
#pragma once

#include "engine/ado/recordset.h"
#include "toolkit/grid/model/data_source.h"

#include <cstdint>
#include <string>
#include <vector>

class TraceSource : public grid::DataSource {
public:
    /// `recordset` must outlive the source; it may be closed and opened again.
    explicit TraceSource(ado::Recordset& recordset) : recordset_{recordset} {}

    int columnCount() const override;
    std::wstring fieldName(int column) const override;
    grid::Alignment alignment(int column) const override;
    std::int64_t rowCount() const override;
    void cellText(std::int64_t row, int column, std::wstring& text) const override;
    std::vector<std::uint32_t> valueRanks(int column) const override;
    std::int64_t currentRow() const override;
    void setCurrentRow(std::int64_t row) override;

private:
    bool isOpen() const;

    ado::Recordset& recordset_;
    mutable std::vector<grid::Alignment> alignments_;  ///< of the columns asked for while open
    mutable std::u16string cell_;  ///< reused, so that painting a cell does not allocate
};
