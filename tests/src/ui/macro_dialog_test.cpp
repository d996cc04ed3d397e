// The dialog of macro traces, with its tree, its tips and what it ticks in the main window.
#include "src/db/trace_filter.h"
#include "tests/src/ui/macro_traces_test.h"

#include <algorithm>

namespace {

using forms::TreeNode;

constexpr std::u16string_view kPopulate = u"[frmMacroTraces]populateMacroTracesTreeview: ";
constexpr std::u16string_view kTip = u"[frmMacroTraces]constructToolTipText: ";

std::u16string diag(const std::u16string& group, const std::vector<std::u16string>& levels) {
    std::u16string text = u"<DIAG GROUP=\"" + group + u"\">";
    for (const auto& level : levels) text += u"<FLAG ID=\"" + level + u"\"/>";
    return text + u"</DIAG>";
}

class MacroDialogTest : public MacroTracesTest {
protected:
    ~MacroDialogTest() override { dialog.destroy(); }

    void show(const MacroRows& macroRows) {
        read(macroRows);
        dialog.load();
    }

    TreeNode& trace(const std::wstring& name) {
        return dialog.treeviewMacroTrace.node(name + L" - about " + name);
    }

    /// As the user's tick does.
    void tick(TreeNode& node, bool checked) {
        node.setChecked(checked);
        dialog.treeviewMacroTrace.onNodeCheck(node);
    }

    /// Puts unique traces into the main window's tree, as after the loading of a file.
    void fillMain(const std::vector<std::pair<std::u16string, int>>& traces) {
        open(makeFile("any.mdb", 10));
        ASSERT_TRUE(waitLoaded());
        UniqueTraces& unique = modDatabase::uniqueTraces();
        unique.clear();
        for (const auto& [component, level] : traces) {
            unique.push_back({false, component, static_cast<std::int16_t>(level),
                              std::u16string{u"P"}, std::u16string{u"S"},
                              component + u"_P_" + toText(level) + u"_S"});
        }
        form.cmdClearAllUniqueTraces.onClick();
    }

