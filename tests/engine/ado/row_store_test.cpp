// Packed columns and dictionaries: every value comes back bit for bit, in few bytes.
#include "engine/ado/row_store.h"

#include "engine/jet/database.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace ado;

struct Packed {
    Packed(Scale scale, std::vector<std::int64_t> values, std::vector<std::uint8_t> nulls = {}) {
        nulls.resize(values.size());
        packing = Packing::of(scale, values, nulls);
        bytes.resize(packing.byteCount());
        packing.write(values, nulls, bytes.data());
        column = PackedColumn{packing, bytes.data()};
    }

    Packing packing;
    std::vector<std::uint8_t> bytes;
    PackedColumn column;
};

std::int64_t bits(double number) { return std::bit_cast<std::int64_t>(number); }

TEST(PackedColumn, WholeNumbersTakeTheWidthOfTheirRange) {
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    const std::vector<std::pair<std::vector<std::int64_t>, unsigned>> cases{
        {{5, 5, 5}, 0},
        {{-100, 155}, 1},
        {{-100, 156}, 2},
        {{1'000'000, 1'065'535}, 2},
        {{0, 65'536}, 4},
        {{-5, 4'294'967'289}, 4},
        {{0, 4'294'967'295}, 8},
        {{kMin, kMax, 0}, 8},
        {{kMax}, 0},
        {{kMin, kMin + 7}, 1}};
    for (const auto& [values, width] : cases) {
        const Packed packed{Scale::Whole, values};
        EXPECT_EQ(packed.packing.width, width);
        for (std::size_t i = 0; i < values.size(); ++i) {
            EXPECT_FALSE(packed.column.isNull(i));
            EXPECT_EQ(packed.column.whole(i), values[i]);
        }
    }
}

TEST(PackedColumn, NullsInEveryWidth) {
    for (const std::int64_t range : {0LL, 1LL, 254LL, 255LL, 70'000LL, 5'000'000'000LL}) {
        const Packed packed{Scale::Whole, {-3, 77, -3 + range, 99}, {0, 1, 0, 1}};
        EXPECT_FALSE(packed.column.isNull(0));
        EXPECT_TRUE(packed.column.isNull(1));
        EXPECT_TRUE(packed.column.isNull(3));
        EXPECT_EQ(packed.column.whole(0), -3);
        EXPECT_EQ(packed.column.whole(2), -3 + range);
    }
    const Packed none{Scale::Whole, {7, 7}, {1, 1}};
    EXPECT_TRUE(none.column.isNull(0));
    EXPECT_TRUE(none.column.isNull(1));
    EXPECT_TRUE(none.bytes.empty());
}

TEST(PackedColumn, DatesComeBackBitForBit) {
    fixture::Random random{1};
    const auto widthOf = [](const std::vector<double>& dates, Unit unit) {
        std::vector<std::int64_t> values;
        for (const double date : dates) values.push_back(bits(date));
        const Packed packed{Scale::Date, values};
        EXPECT_EQ(packed.column.unit(), unit);
        for (std::size_t i = 0; i < dates.size(); ++i) {
            EXPECT_EQ(bits(packed.column.real(i)), values[i]) << dates[i];
        }
        return packed.packing.width;
    };
    std::vector<double> seconds;
    std::vector<double> milliseconds;
    std::vector<double> noise;
    for (int i = 0; i < 1000; ++i) {
        const double day = 45'000 + random.below(300);
        const double second = random.below(86'400);
        // As a program computes it that adds the time to the day.
        seconds.push_back(day + second / 86'400);
        milliseconds.push_back(day + random.below(86'400'000) / 86'400'000.0);
        noise.push_back(day + static_cast<double>(random.next() >> 11) * 0x1p-53);
    }
    EXPECT_EQ(widthOf(seconds, Unit::Seconds), 4);
    widthOf(milliseconds, Unit::Milliseconds);
    EXPECT_EQ(widthOf(noise, Unit::Bits), 8);
    widthOf({0.0, -1.25, -657'434.0, 2'958'465.99998842592}, Unit::Seconds);
    widthOf({0.0, -0.0}, Unit::Bits);
    widthOf({std::numeric_limits<double>::quiet_NaN(), 1e300,
             -std::numeric_limits<double>::infinity(), 5e-324},
            Unit::Bits);
}

TEST(PackedColumn, RealNumbersThatAreWholeArePackedAsSuch) {
    const Packed whole{Scale::Real, {bits(1.0), bits(250.0), bits(-3.0)}};
    EXPECT_EQ(whole.packing.width, 1);
    EXPECT_EQ(whole.column.real(2), -3.0);
    const Packed real{Scale::Real, {bits(1.5), bits(-0.0), 0}, {0, 0, 1}};
    EXPECT_EQ(real.packing.width, 8);
    EXPECT_EQ(real.column.real(0), 1.5);
    EXPECT_TRUE(std::signbit(real.column.real(1)));
    EXPECT_TRUE(real.column.isNull(2));
}

jet::Bytes bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(Dictionary, KnownTextsKeepTheirCode) {
    Dictionary dictionary;
    std::vector<std::string> texts;
    for (int i = 0; i < 3000; ++i) texts.push_back("text number " + std::to_string(i));
    texts.push_back("");
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(dictionary.code(bytesOf(texts[i]), 1'000'000, 10 * i), i);
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(dictionary.code(bytesOf(texts[i]), 1'000'000, 100'000), i);
        const jet::Bytes stored = dictionary.stored(static_cast<std::uint32_t>(i));
        ASSERT_EQ((std::string{stored.begin(), stored.end()}), texts[i]);
    }
    EXPECT_EQ(dictionary.size(), texts.size());
}

/// Among so many texts there are some that stand next to each other with the same 16 bits of hash:
/// only their bytes tell them apart, wherever the difference is.
TEST(Dictionary, TextsOfOneHashAreToldApartByEveryByte) {
    constexpr std::uint32_t kTexts = 60'000;
    struct Form {
        std::size_t length;
        std::size_t place;  ///< of the three digits that differ
    };
    for (const auto& [length, place] :
         {Form{6, 1}, Form{7, 3}, Form{12, 0}, Form{12, 8}, Form{24, 0}, Form{24, 10}, Form{24, 20},
          Form{20, 8}, Form{60, 25}, Form{60, 56}}) {
        for (std::uint32_t round = 0; round < 12; ++round) {
            Dictionary dictionary;
            std::string text(length, static_cast<char>('a' + round));
            for (std::uint32_t i = 0; i < kTexts; ++i) {
                for (std::size_t digit = 0; digit < 3; ++digit) {
                    text[place + digit] = static_cast<char>(' ' + (i >> (6 * digit)) % 64);
                }
                ASSERT_EQ(dictionary.code(bytesOf(text), 1'000'000'000, 10 * i), i)
                    << length << " from " << place;
            }
        }
    }
}

TEST(Dictionary, RefusesWhatWouldNotPay) {
    const auto accepted = [](std::uint64_t rows, std::uint64_t every, std::size_t length) {
        Dictionary dictionary;
        std::uint64_t count = 0;
        for (; count < 100'000; ++count) {
            std::string text = std::to_string(count);
            text.resize(length, '.');
            if (dictionary.code(bytesOf(text), rows, count * every) == Dictionary::kNoCode) break;
        }
        EXPECT_EQ(dictionary.size(), count);
        return count;
    };
    EXPECT_EQ(accepted(100'000'000, 1, 10), 4096u) << "nearly every text is another one";
    EXPECT_EQ(accepted(100'000'000, 10, 10), 65'535u) << "codes of two bytes";
    EXPECT_LT(accepted(1000, 10, 100), 200u) << "more bytes than rows";
    EXPECT_GT(accepted(0, 1000, 10), 1000u) << "a table with a stale count";
}

/// Rows of a table with one text column, appended as a fetch does.
TEST(RowStore, TextsWithManyValuesStayInTheFileFromSomeRowOn) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"T",
         .columns = {fixture::textColumn(u"Few", 50), fixture::textColumn(u"Many", 50)}});
    for (int i = 0; i < 9000; ++i) {
        const std::string number = std::to_string(i);
        table.insert({i % 3 == 0 ? u"a" : u"b",
                      u"identifier " + std::u16string{number.begin(), number.end()}});
    }
    const auto database =
        jet::Database::open(std::make_unique<jet::MemoryStorage>(builder.bytes()));
    const auto read = database->table(u"T");
    const auto& columns = read->definition().columns;
    RowStore store{{&columns[0], &columns[1]}, 9000};
    jet::TableScan scan{*read};
    std::vector<jet::LostField> lost;
    while (scan.next()) store.append(scan.rowId(), scan.record(), lost);
    EXPECT_TRUE(lost.empty());
    EXPECT_EQ(store.count(), 9000 / RowStore::kGroupRows * RowStore::kGroupRows);
    store.finish();
    ASSERT_EQ(store.count(), 9000u);
    EXPECT_EQ(store.packed(8999, 0).unit(), Unit::Whole);
    EXPECT_EQ(store.packed(8999, 1).unit(), Unit::None);
    EXPECT_EQ(store.dictionary(0)->size(), 2u);
    jet::PageReader pages = read->pageReader();
    jet::Record record;
    EXPECT_TRUE(read->find(pages, store.rowId(8999), record));
}

TEST(RowStore, PublishedGroupsAreReplacedByFullerOnes) {
    fixture::FixtureBuilder builder;
    auto& table =
        builder.addTable({.name = u"T", .columns = {fixture::column(u"N", jet::ColumnType::Long)}});
    for (int i = 0; i < 3000; ++i) table.insert({i * i % 7919});
    const auto database =
        jet::Database::open(std::make_unique<jet::MemoryStorage>(builder.bytes()));
    const auto read = database->table(u"T");
    RowStore store{{&read->definition().columns[0]}, 3000};
    jet::TableScan scan{*read};
    std::vector<jet::LostField> lost;
    for (std::uint32_t row = 0; scan.next(); ++row) {
        store.append(scan.rowId(), scan.record(), lost);
        if (row % 97 == 0) store.publish();
        if (row % 10 == 0) store.publishIfDoubled();
        for (std::uint32_t i = row > 100 ? row - 100 : 0; i < store.count(); ++i) {
            ASSERT_EQ(store.packed(i, 0).whole(i % RowStore::kGroupRows),
                      static_cast<std::int64_t>(i) * i % 7919);
        }
    }
    store.finish();
    EXPECT_EQ(store.count(), 3000u);
}

TEST(RowStore, RowsThatDoubledAreShown) {
    fixture::FixtureBuilder builder;
    auto& table =
        builder.addTable({.name = u"T", .columns = {fixture::column(u"N", jet::ColumnType::Long)}});
    for (int i = 0; i < 500; ++i) table.insert({i});
    const auto database =
        jet::Database::open(std::make_unique<jet::MemoryStorage>(builder.bytes()));
    const auto read = database->table(u"T");
    RowStore store{{&read->definition().columns[0]}, 500};
    jet::TableScan scan{*read};
    int times = 0;
    std::vector<jet::LostField> lost;
    for (std::uint32_t row = 1; scan.next(); ++row) {
        const std::uint32_t shown = store.count();
        store.append(scan.rowId(), scan.record(), lost);
        store.publishIfDoubled();
        times += store.count() != shown ? 1 : 0;
        ASSERT_GE(2 * store.count(), row);
    }
    EXPECT_EQ(times, 9) << "after 1, 2, 4, ..., 256 rows";
}

}  // namespace
