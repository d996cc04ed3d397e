#include "src/platform/system_error.h"

#include "src/log/procedure.h"
#include "src/text/text.h"

#include <windows.h>

void throwFileError(std::uint32_t code) {
    switch (code) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            throw RuntimeError{RuntimeError::kDiskFull, u"Disk full"};
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            throw RuntimeError{RuntimeError::kPermissionDenied, u"Permission denied"};
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
            throw RuntimeError{RuntimeError::kPathFileAccess, u"Path/File access error"};
        case ERROR_FILE_NOT_FOUND:
            throw RuntimeError{RuntimeError::kFileNotFound, u"File not found"};
        case ERROR_PATH_NOT_FOUND:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            throw RuntimeError{RuntimeError::kPathNotFound, u"Path not found"};
        case ERROR_INVALID_NAME:
            throw RuntimeError{RuntimeError::kBadFileName, u"Bad file name or number"};
        default:
            throw RuntimeError{RuntimeError::kDeviceError, u"Device I/O error"};
    }
}

std::u16string systemMessage(std::uint32_t code) {
    wchar_t text[512] = L"";
    DWORD length =
        ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                         0, text, static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && (text[length - 1] == L'\r' || text[length - 1] == L'\n')) --length;
    return fromWide({text, length});
}
