// Rows of one table, found by a scan: small columns are kept in memory, the others are read from
// the file on demand.
//
//   auto rows = std::make_shared<ado::ScannedRows>(query);
//   std::vector<jet::LostField> lost;
//   rows->store().append(scan.rowId(), scan.record(), lost);  // the fetch
//   rows->store().publish();
//   use(rows->value(0, 0));
//
// One thread: the owner's. Only the store may be written by another thread meanwhile.
#pragma once

#include "engine/ado/field_reader.h"
#include "engine/ado/lost_fields.h"
#include "engine/ado/row_store.h"
#include "engine/ado/rows.h"

namespace ado {

/// The store may be written by another thread meanwhile; all else belongs to the owner's thread.
class ScannedRows : public Rows {
public:
    /// Requires: query->scannedTable().
    explicit ScannedRows(std::shared_ptr<const sql::Query> query);

    RowStore& store() { return store_; }
    const RowStore& store() const { return store_; }
    const jet::Table& table() const { return *table_; }
    const std::shared_ptr<const jet::Table>& sharedTable() const { return table_; }

    /// Fields that were damaged when they were read from the file, by this object or a search.
    LostFields& lostFields() const { return *lostFields_; }

    std::uint32_t count() const override { return store_.count(); }
    jet::Value value(std::uint32_t row, std::size_t column) override;
    bool appendText(std::uint32_t row, std::size_t column, const ValueFormatter& formatter,
                    std::u16string& out) override;
    std::vector<std::uint64_t> orderKeys(std::size_t column, std::uint32_t count) override;
    std::int64_t code(std::uint32_t row, std::size_t column) const override;
    void startPass() override;
    void endPass() override;
    std::size_t byteCount() const override { return sizeof *this + store_.byteCount(); }

private:
    FieldReader& reader() { return inOrder_ ? *inOrder_ : anyRow_; }
    jet::Value readValue(std::uint32_t row, std::size_t column);
    jet::Value nullOf(std::uint32_t row, std::size_t column);
    void noteDamage(std::uint32_t row, std::size_t column);
    bool appendFromFile(std::uint32_t row, std::size_t column, const ValueFormatter& formatter,
                        std::u16string& out);
    std::optional<Unit> commonUnit(std::size_t column, std::uint32_t count) const;
    std::vector<std::uint64_t> numberKeys(std::size_t column, std::uint32_t count) const;
    std::vector<std::uint64_t> codeKeys(std::size_t column, std::uint32_t count) const;
    std::vector<std::uint64_t> fileKeys(std::size_t column, std::uint32_t count);

    std::shared_ptr<const sql::Query> query_;
    std::shared_ptr<const jet::Table> table_;
    RowStore store_;
    std::unique_ptr<LostFields> lostFields_;

    FieldReader anyRow_;
    std::optional<FieldReader> inOrder_;  ///< during a pass
};

/// Rows of any other query, their values in memory.
class MaterialisedRows : public Rows {
public:
    /// Runs the query to its end. Throws as sql::Cursor.
    explicit MaterialisedRows(const sql::Query& query);

    jet::Losses losses() const { return losses_; }

    std::uint32_t count() const override { return static_cast<std::uint32_t>(rows_.size()); }
    jet::Value value(std::uint32_t row, std::size_t column) override { return rows_[row][column]; }
    bool appendText(std::uint32_t row, std::size_t column, const ValueFormatter& formatter,
                    std::u16string& out) override;
    std::vector<std::uint64_t> orderKeys(std::size_t column, std::uint32_t count) override;
    std::int64_t code(std::uint32_t, std::size_t) const override { return -1; }
    std::size_t byteCount() const override;

private:
    std::vector<sql::OutputColumn> columns_;
    std::vector<std::vector<jet::Value>> rows_;
    jet::Losses losses_;
};

}  // namespace ado
