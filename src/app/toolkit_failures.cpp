#include "src/app/toolkit_failures.h"

#include "src/log/procedure.h"
#include "src/text/text.h"
#include "toolkit/forms/tree_view.h"

void readToolkitFailures() {
    setFailureTranslator([](const std::exception_ptr& error) -> std::optional<Failure> {
        try {
            std::rethrow_exception(error);
        } catch (const forms::TreeError& failure) {
            return Failure{failure.number(), fromAscii(failure.what())};
        } catch (...) {
            return std::nullopt;
        }
    });
}
