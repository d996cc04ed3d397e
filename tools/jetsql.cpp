// jetsql: runs statements on a database file and prints the rows of a SELECT in the plain form, and
// of any other statement how many rows it changed.
#include "engine/ado/constants.h"
#include "engine/ado/error.h"
#include "engine/jet/text.h"
#include "engine/sql/run/execute.h"
#include "engine/sql/run/query.h"
#include "tools/console.h"
#include "tools/listing.h"
#include "tools/plain_form.h"
#include "tools/table_dump.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>
#include <thread>

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;
constexpr int kDamaged = 3;

constexpr const char* kUsage =
    "usage: jetsql [--threads N] FILE SQL...   run statements; print the rows of a SELECT, and of\n"
    "                                          others how many rows they changed\n"
    "       jetsql FILE                        list the tables and count their rows\n"
    "       jetsql --schema FILE               print columns and indexes\n"
    "       --verbose                          name everything that cannot be read\n";

struct Options {
    std::string file;
    std::vector<std::string> statements;
    bool schema = false;
    bool verbose = false;
    unsigned threads = std::max(1u, std::thread::hardware_concurrency());
};

/// Nothing if the arguments are not understood.
std::optional<Options> parse(const std::vector<std::string>& arguments) {
    Options options;
    std::vector<std::string> plain;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--schema") {
            options.schema = true;
        } else if (argument == "--verbose") {
            options.verbose = true;
        } else if (argument == "--threads" && i + 1 < arguments.size()) {
            const std::string& count = arguments[++i];
            const char* const end = count.data() + count.size();
            const auto parsed = std::from_chars(count.data(), end, options.threads);
            if (parsed.ec != std::errc{} || parsed.ptr != end) return std::nullopt;
            if (options.threads < 1 || options.threads > 256) return std::nullopt;
        } else if (argument.starts_with("--")) {
            return std::nullopt;
        } else {
            plain.push_back(argument);
        }
    }
    if (plain.empty() || (options.schema && plain.size() > 1)) return std::nullopt;
    options.file = plain[0];
    options.statements.assign(plain.begin() + 1, plain.end());
    return options;
}

void printHeader(const sql::Query& query) {
    std::string line;
    plain::FieldWriter fields{line};
    for (const sql::OutputColumn& column : query.columns()) {
        if (!line.empty()) line += '\t';
        fields.text(column.name);
    }
    plain::writeAll(line + "\n", stdout);
}

jet::Losses printRows(sql::Cursor& cursor) {
    constexpr std::size_t kFull = std::size_t{1} << 20;
    std::string text;
    plain::FieldWriter fields{text};
    while (cursor.next()) {
        const char* separator = "";
        for (const jet::Value& value : cursor.row()) {
            text += separator;
            fields.value(value);
            separator = "\t";
        }
        text += '\n';
        if (text.size() < kFull) continue;
        plain::writeAll(text, stdout);
        text.clear();
    }
    plain::writeAll(text, stdout);
    return cursor.losses();
}

/// Every statement is done by itself: one that fails takes none of those before it back.
jet::Losses runStatement(const std::shared_ptr<jet::Database>& database, const std::string& text,
                         const Options& options) {
    const sql::Statement statement = sql::parseStatement(jet::toUtf16(text));
    const auto* const select = std::get_if<sql::SelectStatement>(&statement);
    if (select == nullptr) {
        const std::uint64_t rows = sql::execute(*database, statement);
        database->commit();
        plain::writeAll(std::to_string(rows) + " rows affected\n", stdout);
        return {};
    }
    const auto query = sql::Query::prepare(database, *select);
    printHeader(*query);
    if (query->scannedTable()) return plain::dumpRows(*query, options.threads, stdout);
    return printRows(*query->execute());
}

jet::Losses runStatements(const std::shared_ptr<jet::Database>& database, const Options& options) {
    jet::Losses all;
    for (const std::string& text : options.statements) all += runStatement(database, text, options);
    return all;
}

/// Names losses as they are met, by whatever thread.
void nameLosses(jet::Database& database) {
    database.setLossListener(
        [](const jet::Loss& loss) { std::fprintf(stderr, "%s\n", jet::toText(loss).c_str()); });
}

/// One line of what is lost, one for each hint that has not been named yet.
void tell(const jet::Losses& losses, bool hintsAreTold) {
    for (const jet::Loss& loss : losses.reasons) {
        const bool hint = loss.kind == jet::Loss::Kind::Hints;
        if (hint && !hintsAreTold) std::fprintf(stderr, "%s\n", jet::toText(loss).c_str());
    }
    if (!losses.any()) return;
    std::fprintf(stderr, "damage: %s could not be read\n", losses.summary().c_str());
}

/// What became of a change that was cut short: it decides which rows there are.
void tell(const jet::Recovery& recovery) {
    if (recovery.pagesPutBack != 0) {
        std::fprintf(stderr, "journal: an interrupted change has been taken back, pages: %u\n",
                     recovery.pagesPutBack);
    }
    if (recovery.pagesLaidOver != 0) {
        std::fprintf(stderr, "journal: read as before an interrupted change, pages: %u\n",
                     recovery.pagesLaidOver);
    }
    if (!recovery.obstacle.empty())
        std::fprintf(stderr, "journal: %s\n", recovery.obstacle.c_str());
}

int run(const Options& options) {
    const std::u8string path{options.file.begin(), options.file.end()};
    const auto database = jet::Database::open(std::filesystem::path{path});
    tell(database->recovery());
    if (options.verbose) nameLosses(*database);
    jet::Losses losses;
    if (options.schema) {
        losses = plain::listSchema(*database, stdout);
    } else if (!options.statements.empty()) {
        losses = runStatements(database, options);
    } else {
        losses = plain::listTables(*database, stdout);
    }
    if (std::fflush(stdout) != 0) plain::writeAll("\n", stdout);
    plain::flush(stdout);
    losses += database->losses();
    tell(losses, options.verbose);
    return losses.any() || database->recovery().incomplete ? kDamaged : 0;
}

/// Failures go by the numbers that a data provider gives them.
int report(std::int32_t number, const char* text) {
    std::fflush(stdout);
    std::fprintf(stderr, "error %d (0x%08X): %s\n", number, static_cast<std::uint32_t>(number),
                 text);
    return kFailed;
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
    } catch (const sql::Error& error) {
        return report(ado::toError(error).number(), error.what());
    } catch (const jet::Error& error) {
        return report(ado::toError(error, options->file).number(), error.what());
    } catch (const std::exception& error) {
        return report(ado::kErrorFile, error.what());
    }
}
