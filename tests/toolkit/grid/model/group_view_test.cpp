#include "toolkit/grid/model/group_view.h"

#include "tests/toolkit/grid/trace_source.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace grid {
namespace {

constexpr int kComponent = TraceSource::kComponent;  // Dialer, Queue, Session, Store
constexpr int kProcess = TraceSource::kProcess;      // CallServer, NodeMgr, Router
constexpr int kLevel = TraceSource::kLevel;

class GroupViewTest : public testing::Test {
protected:
    void groupBy(std::vector<GroupColumn> columns) {
        view.setColumns(std::move(columns));
        view.group(source);
    }
    std::wstring text(int group) const { return view.text(group, L"Heading", source); }
    bool unfolded(int group) const { return view.grouping().group(group).unfolded; }

    TraceSource source{120};
    GroupView view;
};

TEST_F(GroupViewTest, WithoutColumnsThereAreNoGroups) {
    view.group(source);
    EXPECT_FALSE(view.active());
    EXPECT_EQ(view.levelOf(kComponent), kNoLevel);
    EXPECT_EQ(view.groupAt(3), kNoGroup);
    EXPECT_EQ(view.grouping().viewOf(7), 7);
}

TEST_F(GroupViewTest, GroupsByTheValuesOfTheSource) {
    groupBy({{kComponent}, {kProcess, true}});
    EXPECT_TRUE(view.active());
    EXPECT_EQ(view.grouping().groupCount(), 4 + 12);
    EXPECT_EQ(text(0), L"Heading: Dialer  (30)");
    EXPECT_EQ(text(1), L"Heading: Router  (10)") << "the inner level descends";
    EXPECT_EQ(view.levelOf(kComponent), 0);
    EXPECT_EQ(view.levelOf(kProcess), 1);
    EXPECT_EQ(view.levelOf(kLevel), kNoLevel);
}

TEST_F(GroupViewTest, RowsThatCameLaterAreGroupedWhenAsked) {
    groupBy({{kComponent}});
    source.setRowCount(200);
    EXPECT_EQ(view.grouping().rowCount(), 120);
    view.group(source);
    EXPECT_EQ(view.grouping().rowCount(), 200);
}

using Columns = std::vector<GroupColumn>;

TEST_F(GroupViewTest, TellsTheColumnsAfterAColumnCameOrWent) {
    view.setColumns({{1}, {2, true}, {3}});
    EXPECT_EQ(view.with(9, 0), (Columns{{9}, {1}, {2, true}, {3}}));
    EXPECT_EQ(view.with(9, 3), (Columns{{1}, {2, true}, {3}, {9}}));
    EXPECT_EQ(view.with(2, 0), (Columns{{2, true}, {1}, {3}})) << "it keeps its direction";
    EXPECT_EQ(view.with(1, 2), (Columns{{2, true}, {1}, {3}})) << "counted with itself in place";
    EXPECT_EQ(view.with(1, 3), (Columns{{2, true}, {3}, {1}}));
    EXPECT_EQ(view.with(2, 1), view.columns());
    EXPECT_EQ(view.with(2, 2), view.columns());
    EXPECT_EQ(view.without(2), (Columns{{1}, {3}}));
    EXPECT_EQ(view.without(9), view.columns());
    EXPECT_EQ(view.reversed(1), (Columns{{1}, {2, false}, {3}}));
    EXPECT_EQ(view.reversed(0), (Columns{{1, true}, {2, true}, {3}}));
}

TEST_F(GroupViewTest, UnfoldedGroupsAreRecognisedByTheirValues) {
    groupBy({{kComponent}});
    view.setUnfolded(2, true, source);
    view.group(source);
    EXPECT_TRUE(unfolded(2));
    EXPECT_FALSE(unfolded(1));
    // Reversed, Session is the second group.
    groupBy(view.reversed(0));
    EXPECT_EQ(text(1), L"Heading: Session  (30)");
    EXPECT_TRUE(unfolded(1));
    EXPECT_FALSE(unfolded(2));
    view.setUnfolded(1, false, source);
    view.group(source);
    EXPECT_FALSE(unfolded(1)) << "folded again";
}

TEST_F(GroupViewTest, UnfoldedAllStaysSoButForThoseFoldedSince) {
    groupBy({{kComponent}});
    view.setAllUnfolded(true);
    view.setUnfolded(3, false, source);
    view.group(source);
    EXPECT_TRUE(unfolded(0));
    EXPECT_TRUE(unfolded(2));
    EXPECT_FALSE(unfolded(3));
    view.setUnfolded(3, true, source);
    view.group(source);
    EXPECT_TRUE(unfolded(3));
    view.setUnfolded(3, false, source);
    view.setAllUnfolded(false);
    view.setAllUnfolded(true);
    view.group(source);
    EXPECT_TRUE(unfolded(3)) << "all means all";
}

TEST_F(GroupViewTest, FoldingIsKeptOnTheLevelsThatStay) {
    groupBy({{kComponent}, {kProcess}});
    view.setUnfolded(0, true, source);
    view.setUnfolded(1, true, source);
    groupBy({{kComponent}, {kLevel}});
    EXPECT_TRUE(unfolded(0));
    EXPECT_FALSE(unfolded(1));
    groupBy({{kComponent}, {kProcess}});
    EXPECT_FALSE(unfolded(1)) << "what was inner is forgotten";
    groupBy({{kLevel}});
    groupBy({{kComponent}});
    EXPECT_FALSE(unfolded(0));
}

TEST_F(GroupViewTest, UnfoldedAllEndsWithTheOutermostColumn) {
    groupBy({{kComponent}});
    view.setAllUnfolded(true);
    groupBy({{kComponent}, {kProcess}});
    EXPECT_TRUE(unfolded(0));
    EXPECT_TRUE(unfolded(1));
    groupBy({{kProcess}});
    EXPECT_FALSE(unfolded(0));
}

TEST_F(GroupViewTest, GroupsOfOneValueInDifferentParentsFoldByThemselves) {
    groupBy({{kComponent}, {kProcess}});
    view.setUnfolded(0, true, source);
    view.setUnfolded(4, true, source);
    view.setUnfolded(5, true, source);
    view.group(source);
    EXPECT_TRUE(unfolded(5));
    EXPECT_FALSE(unfolded(1)) << "the same process in another component";
}

TEST_F(GroupViewTest, ARevealedRowStaysRevealed) {
    groupBy({{kComponent}, {kProcess}});
    EXPECT_TRUE(view.reveal(17, source));
    EXPECT_FALSE(view.reveal(17, source)) << "it is on view";
    EXPECT_EQ(view.grouping().at(view.grouping().viewOf(17)).row, 17);
    view.group(source);
    EXPECT_EQ(view.grouping().at(view.grouping().viewOf(17)).row, 17);
    EXPECT_FALSE(view.reveal(5000, source)) << "in no group";
}

TEST_F(GroupViewTest, RowsOfGroupsAreKnownByTheirPlaceInTheView) {
    groupBy({{kComponent}});
    view.setUnfolded(1, true, source);
    EXPECT_EQ(view.groupAt(0), 0);
    EXPECT_EQ(view.groupAt(1), 1);
    EXPECT_EQ(view.groupAt(2), kNoGroup) << "a row of the source";
    EXPECT_EQ(view.groupAt(32), 2);
    EXPECT_EQ(view.groupAt(33), 3);
    EXPECT_EQ(view.groupAt(34), kNoGroup) << "below the last row";
    EXPECT_EQ(view.groupAt(kNoRow), kNoGroup);
}

TEST_F(GroupViewTest, TheRowNearAGroupIsItsOwnOrThatOfOneAroundIt) {
    groupBy({{kComponent}, {kProcess}});
    EXPECT_EQ(view.viewNear(6), 1) << "within the second component, which is folded";
    EXPECT_EQ(view.viewNear(4), 1);
    view.setUnfolded(4, true, source);
    EXPECT_EQ(view.viewNear(6), 3);
    EXPECT_EQ(view.viewNear(kNoGroup), kNoRow);
}

TEST_F(GroupViewTest, ClearForgetsEverything) {
    groupBy({{kComponent}});
    view.setAllUnfolded(true);
    view.clear();
    EXPECT_TRUE(view.columns().empty());
    EXPECT_FALSE(view.active());
    groupBy({{kComponent}});
    EXPECT_FALSE(unfolded(0));
}

TEST_F(GroupViewTest, ASourceThatThrowsLeavesTheGroupsAsTheyWere) {
    class Failing : public TraceSource {
    public:
        using TraceSource::TraceSource;
        std::vector<std::uint32_t> valueRanks(int) const override {
            throw std::runtime_error("gone");
        }
    };
    groupBy({{kComponent}});
    const Failing failing(10);
    EXPECT_THROW(view.group(failing), std::runtime_error);
    EXPECT_EQ(view.grouping().rowCount(), 120);
}

TEST_F(GroupViewTest, RowsThatComeWhileItGroupsAreLeftForTheNextTime) {
    class Growing : public TraceSource {
    public:
        using TraceSource::TraceSource;
        std::vector<std::uint32_t> valueRanks(int) const override { return {1, 0, 1, 0, 1}; }
    };
    const Growing growing(4);
    view.setColumns({{kComponent}});
    view.group(growing);
    EXPECT_EQ(view.grouping().rowCount(), 4);
    EXPECT_EQ(view.grouping().group(0).rowCount, 2u);
    EXPECT_EQ(view.grouping().group(1).rowCount, 2u);
}

TEST_F(GroupViewTest, RowsThatHaveNoRankYetAreInTheFirstGroup) {
    class Slow : public TraceSource {
    public:
        using TraceSource::TraceSource;
        std::vector<std::uint32_t> valueRanks(int) const override { return {1, 0}; }
    };
    const Slow slow(4);
    view.setColumns({{kComponent}});
    view.group(slow);
    EXPECT_EQ(view.grouping().group(0).rowCount, 3u);
}

}  // namespace
}  // namespace grid
