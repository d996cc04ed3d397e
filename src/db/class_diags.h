// The owner of the trace recordset; tells of the progress and the end of its loading.
//
//   diags() = std::make_unique<classDiags>(scheduler, mainWindow);
//   diags()->rsDiags().recordCount();
//
// The user-interface thread; the recordset's events arrive on it.
#pragma once

#include "engine/ado/recordset.h"
#include "src/db/loading_events.h"

#include <memory>

class classDiags {
public:
    /// `events` must outlive the object.
    classDiags(std::shared_ptr<ado::Scheduler> scheduler, LoadingEvents& events);

    ado::Recordset& rsDiags() { return *rsDiags_; }

private:
    void rsDiags_FetchProgress(std::uint32_t progress);
    void rsDiags_FetchComplete(const ado::Error* error);

    LoadingEvents& events_;
    std::unique_ptr<ado::Recordset> rsDiags_;
};

/// The single instance of the process; empty until start-up made it.
std::unique_ptr<classDiags>& diags();
