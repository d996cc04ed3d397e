#include "toolkit/grid/model/content_width.h"

namespace grid {

void ContentWidth::add(std::wstring_view text, LineBreaks breaks) {
    showable(text, breaks, most_, shown_);
    std::wstring_view rest = shown_;
    while (!rest.empty()) {
        std::size_t end = std::min(rest.find(L'\n'), rest.size());
        addPixels(measure_.width(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

}  // namespace grid
