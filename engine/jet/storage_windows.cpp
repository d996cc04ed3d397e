// Files through the Windows interface.
#ifdef _WIN32

#include "engine/jet/storage.h"

#include "engine/jet/busy_wait.h"
#include "engine/jet/text.h"

#include <windows.h>

#include <algorithm>
#include <string>
#include <utility>

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

/// What a refusal to open or make a file for writing means.
Fault writingFaultOf(DWORD code) {
    switch (code) {
        case ERROR_ACCESS_DENIED:
        case ERROR_WRITE_PROTECT:
            return Fault::ReadOnly;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return Fault::InUse;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL:
        case ERROR_FILE_TOO_LARGE:
            return Fault::DiskFull;
        default:
            return Fault::WriteFailed;
    }
}

/// The path in the form that has no limit of 260 characters.
std::wstring unlimited(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::path absolute = std::filesystem::absolute(path, ignored);
    if (ignored) return path.wstring();
    std::wstring text = absolute.lexically_normal().make_preferred().wstring();
    // Names that are derived from this one may be some characters longer.
    constexpr std::size_t kDerived = 10;
    if (text.size() + kDerived < MAX_PATH || text.starts_with(L"\\\\?\\")) return text;
    if (text.starts_with(L"\\\\")) return L"\\\\?\\UNC" + text.substr(1);
    return L"\\\\?\\" + text;
}

/// An open file, closed at the end.
class Handle {
public:
    Handle() = default;
    Handle(const std::wstring& name, DWORD access, DWORD sharing, DWORD disposition)
        : handle_{::CreateFileW(name.c_str(), access, sharing, nullptr, disposition,
                                FILE_ATTRIBUTE_NORMAL, nullptr)} {}
    ~Handle() { reset(); }
    Handle(Handle&& other) noexcept : handle_{std::exchange(other.handle_, INVALID_HANDLE_VALUE)} {}
    Handle& operator=(Handle&& other) noexcept {
        reset();
        handle_ = std::exchange(other.handle_, INVALID_HANDLE_VALUE);
        return *this;
    }

    HANDLE get() const { return handle_; }
    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    void reset() {
        if (*this) ::CloseHandle(handle_);
        handle_ = INVALID_HANDLE_VALUE;
    }

private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

Handle openShared(const std::wstring& name) {
    return {name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            OPEN_EXISTING};
}

Handle openAlone(const std::wstring& name) {
    return {name, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING};
}

/// Tries again for up to a second while others have the file.
template <typename Open>
Handle openPatiently(BusyWait& wait, Open open) {
    Handle file = open();
    while (!file && ::GetLastError() == ERROR_SHARING_VIOLATION) {
        if (!wait.again()) {
            ::SetLastError(ERROR_SHARING_VIOLATION);
            return file;
        }
        file = open();
    }
    if (file) wait.reset();
    return file;
}

/// The name of the file that a symbolic link leads to, whose journal is beside that.
std::wstring targetOf(const Handle& file, const std::wstring& name) {
    const DWORD attributes = ::GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return name;
    }
    std::wstring target(::GetFinalPathNameByHandleW(file.get(), nullptr, 0, 0), L'\0');
    const DWORD length = ::GetFinalPathNameByHandleW(file.get(), target.data(),
                                                     static_cast<DWORD>(target.size()), 0);
    if (length == 0 || length >= target.size()) return name;
    return target.substr(0, length);
}

/// Tells one file from another, whatever their names.
struct Identity {
    DWORD volume = 0;
    DWORD high = 0;
    DWORD low = 0;
    friend bool operator==(const Identity&, const Identity&) = default;
};

Identity identityOf(const Handle& file) {
    BY_HANDLE_FILE_INFORMATION information{};
    ::GetFileInformationByHandle(file.get(), &information);
    return {information.dwVolumeSerialNumber, information.nFileIndexHigh,
            information.nFileIndexLow};
}

class WindowsStorage : public Storage {
public:
    WindowsStorage(Handle file, std::wstring name)
        : file_{std::move(file)},
          name_{std::move(name)},
          journalName_{targetOf(file_, name_) + L"-journal"} {}

    bool isOpenElsewhere() const override { return hasLockFile(name_); }

    std::uint64_t size() const override {
        LARGE_INTEGER size{};
        if (!::GetFileSizeEx(file_.get(), &size)) {
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

    /// A file can only be had alone while nobody has it open, this object included.
    void lock() override {
        if (locked_) return;
        refuseReadOnly();
        refuseWhileOthersWrite();
        const Identity before = identityOf(file_);
        file_.reset();
        Handle alone = openPatiently(wait_, [&] { return openAlone(name_); });
        if (!alone) {
            const DWORD code = ::GetLastError();
            reopen();
            failToWrite(writingFaultOf(code), code);
        }
        file_ = std::move(alone);
        locked_ = true;
        if (!(identityOf(file_) == before)) {
            unlock();
            throw Error{Fault::WriteFailed, "The file " + toUtf8(name_) + " has been replaced."};
        }
    }

    void unlock() override {
        if (!std::exchange(locked_, false)) return;
        file_.reset();
        reopen();
    }

    void writeAt(std::uint64_t offset, Bytes bytes) override {
        while (!bytes.empty()) {
            OVERLAPPED place = placeAt(offset);
            DWORD count = 0;
            const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMaxAtOnce));
            if (!::WriteFile(file_.get(), bytes.data(), wanted, &count, &place)) {
                const DWORD code = ::GetLastError();
                const Fault fault = writingFaultOf(code);
                failToWrite(fault == Fault::DiskFull ? fault : Fault::WriteFailed, code);
            }
            offset += count;
            bytes = bytes.subspan(count);
        }
    }

