#include "src/app/toolkit_failures.h"

#include "src/text/text.h"
#include "toolkit/forms/tree_view.h"

std::optional<Failure> readToolkitFailure(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const forms::TreeError& failure) {
        return Failure{failure.number(), fromAscii(failure.what())};
    } catch (...) {
        return std::nullopt;
    }
}
