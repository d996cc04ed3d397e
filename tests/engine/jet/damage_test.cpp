// Damaged files of every kind: whatever stands in them, they are read as far as they can be or
// refused, in bounded time and memory.
#include "tests/support/damage.h"

#include "engine/jet/format/page.h"
#include "engine/jet/usage_map.h"
#include "tests/engine/jet/allocation_watch.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/read_everything.h"
#include "tests/engine/jet/sample_files.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/random.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

namespace jet {
namespace {

using fixture::ByteVector;
using fixture::Random;

/// A list of all pages that a file can have takes 2 MiB, whatever the file's own size.
constexpr std::size_t kMaxPageListBytes = format::page::kMaxCount * sizeof(PageNumber);

/// Reads the file and checks what holds for any file.
std::optional<Survey> survive(const ByteVector& file) {
    largestAllocation = 0;
    std::optional<Survey> survey;
    try {
        survey = readEverything(file);
        EXPECT_LE(survey->rows, (survey->tables + 1) * (file.size() / kPageSize) * 256);
    } catch (const Error& error) {
        EXPECT_FALSE(std::string_view{error.what()}.empty());
        EXPECT_NE(error.fault(), Fault::ReadFailed) << error.what();
        EXPECT_NE(error.fault(), Fault::FileNotFound) << error.what();
    }
    EXPECT_LE(largestAllocation, 4 * file.size() + 2 * kMaxPageListBytes);
    return survey;
}

// --- Random damage ---------------------------------------------------------------------------

/// Moved, deleted and short rows, long values of all forms, a definition over several pages.
ByteVector builtDatabase() {
    fixture::FixtureBuilder builder;
    fixture::TraceOptions options;
    options.rows = 120;
    fixture::addTraceTables(builder, options, fixture::TraceFormat::Newer);
    auto& used =
        builder.addTable({.name = u"Used",
                          .columns = {fixture::column(u"N", ColumnType::Long),
                                      fixture::textColumn(u"T", 100), fixture::memoColumn(u"M")},
                          .maps = fixture::MapForm::Reference});
    std::vector<RowId> rows;
    const auto row = [](int n, std::size_t text, std::size_t memo) {
        return fixture::Row{n, std::u16string(text, u't'), std::u16string(memo, u'm')};
    };
    for (int n = 0; n < 60; ++n) rows.push_back(used.insert(row(n, 5, n % 9 == 0 ? 6000 : 90)));
    for (std::size_t n = 0; n < 60; n += 7) used.moveRow(rows[n], row(1000, 100, 3000));
    for (std::size_t n = 3; n < 60; n += 11) used.deleteRow(rows[n]);
    used.addColumn(fixture::column(u"Late", ColumnType::Date));
    used.insert({1, u"x", fixture::kNull, Date{38000.5}});
    fixture::TableSpec wide{.name = u"Wide"};
    for (int i = 0; i < 130; ++i) {
        const std::string number = std::to_string(i);
        wide.columns.push_back(fixture::textColumn(
            u"column number " + std::u16string{number.begin(), number.end()}, 9));
    }
    builder.addTable(wide).insert({u"a", u"b"});
    return builder.bytes();
}

std::vector<ByteVector> victims() {
    std::vector<ByteVector> files{builtDatabase()};
    for (const auto& path : sample::databases()) {
        const std::string name = path.stem().string();
        if (name != "old-mixed" && name != "old-orphans" && name != "delColTestV2000") continue;
        std::ifstream in{path, std::ios::binary};
        files.emplace_back(std::istreambuf_iterator<char>{in}, std::istreambuf_iterator<char>{});
    }
    return files;
}

class Vandal {
public:
    explicit Vandal(std::uint64_t seed) : random_{seed} {}

    ByteVector damage(ByteVector file) {
        for (std::uint32_t blow = random_.between(1, 8); blow > 0; --blow) strike(file);
        return file;
    }

private:
    void strike(ByteVector& file) {
        switch (random_.below(16)) {
            case 0:
                return swapPages(file);
            case 1:
                return copyPage(file);
            case 2:
                return emptyPage(file);
            case 3:
                return fixture::truncate(
                    file, file.size() - random_.below(static_cast<std::uint32_t>(file.size() / 8)));
            case 4:
            case 5:
                return setWord(file, slotWord(file));
            case 6:
            case 7:
            case 8:
            case 9:
                return setWord(file, anywhere(file));
            default:
                file[anywhere(file)] ^= static_cast<std::uint8_t>(1u << random_.below(8));
        }
    }

