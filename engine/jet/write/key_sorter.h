// Sorts the keys of an index in bounded memory. Equal keys are stored once, so that a row with a
// known key takes 8 bytes. What does not fit is written to a temporary file in sorted runs.
//
//   jet::KeySorter keys;
//   keys.add(keys.code(key), row);
//   keys.forEach([&](const jet::Key& key, jet::RowId row) { use(key, row); });  // by key, by row
//
// One thread at a time.
#pragma once

#include "engine/jet/index_page.h"

#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace jet {

class KeySorter {
public:
    /// 128 MiB: the keys of 10 million rows that have few distinct ones.
    static constexpr std::size_t kDefaultBudget = std::size_t{128} << 20;

    explicit KeySorter(std::size_t budget = kDefaultBudget) : budget_{budget} {}
    ~KeySorter();
    KeySorter(const KeySorter&) = delete;
    KeySorter& operator=(const KeySorter&) = delete;

    /// The code of a key in the current run.
    std::uint32_t code(const Key& key);

    /// The number of runs written so far; codes are valid for one run only.
    std::size_t run() const { return runs_.size(); }

    /// Requires: `code` is of the current run. May end the run. Throws Error{DiskFull} if the
    /// temporary file cannot be written.
    void add(std::uint32_t code, RowId row);

    using Use = std::function<void(const Key& key, RowId row)>;
    /// Calls `use` for everything; can be called once. Throws what `use` throws, Error: DiskFull,
    /// ReadFailed.
    void forEach(const Use& use);

private:
    struct Run {
        std::streamoff begin = 0;
        std::uint64_t rows = 0;
    };
    class RunReader;

    std::size_t memory() const;
    void sortRows(const Use& use);
    void writeRun();
    void merge(const Use& use);
    void openFile();

    std::size_t budget_;
    std::deque<std::string> keys_;  ///< by code
    std::unordered_map<std::string_view, std::uint32_t> codes_;
    std::size_t keyBytes_ = 0;
    std::vector<std::uint32_t> rowCodes_;
    std::vector<RowId> rows_;

    std::filesystem::path path_;
    std::fstream file_;
    std::vector<Run> runs_;
};

}  // namespace jet
