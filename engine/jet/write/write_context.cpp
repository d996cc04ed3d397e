#include "engine/jet/write/write_context.h"

#include "engine/jet/database.h"

namespace jet {

void Database::write(const std::function<void(WriteContext&)>& change) {
    pager_.begin();
    try {
        forgetCatalog();  // others may have changed it
        WriteContext context{*this, pager_, PageAllocator{pager_}, clock_()};
        change(context);
    } catch (...) {
        pager_.undo();
        forgetCatalog();
        throw;
    }
    pager_.end();
    forgetCatalog();
}

}  // namespace jet
