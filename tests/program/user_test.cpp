// What a user does with keys and mouse in the real program, held against what jetsql says of the same
// file.
#include "tests/program/hands.h"
#include "tests/program/running_viewer.h"
#include "tests/program/tools.h"
#include "tests/support/accessible_client.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

constexpr const wchar_t* kFindDialogClass = L"VorelleDiagnosticViewer.dlgFind";
constexpr const wchar_t* kMacroDialogClass = L"VorelleDiagnosticViewer.frmMacroTraces";
constexpr int kRows = 3000;

const std::wstring kTraceColumns =
    L"SELECT Date, Process, Source, TraceNumber, Component, TraceLevel, Port, CallId, Trace FROM "
    L"tblTraces ";

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// Without the cases of ASCII letters.
bool contains(const std::string& text, const std::string& wanted) {
    const auto same = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    };
    return std::search(text.begin(), text.end(), wanted.begin(), wanted.end(), same) != text.end();
}

class UserTest : public testing::Test {
protected:
    OleSession ole_;

    void SetUp() override {
        folder_ = std::make_unique<ViewerFolder>();
        database_ = folder_->path() / "lines.mdb";
        makeTraces(database_, kRows);
        viewer_ =
            std::make_unique<RunningViewer>(*folder_, L"-db \"" + database_.wstring() + L"\"");
        ASSERT_TRUE(window_ = viewer_->waitForWindow());
        ASSERT_TRUE(sorted(1));
        ASSERT_TRUE(hands::front(window_));
        errorsAtStart_ = count("Err.Number");  // there is no server on this machine
    }

    /// Whether the load is complete and the order by a column has been set so many times.
    bool sorted(int times) {
        return eventually(
            [&] { return count("Exiting tdbgridData_HeadClick_0") >= times && isIdle(); });
    }

    int count(const std::string& text) const {
        const std::string log = folder_->log();
        int found = 0;
        for (std::size_t at = 0; (at = log.find(text, at)) != std::string::npos; ++at) ++found;
        return found;
    }

    bool isIdle() const { return hands::panel(window_, 1).empty(); }

    bool showsLine(std::size_t line, std::size_t of = kRows) const {
        const std::wstring text =
            L"  Line " + std::to_wstring(line) + L" of " + std::to_wstring(of) + L"  ";
        const bool shown = eventually([&] { return hands::panel(window_, 3) == text; });
        if (!shown) {
            ADD_FAILURE() << "line " << line << " of " << of << " is not the current one";
        }
        return shown;
    }

    bool saysNotFound(const std::wstring& text) const {
        return eventually([&] { return hands::panel(window_, 1) == text + L" not found."; });
    }

    void clickFirstHeading() const {
        const HWND lines = control(L"DataGrid");
        const RECT heading = AccessibleClient{lines}.child(1).location(1);
        POINT middle{(heading.left + heading.right) / 2, (heading.top + heading.bottom) / 2};
        ScreenToClient(lines, &middle);
        hands::click(lines, middle);
    }

    HWND control(const wchar_t* className, const wchar_t* text = nullptr) const {
        return hands::child(window_, className, text);
    }

    void showTab(int index) const {
        const HWND tabs = control(WC_TABCONTROLW);
        // Both tabs stand at the left end of the strip.
        RECT area{};
        GetClientRect(tabs, &area);
        hands::click(tabs, {index == 0 ? 30 : 120, 10});
        ASSERT_TRUE(eventually(
            [&] { return IsWindowVisible(control(WC_BUTTONW, L"Apply Filter")) == (index == 1); }));
    }

    /// Exports with the keys alone; what the file holds when it is complete.
    std::string exported(const std::filesystem::path& path) const {
        hands::front(window_);
        hands::press('E', {VK_CONTROL});
        const HWND dialog = viewer_->waitForWindow(kDialogClass);
        if (dialog == nullptr || !hands::front(dialog)) return "no dialog";
        const HWND name = hands::child(dialog, WC_EDITW);
        if (!eventually([&] { return textOf(name) == L"Diagnostics.txt"; })) return "no name";
        hands::press('A', {VK_CONTROL});
        hands::type(path.wstring());
        if (!eventually([&] { return textOf(name) == path.wstring(); })) return "not typed";
        hands::press(VK_RETURN);
        const std::wstring done = L"Export complete (" + path.wstring() + L")";
        if (!eventually([&] { return hands::panel(window_, 1) == done; })) return "not complete";
        return contentOf(path);
    }

