// Cursors on trees that are made by hand: deep ones, odd but legal ones, and broken ones.
#include "engine/jet/index.h"

#include "tests/support/byte_writer.h"
#include "tests/support/index_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

namespace jet {
namespace {

constexpr PageNumber kOwner{7};
constexpr PageNumber kRoot{1};

/// An entry of a leaf: a short key and the row that it leads to.
Key entryOf(std::string_view key, RowId row) {
    Key entry{key.begin(), key.end()};
    fixture::appendBigEndian(entry, raw(row.page()), 3);
    fixture::appendBigEndian(entry, row.slot(), 1);
    return entry;
}

Key entryOf(std::string_view key, unsigned page = 100) {
    return entryOf(key, RowId{PageNumber{page}, 1});
}

Key above(Key lastEntry, unsigned child) {
    fixture::appendBigEndian(lastEntry, child, 4);
    return lastEntry;
}

struct Links {
    unsigned next = 0;
    unsigned tail = 0;
    unsigned prefix = 0;  ///< only stated: the entries must be cut already
};

/// A file of a few index pages, the root on page 1.
class TreeFile {
public:
    std::span<std::uint8_t> leaf(unsigned number, const std::vector<Key>& entries,
                                 Links links = {}) {
        return page(4, number, entries, links);
    }

    std::span<std::uint8_t> intermediate(unsigned number, const std::vector<Key>& entries,
                                         Links links = {}) {
        return page(3, number, entries, links);
    }

    std::vector<std::uint8_t> bytes() const { return bytes_; }

private:
    std::span<std::uint8_t> page(std::uint8_t type, unsigned number,
                                 const std::vector<Key>& entries, Links links) {
        bytes_.resize(std::max(bytes_.size(), (number + 1) * kPageSize));
        const auto at = std::span{bytes_}.subspan(number * kPageSize, kPageSize);
        std::fill(at.begin(), at.end(), std::uint8_t{0});
        at[0] = type;
        at[1] = 1;
        fixture::put(at, 4, raw(kOwner));
        fixture::put(at, 16, links.next);
        fixture::put(at, 20, links.tail);
        fixture::put(at, 24, static_cast<std::uint16_t>(links.prefix));
        std::size_t end = 0;
        for (const Key& entry : entries) {
            std::copy(entry.begin(), entry.end(),
                      at.begin() + 480 + static_cast<std::ptrdiff_t>(end));
            end += entry.size();
            at[27 + end / 8] = static_cast<std::uint8_t>(at[27 + end / 8] | 1u << (end % 8));
        }
        return at;
    }

    std::vector<std::uint8_t> bytes_;
};

/// A cursor on a file in memory.
class Tree {
public:
    explicit Tree(std::vector<std::uint8_t> bytes) : storage_{std::move(bytes)}, cache_{storage_} {
        definition_.page = kOwner;
        index_.root = kRoot;
    }
    explicit Tree(const TreeFile& file) : Tree{file.bytes()} {}

    IndexCursor cursor() { return {PageReader{storage_, cache_}, definition_, index_}; }

    /// The keys in the order of a walk, parted by blanks.
    std::string walk() {
        std::string keys;
        IndexCursor at = cursor();
        for (at.first(); at.valid(); at.next()) {
            keys.append(keys.empty() ? "" : " ").append(at.key().begin(), at.key().end());
        }
        return keys;
    }

    std::string seek(std::string_view key) {
        IndexCursor at = cursor();
        at.seek(Key{key.begin(), key.end()});
        return at.valid() ? std::string{at.key().begin(), at.key().end()} : "none";
    }

private:
    MemoryStorage storage_;
    PageCache cache_;
    TableDefinition definition_;
    PhysicalIndex index_;
};

std::string damageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        EXPECT_EQ(error.fault(), Fault::Damaged);
        return error.what();
    }
    return "no damage found";
}

void expectDamage(const std::function<void()>& action, const std::string& words) {
    const std::string found = damageOf(action);
    EXPECT_NE(found.find(words), std::string::npos) << found;
}

/// Expects that a walk finds the damage.
void expectDamage(const TreeFile& file, const std::string& words) {
    expectDamage([&] { Tree{file}.walk(); }, words);
}

constexpr const char* kOutOfOrder = "out of order";

TEST(IndexCursor, FindsNothingInAnEmptyIndex) {
    TreeFile file;
    file.leaf(1, {});
    EXPECT_EQ(Tree{file}.walk(), "");
    EXPECT_EQ(Tree{file}.seek("a"), "none");
}

