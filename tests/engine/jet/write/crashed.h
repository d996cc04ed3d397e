// A database whose change was cut short by a power failure.
//
//   Crashed file;
//   file.changeJournal([](auto& journal) { journal.resize(100); });
//   const Recovery found = file.recover();
//   EXPECT_EQ(file.disk.database(), file.original);
#pragma once

#include "engine/jet/recovery.h"
#include "tests/engine/jet/memory_pages.h"
#include "tests/support/faulty_disk.h"

#include <algorithm>
#include <vector>

namespace jet {

/// Four pages are overwritten, two appended. The journal has the four and, behind them, two more
/// records that had not been synced.
class Crashed {
public:
    using ByteVector = std::vector<std::uint8_t>;
    static constexpr std::uint32_t kPages = 100;
    static constexpr std::uint32_t kFirst = 10;  ///< pages 10 to 15 are in the journal
    static constexpr std::uint32_t kSaved = 6;
    static constexpr std::uint32_t kSafe = 4;  ///< the first four of them durably
    static constexpr std::uint64_t kRecord = 16 + kPageSize;
    static constexpr std::uint64_t kSafeEnd = 48 + kSafe * kRecord;

    explicit Crashed(ByteVector content = numberedPages(kPages)) : disk{std::move(content)} {
        original = disk.database();
        auto file = disk.open();
        const auto pageCount = file->pageCount();
        Journal journal{file->createJournal(), pageCount, fingerprintOf(*file, pageCount)};
        save(*file, journal, kFirst, kSafe);
        ByteVector head = this->journal();
        head.resize(48);
        save(*file, journal, kFirst + kSafe, kSaved - kSafe);
        file->openJournal()->writeAt(0, head);
        file->writeAt(kFirst * kPageSize, ByteVector(kSafe * kPageSize, 0xEE));
        file->writeAt(std::uint64_t{pageCount} * kPageSize, ByteVector(2 * kPageSize, 0xEE));
        crashed = disk.database();
    }

    Recovery recover() {
        Recovery recovery;
        jet::recover(disk.open(), recovery);
        return recovery;
    }

    ByteVector journal() {
        const auto file = disk.open()->openJournal();
        ByteVector bytes(static_cast<std::size_t>(file->size()));
        file->readAt(0, bytes);
        return bytes;
    }

    void setJournal(const ByteVector& bytes) {
        const auto file = disk.open();
        if (disk.hasJournal()) file->removeJournal();
        file->createJournal()->writeAt(0, bytes);
    }

    template <typename Change>
    void changeJournal(Change change) {
        ByteVector bytes = journal();
        change(bytes);
        setJournal(bytes);
    }

    fixture::FaultyDisk disk;
    ByteVector original;
    ByteVector crashed;

private:
    static void save(const Storage& file, Journal& journal, std::uint32_t first,
                     std::uint32_t count) {
        for (std::uint32_t page = first; page < first + count; ++page) {
            ByteVector bytes(kPageSize);
            file.readPages(PageNumber{page}, bytes);
            journal.append(Journal::Kind::Transaction, PageNumber{page}, bytes);
        }
        journal.sync();
    }
};

}  // namespace jet