    /// A WHERE clause for the ticks in the tree of unique traces.
    std::wstring clauseOfTicks() const {
        const HWND tree = control(WC_TREEVIEWW);
        std::wstring clause;
        for (const hands::TreeItem& root : hands::roots(tree)) {
            const std::wstring component =
                root.text.substr(0, root.text.size() - std::wstring{L" Component"}.size());
            for (const hands::TreeItem& item : hands::children(tree, root.handle)) {
                if (!item.ticked) continue;
                clause += clause.empty() ? L"WHERE " : L" OR ";
                clause += L"qrxIndex = '" + component + L'_' +
                          between(item.text, L"", L" Process") + L'_' +
                          between(item.text, L"Level: ", L" ") + L'_' +
                          between(item.text, L"Source: ", L"\n") + L'\'';
            }
        }
        return clause;
    }

    static std::wstring between(const std::wstring& text, const std::wstring& before,
                                const std::wstring& behind) {
        const std::size_t begin = text.find(before) + before.size();
        return text.substr(begin, text.find(behind, begin) - begin);
    }

    bool apply() const {
        const int before = count("Exiting tdbgridData_HeadClick_0");
        hands::click(control(WC_BUTTONW, L"Apply Filter"));
        return eventually(
            [&] { return count("Exiting tdbgridData_HeadClick_0") > before && isIdle(); });
    }

    std::unique_ptr<ViewerFolder> folder_;
    std::unique_ptr<RunningViewer> viewer_;
    std::filesystem::path database_;
    HWND window_ = nullptr;
    int errorsAtStart_ = 0;
};

TEST_F(UserTest, FindsDownwardsAndUpwardsWithTheKeys) {
    std::vector<std::size_t> hits;
    const fixture::PlainTable lines =
        jetsqlAnswer(database_, L"SELECT Trace FROM tblTraces ORDER BY Date");
    for (std::size_t i = 0; i < lines.rows.size(); ++i) {
        if (contains(lines.rows[i][0].value_or(""), "rEtRy 3")) hits.push_back(i + 1);
    }
    ASSERT_GT(hits.size(), 4u);

    hands::press('F', {VK_CONTROL});
    const HWND dialog = viewer_->waitForWindow(kFindDialogClass);
    ASSERT_TRUE(dialog);
    ASSERT_TRUE(hands::front(dialog));
    hands::type(L"rEtRy 3");
    for (int i = 0; i < 3; ++i) {
        hands::press(VK_RETURN);
        ASSERT_TRUE(showsLine(hits[static_cast<std::size_t>(i)]));
    }
    // The focus is where the text is, and what is typed takes the old one's place.
    hands::type(L"no such text");
    hands::press(VK_RETURN);
    ASSERT_TRUE(saysNotFound(L"no such text"));
    hands::type(L"rEtRy 3");
    hands::press('U', {VK_MENU});
    for (int i = 1; i >= 0; --i) {
        hands::press(VK_RETURN);
        ASSERT_TRUE(showsLine(hits[static_cast<std::size_t>(i)]));
    }
    hands::press(VK_RETURN);
    ASSERT_TRUE(saysNotFound(L"rEtRy 3"));
    EXPECT_TRUE(showsLine(hits[0]));

    // F3 in the main window searches downwards, whatever the dialog says.
    hands::press(VK_ESCAPE);
    ASSERT_TRUE(eventually([&] { return !IsWindowVisible(dialog); }));
    ASSERT_TRUE(hands::front(window_));
    hands::press(VK_F3);
    EXPECT_TRUE(showsLine(hits[1]));
    EXPECT_EQ(count("Err.Number"), errorsAtStart_);
}

TEST_F(UserTest, AFilteredAndSortedSetIsExportedAsJetsqlAnswersIt) {
    showTab(1);
    const HWND tree = control(WC_TREEVIEWW);
    hands::click(control(WC_BUTTONW, L"Clear All"));
    ASSERT_TRUE(eventually([&] { return clauseOfTicks().empty(); }));
    const auto roots = hands::roots(tree);
    ASSERT_GT(roots.size(), 6u);
    for (const std::size_t which : {1u, 3u, 5u}) {
        hands::clickBox(tree, roots[which].handle);
        ASSERT_TRUE(eventually([&] { return hands::lookAt(tree, roots[which].handle).ticked; }));
    }
    ASSERT_TRUE(apply());
    showTab(0);
    const int before = count("Exiting tdbgridData_HeadClick_0");
    // The first heading is the date's, by which the lines are sorted already: they turn round.
    clickFirstHeading();
    ASSERT_TRUE(sorted(before + 1));

    fixture::PlainTable answer =
        jetsqlAnswer(database_, kTraceColumns + clauseOfTicks() + L" ORDER BY Date");
    ASSERT_GT(answer.rows.size(), 100u);
    ASSERT_LT(answer.rows.size(), static_cast<std::size_t>(kRows));
    std::reverse(answer.rows.begin(), answer.rows.end());
    EXPECT_EQ(exported(folder_->path() / L"out \u00E9.txt"), asExported(answer));
    EXPECT_TRUE(showsLine(1, answer.rows.size()));
    EXPECT_EQ(count("Err.Number"), errorsAtStart_);
}

