// Files through the Windows interface.
#ifdef _WIN32

#include "engine/jet/storage.h"

#include "engine/jet/text.h"

#include <windows.h>

#include <algorithm>
#include <string>

namespace jet {
namespace {

std::string toUtf8(const std::wstring& text) {
    return jet::toUtf8(std::u16string{text.begin(), text.end()});
}

std::string systemMessage(DWORD code) {
    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring message{text == nullptr ? L"" : text, length};
    ::LocalFree(text);
    while (!message.empty() && (message.back() <= L' ' || message.back() == L'.')) {
        message.pop_back();
    }
    return message.empty() ? "error " + std::to_string(code) : toUtf8(message);
}

[[noreturn]] void throwSystem(Fault fault, const std::string& what, DWORD code) {
    throw Error{fault, what + ": " + systemMessage(code) + "."};
}

Fault faultOf(DWORD code) {
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_DIRECTORY:
        case ERROR_INVALID_DRIVE:
        case ERROR_BAD_NETPATH:
        case ERROR_BAD_NET_NAME:
            return Fault::FileNotFound;
        case ERROR_ACCESS_DENIED:
            return Fault::AccessDenied;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return Fault::InUse;
        default:
            return Fault::ReadFailed;
    }
}

/// The path in the form that has no limit of 260 characters.
std::wstring unlimited(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::path absolute = std::filesystem::absolute(path, ignored);
    if (ignored) return path.wstring();
    std::wstring text = absolute.lexically_normal().make_preferred().wstring();
    if (text.size() < MAX_PATH || text.starts_with(L"\\\\?\\")) return text;
    if (text.starts_with(L"\\\\")) return L"\\\\?\\UNC" + text.substr(1);
    return L"\\\\?\\" + text;
}

class WindowsStorage : public Storage {
public:
    explicit WindowsStorage(HANDLE file) : file_{file} {}
    ~WindowsStorage() override { ::CloseHandle(file_); }
    WindowsStorage(const WindowsStorage&) = delete;
    WindowsStorage& operator=(const WindowsStorage&) = delete;

    std::uint64_t size() const override {
        LARGE_INTEGER size{};
        if (!::GetFileSizeEx(file_, &size)) {
            throwSystem(Fault::ReadFailed, "The size of the file cannot be read", ::GetLastError());
        }
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        std::size_t done = 0;
        while (done < buffer.size()) {
            const DWORD count = readSome(offset + done, buffer.subspan(done));
            if (count == 0) break;
            done += count;
        }
        return done;
    }

private:
    DWORD readSome(std::uint64_t offset, std::span<std::uint8_t> buffer) const {
        constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(buffer.size(), kMostAtOnce));
        if (!::ReadFile(file_, buffer.data(), wanted, &count, &place)) {
            const DWORD code = ::GetLastError();
            if (code == ERROR_HANDLE_EOF) return 0;
            throwSystem(Fault::ReadFailed, "The file cannot be read", code);
        }
        return count;
    }

    HANDLE file_;
};

}  // namespace

std::unique_ptr<Storage> openFile(const std::filesystem::path& path) {
    const std::wstring name = unlimited(path);
    const HANDLE file = ::CreateFileW(name.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD code = ::GetLastError();
        throwSystem(faultOf(code), "The file " + toUtf8(path.wstring()) + " cannot be opened",
                    code);
    }
    return std::make_unique<WindowsStorage>(file);
}

}  // namespace jet

#endif