    /// Whether the tree's window itself shows a node as ticked.
    bool showsTick(HTREEITEM item) {
        const LRESULT state = ::SendMessageW(form.tvUniqueTraces.hwnd(), TVM_GETITEMSTATE,
                                             reinterpret_cast<WPARAM>(item), TVIS_STATEIMAGEMASK);
        return (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
    }

    HTREEITEM nextItem(UINT relation, HTREEITEM item) {
        return reinterpret_cast<HTREEITEM>(::SendMessageW(
            form.tvUniqueTraces.hwnd(), TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
    }

    /// The ticks of the components as the tree's window shows them: each exactly when all beneath it
    /// are ticked.
    std::vector<bool> componentTicks() {
        std::vector<bool> ticks;
        for (HTREEITEM component = nextItem(TVGN_ROOT, nullptr); component != nullptr;
             component = nextItem(TVGN_NEXT, component)) {
            bool all = true;
            for (HTREEITEM item = nextItem(TVGN_CHILD, component); item != nullptr;
                 item = nextItem(TVGN_NEXT, item)) {
                all = all && showsTick(item);
            }
            EXPECT_EQ(showsTick(component), all) << "component " << ticks.size();
            ticks.push_back(showsTick(component));
        }
        return ticks;
    }

    /// The levels that are ticked in the array; the tree has to agree.
    std::vector<std::u16string> tickedKeys() {
        std::vector<std::u16string> keys;
        const UniqueTraces& unique = modDatabase::uniqueTraces();
        for (std::size_t row = 0; row < unique.size(); ++row) {
            EXPECT_EQ(form.tvUniqueTraces.node(toWide(itemKey(row))).checked(),
                      unique[row].selected);
            if (unique[row].selected) keys.push_back(plainText(unique[row].qrxIndex));
        }
        return keys;
    }

    frmMacroTraces dialog{form.tvUniqueTraces};
};

TEST_F(MacroDialogTest, TakesItsCaptionsFromTheTexts) {
    show({macroRow(u"A", u"t")});
    EXPECT_EQ(dialog.caption(), L"Add Macro Traces to Filter");
    EXPECT_EQ(dialog.cmdAdd.caption(), L"Add Selected Macro Traces");
    EXPECT_EQ(dialog.cmdCancel.caption(), L"Cancel");
}

TEST_F(MacroDialogTest, ShowsGroupsWithTheirTraces) {
    show({u"<GA NAME='A'><DESCRIPTION>all of <b>A</b></DESCRIPTION></GA>", macroRow(u"A", u"t1"),
          macroRow(u"B", u"t2")});
    TreeNode* const a = dialog.treeviewMacroTrace.firstRoot();
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->text(), L"A");
    EXPECT_EQ(a->key(), L"A - all of A");
    EXPECT_EQ(a->tag(), a->key());
    EXPECT_TRUE(a->bold());
    EXPECT_FALSE(a->expanded());
    ASSERT_NE(a->child(), nullptr);
    EXPECT_EQ(a->child()->text(), L"t1");
    EXPECT_EQ(a->child()->key(), L"t1 - about t1");
    EXPECT_EQ(a->child()->tag(), L"");
    ASSERT_NE(a->next(), nullptr);
    EXPECT_EQ(a->next()->key(), L"B");
    EXPECT_TRUE(reports.empty());
}

TEST_F(MacroDialogTest, HiddenGroupsAreHiddenWhateverTheirValue) {
    show({macroRow(u"A", u"t", u"", u" DONTSHOW=\"0\""),
          macroRow(u"B", u"t", u"", u" DONTSHOW=\"1\""),
          macroRow(u"C", u"t", u"", u" DONTSHOW=\"\""), macroRow(u"D", u"t")});
    EXPECT_EQ(dialog.treeviewMacroTrace.nodeCount(), 2);
    EXPECT_EQ(dialog.treeviewMacroTrace.node(0).text(), L"D");
}

TEST_F(MacroDialogTest, AnEmptyTreeIsReported) {
    show({});
    EXPECT_EQ(dialog.treeviewMacroTrace.nodeCount(), 0);
    EXPECT_TRUE(reported(kPopulate, u"Err.Number = 35600 "));
    EXPECT_TRUE(reported(kPopulate, u" Line: "));
}

TEST_F(MacroDialogTest, FaultyTracesAreReportedAndLeftOut) {
    show({u"<GA NAME='A'><TRACE NAME='none'/></GA>", macroRow(u"A", u"t"), macroRow(u"A", u"t"),
          macroRow(u"t - about t", u"x"), macroRow(u"B", u"last")});
    EXPECT_EQ(dialog.treeviewMacroTrace.nodeCount(), 4);
    EXPECT_TRUE(reported(kPopulate, u"Err.Number = 91 "));
    EXPECT_TRUE(reported(kPopulate, u"Err.Number = 35602 "));
    EXPECT_EQ(reports.size(), 3u);
    EXPECT_EQ(trace(L"last").parent()->text(), L"B");
}

TEST_F(MacroDialogTest, TheEleventhFaultEndsTheFilling) {
    MacroRows faulty;
    for (int i = 0; i < 11; ++i) faulty.push_back(u"<GA NAME='A'><TRACE NAME='none'/></GA>");
    faulty.push_back(macroRow(u"B", u"t"));
    show(faulty);
    EXPECT_EQ(dialog.treeviewMacroTrace.nodeCount(), 1);
    EXPECT_TRUE(reported(kPopulate,
                         u"Error count exceeded, forcing exit from "
                         u"[frmMacroTraces]populateMacroTracesTreeview"));
    EXPECT_EQ(reports.size(), 12u);
}

TEST_F(MacroDialogTest, TipsNameTheLevelsOfEachComponent) {
    show({macroRow(u"A", u"t", diag(u"Alpha", {u"1", u"12"}) + diag(u"Beta", {u"3"})),
          macroRow(u"A", u"odd", diag(u"Gamma", {u" 11abc", u"x", u"12.5"}))});
    EXPECT_EQ(trace(L"t").tag(), L"Alpha Levels: 1, 12\r\nBeta Levels: 3");
    EXPECT_EQ(trace(L"odd").tag(), L"Gamma Levels: 11, 0, 12");
    EXPECT_TRUE(reports.empty());
}

TEST_F(MacroDialogTest, FaultsInATipLeaveTheRestOfIt) {
    show({macroRow(u"A", u"noFlag", diag(u"Alpha", {}) + diag(u"Beta", {u"3"})),
          macroRow(u"A", u"big", diag(u"Alpha", {u"99999", u"4"})),
          macroRow(u"A", u"bare", u"<DIAG><FLAG ID='1'/></DIAG><DIAG GROUP='B'><FLAG/></DIAG>"),
          macroRow(u"A", u"it's", diag(u"Alpha", {u"1"}))});
    EXPECT_EQ(trace(L"noFlag").tag(), L"Alpha Levels: \r\nBeta Levels: 3");
    EXPECT_EQ(trace(L"big").tag(), L"Alpha Levels: 4");
    EXPECT_EQ(trace(L"bare").tag(), L"B Levels: ");
    EXPECT_EQ(trace(L"it's").tag(), L"");
    EXPECT_TRUE(reported(kTip, u"Err.Number = 5 "));
    EXPECT_TRUE(reported(kTip, u"Err.Number = 6 "));
    EXPECT_TRUE(reported(kTip, u"Err.Number = 91 "));
    EXPECT_TRUE(reported(kTip, u"single quote"));
}

TEST_F(MacroDialogTest, AGroupsTickIsThatOfItsTraces) {
    show({macroRow(u"A", u"t1"), macroRow(u"A", u"t2"), macroRow(u"B", u"t3")});
    TreeNode& group = dialog.treeviewMacroTrace.node(0);
    tick(group, true);
    EXPECT_TRUE(trace(L"t1").checked() && trace(L"t2").checked());
    EXPECT_FALSE(trace(L"t3").checked());
    EXPECT_TRUE(group.expanded()) << "its traces are scrolled to";
    tick(trace(L"t1"), false);
    EXPECT_TRUE(group.checked()) << "a trace does not change its group";
    tick(group, false);
    EXPECT_FALSE(trace(L"t1").checked() || trace(L"t2").checked());
}

TEST_F(MacroDialogTest, TheTipFollowsThePointer) {
    show({macroRow(u"A", u"t1", diag(u"Alpha", {u"1"})),
          macroRow(u"A", u"t2", diag(u"Beta", {u"2"}))});
    const cTooltip* const tooltip = dialog.tooltip();
    ASSERT_NE(tooltip, nullptr);
    const HWND tipWindow = tooltip->hWnd();
    EXPECT_EQ(tooltip->MaxTipWidth(), 400);
    EXPECT_EQ(tooltip->ToolCount(), 1);
    EXPECT_EQ(tooltip->ToolText(dialog.treeviewMacroTrace), L"Tool1");

    TreeNode& group = dialog.treeviewMacroTrace.node(0);
    group.setExpanded(true);
    const int height =
        static_cast<int>(::SendMessageW(dialog.treeviewMacroTrace.hwnd(), TVM_GETITEMHEIGHT, 0, 0));
    const auto moveToRow = [&](int row) {
        ::SendMessageW(dialog.treeviewMacroTrace.hwnd(), WM_MOUSEMOVE, 0,
                       MAKELPARAM(60, height * row + height / 2));
        return tooltip->ToolText(dialog.treeviewMacroTrace);
    };
    EXPECT_EQ(moveToRow(0), L"A");
    EXPECT_EQ(moveToRow(1), L"Alpha Levels: 1");
    EXPECT_EQ(moveToRow(2), L"Beta Levels: 2");
    EXPECT_EQ(moveToRow(7), L"Beta Levels: 2") << "below the last node nothing changes";

    dialog.unload();
    EXPECT_EQ(dialog.tooltip(), nullptr);
    EXPECT_FALSE(::IsWindow(tipWindow));
}

TEST_F(MacroDialogTest, ALevelTicksEveryKeyThatHoldsItsDigits) {
    fillMain({{u"Alpha", 2}, {u"Alpha", 12}, {u"Alpha", 3}, {u"Beta", 2}, {u"Alpha2", 5}});
    show({macroRow(u"A", u"t", diag(u"Alpha", {u"2"}))});
    tick(trace(L"t"), true);
    dialog.cmdAdd.onClick();
    const std::vector<std::u16string> expected{u"Alpha_P_2_S", u"Alpha_P_12_S"};
    EXPECT_EQ(tickedKeys(), expected);
    EXPECT_FALSE(dialog.isLoaded());
    EXPECT_TRUE(reports.empty());
}

// Also before the tree is made anew.
TEST_F(MacroDialogTest, AComponentIsTickedAsSoonAsAllItsTracesAre) {
    fillMain({{u"Alpha", 2}, {u"Alpha", 12}, {u"Beta", 2}, {u"Beta", 3}});
    show({macroRow(u"A", u"t", diag(u"Alpha", {u"2"}) + diag(u"Beta", {u"2"})),
          macroRow(u"A", u"u", diag(u"Beta", {u"3"}))});
    EXPECT_EQ(componentTicks(), (std::vector<bool>{false, false}));
    tick(trace(L"t"), true);
    dialog.cmdAdd.onClick();
    EXPECT_EQ(componentTicks(), (std::vector<bool>{true, false}));
    EXPECT_TRUE(form.tvUniqueTraces.firstRoot()->checked());
    dialog.load();
    tick(trace(L"u"), true);
    dialog.cmdAdd.onClick();
    EXPECT_EQ(componentTicks(), (std::vector<bool>{true, true}));
    form.cmdApplyFilter.onClick();
    EXPECT_EQ(componentTicks(), (std::vector<bool>{true, true})) << "made anew it is the same";
}

TEST_F(MacroDialogTest, UnknownComponentsAreSkippedAndCaseIsIgnored) {
    fillMain({{u"ALPHA", 2}, {u"Beta\u00c4", 7}, {u"Beta\u00c4", 8}});
    show({macroRow(u"A", u"t",
                   diag(u"Nowhere", {u"2"}) + diag(u"alpha", {u"2"}) +
                       diag(u"BETA\u00e4", {u"99999", u"8"}))});
    tick(trace(L"t"), true);
    reports.clear();
    dialog.cmdAdd.onClick();
    const std::vector<std::u16string> expected{u"ALPHA_P_2_S", u"Beta\u00c4_P_8_S"};
    EXPECT_EQ(tickedKeys(), expected);
    EXPECT_EQ(reports.size(), 1u) << "the level beyond 16 bits";
}

TEST_F(MacroDialogTest, TicksAddUpAndUntickedTracesDoNothing) {
    fillMain({{u"Alpha", 2}, {u"Alpha", 5}, {u"Beta", 7}});
    modDatabase::uniqueTraces()[2].selected = true;
    form.tvUniqueTraces.node(L"Item:2").setChecked(true);
    show({macroRow(u"A", u"t", diag(u"Alpha", {u"2"})),
          macroRow(u"A", u"u", diag(u"Alpha", {u"5"})),
          macroRow(u"A", u"it's", diag(u"Alpha", {u"5"}))});
    tick(trace(L"t"), true);
    tick(trace(L"it's"), true);
    dialog.cmdAdd.onClick();
    const std::vector<std::u16string> expected{u"Alpha_P_2_S", u"Beta_P_7_S"};
    EXPECT_EQ(tickedKeys(), expected);
    EXPECT_TRUE(reported(u"[frmMacroTraces]applyCheckedMacroTraces: ", u"single quote"));
}

TEST_F(MacroDialogTest, EnterAddsAndEscapeCancels) {
    fillMain({{u"Alpha", 2}});
    const MacroRows rows{macroRow(u"A", u"t", diag(u"Alpha", {u"2"}))};
    const auto press = [this](int key) {
        dialog.show();
        dialog.treeviewMacroTrace.setFocus();
        tick(trace(L"t"), true);
        MSG message{};
        message.hwnd = dialog.treeviewMacroTrace.hwnd();
        message.message = WM_KEYDOWN;
        message.wParam = static_cast<WPARAM>(key);
        forms::dispatchMessage(message);
    };
    read(rows);
    press(VK_ESCAPE);
    EXPECT_FALSE(dialog.isLoaded());
    EXPECT_TRUE(tickedKeys().empty());
    press(VK_RETURN);
    EXPECT_FALSE(dialog.isLoaded());
    EXPECT_EQ(tickedKeys(), std::vector<std::u16string>{u"Alpha_P_2_S"});
}

TEST_F(MacroDialogTest, CancelChangesNothing) {
    fillMain({{u"Alpha", 2}, {u"Alpha", 5}});
    show({macroRow(u"A", u"t", diag(u"Alpha", {u"2"}))});
    tick(dialog.treeviewMacroTrace.node(0), true);
    dialog.cmdCancel.onClick();
    EXPECT_TRUE(tickedKeys().empty());
    EXPECT_FALSE(dialog.isLoaded());
    dialog.load();
    EXPECT_FALSE(trace(L"t").checked()) << "no tick survives";
}

TEST_F(MacroDialogTest, TheMainWindowsButtonShowsItModally) {
    open(makeFile("a.mdb", 2000));
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(form.cmdAddMacroTraceToFilter.caption(), L"Add Macro Trace to Filter");
    form.cmdClearAllUniqueTraces.onClick();
    bool seen = false;
    forms::post([&] {
        for (forms::Form* const loaded : forms::loadedForms()) {
            auto* const shown = dynamic_cast<frmMacroTraces*>(loaded);
            if (shown == nullptr) continue;
            seen = true;
            EXPECT_TRUE(shown->isModal());
            EXPECT_FALSE(::IsWindowEnabled(form.hwnd()));
            TreeNode& calls = shown->treeviewMacroTrace.node(0);
            EXPECT_EQ(calls.text(), L"Calls");
            calls.setChecked(true);
            shown->treeviewMacroTrace.onNodeCheck(calls);
            shown->cmdAdd.onClick();
            return;
        }
    });
    form.cmdAddMacroTraceToFilter.onClick();
    ASSERT_TRUE(seen);
    EXPECT_FALSE(tickedKeys().empty());
    const std::vector<bool> components = componentTicks();
    form.cmdApplyFilter.onClick();
    ASSERT_TRUE(waitLoaded());
    EXPECT_EQ(componentTicks(), components);
    EXPECT_GT(rows().recordCount(), 0);
    EXPECT_LT(rows().recordCount(), 2000);
}

TEST_F(MacroDialogTest, TheSampleFilesMacroTracesAreShownAndApplied) {
    const auto samples = fixture::testDataFolder();
    if (!samples) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    for (const auto& entry : std::filesystem::directory_iterator{*samples}) {
        if (entry.path().extension() != ".mdb") continue;
        modDatabase::connectToDB(entry.path().u16string());
        modDatabase::openMacroTraces();
        reports.clear();
        dialog.load();
        const bool empty = entry.path().stem() == "old-empty";
        EXPECT_EQ(dialog.treeviewMacroTrace.nodeCount() == 0, empty) << entry.path();
        for (int i = 0; i < dialog.treeviewMacroTrace.nodeCount(); ++i) {
            dialog.treeviewMacroTrace.node(i).setChecked(true);
        }
        dialog.cmdAdd.onClick();
        EXPECT_FALSE(dialog.isLoaded());
        if (entry.path().stem() == "old-odd") {
            dialog.load();
            EXPECT_NE(dialog.treeviewMacroTrace.find(L"After The Faults"), nullptr);
            EXPECT_EQ(dialog.treeviewMacroTrace.find(L"Hidden First"), nullptr);
            dialog.unload();
        }
    }
}

}  // namespace
