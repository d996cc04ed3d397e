#include "src/platform/windows_log_system.h"

#include "src/log/log_format.h"
#include "src/platform/arguments.h"
#include "src/platform/program.h"
#include "src/platform/system_error.h"
#include "src/platform/utilities.h"
#include "src/text/text.h"

#include <windows.h>
#include <oleauto.h>

#include <filesystem>

namespace {

LocalSeconds toLocalSeconds(const SYSTEMTIME& time) {
    return logformat::fromCalendar(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute,
                                   time.wSecond);
}

SYSTEMTIME localTime() {
    SYSTEMTIME time{};
    ::GetLocalTime(&time);
    return time;
}

class SystemClock : public LogClock {
public:
    LocalSeconds now() override { return toLocalSeconds(localTime()); }

    /// The wall's clock steps by milliseconds at best; the counter gives what is between.
    float timer() override {
        LARGE_INTEGER counter{};
        ::QueryPerformanceCounter(&counter);
        const double seconds =
            static_cast<double>(counter.QuadPart - origin_.QuadPart) / frequency();
        constexpr auto kDaySeconds = static_cast<double>(kDay);
        const double sinceMidnight = midnight_ + seconds;
        return static_cast<float>(
            sinceMidnight -
            kDaySeconds * static_cast<double>(static_cast<int>(sinceMidnight / kDaySeconds)));
    }

private:
    static double frequency() {
        LARGE_INTEGER frequency{};
        ::QueryPerformanceFrequency(&frequency);
        return static_cast<double>(frequency.QuadPart);
    }

    static LARGE_INTEGER startCounter() {
        LARGE_INTEGER counter{};
        ::QueryPerformanceCounter(&counter);
        return counter;
    }

    static double startSeconds() {
        const SYSTEMTIME time = localTime();
        return time.wHour * 3600.0 + time.wMinute * 60.0 + time.wSecond + time.wMilliseconds / 1e3;
    }

    LARGE_INTEGER origin_ = startCounter();
    double midnight_ =
        startSeconds();  ///< seconds since midnight when the counter stood at origin_
};

class FileStream : public LogStream {
public:
    explicit FileStream(const std::wstring& path)
        : file_{::CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)} {
        if (file_ == INVALID_HANDLE_VALUE) throwFileError(::GetLastError());
    }
    ~FileStream() override { ::CloseHandle(file_); }
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    void write(std::string_view bytes) override {
        DWORD written = 0;
        if (!::WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                         nullptr)) {
            throwFileError(::GetLastError());
        }
        if (written != bytes.size()) throwFileError(ERROR_DISK_FULL);
    }

private:
    HANDLE file_;
};

LocalSeconds localTimeOf(const FILETIME& utc) {
    FILETIME local{};
    SYSTEMTIME time{};
    ::FileTimeToLocalFileTime(&utc, &local);
    ::FileTimeToSystemTime(&local, &time);
    return toLocalSeconds(time);
}

class FileVolume : public LogVolume {
public:
    void createFolder(const std::u16string& path) override {
        if (::CreateDirectoryW(toWide(path).c_str(), nullptr)) return;
        const DWORD code = ::GetLastError();
        if (code != ERROR_ALREADY_EXISTS) throwFileError(code);
    }

    VolumeSpace space(const std::u16string& folder) override {
        ULARGE_INTEGER available{};
        ULARGE_INTEGER total{};
        ULARGE_INTEGER free{};
        if (!::GetDiskFreeSpaceExW(toWide(folder).c_str(), &available, &total, &free)) {
            throwFileError(::GetLastError());
        }
        return {available.QuadPart, total.QuadPart, free.QuadPart};
    }

