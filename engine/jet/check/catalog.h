// Checks of the catalog, and through it of all tables.
//
//   Context context{storage};
//   checkHeaderPage(context);
//   checkCatalog(context);
//
// One thread, that of the check.
#pragma once

#include "engine/jet/check/context.h"

namespace jet::checking {

/// Checks the catalog's own table, then each table that it lists, and the access rights of user
/// tables.
void checkCatalog(Context& context);

}  // namespace jet::checking
