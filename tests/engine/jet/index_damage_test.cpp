// Random damage to the index pages of real files: a walk or a search gives entries or throws
// jet::Error, in bounded time, and reads nothing that is not there.
#include "engine/jet/database.h"
#include "engine/jet/index.h"
#include "engine/jet/usage_map.h"
#include "tests/engine/jet/sample_files.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace jet {
namespace {

using FileBytes = std::vector<std::uint8_t>;

FileBytes contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
}

/// What a walk needs of a file that is whole.
struct Tree {
    TableDefinition definition;
    PhysicalIndex index;
    std::vector<PageNumber> pages;
};

std::vector<Tree> treesOf(const std::shared_ptr<Database>& database) {
    std::vector<Tree> trees;
    PageReader pages{database->storage(), database->cache()};
    for (const CatalogEntry& entry : database->catalog()) {
        if (!entry.isTable()) continue;
        const auto definition = TableDefinition::read(pages, PageNumber{entry.id}, entry.name);
        for (const PhysicalIndex& index : definition.physicalIndexes) {
            trees.push_back({definition, index, readUsageMap(pages, index.map)});
        }
    }
    return trees;
}

/// Damages one byte, or a field as a whole, of a page.
void damage(std::span<std::uint8_t> page, fixture::Random& random) {
    const auto byte = [&] { return static_cast<std::uint8_t>(random.next()); };
    switch (random.below(4)) {
        case 0:  // links, tail, prefix, level
            page[12 + random.below(15)] = byte();
            break;
        case 1:  // bitmap
            page[27 + random.below(453)] ^= static_cast<std::uint8_t>(1u << random.below(8));
            break;
        case 2:  // entries
            page[480 + random.below(600)] = byte();
            break;
        default:
            page[random.below(kPageSize)] = byte();
    }
}

struct Outcome {
    int whole = 0;
    int refused = 0;
};

/// Steps are bounded by what the file can hold: no page has more entries than bytes for them.
void walkAndSearch(const Storage& storage, const Tree& tree, fixture::Random& random,
                   Outcome& outcome) {
    PageCache cache{storage};
    IndexCursor cursor{PageReader{storage, cache}, tree.definition, tree.index};
    try {
        const std::uint64_t most = std::uint64_t{storage.pageCount()} * 3616;
        std::uint64_t steps = 0;
        Key sought;
        for (cursor.first(); cursor.valid(); cursor.next()) {
            ASSERT_LT(++steps, most);
            static_cast<void>(cursor.rowId());
            if (random.oneIn(8)) sought.assign(cursor.key().begin(), cursor.key().end());
        }
        cursor.seek(sought);
        ++outcome.whole;
    } catch (const Error& error) {
        ASSERT_EQ(error.fault(), Fault::Damaged) << error.what();
        ASSERT_FALSE(cursor.valid());
        ++outcome.refused;
    }
}

TEST(IndexDamage, IsFoundOrHarmless) {
    const auto files = sample::databases();
    if (files.empty()) {
        GTEST_SKIP() << fixture::kNoTestData;
    }

    fixture::Random random{1120};
    Outcome outcome;
    for (const auto& file : files) {
        const FileBytes original = contentOf(file);
        const auto trees = treesOf(Database::open(std::make_unique<MemoryStorage>(original)));
        for (int round = 0; round < 60; ++round) {
            const Tree& tree = random.pick(std::span<const Tree>{trees});
            FileBytes bytes = original;
            for (auto hits = random.between(1, 8); hits > 0; --hits) {
                const auto page = random.pick(std::span<const PageNumber>{tree.pages});
                damage(std::span{bytes}.subspan(raw(page) * kPageSize, kPageSize), random);
            }
            walkAndSearch(MemoryStorage{std::move(bytes)}, tree, random, outcome);
            if (HasFatalFailure()) return;
        }
    }
    RecordProperty("whole", outcome.whole);
    RecordProperty("refused", outcome.refused);
    EXPECT_GT(outcome.whole, 0);
    EXPECT_GT(outcome.refused, 0);
}

}  // namespace
}  // namespace jet
