// Label: text that is only read. Its access key leads to the control behind it in the table.
//
//   forms::Label lblStatus{{.accessKeys = false}};
//   lblStatus.setText(path);
//   lblStatus.refresh();
//
// The form's own thread.
#pragma once

#include "toolkit/forms/control.h"

namespace forms {

enum class Alignment { left, center, right };

struct LabelOptions {
    Alignment alignment = Alignment::left;
    // False writes '&' as it is, for texts from outside.
    bool accessKeys = true;
};

class Label : public Control {
public:
    explicit Label(const LabelOptions& options = {}) : options_(options) {}

    void setText(const std::wstring& text) override;

protected:
    Kind kind() const override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    LabelOptions options_;
};

}  // namespace forms