TEST_F(UserTest, MacroTracesAndAClearedComponentFilterAsJetsqlDoes) {
    showTab(1);
    const HWND tree = control(WC_TREEVIEWW);
    hands::click(control(WC_BUTTONW, L"Clear All"));
    ASSERT_TRUE(eventually([&] { return clauseOfTicks().empty(); }));

    hands::click(control(WC_BUTTONW, L"Add Macro Trace to Filter"));
    const HWND dialog = viewer_->waitForWindow(kMacroDialogClass);
    ASSERT_TRUE(dialog);
    ASSERT_TRUE(hands::front(dialog));
    const HWND macros = hands::child(dialog, WC_TREEVIEWW);
    int ticked = 0;
    for (const hands::TreeItem& group : hands::roots(macros)) {
        if (group.text == L"Everything" || ticked == 2) continue;
        const auto traces = hands::children(macros, group.handle);
        if (traces.empty()) continue;
        hands::clickBox(macros, traces[0].handle);
        ASSERT_TRUE(eventually([&] { return hands::lookAt(macros, traces[0].handle).ticked; }));
        ++ticked;
    }
    ASSERT_EQ(ticked, 2);
    hands::click(hands::child(dialog, WC_BUTTONW, L"Add Selected Macro Traces"));
    ASSERT_TRUE(eventually([&] { return !IsWindow(dialog); }));
    const std::wstring withMacros = clauseOfTicks();
    ASSERT_FALSE(withMacros.empty());

    // One of the components that have ticks now: its box makes it full, if need be, and then empty.
    ASSERT_TRUE(hands::front(window_));
    hands::TreeItem cleared;
    for (const hands::TreeItem& root : hands::roots(tree)) {
        const auto items = hands::children(tree, root.handle);
        const bool some = std::any_of(items.begin(), items.end(),
                                      [](const hands::TreeItem& item) { return item.ticked; });
        if (some && cleared.handle == nullptr) cleared = root;
    }
    ASSERT_NE(cleared.handle, nullptr);
    hands::clickText(tree, cleared.handle);
    if (!cleared.ticked) {
        hands::press(VK_SPACE);
        ASSERT_TRUE(eventually([&] { return hands::lookAt(tree, cleared.handle).ticked; }));
    }
    hands::press(VK_SPACE);
    ASSERT_TRUE(eventually([&] { return !hands::lookAt(tree, cleared.handle).ticked; }));
    ASSERT_TRUE(eventually([&] {
        const auto items = hands::children(tree, cleared.handle);
        return std::none_of(items.begin(), items.end(),
                            [](const hands::TreeItem& item) { return item.ticked; });
    }));
    const std::wstring clause = clauseOfTicks();
    ASSERT_FALSE(clause.empty());
    ASSERT_LT(clause.size(), withMacros.size());
    ASSERT_TRUE(apply());

    const fixture::PlainTable answer =
        jetsqlAnswer(database_, kTraceColumns + clause + L" ORDER BY Date");
    ASSERT_GT(answer.rows.size(), 0u);
    ASSERT_LT(answer.rows.size(), static_cast<std::size_t>(kRows));
    const fixture::PlainTable number =
        jetsqlAnswer(database_, L"SELECT COUNT(*) FROM tblTraces " + clause);
    EXPECT_EQ(number.rows.at(0).at(0), std::to_string(answer.rows.size()));
    showTab(0);
    EXPECT_TRUE(showsLine(1, answer.rows.size()));
    EXPECT_EQ(exported(folder_->path() / "out.txt"), asExported(answer));
    EXPECT_THAT(folder_->log(), testing::HasSubstr("WHERE  ( qrxIndex = '"));
    // The group Messages has two traces of one name, which a tree cannot hold.
    EXPECT_EQ(count("Err.Number"), errorsAtStart_ + 1);
    EXPECT_THAT(folder_->logLines(), testing::Contains(testing::ContainsRegex(
                                         "populateMacroTracesTreeview. +Err.Number = 35602 ")));
}

}  // namespace
