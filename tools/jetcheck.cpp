// jetcheck: checks a database file and prints what is wrong with it.
#include "engine/jet/check/check.h"
#include "tools/console.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>
#include <stdexcept>

namespace {

constexpr int kFaulty = 1;
constexpr int kWrongUsage = 2;

constexpr const char* kUsage =
    "usage: jetcheck [--quiet] [--limit N] FILE   check a database file\n"
    "\n"
    "Prints each fault with its page and record, errors first, then warnings, N of each at most\n"
    "(100), then a summary; with --quiet the summary only. Ends with 0 if there is no error.\n";

struct Options {
    std::string file;
    bool quiet = false;
    std::size_t limit = 100;
};

bool parseNumber(const std::string& text, std::size_t& number) {
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc{} && parsed.ptr == end;
}

/// Nothing if the arguments are not understood.
std::optional<Options> parse(const std::vector<std::string>& arguments) {
    Options options;
    bool named = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--quiet") {
            options.quiet = true;
        } else if (argument == "--limit" && i + 1 < arguments.size()) {
            if (!parseNumber(arguments[++i], options.limit)) return std::nullopt;
        } else if (argument.starts_with("--") || named) {
            return std::nullopt;
        } else {
            options.file = argument;
            named = true;
        }
    }
    if (!named) return std::nullopt;
    return options;
}

std::string describe(const jet::Finding& finding) {
    const bool error = finding.severity == jet::Finding::Severity::Error;
    std::string line = error ? "error: page " : "warning: page ";
    line += std::to_string(raw(finding.page));
    if (finding.row) line += ", row " + std::to_string(*finding.row);
    if (!finding.table.empty()) line += ", " + finding.table;
    line += ": ";
    line += nameOf(finding.rule);
    return line + ": " + finding.message;
}

/// One line each; names out of a file may hold anything, also ends of lines.
void printFinding(const jet::Finding& finding) {
    std::string line = describe(finding);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    std::printf("%s\n", line.c_str());
}

void printFindings(const jet::CheckReport& report, jet::Finding::Severity severity,
                   std::uint64_t total, std::size_t limit) {
    std::size_t printed = 0;
    for (const jet::Finding& finding : report.findings) {
        if (finding.severity != severity || printed == limit) continue;
        printFinding(finding);
        ++printed;
    }
    if (printed == total) return;
    const bool error = severity == jet::Finding::Severity::Error;
    std::printf("... and %llu more %s\n", static_cast<unsigned long long>(total - printed),
                error ? "errors" : "warnings");
}

void printSummary(const jet::CheckReport& report) {
    std::printf(
        "%s: %llu errors, %llu warnings; %u pages, %u tables, %llu rows, "
        "%llu long values, %u indexes, %llu entries\n",
        report.sound() ? "sound" : "faulty", static_cast<unsigned long long>(report.errors),
        static_cast<unsigned long long>(report.warnings), report.pages, report.tables,
        static_cast<unsigned long long>(report.rows),
        static_cast<unsigned long long>(report.longValues), report.indexes,
        static_cast<unsigned long long>(report.entries));
}

int run(const Options& options) {
    const std::u8string path{options.file.begin(), options.file.end()};
    const jet::CheckReport report = jet::checkFile(jet::openFile(std::filesystem::path{path}));
    if (!options.quiet) {
        using Severity = jet::Finding::Severity;
        printFindings(report, Severity::Error, report.errors, options.limit);
        printFindings(report, Severity::Warning, report.warnings, options.limit);
    }
    printSummary(report);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error{"The findings could not be written."};
    }
    return report.sound() ? 0 : kFaulty;
}

}  // namespace

int main(int count, char** values) {
    const auto options = parse(plain::arguments(count, values));
    if (!options) {
        std::fputs(kUsage, stderr);
        return kWrongUsage;
    }
    plain::makeOutputBinary();
    try {
        return run(*options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return kFaulty;
    }
}
