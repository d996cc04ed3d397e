#include "toolkit/grid/model/grouping.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>

namespace grid {
namespace {

// What the view shows, a line a row: "g0:5" for a group of level 0 with five rows, else the row.
std::vector<std::string> shown(const Grouping& grouping) {
    std::vector<std::string> lines;
    for (RowIndex view = 0; view < grouping.viewCount(); ++view) {
        const Grouping::Place place = grouping.at(view);
        if (place.group == kNoGroup) {
            lines.push_back(std::to_string(place.row));
        } else {
            const Grouping::Group& group = grouping.group(place.group);
            lines.push_back("g" + std::to_string(group.level) + ":" +
                            std::to_string(group.rowCount));
        }
    }
    return lines;
}

using Lines = std::vector<std::string>;

TEST(Grouping, WithoutLevelsEveryRowStandsForItself) {
    const Grouping none;
    EXPECT_FALSE(none.active());
    EXPECT_EQ(none.at(40'000'000'000).row, 40'000'000'000);
    EXPECT_EQ(none.viewOf(17), 17);
    EXPECT_EQ(none.groupOf(17), kNoGroup);
}

TEST(Grouping, IsFoldedAtFirst) {
    const Grouping grouping(5, {{{1, 0, 1, 2, 0}}});
    EXPECT_EQ(shown(grouping), (Lines{"g0:2", "g0:2", "g0:1"}));
    EXPECT_EQ(grouping.groupCount(), 3);
    EXPECT_EQ(grouping.firstRowOf(0), 1);
}

TEST(Grouping, UnfoldedGroupsShowTheirRowsInTheirOrder) {
    Grouping grouping(5, {{{1, 0, 1, 2, 0}}});
    grouping.setUnfolded({0, 1}, true);
    EXPECT_EQ(shown(grouping), (Lines{"g0:2", "1", "4", "g0:2", "0", "2", "g0:1"}));
    grouping.setUnfolded({0}, false);
    EXPECT_EQ(shown(grouping), (Lines{"g0:2", "g0:2", "0", "2", "g0:1"}));
}

TEST(Grouping, ADescendingLevelTurnsTheGroupsRoundNotTheRows) {
    Grouping grouping(5, {{{1, 0, 1, 2, 0}, true}});
    grouping.setAllUnfolded(true);
    EXPECT_EQ(shown(grouping), (Lines{"g0:1", "3", "g0:2", "0", "2", "g0:2", "1", "4"}));
}

TEST(Grouping, LevelsNest) {
    Grouping grouping(6, {{{0, 1, 0, 1, 0, 1}}, {{5, 5, 3, 5, 5, 3}}});
    EXPECT_EQ(shown(grouping), (Lines{"g0:3", "g0:3"}));
    grouping.setUnfolded({0}, true);
    EXPECT_EQ(shown(grouping), (Lines{"g0:3", "g1:1", "g1:2", "g0:3"}));
    grouping.setAllUnfolded(true);
    EXPECT_EQ(shown(grouping), (Lines{"g0:3", "g1:1", "2", "g1:2", "0", "4", "g0:3", "g1:1", "5",
                                      "g1:2", "1", "3"}));
    // A group folded with open ones in it opens as it was.
    grouping.setUnfolded({0}, false);
    EXPECT_EQ(shown(grouping), (Lines{"g0:3", "g0:3", "g1:1", "5", "g1:2", "1", "3"}));
    grouping.setUnfolded({0}, true);
    EXPECT_EQ(grouping.viewCount(), 12);
}

TEST(Grouping, ARowFoldedAwayIsFoundInItsOutermostFoldedGroup) {
    Grouping grouping(6, {{{0, 1, 0, 1, 0, 1}}, {{5, 5, 3, 5, 5, 3}}});
    EXPECT_EQ(grouping.viewOf(5), 1);
    grouping.setUnfolded({3}, true);
    EXPECT_EQ(shown(grouping), (Lines{"g0:3", "g0:3", "g1:1", "g1:2"}));
    EXPECT_EQ(grouping.viewOf(5), 2);
    EXPECT_EQ(grouping.viewOf(3), 3);
    EXPECT_TRUE(grouping.reveal(3));
    EXPECT_EQ(grouping.at(grouping.viewOf(3)).row, 3);
    EXPECT_FALSE(grouping.reveal(3));
    EXPECT_EQ(grouping.viewOf(6), kNoRow) << "no such row";
    EXPECT_EQ(grouping.viewOf(kNoRow), kNoRow);
}

TEST(Grouping, NoRowsNoGroups) {
    Grouping grouping(0, {{}});
    EXPECT_TRUE(grouping.active());
    EXPECT_EQ(grouping.viewCount(), 0);
    EXPECT_EQ(grouping.groupOf(0), kNoGroup);
    grouping.setAllUnfolded(true);
    EXPECT_EQ(grouping.viewCount(), 0);
}

// Against a plain model: sorted, cut into groups, walked.
TEST(Grouping, AgreesWithAPlainModel) {
    std::mt19937 random(7);
    for (int round = 0; round < 60; ++round) {
        const auto rows = static_cast<std::uint32_t>(random() % 80);
        const std::size_t levelCount = 1 + random() % 3;
        std::vector<Grouping::Level> levels(levelCount);
        for (Grouping::Level& level : levels) {
            level.descending = random() % 2 != 0;
            for (std::uint32_t row = 0; row < rows; ++row) {
                level.ranks.push_back(static_cast<std::uint32_t>(random() % 4));
            }
        }
        Grouping grouping(rows, levels);
        grouping.setAllUnfolded(true);

        using Path = std::vector<std::int64_t>;
        const auto pathOf = [&](std::uint32_t row) {
            Path path;
            for (const Grouping::Level& level : levels) {
                const std::int64_t rank = level.ranks[row];
                path.push_back(level.descending ? -rank : rank);
            }
            return path;
        };
        std::map<Path, std::vector<std::uint32_t>> model;
        for (std::uint32_t row = 0; row < rows; ++row) {
            model[pathOf(row)].push_back(row);
        }
        std::vector<RowIndex> expected;
        for (const auto& [path, members] : model) {
            expected.insert(expected.end(), members.begin(), members.end());
        }
        std::vector<RowIndex> found;
        for (RowIndex view = 0; view < grouping.viewCount(); ++view) {
            const Grouping::Place place = grouping.at(view);
            if (place.group == kNoGroup) {
                EXPECT_EQ(grouping.viewOf(place.row), view);
                found.push_back(place.row);
            } else {
                EXPECT_EQ(grouping.viewOfGroup(place.group), view);
            }
        }
        EXPECT_EQ(found, expected);

        // Fold at random: every row is on view or in a folded group that is.
        for (int group = 0; group < grouping.groupCount(); ++group) {
            grouping.setUnfolded({group}, random() % 2 != 0);
        }
        for (std::uint32_t row = 0; row < rows; ++row) {
            const Grouping::Place place = grouping.at(grouping.viewOf(row));
            if (place.group == kNoGroup) {
                EXPECT_EQ(place.row, row);
            } else {
                EXPECT_FALSE(grouping.group(place.group).unfolded);
                int around = grouping.groupOf(row);
                while (around != kNoGroup && around != place.group) {
                    around = grouping.group(around).parent;
                }
                EXPECT_EQ(around, place.group);
            }
        }
    }
}

}  // namespace
}  // namespace grid
