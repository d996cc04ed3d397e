#include "toolkit/grid/model/data_source.h"

#include "toolkit/grid/model/text_order.h"

#include <map>

namespace grid {

std::vector<std::uint32_t> DataSource::valueRanks(int column) const {
    std::map<std::wstring, std::vector<std::uint32_t>, TextOrder> rowsByText;
    std::wstring text;
    const auto count = static_cast<std::uint32_t>(rowCount());
    for (std::uint32_t row = 0; row < count; ++row) {
        text.clear();
        cellText(row, column, text);
        rowsByText[text].push_back(row);
    }
    std::vector<std::uint32_t> ranks(count);
    std::uint32_t rank = 0;
    for (const auto& [value, rows] : rowsByText) {
        for (const std::uint32_t row : rows) {
            ranks[row] = rank;
        }
        ++rank;
    }
    return ranks;
}

}  // namespace grid
