#include "tests/program/tools.h"

#include "engine/jet/text.h"

#include <windows.h>
#include <oleauto.h>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace {

/// The tools stand in the folder of the test program.
std::filesystem::path tool(const char* name) {
    std::array<wchar_t, 1024> own{};
    ::GetModuleFileNameW(nullptr, own.data(), static_cast<DWORD>(own.size()));
    return std::filesystem::path{own.data()}.parent_path() / name;
}

std::wstring quoted(const std::wstring& text) { return L'"' + text + L'"'; }

/// All that comes until the other side closes the pipe.
std::string readAll(HANDLE pipe) {
    std::string text;
    std::array<char, 65536> part{};
    DWORD count = 0;
    while (::ReadFile(pipe, part.data(), static_cast<DWORD>(part.size()), &count, nullptr) &&
           count > 0) {
        text.append(part.data(), count);
    }
    return text;
}

/// What the tool prints.
std::string run(const char* name, const std::wstring& arguments) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    ::CreatePipe(&reading, &writing, &inherited, 1 << 20);
    ::SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writing;
    PROCESS_INFORMATION process{};
    std::wstring line = quoted(tool(name).wstring()) + L' ' + arguments;
    const BOOL started = ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          nullptr, &startup, &process);
    ::CloseHandle(writing);
    std::string output = started ? readAll(reading) : std::string{};
    ::CloseHandle(reading);
    DWORD code = 1;
    if (started) {
        ::WaitForSingleObject(process.hProcess, 30000);
        ::GetExitCodeProcess(process.hProcess, &code);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }
    if (code != 0) throw std::runtime_error{std::string{name} + " failed"};
    return output;
}

/// yyyy-mm-dd hh:mm:ss as the system's settings have it.
std::wstring systemDate(const std::string& plain) {
    SYSTEMTIME time{};
    if (std::sscanf(plain.c_str(), "%hu-%hu-%hu %hu:%hu:%hu", &time.wYear, &time.wMonth, &time.wDay,
                    &time.wHour, &time.wMinute, &time.wSecond) != 6) {
        throw std::runtime_error{plain + " is no date"};
    }
    double days = 0;
    SystemTimeToVariantTime(&time, &days);
    BSTR text = nullptr;
    VarBstrFromDate(days, LOCALE_USER_DEFAULT, 0, &text);
    const std::wstring result{text, SysStringLen(text)};
    SysFreeString(text);
    return result;
}

std::wstring wide(const std::string& utf8) {
    const std::u16string text = jet::toUtf16(utf8);
    return {text.begin(), text.end()};
}

std::string ansi(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    std::string bytes(text.size() * 4 + 1, '\0');
    const int size = ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, bytes.data(),
                                           static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

}  // namespace

fixture::PlainTable jetsqlAnswer(const std::filesystem::path& database, const std::wstring& query) {
    return fixture::parsePlainTable(
        run("jetsql.exe", quoted(database.wstring()) + L' ' + quoted(query)));
}

void makeTraces(const std::filesystem::path& database, int rows) {
    run("maketraces.exe", quoted(database.wstring()) + L" --rows " + std::to_wstring(rows) +
                              L" --format newer --macros");
}

std::string asExported(const fixture::PlainTable& table) {
    constexpr std::size_t kBlockRows = 100;
    std::wstring text;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        text += (i > 0 ? L"\t" : L"") + wide(table.columns[i]);
    }
    text += L"\r\n";
    for (std::size_t row = 0; row < table.rows.size(); ++row) {
        for (std::size_t i = 0; i < table.rows[row].size(); ++i) {
            const auto& cell = table.rows[row][i];
            if (i > 0) text += L'\t';
            if (cell) text += i == 0 ? systemDate(*cell) : wide(*cell);
        }
        text += L"\r\n";
        if ((row + 1) % kBlockRows == 0 || row + 1 == table.rows.size()) text += L"\r\n";
    }
    return ansi(text);
}
