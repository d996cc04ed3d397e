#include "src/search/ansi_file.h"

#include "src/log/procedure.h"

namespace {

constexpr std::int32_t kDiskFull = 61;
constexpr std::int32_t kDeviceError = 57;
constexpr std::int32_t kBadFileName = 52;
constexpr std::int32_t kPermissionDenied = 70;
constexpr std::int32_t kPathFileAccess = 75;
constexpr std::int32_t kPathNotFound = 76;

[[noreturn]] void throwFileError(DWORD code) {
    switch (code) {
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
            throw RuntimeError{kDiskFull, u"Disk full"};
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            throw RuntimeError{kPermissionDenied, u"Permission denied"};
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
            throw RuntimeError{kPathFileAccess, u"Path/File access error"};
        case ERROR_PATH_NOT_FOUND:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            throw RuntimeError{kPathNotFound, u"Path not found"};
        case ERROR_INVALID_NAME:
            throw RuntimeError{kBadFileName, u"Bad file name or number"};
        default:
            throw RuntimeError{kDeviceError, u"Device I/O error"};
    }
}

/// Converts with best fit, replacing what `bytes` holds.
void toAnsi(std::u16string_view text, std::string& bytes) {
    bytes.clear();
    if (text.empty()) return;
    const auto* const from = reinterpret_cast<const wchar_t*>(text.data());
    const int length = static_cast<int>(text.size());
    const int size = ::WideCharToMultiByte(CP_ACP, 0, from, length, nullptr, 0, nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(size));
    ::WideCharToMultiByte(CP_ACP, 0, from, length, bytes.data(), size, nullptr, nullptr);
}

}  // namespace

AnsiFile::AnsiFile(const std::wstring& path)
    : file_{::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                          FILE_ATTRIBUTE_NORMAL, nullptr)} {
    if (file_ == INVALID_HANDLE_VALUE) throwFileError(::GetLastError());
}

AnsiFile::~AnsiFile() { ::CloseHandle(file_); }

void AnsiFile::write(std::u16string_view text) {
    toAnsi(text, bytes_);
    DWORD written = 0;
    if (!::WriteFile(file_, bytes_.data(), static_cast<DWORD>(bytes_.size()), &written, nullptr)) {
        throwFileError(::GetLastError());
    }
    if (written != bytes_.size()) throwFileError(ERROR_DISK_FULL);
}

void AnsiFile::restart() {
    if (!::SetFilePointerEx(file_, LARGE_INTEGER{}, nullptr, FILE_BEGIN) ||
        !::SetEndOfFile(file_)) {
        throwFileError(::GetLastError());
    }
}
