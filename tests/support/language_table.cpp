#include "tests/support/language_table.h"

#include "engine/jet/text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fixture {
namespace {

const std::filesystem::path kFolder = std::filesystem::path{VORELLE_SOURCE_DIR} / "languages";

[[noreturn]] void refuse(const std::string& line) {
    throw std::runtime_error{"no line of a language table: " + line};
}

bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

void addLine(LanguageTable& table, const std::string& line) {
    constexpr std::size_t kTextBegin = 6;  // behind four digits, a blank and the quote
    if (line.size() <= kTextBegin + 1 || line.back() != '"' || line[4] != ' ' || line[5] != '"') {
        refuse(line);
    }
    const std::string digits = line.substr(0, 4);
    const std::string utf8 = line.substr(kTextBegin, line.size() - kTextBegin - 1);
    // No control characters, so no byte order mark, tabs or carriage returns either.
    const auto plain = [](char c) {
        return c != '"' && c != '\\' && static_cast<unsigned char>(c) >= ' ';
    };
    if (digits.find_first_not_of("0123456789") != std::string::npos ||
        !std::all_of(utf8.begin(), utf8.end(), plain)) {
        refuse(line);
    }
    const auto number = static_cast<unsigned>(std::stoul(digits));
    const std::u16string text = jet::toUtf16(utf8);
    if (jet::toUtf8(text) != utf8) refuse(line);
    if (!table.empty() && table.rbegin()->first >= number) refuse(line);
    table.emplace(number, text);
}

}  // namespace

std::vector<std::string> languageCodes() {
    std::vector<std::string> codes;
    for (const auto& entry : std::filesystem::directory_iterator{kFolder}) {
        if (entry.path().extension() == ".txt" && entry.path().stem() != "CMakeLists") {
            codes.push_back(entry.path().stem().string());
        }
    }
    std::sort(codes.begin(), codes.end());
    return codes;
}

LanguageTable parseLanguageTable(std::string_view content) {
    LanguageTable table;
    while (!content.empty()) {
        const std::size_t end = content.find('\n');
        if (end == std::string_view::npos) refuse(std::string{content});
        addLine(table, std::string{content.substr(0, end)});
        content.remove_prefix(end + 1);
    }
    return table;
}

std::string withoutNames(std::string_view content) {
    constexpr std::string_view kMark = " // ";
    std::string table;
    while (!content.empty()) {
        const std::string_view line = content.substr(0, content.find('\n'));
        const std::size_t mark = line.rfind(kMark);
        if (mark == std::string_view::npos || line.size() == content.size()) {
            refuse(std::string{line});
        }
        const std::string_view name = line.substr(mark + kMark.size());
        if (name.empty() || !std::all_of(name.begin(), name.end(), isLetter)) {
            refuse(std::string{line});
        }
        table.append(line.substr(0, mark)).append("\n");
        content.remove_prefix(line.size() + 1);
    }
    return table;
}

LanguageTable readLanguageTable(const std::string& code) {
    std::ifstream file{kFolder / (code + ".txt"), std::ios::binary};
    if (!file) throw std::runtime_error{"there is no language table " + code};
    const std::string content{std::istreambuf_iterator<char>{file}, {}};
    return parseLanguageTable(code == "ENU" ? withoutNames(content) : content);
}

}  // namespace fixture
