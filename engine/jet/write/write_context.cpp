#include "engine/jet/write/write_context.h"

#include "engine/jet/database.h"

namespace jet {

void Database::write(const std::function<void(WriteContext&)>& change) {
    forgetCatalog();  // others may have changed it, or may do so while this one waits for the file
    pager_.begin();
    try {
        forgetCatalog();
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
