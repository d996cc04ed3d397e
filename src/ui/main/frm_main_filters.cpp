// The main window's second tab: the tree of unique traces and the buttons around it.
#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/db/trace_filter.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/macros/frm_macro_traces.h"
#include "src/ui/filter/unique_traces_tree.h"
#include "src/ui/main/frm_main.h"

using forms::TreeNode;

void frmMain::populateUniqueTracesTree() { uniqueTracesTree::populate(tvUniqueTraces); }

void frmMain::tvUniqueTraces_NodeCheck(TreeNode& node) {
    uniqueTracesTree::tick(node, node.checked());
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
