#include "src/search/find_history.h"

#include <algorithm>

FindHistory::Use FindHistory::use(const std::u16string& text) {
    const auto known = std::find(texts_.begin(), texts_.end(), text);
    if (known != texts_.end()) return {static_cast<int>(known - texts_.begin()), false};
    texts_.insert(texts_.begin(), text);
    return {0, true};
}
