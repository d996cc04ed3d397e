#include "toolkit/forms/tree_view.h"

#include "toolkit/forms/check_images.h"

#include <utility>

namespace forms {
namespace {

constexpr UINT kReportToggles = WM_APP + 2;

// The state images of a tree with check boxes.
constexpr UINT kUncheckedImage = 1;
constexpr UINT kCheckedImage = 2;

}  // namespace

// --- TreeNode ---

void TreeNode::setText(const std::wstring& text) {
    text_ = text;
    TVITEMEXW item{};
    item.mask = TVIF_HANDLE | TVIF_TEXT;
    item.hItem = item_;
    item.pszText = text_.data();
    tree_.send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void TreeNode::setChecked(bool checked) {
    if (std::exchange(checked_, checked) != checked) {
        tree_.setItemState(*this, TreeView::checkState(checked), TVIS_STATEIMAGEMASK);
    }
}

void TreeNode::setBold(bool bold) {
    bold_ = bold;
    tree_.setItemState(*this, bold ? TVIS_BOLD : 0, TVIS_BOLD);
}

bool TreeNode::expanded() const {
    if (!firstChild_) return expanded_;
    const LRESULT state =
        tree_.send(TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item_), TVIS_EXPANDED);
    return (state & TVIS_EXPANDED) != 0;
}

void TreeNode::setExpanded(bool expanded) {
    expanded_ = expanded;
    if (firstChild_) {
        tree_.send(TVM_EXPAND, expanded ? TVE_EXPAND : TVE_COLLAPSE,
                   reinterpret_cast<LPARAM>(item_));
    }
}

void TreeNode::ensureVisible() {
    tree_.send(TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item_));
}

// --- TreeView: the nodes ---

Control::Kind TreeView::kind() const {
    return {.className = WC_TREEVIEWW,
            .style = WS_TABSTOP | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT |
                     TVS_SHOWSELALWAYS | TVS_DISABLEDRAGDROP,
            .exStyle = WS_EX_CLIENTEDGE};
}

void TreeView::created() {
    // The nodes of an earlier window are gone with it.
    clear();
    send(TVM_SETEXTENDEDSTYLE, TVS_EX_DOUBLEBUFFER, TVS_EX_DOUBLEBUFFER);
    if (options_.checkBoxes) {
        // Given when the window is made, the style comes too early for its pictures.
        ::SetWindowLongPtrW(hwnd(), GWL_STYLE,
                            ::GetWindowLongPtrW(hwnd(), GWL_STYLE) | TVS_CHECKBOXES);
    }
}

void TreeView::dpiChanged() {
    if (options_.checkBoxes) {
        const HIMAGELIST images = makeCheckImages(hwnd(), dpi());
        const LRESULT previous =
            send(TVM_SETIMAGELIST, TVSIL_STATE, reinterpret_cast<LPARAM>(images));
        ImageList_Destroy(reinterpret_cast<HIMAGELIST>(previous));
        // Makes the control measure its rows anew, now with the larger boxes.
        send(WM_SETFONT, reinterpret_cast<WPARAM>(fontHandle()), TRUE);
    }
}

TreeNode& TreeView::addRoot(const std::wstring& key, const std::wstring& text) {
    return add(nullptr, key, text);
}

TreeNode& TreeView::addChild(TreeNode& parent, const std::wstring& key, const std::wstring& text) {
    return add(&parent, key, text);
}

TreeNode& TreeView::add(TreeNode* parent, const std::wstring& key, const std::wstring& text) {
    if (!key.empty() && byKey_.contains(key)) {
        throw TreeError(TreeError::kKeyNotUnique, "the tree has a node of that key already");
    }
    nodes_.push_back(std::unique_ptr<TreeNode>(new TreeNode(*this, key, text, nodeCount())));
    TreeNode& node = *nodes_.back();
    if (!key.empty()) byKey_.emplace(key, &node);
    link(node, parent);
    return node;
}

