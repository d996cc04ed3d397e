// The compiled help file, opened by an independent reader of such files.
#include "tests/support/expected.h"
#include "tests/support/external_program.h"

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

std::set<std::string> topics() {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator{kSources}) {
        if (entry.path().extension() == ".html") names.insert(entry.path().filename().string());
    }
    return names;
}

class HelpFileTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(fixture::hasProgram("extract_chmLib")) << "the package libchm-bin is missing";
        ASSERT_TRUE(fs::exists(VORELLE_HELP_FILE));
        const auto result = fixture::runProgram(
            {"extract_chmLib", VORELLE_HELP_FILE, (folder_.path() / "chm").string()});
        ASSERT_EQ(result.exitCode, 0) << result.errors;
    }

    std::string extracted(const std::string& name) const {
        return contentOf(folder_.path() / "chm" / name);
    }

    fixture::TemporaryFolder folder_;
};

TEST_F(HelpFileTest, HoldsEveryTopicAsItWasWritten) {
    EXPECT_GE(topics().size(), 10u);
    for (const std::string& topic : topics()) {
        EXPECT_EQ(extracted(topic), contentOf(kSources / topic)) << topic;
    }
    EXPECT_FALSE(extracted("help.css").empty());
}

TEST_F(HelpFileTest, ContentsAndIndexLeadToTopicsThatAreThere) {
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

TEST_F(HelpFileTest, LinksLeadToTopicsThatAreThere) {
    const std::regex link{"(?:href|src)=\"([^\"]+)\""};
    for (const std::string& topic : topics()) {
        const std::string text = extracted(topic);
        for (std::sregex_iterator at{text.begin(), text.end(), link}, end; at != end; ++at) {
            EXPECT_FALSE(extracted((*at)[1]).empty()) << topic << " -> " << (*at)[1];
        }
    }
}

TEST_F(HelpFileTest, SaysWhatUsersHaveToKnow) {
    for (const char* sign : {"<code>*</code>", "<code>?</code>", "<code>#</code>", "[!abc]"}) {
        EXPECT_THAT(extracted("find.html"), HasSubstr(sign));
    }
    EXPECT_THAT(extracted("export.html"), HasSubstr("best fit"));
    EXPECT_THAT(extracted("commandline.html"), HasSubstr("-db PATH"));
    EXPECT_THAT(extracted("log.html"), HasSubstr("14 days"));
}

/// Menu entries are told under the names that the program shows.
TEST_F(HelpFileTest, TellsEveryMenuEntryByItsName) {
    const std::string texts = contentOf(fs::path{VORELLE_SOURCE_DIR} / "languages" / "ENU.txt");
    const std::string menus = extracted("menus.html");
    for (const char* number :
         {"1008", "1009", "1010", "1011", "1012", "1024", "1025", "1029", "1031"}) {
        std::smatch found;
        ASSERT_TRUE(
            std::regex_search(texts, found, std::regex{std::string{number} + " \"([^\"]*)\""}));
        const std::string caption = std::regex_replace(found[1].str(), std::regex{"&"}, "");
        EXPECT_THAT(menus, HasSubstr(caption)) << number;
    }
}

}  // namespace
