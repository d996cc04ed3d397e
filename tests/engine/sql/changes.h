// What the tests of statements that change a database share.
#pragma once

#include "engine/sql/run/execute.h"
#include "tests/engine/sql/people.h"
#include "tests/support/expected.h"
#include "tests/support/external_program.h"

#include <optional>

namespace sqltest {

using Lines = std::vector<std::string>;

inline std::uint64_t run(const std::shared_ptr<jet::Database>& database, std::u16string_view text) {
    return sql::execute(*database, text);
}

/// The file as it is for those who have it open, byte by byte.
inline fixture::ByteVector contentOf(const jet::Database& database) {
    fixture::ByteVector content(static_cast<std::size_t>(database.storage().size()));
    if (database.storage().readAt(0, content) != content.size()) {
        throw std::runtime_error{"the file is shorter than it says"};
    }
    return content;
}

/// Another look at the committed file.
inline std::shared_ptr<jet::Database> reopened(const std::shared_ptr<jet::Database>& database) {
    database->commit();
    return jet::Database::open(std::make_unique<jet::MemoryStorage>(contentOf(*database)));
}

/// The failure of the dialect that the statement meets; nothing if it meets none.
inline std::optional<sql::Fault> sqlFault(const std::shared_ptr<jet::Database>& database,
                                          std::u16string_view text) {
    try {
        run(database, text);
    } catch (const sql::Error& error) {
        return error.fault();
    }
    return std::nullopt;
}

/// The failure of the file that the statement meets; nothing if it meets none.
inline std::optional<jet::Fault> jetFault(const std::shared_ptr<jet::Database>& database,
                                          std::u16string_view text) {
    try {
        run(database, text);
    } catch (const jet::Error& error) {
        return error.fault();
    }
    return std::nullopt;
}

/// What mdb-export makes of a table of the committed file: a line a row, fields joined by bars. The
/// caller asks before whether that program is there.
inline Lines secondReading(const std::shared_ptr<jet::Database>& database,
                           const std::string& table) {
    database->commit();
    const fixture::TemporaryFolder folder;
    const std::string file = folder.write("changed.mdb", contentOf(*database)).string();
    const std::string date = "%Y-%m-%d %H:%M:%S";
    const auto result = fixture::runProgram(
        {"mdb-export", "-H", "-Q", "-d", "|", "-0", "NULL", "-D", date, "-T", date, file, table});
    if (result.exitCode != 0 || !result.errors.empty()) return {"failed: " + result.errors};
    Lines lines;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = result.output.find('\n', start)) != std::string::npos;
         start = end + 1) {
        lines.push_back(result.output.substr(start, end - start));
    }
    return lines;
}

inline bool hasSecondReader() { return fixture::hasProgram("mdb-export"); }

}  // namespace sqltest
