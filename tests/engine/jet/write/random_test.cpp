// Random operations against a plain model in memory. After each batch the file must keep all rules
// and hold what the model holds, also when it is opened anew and after statements that failed.
#include "tests/support/random.h"

#include "tests/engine/jet/write/written.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

namespace jet {
namespace {

using fixture::Random;
using ByteVector = std::vector<std::uint8_t>;

/// What a table holds: rows in any order, each with one plain value a column.
struct ModelTable {
    std::vector<NewColumn> columns;
    std::vector<std::vector<Value>> rows;
    int indexes = 0;
};

class Model {
public:
    explicit Model(std::uint64_t seed) : random_{seed} {}

    void run(int batches, int operationsABatch) {
        for (int batch = 0; batch < batches; ++batch) {
            for (int i = 0; i < operationsABatch; ++i) operate();
            if (random_.oneIn(3)) reopen();
            compare(batch);
            if (::testing::Test::HasFailure()) return;
        }
    }

private:
    using Rows = std::vector<std::vector<std::string>>;

    // ---- Operations ----

    void operate() {
        if (tables_.empty() || random_.oneIn(400)) return makeTable();
        auto found = tables_.begin();
        std::advance(found, random_.below(static_cast<std::uint32_t>(tables_.size())));
        ModelTable& table = found->second;
        switch (random_.below(60)) {
            case 0:
                return addColumnTo(found->first, table);
            case 1:
                return addIndexTo(found->first, table);
            case 2:
                return random_.oneIn(8) ? drop(found->first) : updateMany(found->first, table);
            case 3:
                return failHalfWay(found->first, table);
            case 4:
                file_.database->commit();
                return;
            default:
                break;
        }
        if (random_.below(10) < 5 || table.rows.empty()) return insertInto(found->first, table);
        if (random_.below(10) < 6) return updateOne(found->first, table);
        removeOne(found->first, table);
    }

    void makeTable() {
        if (tables_.size() >= 4) return;
        const std::u16string name = u"Table " + toUtf16(std::to_string(++made_));
        std::vector<NewColumn> columns;
        for (std::uint32_t i = 0, count = random_.between(1, 6); i < count; ++i) {
            columns.push_back(randomColumn());
        }
        file_.write([&](WriteContext& context) { createTable(context, name, columns); });
        tables_[name] = {columns, {}};
    }

    NewColumn randomColumn() {
        constexpr std::array kTypes{ColumnType::Boolean, ColumnType::Byte,     ColumnType::Integer,
                                    ColumnType::Long,    ColumnType::Currency, ColumnType::Double,
                                    ColumnType::Date,    ColumnType::Text,     ColumnType::Text,
                                    ColumnType::Memo,    ColumnType::Binary,   ColumnType::Ole};
        NewColumn column;
        column.name = u"Column " + toUtf16(std::to_string(++made_));
        column.type = random_.pick(std::span<const ColumnType>{kTypes});
        column.size = static_cast<std::uint16_t>(2 * random_.between(1, 255));
        column.compressed = !random_.oneIn(4);
        return column;
    }

    void addColumnTo(const std::u16string& name, ModelTable& table) {
        if (table.columns.size() > 40) return;
        const NewColumn column = randomColumn();
        file_.write([&](WriteContext& context) { addColumn(context, name, column); });
        table.columns.push_back(column);
        const Value initial = column.type == ColumnType::Boolean ? Value{false} : Value{};
        for (auto& row : table.rows) row.push_back(initial);
    }

    void addIndexTo(const std::u16string& name, ModelTable& table) {
        if (table.indexes >= 4) return;
        NewIndex index{.name = u"Index " + toUtf16(std::to_string(++made_)), .columns = {}};
        for (const NewColumn& column : table.columns) {
            if (column.type == ColumnType::Ole || !random_.oneIn(2)) continue;
            index.columns.push_back({column.name, !random_.oneIn(3)});
            if (index.columns.size() == 3) break;
        }
        if (index.columns.empty()) return;
        index.ignoreNulls = random_.oneIn(3);
        file_.write([&](WriteContext& context) { createIndex(context, name, index); });
        ++table.indexes;
    }

    void drop(const std::u16string& name) {
        const std::u16string dropped = name;
        file_.write([&](WriteContext& context) { dropTable(context, dropped); });
        tables_.erase(dropped);
    }

    void insertInto(const std::u16string& name, ModelTable& table) {
        std::vector<Value> row = randomRow(table);
        change(name, [&](TableWriter& writer) { writer.insert(row); });
        table.rows.push_back(std::move(row));
    }

    void updateOne(const std::u16string& name, ModelTable& table) {
        const auto [place, model] = randomPlace(name, table);
        Assignments changes;
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            if (random_.oneIn(2)) changes.push_back({i, randomValue(table.columns[i])});
        }
        change(name, [&, at = place](TableWriter& writer) { writer.update(at, changes); });
        for (const Assignment& change : changes) (*model)[change.column] = change.value;
    }

    void removeOne(const std::u16string& name, ModelTable& table) {
        const auto [place, model] = randomPlace(name, table);
        change(name, [at = place](TableWriter& writer) { writer.remove(at); });
        table.rows.erase(model);
    }