TEST(IndexCursor, WalksOneLeaf) {
    TreeFile file;
    file.leaf(1, {entryOf("apple", 3), entryOf("apple", 4), entryOf("pear")});
    Tree tree{file};
    EXPECT_EQ(tree.walk(), "apple apple pear");
    IndexCursor cursor = tree.cursor();
    cursor.first();
    EXPECT_EQ(cursor.rowId(), RowId(PageNumber{3}, 1));
    cursor.next();
    EXPECT_EQ(cursor.rowId(), RowId(PageNumber{4}, 1));
}

TEST(IndexCursor, SeeksTheFirstKeyThatIsNotLess) {
    TreeFile file;
    file.leaf(1, {entryOf("apple"), entryOf("grape"), entryOf("pear")});
    Tree tree{file};
    EXPECT_EQ(tree.seek(""), "apple");
    EXPECT_EQ(tree.seek("apple"), "apple");
    EXPECT_EQ(tree.seek("applf"), "grape");
    EXPECT_EQ(tree.seek("gr"), "grape");
    EXPECT_EQ(tree.seek("q"), "none");
}

TEST(IndexCursor, MaySeekWhatItStandsOn) {
    TreeFile file;
    file.leaf(1, {entryOf("apple"), entryOf("grape")});
    Tree tree{file};
    IndexCursor cursor = tree.cursor();
    cursor.seek(Key{'g'});
    cursor.seek(cursor.key());
    ASSERT_TRUE(cursor.valid());
    EXPECT_EQ(std::string(cursor.key().begin(), cursor.key().end()), "grape");
}

TEST(IndexCursor, RestoresThePrefix) {
    // The prefix takes in the key and two bytes of the page number.
    const Key first = entryOf("ab", 0x010203);
    const Key second = entryOf("ab", 0x010204);
    TreeFile file;
    file.leaf(1, {first, Key(second.begin() + 4, second.end())}, {.prefix = 4});
    Tree tree{file};
    EXPECT_EQ(tree.walk(), "ab ab");
    EXPECT_EQ(tree.seek("a"), "ab");
    EXPECT_EQ(tree.seek("abc"), "none");
    EXPECT_EQ(tree.seek("aa"), "ab");
    IndexCursor cursor = tree.cursor();
    cursor.first();
    cursor.next();
    EXPECT_EQ(cursor.rowId(), RowId(PageNumber{0x010204}, 1));
}

TEST(IndexCursor, TakesTheChildBehindTheLastEntry) {
    TreeFile file;
    file.intermediate(1, {above(entryOf("b"), 2), above(entryOf("d"), 3)}, {.tail = 4});
    file.leaf(2, {entryOf("a"), entryOf("b")}, {.next = 3});
    file.leaf(3, {entryOf("c"), entryOf("d")}, {.next = 4});
    file.leaf(4, {entryOf("e")});
    Tree tree{file};
    EXPECT_EQ(tree.walk(), "a b c d e");
    EXPECT_EQ(tree.seek("b"), "b");
    EXPECT_EQ(tree.seek("bb"), "c");
    EXPECT_EQ(tree.seek("dd"), "e");
    EXPECT_EQ(tree.seek("f"), "none");
}

TEST(IndexCursor, AcceptsATreeWithoutTail) {
    TreeFile file;
    file.intermediate(1, {above(entryOf("b"), 2), above(entryOf("d"), 3)});
    file.leaf(2, {entryOf("b")}, {.next = 3});
    file.leaf(3, {entryOf("d")});
    EXPECT_EQ(Tree{file}.walk(), "b d");
    EXPECT_EQ(Tree{file}.seek("e"), "none");
}

TEST(IndexCursor, FollowsALeafThatTheTreeDoesNotKnowYet) {
    TreeFile file;
    file.intermediate(1, {above(entryOf("b"), 2)}, {.tail = 3});
    file.leaf(2, {entryOf("b")}, {.next = 3});
    file.leaf(3, {entryOf("d")}, {.next = 4});
    file.leaf(4, {entryOf("f")});
    EXPECT_EQ(Tree{file}.walk(), "b d f");
    EXPECT_EQ(Tree{file}.seek("e"), "f");
}

TEST(IndexCursor, PassesOverEmptyLeaves) {
    TreeFile file;
    file.intermediate(1, {above(entryOf("b"), 2)}, {.tail = 3});
    file.leaf(2, {}, {.next = 3});
    file.leaf(3, {}, {.next = 4, .prefix = 9});
    file.leaf(4, {entryOf("d")}, {.next = 5});
    file.leaf(5, {});
    EXPECT_EQ(Tree{file}.walk(), "d");
    EXPECT_EQ(Tree{file}.seek("a"), "d");
}

