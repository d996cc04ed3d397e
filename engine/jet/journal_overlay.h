// A database file as it was before a change that was cut short: the pages of its journal laid over
// its own. Nothing is written.
//
//   const auto journal = storage.openJournal();
//   const auto head = jet::readJournalHead(*journal);
//   const jet::JournalOverlay before{storage, *journal, *head};
//   if (before.isComplete()) before.forEachPage([](jet::PageNumber number, jet::Bytes page) { ... });
//
// Any thread may read.
#pragma once

#include "engine/jet/journal.h"

#include <functional>
#include <map>

namespace jet {

class JournalOverlay final : public Storage {
public:
    /// Reads all records that the head counts, and keeps where they are. Both files must stay alive.
    /// Throws Error{ReadFailed}.
    JournalOverlay(const Storage& file, const Storage& journal, const JournalHead& head);

    /// Records before the first that is damaged or missing.
    std::uint32_t goodRecords() const { return goodRecords_; }
    bool isComplete() const { return goodRecords_ == records_; }

    /// Pages that differ, or may differ, from the file's own.
    std::uint32_t pagesLaidOver() const { return static_cast<std::uint32_t>(offsets_.size()); }

    /// Calls `use` with each page that is laid over the file's own.
    void forEachPage(const std::function<void(PageNumber, Bytes)>& use) const;

    std::uint64_t size() const override { return size_; }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) const override;

private:
    const Storage& file_;
    const Storage& journal_;
    std::uint64_t size_;
    std::uint32_t records_;
    std::uint32_t goodRecords_;
    std::map<std::uint32_t, std::uint64_t> offsets_;  ///< by page: where it starts in the journal
};

}  // namespace jet
