// The tree of the filter: a node a component, beneath it a node a unique trace, with a tick each.
//
//   uniqueTracesTree::populate(tvUniqueTraces);
//   uniqueTracesTree::tick(tvUniqueTraces.node(L"Item:7"), true);
//
// A tick stands in three places: in the node, in the entry of modDatabase::uniqueTraces(), which
// the filter is made of, and in the node of the component, which is ticked exactly when all its
// unique traces are. Whoever ticks calls tick(), which keeps the three together.
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/tree_view.h"

namespace uniqueTracesTree {

/// Makes the tree anew of the unique traces of the open database. What the user has opened,
/// selected and scrolled to stays.
void populate(forms::TreeView& tree);

/// Ticks or unticks a unique trace, or all those of a component.
void tick(forms::TreeNode& node, bool ticked);

}  // namespace uniqueTracesTree
