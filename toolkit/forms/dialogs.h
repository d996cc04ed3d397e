// Message boxes and file dialogs, behind one small interface, so that a test can answer them.
//
//   const auto answer = forms::systemDialogs().openFile(
//       form.hwnd(), {.title = L"Open", .filter = L"Database (*.mdb)|*.mdb"});
//   if (answer) { open(answer->path); }
//
// The user-interface thread.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace forms {

struct FileDialogRequest {
    std::wstring title{};
    /// Pairs of description and pattern, all separated by '|'.
    std::wstring filter{};
    /// From 1.
    int filterIndex = 1;
    /// Added to a name typed without one; no dot.
    std::wstring defaultExtension{};
    /// The suggested name; may include a folder.
    std::wstring fileName{};
};

struct FileDialogAnswer {
    std::wstring path = {};
    int filterIndex = 1;
};

enum class MessageIcon { none, critical, question, exclamation, information };
enum class MessageButtons { ok, okCancel, yesNo, yesNoCancel, retryCancel };
enum class MessageAnswer { ok, cancel, yes, no, retry };

struct MessageRequest {
    std::wstring title{};
    std::wstring text{};
    MessageIcon icon = MessageIcon::none;
    MessageButtons buttons = MessageButtons::ok;
};

class Dialogs {
public:
    virtual ~Dialogs() = default;

    /// Nothing if the user cancelled. The owner may be null. Both throw std::runtime_error if the
    /// dialog cannot be shown.
    virtual std::optional<FileDialogAnswer> openFile(HWND owner, const FileDialogRequest&) = 0;
    /// Asks for confirmation before it returns the name of an existing file.
    virtual std::optional<FileDialogAnswer> saveFile(HWND owner, const FileDialogRequest&) = 0;
    virtual MessageAnswer showMessage(HWND owner, const MessageRequest&) = 0;
};

/// Those of the system.
Dialogs& systemDialogs();

}  // namespace forms
