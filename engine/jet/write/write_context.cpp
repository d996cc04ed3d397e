#include "engine/jet/write/write_context.h"

#include "engine/jet/database.h"

#include <exception>

namespace jet {
namespace {

/// Damage that a writer meets is a loss, too, though no reader may have noticed any.
void noteDamage(Database& database, const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const Error& error) {
        if (error.fault() != Fault::Damaged && error.fault() != Fault::Truncated) return;
        database.noteLoss({Loss::Kind::Pages, error.page(), Loss::kNoSlot, error.what()});
    } catch (...) {
        // A failure of the statement, not of the file.
    }
}

}  // namespace

void Database::refuseDamaged() {
    const auto loss = firstLoss();
    if (!loss) return;
    pager_.rollBack();
    forgetCatalog();
    std::string message = "Nothing is written to a file with damage: " + toText(*loss);
    if (!message.ends_with('.')) message += '.';
    throw Error{Fault::DamagedFile, message, loss->page};
}

void Database::write(const std::function<void(WriteContext&)>& change) {
    refuseDamaged();
    forgetCatalog();  // others may change it while this one waits for the file
    pager_.begin();
    try {
        forgetCatalog();
        WriteContext context{*this, pager_, PageAllocator{pager_}, clock_()};
        change(context);
    } catch (...) {
        noteDamage(*this, std::current_exception());
        pager_.undo();
        forgetCatalog();
        refuseDamaged();
        throw;
    }
    const bool damaged = firstLoss().has_value();
    damaged ? pager_.undo() : pager_.end();
    forgetCatalog();
    if (damaged) refuseDamaged();
}

}  // namespace jet
