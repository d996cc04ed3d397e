// The message boxes and file dialogs in use (services/services.h).
//
//   userDialogs().showMessage(nullptr, {.title = L"Vorelle Diagnostic Viewer", .text = L"Done"});
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/dialogs.h"

/// The system's if there are no others.
forms::Dialogs& userDialogs();