    std::uint32_t pages(const ByteVector& file) const {
        return static_cast<std::uint32_t>(file.size() / kPageSize);
    }

    /// Rarely the first page: most of what is wrong there ends the matter at once.
    std::size_t page(const ByteVector& file) {
        return random_.oneIn(20) ? 0 : (1 + random_.below(pages(file) - 1)) * kPageSize;
    }

    /// The beginning of a page, where its structure is, or the beginning of its rows, or any place.
    std::size_t anywhere(const ByteVector& file) {
        const std::size_t begin = page(file);
        return begin + (random_.oneIn(2) ? random_.below(90) : random_.below(kPageSize - 4));
    }

    std::size_t slotWord(const ByteVector& file) { return page(file) + 12 + 2 * random_.below(40); }

    void setWord(ByteVector& file, std::size_t at) {
        static constexpr std::uint32_t kTelling[] = {
            0,       1,          4,          13,         255,        256,       0xFFF,
            0x1000,  0x1FFF,     0x4000,     0x7FFF,     0x8000,     0xC000,    0xFFFF,
            0x10000, 0x7FFFFFFF, 0x80000000, 0x40000000, 0x3FFFFFFF, 0xFFFFFFFF};
        const std::uint32_t word = random_.oneIn(3) ? random_.below(pages(file)) << 8
                                                    : kTelling[random_.below(std::size(kTelling))];
        if (random_.oneIn(2)) {
            fixture::poke32(file, at, word);
        } else {
            fixture::poke16(file, at, static_cast<std::uint16_t>(word));
        }
    }

    void swapPages(ByteVector& file) {
        const auto first = file.begin() + static_cast<std::ptrdiff_t>(page(file));
        const auto second = file.begin() + static_cast<std::ptrdiff_t>(page(file));
        if (first != second) std::swap_ranges(first, first + kPageSize, second);
    }

    void copyPage(ByteVector& file) {
        const std::size_t from = page(file);
        const std::size_t to = page(file);
        std::copy_n(ByteVector{file}.begin() + static_cast<std::ptrdiff_t>(from), kPageSize,
                    file.begin() + static_cast<std::ptrdiff_t>(to));
    }

    void emptyPage(ByteVector& file) {
        const auto fill = static_cast<std::uint8_t>(random_.oneIn(2) ? 0 : 0xFF);
        std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(page(file)), kPageSize, fill);
    }

    Random random_;
};

TEST(RandomDamage, IsReadOrRefused) {
    Vandal vandal{1625};
    std::size_t survivors = 0;
    std::size_t rows = 0;
    constexpr std::size_t kRounds = 500;
    const std::vector<ByteVector> files = victims();
    for (const ByteVector& file : files) {
        for (std::size_t round = 0; round < kRounds; ++round) {
            const auto survey = survive(vandal.damage(file));
            ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
            survivors += survey.has_value();
            rows += survey ? survey->rows : 0;
        }
    }
    // Most of the damage is local: the files open, and most of their rows are read.
    EXPECT_GE(survivors, files.size() * kRounds / 2);
    EXPECT_GE(rows, survivors * 100);
}

TEST(RandomDamage, OneBlowEach) {
    const ByteVector file = builtDatabase();
    const Survey whole = *survive(file);
    EXPECT_EQ(whole.losses.rows + whole.losses.pages + whole.refused, 0u);
    Random random{1923};
    for (int round = 0; round < 800; ++round) {
        ByteVector damaged = file;
        damaged[kPageSize + random.below(static_cast<std::uint32_t>(file.size() - kPageSize))] ^=
            static_cast<std::uint8_t>(random.between(1, 255));
        survive(damaged);
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    }
}

/// A byte that is wrong on a page of rows costs rows of that page only.
TEST(RandomDamage, CostsNoMoreThanThePage) {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Rows",
         .columns = {fixture::column(u"N", ColumnType::Long), fixture::textColumn(u"T", 100)}});
    std::map<PageNumber, std::size_t> rowsOf;
    for (int n = 0; n < 2000; ++n) ++rowsOf[table.insert({n, std::u16string(40, u't')}).page()];
    const ByteVector& file = builder.bytes();
    const std::size_t all = survive(file)->rows;
    Random random{2000};
    for (const auto& [page, rows] : rowsOf) {
        for (int round = 0; round < 8; ++round) {
            ByteVector damaged = file;
            const std::size_t offset =
                random.oneIn(2) ? random.below(200) : random.below(kPageSize);
            damaged[fixture::pageOffset(page) + offset] ^=
                static_cast<std::uint8_t>(random.between(1, 255));
            const auto survey = survive(damaged);
            ASSERT_TRUE(survey);
            ASSERT_GE(survey->rows, all - rows) << "page " << raw(page) << " offset " << offset;
            ASSERT_LE(survey->rows, all + 256);
        }
    }
}

