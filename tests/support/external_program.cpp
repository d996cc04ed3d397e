#include "tests/support/external_program.h"

#include <stdexcept>

#ifdef _WIN32

namespace fixture {

bool hasProgram(std::string_view) { return false; }

ProgramResult runProgram(const std::vector<std::string>&, std::chrono::seconds) {
    throw std::runtime_error{"no other programs are run under Windows"};
}

}  // namespace fixture

#else

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>

namespace fixture {

namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
    Pipe() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error{"no pipe"};
    }
    ~Pipe() {
        closeEnd(0);
        closeEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void closeEnd(std::size_t end) {
        if (ends[end] >= 0) close(ends[end]);
        ends[end] = -1;
    }

    std::array<int, 2> ends{-1, -1};  ///< to read from, to write to
};

pid_t start(const std::vector<std::string>& arguments, const Pipe& output, const Pipe& errors) {
    std::vector<char*> raw;
    raw.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        raw.push_back(const_cast<char*>(argument.c_str()));
    raw.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output.ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.ends[1], STDERR_FILENO);
    pid_t child = -1;
    const int failed = posix_spawnp(&child, raw[0], &actions, nullptr, raw.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) throw std::runtime_error{"cannot start " + arguments.front()};
    return child;
}

/// Appends what there is to read; closes the pipe at its end.
void drain(Pipe& pipe, short events, std::string& text) {
    if (events == 0) return;
    std::array<char, 65536> buffer;
    const ssize_t count = read(pipe.ends[0], buffer.data(), buffer.size());
    if (count > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    } else {
        pipe.closeEnd(0);
    }
}

int millisecondsUntil(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, left.count()));
}

std::chrono::milliseconds milliseconds(const timeval& time) {
    return std::chrono::milliseconds{time.tv_sec * 1000 + time.tv_usec / 1000};
}

}  // namespace

bool hasProgram(std::string_view name) {
    const char* const path = std::getenv("PATH");
    std::string_view rest = path != nullptr ? path : "";
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const std::string file = std::string{rest.substr(0, end)}.append("/").append(name);
        if (access(file.c_str(), X_OK) == 0) return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}

ProgramResult runProgram(const std::vector<std::string>& arguments, std::chrono::seconds limit) {
    Pipe output;
    Pipe errors;
    const Clock::time_point deadline = Clock::now() + limit;
    const pid_t child = start(arguments, output, errors);
    output.closeEnd(1);
    errors.closeEnd(1);

    ProgramResult result;
    while (output.ends[0] >= 0 || errors.ends[0] >= 0) {
        std::array<pollfd, 2> waits{pollfd{output.ends[0], POLLIN, 0},
                                    pollfd{errors.ends[0], POLLIN, 0}};
        if (poll(waits.data(), waits.size(), millisecondsUntil(deadline)) == 0) {
            result.timedOut = true;
            kill(child, SIGKILL);
            break;
        }
        drain(output, waits[0].revents, result.output);
        drain(errors, waits[1].revents, result.errors);
    }
    int status = 0;
    rusage used{};
    wait4(child, &status, 0, &used);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    result.processorTime = milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
    result.peakMemory = static_cast<std::size_t>(used.ru_maxrss) * 1024;
    return result;
}

}  // namespace fixture

#endif
