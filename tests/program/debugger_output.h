// What programs of this session send to a debugger, as a debugger hears it.
//
//   DebuggerOutput output;      // listens until the end of the block
//   output.lines();
#pragma once

#include <windows.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class DebuggerOutput {
public:
    DebuggerOutput();
    ~DebuggerOutput();
    DebuggerOutput(const DebuggerOutput&) = delete;
    DebuggerOutput& operator=(const DebuggerOutput&) = delete;

    /// So far, without line ends.
    std::vector<std::string> lines();

private:
    void listen();

    HANDLE bufferReady_;
    HANDLE dataReady_;
    HANDLE mapping_;
    const char* view_;
    std::atomic<bool> ending_ = false;
    std::mutex mutex_;
    std::vector<std::string> lines_;  ///< under mutex_
    std::thread listener_;
};
