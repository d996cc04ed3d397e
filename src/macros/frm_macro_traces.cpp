#include "src/macros/frm_macro_traces.h"

#include "src/i18n/mod_localize.h"
#include "src/log/procedure.h"
#include "src/macros/macro_level.h"
#include "src/macros/mdl_traces.h"
#include "src/text/text.h"

using modLocalize::Text;
using modLocalize::wideText;
using namespace forms::literals;
using forms::TreeNode;

namespace {

constexpr Convention kConvention{.limit = Limit::TenErrors, .numbersLines = true, .timed = true};
constexpr std::int16_t kTipWidth = 400;
constexpr int kMaxIndex = 32767;
constexpr std::size_t kLineEnd = 2;
constexpr std::size_t kComma = 2;

/// Elements are counted in 16 bits with a sign; those that the count does not reach are left out.
template <typename Use>
void forEachCounted(Procedure& procedure, const std::vector<xml::Node>& nodes, Use use) {
    int index = 0;
    for (const xml::Node& node : nodes) {
        if (index++ > kMaxIndex) {
            procedure.step([] { throw RuntimeError{RuntimeError::kOverflow, u"Overflow"}; });
            return;
        }
        use(node);
    }
}

/// "1, 12": the levels of a component. One that is missing or no 16-bit number is reported, and so
/// is a component without levels.
std::wstring levelsOf(Procedure& procedure, const xml::Node& diag) {
    std::wstring list;
    for (const xml::Node& flag : diag.select(L"FLAG")) {
        procedure.step([&] {
            list += std::to_wstring(macros::toLevel(fromWide(flag.attribute(L"ID")))) + L", ";
        });
    }
    procedure.step([&] {
        if (list.empty())
            throw RuntimeError{RuntimeError::kInvalidCall, u"Invalid procedure call or argument"};
        list.resize(list.size() - kComma);
    });
    return list;
}

}  // namespace

frmMacroTraces::frmMacroTraces(forms::TreeView& uniqueTracesTree)
    : LocalizedForm({.className = L"VorelleDiagnosticViewer.frmMacroTraces",
                     .caption = L"Add Macro Traces to Filter",
                     .border = forms::BorderStyle::fixedDialog,
                     .clientWidth = 6000_tw,
                     .clientHeight = 5700_tw}),
      uniqueTracesTree_{uniqueTracesTree} {}

void frmMacroTraces::build() {
    createControls({
        {treeviewMacroTrace, {L"treeviewMacroTrace", L"", 120_tw, 120_tw, 5760_tw, 4920_tw}},
        {cmdAdd,
         {L"cmdAdd", L"Add Selected Macro Traces", 120_tw, 5160_tw, 3600_tw, 420_tw,
          forms::kDefaultButton}},
        {cmdCancel,
         {L"cmdCancel", L"Cancel", 3840_tw, 5160_tw, 2040_tw, 420_tw, forms::kCancelButton}},
    });
    treeviewMacroTrace.onMouseMove = [this](const forms::MouseEvent& event) {
        treeviewMacroTrace_MouseMove(event);
    };
    treeviewMacroTrace.onNodeCheck = [this](TreeNode& node) { treeviewMacroTrace_NodeCheck(node); };
    cmdAdd.onClick = [this] { cmdAdd_Click(); };
    cmdCancel.onClick = [this] { cmdCancel_Click(); };
}

void frmMacroTraces::Form_Load() {
    modLocalize::applyLanguageFont(*this);
    frmMacroTraces_Auto_Init();
    populateMacroTracesTreeview();
    tipNode_ = nullptr;
    tooltip_ = std::make_unique<cTooltip>();
    tooltip_->Create(*this);
    tooltip_->setMaxTipWidth(kTipWidth);
    tooltip_->AddTool(treeviewMacroTrace, L"");
}

void frmMacroTraces::frmMacroTraces_Auto_Init() {
    setCaption(wideText(Text::AddMacroTracesToFilter));
    treeviewMacroTrace.setAccessibleName(wideText(Text::AddMacroTracesToFilter));
    cmdCancel.setCaption(wideText(Text::Cancel));
    cmdAdd.setCaption(wideText(Text::AddSelectedMacroTraces));
    for (int i = 0; i < treeviewMacroTrace.nodeCount(); ++i) {
        TreeNode& node = treeviewMacroTrace.node(i);
        if (node.parent() != nullptr) node.setTag(constructToolTipText(node));
    }
    tipNode_ = nullptr;
}

