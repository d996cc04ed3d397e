#include "engine/jet/check/definition_parts.h"

#include "engine/jet/check/definition.h"
#include "engine/jet/collation.h"
#include "engine/jet/format/value.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <utility>

namespace jet::checking {
namespace {

/// The values that occur more than once, each once for every repetition.
template <typename T>
std::vector<T> repeated(std::vector<T> values) {
    std::sort(values.begin(), values.end());
    std::vector<T> found;
    for (std::size_t i = 1; i < values.size(); ++i) {
        if (values[i] == values[i - 1]) found.push_back(values[i]);
    }
    return found;
}

/// Names are the same if the collation says so.
template <typename Named>
bool haveOwnNames(const std::vector<Named>& things) {
    std::vector<std::string> keys;
    keys.reserve(things.size());
    for (const Named& thing : things) keys.push_back(textKey(thing.name));
    return repeated(std::move(keys)).empty();
}

class ColumnCheck {
public:
    ColumnCheck(Context& context, const TableDefinition& definition)
        : context_{context}, definition_{definition} {}

    void run() {
        if (!haveOwnNames(definition_.columns)) fail("two columns have the same name");
        checkNumbers();
        checkFixedPlaces();
        for (const Column& column : definition_.columns) checkType(column);
    }

private:
    void fail(const std::string& message) {
        context_.report.error(Rule::Columns, definition_.page, message);
    }

    void checkNumbers() {
        std::vector<unsigned> ids;
        std::vector<unsigned> places;
        for (const Column& column : definition_.columns) {
            ids.push_back(column.id);
            if (column.fixed || column.type == ColumnType::Boolean) continue;
            places.push_back(column.variableIndex);
            if (column.variableIndex >= definition_.variableColumnsEver) {
                fail("the place of column " + toUtf8(column.name) + " is too high");
            }
        }
        for (const unsigned id : repeated(std::move(ids))) {
            fail("two columns have the number " + std::to_string(id));
        }
        for (const unsigned place : repeated(std::move(places))) {
            fail("two columns have the variable place " + std::to_string(place));
        }
    }

    void checkFixedPlaces() {
        std::vector<std::pair<std::size_t, std::size_t>> ranges;
        for (const Column& column : definition_.columns) {
            const std::size_t size = column.fixed ? fixedBytes(column) : 0;
            if (size > 0) ranges.emplace_back(column.fixedOffset, column.fixedOffset + size);
        }
        std::sort(ranges.begin(), ranges.end());
        for (std::size_t i = 1; i < ranges.size(); ++i) {
            if (ranges[i].first < ranges[i - 1].second) {
                fail("two columns overlap at byte " + std::to_string(ranges[i].first) +
                     " of the record");
            }
        }
    }

    /// What the block of a column says about its type must agree.
    void checkType(const Column& column) {
        const char* const wrong = contradiction(column);
        if (wrong != nullptr) fail("column " + toUtf8(column.name) + ": " + wrong);
    }

    const char* contradiction(const Column& column) const {
        if (!isKnown(column.type)) return "there is no such type";
        if (!hasRightLength(column)) return "the length is not one of its type";
        if (column.fixed && column.isLongValue()) return "a long value is not fixed";
        if (!column.fixed && column.type == ColumnType::Boolean) return "a Boolean is fixed";
        const bool text = column.type == ColumnType::Text || column.type == ColumnType::Memo;
        if (text && column.collation.lcid == 0) return "the text has no order";
        if (column.compressed && !text) return "only texts are compressed";
        const bool numbered = column.type == ColumnType::Long || column.type == ColumnType::Guid;
        if (column.autonumber && !numbered) return "the type cannot number its rows";
        if (column.type != ColumnType::Numeric) return nullptr;
        const bool possible = column.precision >= 1 &&
                              column.precision <= format::value::kMaxDigits &&
                              column.scale <= column.precision;
        return possible ? nullptr : "the number of digits is impossible";
    }

    static bool isKnown(ColumnType type) {
        return (type >= ColumnType::Boolean && type <= ColumnType::Memo) ||
               (type >= ColumnType::Guid && type <= ColumnType::InternalBinary);
    }

    static bool hasRightLength(const Column& column) {
        constexpr std::size_t kMaxText = 510;
        switch (column.type) {
            case ColumnType::Boolean:
                return column.size == 1;
            case ColumnType::Memo:
            case ColumnType::Ole:
                return column.size == 0;
            case ColumnType::Text:
                return column.size <= kMaxText && column.size % sizeof(char16_t) == 0;
            case ColumnType::Binary:
                return column.size <= kMaxText;
            case ColumnType::InternalBinary:
                return true;
            default:
                return column.size == format::value::size(column.type);
        }
    }

    Context& context_;
    const TableDefinition& definition_;
};

}  // namespace

void checkColumns(Context& context, const TableDefinition& definition) {
    ColumnCheck{context, definition}.run();
}

void checkIndexes(Context& context, const TableDefinition& definition) {
    const auto fail = [&](const std::string& message) {
        context.report.error(Rule::IndexDefinition, definition.page, message);
    };
    for (const PhysicalIndex& index : definition.physicalIndexes) {
        if (index.columns.empty()) fail("an index has no columns");
        for (const IndexColumn& part : index.columns) {
            if (definition.findColumn(part.columnId) != nullptr) continue;
            fail("an index has a column of number " + std::to_string(part.columnId) +
                 ", which does not exist");
        }
    }
    const std::vector<LogicalIndex>& names = definition.logicalIndexes;
    if (!haveOwnNames(names)) fail("two indexes have the same name");
    const auto before = [](const LogicalIndex& left, const LogicalIndex& right) {
        return compareText(left.name, right.name) < 0;
    };
    if (!std::is_sorted(names.begin(), names.end(), before)) {
        // Some writers keep the order of creation, and readers search the names one by one.
        context.report.warning(Rule::IndexDefinition, definition.page,
                               "the names of the indexes are not in order");
    }
    const auto isPrimary = [](const LogicalIndex& index) {
        return index.kind == IndexKind::PrimaryKey;
    };
    if (std::count_if(names.begin(), names.end(), isPrimary) > 1) {
        fail("there is more than one primary key");
    }
    std::vector<std::uint32_t> numbers;
    numbers.reserve(names.size());
    for (const LogicalIndex& index : names) numbers.push_back(index.number);
    for (const std::uint32_t number : repeated(std::move(numbers))) {
        fail("two indexes have the number " + std::to_string(number));
    }
}

}  // namespace jet::checking
