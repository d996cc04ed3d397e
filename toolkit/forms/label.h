// Label: static text. Its access key moves to the next control in the table.
//
//   forms::Label lblStatus{{.accessKeys = false}};
//   lblStatus.setText(path);
//   lblStatus.refresh();
//
// The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

namespace forms {

enum class Alignment { left, center, right };

struct LabelOptions {
    Alignment alignment = Alignment::left;
    /// False shows '&' literally, for texts from outside.
    bool accessKeys = true;
    /// Underlined, with a hand pointer; a tab stop that Space and Down click.
    bool link = false;
};

class Label : public Control {
public:
    explicit Label(const LabelOptions& options = {}) : options_(options) {}

    void setText(const std::wstring& text) override;
    void click() { fire(onClick); }

protected:
    Kind kind() const override;
    void created() override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    LRESULT handleLinkMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void paintFocus() const;

    LabelOptions options_;
};

}  // namespace forms
