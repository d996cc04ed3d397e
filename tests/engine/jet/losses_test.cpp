#include "engine/jet/losses.h"

#include "engine/jet/database.h"
#include "engine/jet/table.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"
#include "tests/support/external_program.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>

namespace jet {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

Loss rowLoss(int slot) { return {Loss::Kind::Rows, PageNumber{17}, slot, "a record is cut short"}; }

TEST(Losses, AreCountedByTheirKind) {
    Losses losses;
    EXPECT_FALSE(losses.any());
    EXPECT_EQ(losses.summary(), "nothing");
    losses.add(rowLoss(1));
    losses.add(rowLoss(2));
    EXPECT_EQ(losses.summary(), "2 rows");
    losses.add({Loss::Kind::Pages, PageNumber{3}, Loss::kNoSlot, "gone"});
    EXPECT_EQ(losses.summary(), "2 rows and 1 page");
    losses.add({Loss::Kind::MissingPages, PageNumber{99}, Loss::kNoSlot, "cut off"}, 40);
    EXPECT_EQ(losses.summary(), "2 rows, 1 page and 40 pages behind the end");
    EXPECT_EQ(losses.missingPages, 40u);
    EXPECT_TRUE(losses.any());
}

TEST(Losses, EveryKindIsALossButAHint) {
    for (const auto kind :
         {Loss::Kind::Rows, Loss::Kind::Pages, Loss::Kind::Values, Loss::Kind::MissingPages,
          Loss::Kind::Tables, Loss::Kind::Definitions}) {
        Losses losses;
        losses.add({kind, kNoPage, Loss::kNoSlot, "?"});
        EXPECT_TRUE(losses.any());
        EXPECT_NE(losses.summary(), "nothing");
    }
    Losses hint;
    hint.add({Loss::Kind::Hints, kNoPage, Loss::kNoSlot, "fewer rows than counted"});
    EXPECT_FALSE(hint.any());
    EXPECT_THAT(hint.reasons, SizeIs(1));
}

TEST(Losses, AddUpAndKeepTheFirstReasons) {
    Losses sum;
    for (int scan = 0; scan < 4; ++scan) {
        Losses losses;
        for (int slot = 0; slot < 4; ++slot) losses.add(rowLoss(4 * scan + slot));
        sum += losses;
    }
    EXPECT_EQ(sum.rows, 16u);
    EXPECT_THAT(sum.reasons, SizeIs(Losses::kMaxReasons));
    EXPECT_EQ(sum.reasons.front().slot, 0);
    EXPECT_EQ(sum.reasons.back().slot, 9);
}

TEST(Losses, AReasonSaysWhere) {
    EXPECT_EQ(toText(rowLoss(3)), "row 3 of page 17: a record is cut short");
    EXPECT_EQ(toText(Loss{Loss::Kind::Values, PageNumber{17}, 3, "it is gone"}),
              "value of row 3 of page 17: it is gone");
    EXPECT_EQ(toText(Loss{Loss::Kind::Pages, PageNumber{9}, Loss::kNoSlot, "zeros"}),
              "page 9: zeros");
    EXPECT_EQ(toText(Loss{Loss::Kind::Tables, PageNumber{9}, Loss::kNoSlot, "zeros"}),
              "table on page 9: zeros");
    EXPECT_EQ(toText(Loss{Loss::Kind::Hints, kNoPage, Loss::kNoSlot, "fewer"}), "hint: fewer");
}

/// A table of two pages, the second of which is of another kind.
fixture::ByteVector withABadPage() {
    fixture::FixtureBuilder builder;
    auto& table = builder.addTable(
        {.name = u"Numbers", .columns = {fixture::column(u"N", ColumnType::Long)}});
    for (int n = 0; n < 300; ++n) table.insert({n});
    fixture::ByteVector file = builder.bytes();
    file[std::size_t{raw(table.dataPages().at(1))} * kPageSize] = 0x04;
    return file;
}

TEST(DatabaseLosses, TheFirstOneIsKnownToTheConnection) {
    const auto database = Database::open(std::make_unique<MemoryStorage>(withABadPage()));
    const auto table = database->table(u"Numbers");
    EXPECT_EQ(database->firstLoss(), std::nullopt);
    TableScan scan{*table};
    while (scan.next()) {
    }
    ASSERT_TRUE(database->firstLoss());
    EXPECT_EQ(database->firstLoss()->kind, Loss::Kind::Pages);
    EXPECT_EQ(scan.losses().reasons.at(0), *database->firstLoss());

    database->noteLoss(rowLoss(1));
    EXPECT_EQ(database->firstLoss()->kind, Loss::Kind::Pages);
    EXPECT_FALSE(database->losses().any()) << "opening lost nothing";
}

TEST(DatabaseLosses, AHintIsNoLoss) {
    const auto database = Database::open(std::make_unique<MemoryStorage>(withABadPage()));
    database->noteLoss({Loss::Kind::Hints, kNoPage, Loss::kNoSlot, "fewer rows"});
    EXPECT_EQ(database->firstLoss(), std::nullopt);
}

TEST(DatabaseLosses, AListenerHearsEach) {
    const auto database = Database::open(std::make_unique<MemoryStorage>(withABadPage()));
    std::vector<std::string> heard;
    database->setLossListener([&](const Loss& loss) { heard.push_back(toText(loss)); });
    const auto table = database->table(u"Numbers");
    for (int pass = 0; pass < 2; ++pass) {
        TableScan scan{*table};
        while (scan.next()) {
        }
    }
    EXPECT_THAT(heard, ElementsAre(HasSubstr("a data page was expected"), HasSubstr("own count"),
                                   HasSubstr("a data page was expected"), HasSubstr("own count")));
    database->setLossListener({});
    TableScan scan{*table};
    while (scan.next()) {
    }
    EXPECT_THAT(heard, SizeIs(4));
}

// --- The table's own count -------------------------------------------------------------------

struct Counted {
    fixture::FixtureBuilder builder;
    fixture::TableBuilder& table = builder.addTable(
        {.name = u"Numbers", .columns = {fixture::column(u"N", ColumnType::Long)}});
    Counted() {
        for (int n = 0; n < 300; ++n) table.insert({n});
    }

