// How the ticked macro traces tick the main window's unique traces.
#include "src/log/procedure.h"
#include "src/macros/frm_macro_traces.h"
#include "src/macros/macro_level.h"
#include "src/macros/mdl_traces.h"
#include "src/text/text.h"
#include "src/ui/filter/unique_traces_tree.h"

using forms::TreeNode;

namespace {

/// In front of the component's name in the keys of the unique traces' tree.
constexpr std::size_t kKeyPrefix = 2;

std::wstring lowerCase(const std::wstring& text) {
    std::wstring lower(text.size(), L'\0');
    const int length = static_cast<int>(text.size());
    ::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_LOWERCASE, text.data(), length, lower.data(),
                    length, nullptr, nullptr, 0);
    return lower;
}

}  // namespace

void frmMacroTraces::applyCheckedMacroTraces() {
    constexpr std::u16string_view kLabel = u"[frmMacroTraces]applyCheckedMacroTraces";
    runProcedure(kLabel, Limit::None, [this](Procedure& procedure) {
        const forms::TreeUpdate update{uniqueTracesTree_};
        std::wstring group;
        for (int index = 0; index < treeviewMacroTrace.nodeCount(); ++index) {
            const TreeNode& node = treeviewMacroTrace.node(index);
            if (node.parent() == nullptr) {
                group = node.text();
            } else if (node.checked()) {
                procedure.step([&] {
                    overlayMacroTrace(procedure, mdlTraces::findTrace(group, node.text()));
                });
            }
        }
    });
}

void frmMacroTraces::overlayMacroTrace(Procedure& procedure, const xml::Node& trace) {
    for (const xml::Node& diag : trace.select(L"DIAG")) {
        const TreeNode* component = nullptr;
        procedure.step([&] { component = getComponentNode(diag.attribute(L"GROUP")); });
        if (component == nullptr) continue;
        for (const xml::Node& flag : diag.select(L"FLAG")) {
            procedure.step([&] {
                selectComponentLevel(*component, macros::toLevel(fromWide(flag.attribute(L"ID"))));
            });
        }
    }
}

TreeNode* frmMacroTraces::getComponentNode(const std::wstring& component) const {
    const std::wstring wanted = lowerCase(component);
    for (int index = 0; index < uniqueTracesTree_.nodeCount(); ++index) {
        TreeNode& node = uniqueTracesTree_.node(index);
        const std::wstring& key = node.key();
        // Lower case is as long as upper case, so most nodes need no conversion.
        if (key.size() != wanted.size() + kKeyPrefix) continue;
        if (lowerCase(key.substr(kKeyPrefix)) == wanted) return &node;
    }
    return nullptr;
}

void selectComponentLevel(const TreeNode& component, std::int16_t level) {
    for (TreeNode* child = component.child(); child != nullptr; child = child->next()) {
        if (macros::keyNamesLevel(fromWide(child->tag()), level)) {
            uniqueTracesTree::tick(*child, true);
        }
    }
}
