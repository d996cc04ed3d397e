#include "toolkit/grid/model/data_source.h"

#include "tests/toolkit/grid/trace_source.h"

#include <gtest/gtest.h>

namespace grid {
namespace {

using Ranks = std::vector<std::uint32_t>;

TEST(DataSource, RanksTheTextsOfAColumn) {
    TraceSource source(5);
    const wchar_t* const texts[] = {L"delta", L"alpha", L"", L"delta", L"beta"};
    for (int row = 0; row < 5; ++row) {
        source.put(row, TraceSource::kSource, texts[row]);
    }
    EXPECT_EQ(source.valueRanks(TraceSource::kSource), (Ranks{3, 1, 0, 3, 2}));
    source.setRowCount(0);
    EXPECT_TRUE(source.valueRanks(TraceSource::kSource).empty());
}

}  // namespace
}  // namespace grid
