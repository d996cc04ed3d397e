#include "toolkit/forms/dialogs.h"

#include "toolkit/forms/application.h"

#include <commdlg.h>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace forms {
namespace {

// The longest path that Windows knows.
constexpr std::size_t kMaxPath = 32768;

using SystemFileDialog = BOOL(WINAPI*)(OPENFILENAMEW*);

// "A|*.a|B|*.b" as Windows wants it: each part ended by a zero, the whole by one more.
std::wstring zeroDivided(std::wstring filter) {
    std::replace(filter.begin(), filter.end(), L'|', L'\0');
    filter += L'\0';
    return filter;
}

std::optional<FileDialogAnswer> runFileDialog(SystemFileDialog show, DWORD flags, HWND owner,
                                              const FileDialogRequest& request) {
    std::vector<wchar_t> path(kMaxPath);
    std::copy_n(request.fileName.begin(), std::min(request.fileName.size(), path.size() - 1),
                path.begin());
    const std::wstring filter = zeroDivided(request.filter);

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = filter.c_str();
    dialog.nFilterIndex = static_cast<DWORD>(request.filterIndex);
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrTitle = request.title.empty() ? nullptr : request.title.c_str();
    dialog.lpstrDefExt =
        request.defaultExtension.empty() ? nullptr : request.defaultExtension.c_str();
    // The dialog must not change the folder that the program's relative names start from.
    dialog.Flags = flags | OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_ENABLESIZING;

    wakePosted();
    if (!show(&dialog)) {
        if (::CommDlgExtendedError() != 0) {
            throw std::runtime_error("the file dialog could not be shown");
        }
        return std::nullopt;
    }
    return FileDialogAnswer{path.data(), static_cast<int>(dialog.nFilterIndex)};
}

UINT iconFlag(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::critical:
            return MB_ICONSTOP;
        case MessageIcon::question:
            return MB_ICONQUESTION;
        case MessageIcon::exclamation:
            return MB_ICONEXCLAMATION;
        case MessageIcon::information:
            return MB_ICONINFORMATION;
        default:
            return 0;
    }
}

UINT buttonFlag(MessageButtons buttons) {
    switch (buttons) {
        case MessageButtons::okCancel:
            return MB_OKCANCEL;
        case MessageButtons::yesNo:
            return MB_YESNO;
        case MessageButtons::yesNoCancel:
            return MB_YESNOCANCEL;
        case MessageButtons::retryCancel:
            return MB_RETRYCANCEL;
        default:
            return MB_OK;
    }
}

MessageAnswer answerOf(int button) {
    switch (button) {
        case IDYES:
            return MessageAnswer::yes;
        case IDNO:
            return MessageAnswer::no;
        case IDRETRY:
            return MessageAnswer::retry;
        case IDCANCEL:
            return MessageAnswer::cancel;
        default:
            return MessageAnswer::ok;
    }
}

class SystemDialogs : public Dialogs {
public:
    std::optional<FileDialogAnswer> openFile(HWND owner,
                                             const FileDialogRequest& request) override {
        return runFileDialog(&GetOpenFileNameW, OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST, owner,
                             request);
    }

    std::optional<FileDialogAnswer> saveFile(HWND owner,
                                             const FileDialogRequest& request) override {
        return runFileDialog(&GetSaveFileNameW, OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST, owner,
                             request);
    }

    MessageAnswer showMessage(HWND owner, const MessageRequest& request) override {
        // Without an owner the box must keep the whole program waiting, or it could be lost behind
        // the program's windows.
        const UINT modality = owner ? UINT{MB_APPLMODAL} : UINT{MB_TASKMODAL};
        wakePosted();
        return answerOf(::MessageBoxW(
            owner, request.text.c_str(), request.title.c_str(),
            iconFlag(request.icon) | buttonFlag(request.buttons) | modality | MB_SETFOREGROUND));
    }
};

}  // namespace

Dialogs& systemDialogs() {
    static SystemDialogs system;
    return system;
}

}  // namespace forms
