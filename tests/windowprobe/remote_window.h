// Questions to windows of another process, answered within twenty seconds or not at all: on a busy
// machine a window that lives may take its time.
//
//   if (const auto text = panelText(statusBar, 0)) ...
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

inline constexpr UINT kAnswerTime = 20000;  ///< milliseconds

inline std::optional<DWORD_PTR> ask(HWND window, UINT message, WPARAM wParam = 0,
                                    LPARAM lParam = 0) {
    DWORD_PTR answer = 0;
    if (::SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kAnswerTime, &answer) ==
        0) {
        return std::nullopt;
    }
    return answer;
}

/// Memory inside the process of a window: control messages with pointers need it there.
class RemoteMemory {
public:
    RemoteMemory(HWND window, std::size_t size) : size_{size} {
        DWORD processId = 0;
        ::GetWindowThreadProcessId(window, &processId);
        process_ = ::OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE,
                                 processId);
        if (process_ != nullptr) {
            address_ = ::VirtualAllocEx(process_, nullptr, size, MEM_COMMIT, PAGE_READWRITE);
        }
    }

    ~RemoteMemory() {
        if (address_ != nullptr && !lent_) ::VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
        if (process_ != nullptr) ::CloseHandle(process_);
    }

    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;

    /// Where it is in the other process.
    void* address() const { return address_; }

    bool put(const void* from, std::size_t count) {
        return address_ != nullptr &&
               ::WriteProcessMemory(process_, address_, from, count, nullptr) != 0;
    }

    /// Sends the message with this memory as its lParam and fetches what the control wrote.
    bool fetch(HWND window, UINT message, WPARAM wParam, void* into) {
        if (address_ == nullptr) return false;
        if (!ask(window, message, wParam, reinterpret_cast<LPARAM>(address_))) {
            lent_ = true;  // a late answer may still be written, so the memory stays
            return false;
        }
        return ::ReadProcessMemory(process_, address_, into, size_, nullptr) != 0;
    }

private:
    std::size_t size_;
    HANDLE process_ = nullptr;
    void* address_ = nullptr;
    bool lent_ = false;
};

inline std::optional<std::wstring> panelText(HWND statusBar, WPARAM panel) {
    const auto length = ask(statusBar, SB_GETTEXTLENGTHW, panel);
    if (!length) return std::nullopt;
    // The text may grow between the two questions.
    std::vector<wchar_t> text(LOWORD(*length) + std::size_t{1024});
    RemoteMemory memory{statusBar, text.size() * sizeof(wchar_t)};
    if (!memory.fetch(statusBar, SB_GETTEXTW, panel, text.data())) return std::nullopt;
    text.back() = L'\0';
    return std::wstring{text.data()};
}
