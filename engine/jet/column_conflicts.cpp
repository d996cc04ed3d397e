#include "engine/jet/column_conflicts.h"

#include "engine/jet/collation.h"
#include "engine/jet/record.h"
#include "engine/jet/text.h"

#include <algorithm>
#include <numeric>

namespace jet {
namespace {

namespace layout = format::table_definition;

bool isKnown(ColumnType type) {
    switch (type) {
        case ColumnType::Boolean:
        case ColumnType::Byte:
        case ColumnType::Integer:
        case ColumnType::Long:
        case ColumnType::Currency:
        case ColumnType::Single:
        case ColumnType::Double:
        case ColumnType::Date:
        case ColumnType::Binary:
        case ColumnType::Text:
        case ColumnType::Ole:
        case ColumnType::Memo:
        case ColumnType::Guid:
        case ColumnType::Numeric:
        case ColumnType::InternalBinary:
            return true;
    }
    return false;
}

std::size_t fixedSize(const Column& column) {
    return column.type == ColumnType::Boolean ? 0 : storedSize(column);
}

std::size_t fixedEnd(const Column& column) { return column.fixedOffset + fixedSize(column); }

/// Numbers that columns have of their own, such as their ids, and how many there are.
struct Numbering {
    std::uint16_t Column::*number;
    bool (*applies)(const Column&);
    std::uint16_t TableDefinition::*limit;
    const char* name;
};

class ConflictSearch {
public:
    explicit ConflictSearch(TableDefinition& definition)
        : definition_{definition}, reasons_(definition.columns.size()) {}

    void run() {
        for (std::size_t i = 0; i < reasons_.size(); ++i) {
            checkKind(i);
            idsOfNull_.push_back(mayBeNull(i) ? definition_.columns[i].id : layout::kNoColumn);
        }
        checkNumbers({&Column::id, [](const Column&) { return true; },
                      &TableDefinition::columnsEver, "number"});
        checkNumbers({&Column::variableIndex, [](const Column& column) { return !column.fixed; },
                      &TableDefinition::variableColumnsEver, "variable place"});
        checkFixedPlaces();
        for (std::size_t i = 1; i < reasons_.size(); ++i) renameSecond(i);
        for (std::size_t i = 0; i < reasons_.size(); ++i) {
            if (reasons_[i].empty()) continue;
            setAside(definition_.columns[i], reasons_[i]);
            definition_.columns[i].idForNull = idsOfNull_[i];
        }
    }

private:
    void fail(std::size_t i, std::string reason) {
        if (reasons_[i].empty()) reasons_[i] = std::move(reason);
    }

    /// What a column says of itself alone.
    void checkKind(std::size_t i) {
        const Column& column = definition_.columns[i];
        if (!isKnown(column.type)) {
            fail(i, "its type is unknown");
        } else if (column.isLongValue() && column.fixed) {
            fail(i, "a long value is not in the fixed part");
        } else if (column.compressed && !column.isText()) {
            fail(i, "only texts are compressed");
        } else if (column.type == ColumnType::Text && column.size == 0) {
            fail(i, "its texts have no length");
        } else if (!column.isLongValue() && column.ownedMap.page() != kNoPage) {
            fail(i, "only long values have pages of their own");
        } else if (column.isLongValue() && column.size != 0 && column.ownedMap.page() == kNoPage) {
            fail(i, "its long values have no pages");
        }
    }

    /// Whether the bit of a column's id tells that the column is Null: the id is its own, and it is
    /// no Boolean, whose bit is the value. Where the type is damaged, the length still tells that.
    bool mayBeNull(std::size_t place) const {
        const Column& column = definition_.columns[place];
        if (column.type == ColumnType::Boolean || column.size == kBooleanSize) return false;
        const auto ofThatId = std::ranges::count(definition_.columns, column.id, &Column::id);
        return column.id < definition_.columnsEver && ofThatId == 1;
    }

    void checkNumbers(const Numbering& numbering) {
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < reasons_.size(); ++i) {
            if (numbering.applies(definition_.columns[i])) places.push_back(i);
        }
        std::uint16_t& limit = definition_.*numbering.limit;
        // A limit that leaves no room for the columns is what is damaged.
        if (limit < places.size()) {
            limit = layout::kMaxColumnsEver;
            lose(std::string{"The definition of the table "} + toUtf8(definition_.name) +
                 " has more columns than there ever were.");
        }
        for (const std::size_t i : places) {
            const unsigned number = definition_.columns[i].*numbering.number;
            if (number >= limit) fail(i, std::string{"its "} + numbering.name + " is too high");
        }
        for (std::size_t i = 0; i < places.size(); ++i) {
            for (std::size_t k = i + 1; k < places.size(); ++k) {
                if (definition_.columns[places[i]].*numbering.number ==
                    definition_.columns[places[k]].*numbering.number) {
                    failBoth(places[i], places[k],
                             std::string{"another column has its "} + numbering.name);
                }
            }
        }
    }

