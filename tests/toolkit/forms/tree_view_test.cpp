#include "toolkit/forms/tree_view.h"

#include "tests/toolkit/forms/forms_fixture.h"

#include <chrono>

using namespace forms_test;
using forms::TreeError;
using forms::TreeNode;
using forms::TreeView;

namespace {

class TreeViewTest : public FormsTest {
protected:
    TreeViewTest() {
        form.onBuild = [this] {
            form.createControls({{tree, {L"tree", L"", 60_tw, 60_tw, 6000_tw, 4000_tw}}});
        };
        form.show();
        tree.onNodeCheck = [this](TreeNode& node) {
            checks.push_back(node.key() + (node.checked() ? L" on" : L" off"));
        };
    }
    ~TreeViewTest() override { form.destroy(); }

    // component a with three children, component b with one.
    void fill() {
        TreeNode& a = tree.addRoot(L"c-a", L"a Component");
        for (const wchar_t* key : {L"Item:0", L"Item:1", L"Item:2"}) {
            tree.addChild(a, key, std::wstring(key) + L" text").setTag(std::wstring(key) + L" tag");
        }
        TreeNode& b = tree.addRoot(L"c-b", L"b Component");
        tree.addChild(b, L"Item:3", L"text 3");
        a.setExpanded(true);
    }

    HTREEITEM itemOf(TreeNode& node) {
        tree.setSelected(&node);
        return reinterpret_cast<HTREEITEM>(
            ::SendMessageW(tree.hwnd(), TVM_GETNEXTITEM, TVGN_CARET, 0));
    }

