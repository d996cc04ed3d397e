// A LoadingDisplay that writes down what it is told, one line a call.
#pragma once

#include "src/db/class_diags.h"
#include "src/db/loading_display.h"

#include <string>
#include <vector>

class RecordingDisplay : public LoadingDisplay {
public:
    void displayStatus(const std::u16string& text, bool showProgress) override {
        note(u"status " + text + (showProgress ? u" with bar" : u""));
    }
    void hideStatus() override { note(u"status hidden"); }
    void setNotice(const std::u16string& text) override {
        notice = text;
        note(u"notice " + text);
    }
    void setPosition(const std::u16string& text) override {
        position = text;
        note(u"position " + text);
    }
    void setMousePointer(MousePointer newPointer) override {
        pointer = newPointer;
        note(newPointer == MousePointer::Default     ? u"pointer default"
             : newPointer == MousePointer::Hourglass ? u"pointer hourglass"
                                                     : u"pointer arrow and hourglass");
    }
    void rowsArrived() override { ++arrivals; }
    std::int64_t gridRowCount() override {
        const ado::Recordset& rows = diags()->rsDiags();
        return rows.state() == ado::adStateClosed ? 0 : rows.recordCount();
    }
    void runWhilePainting(const std::function<void()>& work) override {
        ++works;
        work();
    }
    void sortByDate() override {
        note(u"sorted");
        diags()->rsDiags().setSort(u"Date ASC");
    }

    /// How many of the lines begin so.
    std::size_t count(std::u16string_view beginning) const {
        std::size_t found = 0;
        for (const std::u16string& line : lines) found += line.starts_with(beginning) ? 1u : 0u;
        return found;
    }

    std::vector<std::u16string> lines;
    std::u16string notice;
    std::u16string position;
    MousePointer pointer = MousePointer::Default;
    int arrivals = 0;
    int works = 0;  ///< that the window was painted during

private:
    void note(std::u16string line) { lines.push_back(std::move(line)); }
};
