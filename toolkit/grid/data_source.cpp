#include "toolkit/grid/data_source.h"

#include <windows.h>

#include <map>

namespace grid {
namespace {

struct ByLanguage {
    bool operator()(const std::wstring& a, const std::wstring& b) const {
        const int order =
            ::CompareStringEx(LOCALE_NAME_USER_DEFAULT, 0, a.data(), static_cast<int>(a.size()),
                              b.data(), static_cast<int>(b.size()), nullptr, nullptr, 0);
        // Texts that the language takes for the same are still two texts.
        return order == CSTR_EQUAL ? a < b : order == CSTR_LESS_THAN;
    }
};

}  // namespace

std::vector<std::uint32_t> DataSource::valueRanks(int column) const {
    std::map<std::wstring, std::vector<std::uint32_t>, ByLanguage> rowsByText;
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
