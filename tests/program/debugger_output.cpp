#include "tests/program/debugger_output.h"

namespace {

/// A process number, then the text.
constexpr DWORD kBufferSize = 4096;

}  // namespace

DebuggerOutput::DebuggerOutput()
    : bufferReady_{CreateEventW(nullptr, FALSE, TRUE, L"DBWIN_BUFFER_READY")},
      dataReady_{CreateEventW(nullptr, FALSE, FALSE, L"DBWIN_DATA_READY")},
      mapping_{CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kBufferSize,
                                  L"DBWIN_BUFFER")},
      view_{static_cast<const char*>(MapViewOfFile(mapping_, FILE_MAP_READ, 0, 0, kBufferSize))},
      listener_{[this] { listen(); }} {}

DebuggerOutput::~DebuggerOutput() {
    ending_ = true;
    listener_.join();
    UnmapViewOfFile(view_);
    for (const HANDLE handle : {mapping_, dataReady_, bufferReady_}) CloseHandle(handle);
}

void DebuggerOutput::listen() {
    constexpr DWORD kTick = 50;
    while (!ending_) {
        if (WaitForSingleObject(dataReady_, kTick) != WAIT_OBJECT_0) continue;
        std::string text = view_ + sizeof(DWORD);
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        {
            const std::lock_guard lock{mutex_};
            lines_.push_back(std::move(text));
        }
        SetEvent(bufferReady_);
    }
}

std::vector<std::string> DebuggerOutput::lines() {
    const std::lock_guard lock{mutex_};
    return lines_;
}