    /// Columns that claim the same. One whose type does not go with the way it is stored is to blame.
    void failBoth(std::size_t left, std::size_t right, const std::string& reason) {
        if (!reasons_[left].empty() || !reasons_[right].empty()) return;
        const bool leftIsOdd = isOddlyStored(definition_.columns[left]);
        const bool rightIsOdd = isOddlyStored(definition_.columns[right]);
        if (leftIsOdd || !rightIsOdd) fail(left, reason);
        if (rightIsOdd || !leftIsOdd) fail(right, reason);
    }

    static bool isOddlyStored(const Column& column) {
        const bool hasOwnSize = sizeOfType(column.type) != 0 || column.type == ColumnType::Boolean;
        return hasOwnSize != column.fixed;
    }

    void checkFixedPlaces() {
        std::vector<std::size_t> order;
        for (std::size_t i = 0; i < reasons_.size(); ++i) {
            const Column& column = definition_.columns[i];
            if (column.fixed && fixedSize(column) > 0 && reasons_[i].empty()) order.push_back(i);
        }
        for (const std::size_t i : order) {
            if (disagreesWithItsPlace(i, order)) fail(i, "its type does not fit into its place");
        }
        for (std::size_t i = 0; i < order.size(); ++i) {
            for (std::size_t k = i + 1; k < order.size(); ++k) {
                const Column& one = definition_.columns[order[i]];
                const Column& other = definition_.columns[order[k]];
                if (one.fixedOffset < fixedEnd(other) && other.fixedOffset < fixedEnd(one)) {
                    failBoth(order[i], order[k], "another column has its place");
                }
            }
        }
        checkWidth(order);
    }

    /// Whether the next column begins where a value of the declared length would end, which is not
    /// the length of its type.
    bool disagreesWithItsPlace(std::size_t place, const std::vector<std::size_t>& fixed) const {
        const Column& column = definition_.columns[place];
        if (column.size == fixedSize(column)) return false;
        const auto begins = [&](std::size_t offset) {
            return std::ranges::any_of(fixed, [&](std::size_t i) {
                return i != place && definition_.columns[i].fixedOffset == offset;
            });
        };
        return begins(std::size_t{column.fixedOffset} + column.size) && !begins(fixedEnd(column));
    }

    /// Where no column was ever dropped, the fixed part has no gaps.
    void checkWidth(const std::vector<std::size_t>& fixed) {
        if (definition_.columnsEver != definition_.columns.size()) return;
        std::size_t width = 0;
        for (const std::size_t i : fixed) width += fixedSize(definition_.columns[i]);
        for (const std::size_t i : fixed) {
            if (reasons_[i].empty() && fixedEnd(definition_.columns[i]) > width + kSlack) {
                fail(i, "its place is beyond the fixed part");
            }
        }
    }

    /// The second column of a name gets another one.
    void renameSecond(std::size_t place) {
        Column& column = definition_.columns[place];
        const auto begin = definition_.columns.begin();
        const bool second = std::any_of(
            begin, begin + static_cast<std::ptrdiff_t>(place), [&](const Column& other) {
                return compareText(other.name, column.name) == std::strong_ordering::equal;
            });
        if (!second) return;
        lose("Two columns of the table " + toUtf8(definition_.name) + " have the name " +
             toUtf8(column.name) + ".");
        column.name = u"Column" + toUtf16(std::to_string(place + 1));
    }

    void setAside(Column& column, const std::string& reason) {
        column.unreadable = "The column " + toUtf8(column.name) + " of the table " +
                            toUtf8(definition_.name) + " is damaged: " + reason + ".";
        column.id = layout::kNoColumn;
        lose(column.unreadable);
    }

    void lose(std::string why) {
        definition_.losses.add(
            {Loss::Kind::Definitions, definition_.page, Loss::kNoSlot, std::move(why)});
    }

    static constexpr std::uint16_t kBooleanSize = 1;  ///< as declared

    /// A column that was set aside may have taken more room than it says now.
    static constexpr std::size_t kSlack = 32;

    TableDefinition& definition_;
    std::vector<std::string> reasons_;      ///< one a column; empty if there is none
    std::vector<std::uint16_t> idsOfNull_;  ///< one a column: its idForNull if it is set aside
};

}  // namespace

void setAsideConflicts(TableDefinition& definition) { ConflictSearch{definition}.run(); }

}  // namespace jet
