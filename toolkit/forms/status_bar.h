// StatusBar: a bar at the lower edge of a form, divided into panels.
//
//   forms::StatusBar statusbarMain{{{.key = L"keyPanel1", .width = PanelWidth::spring},
//                                   {.key = L"keyClock", .kind = PanelKind::clock}}};
//   statusbarMain.panel(1).setText(L"Loading...");
//   statusbarMain.panel(L"keyPanel1").setText(L"");
//
// The bar docks by itself; its place in the form's table is ignored. Panels are counted from 1.
// Windows is told only of texts that changed, so setting the same text repeatedly is cheap. The
// user-interface thread.
#pragma once

#include "toolkit/forms/control.h"

#include <deque>
#include <string>
#include <vector>

namespace forms {

/// What determines a panel's width: a fixed width; the remaining room, shared among the springs; or
/// the panel's text.
enum class PanelWidth { fixed, spring, content };

/// A clock shows the time of day in the user's format.
enum class PanelKind { text, clock };

struct PanelSpec {
    std::wstring key = {};
    PanelWidth width = PanelWidth::fixed;
    /// The fixed width, or the minimum of the others. If there is not enough room, unused width is
    /// given up first.
    Twips twips = Twips(1440);
    PanelKind kind = PanelKind::text;
};

class StatusBar : public Control {
public:
    class Panel {
    public:
        const std::wstring& key() const { return spec_.key; }
        const std::wstring& text() const { return text_; }
        /// Control characters are shown as blanks.
        void setText(const std::wstring& text);
        Twips width() const;

    private:
        friend class StatusBar;
        Panel(StatusBar& bar, int index, const PanelSpec& spec)
            : bar_(bar), index_(index), spec_(spec) {}

        StatusBar& bar_;
        int index_;
        PanelSpec spec_;
        std::wstring text_;
    };

    explicit StatusBar(const std::vector<PanelSpec>& panels = {});

    void setPanels(const std::vector<PanelSpec>& panels);
    int panelCount() const { return static_cast<int>(panels_.size()); }
    /// Both throw std::out_of_range.
    Panel& panel(int number);
    Panel& panel(const std::wstring& key);

    void parentResized() override;

protected:
    Kind kind() const override;
    void created() override;
    void fontChanged() override;
    void dpiChanged() override;
    RECT adjustedBounds(const RECT& wanted) const override;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void dock();
    void layOut();
    void shrink(std::vector<int>& widths, int missing) const;
    void share(std::vector<int>& widths, int spare) const;
    int textInPixels(const Panel& panel) const;
    int widthInPixels(const Panel& panel) const;
    void showText(const Panel& panel);
    void showTime();
    bool hasClock() const;

    std::deque<Panel> panels_;
    std::vector<int> edges_;  // As the control has them.
};

}  // namespace forms
