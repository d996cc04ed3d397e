#include "engine/jet/check/index_keys.h"

#include "engine/jet/index_key.h"
#include "engine/jet/record.h"

#include <array>
#include <cstring>

namespace jet::checking {
namespace {

std::uint64_t mixed(std::uint64_t bits) {
    bits = (bits ^ (bits >> 32)) * 0xD6E8FEB86659FD93u;
    bits = (bits ^ (bits >> 32)) * 0xD6E8FEB86659FD93u;
    return bits ^ (bits >> 32);
}

std::uint64_t hashBytes(Bytes bytes) {
    std::uint64_t hash = bytes.size();
    while (bytes.size() >= sizeof hash) {
        hash = mixed(hash ^ load<std::uint64_t>(bytes, 0));
        bytes = bytes.subspan(sizeof hash);
    }
    std::uint64_t rest = 0;
    if (!bytes.empty()) std::memcpy(&rest, bytes.data(), bytes.size());
    return mixed(hash ^ rest);
}

/// Key parts of texts met lately: names repeat in millions of rows, and their weights are the most
/// expensive part of a key.
class TextParts {
public:
    /// Appends the part of a text as it is stored.
    void append(const Column& column, bool ascending, const StoredField& field, PageReader& pages,
                PageNumber page, Key& key) {
        entries_.resize(kEntries);  // not for an index without texts or without rows
        Entry& entry = entries_[static_cast<std::size_t>(hashBytes(field.bytes) % kEntries)];
        const bool known = !entry.part.empty() && entry.stored.size() == field.bytes.size() &&
                           std::equal(field.bytes.begin(), field.bytes.end(), entry.stored.begin());
        if (!known) {
            entry.part.clear();
            entry.stored.assign(field.bytes.begin(), field.bytes.end());
            appendKeyPart(decodeField(pages, column, field, page), column, ascending, entry.part);
        }
        key.insert(key.end(), entry.part.begin(), entry.part.end());
    }

private:
    struct Entry {
        std::vector<std::uint8_t> stored;
        Key part;
    };
    static constexpr std::size_t kEntries = 1024;
    std::vector<Entry> entries_;
};

/// Makes the key of one row after the other.
class KeyMaker {
public:
    KeyMaker(Context& context, const TableDefinition& definition, const PhysicalIndex& index)
        : pages_{context.reader()}, texts_(index.columns.size()) {
        for (const IndexColumn& part : index.columns) {
            columns_.push_back(definition.findColumn(part.columnId));
            ascending_.push_back(part.ascending);
        }
        possible_ = canMakeKeys(definition, index);
    }

    /// Whether keys can be made at all.
    bool possible() const { return possible_; }

    /// How many of the row's key columns are null.
    std::size_t countNulls(const Record& record) const {
        std::size_t nulls = 0;
        for (const Column* column : columns_) {
            if (column != nullptr && record.field(*column).null) ++nulls;
        }
        return nulls;
    }

    /// Requires: possible(). The key holds until the next call. Throws Error{Damaged}.
    Bytes make(const Record& record) {
        key_.clear();
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const Column& column = *columns_[i];
            const StoredField field = record.field(column);
            if (column.type == ColumnType::Text && !field.null) {
                texts_[i].append(column, ascending_[i], field, pages_, record.page(), key_);
            } else {
                const Value value = decodeField(pages_, column, field, record.page());
                appendKeyPart(value, column, ascending_[i], key_);
            }
        }
        return key_;
    }

private:
    PageReader pages_;
    std::vector<const Column*> columns_;
    std::vector<bool> ascending_;
    std::vector<TextParts> texts_;
    bool possible_ = false;
    Key key_;
};

}  // namespace

RowKeys::RowKeys(Context& context, const TableDefinition& definition, const PhysicalIndex& index,
                 const LiveRows& rows, const std::string& name)
    : hashes_(rows.ids.size(), kUnknown) {
    KeyMaker maker{context, definition, index};
    forEachRow(context, definition, rows, [&](std::size_t place, RowId row, Bytes bytes) {
        try {
            const Record record{bytes, row.page()};
            const std::size_t nulls = maker.countNulls(record);
            if (index.required && nulls > 0) {
                context.report.error(Rule::RequiredKey, row,
                                     "a key column of " + name + " is null");
            }
            if (index.ignoreNulls && nulls == index.columns.size()) {
                hashes_[place] = kNoEntry;
            } else if (maker.possible()) {
                hashes_[place] = hash(maker.make(record));
            }
        } catch (const Error& error) {
            if (error.fault() != Fault::Damaged) throw;
        }
    });
}

bool RowKeys::matches(std::size_t place, Bytes key) const {
    return hashes_[place] <= kUnknown || hashes_[place] == hash(key);
}

std::uint64_t RowKeys::hash(Bytes key) {
    const std::uint64_t bits = hashBytes(key);
    return bits <= kUnknown ? bits + 2 : bits;
}

}  // namespace jet::checking