// Puts the node behind its siblings, here and in the control.
void TreeView::link(TreeNode& node, TreeNode* parent) {
    node.parent_ = parent;
    TreeNode*& first = parent ? parent->firstChild_ : firstRoot_;
    TreeNode*& last = parent ? parent->lastChild_ : lastRoot_;
    TreeNode* previous = std::exchange(last, &node);
    (previous ? previous->next_ : first) = &node;
    insertItem(node, previous);
    if (parent && ++parent->childCount_ == 1 && parent->expanded_) parent->setExpanded(true);
}

void TreeView::insertItem(TreeNode& node, const TreeNode* previous) {
    TVINSERTSTRUCTW insertion{};
    insertion.hParent = node.parent_ ? node.parent_->item_ : TVI_ROOT;
    // Named by its handle the place is found at once; TVI_LAST would walk over all siblings.
    insertion.hInsertAfter = previous ? previous->item_ : TVI_FIRST;
    insertion.itemex.mask = TVIF_TEXT | TVIF_PARAM;
    insertion.itemex.pszText = node.text_.data();
    insertion.itemex.lParam = reinterpret_cast<LPARAM>(&node);
    node.item_ =
        reinterpret_cast<HTREEITEM>(send(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insertion)));
    if (!node.item_) throw std::runtime_error("the tree control took no more nodes");
}

void TreeView::clear() {
    const TreeUpdate update(*this);
    toggled_.clear();
    send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    nodes_.clear();
    byKey_.clear();
    firstRoot_ = nullptr;
    lastRoot_ = nullptr;
}

TreeNode& TreeView::node(int index) const {
    if (index < 0 || index >= nodeCount()) {
        throw TreeError(TreeError::kIndexOutOfBounds, "the tree has no node of that index");
    }
    return *nodes_[static_cast<std::size_t>(index)];
}

TreeNode& TreeView::node(const std::wstring& key) const {
    TreeNode* found = find(key);
    if (!found) throw TreeError(TreeError::kElementNotFound, "the tree has no node of that key");
    return *found;
}

TreeNode* TreeView::find(const std::wstring& key) const {
    const auto found = byKey_.find(key);
    return found == byKey_.end() ? nullptr : found->second;
}

TreeNode* TreeView::nodeOf(HTREEITEM item) const {
    TVITEMEXW info{};
    info.mask = TVIF_HANDLE | TVIF_PARAM;
    info.hItem = item;
    if (!item || !send(TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&info))) return nullptr;
    return reinterpret_cast<TreeNode*>(info.lParam);
}

TreeNode* TreeView::selected() const {
    return nodeOf(reinterpret_cast<HTREEITEM>(send(TVM_GETNEXTITEM, TVGN_CARET)));
}

void TreeView::setSelected(TreeNode* node) {
    send(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(node ? node->item_ : nullptr));
}

TreeView::View TreeView::view() const {
    View view;
    for (const auto& node : nodes_) {
        if (node->firstChild_ && node->expanded()) view.open.push_back(node->key());
    }
    if (const TreeNode* node = selected()) view.selected = node->key();
    if (const TreeNode* node =
            nodeOf(reinterpret_cast<HTREEITEM>(send(TVM_GETNEXTITEM, TVGN_FIRSTVISIBLE)))) {
        view.top = node->key();
    }
    return view;
}

void TreeView::setView(const View& view) {
    for (const std::wstring& key : view.open) {
        if (TreeNode* node = find(key)) node->setExpanded(true);
    }
    // Some versions of the control do not scroll to the node that is selected, and to select one
    // that is out of sight scrolls: so before it and behind it.
    scrollToTop(find(view.top));
    if (TreeNode* node = find(view.selected)) {
        setSelected(node);
        scrollToTop(find(view.top));
    }
}

void TreeView::scrollToTop(const TreeNode* node) const {
    if (node) send(TVM_SELECTITEM, TVGN_FIRSTVISIBLE, reinterpret_cast<LPARAM>(node->item_));
}