/// Trees of any depth, built from many entries.
class DeepTrees : public testing::TestWithParam<std::size_t> {};

TEST_P(DeepTrees, AreWalkedAndSearched) {
    std::mt19937 random{17};
    std::vector<Key> keys;
    for (int i = 0; i < 3000; ++i) {
        std::string key = "Notifier_MsgSvc_" + std::to_string(random() % 1500);
        keys.emplace_back(key.begin(), key.end());
        keys.back().push_back(0);  // keys end in themselves, so none begins another
    }
    std::sort(keys.begin(), keys.end());

    fixture::PageFile file;
    file.allocate();
    const PageNumber root = file.allocate();
    fixture::IndexTreeBuilder builder{file, root, kOwner, GetParam()};
    for (unsigned i = 0; i < keys.size(); ++i)
        builder.add(keys[i], RowId{PageNumber{i + 1}, i % 9});
    builder.finish();
    RecordProperty("levels", static_cast<int>(builder.depth()));

    Tree tree{file.bytes()};
    IndexCursor cursor = tree.cursor();
    cursor.first();
    for (unsigned i = 0; i < keys.size(); ++i, cursor.next()) {
        ASSERT_TRUE(cursor.valid());
        ASSERT_TRUE(std::ranges::equal(cursor.key(), keys[i]));
        ASSERT_EQ(cursor.rowId(), RowId(PageNumber{i + 1}, i % 9));
    }
    EXPECT_FALSE(cursor.valid());

    // However often a cursor walks, the leaves of a walk are no circle.
    for (int walk = 0; walk < 3; ++walk) {
        unsigned count = 0;
        for (cursor.first(); cursor.valid(); cursor.next()) ++count;
        ASSERT_EQ(count, keys.size());
    }

    for (int i = 0; i < 2000; ++i) {
        Key sought = keys[random() % keys.size()];
        if (i % 2 == 1) sought.back() = static_cast<std::uint8_t>(random());
        const auto expected = std::lower_bound(keys.begin(), keys.end(), sought);
        cursor.seek(sought);
        ASSERT_EQ(cursor.valid(), expected != keys.end());
        if (!cursor.valid()) continue;
        ASSERT_EQ(raw(cursor.rowId().page()), static_cast<unsigned>(expected - keys.begin()) + 1);
    }
}

