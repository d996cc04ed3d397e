// Every index of every sample database, held against the rows of its table.
#include "engine/jet/collation_weights.h"
#include "engine/jet/database.h"
#include "engine/jet/index.h"
#include "engine/jet/index_key.h"
#include "tests/engine/jet/hex.h"
#include "tests/engine/jet/sample_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace jet {
namespace {

using RowKeys = std::map<RowId, std::vector<Value>>;

/// The values of the index's columns in every row of the table that has an entry.
RowKeys valuesOfRows(const Table& table, const PhysicalIndex& index) {
    RowKeys rows;
    TableScan scan{table};
    while (scan.next()) {
        std::vector<Value> values;
        for (const IndexColumn& part : index.columns) {
            const Column& column = *table.definition().findColumn(part.columnId);
            values.push_back(decodeField(scan.pages(), column, scan.record().field(column),
                                         scan.rowId().page()));
        }
        if (index.ignoreNulls && std::all_of(values.begin(), values.end(), isNull)) continue;
        rows.emplace(scan.rowId(), std::move(values));
    }
    EXPECT_EQ(scan.losses().rows, 0u);
    EXPECT_EQ(scan.losses().pages, 0u);
    return rows;
}

/// Whether a text has a letter that stands for several. Some programs count such a letter as one
/// place, the engine as many, which shows in the key if an accent or a hyphen follows.
bool expands(const Value& value) {
    const auto* text = std::get_if<std::u16string>(&value);
    return text != nullptr && std::any_of(text->begin(), text->end(), [](char16_t unit) {
               return CharacterWeights::general()[unit].kind == WeightKind::Expanding;
           });
}

struct Totals {
    int indexes = 0;
    int pagesDeep = 0;  ///< indexes of more than one page
    std::size_t entries = 0;
    std::size_t keysCompared = 0;
    std::size_t textKeysCompared = 0;
    std::size_t foreignKeys = 0;  ///< see expands()
};

class IndexCheck {
public:
    IndexCheck(const Table& table, const PhysicalIndex& index, Totals& totals)
        : table_{table},
          definition_{table.definition()},
          index_{index},
          totals_{totals},
          rows_{valuesOfRows(table, index)} {}

    void run() {
        walk();
        if (canMakeKeys(definition_, index_)) {
            compareKeys();
            seekEveryKey();
        }
        ++totals_.indexes;
        totals_.entries += entries_.size();
        Key page{table_.pageReader().page(index_.root)[0]};
        totals_.pagesDeep += page[0] == 3 ? 1 : 0;
    }

private:
    struct Entry {
        Key key;
        RowId row;
    };

    IndexCursor cursor() const { return {table_.pageReader(), definition_, index_}; }

    void walk() {
        IndexCursor at = cursor();
        for (at.first(); at.valid(); at.next()) {
            const Bytes key = at.key();
            entries_.push_back({{key.begin(), key.end()}, at.rowId()});
        }
        for (std::size_t i = 1; i < entries_.size(); ++i) {
            ASSERT_LE(entries_[i - 1].key, entries_[i].key);
            if (index_.unique && entries_[i].key[0] != 0x00) {
                ASSERT_NE(entries_[i - 1].key, entries_[i].key);
            }
        }
        std::vector<RowId> fromTree;
        for (const Entry& entry : entries_) fromTree.push_back(entry.row);
        std::sort(fromTree.begin(), fromTree.end());
        std::vector<RowId> fromTable;
        for (const auto& [row, values] : rows_) fromTable.push_back(row);
        ASSERT_EQ(fromTree, fromTable);
    }

    void compareKeys() {
        const bool text =
            std::any_of(index_.columns.begin(), index_.columns.end(), [&](const IndexColumn& part) {
                return definition_.findColumn(part.columnId)->isText();
            });
        for (const Entry& entry : entries_) {
            const std::vector<Value>& values = rows_.at(entry.row);
            const Key made = encodeKey(values, definition_, index_);
            if (made != entry.key && std::any_of(values.begin(), values.end(), expands)) {
                ++totals_.foreignKeys;
                continue;
            }
            ASSERT_EQ(hex(entry.key), hex(made));
            ++totals_.keysCompared;
            totals_.textKeysCompared += text ? 1 : 0;
        }
    }

    void seekEveryKey() {
        IndexCursor at = cursor();
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            const Entry& entry = entries_[i];
            at.seek(entry.key);
            ASSERT_TRUE(at.valid());
            ASSERT_TRUE(std::ranges::equal(at.key(), entry.key));
            const bool firstOfKey = i == 0 || entries_[i - 1].key != entry.key;
            if (firstOfKey) {
                ASSERT_EQ(at.rowId(), entry.row);
            }
        }
        at.seek(Key{0xFF, 0xFF});
        ASSERT_FALSE(at.valid());
    }

    const Table& table_;
    const TableDefinition& definition_;
    const PhysicalIndex& index_;
    Totals& totals_;
    RowKeys rows_;
    std::vector<Entry> entries_;
};

class IndexesOfSamples : public testing::Test {
protected:
    void SetUp() override {
        files_ = sample::databases();
        if (files_.empty()) {
            GTEST_SKIP() << fixture::kNoTestData;
        }
    }

    std::vector<std::filesystem::path> files_;
};

TEST_F(IndexesOfSamples, HoldTheRowsOfTheirTablesUnderTheirKeys) {
    Totals totals;
    for (const auto& file : files_) {
        const auto database = Database::open(file);
        for (const CatalogEntry& entry : database->catalog()) {
            if (!entry.isTable()) continue;
            PageReader pages{database->storage(), database->cache()};
            const Table table{database,
                              TableDefinition::read(pages, PageNumber{entry.id}, entry.name)};
            const auto& indexes = table.definition().physicalIndexes;
            for (std::size_t i = 0; i < indexes.size(); ++i) {
                SCOPED_TRACE(file.filename().string() + ", definition on page " +
                             std::to_string(entry.id) + ", index " + std::to_string(i));
                IndexCheck{table, indexes[i], totals}.run();
                if (HasFatalFailure()) return;
            }
        }
    }
    std::cout << files_.size() << " files, " << totals.indexes << " indexes (" << totals.pagesDeep
              << " of several pages), " << totals.entries << " entries, " << totals.keysCompared
              << " keys compared, " << totals.textKeysCompared << " with text\n";
    EXPECT_GT(totals.indexes, 300);
    EXPECT_GT(totals.pagesDeep, 5);
    EXPECT_GT(totals.textKeysCompared, 2000u);
    EXPECT_LE(totals.foreignKeys, 1u);
}

}  // namespace
}  // namespace jet
