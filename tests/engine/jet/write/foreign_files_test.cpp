// Files of other makers that are changed here: what was there stays, and the changes arrive.
#include "engine/jet/index_key.h"
#include "tests/engine/jet/faults.h"
#include "tests/engine/jet/sample_files.h"
#include "tests/engine/jet/second_reader.h"
#include "tests/engine/jet/write/written.h"

#include <fstream>
#include <iterator>
#include <map>

namespace jet {
namespace {

using Rows = std::vector<fixture::PlainRow>;

std::vector<std::uint8_t> contentOf(const std::filesystem::path& path) {
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, std::istreambuf_iterator<char>{}};
}

/// How often each rule is broken in each table.
std::map<std::string, int> errorsIn(const Storage& storage) {
    std::map<std::string, int> counts;
    for (const Finding& finding : check(storage).findings) {
        if (finding.severity == Finding::Severity::Error) {
            ++counts[finding.table + ": " + std::string{nameOf(finding.rule)}];
        }
    }
    return counts;
}

const std::u16string kKey = u"process_17_source \u00E9\u00E8 " + std::u16string(60, u'k');

class ForeignFile : public testing::TestWithParam<std::filesystem::path> {
protected:
    ForeignFile() : file_{contentOf(GetParam())}, errors_{errorsIn(file_.database->storage())} {
        tables_ = userTables(*file_.database);
        for (const auto& name : tables_) before_[name] = file_.rows(name);
    }

    void expectNoNewErrors(const char* step) {
        for (const auto& [what, count] : errorsIn(file_.database->storage())) {
            EXPECT_LE(count, errors_[what]) << step << ": " << what;
        }
    }

    /// Every old value is where it was, and `added` stand behind each row.
    void expectRows(const char* step, const fixture::PlainRow& added) {
        for (const auto& name : tables_) {
            Rows expected = before_[name];
            for (auto& row : expected) row.insert(row.end(), added.begin(), added.end());
            EXPECT_EQ(file_.rows(name), expected) << step << ": " << toUtf8(name);
        }
    }

    void expectUnchanged(Fault fault, const std::function<void(WriteContext&)>& change) {
        file_.database->commit();
        const std::vector<std::uint8_t> bytes = file_.bytes();
        expectFault(fault, [&] { file_.write(change); });
        file_.database->commit();
        EXPECT_EQ(file_.bytes(), bytes);
    }

    void insertNulls(WriteContext& context, const std::u16string& name) {
        TableWriter writer{context, file_.database->table(name)->definition()};
        writer.insert(std::vector<Value>(writer.definition().columns.size()));
        writer.finish();
    }

