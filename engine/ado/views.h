// The recordsets that show one set of rows: the one that was opened and its clones.
//
//   ado::Views views;
//   views.add(recordset);
//   views.each([&](ado::Recordset& view) { show(view.recordCount()); });
//
// One thread: the owner's.
#pragma once

#include <algorithm>
#include <vector>

namespace ado {

class Recordset;

class Views {
public:
    void add(Recordset& view) { views_.push_back(&view); }
    void remove(Recordset& view) { std::erase(views_, &view); }

    /// Calls `action` for each view. It may add and remove views: one that has been removed is not
    /// visited, as it may have been destroyed, nor is one that has been added.
    template <typename Action>
    void each(Action action) const {
        for (Recordset* const view : std::vector{views_}) {
            if (std::find(views_.begin(), views_.end(), view) != views_.end()) action(*view);
        }
    }

private:
    std::vector<Recordset*> views_;
};

}  // namespace ado
