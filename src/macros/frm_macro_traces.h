// The dialog in which the user ticks macro traces. Each of them then ticks the levels of its
// components in the main window's tree of unique traces.
//
//   frmMacroTraces dialog{tvUniqueTraces};
//   dialog.showModal();
//
// The filter itself is not applied here. The user-interface thread.
#pragma once

#include "src/i18n/localized_form.h"
#include "src/macros/c_tooltip.h"
#include "src/macros/xml_document.h"
#include "toolkit/forms/buttons.h"
#include "toolkit/forms/tree_view.h"

#include <memory>
#include <string>

class Procedure;

class frmMacroTraces : public modLocalize::LocalizedForm {
public:
    /// `uniqueTracesTree` must outlive the form.
    explicit frmMacroTraces(forms::TreeView& uniqueTracesTree);
    ~frmMacroTraces() override { destroy(); }

    forms::TreeView treeviewMacroTrace{{.checkBoxes = true}};
    forms::Button cmdAdd;
    forms::Button cmdCancel;

    /// The captions in the language in use, and the tips of the macro traces.
    void frmMacroTraces_Auto_Init();

    /// Null while the form is not loaded.
    const cTooltip* tooltip() const { return tooltip_.get(); }

private:
    void build() override;
    void Form_Load() override;
    void Form_Unload(bool& cancel) override;
    void Auto_Init() override { frmMacroTraces_Auto_Init(); }

    void treeviewMacroTrace_MouseMove(const forms::MouseEvent& event);
    void treeviewMacroTrace_NodeCheck(forms::TreeNode& node);
    void cmdAdd_Click();
    void cmdCancel_Click();

    void populateMacroTracesTreeview();
    void addGroup(Procedure& procedure, const xml::Node& group);
    void addTrace(forms::TreeNode& group, const xml::Node& trace);

    void applyCheckedMacroTraces();
    void overlayMacroTrace(Procedure& procedure, const xml::Node& trace);
    forms::TreeNode* getComponentNode(const std::wstring& component) const;

    forms::TreeView& uniqueTracesTree_;
    std::unique_ptr<cTooltip> tooltip_;
    const forms::TreeNode* tipNode_ = nullptr;  ///< whose text the tip shows
};

/// What a macro trace selects, a line for each component: "Alpha Levels: 1, 12".
std::wstring constructToolTipText(const forms::TreeNode& node);

/// Sets the same tick in a node, the siblings after it and all nodes below them, and scrolls to
/// them.
void setSubtreeChecked(forms::TreeNode* node, bool checked);

/// Ticks the unique traces of a component whose key contains the level's digits.
void selectComponentLevel(const forms::TreeNode& component, std::int16_t level);
