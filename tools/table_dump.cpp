#include "tools/table_dump.h"

#include "tools/plain_form.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>

namespace plain {

namespace {

/// Half a megabyte of the file: large enough that handing it over takes no noticeable time.
constexpr std::size_t kBlockPages = 128;

struct Block {
    std::string text;
    jet::Losses losses;
    std::uint64_t rows = 0;  ///< found, whether or not they are in the text
};

/// Makes the text of blocks of a table's pages. Belongs to one thread.
class BlockWriter {
public:
    explicit BlockWriter(const sql::Query& query)
        : query_{query}, table_{query.scannedTable()}, filter_{query.rowFilter()} {}

    Block write(std::span<const jet::PageNumber> pages) {
        Block block;
        block.text.reserve(2 * pages.size() * jet::kPageSize);
        jet::TableScan scan{*table_, pages};
        write(scan, block);
        return block;
    }

    Block writeWithoutPointer(std::vector<jet::RowId> rows) {
        Block block;
        jet::TableScan scan{*table_, std::move(rows)};
        write(scan, block);
        return block;
    }

private:
    void write(jet::TableScan& scan, Block& block) {
        FieldWriter fields{block.text};
        while (scan.next()) {
            if (matches(scan)) writeRow(scan, fields, block.text);
        }
        block.losses = scan.losses();
        block.rows = scan.rowCount();
    }

    bool matches(jet::TableScan& scan) {
        if (!filter_) return true;
        const bool matches = filter_->matches(scan.record(), scan.pages());
        if (!filter_->lost().empty()) scan.loseFields(filter_->lost());
        return matches;
    }

    void writeRow(jet::TableScan& scan, FieldWriter& fields, std::string& text) {
        const auto& columns = query_.columns();
        for (std::size_t place = 0; place < columns.size();) {
            try {
                for (; place < columns.size(); ++place) {
                    if (place > 0) text += '\t';
                    const jet::Column& column = *columns[place].stored;
                    const jet::Record& record = scan.record();
                    fields.field(scan.pages(), column, record.field(column), record.page());
                }
            } catch (const jet::Error& error) {
                if (!jet::isDamage(error)) throw;
                lost_.push_back({columns[place++].stored, error.what()});
                fields.value(jet::Unreadable{});
            }
        }
        text += '\n';
        if (!lost_.empty()) scan.loseFields(lost_);
    }

    const sql::Query& query_;
    std::shared_ptr<const jet::Table> table_;
    std::unique_ptr<sql::RowFilter> filter_;
    std::vector<jet::LostField> lost_;  ///< of the current row
};

/// Blocks made by several threads, taken in their order by one.
class BlockQueue {
public:
    BlockQueue(const sql::Query& query, std::span<const jet::PageNumber> pages, unsigned threads)
        : query_{query},
          pages_{pages},
          blocks_{(pages.size() + kBlockPages - 1) / kBlockPages},
          ahead_{2 * std::size_t{threads}} {
        for (unsigned i = 0; i < threads; ++i) workers_.emplace_back([this] { work(); });
    }

    ~BlockQueue() {
        {
            const std::lock_guard lock{mutex_};
            nextToMake_ = blocks_;
        }
        changed_.notify_all();
        for (std::thread& worker : workers_) worker.join();
    }

    BlockQueue(const BlockQueue&) = delete;
    BlockQueue& operator=(const BlockQueue&) = delete;

    /// The next block; false behind the last one. Throws what a worker met.
    bool take(Block& block) {
        std::unique_lock lock{mutex_};
        if (nextToTake_ == blocks_) return false;
        changed_.wait(lock, [this] { return failure_ || made_.contains(nextToTake_); });
        if (failure_) std::rethrow_exception(failure_);
        block = std::move(made_.extract(nextToTake_).mapped());
        ++nextToTake_;
        changed_.notify_all();
        return true;
    }

private:
    void work() {
        try {
            BlockWriter writer{query_};
            for (std::size_t number = 0; nextNumber(number);) {
                const std::size_t first = number * kBlockPages;
                const std::size_t count = std::min(kBlockPages, pages_.size() - first);
                deliver(number, writer.write(pages_.subspan(first, count)));
            }
        } catch (...) {
            const std::lock_guard lock{mutex_};
            if (!failure_) failure_ = std::current_exception();
            nextToMake_ = blocks_;
            changed_.notify_all();
        }
    }

    /// Waits while the taker is too far behind, so that memory stays bounded.
    bool nextNumber(std::size_t& number) {
        std::unique_lock lock{mutex_};
        changed_.wait(
            lock, [this] { return nextToMake_ == blocks_ || nextToMake_ < nextToTake_ + ahead_; });
        if (nextToMake_ == blocks_) return false;
        number = nextToMake_++;
        return true;
    }

    void deliver(std::size_t number, Block block) {
        const std::lock_guard lock{mutex_};
        made_.emplace(number, std::move(block));
        changed_.notify_all();
    }

    const sql::Query& query_;
    const std::span<const jet::PageNumber> pages_;
    const std::size_t blocks_;
    const std::size_t ahead_;
    std::mutex mutex_;
    std::condition_variable changed_;
    // Under mutex_: written by the workers and the taker, read by all.
    std::map<std::size_t, Block> made_;
    std::size_t nextToMake_ = 0;
    std::size_t nextToTake_ = 0;
    std::exception_ptr failure_;
    std::vector<std::thread> workers_;
};

[[noreturn]] void throwWriteFailed() {
    throw std::system_error{errno, std::generic_category(), "The output cannot be written"};
}

}  // namespace

void writeAll(std::string_view text, std::FILE* out) {
    if (std::fwrite(text.data(), 1, text.size(), out) != text.size()) throwWriteFailed();
}

void flush(std::FILE* out) {
    if (std::fflush(out) != 0) throwWriteFailed();
}

jet::Losses dumpRows(const sql::Query& query, unsigned threads, std::FILE* out) {
    if (query.alwaysEmpty()) return {};
    const jet::Table& table = *query.scannedTable();
    jet::Losses losses = table.definition().losses;
    const std::vector<jet::PageNumber> pages = table.dataPages(losses);
    std::uint64_t rows = 0;
    const auto put = [&](const Block& block) {
        writeAll(block.text, out);
        losses += block.losses;
        rows += block.rows;
    };
    if (threads > 1) {
        BlockQueue queue{query, pages, threads};
        for (Block block; queue.take(block);) put(block);
    } else {
        BlockWriter writer{query};
        for (std::span<const jet::PageNumber> rest{pages}; !rest.empty();) {
            const std::size_t count = std::min(kBlockPages, rest.size());
            put(writer.write(rest.first(count)));
            rest = rest.subspan(count);
        }
    }
    if (rows < table.definition().rowCount) {
        put(BlockWriter{query}.writeWithoutPointer(table.recordsWithoutPointer(pages)));
    }
    table.compareRowCount(rows, losses);
    return losses;
}

}  // namespace plain