    /// The same value for all rows of one column.
    void updateMany(const std::u16string& name, ModelTable& table) {
        const std::size_t column = random_.below(static_cast<std::uint32_t>(table.columns.size()));
        const Value value = randomValue(table.columns[column]);
        change(name, [&](TableWriter& writer) {
            writer.updateRows([&](const Record&, PageReader&, Assignments& out) {
                out.push_back({column, value});
                return true;
            });
        });
        for (auto& row : table.rows) row[column] = value;
    }

    /// A statement that changes much and then fails has changed nothing.
    void failHalfWay(const std::u16string& name, ModelTable& table) {
        struct Failure {};
        try {
            change(name, [&](TableWriter& writer) {
                for (int i = 0; i < 20; ++i) writer.insert(randomRow(table));
                writer.finish();
                throw Failure{};
            });
        } catch (const Failure&) {
        }
    }

    // ---- Parts ----

    template <typename Use>
    void change(const std::u16string& name, Use use) {
        file_.write([&](WriteContext& context) {
            TableWriter writer{context, file_.database->table(name)->definition()};
            use(writer);
            writer.finish();
        });
    }

    /// A random row of the file, and a row of the model with the same values.
    std::pair<RowId, std::vector<std::vector<Value>>::iterator> randomPlace(
        const std::u16string& name, ModelTable& table) {
        const auto stored = file_.database->table(name);
        auto left = random_.below(static_cast<std::uint32_t>(table.rows.size()));
        TableScan scan{*stored};
        while (scan.next() && left-- > 0) {
        }
        const std::vector<Value> values = valuesOf(scan, stored->definition());
        const auto model = std::ranges::find(table.rows, values);
        if (model == table.rows.end()) throw std::logic_error{"a row that the model does not know"};
        return {scan.rowId(), model};
    }

    std::vector<Value> randomRow(const ModelTable& table) {
        std::vector<Value> row;
        for (const NewColumn& column : table.columns) row.push_back(randomValue(column));
        return row;
    }

    Value randomValue(const NewColumn& column) {
        if (column.type == ColumnType::Boolean) return random_.oneIn(2);
        if (random_.oneIn(6)) return {};
        switch (column.type) {
            case ColumnType::Byte:
                return static_cast<std::uint8_t>(random_.next());
            case ColumnType::Integer:
                return static_cast<std::int16_t>(random_.next());
            case ColumnType::Long:
                return static_cast<std::int32_t>(random_.below(1000)) - 500;
            case ColumnType::Currency:
                return Currency{static_cast<std::int64_t>(random_.next())};
            case ColumnType::Double:
                return static_cast<double>(random_.below(100)) / 4 - 10;
            case ColumnType::Date:
                return Date{static_cast<double>(random_.below(80000)) - 1000};
            case ColumnType::Text:
                return randomText(column.size / 2u);
            case ColumnType::Memo:
                return randomText(random_.oneIn(20) ? 9000 : 300);
            case ColumnType::Binary:
                return randomBytes(std::min<std::uint32_t>(column.size, 100));
            default:
                return randomBytes(random_.oneIn(20) ? 20000 : 200);
        }
    }

    Value randomText(std::uint32_t most) {
        std::u16string text;
        const std::uint32_t length = random_.below(random_.oneIn(3) ? most + 1 : most / 8 + 1);
        const bool wide = random_.oneIn(4);
        while (text.size() < length) {
            text.push_back(static_cast<char16_t>(
                wide && random_.oneIn(3) ? random_.between(0x3041, 0x3090)
                                         : random_.between('a', random_.oneIn(9) ? 0xFF : 'z')));
        }
        return text;
    }

    Value randomBytes(std::uint32_t most) {
        Binary bytes(random_.below(most + 1));
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random_.next());
        return bytes;
    }

    void reopen() {
        file_.database->commit();
        file_ = Written{file_.bytes()};
    }

    // ---- Comparison ----

    void compare(int batch) {
        const CheckReport report = check(file_.database->storage());
        ASSERT_TRUE(report.sound() && report.warnings == 0) << "batch " << batch << "\n"
                                                            << describe(report);
        ASSERT_EQ(userTables(*file_.database).size(), tables_.size());
        for (const auto& [name, table] : tables_) {
            Rows expected;
            for (const auto& row : table.rows) expected.push_back(plainRow(row));
            Rows found;
            const auto stored = file_.database->table(name);
            for (TableScan scan{*stored}; scan.next();) {
                found.push_back(plainRow(valuesOf(scan, stored->definition())));
            }
            std::ranges::sort(expected);
            std::ranges::sort(found);
            ASSERT_EQ(found, expected) << "batch " << batch << ", " << toUtf8(name);
        }
    }

    static std::vector<std::string> plainRow(const std::vector<Value>& row) {
        std::vector<std::string> plainValues;
        for (const Value& value : row) plainValues.push_back(plain(value).value_or("\\N"));
        return plainValues;
    }

    Random random_;
    Written file_;
    std::map<std::u16string, ModelTable> tables_;
    int made_ = 0;
};

class RandomChanges : public ::testing::TestWithParam<std::uint64_t> {};

TEST_P(RandomChanges, AgreeWithAPlainModel) { Model{GetParam()}.run(20, 300); }

INSTANTIATE_TEST_SUITE_P(Seeds, RandomChanges, ::testing::Range<std::uint64_t>(1, 7));

}  // namespace
}  // namespace jet
