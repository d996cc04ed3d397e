// cTooltip: one tooltip window of the common controls, for the controls of a form.
//
//   cTooltip tooltip;
//   tooltip.Create(*this);
//   tooltip.AddTool(treeviewMacroTrace, L"");   // says "Tool1" until it is told otherwise
//
// The window intercepts the mouse messages of the tools itself. Texts are converted to the system's
// ANSI code page. Before Create has succeeded, all other members do nothing and return 0, false or
// an empty text. The user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

#include <windows.h>
#include <commctrl.h>

#include <cstdint>
#include <optional>
#include <string>

class cTooltip {
public:
    /// Numbers of the delays. Only the two lowest bits of a number are used.
    enum Delay { kAutomatic = 0, kReshow = 1, kAutoPop = 2, kInitial = 3 };
    enum Side { kLeft = 0, kTop = 1, kRight = 2, kBottom = 3 };

    cTooltip() = default;
    ~cTooltip();
    cTooltip(const cTooltip&) = delete;
    cTooltip& operator=(const cTooltip&) = delete;

    /// Creates the window, owned by the form's. True if it exists, also from an earlier call.
    bool Create(const forms::Window& form);

    /// False for a control that is a tool already or has no window. An empty text becomes "Tool"
    /// and the tool's number.
    bool AddTool(const forms::Control& control, const std::wstring& text);
    bool RemoveTool(const forms::Control& control);

    COLORREF BackColor() const;
    void setBackColor(COLORREF color);

    /// Milliseconds.
    int DelayTime(int delay) const;
    void setDelayTime(int delay, int milliseconds);

    /// Reading the colour sets the text to black and returns 0.
    COLORREF ForeColor();
    void setForeColor(COLORREF color);

    HWND hWnd() const { return window_; }

    /// Pixels; 0 for an invalid side.
    int Margin(int side) const;
    void setMargin(int side, int pixels);

    /// Pixels. Below 1 means no limit, returned as -1; lines are then not broken.
    std::int16_t MaxTipWidth() const;
    void setMaxTipWidth(std::int16_t width);

    std::int16_t ToolCount() const;

    /// Empty for a control that is not a tool. Some versions of the control return only the first
    /// 79 characters of a long text.
    std::wstring ToolText(const forms::Control& control) const;
    void setToolText(const forms::Control& control, const std::wstring& text);

private:
    LRESULT send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    std::optional<TOOLINFOA> findTool(const forms::Control& control, char* text = nullptr) const;
    void noteLength(const std::string& text);
    RECT margins() const;

    HWND window_ = nullptr;
    std::int32_t longestText_ = 0;  ///< bytes with the zero at the end
};