INSTANTIATE_TEST_SUITE_P(EntriesPerPage, DeepTrees, testing::Values(2, 3, 10, 100, 10'000));

TEST(DamagedIndex, WithAPageOfAnotherKind) {
    TreeFile file;
    file.leaf(1, {entryOf("a")})[0] = 1;
    expectDamage(file, "page 1: a page of an index has the type of something else");
}

TEST(DamagedIndex, WithAPageOfAnotherTable) {
    TreeFile file;
    fixture::put(file.leaf(1, {entryOf("a")}), 4, 8u);
    expectDamage(file, "page 1: a page of an index belongs to another table");
}

TEST(DamagedIndex, WithLinksOutOfTheFile) {
    TreeFile file;
    file.intermediate(1, {above(entryOf("a"), 99)});
    expectDamage(file, "page 99");
    file.intermediate(1, {above(entryOf("a"), 0)});
    expectDamage(file, "page 0");
    file.leaf(1, {entryOf("a")}, {.next = 0xFFFFFFFF});
    expectDamage(file, "page 4294967295");
    expectDamage([] { Tree{std::vector<std::uint8_t>(kPageSize)}.walk(); }, "page 1");
}

TEST(DamagedIndex, WithNothingBelowAPage) {
    TreeFile file;
    file.intermediate(1, {});
    expectDamage(file, "page 1: an index page has no pages below it");
}

TEST(DamagedIndex, ThatIsItsOwnChild) {
    TreeFile file;
    file.intermediate(1, {above(entryOf("a"), 1)}, {.tail = 1});
    expectDamage(file, "deeper than can be");
    expectDamage([&] { Tree{file}.seek("z"); }, "deeper than can be");
}

TEST(DamagedIndex, ThatIsTooDeep) {
    TreeFile file;
    for (unsigned page = 1; page < 40; ++page) file.intermediate(page, {}, {.tail = page + 1});
    file.leaf(40, {entryOf("a")});
    expectDamage(file, "page 20: an index is deeper than can be");
}

TEST(DamagedIndex, WithLeavesInACircle) {
    TreeFile file;
    file.leaf(1, {entryOf("a")}, {.next = 2});
    file.leaf(2, {entryOf("b")}, {.next = 1});
    expectDamage(file, kOutOfOrder);
    file.leaf(1, {entryOf("a")}, {.next = 1});
    expectDamage(file, kOutOfOrder);
}

TEST(DamagedIndex, WithEmptyLeavesInACircle) {
    TreeFile file;
    file.leaf(1, {entryOf("a")}, {.next = 2});
    file.leaf(2, {}, {.next = 3});
    file.leaf(3, {}, {.next = 2});
    expectDamage(file, "form a circle");
}

TEST(DamagedIndex, WithLeavesOutOfOrder) {
    TreeFile file;
    file.leaf(1, {entryOf("c"), entryOf("d")}, {.next = 2});
    file.leaf(2, {entryOf("b")});
    expectDamage(file, kOutOfOrder);
}

TEST(DamagedIndex, WhoseLeavesContradictTheLevelAbove) {
    TreeFile file;
    file.intermediate(1, {above(entryOf("m"), 2)}, {.tail = 3});
    file.leaf(2, {entryOf("b")}, {.next = 3});
    file.leaf(3, {entryOf("c")});
    expectDamage([&] { Tree{file}.seek("k"); }, kOutOfOrder);
}

TEST(DamagedIndex, WithALeafFollowedByAnotherLevel) {
    TreeFile file;
    file.leaf(1, {entryOf("a")}, {.next = 2});
    file.intermediate(2, {above(entryOf("b"), 1)});
    expectDamage(file, "page 2: a leaf of an index is followed by no leaf");
}

TEST(DamagedIndex, WithEntriesOutOfOrder) {
    TreeFile file;
    file.leaf(1, {entryOf("b"), entryOf("a")});
    expectDamage(file, "index entries are out of order");
    file.leaf(1, {entryOf("b"), entryOf("b")});
    expectDamage(file, "index entries are out of order");
    const Key second = entryOf("ab");
    file.leaf(1, {entryOf("ac"), Key(second.begin() + 1, second.end())}, {.prefix = 1});
    expectDamage(file, "index entries are out of order");
}

TEST(DamagedIndex, WithEntriesThatAreTooShort) {
    TreeFile file;
    file.leaf(1, {Key(4)});
    expectDamage(file, "too short");
    file.intermediate(1, {Key(8)}, {.tail = 1});
    expectDamage(file, "too short");
    // A prefix does not make up for a child that is not there.
    file.intermediate(1, {above(entryOf("abc"), 1), Key(3)}, {.prefix = 7});
    expectDamage(file, "too short");
    // An entry that ends where it begins.
    file.leaf(1, {entryOf("a")})[27] = 1;
    expectDamage(file, "too short");
}

TEST(DamagedIndex, WithAPrefixLongerThanTheFirstEntry) {
    TreeFile file;
    file.leaf(1, {entryOf("a"), entryOf("b")}, {.prefix = 6});
    expectDamage(file, "the prefix of an index page is longer");
    file.leaf(1, {entryOf("a"), entryOf("b")}, {.prefix = 0xFFFF});
    expectDamage(file, "the prefix of an index page is longer");
    // The child's page is no part of what may be shared.
    file.intermediate(1, {above(entryOf("a"), 1)}, {.prefix = 6});
    expectDamage(file, "the prefix of an index page is longer");
}

TEST(DamagedIndex, WithABitmapBeyondThePage) {
    TreeFile file;
    file.leaf(1, {entryOf("a")})[27 + 452] = 0x80;
    expectDamage(file, "an index entry runs past its page");
}

TEST(DamagedIndex, WithEveryBitSet) {
    TreeFile file;
    const auto page = file.leaf(1, {});
    std::fill(page.begin() + 27, page.begin() + 480, std::uint8_t{0xFF});
    expectDamage(file, "runs past its page");
}

TEST(DamagedIndex, LeavesTheCursorNowhere) {
    TreeFile file;
    file.leaf(1, {entryOf("a")}, {.next = 2});
    file.leaf(2, {entryOf("a", 5), entryOf("a", 4)});
    Tree tree{file};
    IndexCursor cursor = tree.cursor();
    cursor.first();
    ASSERT_TRUE(cursor.valid());
    EXPECT_THROW(cursor.next(), Error);
    EXPECT_FALSE(cursor.valid());
    cursor.first();
    EXPECT_TRUE(cursor.valid());
}

}  // namespace
}  // namespace jet
