// The main window's second tab: the tree of unique traces and the buttons around it.
#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/db/trace_filter.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/macros/frm_macro_traces.h"
#include "src/text/text.h"
#include "src/ui/main/frm_main.h"

using forms::TreeNode;

namespace {

/// The unique trace of a node; null for a component's node.
UniqueTrace* uniqueTraceOf(const TreeNode& node) {
    const auto row = rowOfKey(fromWide(node.key()));
    UniqueTraces& traces = modDatabase::uniqueTraces();
    return row && *row < traces.size() ? &traces[*row] : nullptr;
}

void tick(TreeNode& node, bool checked) {
    node.setChecked(checked);
    if (UniqueTrace* const trace = uniqueTraceOf(node)) trace->selected = checked;
}

/// A component is ticked exactly when all its unique traces are.
void updateParentCheck(TreeNode& component) {
    bool allTicked = true;
    for (const TreeNode* child = component.child(); child != nullptr && allTicked;
         child = child->next()) {
        allTicked = child->checked();
    }
    component.setChecked(allTicked);
}

void checkChildNodes(const TreeNode& component) {
    for (TreeNode* child = component.child(); child != nullptr; child = child->next()) {
        tick(*child, component.checked());
    }
}

}  // namespace

void frmMain::populateUniqueTracesTree() {
    const forms::TreeUpdate update{tvUniqueTraces};
    const forms::TreeView::View view = tvUniqueTraces.view();
    tvUniqueTraces.clear();
    const UniqueTraces& traces = modDatabase::uniqueTraces();
    for (std::size_t row = 0; row < traces.size(); ++row) {
        const UniqueTrace& trace = traces[row];
        // Spellings that differ in case alternate in the file's order, so a component may come back.
        const std::wstring key = toWide(componentKey(trace));
        TreeNode* component = tvUniqueTraces.find(key);
        if (component == nullptr) {
            component = &tvUniqueTraces.addRoot(key, toWide(componentText(trace)));
        }
        TreeNode& item =
            tvUniqueTraces.addChild(*component, toWide(itemKey(row)), toWide(itemText(trace)));
        item.setTag(toWide(plainText(trace.qrxIndex)));
        item.setChecked(trace.selected);
    }
    for (TreeNode* component = tvUniqueTraces.firstRoot(); component != nullptr;
         component = component->next()) {
        updateParentCheck(*component);
    }
    tvUniqueTraces.setView(view);
}

void frmMain::tvUniqueTraces_NodeCheck(TreeNode& node) {
    if (node.parent() == nullptr) {
        checkChildNodes(node);
    } else {
        tick(node, node.checked());
        updateParentCheck(*node.parent());
    }
}

void frmMain::setAllSelected(bool selected) {
    for (UniqueTrace& trace : modDatabase::uniqueTraces()) trace.selected = selected;
    populateUniqueTracesTree();
}

void frmMain::cmdSelectAllUniqueTraces_Click() { setAllSelected(true); }

void frmMain::cmdClearAllUniqueTraces_Click() { setAllSelected(false); }

void frmMain::setAllExpanded(bool expanded) {
    const forms::TreeUpdate update{tvUniqueTraces};
    for (TreeNode* component = tvUniqueTraces.firstRoot(); component != nullptr;
         component = component->next()) {
        component->setExpanded(expanded);
    }
}

void frmMain::cmdExpandAll_Click() { setAllExpanded(true); }

void frmMain::cmdCollapseAll_Click() { setAllExpanded(false); }

std::u16string frmMain::constructFilters() {
    constexpr std::u16string_view kLabel = u"[frmMain]constructFilters";
    std::u16string expression;
    runProcedure(kLabel, Limit::None, [&](Procedure& procedure) {
        procedure.step(
            [&] { expression = constructFilterExpression(modDatabase::uniqueTraces()); });
        procedure.step([&] { theLog().log(u"WHERE " + expression, classLog::kVerInfo, kLabel); });
    });
    return expression;
}

void frmMain::cmdApplyFilter_Click() {
    modDatabase::openDiagRecordset(whereClause(constructFilters()));
    reloadDBGrid(diags()->rsDiags());
}

void frmMain::cmdAddMacroTraceToFilter_Click() {
    frmMacroTraces dialog{tvUniqueTraces};
    dialog.showModal();
}
