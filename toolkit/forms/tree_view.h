// TreeView: a tree of nodes that are found by key, with check boxes if wanted.
//
//   forms::TreeView tvUniqueTraces{{.checkBoxes = true}};
//   forms::TreeNode& component = tvUniqueTraces.addRoot(L"c-Notifier", L"Notifier Component");
//   tvUniqueTraces.addChild(component, L"Item:0", text).setChecked(true);
//   tvUniqueTraces.onNodeCheck = [this](forms::TreeNode& node) { tvUniqueTraces_NodeCheck(node); };
//
// Nodes belong to the tree; references are valid until clear. Use a TreeUpdate to add or change
// many nodes: the tree is then drawn once, at its end.
//
// onNodeCheck is raised once for each tick by the user, with mouse or keyboard, after the control
// has processed it; ticks set by the program raise no event. The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

#include <windows.h>
#include <commctrl.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace forms {

class TreeView;

/// A key that is not in the tree, or is in it already. The numbers are the customary ones.
class TreeError : public std::runtime_error {
public:
    static constexpr int kIndexOutOfBounds = 35600;
    static constexpr int kElementNotFound = 35601;
    static constexpr int kKeyNotUnique = 35602;

    TreeError(int number, const char* description)
        : std::runtime_error(description), number_(number) {}

    int number() const { return number_; }

private:
    int number_;
};

class TreeNode {
public:
    TreeNode(const TreeNode&) = delete;
    TreeNode& operator=(const TreeNode&) = delete;

    const std::wstring& key() const { return key_; }
    /// From 0, in the order of adding.
    int index() const { return index_; }

    const std::wstring& text() const { return text_; }
    void setText(const std::wstring& text);
    /// Free for the form's use.
    const std::wstring& tag() const { return tag_; }
    void setTag(const std::wstring& tag) { tag_ = tag; }

    bool checked() const { return checked_; }
    void setChecked(bool checked);
    bool bold() const { return bold_; }
    void setBold(bool bold);
    /// A node without children will be expanded as soon as it has some.
    bool expanded() const;
    void setExpanded(bool expanded);

    /// Null at the top, at a node without children, at the last of its siblings.
    TreeNode* parent() const { return parent_; }
    TreeNode* child() const { return firstChild_; }
    TreeNode* next() const { return next_; }
    int childCount() const { return childCount_; }

    /// Expands the nodes above and scrolls.
    void ensureVisible();

private:
    friend class TreeView;
    TreeNode(TreeView& tree, const std::wstring& key, const std::wstring& text, int index)
        : tree_(tree), key_(key), text_(text), index_(index) {}

    TreeView& tree_;
    std::wstring key_;
    std::wstring text_;
    std::wstring tag_;
    int index_;
    bool checked_ = false;
    bool bold_ = false;
    bool expanded_ = false;
    HTREEITEM item_ = nullptr;
    TreeNode* parent_ = nullptr;
    TreeNode* firstChild_ = nullptr;
    TreeNode* lastChild_ = nullptr;
    TreeNode* next_ = nullptr;
    int childCount_ = 0;
};

struct TreeViewOptions {
    bool checkBoxes = false;
};

class TreeView : public Control {
public:
    explicit TreeView(const TreeViewOptions& options = {}) : options_(options) {}

    /// Both throw TreeError if the key is in the tree already. An empty key means no key.
    TreeNode& addRoot(const std::wstring& key, const std::wstring& text);
    TreeNode& addChild(TreeNode& parent, const std::wstring& key, const std::wstring& text);
    void clear();

    int nodeCount() const { return static_cast<int>(nodes_.size()); }
    /// By index from 0; by key. Both throw TreeError; find returns null instead.
    TreeNode& node(int index) const;
    TreeNode& node(const std::wstring& key) const;
    TreeNode* find(const std::wstring& key) const;
    TreeNode* firstRoot() const { return firstRoot_; }

    /// Null when nothing is selected.
    TreeNode* selected() const;
    void setSelected(TreeNode* node);

    /// The expanded and selected nodes and the scroll position, by keys, for rebuilding the tree.
    /// Keys that are not in the tree are ignored.
    struct View {
        std::vector<std::wstring> open = {};
        std::wstring selected = {};
        std::wstring top = {};
    };
    View view() const;
    void setView(const View& view);

    /// The node whose row is at that place in the control, or null.
    TreeNode* hitTest(Twips x, Twips y) const;

    std::function<void(TreeNode&)> onNodeCheck;
    /// Another node was selected.
    std::function<void(TreeNode&)> onNodeClick;

protected:
    Kind kind() const override;
    void created() override;
    void dpiChanged() override;
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    friend class TreeNode;
    friend class TreeUpdate;

    TreeNode& add(TreeNode* parent, const std::wstring& key, const std::wstring& text);
    void link(TreeNode& node, TreeNode* parent);
    void insertItem(TreeNode& node, const TreeNode* previous);
    void setItemState(const TreeNode& node, UINT state, UINT mask) const;
    static UINT checkState(bool checked);
    TreeNode* nodeOf(HTREEITEM item) const;
    void scrollToTop(const TreeNode* node) const;
    HTREEITEM itemAt(POINT point, UINT& where) const;

    void handleNotification(const NMHDR& header);
    void handleClick();
    void noteToggle(HTREEITEM item);
    void reportToggles();

    void beginUpdate();
    void endUpdate();
    void setRedraw(bool allowed);

    TreeViewOptions options_;
    std::vector<std::unique_ptr<TreeNode>> nodes_;
    std::unordered_map<std::wstring, TreeNode*> byKey_;
    TreeNode* firstRoot_ = nullptr;
    TreeNode* lastRoot_ = nullptr;
    // Nodes that the user may have ticked; their state is read after the control has processed it.
    std::vector<HTREEITEM> toggled_;
    int updates_ = 0;
};

/// Suspends the drawing of a tree until the end of the block.
class TreeUpdate {
public:
    explicit TreeUpdate(TreeView& tree) : tree_(tree) { tree_.beginUpdate(); }
    ~TreeUpdate() { tree_.endUpdate(); }
    TreeUpdate(const TreeUpdate&) = delete;
    TreeUpdate& operator=(const TreeUpdate&) = delete;

private:
    TreeView& tree_;
};

}  // namespace forms
