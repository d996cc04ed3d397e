#include "tests/layers/include_rules.h"

#include <algorithm>
#include <cctype>

namespace layers {

const std::vector<Rule>& rules() {
    static const std::vector<Rule> table{
        {"engine/jet/format/", {"engine/jet/format/"}, true},
        {"engine/jet/", {"engine/jet/", "engine/jet/format/"}, true},
        {"engine/jet/write/", {"engine/jet/write/", "engine/jet/", "engine/jet/format/"}, true},
        {"engine/jet/check/", {"engine/jet/check/", "engine/jet/", "engine/jet/format/"}, true},
        {"engine/sql/values/", {"engine/sql/values/", "engine/jet/", "engine/jet/format/"}, true},
        {"engine/sql/like/",
         {"engine/sql/like/", "engine/sql/values/", "engine/jet/", "engine/jet/format/"},
         true},
        {"engine/sql/parse/",
         {"engine/sql/parse/", "engine/sql/values/", "engine/jet/", "engine/jet/format/",
          "engine/jet/write/"},
         true},
        {"engine/sql/bind/",
         {"engine/sql/bind/", "engine/sql/parse/", "engine/sql/like/", "engine/sql/values/",
          "engine/jet/", "engine/jet/format/"},
         true},
        {"engine/sql/run/",
         {"engine/sql/run/", "engine/sql/bind/", "engine/sql/parse/", "engine/sql/values/",
          "engine/jet/", "engine/jet/format/", "engine/jet/write/"},
         true},
        {"engine/ado/", {"engine/ado/", "engine/sql/", "engine/jet/", "engine/jet/format/"}, true},
        {"toolkit/grid/model/", {"toolkit/grid/model/"}, true},
        {"toolkit/forms/", {"toolkit/forms/"}, false},
        {"toolkit/grid/", {"toolkit/grid/", "toolkit/grid/model/", "toolkit/forms/"}, false},
        {"src/services/", {"src/services/"}, true},
        {"src/text/", {"src/text/"}, true},
        {"src/log/", {"src/log/", "src/services/", "src/text/", "engine/ado/"}, true},
        {"src/platform/",
         {"src/platform/", "src/log/", "src/services/", "src/text/", "engine/ado/",
          "toolkit/forms/"},
         false},
        {"src/crash/", {"src/crash/", "src/log/", "src/text/"}, false},
        {"src/i18n/",
         {"src/i18n/", "src/platform/", "src/log/", "src/services/", "src/text/", "toolkit/forms/"},
         false},
        {"src/db/", {"src/db/", "src/log/", "src/services/", "src/text/", "engine/ado/"}, true},
        {"src/search/",
         {"src/search/", "src/db/", "src/i18n/", "src/platform/", "src/log/", "src/text/",
          "engine/ado/", "toolkit/forms/", "resources/"},
         false},
        {"src/ui/filter/", {"src/ui/filter/", "src/db/", "src/text/", "toolkit/forms/"}, false},
        {"src/macros/",
         {"src/macros/", "src/ui/filter/", "src/i18n/", "src/log/", "src/text/", "engine/ado/",
          "toolkit/forms/"},
         false},
        {"src/ui/status/", {"src/ui/status/", "src/i18n/", "src/text/", "toolkit/forms/"}, false},
        {"src/ui/about/",
         {"src/ui/about/", "src/i18n/", "src/platform/", "src/log/", "src/text/", "toolkit/forms/",
          "resources/"},
         false},
        {"src/ui/main/",
         {"src/ui/main/", "src/ui/about/", "src/ui/status/", "src/macros/", "src/ui/filter/",
          "src/search/", "src/db/", "src/i18n/", "src/platform/", "src/log/", "src/text/",
          "engine/ado/", "toolkit/grid/", "toolkit/grid/model/", "toolkit/forms/", "resources/"},
         false},
        {"src/app/",
         {"src/app/", "src/ui/main/", "src/macros/", "src/db/", "src/i18n/", "src/crash/",
          "src/platform/", "src/log/", "src/services/", "src/text/", "engine/ado/",
          "toolkit/forms/"},
         false},
        {"tools/", {"tools/", "engine/"}, false},
    };
    return table;
}

namespace {

const Rule* ruleOf(std::string_view path) {
    const Rule* found = nullptr;
    for (const Rule& rule : rules()) {
        if (!path.starts_with(rule.folder)) continue;
        if (found == nullptr || rule.folder.size() > found->folder.size()) found = &rule;
    }
    return found;
}

std::string_view withoutLeadingBlanks(std::string_view line) {
    const auto start = line.find_first_not_of(" \t");
    return start == std::string_view::npos ? std::string_view{} : line.substr(start);
}

/// What stands after #include, delimiters and all; empty on any other line.
std::string_view includedName(std::string_view line) {
    line = withoutLeadingBlanks(line);
    if (!line.starts_with('#')) return {};
    line = withoutLeadingBlanks(line.substr(1));
    constexpr std::string_view kInclude = "include";
    if (!line.starts_with(kInclude)) return {};
    line = withoutLeadingBlanks(line.substr(kInclude.size()));
    if (line.empty()) return {};
    const char closing = line.front() == '<' ? '>' : '"';
    return line.substr(0, line.find(closing, 1) + 1);
}

std::string lowerCase(std::string_view text) {
    std::string lower{text};
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
        return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    });
    return lower;
}

bool isWindowsHeader(std::string_view name) {
    static const std::vector<std::string_view> headers{
        "windows.h", "windef.h",   "winbase.h",  "winuser.h", "wingdi.h",
        "winnt.h",   "winsock2.h", "commctrl.h", "oleauto.h", "shlobj.h"};
    const std::string bare = lowerCase(name.substr(1, name.size() - 2));
    return std::find(headers.begin(), headers.end(), bare) != headers.end();
}

bool hasRule(std::string_view folder) {
    return std::any_of(rules().begin(), rules().end(),
                       [folder](const Rule& rule) { return rule.folder == folder; });
}

bool isAllowed(const Rule& rule, std::string_view name) {
    const std::string_view bare = name.substr(1, name.size() - 2);
    const Rule* const ofHeader = ruleOf(bare);
    const auto covers = [&](std::string_view folder) {
        return hasRule(folder) ? ofHeader != nullptr && ofHeader->folder == folder
                               : bare.starts_with(folder);
    };
    return bare.find("..") == std::string_view::npos &&
           std::any_of(rule.mayInclude.begin(), rule.mayInclude.end(), covers);
}

/// Empty if the file may include `name`, else the reason why not.
std::string objection(const Rule& rule, std::string_view path, std::string_view name) {
    if (name.front() == '"' && !isAllowed(rule, name)) {
        return "is not among the layers that " + std::string{rule.folder} + " may use";
    }
    if (rule.portable && isWindowsHeader(name) && !path.ends_with("_windows.cpp")) {
        return "belongs to files named *_windows.cpp here";
    }
    return {};
}

}  // namespace

std::vector<std::string> crossings(std::string_view path, std::string_view text) {
    const Rule* rule = ruleOf(path);
    if (rule == nullptr) return {std::string{path} + ": no layer is known for this folder"};

    std::vector<std::string> found;
    for (std::size_t line = 1; !text.empty(); ++line) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view name = includedName(text.substr(0, end));
        const std::string reason = name.size() < 3 ? "" : objection(*rule, path, name);
        if (!reason.empty()) {
            found.push_back(std::string{path} + ":" + std::to_string(line) + ": " +
                            std::string{name} + " " + reason);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return found;
}

}  // namespace layers
