// The texts searched for, newest first, as listed in the find dialog.
//
//   const FindHistory::Use use = history.use(text);
//   if (use.added) comboFindWhat.addItem(toWide(text), use.index);
//   comboFindWhat.setListIndex(use.index);
//
// The user-interface thread.
#pragma once

#include <string>
#include <vector>

class FindHistory {
public:
    struct Use {
        int index = 0;       ///< the text's position in the list
        bool added = false;  ///< it is new, and the first
    };

    /// Called for every search. A known text keeps its position; case-sensitive.
    Use use(const std::u16string& text);

    const std::vector<std::u16string>& texts() const { return texts_; }

private:
    std::vector<std::u16string> texts_;
};
