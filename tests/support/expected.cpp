#include "tests/support/expected.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace fixture {

namespace {

char unescaped(char mark) {
    switch (mark) {
        case '\\':
            return '\\';
        case 't':
            return '\t';
        case 'r':
            return '\r';
        case 'n':
            return '\n';
        default:
            throw std::runtime_error{"an unknown escape in a plain table"};
    }
}

std::optional<std::string> parseField(std::string_view field) {
    if (field == "\\N") return std::nullopt;
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool escape = field[i] == '\\' && i + 1 < field.size();
        text.push_back(escape ? unescaped(field[++i]) : field[i]);
    }
    return text;
}

/// Takes the part before the next `separator` off the front of `rest`.
std::string_view takeUntil(std::string_view& rest, char separator) {
    const std::size_t end = rest.find(separator);
    const std::string_view part = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return part;
}

PlainRow parseLine(std::string_view line) {
    PlainRow row;
    const std::size_t fields =
        1 + static_cast<std::size_t>(std::count(line.begin(), line.end(), '\t'));
    for (std::size_t i = 0; i < fields; ++i) row.push_back(parseField(takeUntil(line, '\t')));
    return row;
}

}  // namespace

PlainTable parsePlainTable(std::string_view content) {
    PlainTable table;
    for (auto& name : parseLine(takeUntil(content, '\n')))
        table.columns.push_back(name.value_or(""));
    while (!content.empty()) {
        table.rows.push_back(parseLine(takeUntil(content, '\n')));
        if (table.rows.back().size() != table.columns.size()) {
            throw std::runtime_error{"a row of a plain table has another width"};
        }
    }
    return table;
}

PlainTable readPlainTable(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    if (!file) throw std::runtime_error{"cannot read " + path.string()};
    const std::string content{std::istreambuf_iterator<char>{file}, {}};
    return parsePlainTable(content);
}

std::string toPlainField(const std::optional<std::string>& value) {
    if (!value) return "\\N";
    std::string text;
    for (const char c : *value) {
        switch (c) {
            case '\\':
                text += "\\\\";
                break;
            case '\t':
                text += "\\t";
                break;
            case '\r':
                text += "\\r";
                break;
            case '\n':
                text += "\\n";
                break;
            default:
                text += c;
        }
    }
    return text;
}

std::optional<std::filesystem::path> testDataFolder() {
    const char* const named = std::getenv("VORELLE_TESTDATA");
    const std::filesystem::path folder =
        named != nullptr ? std::filesystem::path{named}
                         : std::filesystem::path{VORELLE_SOURCE_DIR} / "../shared/testdata";
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored)) return std::nullopt;
    return folder;
}

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    path_ = std::filesystem::temp_directory_path() /
            ("vorelle-test-" + std::to_string(random()) + "-" + std::to_string(random()));
    std::filesystem::create_directories(path_);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryFolder::write(std::string_view name,
                                             const std::vector<std::uint8_t>& bytes) const {
    std::filesystem::path file = path_ / name;
    std::ofstream stream{file, std::ios::binary};
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) throw std::runtime_error{"cannot write " + file.string()};
    return file;
}

std::filesystem::path TemporaryFolder::copy(const std::filesystem::path& file) const {
    std::filesystem::path target = path_ / file.filename();
    std::filesystem::remove(target);
    std::filesystem::copy_file(file, target);
    std::filesystem::permissions(target, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
    return target;
}

}  // namespace fixture
