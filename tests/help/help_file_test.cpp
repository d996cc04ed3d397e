// The compiled help files, one a language, opened by an independent reader of such files.
#include "engine/jet/text.h"
#include "tests/support/expected.h"
#include "tests/support/external_program.h"
#include "tests/support/language_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const fs::path kSources = fs::path{VORELLE_SOURCE_DIR} / "help";

std::string contentOf(const fs::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

struct HelpLanguage {
    std::string code;
    std::string charset;   ///< as pages name it
    std::string codePage;  ///< as the converter names it
};

class HelpFileTest : public testing::TestWithParam<HelpLanguage> {
protected:
    void SetUp() override {
        ASSERT_TRUE(fixture::hasProgram("extract_chmLib")) << "the package libchm-bin is missing";
        const fs::path file =
            fs::path{VORELLE_HELP_FOLDER} / ("VorelleDiagnosticViewer_" + GetParam().code + ".chm");
        ASSERT_TRUE(fs::exists(file));
        const auto result = fixture::runProgram(
            {"extract_chmLib", file.string(), (folder_.path() / "chm").string()});
        ASSERT_EQ(result.exitCode, 0) << result.errors;
    }

    fs::path sources() const { return kSources / GetParam().code; }

    std::set<std::string> topics() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator{sources()}) {
            if (entry.path().extension() == ".html") names.insert(entry.path().filename().string());
        }
        return names;
    }

    /// As it is in the compiled file.
    std::string stored(const std::string& name) const {
        return contentOf(folder_.path() / "chm" / name);
    }

    /// The same in UTF-8.
    std::string extracted(const std::string& name) const {
        const auto result = fixture::runProgram({"iconv", "-f", GetParam().codePage, "-t", "UTF-8",
                                                 (folder_.path() / "chm" / name).string()});
        EXPECT_EQ(result.exitCode, 0) << name << ": " << result.errors;
        return result.output;
    }

    fixture::TemporaryFolder folder_;
};

TEST_P(HelpFileTest, HoldsEveryTopicAsItWasWritten) {
    EXPECT_GE(topics().size(), 10u);
    const std::string charset = "charset=" + GetParam().charset + "\"";
    for (const std::string& topic : topics()) {
        const std::string page = extracted(topic);
        EXPECT_THAT(page, HasSubstr(charset)) << topic;
        EXPECT_EQ(std::regex_replace(page, std::regex{charset}, "charset=utf-8\""),
                  contentOf(sources() / topic))
            << topic;
    }
    EXPECT_FALSE(stored("help.css").empty());
}

TEST_P(HelpFileTest, HasTheTopicsOfTheEnglishOne) {
    std::set<std::string> english;
    for (const auto& entry : fs::directory_iterator{kSources / "ENU"}) {
        if (entry.path().extension() == ".html") english.insert(entry.path().filename().string());
    }
    EXPECT_EQ(topics(), english);
}

TEST_P(HelpFileTest, ContentsAndIndexLeadToTopicsThatAreThere) {
    const std::regex local{"name=\"Local\" value=\"([^\"]+)\""};
    const std::set<std::string> known = topics();
    for (const char* list : {"contents.hhc", "index.hhk"}) {
        const std::string text = extracted(list);
        std::set<std::string> named;
        for (std::sregex_iterator at{text.begin(), text.end(), local}, end; at != end; ++at) {
            named.insert((*at)[1]);
        }
        EXPECT_EQ(named, known) << list;
    }
}

TEST_P(HelpFileTest, TheContentsNameTopicsByTheirTitles) {
    const std::string contents = extracted("contents.hhc");
    for (const std::string& topic : topics()) {
        const std::string page = extracted(topic);
        std::smatch title;
        ASSERT_TRUE(std::regex_search(page, title, std::regex{"<title>(.+)</title>"})) << topic;
        EXPECT_THAT(contents, HasSubstr("\"" + title[1].str() +
                                        "\">\n<param name=\"Local\" value=\"" + topic + "\""))
            << topic;
        EXPECT_THAT(page, HasSubstr("<h1>" + title[1].str() + "</h1>")) << topic;
    }
}

TEST_P(HelpFileTest, LinksLeadToTopicsThatAreThere) {
    const std::regex link{"(?:href|src)=\"([^\"]+)\""};
    for (const std::string& topic : topics()) {
        const std::string text = extracted(topic);
        for (std::sregex_iterator at{text.begin(), text.end(), link}, end; at != end; ++at) {
            EXPECT_FALSE(stored((*at)[1]).empty()) << topic << " -> " << (*at)[1];
        }
    }
}

TEST_P(HelpFileTest, SaysWhatUsersHaveToKnow) {
    for (const char* sign : {"<code>*</code>", "<code>?</code>", "<code>#</code>", "[!abc]"}) {
        EXPECT_THAT(extracted("find.html"), HasSubstr(sign));
    }
    EXPECT_THAT(extracted("export.html"), HasSubstr("best fit"));
    EXPECT_THAT(extracted("commandline.html"), HasSubstr("-db PATH"));
    EXPECT_THAT(extracted("log.html"), HasSubstr("14 "));
    EXPECT_THAT(extracted("menus.html"), HasSubstr("QRXbrandingres_"));
}

/// Without the mark of the underlined letter, which some languages put behind in parentheses.
std::string shownCaption(const std::u16string& text) {
    static const std::regex mark{"\\(&[A-Z]\\)|&"};
    return std::regex_replace(jet::toUtf8(text), mark, "");
}

/// Menu entries and buttons are told under the names that the program shows.
TEST_P(HelpFileTest, TellsEveryMenuEntryByItsName) {
    const fixture::LanguageTable texts = fixture::readLanguageTable(GetParam().code);
    const std::string menus = extracted("menus.html");
    for (const unsigned id :
         {1008u, 1009u, 1010u, 1011u, 1012u, 1013u, 1019u, 1024u, 1025u, 1029u, 1031u}) {
        EXPECT_THAT(menus, HasSubstr(shownCaption(texts.at(id)))) << id;
    }
    const std::string filters = extracted("filters.html");
    for (const unsigned id : {1014u, 1017u, 1021u, 1039u}) {
        EXPECT_THAT(filters, HasSubstr(shownCaption(texts.at(id)))) << id;
    }
    const std::string macros = extracted("macrotraces.html");
    for (const unsigned id : {1016u, 1018u}) {
        EXPECT_THAT(macros, HasSubstr(shownCaption(texts.at(id)))) << id;
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, HelpFileTest,
                         testing::Values(HelpLanguage{"ENU", "windows-1252", "CP1252"},
                                         HelpLanguage{"DEU", "windows-1252", "CP1252"},
                                         HelpLanguage{"JPN", "shift_jis", "CP932"}),
                         [](const auto& test) { return test.param.code; });

}  // namespace
