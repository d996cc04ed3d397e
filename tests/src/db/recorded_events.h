// Writes down what the opening of a database tells, a line an event, and does with the records what
// the main window does: sorts them when all are there.
//
//   RecordedEvents events;
//   diags() = std::make_unique<classDiags>(pump, events);
#pragma once

#include "src/db/class_diags.h"
#include "src/text/text.h"

#include <string>
#include <vector>

class RecordedEvents : public LoadingEvents {
public:
    void openingBegins() override { note(u"opening begins"); }
    void openingEnds() override { note(u"opening ends"); }
    void upgradeBegins() override { note(u"upgrade begins"); }
    void upgradeEnds() override { note(u"upgrade ends"); }
    void loadBegins() override {
        loading = true;
        note(u"load begins");
    }
    void loadRefused() override {
        loading = false;
        note(u"load refused");
    }
    void rowsLoaded(std::uint32_t count) override { note(u"rows " + toText(count)); }
    void loadEnded(const LoadResult& result) override {
        loading = false;
        lost = result.lost;
        note(result.error == nullptr ? u"load ended"
                                     : u"load ended: " + result.error->description());
        diags()->rsDiags().setSort(u"Date ASC");
    }
    void computingBegins() override { note(u"computing begins"); }
    void computingEnds() override { note(u"computing ends"); }

    /// How many of the lines begin so.
    std::size_t count(std::u16string_view beginning) const {
        std::size_t found = 0;
        for (const std::u16string& line : lines) found += line.starts_with(beginning) ? 1u : 0u;
        return found;
    }

    std::vector<std::u16string> lines;
    bool loading = false;
    jet::Losses lost;

private:
    void note(std::u16string line) { lines.push_back(std::move(line)); }
};