    bool boxIsTicked(TreeNode& node) {
        const LRESULT state =
            ::SendMessageW(tree.hwnd(), TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(itemOf(node)),
                           TVIS_STATEIMAGEMASK);
        return (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
    }

    // A point inside the node's check box.
    POINT boxOf(TreeNode& node) {
        RECT rect{};
        *reinterpret_cast<HTREEITEM*>(&rect) = itemOf(node);
        ::SendMessageW(tree.hwnd(), TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&rect));
        const LONG y = (rect.top + rect.bottom) / 2;
        for (LONG x = rect.left; x >= 0; --x) {
            TVHITTESTINFO hit{};
            hit.pt = {x, y};
            ::SendMessageW(tree.hwnd(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
            if (hit.flags & TVHT_ONITEMSTATEICON) return {x - 2, y};
        }
        ADD_FAILURE() << "the node has no check box";
        return {0, 0};
    }

    // As the mouse does it. The place of the click is that of the message, so the pointer has to
    // go there.
    void clickBox(TreeNode& node) {
        const POINT at = boxOf(node);
        POINT screen = at;
        ::ClientToScreen(tree.hwnd(), &screen);
        INPUT input[2] = {};
        ::SetCursorPos(screen.x, screen.y);
        input[0].type = INPUT_MOUSE;
        input[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
        input[1].type = INPUT_MOUSE;
        input[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
        ::SendInput(2, input, sizeof(INPUT));
    }

    PlainForm form;
    forms::TreeView tree{{.checkBoxes = true}};
    std::vector<std::wstring> checks;
};

TEST_F(TreeViewTest, NodesHaveTheirFamily) {
    fill();
    EXPECT_EQ(tree.nodeCount(), 6);
    TreeNode& a = tree.node(L"c-a");
    TreeNode& b = tree.node(L"c-b");
    EXPECT_EQ(tree.firstRoot(), &a);
    EXPECT_EQ(a.next(), &b);
    EXPECT_EQ(b.next(), nullptr);
    EXPECT_EQ(a.parent(), nullptr);
    EXPECT_EQ(a.childCount(), 3);
    std::wstring keys;
    for (TreeNode* child = a.child(); child; child = child->next()) {
        EXPECT_EQ(child->parent(), &a);
        keys += child->key() + L" ";
    }
    EXPECT_EQ(keys, L"Item:0 Item:1 Item:2 ");
    EXPECT_EQ(tree.node(4).key(), L"c-b");
    EXPECT_EQ(tree.node(L"Item:1").tag(), L"Item:1 tag");
    EXPECT_EQ(tree.node(L"Item:1").index(), 2);
}

TEST_F(TreeViewTest, TheControlShowsTheNodesInTheirOrder) {
    fill();
    auto item =
        reinterpret_cast<HTREEITEM>(::SendMessageW(tree.hwnd(), TVM_GETNEXTITEM, TVGN_ROOT, 0));
    std::wstring texts;
    while (item) {
        wchar_t text[100] = L"";
        TVITEMEXW info{};
        info.mask = TVIF_TEXT | TVIF_HANDLE;
        info.hItem = item;
        info.pszText = text;
        info.cchTextMax = 100;
        ::SendMessageW(tree.hwnd(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info));
        texts += std::wstring(text) + L"|";
        item = reinterpret_cast<HTREEITEM>(::SendMessageW(
            tree.hwnd(), TVM_GETNEXTITEM, TVGN_NEXTVISIBLE, reinterpret_cast<LPARAM>(item)));
    }
    EXPECT_EQ(texts, L"a Component|Item:0 text|Item:1 text|Item:2 text|b Component|");
}

TEST_F(TreeViewTest, ATreeMadeAnewCanLookAsBefore) {
    const auto fillWith = [this](int roots) {
        const forms::TreeUpdate update(tree);
        tree.clear();
        for (int i = 0; i < roots; ++i) {
            const std::wstring key = L"c-" + std::to_wstring(i);
            TreeNode& root = tree.addRoot(key, key);
            tree.addChild(root, key + L" first", L"first");
            tree.addChild(root, key + L" second", L"second");
        }
    };
    fillWith(60);
    tree.node(L"c-3").setExpanded(true);
    tree.node(L"c-40").setExpanded(true);
    tree.setSelected(&tree.node(L"c-40 second"));
    const TreeView::View before = tree.view();
    EXPECT_EQ(before.open, (std::vector<std::wstring>{L"c-3", L"c-40"}));
    EXPECT_EQ(before.selected, L"c-40 second");
    EXPECT_NE(before.top, L"c-0");

    {
        const forms::TreeUpdate update(tree);
        fillWith(60);
        EXPECT_FALSE(tree.node(L"c-3").expanded());
        tree.setView(before);
    }
    const auto expectAs = [this](const TreeView::View& wanted) {
        const TreeView::View is = tree.view();
        EXPECT_EQ(is.open, wanted.open);
        EXPECT_EQ(is.selected, wanted.selected);
        EXPECT_EQ(is.top, wanted.top);
    };
    expectAs(before);
    for (const wchar_t* selected : {L"c-20", L"c-3"}) {
        const TreeView::View other{{L"c-3"}, selected, L"c-20"};
        fillWith(60);
        tree.setView(other);
        expectAs(other);
    }

    fillWith(10);
    tree.setView(before);
    EXPECT_EQ(tree.view().open, std::vector<std::wstring>{L"c-3"});
    EXPECT_EQ(tree.selected(), nullptr);
}

TEST_F(TreeViewTest, KeysAreUnique) {
    fill();
    try {
        tree.addRoot(L"Item:2", L"again");
        FAIL();
    } catch (const TreeError& error) {
        EXPECT_EQ(error.number(), 35602);
    }
    try {
        tree.node(L"Item:9");
        FAIL();
    } catch (const TreeError& error) {
        EXPECT_EQ(error.number(), 35601);
    }
    EXPECT_EQ(tree.find(L"Item:9"), nullptr);
    EXPECT_THROW(tree.node(6), TreeError);
    EXPECT_EQ(tree.nodeCount(), 6);
    tree.addRoot(L"", L"no key");
    tree.addRoot(L"", L"no key either");
    EXPECT_EQ(tree.nodeCount(), 8);
}

TEST_F(TreeViewTest, TicksOfTheProgramShowAndRaiseNoEvent) {
    fill();
    TreeNode& node = tree.node(L"Item:1");
    node.setChecked(true);
    EXPECT_TRUE(node.checked());
    EXPECT_TRUE(boxIsTicked(node));
    EXPECT_FALSE(boxIsTicked(tree.node(L"Item:0")));
    node.setChecked(false);
    EXPECT_FALSE(boxIsTicked(node));
    forms::doEvents();
    EXPECT_TRUE(checks.empty());
}

TEST_F(TreeViewTest, TheMouseTicksOnce) {
    fill();
    clickBox(tree.node(L"Item:1"));
    ASSERT_TRUE(waitUntil([this] { return !checks.empty(); }));
    forms::doEvents();
    EXPECT_EQ(checks, std::vector<std::wstring>{L"Item:1 on"});
    EXPECT_TRUE(boxIsTicked(tree.node(L"Item:1")));
    tree.node(L"c-b").setChecked(true);
    clickBox(tree.node(L"c-b"));
    ASSERT_TRUE(waitUntil([this] { return checks.size() > 1; }));
    forms::doEvents();
    EXPECT_EQ(checks, (std::vector<std::wstring>{L"Item:1 on", L"c-b off"}));
}

TEST_F(TreeViewTest, TheSpaceKeyTicksOnce) {
    fill();
    tree.setFocus();
    tree.setSelected(&tree.node(L"c-a"));
    pressKey(VK_SPACE);
    forms::doEvents();
    EXPECT_EQ(checks, std::vector<std::wstring>{L"c-a on"});
    pressKey(VK_SPACE);
    forms::doEvents();
    EXPECT_EQ(checks, (std::vector<std::wstring>{L"c-a on", L"c-a off"}));
    EXPECT_FALSE(boxIsTicked(tree.node(L"c-a")));
}

// Newer versions of the control say themselves that an item changed, besides the click.
TEST_F(TreeViewTest, AReportedChangeIsTakenOnceToo) {
    fill();
    TreeNode& node = tree.node(L"Item:2");
    TVITEMEXW item{};
    item.mask = TVIF_HANDLE | TVIF_STATE;
    item.hItem = itemOf(node);
    item.state = INDEXTOSTATEIMAGEMASK(2);
    item.stateMask = TVIS_STATEIMAGEMASK;
    ::SendMessageW(tree.hwnd(), TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    NMTVITEMCHANGE change{};
    change.hdr = {tree.hwnd(), 0, TVN_ITEMCHANGEDW};
    change.hItem = item.hItem;
    change.uStateOld = INDEXTOSTATEIMAGEMASK(1);
    change.uStateNew = INDEXTOSTATEIMAGEMASK(2);
    ::SendMessageW(form.hwnd(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&change));
    ::SendMessageW(form.hwnd(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&change));
    forms::doEvents();
    EXPECT_EQ(checks, std::vector<std::wstring>{L"Item:2 on"});
}

TEST_F(TreeViewTest, AnEventProcedureCanTickOtherNodes) {
    fill();
    tree.onNodeCheck = [this](TreeNode& node) {
        checks.push_back(node.key());
        for (TreeNode* child = node.child(); child; child = child->next()) {
            child->setChecked(node.checked());
        }
    };
    tree.setFocus();
    tree.setSelected(&tree.node(L"c-a"));
    pressKey(VK_SPACE);
    forms::doEvents();
    EXPECT_EQ(checks, std::vector<std::wstring>{L"c-a"});
    EXPECT_TRUE(tree.node(L"Item:0").checked());
    EXPECT_TRUE(boxIsTicked(tree.node(L"Item:2")));
    EXPECT_FALSE(tree.node(L"Item:3").checked());
}

TEST_F(TreeViewTest, ExpansionAndBoldFollowTheControl) {
    fill();
    TreeNode& b = tree.node(L"c-b");
    EXPECT_FALSE(b.expanded());
    b.setExpanded(true);
    EXPECT_TRUE(b.expanded());
    ::SendMessageW(tree.hwnd(), TVM_EXPAND, TVE_COLLAPSE, reinterpret_cast<LPARAM>(itemOf(b)));
    EXPECT_FALSE(b.expanded());
    b.setBold(true);
    EXPECT_NE(::SendMessageW(tree.hwnd(), TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(itemOf(b)),
                             TVIS_BOLD) &
                  TVIS_BOLD,
              0);
}

TEST_F(TreeViewTest, ANodeExpandedBeforeItHasChildrenOpensWithTheFirst) {
    TreeNode& root = tree.addRoot(L"r", L"root");
    root.setExpanded(true);
    EXPECT_TRUE(root.expanded());
    tree.addChild(root, L"c", L"child");
    EXPECT_TRUE(root.expanded());
}

TEST_F(TreeViewTest, ClearMakesRoomForTheSameKeys) {
    fill();
    tree.clear();
    EXPECT_EQ(tree.nodeCount(), 0);
    EXPECT_EQ(tree.firstRoot(), nullptr);
    EXPECT_EQ(::SendMessageW(tree.hwnd(), TVM_GETCOUNT, 0, 0), 0);
    fill();
    EXPECT_EQ(tree.nodeCount(), 6);
}

TEST_F(TreeViewTest, ATickWhoseNodeIsGoneIsForgotten) {
    fill();
    tree.setFocus();
    tree.setSelected(&tree.node(L"c-a"));
    ::SendMessageW(tree.hwnd(), WM_KEYDOWN, VK_SPACE, 1);
    tree.clear();
    forms::doEvents();
    EXPECT_TRUE(checks.empty());
}

TEST_F(TreeViewTest, HitTestFindsTheNodeUnderThePointer) {
    fill();
    const POINT at = boxOf(tree.node(L"Item:1"));
    const auto twips = [this](LONG pixels) {
        return forms::toTwips(forms::Pixels(static_cast<int>(pixels)), form.dpi());
    };
    EXPECT_EQ(tree.hitTest(twips(at.x), twips(at.y)), &tree.node(L"Item:1"));
    EXPECT_EQ(tree.hitTest(twips(at.x), 3900_tw), nullptr);
}

TEST_F(TreeViewTest, SelectionTellsOfTheNode) {
    fill();
    std::wstring clicked;
    tree.onNodeClick = [&](TreeNode& node) { clicked = node.key(); };
    tree.setSelected(&tree.node(L"c-b"));
    EXPECT_EQ(clicked, L"c-b");
    EXPECT_EQ(tree.selected(), &tree.node(L"c-b"));
}

TEST_F(TreeViewTest, EnsureVisibleScrollsAndOpens) {
    TreeNode& root = tree.addRoot(L"r", L"root");
    for (int i = 0; i < 200; ++i) tree.addChild(root, std::to_wstring(i), L"child");
    TreeNode& last = tree.node(L"199");
    last.ensureVisible();
    EXPECT_TRUE(root.expanded());
    RECT rect{};
    *reinterpret_cast<HTREEITEM*>(&rect) = itemOf(last);
    EXPECT_TRUE(
        ::SendMessageW(tree.hwnd(), TVM_GETITEMRECT, FALSE, reinterpret_cast<LPARAM>(&rect)));
}

TEST_F(TreeViewTest, AnUpdateOfAHiddenTreeLeavesItHidden) {
    tree.setVisible(false);
    {
        const forms::TreeUpdate update(tree);
        fill();
    }
    EXPECT_FALSE(::IsWindowVisible(tree.hwnd()));
    tree.setVisible(true);
    EXPECT_TRUE(::IsWindowVisible(tree.hwnd()));
}

TEST_F(TreeViewTest, AnotherDensityBringsBiggerBoxes) {
    fill();
    const RECT suggested{0, 0, 800, 600};
    ::SendMessageW(form.hwnd(), WM_DPICHANGED, MAKEWPARAM(192, 192),
                   reinterpret_cast<LPARAM>(&suggested));
    const auto images =
        reinterpret_cast<HIMAGELIST>(::SendMessageW(tree.hwnd(), TVM_GETIMAGELIST, TVSIL_STATE, 0));
    int width = 0;
    int height = 0;
    ImageList_GetIconSize(images, &width, &height);
    EXPECT_EQ(width, 32);
    EXPECT_EQ(ImageList_GetImageCount(images), 3);
}

TEST_F(TreeViewTest, TenThousandNodes) {
    using Clock = std::chrono::steady_clock;
    const auto milliseconds = [](Clock::time_point since) {
        return static_cast<int>(
            std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since).count());
    };
    auto start = Clock::now();
    {
        const forms::TreeUpdate update(tree);
        int row = 0;
        for (int c = 0; c < 100; ++c) {
            TreeNode& component = tree.addRoot(L"c-" + std::to_wstring(c), L"Component");
            for (int i = 0; i < 99; ++i) {
                tree.addChild(component, L"Item:" + std::to_wstring(row++), L"MsgSvc Process");
            }
        }
    }
    RecordProperty("add_ms", milliseconds(start));
    start = Clock::now();
    {
        const forms::TreeUpdate update(tree);
        for (int i = 0; i < tree.nodeCount(); ++i) tree.node(i).setChecked(true);
    }
    RecordProperty("tick_ms", milliseconds(start));
    start = Clock::now();
    {
        const forms::TreeUpdate update(tree);
        for (int i = 0; i < tree.nodeCount(); ++i) tree.node(i).setExpanded(true);
    }
    RecordProperty("expand_ms", milliseconds(start));
    start = Clock::now();
    tree.refresh();
    RecordProperty("paint_ms", milliseconds(start));
    start = Clock::now();
    tree.clear();
    RecordProperty("clear_ms", milliseconds(start));
    EXPECT_EQ(::SendMessageW(tree.hwnd(), TVM_GETCOUNT, 0, 0), 0);
}

}  // namespace
