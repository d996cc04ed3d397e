// TextBox: single-line or multi-line text, editable or read-only.
//
//   forms::TextBox txtTrace{{.multiLine = true, .readOnly = true, .verticalScroll = true}};
//   txtTrace.setText(text);
//   txtName.onChange = [this] { txtName_Change(); };
//
// Lines of a text end with "\r\n". The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

namespace forms {

struct TextBoxOptions {
    bool multiLine = false;
    bool readOnly = false;
    bool verticalScroll = false;
    /// Without it the lines of a multi-line box wrap.
    bool horizontalScroll = false;
};

class TextBox : public Control {
public:
    explicit TextBox(const TextBoxOptions& options = {}) : options_(options) {}

    void setReadOnly(bool readOnly);
    bool readOnly() const { return options_.readOnly; }

    /// In characters from the start of the text.
    struct Selection {
        int start = 0;
        int length = 0;
    };
    Selection selection() const;
    void setSelection(Selection selection);
    std::wstring selectedText() const;

    // After every change of the text, by the user or by setText.
    std::function<void()> onChange;

protected:
    Kind kind() const override;
    void created() override;
    bool reflected(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    TextBoxOptions options_;
};

}  // namespace forms
