// The owner of the trace recordset, and what happens while its rows arrive: the status bar counts
// them, and when all are there the grid is sorted by date.
//
// The user-interface thread; the recordset's events arrive on it.
#pragma once

#include "engine/ado/recordset.h"
#include "src/db/loading_display.h"

#include <memory>

class classDiags {
public:
    /// `display` must outlive the object.
    classDiags(std::shared_ptr<ado::Scheduler> scheduler, LoadingDisplay& display);

    ado::Recordset& rsDiags() { return *rsDiags_; }

    /// "  Line n of m  ": the place of the current record and the number of rows in the grid.
    std::u16string positionText() const;

private:
    void rsDiags_FetchProgress(std::uint32_t progress);
    void rsDiags_FetchComplete();

    LoadingDisplay& display_;
    std::unique_ptr<ado::Recordset> rsDiags_;
};

/// The single instance of the process; empty until start-up made it.
std::unique_ptr<classDiags>& diags();
