#include "engine/jet/header.h"

#include "engine/jet/database.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"
#include "tests/support/fixture_builder.h"

#include <gmock/gmock.h>

namespace jet {
namespace {

using fixture::ByteVector;
using testing::HasSubstr;

const ByteVector& emptyDatabase() {
    static const ByteVector file = fixture::FixtureBuilder{}.bytes();
    return file;
}

std::shared_ptr<Database> open(ByteVector file) {
    return Database::open(std::make_unique<MemoryStorage>(std::move(file)));
}

/// Opens what `change` makes of an empty database, and returns the message of the refusal.
template <typename Change>
std::string refusal(Fault expected, Change change, CallSite where = CallSite::here()) {
    ByteVector file = emptyDatabase();
    change(file);
    return expectFault(
        expected, [&] { open(std::move(file)); }, where);
}

TEST(Header, AcceptsADatabase) { EXPECT_NO_THROW(open(emptyDatabase())); }

TEST(Header, RefusesTheGenerationBefore) {
    const auto message = expectFault(Fault::OlderFormat, [] { open(fixture::olderDatabase()); });
    EXPECT_THAT(message, HasSubstr("Jet 3"));
}

TEST(Header, RefusesLaterGenerations) {
    const auto message = refusal(Fault::NewerFormat, fixture::claimAceSignature);
    EXPECT_THAT(message, HasSubstr("ACE"));
    for (std::uint32_t version : {2u, 3u, 5u, 256u, 0xFFFFFFFFu}) {
        refusal(Fault::NewerFormat,
                [=](ByteVector& file) { fixture::claimVersion(file, version); });
    }
}

TEST(Header, RefusesEncryptedPages) {
    for (std::uint32_t key : {1u, 0x1234ABCDu, 0xFFFFFFFFu}) {
        refusal(Fault::Encrypted, [=](ByteVector& file) { fixture::encryptPages(file, key); });
    }
}

TEST(Header, RefusesAPassword) {
    for (const std::u16string_view password : {u"x", u"secret", u"12345678901234567890"}) {
        refusal(Fault::PasswordProtected,
                [=](ByteVector& file) { fixture::setPassword(file, password); });
    }
}

TEST(Header, AnEmptyPasswordIsNone) {
    ByteVector file = emptyDatabase();
    fixture::setPassword(file, u"");
    EXPECT_NO_THROW(open(file));
}

/// Writes the creation date, from which the password's mask is made, without any password.
ByteVector createdAt(double date, std::int32_t mask) {
    ByteVector file = emptyDatabase();
    const ByteVector key{0xC7, 0xDA, 0x39, 0x6B};
    const std::span masked = std::span{file}.subspan(0x18, 128);
    fixture::applyRc4(masked, key);
    fixture::put(masked, 0x72 - 0x18, date);
    for (std::size_t i = 0; i < 40; i += 4) fixture::put(masked, 0x42 - 0x18 + i, mask);
    fixture::applyRc4(masked, key);
    return file;
}

TEST(Header, AnyCreationDateMasksThePassword) {
    EXPECT_NO_THROW(open(createdAt(36526.75, 36526)));
    EXPECT_NO_THROW(open(createdAt(-2.5, -2)));
    EXPECT_NO_THROW(open(createdAt(std::numeric_limits<double>::quiet_NaN(), 0)));
    EXPECT_NO_THROW(open(createdAt(1e300, 0)));
    expectFault(Fault::PasswordProtected, [] { open(createdAt(36526.75, 36527)); });
}

TEST(Header, RefusesForeignFiles) {
    for (const ByteVector& file : {ByteVector{}, ByteVector{0}, ByteVector{0, 1, 0, 0},
                                   ByteVector(kPageSize), ByteVector(3 * kPageSize, 0xFF),
                                   fixture::pngFile(), fixture::zipFile(), fixture::textFile()}) {
        expectFault(Fault::NotADatabase, [&] { open(file); });
    }
    refusal(Fault::NotADatabase, [](ByteVector& file) { file[4] = 's'; });
}

TEST(Header, RefusesForeignFilesOnDisk) {
    const fixture::TemporaryFolder folder;
    for (const ByteVector& content : {ByteVector{}, fixture::pngFile(), fixture::textFile()}) {
        const auto path = folder.write("foreign.mdb", content);
        expectFault(Fault::NotADatabase, [&] { Database::open(path); });
    }
    expectFault(Fault::FileNotFound, [&] { Database::open(folder.path() / "missing.mdb"); });
    expectFault(Fault::AccessDenied, [&] { Database::open(folder.path()); });
    const auto whole = folder.write("whole.mdb", emptyDatabase());
    EXPECT_EQ(Database::open(whole)->storage().pageCount(), emptyDatabase().size() / kPageSize);
}

TEST(Header, RefusesAFileCutBeforeItsCatalog) {
    for (std::size_t length = 0x18; length < 3 * kPageSize; length += 97) {
        refusal(Fault::Truncated, [=](ByteVector& file) { fixture::truncate(file, length); });
    }
}

/// The whole pages before a cut are read, and what is missing is known.
TEST(Header, OpensAFileThatIsCutBehindItsCatalog) {
    const std::size_t pages = emptyDatabase().size() / kPageSize;
    for (std::size_t length = 3 * kPageSize; length < pages * kPageSize; length += 1021) {
        ByteVector file = emptyDatabase();
        fixture::truncate(file, length);
        const auto database = open(file);
        EXPECT_EQ(database->storage().pageCount(), length / kPageSize);
        EXPECT_EQ(database->losses().missingPages, pages - length / kPageSize);
        ASSERT_TRUE(database->firstLoss());
        EXPECT_EQ(database->firstLoss()->kind, Loss::Kind::MissingPages);
    }
}

TEST(Header, APieceOfAPageBehindTheEndIsALoss) {
    ByteVector file = emptyDatabase();
    file.resize(file.size() + 100);
    EXPECT_EQ(open(file)->losses().missingPages, 1u);
    EXPECT_FALSE(open(emptyDatabase())->losses().any());
}

TEST(Header, RefusesAFileCutInsideItsSignature) {
    for (std::size_t length = 0; length < 0x18; ++length) {
        refusal(Fault::NotADatabase, [=](ByteVector& file) { fixture::truncate(file, length); });
    }
}

TEST(Header, SaysHowMuchIsMissing) {
    ByteVector file = emptyDatabase();
    fixture::truncate(file, 5 * kPageSize);
    EXPECT_THAT(open(file)->losses().reasons.at(0).why, HasSubstr("5 of 16 pages"));
}

// --- The length that the map of free pages promises ------------------------------------------

constexpr RowId kFreePages{PageNumber{1}, 0};

/// A file of empty pages whose map of free pages is `row`.
class FreePages {
public:
    FreePages(std::size_t pageCount, fixture::ByteView row) : content_(pageCount * kPageSize) {
        fixture::DataPageImage page{1};
        page.append(row, 0);
        std::copy(page.image().begin(), page.image().end(), content_.begin() + kPageSize);
    }

