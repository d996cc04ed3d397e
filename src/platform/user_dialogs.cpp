#include "src/platform/user_dialogs.h"

#include "src/services/services.h"

forms::Dialogs& userDialogs() {
    return services().dialogs != nullptr ? *services().dialogs : forms::systemDialogs();
}
