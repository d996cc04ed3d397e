#include "engine/jet/pager.h"

#include "engine/jet/format/page.h"
#include "engine/jet/recovery.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace jet {
namespace {

/// Neighbouring pages are written with one call, 1 MiB at most.
constexpr std::size_t kMaxPagesAtOnce = 256;

constexpr std::uint64_t offsetOf(std::uint32_t page) { return std::uint64_t{page} * kPageSize; }

}  // namespace

Pager::Pager(std::unique_ptr<Storage> file, std::size_t capacity)
    : file_{std::move(file)}, capacity_{capacity} {}

Pager::~Pager() {
    if (statement_) undo();
    if (!transaction_) return;
    try {
        takeBackTransaction();
    } catch (const Error&) {
        // The journal is still there: recovery takes back what this could not.
        broken_ = true;
    }
}

// ---- Reading ------------------------------------------------------------------------------------

std::uint64_t Pager::size() const {
    std::shared_lock lock{gate_, std::defer_lock};
    if (!isOwner()) lock.lock();
    return transaction_ ? offsetOf(pageCount_) : file_->size();
}

std::size_t Pager::readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const {
    std::shared_lock lock{gate_, std::defer_lock};
    if (!isOwner()) lock.lock();
    if (broken_) {
        throw Error{Fault::ReadFailed,
                    "A change to the database could neither be completed nor be taken back; it has "
                    "to be opened anew."};
    }
    if (!transaction_) return file_->readAt(offset, buffer);

    const std::uint64_t end = offsetOf(pageCount_);
    if (offset >= end) return 0;
    buffer = buffer.first(
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), end - offset)));
    const std::size_t got = file_->readAt(offset, buffer);
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(got), buffer.end(), std::uint8_t{0});
    const std::uint64_t stop = offset + buffer.size();
    for (auto frame = frames_.lower_bound(static_cast<std::uint32_t>(offset / kPageSize));
         frame != frames_.end() && offsetOf(frame->first) < stop; ++frame) {
        const std::uint64_t first = offsetOf(frame->first);
        const std::uint64_t from = std::max(first, offset);
        const std::uint64_t to = std::min(first + kPageSize, stop);
        std::copy_n(frame->second->begin() + static_cast<std::ptrdiff_t>(from - first), to - from,
                    buffer.begin() + static_cast<std::ptrdiff_t>(from - offset));
    }
    return buffer.size();
}

// ---- Statements and their end -------------------------------------------------------------------

void Pager::begin() {
    gate_.lock();
    owner_ = std::this_thread::get_id();
    try {
        if (broken_) throw Error{Fault::WriteFailed, "The database has to be opened anew."};
        if (!locked_) takeFile();
        if (!transaction_) pageCount_ = file_->pageCount();
        statement_ = Statement{.pageCount = pageCount_,
                               .saved = std::vector<bool>(pageCount_),
                               .journalEnd = transaction_ ? transaction_->journal.end() : 0,
                               .first = !transaction_};
    } catch (...) {
        owner_ = std::thread::id{};
        gate_.unlock();
        throw;
    }
}

/// Others may have written since the last statement, or may even have died in the middle of that.
void Pager::takeFile() {
    try {
        file_->lock();
    } catch (...) {
        notify(kNoPage);  // nor did anybody keep them from it while this one waited
        throw;
    }
    try {
        recoverLocked(*file_);
    } catch (...) {
        file_->unlock();
        throw;
    }
    locked_ = true;
    notify(kNoPage);
}

void Pager::end() {
    statement_.reset();
    if (!transaction_) leaveTransaction();
    owner_ = std::thread::id{};
    gate_.unlock();
}

void Pager::undo() noexcept {
    try {
        if (statement_->first) {
            takeBackTransaction();
        } else {
            takeBackStatement();
        }
    } catch (const std::exception&) {
        broken_ = true;
    }
    statement_.reset();
    notify(kNoPage);
    owner_ = std::thread::id{};
    gate_.unlock();
}

void Pager::commit() {
    if (!transaction_) return;
    const std::unique_lock lock{gate_};
    owner_ = std::this_thread::get_id();
    try {
        writeFrames(true);
        if (file_->pageCount() > pageCount_) file_->truncate(offsetOf(pageCount_));
        file_->sync();
        transaction_->journal.invalidate();
    } catch (...) {
        try {
            takeBackTransaction();
        } catch (const std::exception&) {
            broken_ = true;
        }
        notify(kNoPage);
        owner_ = std::thread::id{};
        throw;
    }
    leaveTransaction();
    owner_ = std::thread::id{};
}

void Pager::rollBack() noexcept {
    if (!transaction_) return;
    const std::unique_lock lock{gate_};
    owner_ = std::this_thread::get_id();
    try {
        takeBackTransaction();
    } catch (const std::exception&) {
        broken_ = true;
    }
    notify(kNoPage);
    owner_ = std::thread::id{};
}

/// Puts the pages back that the statement changed. They are changed pages still: those that
/// earlier statements changed, and those that the file may have got already.
void Pager::takeBackStatement() {
    pageCount_ = statement_->pageCount;
    frames_.erase(frames_.lower_bound(pageCount_), frames_.end());
    bool canWrite = true;
    transaction_->journal.replay(statement_->journalEnd,
                                 [&](Journal::Kind, PageNumber number, Bytes page) {
                                     if (raw(number) >= pageCount_) return;
                                     const auto restored = std::make_shared<Page>();
                                     std::copy(page.begin(), page.end(), restored->begin());
                                     frames_[raw(number)] = restored;
                                     if (canWrite) canWrite = tryToMakeRoom();
                                 });
}