    void addBitmap(PageNumber page, std::uint8_t fill) {
        const std::span bytes = pageOf(content_, page);
        std::fill(bytes.begin(), bytes.end(), fill);
        bytes[0] = 5;
        bytes[1] = 1;
    }

    void setByte(PageNumber page, std::size_t offset, std::uint8_t byte) {
        pageOf(content_, page)[offset] = byte;
    }

    std::uint64_t missing() const {
        MemoryPages pages{content_};
        PageReader reader = pages.reader();
        return missingPages(reader);
    }

private:
    std::vector<std::uint8_t> content_;
};

/// An inline map from page `first` on, in which only the `used` pages from there are not free.
ByteVector inlineMap(std::uint32_t first, std::size_t used, std::size_t bytes = 64) {
    ByteVector row(5 + bytes, 0xFF);
    row[0] = 0;
    fixture::put(std::span{row}, 1, first);
    for (std::size_t bit = 0; bit < used; ++bit) {
        row[5 + bit / 8] = static_cast<std::uint8_t>(row[5 + bit / 8] & ~(1u << (bit % 8)));
    }
    return row;
}

TEST(FileLength, AnInlineMapThatEndsWithTheFile) {
    EXPECT_EQ((FreePages{20, inlineMap(0, 20)}.missing()), 0u);
    EXPECT_EQ((FreePages{20, inlineMap(0, 3)}.missing()), 0u);
    EXPECT_EQ((FreePages{20, inlineMap(0, 21)}.missing()), 1u);
    EXPECT_EQ((FreePages{20, inlineMap(0, 60)}.missing()), 40u);
}

TEST(FileLength, AnInlineMapThatStartsAboveZero) {
    EXPECT_EQ((FreePages{700, inlineMap(512, 188)}.missing()), 0u);
    EXPECT_GT((FreePages{699, inlineMap(512, 188)}.missing()), 0u);
    // The whole window lies behind the end, and its first pages are in use.
    EXPECT_GT((FreePages{20, inlineMap(512, 8)}.missing()), 0u);
    EXPECT_EQ((FreePages{20, inlineMap(512, 0)}.missing()), 0u);
}

TEST(FileLength, AMapThatEndsBeforeTheFileProvesNothing) {
    EXPECT_EQ((FreePages{600, inlineMap(0, 512)}.missing()), 0u);
    EXPECT_EQ((FreePages{744, inlineMap(0, 743, 96)}.missing()), 0u);
}

ByteVector referenceMap(std::initializer_list<std::uint32_t> bitmaps) {
    ByteVector row(69);
    row[0] = 1;
    std::size_t offset = 1;
    for (std::uint32_t bitmap : bitmaps) {
        fixture::put(std::span{row}, offset, bitmap);
        offset += 4;
    }
    return row;
}

TEST(FileLength, AReferenceMap) {
    FreePages pages{20, referenceMap({3})};
    pages.addBitmap(PageNumber{3}, 0xFF);
    EXPECT_EQ(pages.missing(), 0u);
    pages.setByte(PageNumber{3}, 4 + 2, 0xF0);  // pages 16 to 19
    EXPECT_EQ(pages.missing(), 0u);
    pages.setByte(PageNumber{3}, 4 + 2, 0xE0);  // and 20
    EXPECT_GT(pages.missing(), 0u);
}

TEST(FileLength, LaterBitmapsOfAReferenceMapCountToo) {
    FreePages pages{20, referenceMap({3, 4})};
    pages.addBitmap(PageNumber{3}, 0xFF);
    pages.addBitmap(PageNumber{4}, 0xFF);
    EXPECT_EQ(pages.missing(), 0u);
    pages.setByte(PageNumber{4}, 100, 0x7F);
    EXPECT_GT(pages.missing(), 0u);
}

TEST(FileLength, ABitmapPageThatIsCutOffIsMissed) {
    FreePages pages{20, referenceMap({3, 40000})};
    pages.addBitmap(PageNumber{3}, 0xFF);
    EXPECT_GT(pages.missing(), 0u);
}

TEST(FileLength, AMapWithoutSenseProvesNothing) {
    // Of the reference kind with the body of an inline map: found in files that people use.
    ByteVector mixed = inlineMap(0, 16);
    mixed[0] = 1;
    EXPECT_EQ((FreePages{16, mixed}.missing()), 0u);
    ByteVector unknown = inlineMap(0, 40);
    unknown[0] = 7;
    EXPECT_EQ((FreePages{16, unknown}.missing()), 0u);
    EXPECT_EQ((FreePages{16, ByteVector{0, 0, 0}}.missing()), 0u);
    // No file has so many pages.
    EXPECT_EQ((FreePages{16, inlineMap(0xFFFFFF00, 512)}.missing()), 0u);
    EXPECT_EQ((FreePages{16, inlineMap(524288, 8)}.missing()), 0u);
    FreePages wrongKind{16, referenceMap({3})};
    EXPECT_EQ(wrongKind.missing(), 0u);
}

TEST(FileLength, ADamagedPageOneDoesNotForbidReading) {
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{0, 2, 5, 255}) {
        ByteVector file = emptyDatabase();
        file[kPageSize] = type;
        EXPECT_NO_THROW(open(file));
    }
    ByteVector file = emptyDatabase();
    fixture::poke16(file, fixture::slotOffset(kFreePages), 0xD000);
    EXPECT_NO_THROW(open(file));
}

/// Grows in the very moment in which its size is asked for.
class GrowingStorage : public MemoryStorage {
public:
    explicit GrowingStorage(std::vector<std::uint8_t> content)
        : MemoryStorage{std::move(content)} {}
    std::uint64_t size() const override {
        return MemoryStorage::size() - (mapRead ? 0 : kPageSize);
    }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        mapRead = mapRead || offset == kPageSize;
        return MemoryStorage::readAt(offset, buffer);
    }
    mutable bool mapRead = false;
};

// The size was taken before the map: a page that another program appended in between, and entered
// in the map, counted as missing.
TEST(FileLength, AFileThatGrowsIsNotCut) {
    const GrowingStorage storage{emptyDatabase()};
    PageCache cache{storage};
    PageReader reader{storage, cache};
    EXPECT_EQ(missingPages(reader), 0u);
}

}  // namespace
}  // namespace jet