    std::uint64_t folderSize(const std::u16string& folder) override {
        std::uint64_t bytes = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator{toWide(folder)}) {
            std::error_code ignored;
            const std::uintmax_t size = entry.file_size(ignored);
            if (!ignored && entry.is_regular_file(ignored)) bytes += size;
        }
        return bytes;
    }

    std::vector<LogFile> files(const std::u16string& folder) override {
        std::vector<LogFile> found;
        WIN32_FIND_DATAW entry{};
        const HANDLE search = ::FindFirstFileW((toWide(folder) + L"\\*").c_str(), &entry);
        if (search == INVALID_HANDLE_VALUE) throwFileError(::GetLastError());
        do {
            if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
            found.push_back({fromWide(entry.cFileName), localTimeOf(entry.ftLastWriteTime)});
        } while (::FindNextFileW(search, &entry));
        ::FindClose(search);
        return found;
    }

    void remove(const std::u16string& path) override {
        if (!::DeleteFileW(toWide(path).c_str())) throwFileError(::GetLastError());
    }

    std::unique_ptr<LogStream> append(const std::u16string& path) override {
        return std::make_unique<FileStream>(toWide(path));
    }
};

char16_t localeCharacter(LCTYPE what, char16_t otherwise) {
    wchar_t text[8] = L"";
    const int length = ::GetLocaleInfoW(LOCALE_USER_DEFAULT, what, text, 8);
    return length > 1 ? static_cast<char16_t>(text[0]) : otherwise;
}

class SystemTexts : public LogTexts {
public:
    std::u16string dateText(LocalSeconds time) const override {
        constexpr double kEpoch = 25569;  // 1970-01-01 as the system counts days
        const double days = kEpoch + static_cast<double>(time) / static_cast<double>(kDay);
        BSTR text = nullptr;
        if (FAILED(::VarBstrFromDate(days, LOCALE_USER_DEFAULT, 0, &text))) {
            return LogTexts::dateText(time);
        }
        return taken(text);
    }

    std::u16string numberText(float number) const override {
        BSTR text = nullptr;
        if (FAILED(::VarBstrFromR4(number, LOCALE_USER_DEFAULT, 0, &text))) {
            return LogTexts::numberText(number);
        }
        return taken(text);
    }

    char16_t decimalPoint() const override { return decimalPoint_; }
    char16_t groupSeparator() const override { return groupSeparator_; }

    void encode(std::u16string_view text, std::string& out) const override {
        if (text.empty()) return;
        const auto* const from = reinterpret_cast<const wchar_t*>(text.data());
        const int length = static_cast<int>(text.size());
        constexpr int kBytesOfCharacter = 4;  // more than any ANSI code page has
        const std::size_t before = out.size();
        out.resize(before + text.size() * kBytesOfCharacter);
        const int size =
            ::WideCharToMultiByte(CP_ACP, 0, from, length, out.data() + before,
                                  static_cast<int>(out.size() - before), nullptr, nullptr);
        out.resize(before + static_cast<std::size_t>(size));
    }

private:
    static std::u16string taken(BSTR text) {
        std::u16string copy{text, text + ::SysStringLen(text)};
        ::SysFreeString(text);
        return copy;
    }

    char16_t decimalPoint_ = localeCharacter(LOCALE_SDECIMAL, u'.');
    char16_t groupSeparator_ = localeCharacter(LOCALE_STHOUSAND, u',');
};

LogProgram thisProgram() {
    const std::filesystem::path path{toWide(program::path())};
    const program::Version version = program::version();
    const std::u16string commandLine = fromWide(::GetCommandLineW());
    return {.folder = program::folder(),
            .baseName = fromWide(path.stem().wstring()),
            .hostPath = program::path(),
            .arguments = std::u16string{program::argumentsOf(commandLine)},
            .major = version.major,
            .minor = version.minor,
            .revision = version.revision};
}

}  // namespace

LogSystem windowsLogSystem() {
    return {.program = thisProgram(),
            .clock = std::make_shared<SystemClock>(),
            .volume = std::make_shared<FileVolume>(),
            .texts = std::make_shared<SystemTexts>(),
            .debugOutput =
                [](const std::u16string& text) {
                    ::OutputDebugStringW((toWide(text) + L"\n").c_str());
                },
            .openFile = Utilities::LaunchApplication};
}