TEST(RandomDamage, CutAtEveryPage) {
    const ByteVector file = builtDatabase();
    for (std::size_t length = 0; length < file.size(); length += 1024) {
        ByteVector cut = file;
        fixture::truncate(cut, length);
        EXPECT_EQ(survive(cut).has_value(), length >= 3 * kPageSize) << length;
    }
}

// --- Malice ----------------------------------------------------------------------------------

struct Victim {
    fixture::FixtureBuilder builder;
    fixture::TableBuilder& table = builder.addTable(
        {.name = u"Rows",
         .columns = {fixture::column(u"N", ColumnType::Long), fixture::memoColumn(u"M", false),
                     fixture::textColumn(u"T", 200, false)}});
    std::vector<RowId> ids;
    std::size_t systemRows = 0;
    ByteVector file;

    Victim() {
        for (int n = 0; n < 50; ++n) {
            const auto memo =
                fixture::longValue(std::u16string(6000, u'm'), fixture::LongForm::Chain);
            ids.push_back(table.insert({n, memo, std::u16string(90, u't')}));
        }
        file = builder.bytes();
        systemRows = survive(file)->rows - 50;
    }

    std::size_t rows() const { return survive(file).value().rows - systemRows; }
    std::size_t memoHeader(std::size_t n) const {
        return fixture::longValueHeaderOffset(file, ids[n], 0);
    }
    RowId memo(std::size_t n) const {
        return RowId::fromPacked(fixture::get<std::uint32_t>(file, memoHeader(n) + 4));
    }
};

TEST(Malice, EveryMemoIsARing) {
    Victim victim;
    for (std::size_t n = 0; n < 50; ++n) fixture::loopChain(victim.file, victim.memo(n));
    EXPECT_EQ(victim.rows(), 0u);
}

TEST(Malice, EveryMemoRunsThroughAllTheOthers) {
    Victim victim;
    const auto& pages = victim.table.longValuePages(u"M");
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const RowId next{pages[(i + 1) % pages.size()], 0};
        fixture::poke32(victim.file, fixture::rowOffset(victim.file, {pages[i], 0}), next.packed());
    }
    for (std::size_t n = 0; n < 50; ++n)
        fixture::poke32(victim.file, victim.memoHeader(n), 0x3FFFFFFF);
    EXPECT_EQ(victim.rows(), 0u);
}

TEST(Malice, HugeLengths) {
    for (const std::uint32_t word : {0x3FFFFFFFu, 0x7FFFFFFFu, 0xBFFFFFFFu, 0xFFFFFFFFu}) {
        Victim victim;
        for (std::size_t n = 0; n < 50; ++n)
            fixture::poke32(victim.file, victim.memoHeader(n), word);
        EXPECT_EQ(victim.rows(), 0u);
    }
}

TEST(Malice, RowsThatPointToThemselves) {
    Victim victim;
    for (const RowId id : victim.ids) {
        const std::size_t slot = fixture::slotOffset(id);
        fixture::poke32(victim.file, fixture::rowOffset(victim.file, id), id.packed());
        fixture::poke16(
            victim.file, slot,
            static_cast<std::uint16_t>(fixture::get<std::uint16_t>(victim.file, slot) | 0x4000));
    }
    EXPECT_EQ(victim.rows(), 0u);
}

