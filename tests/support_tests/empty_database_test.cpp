// The empty database, against figures and bytes of a file that the original engine made.
#include "tests/support/expected.h"
#include "tests/support/fixture_builder.h"
#include "tests/support/header_page.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <iterator>

namespace fixture {
namespace {

const ByteVector& emptyDatabase() {
    static const ByteVector bytes = FixtureBuilder{}.bytes();
    return bytes;
}

ByteVector page(std::size_t number) {
    const auto first = emptyDatabase().begin() + static_cast<std::ptrdiff_t>(number * 4096);
    return {first, first + 4096};
}

ByteVector slice(std::size_t pageNumber, std::size_t offset, std::size_t count) {
    const ByteVector whole = page(pageNumber);
    const auto first = whole.begin() + static_cast<std::ptrdiff_t>(offset);
    return {first, first + static_cast<std::ptrdiff_t>(count)};
}

TEST(EmptyDatabase, HasSixteenPages) { EXPECT_EQ(emptyDatabase().size(), 65536u); }

TEST(EmptyDatabase, FreeFieldsAreThoseOfTheEngine) {
    static constexpr std::array<std::uint16_t, 16> kFree{
        0,      0x0F64, 0x0BDE, 0x0EA9, 0x0DEB, 0x0CCB, 0x0759, 0x0D6F,
        0x0DD8, 0x0D90, 0x0E20, 0x0E20, 0x0E20, 0x0E20, 0x0D48, 0x0EA2};
    for (std::size_t i = 1; i < kFree.size(); ++i) {
        EXPECT_EQ(get<std::uint16_t>(page(i), 2), kFree[i]) << "page " << i;
    }
}

TEST(EmptyDatabase, CatalogRowsStandWhereTheEnginePutsThem) {
    static constexpr std::array<std::uint16_t, 8> kObjects{0xFB5, 0xF64, 0xF0B, 0xEC0,
                                                           0xE6B, 0xE1C, 0xDC7, 0xD66};
    for (std::size_t i = 0; i < kObjects.size(); ++i) {
        EXPECT_EQ(get<std::uint16_t>(page(14), 14 + 2 * i), kObjects[i]);
    }
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(get<std::uint16_t>(page(15), 14 + 2 * i), 0xFED - 0x13 * i);
    }
}

TEST(EmptyDatabase, RightsRowHasTheBytesOfTheEngine) {
    const ByteVector expected{0x04, 0x00, 0x01, 0x00, 0x00, 0x0F, 0xFE, 0x00, 0x0F, 0x00,
                              0x65, 0x8E, 0x0C, 0x00, 0x0A, 0x00, 0x01, 0x00, 0x0F};
    EXPECT_EQ(slice(15, 0xFED - 4 * 0x13, expected.size()), expected);
}

TEST(EmptyDatabase, IndexEntriesHaveTheBytesOfTheEngine) {
    const ByteVector databases{0x7F, 0x8F, 0x00, 0x00, 0x00, 0x7F, 0x4F, 0x4A, 0x6D, 0x4A, 0x4C,
                               0x4A, 0x6B, 0x51, 0x6B, 0x01, 0x00, 0x00, 0x00, 0x0E, 0x01};
    EXPECT_EQ(slice(7, 480, databases.size()), databases);
    const ByteVector objectTwo{0x7F, 0x80, 0x00, 0x00, 0x02, 0x00, 0x00, 0x0F, 0x00};
    EXPECT_EQ(slice(9, 480, objectTwo.size()), objectTwo);
}

TEST(EmptyDatabase, HeaderIsScrambled) {
    // The first bytes of the key stream, over "row 0 of page 1" and "row 1 of page 1".
    const ByteVector expected{0xB5, 0x6F ^ 0x01, 0x03, 0x62, 0x61 ^ 0x01, 0x08 ^ 0x01, 0xC2, 0x55};
    EXPECT_EQ(slice(0, 0x18, expected.size()), expected);
}

/// Fields of column and index descriptors that have no meaning keep rubbish in files of the engine;
/// the builder writes zeros there. All other bytes are the same.
TEST(EmptyDatabase, DiffersFromTheEnginesOwnFileInUnusedFieldsOnly) {
    const auto folder = testDataFolder();
    if (!folder) {
        GTEST_SKIP() << kNoTestData;
    }
    std::ifstream file{*folder / "access-made" / "adox_jet4.mdb", std::ios::binary};
    ASSERT_TRUE(file);
    const ByteVector original{std::istreambuf_iterator<char>{file}, {}};
    ASSERT_EQ(original.size(), emptyDatabase().size());
    std::size_t differences = 0;
    for (std::size_t i = 0; i < original.size(); ++i) {
        if (original[i] == emptyDatabase()[i]) continue;
        ++differences;
        EXPECT_EQ(emptyDatabase()[i], 0) << "page " << i / 4096 << ", byte " << i % 4096;
        EXPECT_GE(i / 4096, 2u);
        EXPECT_LE(i / 4096, 4u);
        EXPECT_GE(i % 4096, 63u);
    }
    EXPECT_EQ(differences, 26u);
}

TEST(HeaderVariants, PasswordShowsOnlyUnderTheCoverOfTheDate) {
    ByteVector file = emptyDatabase();
    setPassword(file, u"ab");
    applyRc4(std::span{file}.subspan(0x18, 128), ByteVector{0xC7, 0xDA, 0x39, 0x6B});
    const ByteVector covered{file.begin() + 0x42, file.begin() + 0x4A};
    EXPECT_EQ(covered, (ByteVector{0x59 ^ 'a', 0xA5, 'b', 0x00, 0x59, 0xA5, 0x00, 0x00}));
}

TEST(HeaderVariants, EncryptedPagesComeBackWithTheKey) {
    ByteVector file = emptyDatabase();
    encryptPages(file, 0x12345678);
    ASSERT_NE(file[4096], 1);
    applyRc4(std::span{file}.subspan(3 * 4096, 4096), ByteVector{0x7B, 0x56, 0x34, 0x12});
    EXPECT_TRUE(std::equal(file.begin() + 3 * 4096, file.begin() + 4 * 4096,
                           emptyDatabase().begin() + 3 * 4096));
}

}  // namespace
}  // namespace fixture
