#include "src/db/class_adors.h"

#include "src/log/class_log.h"

#include <utility>

classADORS::classADORS(std::shared_ptr<ado::Scheduler> scheduler)
    : rsGen_{std::make_unique<ado::Recordset>(std::move(scheduler))} {
    rsGen_->fetchComplete = [](const ado::Error* /*error*/, int /*status*/) {
        rsGen_FetchComplete();
    };
}

// Readers of the log know the line by this spelling.
void classADORS::rsGen_FetchComplete() {
    theLog().log(u"Recorset retrieved.", classLog::kInfo, u"[classADORS]rsGen_FetchComplete");
}
