// The checker on files that are damaged at random: it ends, and says something sensible.
#include "tests/engine/jet/allocation_watch.h"
#include "tests/engine/jet/check/check_support.h"
#include "tests/support/random.h"

namespace jet {
namespace {

using fixture::Random;

/// Lists of pages and of findings grow with the file only.
void survive(const fixture::ByteVector& file) {
    largestAllocation = 0;
    try {
        const CheckReport report = checkBytes(file);
        EXPECT_LE(report.findings.size(), 2 * CheckReport::kMaxKept);
        EXPECT_LE(report.rows, file.size() / kPageSize * 256);
        EXPECT_EQ(report.sound(), report.errors == 0);
        for (const Finding& finding : report.findings) EXPECT_FALSE(finding.message.empty());
    } catch (const Error& error) {
        EXPECT_NE(error.fault(), Fault::ReadFailed) << error.what();
        EXPECT_NE(error.fault(), Fault::Damaged) << error.what();
    }
    EXPECT_LE(largestAllocation, 4 * file.size() + (std::size_t{1} << 20));
}

TEST(CheckDamage, OneByte) {
    const fixture::ByteVector sound = CheckSample{}.file;
    Random random{4071};
    std::size_t found = 0;
    constexpr int kRounds = 1200;
    for (int round = 0; round < kRounds; ++round) {
        fixture::ByteVector file = sound;
        // The beginnings of pages have the most to damage.
        const auto pages = static_cast<std::uint32_t>(file.size() / kPageSize);
        const std::size_t page = random.below(pages) * kPageSize;
        const std::size_t at = page + random.below(random.oneIn(2) ? 120 : kPageSize);
        file[at] ^= static_cast<std::uint8_t>(random.between(1, 255));
        survive(file);
        ASSERT_FALSE(HasFailure()) << "round " << round << ", byte " << at;
        try {
            found += checkBytes(file).findings.empty() ? 0 : 1;
        } catch (const Error&) {
            ++found;
        }
    }
    // The rest hit bytes that nobody uses, or values that nothing depends on.
    EXPECT_GE(found, kRounds / 3);
}

TEST(CheckDamage, ManyWords) {
    const fixture::ByteVector sound = CheckSample{}.file;
    Random random{4072};
    for (int round = 0; round < 400; ++round) {
        fixture::ByteVector file = sound;
        const auto pages = static_cast<std::uint32_t>(file.size() / kPageSize);
        const auto places = static_cast<std::uint32_t>(file.size() - kPageSize - 4);
        for (std::uint32_t blow = random.between(1, 40); blow > 0; --blow) {
            const std::size_t at = kPageSize + random.below(places);
            const std::uint32_t word = random.oneIn(2)
                                           ? random.below(pages) << (random.oneIn(2) ? 8 : 0)
                                           : static_cast<std::uint32_t>(random.next());
            random.oneIn(2) ? fixture::poke32(file, at, word)
                            : fixture::poke16(file, at, static_cast<std::uint16_t>(word));
        }
        survive(file);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST(CheckDamage, PagesInEachOthersPlace) {
    const fixture::ByteVector sound = CheckSample{}.file;
    Random random{4073};
    for (int round = 0; round < 300; ++round) {
        fixture::ByteVector file = sound;
        const auto pages = static_cast<std::uint32_t>(file.size() / kPageSize);
        const auto begin = [&] {
            return sound.begin() + static_cast<std::ptrdiff_t>(random.below(pages) * kPageSize);
        };
        for (std::uint32_t i = random.between(1, 3); i > 0; --i) {
            const auto from = begin();
            std::copy_n(from, kPageSize, file.begin() + (begin() - sound.begin()));
        }
        survive(file);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

TEST(CheckDamage, CutAnywhere) {
    const fixture::ByteVector sound = CheckSample{}.file;
    for (std::size_t length = 0; length < sound.size(); length += 1536) {
        fixture::ByteVector file = sound;
        fixture::truncate(file, length);
        survive(file);
        try {
            EXPECT_FALSE(checkBytes(file).sound()) << length;
        } catch (const Error& error) {
            EXPECT_LT(length, 3 * kPageSize) << error.what();
        }
    }
}

/// Every table of the catalog says that the whole file is its own.
TEST(CheckDamage, EverybodyOwnsEverything) {
    fixture::FixtureBuilder builder;
    std::vector<fixture::TableBuilder*> tables;
    for (int i = 0; i < 60; ++i) {
        const std::string number = std::to_string(i);
        tables.push_back(
            &builder.addTable({.name = u"T" + std::u16string{number.begin(), number.end()},
                               .columns = {fixture::memoColumn(u"M")}}));
        for (int n = 0; n < 20; ++n) tables.back()->insert({std::u16string(3000, u'm')});
    }
    fixture::ByteVector file = builder.bytes();
    for (const auto* table : tables) {
        for (const RowId map : {table->parts().maps.owned, table->parts().maps.free}) {
            std::fill_n(
                file.begin() + static_cast<std::ptrdiff_t>(fixture::rowOffset(file, map) + 5), 64,
                std::uint8_t{0xFF});
        }
    }
    survive(file);
    EXPECT_GT(checkBytes(file).errors, CheckReport::kMaxKept);
}

}  // namespace
}  // namespace jet
