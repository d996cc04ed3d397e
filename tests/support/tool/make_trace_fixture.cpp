// Writes a trace database of made-up lines.
//
//   make_trace_fixture FILE [--rows N] [--seed S] [--format older|newer|oldest] [--text-length L]
#include "tests/support/trace_database.h"

#include <chrono>
#include <iostream>
#include <stdexcept>

namespace {

constexpr const char* kUsage =
    "usage: make_trace_fixture FILE [--rows N] [--seed S] [--format older|newer|oldest]\n"
    "                          [--text-length L]\n";

struct Request {
    std::filesystem::path file;
    fixture::TraceOptions options{.rows = 10000};
    fixture::TraceFormat format = fixture::TraceFormat::Older;
};

fixture::TraceFormat parseFormat(std::string_view name) {
    if (name == "older") return fixture::TraceFormat::Older;
    if (name == "newer") return fixture::TraceFormat::Newer;
    if (name == "oldest") return fixture::TraceFormat::Oldest;
    throw std::invalid_argument{"--format takes older, newer or oldest"};
}

Request parse(const std::vector<std::string>& arguments) {
    if (arguments.empty() || arguments.size() % 2 == 0) throw std::invalid_argument{kUsage};
    Request request{.file = arguments[0]};
    for (std::size_t i = 1; i < arguments.size(); i += 2) {
        const std::string& value = arguments[i + 1];
        if (arguments[i] == "--rows") {
            request.options.rows = std::stoull(value);
        } else if (arguments[i] == "--seed") {
            request.options.seed = std::stoull(value);
        } else if (arguments[i] == "--format") {
            request.format = parseFormat(value);
        } else if (arguments[i] == "--text-length") {
            request.options.textLength = std::stoul(value);
        } else {
            throw std::invalid_argument{kUsage};
        }
    }
    return request;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const Request request = parse({argv + 1, argv + argc});
        const auto start = std::chrono::steady_clock::now();
        fixture::writeTraceDatabase(request.file, request.options, request.format);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        std::cout << request.options.rows << " rows, " << std::filesystem::file_size(request.file)
                  << " bytes, " << taken.count() << " s\n";
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