void frmMacroTraces::Form_Unload(bool& /*cancel*/) { tooltip_.reset(); }

void frmMacroTraces::treeviewMacroTrace_MouseMove(const forms::MouseEvent& event) {
    const TreeNode* const node = treeviewMacroTrace.hitTest(event.x, event.y);
    // Setting the same text again would make a tip on show flicker under a moving pointer.
    if (node == nullptr || !tooltip_ || node == tipNode_) return;
    tooltip_->setToolText(treeviewMacroTrace, node->tag());
    tipNode_ = node;
}

void frmMacroTraces::treeviewMacroTrace_NodeCheck(TreeNode& node) {
    setSubtreeChecked(node.child(), node.checked());
}

void frmMacroTraces::cmdAdd_Click() {
    applyCheckedMacroTraces();
    unload();
}

void frmMacroTraces::cmdCancel_Click() { unload(); }

void frmMacroTraces::populateMacroTracesTreeview() {
    constexpr std::u16string_view kLabel = u"[frmMacroTraces]populateMacroTracesTreeview";
    runProcedure(kLabel, kConvention, [this](Procedure& procedure) {
        {
            const forms::TreeUpdate update{treeviewMacroTrace};
            treeviewMacroTrace.clear();
            std::vector<xml::Node> groups;
            procedure.step([&] { groups = mdlTraces::xmlMacroTraces().elements(L"GA"); });
            forEachCounted(procedure, groups,
                           [&](const xml::Node& group) { addGroup(procedure, group); });
        }
        procedure.step([this] { treeviewMacroTrace.node(0).ensureVisible(); });
    });
}

void frmMacroTraces::addGroup(Procedure& procedure, const xml::Node& group) {
    TreeNode* root = nullptr;
    std::vector<xml::Node> traces;
    procedure.step([&] {
        if (group.hasAttribute(L"DONTSHOW")) return;
        const std::wstring name = group.attribute(L"NAME");
        const xml::Node description = group.find(L"DESCRIPTION");
        const std::wstring key = description.exists() ? name + L" - " + description.text() : name;
        root = &treeviewMacroTrace.addRoot(key, name);
        root->setTag(key);
        root->setBold(true);
        traces = group.select(L"TRACE");
    });
    forEachCounted(procedure, traces, [&](const xml::Node& trace) {
        procedure.step([&] { addTrace(*root, trace); });
    });
}

void frmMacroTraces::addTrace(TreeNode& group, const xml::Node& trace) {
    const std::wstring name = trace.attribute(L"NAME");
    const std::wstring key = name + L" - " + trace.first(L"DESCRIPTION").text();
    TreeNode& node = treeviewMacroTrace.addChild(group, key, name);
    node.setExpanded(true);
    node.setTag(constructToolTipText(node));
}

std::wstring constructToolTipText(const TreeNode& node) {
    std::wstring text;
    constexpr std::u16string_view kLabel = u"[frmMacroTraces]constructToolTipText";
    runProcedure(kLabel, kConvention, [&](Procedure& procedure) {
        std::vector<xml::Node> diags;
        procedure.step([&] {
            const xml::Node trace = mdlTraces::findTrace(node.parent()->text(), node.text());
            diags = trace.select(L"DIAG");
        });
        for (const xml::Node& diag : diags) {
            const std::wstring levels = levelsOf(procedure, diag);
            procedure.step([&] {
                text += diag.attribute(L"GROUP") + wideText(Text::Levels) + levels + L"\r\n";
            });
        }
    });
    text.resize(text.size() > kLineEnd ? text.size() - kLineEnd : 0);
    return text;
}

void setSubtreeChecked(TreeNode* node, bool checked) {
    for (; node != nullptr; node = node->next()) {
        node->setChecked(checked);
        node->ensureVisible();
        setSubtreeChecked(node->child(), checked);
    }
}
