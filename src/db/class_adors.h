// Owner of a recordset that is fetched in the background; the end of the fetch is logged.
//
//   classADORS background{scheduler};
//   background.rsGen().open(query, connection, ado::adOpenStatic, ado::adLockReadOnly,
//                           ado::adAsyncFetch);
//
// The user-interface thread; the recordset's events arrive on it.
#pragma once

#include "engine/ado/recordset.h"

#include <memory>

class classADORS {
public:
    explicit classADORS(std::shared_ptr<ado::Scheduler> scheduler);

    ado::Recordset& rsGen() { return *rsGen_; }

private:
    static void rsGen_FetchComplete();

    std::unique_ptr<ado::Recordset> rsGen_;
};