    static Losses scanned(std::unique_ptr<Storage> storage) {
        const auto database = Database::open(std::move(storage));
        const auto table = database->table(u"Numbers");
        TableScan scan{*table};
        while (scan.next()) {
        }
        EXPECT_FALSE(scan.next());
        return scan.losses();
    }
    static Losses scanned(const fixture::ByteVector& file) {
        return scanned(std::make_unique<MemoryStorage>(file));
    }
};

// Slots that are marked deleted, or a lower number of slots, took rows away without a word.
TEST(RowCount, FewerRowsThanCountedAreAHint) {
    Counted counted;
    fixture::ByteVector file = counted.builder.bytes();
    EXPECT_EQ(Counted::scanned(file), Losses{});
    const std::size_t page = fixture::pageOffset(counted.table.dataPages().at(0));
    for (const std::size_t slot : {5u, 9u}) {
        std::uint8_t& flags = file[page + 14 + 2 * slot + 1];
        flags = static_cast<std::uint8_t>(flags | 0xC0);  // deleted
    }
    const Losses losses = Counted::scanned(file);
    EXPECT_FALSE(losses.any());
    ASSERT_EQ(losses.hints, 1u);
    EXPECT_THAT(losses.reasons.at(0).why,
                HasSubstr("own count of the table Numbers is 300, found 298"));
}

TEST(RowCount, MoreRowsThanCountedAreNone) {
    Counted counted;
    fixture::ByteVector file = counted.builder.bytes();
    fixture::poke32(file, fixture::pageOffset(counted.table.definitionPage()) + 16, 250);
    EXPECT_EQ(Counted::scanned(file).hints, 0u);
}

TEST(RowCount, AFileThatIsOpenElsewhereMayChangeMeanwhile) {
    Counted counted;
    fixture::ByteVector file = counted.builder.bytes();
    fixture::poke32(file, fixture::pageOffset(counted.table.definitionPage()) + 16, 321);
    const fixture::TemporaryFolder folder;
    const auto path = folder.write("numbers.mdb", file);
    EXPECT_EQ(Counted::scanned(openFile(path)).hints, 1u);
    folder.write("numbers.ldb", {});
    EXPECT_EQ(Counted::scanned(openFile(path)).hints, 0u);
}

}  // namespace
}  // namespace jet
