#include "engine/jet/error.h"

namespace jet {

void throwDamaged(PageNumber page, const std::string& reason) {
    throw Error{
        Fault::Damaged,
        "The database is damaged on page " + std::to_string(raw(page)) + ": " + reason + ".", page};
}

}  // namespace jet
