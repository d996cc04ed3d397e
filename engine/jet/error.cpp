#include "engine/jet/error.h"

namespace jet {

void throwDamaged(PageNumber page, std::string_view reason) {
    std::string message = "The database is damaged on page " + std::to_string(raw(page)) + ": ";
    message.append(reason).append(".");
    throw Error{Fault::Damaged, message, page};
}

}  // namespace jet
