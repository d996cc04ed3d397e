#include "src/macros/c_tooltip.h"

#include "src/text/text.h"

#include <cstddef>
#include <vector>

namespace {

// The record as far as every version of the control takes it: 44 bytes where addresses have 32
// bits, 64 bytes where they have 64.
constexpr UINT kToolRecordSize = offsetof(TOOLINFOA, lParam) + sizeof(LPARAM);
static_assert(kToolRecordSize == (sizeof(void*) == 4 ? 44 : 64));

constexpr UINT kToolFlags = TTF_IDISHWND | TTF_SUBCLASS;
constexpr int kDelayMask = 3;

std::string toAnsi(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int bytes =
        ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string ansi(static_cast<std::size_t>(bytes), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, text.data(), length, ansi.data(), bytes, nullptr, nullptr);
    return ansi;
}

std::wstring fromAnsi(const char* ansi) {
    // The length counts the zero at the end.
    const int length = ::MultiByteToWideChar(CP_ACP, 0, ansi, -1, nullptr, 0);
    if (length <= 1) return {};
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, ansi, -1, text.data(), length);
    text.pop_back();
    return text;
}

LPARAM asParameter(const void* record) { return reinterpret_cast<LPARAM>(record); }

TOOLINFOA emptyRecord(char* text) {
    TOOLINFOA record{};
    record.cbSize = kToolRecordSize;
    record.lpszText = text;
    return record;
}

UINT_PTR idOf(const forms::Control& control) { return reinterpret_cast<UINT_PTR>(control.hwnd()); }

HWND containerOf(const forms::Control& control) {
    return control.container() != nullptr ? control.container()->hwnd()
                                          : ::GetParent(control.hwnd());
}

LONG* sideOf(RECT& rect, int side) {
    switch (side) {
        case cTooltip::kLeft:
            return &rect.left;
        case cTooltip::kTop:
            return &rect.top;
        case cTooltip::kRight:
            return &rect.right;
        case cTooltip::kBottom:
            return &rect.bottom;
        default:
            return nullptr;
    }
}

}  // namespace

cTooltip::~cTooltip() {
    if (window_ != nullptr) ::DestroyWindow(window_);
}

LRESULT cTooltip::send(UINT message, WPARAM wParam, LPARAM lParam) const {
    return window_ == nullptr ? 0 : ::SendMessageA(window_, message, wParam, lParam);
}

bool cTooltip::Create(const forms::Window& form) {
    if (window_ == nullptr) {
        ::InitCommonControls();
        // The class makes a pop-up of every window; one that is born as such is never activated.
        window_ = ::CreateWindowExA(0, TOOLTIPS_CLASSA, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0, 0, 0,
                                    0, form.hwnd(), nullptr, ::GetModuleHandleW(nullptr), nullptr);
    }
    return window_ != nullptr;
}

std::optional<TOOLINFOA> cTooltip::findTool(const forms::Control& control, char* text) const {
    if (!control.isCreated()) return std::nullopt;
    const int count = ToolCount();
    for (int index = 0; index < count; ++index) {
        TOOLINFOA record = emptyRecord(text);
        send(TTM_ENUMTOOLSA, static_cast<WPARAM>(index), asParameter(&record));
        if (record.uId == idOf(control)) return record;
    }
    return std::nullopt;
}

void cTooltip::noteLength(const std::string& text) {
    const auto needed = static_cast<std::int32_t>(text.size()) + 1;
    if (needed > longestText_) longestText_ = needed;
}

bool cTooltip::AddTool(const forms::Control& control, const std::wstring& text) {
    if (window_ == nullptr || !control.isCreated() || findTool(control)) return false;
    std::string ansi = text.empty() ? "Tool" + std::to_string(ToolCount() + 1) : toAnsi(text);
    TOOLINFOA record = emptyRecord(ansi.data());
    record.uFlags = kToolFlags;
    record.hwnd = containerOf(control);
    record.uId = idOf(control);
    noteLength(ansi);
    return send(TTM_ADDTOOLA, 0, asParameter(&record)) != 0;
}

bool cTooltip::RemoveTool(const forms::Control& control) {
    const auto record = findTool(control);
    if (record) send(TTM_DELTOOLA, 0, asParameter(&*record));
    return record.has_value();
}

COLORREF cTooltip::BackColor() const { return static_cast<COLORREF>(send(TTM_GETTIPBKCOLOR)); }

void cTooltip::setBackColor(COLORREF color) { send(TTM_SETTIPBKCOLOR, color); }

int cTooltip::DelayTime(int delay) const {
    return static_cast<int>(send(TTM_GETDELAYTIME, static_cast<WPARAM>(delay & kDelayMask)));
}

void cTooltip::setDelayTime(int delay, int milliseconds) {
    send(TTM_SETDELAYTIME, static_cast<WPARAM>(delay & kDelayMask), milliseconds);
}

COLORREF cTooltip::ForeColor() { return static_cast<COLORREF>(send(TTM_SETTIPTEXTCOLOR, 0)); }

void cTooltip::setForeColor(COLORREF color) { send(TTM_SETTIPTEXTCOLOR, color); }

RECT cTooltip::margins() const {
    RECT rect{};
    send(TTM_GETMARGIN, 0, asParameter(&rect));
    return rect;
}

int cTooltip::Margin(int side) const {
    RECT rect = margins();
    const LONG* const chosen = sideOf(rect, side);
    return chosen == nullptr ? 0 : *chosen;
}

void cTooltip::setMargin(int side, int pixels) {
    RECT rect = margins();
    if (LONG* const chosen = sideOf(rect, side)) *chosen = pixels;
    send(TTM_SETMARGIN, 0, asParameter(&rect));
}

std::int16_t cTooltip::MaxTipWidth() const {
    return static_cast<std::int16_t>(send(TTM_GETMAXTIPWIDTH));
}

void cTooltip::setMaxTipWidth(std::int16_t width) {
    send(TTM_SETMAXTIPWIDTH, 0, width < 1 ? -1 : width);
}

std::int16_t cTooltip::ToolCount() const {
    return static_cast<std::int16_t>(send(TTM_GETTOOLCOUNT));
}

std::wstring cTooltip::ToolText(const forms::Control& control) const {
    if (longestText_ == 0) return {};
    std::vector<char> text(static_cast<std::size_t>(longestText_));
    return findTool(control, text.data()) ? fromAnsi(text.data()) : std::wstring{};
}

void cTooltip::setToolText(const forms::Control& control, const std::wstring& text) {
    auto record = findTool(control);
    if (!record) return;
    std::string ansi = toAnsi(text);
    noteLength(ansi);
    record->lpszText = ansi.data();
    send(TTM_UPDATETIPTEXTA, 0, asParameter(&*record));
}
