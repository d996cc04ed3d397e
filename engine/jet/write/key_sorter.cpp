#include "engine/jet/write/key_sorter.h"

#include "engine/jet/error.h"

#include <algorithm>
#include <numeric>
#include <queue>
#include <random>
#include <utility>

namespace jet {
namespace {

/// What the containers take for one key besides its bytes: a string, a node, a bucket.
constexpr std::size_t kKeyOverhead = 96;
constexpr std::size_t kRowBytes = 12;  ///< its code and id, and the id once more while sorting

[[noreturn]] void throwTemporary(Fault fault) {
    throw Error{fault, "A temporary file, needed to build an index, cannot be used."};
}

template <typename T>
void write(std::fstream& file, T value) {
    file.write(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename T>
T read(std::fstream& file) {
    T value{};
    file.read(reinterpret_cast<char*>(&value), sizeof value);
    return value;
}

std::string_view textOf(const Key& key) {
    return {reinterpret_cast<const char*>(key.data()), key.size()};
}

}  // namespace

/// Reads a run back, a piece at a time.
class KeySorter::RunReader {
public:
    RunReader(std::fstream& file, const Run& run)
        : file_{file}, at_{run.begin}, rowsLeft_{run.rows} {}

    /// Steps to the next row; false at the end.
    bool next() {
        if (position_ == rows_.size() && !readPiece()) return false;
        row_ = rows_[position_++];
        return true;
    }

    const Key& key() const { return key_; }
    RowId row() const { return row_; }

private:
    /// A key and its rows, or some of them.
    bool readPiece() {
        if (rowsLeft_ == 0) return false;
        file_.seekg(at_);
        key_.resize(read<std::uint32_t>(file_));
        file_.read(reinterpret_cast<char*>(key_.data()), static_cast<std::streamsize>(key_.size()));
        rows_.resize(read<std::uint32_t>(file_));
        file_.read(reinterpret_cast<char*>(rows_.data()),
                   static_cast<std::streamsize>(rows_.size() * sizeof(RowId)));
        if (!file_ || rows_.empty()) throwTemporary(Fault::ReadFailed);
        at_ = file_.tellg();
        rowsLeft_ -= rows_.size();
        position_ = 0;
        return true;
    }

    std::fstream& file_;
    std::streamoff at_;
    std::uint64_t rowsLeft_;
    Key key_;
    std::vector<RowId> rows_;
    std::size_t position_ = 0;
    RowId row_;
};

KeySorter::~KeySorter() {
    if (path_.empty()) return;
    file_.close();
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

std::uint32_t KeySorter::code(const Key& key) {
    if (const auto found = codes_.find(textOf(key)); found != codes_.end()) return found->second;
    const auto code = static_cast<std::uint32_t>(keys_.size());
    keys_.emplace_back(textOf(key));
    codes_.emplace(keys_.back(), code);
    keyBytes_ += key.size() + kKeyOverhead;
    return code;
}

void KeySorter::add(std::uint32_t code, RowId row) {
    rowCodes_.push_back(code);
    rows_.push_back(row);
    if (memory() >= budget_) writeRun();
}

std::size_t KeySorter::memory() const { return keyBytes_ + rows_.size() * kRowBytes; }

void KeySorter::forEach(const Use& use) {
    if (runs_.empty()) return sortRows(use);
    writeRun();
    merge(use);
}

/// Keys are compared once each; the rows follow by counting.
void KeySorter::sortRows(const Use& use) {
    std::vector<std::uint32_t> order(keys_.size());
    std::iota(order.begin(), order.end(), 0u);
    std::ranges::sort(order, [&](auto left, auto right) { return keys_[left] < keys_[right]; });
    std::vector<std::uint32_t> starts(keys_.size() + 1);
    for (const std::uint32_t code : rowCodes_) ++starts[code];
    std::uint32_t start = 0;
    for (const std::uint32_t code : order) start += std::exchange(starts[code], start);
    std::vector<RowId> sorted(rows_.size());
    for (std::size_t i = 0; i < rows_.size(); ++i) sorted[starts[rowCodes_[i]]++] = rows_[i];

    auto begin = sorted.begin();
    for (const std::uint32_t code : order) {
        const auto end = sorted.begin() + starts[code];
        if (!std::is_sorted(begin, end)) std::sort(begin, end);
        const Key key{keys_[code].begin(), keys_[code].end()};
        for (; begin != end; ++begin) use(key, *begin);
    }
}

void KeySorter::writeRun() {
    if (rows_.empty()) return;
    openFile();
    file_.seekp(0, std::ios::end);
    const Run run{file_.tellp(), rows_.size()};
    constexpr std::size_t kMaxRows = 4096;
    Key current;
    std::vector<RowId> rows;
    const auto writePiece = [&] {
        if (rows.empty()) return;
        write(file_, static_cast<std::uint32_t>(current.size()));
        file_.write(reinterpret_cast<const char*>(current.data()),
                    static_cast<std::streamsize>(current.size()));
        write(file_, static_cast<std::uint32_t>(rows.size()));
        file_.write(reinterpret_cast<const char*>(rows.data()),
                    static_cast<std::streamsize>(rows.size() * sizeof(RowId)));
        rows.clear();
    };
    sortRows([&](const Key& key, RowId row) {
        if (rows.size() == kMaxRows || key != current) {
            writePiece();
            current = key;
        }
        rows.push_back(row);
    });
    writePiece();
    file_.flush();
    if (!file_) throwTemporary(Fault::DiskFull);
    runs_.push_back(run);
    codes_.clear();
    keys_.clear();
    keyBytes_ = 0;
    rowCodes_.clear();
    rows_.clear();
}

void KeySorter::merge(const Use& use) {
    std::vector<RunReader> readers;
    for (const Run& run : runs_) readers.emplace_back(file_, run);
    const auto later = [&](std::size_t left, std::size_t right) {
        const auto order = readers[left].key() <=> readers[right].key();
        return order != 0 ? order > 0 : readers[left].row() > readers[right].row();
    };
    std::priority_queue<std::size_t, std::vector<std::size_t>, decltype(later)> queue{later};
    for (std::size_t i = 0; i < readers.size(); ++i) {
        if (readers[i].next()) queue.push(i);
    }
    while (!queue.empty()) {
        const std::size_t reader = queue.top();
        queue.pop();
        use(readers[reader].key(), readers[reader].row());
        if (readers[reader].next()) queue.push(reader);
    }
}

void KeySorter::openFile() {
    if (file_.is_open()) return;
    std::random_device device;
    const std::string name = "vorelle-" + std::to_string(device()) + ".tmp";
    std::error_code failure;
    const auto folder = std::filesystem::temp_directory_path(failure);
    if (failure) throwTemporary(Fault::DiskFull);
    path_ = folder / name;
    file_.open(path_, std::ios::in | std::ios::out | std::ios::binary | std::ios::trunc);
    if (!file_) throwTemporary(Fault::DiskFull);
}

}  // namespace jet
