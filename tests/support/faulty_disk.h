// A disk that can lose its power: what was not synced by then is there, or not, or half.
//
//   fixture::FaultyDisk disk{databaseBytes};
//   disk.failAfter(17);                                   // operations that change something
//   EXPECT_THROW(change(*jet::Database::open(disk.open())), std::exception);
//   fixture::FaultyDisk after = disk.restarted(fixture::Survival::Torn, random);
//   auto database = jet::Database::open(after.open());    // recovers
//
// It can also fail once and go on, be full, or be for reading only.
//
// Belongs to one thread. The disk must outlive the storages that it opens.
#pragma once

#include "engine/jet/storage.h"
#include "tests/support/random.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace fixture {

/// What becomes of changes that were not synced when the power failed.
enum class Survival {
    None,    ///< all are lost
    All,     ///< all arrived
    Random,  ///< each arrived or was lost; later ones may be there without earlier ones
    Torn,    ///< as Random, and the last one arrived in part
};

class FaultyDisk {
public:
    using Bytes = std::vector<std::uint8_t>;

    explicit FaultyDisk(Bytes database) : database_{std::move(database)} {}

    std::unique_ptr<jet::Storage> open();

    /// The power fails at the operation after `operations` more of them: that one and all later
    /// ones throw jet::Error{WriteFailed}, and reading throws ReadFailed.
    void failAfter(std::uint64_t operations) { limit_ = count_ + operations; }

    /// The operation after `operations` more of them throws `fault` and does not happen; all later
    /// ones succeed.
    void failOnceAfter(std::uint64_t operations, jet::Fault fault) {
        single_ = {count_ + operations, fault};
    }

    /// What would make both files together larger than this throws jet::Error{DiskFull}.
    void setRoom(std::uint64_t bytes) { room_ = bytes; }
    std::uint64_t used() const {
        return database_.seen.size() + (journal_ ? journal_->seen.size() : 0);
    }

    /// lock() throws this from now on.
    void refuseLock(jet::Fault fault) { lockFault_ = fault; }

    /// Operations up to now: writes, cuts, syncs, files made and removed.
    std::uint64_t operations() const { return count_; }
    bool hasFailed() const { return failed_; }

    /// The disk as it is found when the power is back.
    FaultyDisk restarted(Survival survival, Random& random) const;

    /// What a program sees as the database's content now.
    const Bytes& database() const { return database_.seen; }
    bool hasJournal() const { return journal_.has_value(); }

private:
    /// A change that may get lost.
    struct Change {
        std::uint64_t offset = 0;
        Bytes bytes{};
        std::optional<std::uint64_t> newSize{};  ///< a cut, if set
    };

    struct File {
        explicit File(Bytes content) : seen{content}, safe{std::move(content)} {}
        Bytes seen;                     ///< what programs see
        Bytes safe;                     ///< what is certain to survive
        std::vector<Change> pending{};  ///< since then
    };

    class View;

    struct SingleFailure {
        std::uint64_t operation = 0;
        jet::Fault fault{};
    };

    void count();
    void failOnce();
    void requireRoom(bool journal, const Change& change) const;
    void pendingOf(bool journal, const Change& change);
    void requirePower() const;
    static void apply(const Change& change, Bytes& content);
    static Bytes survivor(const File& file, Survival survival, Random& random);

    File database_;
    std::optional<File> journal_;
    /// A journal that was removed or replaced may come back, as long as the folder is not synced.
    bool journalIsSafe_ = false;
    std::uint64_t count_ = 0;
    std::uint64_t limit_ = std::numeric_limits<std::uint64_t>::max();
    bool failed_ = false;
    std::optional<SingleFailure> single_;
    std::uint64_t room_ = std::numeric_limits<std::uint64_t>::max();
    std::optional<jet::Fault> lockFault_;
};

}  // namespace fixture