    void truncate(std::uint64_t size) override {
        LARGE_INTEGER end{};
        end.QuadPart = static_cast<LONGLONG>(size);
        if (!::SetFilePointerEx(file_.get(), end, nullptr, FILE_BEGIN) ||
            !::SetEndOfFile(file_.get())) {
            failToWrite(Fault::WriteFailed, ::GetLastError());
        }
    }

    void sync() override {
        if (!::FlushFileBuffers(file_.get())) failToWrite(Fault::WriteFailed, ::GetLastError());
    }

    std::unique_ptr<Storage> openJournal() override {
        Handle file = openShared(journalName_);
        if (!file) {
            const DWORD code = ::GetLastError();
            if (code == ERROR_FILE_NOT_FOUND) return nullptr;
            throwSystem(faultOf(code), "The file " + journalName() + " cannot be opened", code);
        }
        return std::make_unique<WindowsStorage>(std::move(file), journalName_);
    }

    std::unique_ptr<Storage> createJournal() override {
        Handle file{journalName_, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW};
        if (!file) {
            const DWORD code = ::GetLastError();
            throwSystem(code == ERROR_FILE_EXISTS ? Fault::JournalInTheWay : writingFaultOf(code),
                        "The file " + journalName() + " cannot be made", code);
        }
        return std::make_unique<WindowsStorage>(std::move(file), journalName_);
    }

    void removeJournal() override {
        if (!::DeleteFileW(journalName_.c_str()) && ::GetLastError() != ERROR_FILE_NOT_FOUND) {
            throwSystem(Fault::WriteFailed, "The file " + journalName() + " cannot be removed",
                        ::GetLastError());
        }
    }

    std::string journalName() const override { return toUtf8(journalName_); }

private:
    static constexpr std::size_t kMaxAtOnce = std::size_t{1} << 30;

    static OVERLAPPED placeAt(std::uint64_t offset) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        return place;
    }

    DWORD readSome(std::uint64_t offset, std::span<std::uint8_t> buffer) const {
        OVERLAPPED place = placeAt(offset);
        DWORD count = 0;
        const auto wanted = static_cast<DWORD>(std::min(buffer.size(), kMaxAtOnce));
        if (!::ReadFile(file_.get(), buffer.data(), wanted, &count, &place)) {
            const DWORD code = ::GetLastError();
            if (code == ERROR_HANDLE_EOF) return 0;
            throwSystem(Fault::ReadFailed, "The file cannot be read", code);
        }
        return count;
    }

    /// Asked for before the file is given up: other systems behind a share may not refuse by
    /// themselves.
    void refuseReadOnly() const {
        const DWORD attributes = ::GetFileAttributesW(name_.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
            failToWrite(Fault::ReadOnly, ERROR_ACCESS_DENIED);
        }
    }

    /// The office program keeps a lock file beside a database that it shares. One that was left
    /// behind can be opened alone and means nothing.
    void refuseWhileOthersWrite() const {
        const std::wstring name = std::filesystem::path{name_}.replace_extension(L".ldb").wstring();
        const Handle file = openAlone(name);
        const DWORD code = ::GetLastError();
        if (!file && code == ERROR_SHARING_VIOLATION) failToWrite(Fault::InUse, code);
    }

    /// In the moment in which nobody has the file open, somebody may take it alone for a while.
    void reopen() {
        BusyWait wait;
        file_ = openPatiently(wait, [&] { return openShared(name_); });
        if (!file_) {
            throwSystem(Fault::ReadFailed, "The file " + toUtf8(name_) + " cannot be opened again",
                        ::GetLastError());
        }
    }

    [[noreturn]] void failToWrite(Fault fault, DWORD code) const {
        throwSystem(fault, "The file " + toUtf8(name_) + " cannot be written", code);
    }

    Handle file_;
    std::wstring name_;
    std::wstring journalName_;
    BusyWait wait_;
    bool locked_ = false;
};

std::unique_ptr<Storage> opened(Handle file, const std::filesystem::path& path, std::wstring name) {
    if (!file) {
        const DWORD code = ::GetLastError();
        throwSystem(faultOf(code), "The file " + toUtf8(path.wstring()) + " cannot be opened",
                    code);
    }
    return std::make_unique<WindowsStorage>(std::move(file), std::move(name));
}

}  // namespace

std::unique_ptr<Storage> openFile(const std::filesystem::path& path) {
    std::wstring name = unlimited(path);
    BusyWait wait;
    return opened(openPatiently(wait, [&] { return openShared(name); }), path, name);
}

std::unique_ptr<Storage> createFile(const std::filesystem::path& path) {
    std::wstring name = unlimited(path);
    {
        const Handle made{name, GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW};
        if (!made) {
            const DWORD code = ::GetLastError();
            throwSystem(Fault::AccessDenied, "The file " + toUtf8(name) + " cannot be made", code);
        }
    }
    return opened(openShared(name), path, name);
}

}  // namespace jet

#endif