HTREEITEM TreeView::itemAt(POINT point, UINT& where) const {
    TVHITTESTINFO hit{};
    hit.pt = point;
    send(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    where = hit.flags;
    return hit.hItem;
}

TreeNode* TreeView::hitTest(Twips x, Twips y) const {
    UINT where = 0;
    return nodeOf(itemAt({toPixels(x, dpi()).value, toPixels(y, dpi()).value}, where));
}

UINT TreeView::checkState(bool checked) {
    return INDEXTOSTATEIMAGEMASK(checked ? kCheckedImage : kUncheckedImage);
}

void TreeView::setItemState(const TreeNode& node, UINT state, UINT mask) const {
    TVITEMEXW item{};
    item.mask = TVIF_HANDLE | TVIF_STATE;
    item.hItem = node.item_;
    item.state = state;
    item.stateMask = mask;
    send(TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

// --- TreeView: what the user does ---

bool TreeView::reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
    if (message == WM_NOTIFY) {
        const auto& header = *reinterpret_cast<const NMHDR*>(lParam);
        handleNotification(header);
        return header.code == TVN_ITEMCHANGEDW;
    }
    return Control::reflected(message, wParam, lParam, result);
}

// No single notification tells of a tick on every Windows: some report the changed item, others
// only the click or the key, and those before the box changes. Each of them is taken as a hint
// that a node may have changed, and the box is read when the control is done with the input.
void TreeView::handleNotification(const NMHDR& header) {
    switch (header.code) {
        case NM_CLICK:
        case NM_DBLCLK:
            handleClick();
            break;
        case TVN_KEYDOWN:
            if (reinterpret_cast<const NMTVKEYDOWN&>(header).wVKey == VK_SPACE) {
                noteToggle(reinterpret_cast<HTREEITEM>(send(TVM_GETNEXTITEM, TVGN_CARET)));
            }
            break;
        case TVN_ITEMCHANGEDW: {
            const auto& change = reinterpret_cast<const NMTVITEMCHANGE&>(header);
            const TreeNode* node = nodeOf(change.hItem);
            // Ticks of the program are reported as well; those the node knows already.
            if (node && (change.uStateNew & TVIS_STATEIMAGEMASK) != checkState(node->checked_)) {
                noteToggle(change.hItem);
            }
            break;
        }
        case TVN_SELCHANGEDW: {
            const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
            auto* node = reinterpret_cast<TreeNode*>(change.itemNew.lParam);
            const auto procedure = onNodeClick;
            if (change.itemNew.hItem && node && procedure) procedure(*node);
            break;
        }
        default:
            break;
    }
}

void TreeView::handleClick() {
    const DWORD position = ::GetMessagePos();
    POINT point{static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
    ::ScreenToClient(hwnd(), &point);
    UINT where = 0;
    const HTREEITEM item = itemAt(point, where);
    if (where & TVHT_ONITEMSTATEICON) noteToggle(item);
}

void TreeView::noteToggle(HTREEITEM item) {
    if (!options_.checkBoxes || !item) return;
    if (toggled_.empty()) ::PostMessageW(hwnd(), kReportToggles, 0, 0);
    toggled_.push_back(item);
}

// Hints may come twice for one tick; the second finds nothing changed.
void TreeView::reportToggles() {
    for (const HTREEITEM item : std::exchange(toggled_, {})) {
        TreeNode* node = nodeOf(item);
        const LRESULT state =
            send(TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), TVIS_STATEIMAGEMASK);
        const bool checked = (static_cast<UINT>(state) & TVIS_STATEIMAGEMASK) == checkState(true);
        if (!node || node->checked_ == checked) continue;
        node->checked_ = checked;
        if (const auto procedure = onNodeCheck) procedure(*node);
    }
}

LRESULT TreeView::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kReportToggles) {
        reportToggles();
        return 0;
    }
    return Control::handleMessage(message, wParam, lParam);
}

void TreeView::beginUpdate() {
    if (updates_++ == 0 && isCreated()) setRedraw(false);
}

void TreeView::endUpdate() {
    if (--updates_ == 0 && isCreated()) {
        setRedraw(true);
        // Allowing the drawing also marks the window as visible, which it may not be.
        applyVisibility();
        ::RedrawWindow(hwnd(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
    }
}

// Some versions of the control only note that they should not draw, and go on asking the system to
// repaint each item that changes. A window that counts as invisible makes those requests free.
void TreeView::setRedraw(bool allowed) {
    send(WM_SETREDRAW, allowed);
    ::DefWindowProcW(hwnd(), WM_SETREDRAW, allowed, 0);
}

}  // namespace forms
