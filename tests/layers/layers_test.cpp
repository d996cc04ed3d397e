// The layers of the program: what each folder may include, checked on the sources as they are.
#include "tests/layers/include_rules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace layers {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string contentOf(const fs::path& file) {
    std::ifstream stream{file, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

bool isSource(const fs::path& file) {
    return file.extension() == ".h" || file.extension() == ".cpp" || file.extension() == ".inc";
}

std::vector<fs::path> sourcesUnder(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator{folder}) {
        if (entry.is_regular_file() && isSource(entry.path())) files.push_back(entry.path());
    }
    return files;
}

class Folder : public testing::TestWithParam<const char*> {};

TEST_P(Folder, IncludesOnlyWhatItsLayersMayUse) {
    const fs::path root{VORELLE_SOURCE_DIR};
    const auto files = sourcesUnder(root / GetParam());
    ASSERT_FALSE(files.empty()) << "nothing to check in " << root / GetParam();
    for (const fs::path& file : files) {
        const std::string path = file.lexically_relative(root).generic_string();
        for (const std::string& crossing : crossings(path, contentOf(file))) {
            ADD_FAILURE() << crossing;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Layers, Folder, testing::Values("engine", "toolkit", "src", "tools"),
                         [](const auto& folder) { return std::string{folder.param}; });

TEST(SourcesUnder, FindsTheFilesThatAreChecked) {
    const auto files = sourcesUnder(fs::path{VORELLE_SOURCE_DIR} / "engine");
    EXPECT_THAT(files,
                testing::Contains(fs::path{VORELLE_SOURCE_DIR} / "engine/jet/format/types.h"));
}

/// Whether a rule that names `used` allows to include what is in `folder`, which has a rule.
bool covers(std::string_view used, std::string_view folder) {
    const bool hasRule = std::any_of(rules().begin(), rules().end(),
                                     [used](const Rule& rule) { return rule.folder == used; });
    return hasRule ? folder == used : folder.starts_with(used);
}

TEST(Rules, LeadDownwardsOnly) {
    for (auto rule = rules().begin(); rule != rules().end(); ++rule) {
        for (const std::string_view used : rule->mayInclude) {
            if (used == rule->folder) continue;
            for (auto other = rule; other != rules().end(); ++other) {
                EXPECT_FALSE(covers(used, other->folder))
                    << rule->folder << " may include " << used << ", which is not below it";
            }
        }
    }
}

TEST(Rules, EachHasItsFolder) {
    for (const Rule& rule : rules()) {
        const fs::path folder = fs::path{VORELLE_SOURCE_DIR} / rule.folder;
        EXPECT_TRUE(fs::is_directory(folder)) << rule.folder;
    }
}

TEST(Crossings, NamesFileLineAndHeader) {
    const char* text =
        "#include \"engine/jet/x.h\"\n"
        "\n"
        "#include \"engine/sql/query.h\"\n";
    EXPECT_THAT(crossings("engine/jet/x.cpp", text),
                ElementsAre(HasSubstr("engine/jet/x.cpp:3: \"engine/sql/query.h\"")));
}

struct Example {
    const char* path;
    const char* include;
};

class Wrong : public testing::TestWithParam<Example> {};

TEST_P(Wrong, IsReported) {
    EXPECT_EQ(crossings(GetParam().path, GetParam().include).size(), 1U) << GetParam().include;
}

INSTANTIATE_TEST_SUITE_P(
    Crossings, Wrong,
    testing::Values(Example{"engine/jet/format/a.h", "#include \"engine/jet/bytes.h\""},
                    Example{"engine/jet/a.cpp", "#include \"engine/jet/write/schema.h\""},
                    Example{"engine/jet/a.cpp", "#include \"engine/jet/check/check.h\""},
                    Example{"engine/jet/write/a.cpp", "#include \"engine/jet/check/check.h\""},
                    Example{"engine/jet/check/a.cpp", "#include \"engine/jet/write/schema.h\""},
                    Example{"engine/sql/run/a.cpp", "#include \"engine/jet/check/check.h\""},
                    Example{"engine/ado/a.cpp", "#include \"engine/jet/write/schema.h\""},
                    Example{"engine/jet/a.cpp", "#include \"engine/ado/recordset.h\""},
                    Example{"engine/sql/run/a.cpp", "#include \"engine/ado/recordset.h\""},
                    Example{"engine/sql/values/a.cpp", "#include \"engine/sql/like/like.h\""},
                    Example{"engine/sql/values/a.cpp", "#include \"engine/sql/parse/ast.h\""},
                    Example{"engine/sql/like/a.cpp", "#include \"engine/sql/parse/ast.h\""},
                    Example{"engine/sql/parse/a.h", "#include \"engine/sql/bind/plan.h\""},
                    Example{"engine/sql/parse/a.h", "#include \"engine/sql/run/query.h\""},
                    Example{"engine/sql/bind/a.cpp", "#include \"engine/sql/run/query.h\""},
                    Example{"engine/sql/run/a.cpp", "#include \"engine/sql/like/like.h\""},
                    Example{"engine/ado/a.cpp", "#include \"toolkit/forms/form.h\""},
                    Example{"engine/ado/a.cpp", "#include \"src/db/modDatabase.h\""},
                    Example{"toolkit/forms/a.h", "#include \"toolkit/grid/grid.h\""},
                    Example{"toolkit/grid/model/a.h", "#include \"toolkit/forms/form.h\""},
                    Example{"toolkit/grid/model/a.h", "#include \"toolkit/grid/grid.h\""},
                    Example{"toolkit/grid/a.cpp", "#include \"engine/ado/recordset.h\""},
                    Example{"src/db/a.cpp", "#include \"engine/sql/query.h\""},
                    Example{"src/db/a.cpp", "#include \"engine/jet/types.h\""},
                    Example{"tools/a.cpp", "#include \"toolkit/forms/form.h\""},
                    Example{"src/db/a.cpp", "#include \"tests/support/page_file.h\""},
                    Example{"src/text/a.cpp", "#include \"src/log/class_log.h\""},
                    Example{"src/log/a.cpp", "#include \"src/platform/program.h\""},
                    Example{"src/platform/a.cpp", "#include \"src/i18n/mod_localize.h\""},
                    Example{"src/i18n/a.cpp", "#include \"src/db/mod_database.h\""},
                    Example{"src/db/a.cpp", "#include \"src/search/trace_search.h\""},
                    Example{"src/db/a.cpp", "#include \"toolkit/forms/form.h\""},
                    Example{"src/db/a.cpp", "#include <windows.h>"},
                    Example{"src/macros/a.cpp", "#include \"src/ui/main/frm_main.h\""},
                    Example{"src/ui/main/a.cpp", "#include \"src/app/mod_main.h\""},
                    Example{"src/a.cpp", ""},
                    // The layer must show in the name.
                    Example{"engine/jet/a.cpp", "#include \"types.h\""},
                    Example{"engine/jet/a.cpp", "#include \"engine/jet/../sql/query.h\""},
                    // Other ways to write it.
                    Example{"engine/jet/a.cpp", "  #  include\t\"engine/sql/query.h\"  // why"},
                    Example{"engine/jet/a.cpp", "#include \"engine/sql/query.h\"\r\n"},
                    // Windows in portable folders.
                    Example{"engine/jet/a.cpp", "#include <windows.h>"},
                    Example{"engine/jet/storage_windows.h", "#include <windows.h>"},
                    Example{"engine/ado/a.cpp", "#include <Windows.h>"},
                    Example{"toolkit/grid/model/a.cpp", "#include <commctrl.h>"},
                    // A folder without a layer.
                    Example{"engine/new/a.cpp", ""}));

class Right : public testing::TestWithParam<Example> {};

TEST_P(Right, IsNotReported) {
    EXPECT_THAT(crossings(GetParam().path, GetParam().include), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Crossings, Right,
    testing::Values(Example{"engine/jet/a.cpp", "#include \"engine/jet/types.h\"\n#include <map>"},
                    Example{"engine/jet/a.cpp", "#include \"engine/jet/format/page.h\""},
                    Example{"engine/jet/write/a.cpp", "#include \"engine/jet/pager.h\""},
                    Example{"engine/jet/check/a.cpp", "#include \"engine/jet/format/page.h\""},
                    Example{"engine/sql/values/a.cpp", "#include \"engine/jet/types.h\""},
                    Example{"engine/sql/run/a.cpp", "#include \"engine/jet/write/schema.h\""},
                    Example{"engine/sql/bind/a.cpp", "#include \"engine/sql/like/like.h\""},
                    Example{"engine/sql/run/a.cpp", "#include \"engine/sql/parse/ast.h\""},
                    Example{"engine/ado/a.cpp", "#include \"engine/jet/types.h\""},
                    Example{"engine/jet/storage_windows.cpp", "#include <windows.h>"},
                    Example{"toolkit/grid/a.cpp", "#include \"toolkit/grid/model/rows.h\""},
                    Example{"toolkit/grid/a.cpp", "#include \"toolkit/forms/form.h\""},
                    Example{"toolkit/forms/a.cpp", "#include <windows.h>"},
                    Example{"src/db/a.cpp", "#include \"engine/ado/recordset.h\""},
                    Example{"src/ui/main/a.cpp", "#include \"toolkit/grid/grid.h\""},
                    Example{"tools/a.cpp", "#include \"engine/jet/database.h\""},
                    Example{"engine/jet/a.cpp", "// #include \"engine/sql/query.h\""},
                    Example{"engine/jet/a.cpp", "#define include"}));

}  // namespace
}  // namespace layers
