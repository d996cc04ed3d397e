#include "src/search/ansi_file.h"

#include "src/platform/system_error.h"

namespace {

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

/// A file that says it may not be written is left alone, also by those who could.
HANDLE create(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        throwFileError(ERROR_ACCESS_DENIED);
    }
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) throwFileError(::GetLastError());
    return file;
}

}  // namespace

AnsiFile::AnsiFile(const std::wstring& path) : file_{create(path)} {}

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
