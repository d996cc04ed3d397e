#include "src/db/class_diags.h"

#include "src/db/mod_database.h"

#include <utility>

classDiags::classDiags(std::shared_ptr<ado::Scheduler> scheduler, LoadingEvents& events)
    : events_{events}, rsDiags_{std::make_unique<ado::Recordset>(std::move(scheduler))} {
    rsDiags_->setSort(u"");
    rsDiags_->fetchProgress = [this](std::uint32_t progress, std::uint32_t /*maxProgress*/,
                                     int /*status*/) { rsDiags_FetchProgress(progress); };
    rsDiags_->fetchComplete = [this](const ado::Error* error, int /*status*/) {
        rsDiags_FetchComplete(error);
    };
}

void classDiags::rsDiags_FetchProgress(std::uint32_t progress) { events_.rowsLoaded(progress); }

void classDiags::rsDiags_FetchComplete(const ado::Error* error) {
    events_.loadEnded({.error = error, .lost = rsDiags_->losses()});
    modDatabase::computeUniqueFilters();
}

std::unique_ptr<classDiags>& diags() {
    static std::unique_ptr<classDiags> instance;
    return instance;
}