    Written file_;
    std::map<std::string, int> errors_;
    std::vector<std::u16string> tables_;
    std::map<std::u16string, Rows> before_;
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ForeignFile);

TEST_P(ForeignFile, IsUpgraded) {
    for (const auto& name : tables_) {
        file_.write([&](WriteContext& context) {
            addColumn(context, name, {.name = u"Zz Flag", .type = ColumnType::Boolean});
            addColumn(context, name, {.name = u"Zz Key", .type = ColumnType::Text, .size = 320});
        });
    }
    expectNoNewErrors("columns");
    expectRows("columns", {"0", std::nullopt});

    for (const auto& name : tables_) {
        file_.write([&](WriteContext& context) {
            TableWriter writer{context, file_.database->table(name)->definition()};
            const std::size_t first = writer.definition().columns.size() - 2;
            const auto changed =
                writer.updateRows([&](const Record&, PageReader&, Assignments& changes) {
                    changes.push_back({first, true});
                    changes.push_back({first + 1, kKey});
                    return true;
                });
            EXPECT_EQ(changed, before_[name].size());
            writer.finish();
        });
    }
    expectNoNewErrors("values");
    expectRows("values", {"1", toUtf8(kKey)});

    for (const auto& name : tables_) {
        file_.write([&](WriteContext& context) {
            createIndex(context, name, {.name = u"Zz Index", .columns = {{u"Zz Key"}}});
        });
    }
    expectNoNewErrors("indexes");
    expectRows("indexes", {"1", toUtf8(kKey)});

    file_.write([&](WriteContext& context) {
        createTable(context, u"Zz New",
                    {{.name = u"Id", .type = ColumnType::Long, .autonumber = true},
                     {.name = u"Note", .type = ColumnType::Memo}});
    });
    std::vector<std::vector<Value>> rows;
    for (std::size_t i = 0; i < 100; ++i)
        rows.push_back(row(Value{}, std::u16string(i * 90, u'n')));
    file_.insert(u"Zz New", rows);
    expectNoNewErrors("new table");
    EXPECT_EQ(file_.rows(u"Zz New").size(), 100u);

#ifndef _WIN32
    // This file has rows that the other reader sees although they are gone.
    if (fixture::hasProgram("mdb-export") && GetParam().stem() != "old-orphans") {
        file_.database->commit();
        const fixture::TemporaryFolder folder;
        compareFile(folder.write("changed.mdb", file_.bytes()));
    }
#endif

    file_.write([&](WriteContext& context) { dropTable(context, u"Zz New"); });
    while (!tables_.empty()) {
        file_.write([&](WriteContext& context) { dropTable(context, tables_.back()); });
        tables_.pop_back();
        expectNoNewErrors("dropped");
    }
    EXPECT_TRUE(userTables(*file_.database).empty());
}

// An index in an order that is not this project's is left alone: its table takes no rows.
TEST_P(ForeignFile, IndexesInAnotherOrderAreNotWritten) {
    for (const auto& name : tables_) {
        const TableDefinition definition = file_.database->table(name)->definition();
        const bool foreign = std::ranges::any_of(
            definition.physicalIndexes,
            [&](const PhysicalIndex& index) { return !canMakeKeys(definition, index); });
        if (foreign) {
            expectUnchanged(Fault::IndexNotWritable,
                            [&](WriteContext& context) { insertNulls(context, name); });
        }
        for (const Column& column : definition.columns) {
            PhysicalIndex index;
            index.columns.push_back({column.id, true});
            if (!column.isText() || canMakeKeys(definition, index)) continue;
            expectUnchanged(Fault::IndexNotWritable, [&](WriteContext& context) {
                createIndex(context, name, {.name = u"Zz", .columns = {{column.name}}});
            });
        }
    }
}

// One row at a time, with all that there is on the way: moved rows, dropped columns, full pages.
TEST_P(ForeignFile, RowsAreChangedOneByOneAndRemoved) {
    for (const auto& name : tables_) {
        const TableDefinition definition = file_.database->table(name)->definition();
        const bool writable = std::ranges::all_of(
            definition.physicalIndexes,
            [&](const PhysicalIndex& index) { return canMakeKeys(definition, index); });
        if (!writable) continue;
        std::vector<RowId> places;
        const auto table = file_.database->table(name);
        for (TableScan scan{*table}; scan.next() && places.size() < 300;) {
            places.push_back(scan.rowId());
        }
        file_.write([&](WriteContext& context) {
            addColumn(context, name, {.name = u"Zz Key", .type = ColumnType::Text, .size = 320});
        });
        file_.write([&](WriteContext& context) {
            TableWriter writer{context, file_.database->table(name)->definition()};
            const Assignments changes{{writer.definition().columns.size() - 1, kKey}};
            for (const RowId place : places) writer.update(place, changes);
            writer.finish();
        });
        expectNoNewErrors("updated");
        file_.write([&](WriteContext& context) {
            TableWriter writer{context, file_.database->table(name)->definition()};
            for (std::size_t i = 0; i < places.size(); i += 2) writer.remove(places[i]);
            writer.finish();
        });
        expectNoNewErrors("removed");
        const Rows rows = file_.rows(name);
        EXPECT_EQ(rows.size(), before_[name].size() - (places.size() + 1) / 2);
        for (std::size_t i = 0; i < places.size() / 2; ++i) {
            fixture::PlainRow expected = before_[name][2 * i + 1];
            expected.emplace_back(toUtf8(kKey));
            EXPECT_EQ(rows[i], expected) << toUtf8(name) << ", row " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Samples, ForeignFile, testing::ValuesIn(sample::databases()),
                         [](const auto& sampleInfo) {
                             std::string name = sampleInfo.param.stem().string();
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

TEST(ForeignFiles, AreThere) {
    if (!fixture::testDataFolder()) {
        GTEST_SKIP() << fixture::kNoTestData;
    }
    EXPECT_GE(sample::databases().size(), 25u);
}

}  // namespace
}  // namespace jet