TEST(Malice, EverySlotOverlapsTheOthers) {
    Victim victim;
    for (const PageNumber page : victim.table.dataPages()) {
        fixture::poke16(victim.file, fixture::pageOffset(page) + 12, 256);
        for (unsigned slot = 0; slot < 256; ++slot) {
            fixture::poke16(victim.file, fixture::slotOffset({page, slot}),
                            slot % 3 == 0 ? 0x1000 : 600);
        }
    }
    // On the last page the second slot shows zeros, which are a record without columns; on the
    // others it shows bytes of rows. All other slots are empty or overlap.
    EXPECT_EQ(victim.rows(), 1u);
}

TEST(Malice, OffsetsOfFieldsThatDescend) {
    Victim victim;
    for (const RowId id : victim.ids) {
        const std::size_t end =
            fixture::rowOffset(victim.file, id) + fixture::rowLength(victim.file, id);
        // The two starts and the end stand before the count and the mask of one byte.
        const std::size_t starts = end - 1 - 2 - 4;
        const auto later = fixture::get<std::uint16_t>(victim.file, starts);
        fixture::poke16(victim.file, starts, fixture::get<std::uint16_t>(victim.file, starts + 2));
        fixture::poke16(victim.file, starts + 2, later);
    }
    EXPECT_EQ(victim.rows(), 0u);
}

TEST(Malice, TheTableOwnsEveryPageThatCanBe) {
    Victim victim;
    const RowId map = victim.table.parts().maps.owned;
    const std::size_t row = fixture::rowOffset(victim.file, map);
    // By reference now, and every slot leads to a bitmap page that is full.
    const PageNumber bitmap = victim.table.longValuePages(u"M").back();
    std::fill_n(victim.file.begin() + static_cast<std::ptrdiff_t>(fixture::pageOffset(bitmap)),
                kPageSize, std::uint8_t{0xFF});
    victim.file[fixture::pageOffset(bitmap)] = 5;
    victim.file[row] = 1;
    for (std::size_t at = 1; at + 4 <= fixture::rowLength(victim.file, map); at += 4) {
        fixture::poke32(victim.file, row + at, raw(bitmap));
    }
    EXPECT_EQ(victim.rows(), 49u);  // one memo lost its last page
}

TEST(Malice, AMapThatIsARowOfItsOwnTable) {
    Victim victim;
    fixture::poke32(victim.file, fixture::pageOffset(victim.table.definitionPage()) + 55,
                    victim.ids[0].packed());
    survive(victim.file);
    fixture::poke32(victim.file, fixture::pageOffset(victim.table.definitionPage()) + 55,
                    0xFFFFFFFF);
    EXPECT_EQ(survive(victim.file)->refused, 0u);
    EXPECT_EQ(victim.rows(), 50u);
}

TEST(Malice, ADefinitionThatNeverEnds) {
    Victim victim;
    const PageNumber page = victim.table.definitionPage();
    fixture::poke32(victim.file, fixture::pageOffset(page) + 4, raw(page));
    fixture::poke32(victim.file, fixture::pageOffset(page) + 8, 0xFFFFFFFF);
    EXPECT_EQ(survive(victim.file)->refused, 0u);
    EXPECT_EQ(victim.rows(), 50u);
}

TEST(Malice, MoreColumnsThanThereAre) {
    Victim victim;
    const std::size_t definition = fixture::pageOffset(victim.table.definitionPage());
    for (const std::uint16_t count : std::initializer_list<std::uint16_t>{4, 255, 256, 0xFFFF}) {
        fixture::poke16(victim.file, definition + 45, count);
        EXPECT_EQ(survive(victim.file)->refused, 0u);
        EXPECT_EQ(victim.rows(), 50u);
    }
}

/// The catalog's own definition describes all tables: nothing of it may be trusted.
TEST(Malice, TheCatalogDescribesItselfWrongly) {
    const Victim victim;
    Random random{4096};
    for (int round = 0; round < 600; ++round) {
        ByteVector file = victim.file;
        for (int blow = 0; blow < 3; ++blow) {
            file[2 * kPageSize + 8 + random.below(700)] =
                static_cast<std::uint8_t>(random.oneIn(2) ? random.next() : 0xFF);
        }
        survive(file);
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    }
}

}  // namespace
}  // namespace jet
