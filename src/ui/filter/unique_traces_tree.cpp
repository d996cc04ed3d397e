#include "src/ui/filter/unique_traces_tree.h"

#include "src/db/mod_database.h"
#include "src/db/trace_filter.h"
#include "src/text/text.h"

namespace uniqueTracesTree {
namespace {

using forms::TreeNode;

/// The entry of a node; null for a component's node.
UniqueTrace* uniqueTraceOf(const TreeNode& node) {
    const auto row = rowOfKey(fromWide(node.key()));
    UniqueTraces& traces = modDatabase::uniqueTraces();
    return row && *row < traces.size() ? &traces[*row] : nullptr;
}

void tickTrace(TreeNode& item, bool ticked) {
    item.setChecked(ticked);
    if (UniqueTrace* const trace = uniqueTraceOf(item)) trace->selected = ticked;
}

bool allTicked(const TreeNode& component) {
    const TreeNode* item = component.child();
    while (item != nullptr && item->checked()) item = item->next();
    return item == nullptr;
}

/// Spellings that differ in case alternate in the file's order, so a component may come back.
TreeNode& componentOf(forms::TreeView& tree, const UniqueTrace& trace) {
    const std::wstring key = toWide(componentKey(trace));
    TreeNode* const known = tree.find(key);
    return known != nullptr ? *known : tree.addRoot(key, toWide(componentText(trace)));
}

void add(forms::TreeView& tree, std::size_t row, const UniqueTrace& trace) {
    TreeNode& item =
        tree.addChild(componentOf(tree, trace), toWide(itemKey(row)), toWide(itemText(trace)));
    item.setTag(toWide(plainText(trace.qrxIndex)));
    item.setChecked(trace.selected);
}

}  // namespace

void populate(forms::TreeView& tree) {
    const forms::TreeUpdate update{tree};
    const forms::TreeView::View view = tree.view();
    tree.clear();
    const UniqueTraces& traces = modDatabase::uniqueTraces();
    for (std::size_t row = 0; row < traces.size(); ++row) add(tree, row, traces[row]);
    for (TreeNode* node = tree.firstRoot(); node != nullptr; node = node->next()) {
        node->setChecked(allTicked(*node));
    }
    tree.setView(view);
}

void tick(TreeNode& node, bool ticked) {
    TreeNode& component = node.parent() != nullptr ? *node.parent() : node;
    if (&component != &node) {
        tickTrace(node, ticked);
    } else {
        for (TreeNode* item = node.child(); item != nullptr; item = item->next()) {
            tickTrace(*item, ticked);
        }
    }
    component.setChecked(allTicked(component));
}

}  // namespace uniqueTracesTree