/// On a full disk the pages that are taken back stay in memory.
bool Pager::tryToMakeRoom() {
    try {
        makeRoom();
        return true;
    } catch (const Error&) {
        return false;
    }
}

void Pager::takeBackTransaction() {
    frames_.clear();
    if (transaction_ && transaction_->fileTouched) {
        transaction_->journal.replay(Journal::kFirstRecord,
                                     [&](Journal::Kind kind, PageNumber number, Bytes page) {
                                         if (kind != Journal::Kind::Transaction) return;
                                         file_->writeAt(offsetOf(raw(number)), page);
                                     });
        file_->truncate(offsetOf(transaction_->pageCount));
        file_->sync();
    }
    bool meansNothing = true;
    try {
        if (transaction_) transaction_->journal.invalidate();
    } catch (const Error&) {
        meansNothing = false;
    }
    if (!leaveTransaction() && !meansNothing) broken_ = true;
}

/// Returns whether the journal is gone.
bool Pager::leaveTransaction() {
    const bool hadJournal = transaction_.has_value();
    transaction_.reset();
    frames_.clear();
    bool gone = true;
    try {
        if (hadJournal) file_->removeJournal();
    } catch (const Error&) {
        gone = false;
    }
    if (!std::exchange(locked_, false)) return gone;
    try {
        file_->unlock();
    } catch (const Error&) {
        broken_ = true;
    }
    return gone;
}

// ---- Pages --------------------------------------------------------------------------------------

Pager::Transaction& Pager::transaction() {
    if (!transaction_) {
        transaction_.emplace(Transaction{.journal = newJournal(),
                                         .pageCount = pageCount_,
                                         .saved = std::vector<bool>(pageCount_)});
    }
    return *transaction_;
}

Journal Pager::newJournal() {
    const std::uint64_t fingerprint = fingerprintOf(*file_, pageCount_);
    auto file = file_->createJournal();
    try {
        return Journal{std::move(file), pageCount_, fingerprint};
    } catch (const Error&) {
        file.reset();
        file_->removeJournal();
        throw;
    }
}

PagePtr Pager::page(PageNumber number) const {
    if (const auto found = frames_.find(raw(number)); found != frames_.end()) return found->second;
    if (number == kNoPage || raw(number) >= pageCount_) {
        throwDamaged(number, "a link leads outside the file");
    }
    const auto page = std::make_shared<Page>();
    file_->readPages(number, *page);
    return page;
}

PageEdit Pager::edit(PageNumber number) {
    if (number == kNoPage) throwDamaged(number, "a link leads to the header page");
    makeRoom();
    PageEdit page = frame(number);
    save(number, *page);
    notify(number);
    return page;
}

PageNumber Pager::append() {
    if (pageCount_ >= format::page::kMaxCount) {
        throw Error{Fault::FileFull, "The database has reached its largest size of 2 GB."};
    }
    transaction();
    makeRoom();
    const PageNumber number{pageCount_};
    frames_[pageCount_] = std::make_shared<Page>();
    ++pageCount_;
    notify(number);
    return number;
}

PageEdit Pager::frame(PageNumber number) {
    if (const auto found = frames_.find(raw(number)); found != frames_.end()) return found->second;
    transaction();
    auto read = std::const_pointer_cast<Page>(page(number));
    frames_[raw(number)] = read;
    return read;
}

/// Sees to it that the journal has the page as it was when the statement began.
void Pager::save(PageNumber number, const Page& page) {
    const std::uint32_t index = raw(number);
    if (index >= statement_->pageCount || statement_->saved[index]) return;
    statement_->saved[index] = true;
    const bool original = index < transaction_->pageCount && !transaction_->saved[index];
    if (original) transaction_->saved[index] = true;
    transaction_->journal.append(original ? Journal::Kind::Transaction : Journal::Kind::Statement,
                                 number, page);
}

void Pager::makeRoom() {
    if (frames_.size() >= capacity_) writeFrames(false);
}

/// Writes changed pages to the file, all or those that nobody holds.
void Pager::writeFrames(bool all) {
    transaction_->journal.sync();
    transaction_->fileTouched = true;
    std::vector<std::uint8_t> run;
    std::uint32_t runStart = 0;
    // Nothing is forgotten before it is written: that can fail.
    const auto writeRun = [&] {
        if (run.empty()) return;
        file_->writeAt(offsetOf(runStart), run);
        const auto runEnd = runStart + static_cast<std::uint32_t>(run.size() / kPageSize);
        if (!all) frames_.erase(frames_.find(runStart), frames_.lower_bound(runEnd));
        run.clear();
    };
    for (const auto& [number, page] : frames_) {
        if (!all && page.use_count() > 1) continue;
        const bool follows = number == runStart + run.size() / kPageSize;
        if (!follows || run.size() >= kMaxPagesAtOnce * kPageSize) writeRun();
        if (run.empty()) runStart = number;
        run.insert(run.end(), page->begin(), page->end());
    }
    writeRun();
}

void Pager::notify(PageNumber number) const {
    if (listener_) listener_(number);
}

}  // namespace jet
