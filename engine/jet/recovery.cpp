#include "engine/jet/recovery.h"

#include "engine/jet/bytes.h"
#include "engine/jet/journal_overlay.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace jet {
namespace {

namespace layout = format::journal;

/// What lies beside a database under the name of its journal.
struct FoundJournal {
    enum class State {
        Absent,
        Finished,     ///< a journal of ours that means nothing any more
        Interrupted,  ///< a change has to be taken back
        Damaged,      ///< a change would have to be taken back, if its journal were complete
        NotOurs,      ///< anything else, also the journal of another file
    };

    State state = State::Absent;
    std::string message{};  ///< what is wrong with it; in the last two states
    std::unique_ptr<Storage> file{};
    std::unique_ptr<JournalOverlay> before{};  ///< the database before the change; if Interrupted

    bool isInTheWay() const { return state == State::Damaged || state == State::NotOurs; }
};

using State = FoundJournal::State;

FoundJournal inTheWay(State state, const Storage& database, const std::string& what) {
    return {.state = state, .message = "The file " + database.journalName() + " " + what};
}

/// The head cannot be read. Zeros are what a power failure leaves before the head is durable.
FoundJournal withoutHead(const Storage& journal, const Storage& database) {
    std::vector<std::uint8_t> start(
        static_cast<std::size_t>(std::min<std::uint64_t>(journal.size(), layout::kHeadSize)));
    start.resize(journal.readAt(0, start));
    const bool zeros = std::all_of(start.begin(), start.end(), [](auto byte) { return byte == 0; });
    if (zeros && journal.size() <= layout::kHeadSize) return {.state = State::Finished};
    if (start.size() < layout::kVersion.end() ||
        load(start, layout::kMagic) != layout::kMagicValue) {
        return inTheWay(State::NotOurs, database, "is not the journal of this database.");
    }
    if (start.size() < layout::kHeadSize) {
        return inTheWay(State::Damaged, database, "is a journal, but cut off in its head.");
    }
    const bool known = load(start, layout::kVersion) == layout::kVersionValue;
    return inTheWay(State::Damaged, database,
                    known ? "is a journal, but its head is damaged."
                          : "is a journal of another version of this program.");
}

FoundJournal withHead(const Storage& database, std::unique_ptr<Storage> journal,
                      const JournalHead& head) {
    if (head.records == 0) return {.state = State::Finished};
    auto before = std::make_unique<JournalOverlay>(database, *journal, head);
    if (!before->isComplete()) {
        return inTheWay(State::Damaged, database,
                        "is a journal, but only the first " +
                            std::to_string(before->goodRecords()) + " of its " +
                            std::to_string(head.records) + " records can be read.");
    }
    if (fingerprintOf(*before, head.pageCount) != head.fingerprint) {
        return inTheWay(State::NotOurs, database, "is the journal of another database.");
    }
    return {.state = State::Interrupted, .file = std::move(journal), .before = std::move(before)};
}

FoundJournal findJournal(Storage& database) {
    std::unique_ptr<Storage> journal;
    try {
        journal = database.openJournal();
    } catch (const Error& error) {
        return {.state = State::NotOurs, .message = error.what()};
    }
    if (!journal) return {};
    const auto head = readJournalHead(*journal);
    return head ? withHead(database, std::move(journal), *head) : withoutHead(*journal, database);
}

/// Owns what the overlay refers to. Not to be written: lock() says why.
class RecoveredView final : public Storage {
public:
    RecoveredView(std::unique_ptr<Storage> database, FoundJournal found, Error obstacle)
        : database_{std::move(database)},
          found_{std::move(found)},
          obstacle_{std::move(obstacle)} {}

    std::uint64_t size() const override { return found_.before->size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override {
        return found_.before->readAt(offset, buffer);
    }
    void lock() override { throw obstacle_; }
    std::string journalName() const override { return database_->journalName(); }

private:
    std::unique_ptr<Storage> database_;
    FoundJournal found_;
    Error obstacle_;
};

/// Whether the pages that are to be put back can be laid over the file's own instead.
bool canBeReadNevertheless(const Error& error) {
    switch (error.fault()) {
        case Fault::ReadOnly:
        case Fault::InUse:
        case Fault::WriteFailed:
        case Fault::DiskFull:
            return true;
        default:
            return false;
    }
}

/// A view of `database` that lays an interrupted change over it, or itself if there is none.
std::unique_ptr<Storage> viewOf(std::unique_ptr<Storage> database, Recovery& recovery,
                                const Error& reason) {
    FoundJournal found = findJournal(*database);
    recovery.journalRemains = found.state != State::Absent;
    if (found.isInTheWay()) {
        recovery.obstacle = found.message;
        recovery.incomplete = found.state == State::Damaged;
    }
    if (found.state != State::Interrupted) return database;
    recovery.pagesLaidOver = found.before->pagesLaidOver();
    recovery.obstacle = reason.what();
    return std::make_unique<RecoveredView>(std::move(database), std::move(found), reason);
}

/// Locks a file, and unlocks it at the end.
std::uint32_t recoverAndUnlock(Storage& file) {
    std::uint32_t pages = 0;
    file.lock();
    try {
        pages = recoverLocked(file);
    } catch (...) {
        file.unlock();
        throw;
    }
    file.unlock();
    return pages;
}

}  // namespace

std::unique_ptr<Storage> recover(std::unique_ptr<Storage> file, Recovery& recovery) {
    Error obstacle{Fault::ReadOnly, {}};
    if (findJournal(*file).state == State::Interrupted) {
        try {
            recovery.pagesPutBack = recoverAndUnlock(*file);
        } catch (const Error& error) {
            if (!canBeReadNevertheless(error)) throw;
            obstacle = Error{error.fault(),
                             "A change to the database was interrupted, and it cannot be taken "
                             "back: " +
                                 std::string{error.what()}};
        }
    }
    return viewOf(std::move(file), recovery, obstacle);
}

std::unique_ptr<Storage> viewRecovered(std::unique_ptr<Storage> file, Recovery& recovery) {
    return viewOf(std::move(file), recovery,
                  Error{Fault::ReadOnly, "The database is open for reading only."});
}

std::uint32_t recoverLocked(Storage& file) {
    FoundJournal found = findJournal(file);
    if (found.state == State::Absent) return 0;
    if (found.isInTheWay()) {
        throw Error{Fault::JournalInTheWay,
                    found.message + " The database cannot be changed while it is there."};
    }
    std::uint32_t pages = 0;
    if (found.state == State::Interrupted) {
        pages = found.before->pagesLaidOver();
        found.before->forEachPage([&](PageNumber number, Bytes page) {
            file.writeAt(std::uint64_t{raw(number)} * kPageSize, page);
        });
        file.truncate(found.before->size());
        file.sync();
    }
    found = {};  // closes the journal
    file.removeJournal();
    return pages;
}

}  // namespace jet
