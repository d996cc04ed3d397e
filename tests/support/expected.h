// Expected results from the folder of test databases, in their plain form: UTF-8, a row of column
// names, then a line per row, fields divided by tabs.
//
//   const auto folder = fixture::testDataFolder();
//   if (!folder) GTEST_SKIP() << fixture::kNoTestData;
//   const fixture::PlainTable expected = fixture::readPlainTable(*folder / "old-basic.traces.tsv");
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fixture {

/// Null is nullopt.
using PlainRow = std::vector<std::optional<std::string>>;

struct PlainTable {
    std::vector<std::string> columns;
    std::vector<PlainRow> rows;
};

/// `\N` alone is Null; `\\`, `\t`, `\r` and `\n` stand for the characters.
/// Throws std::runtime_error for anything else behind a backslash or a row of another width.
PlainTable parsePlainTable(std::string_view content);

/// Throws std::runtime_error if the file cannot be read.
PlainTable readPlainTable(const std::filesystem::path& path);

/// The value in the plain form, without the escape marks.
std::string toPlainField(const std::optional<std::string>& value);

/// The folder named by the environment variable VORELLE_TESTDATA, or the one beside the checkout.
/// Nothing if it is not there.
std::optional<std::filesystem::path> testDataFolder();

inline constexpr const char* kNoTestData =
    "the test databases are not there; set VORELLE_TESTDATA to their folder";

/// A folder of its own for one test; removed with all it holds.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// Writes a file in the folder and returns its path.
    std::filesystem::path write(std::string_view name,
                                const std::vector<std::uint8_t>& bytes) const;

    /// Copies a file into the folder, to be changed there, and returns the copy's path.
    std::filesystem::path copy(const std::filesystem::path& file) const;

private:
    std::filesystem::path path_;
};

}  // namespace fixture
