// One table of a database in the making.
//
//   fixture::TableBuilder& table = builder.addTable({
//       .name = u"People", .columns = {fixture::textColumn(u"Name", 50)}});
//   const jet::RowId row = table.insert({u"Ada"});
//
// Rows are written as they come; maps, indexes and the definition when the database is finished.
// Beside plain rows it makes what files get in use: records of fewer columns than the table has
// now, deleted rows and columns, records that moved.
#pragma once

#include "tests/support/long_values.h"
#include "tests/support/record_writer.h"
#include "tests/support/table_definition_writer.h"
#include "tests/support/usage_maps.h"

#include <memory>

namespace fixture {

struct TableSpec {
    std::u16string name;
    std::vector<ColumnSpec> columns{};
    std::vector<IndexSpec> indexes{};  ///< on columns that the table has from the start
    MapForm maps = MapForm::Natural;
    std::uint32_t catalogFlags = 0;  ///< 0x80000000 or 2 make it a system table in the catalog
};

class TableBuilder {
public:
    /// Made by FixtureBuilder::addTable. `maps` takes the rows of the table's usage maps.
    TableBuilder(PageFile& file, jet::PageNumber definition, RecordPages& maps, TableSpec spec,
                 bool system);

    /// Adds a row; missing fields at the end are null. The row id is that of the record's home.
    jet::RowId insert(const Row& row);

    /// The next row goes to a new page.
    void startNewPage() { rows_.startNewPage(); }

    /// Rows inserted before stay as they are: too short to have the column.
    void addColumn(ColumnSpec spec);

    /// Takes the column out of the definition and gives up the pages of its long values; the
    /// records keep its bytes.
    /// Throws std::invalid_argument for a column of an index.
    void dropColumn(std::u16string_view name);

    /// Long values of the row stay on their pages.
    void deleteRow(jet::RowId row);

    /// Puts the record, with new content, on another page and a pointer in its old place. A record
    /// that moved before moves on, and its last place is deleted.
    void moveRow(jet::RowId row, const Row& content);

    /// A record marked as moved to which nothing points: not a row, though it looks like one.
    jet::RowId insertOrphan(const Row& content);

    /// The definition shall claim this many rows, whatever the truth.
    void setStoredRowCount(std::uint32_t count) { storedRowCount_ = count; }

    std::uint32_t rowCount() const { return rowCount_; }
    const TableLayout& layout() const { return layout_; }
    const std::u16string& name() const { return spec_.name; }

    /// Also the owner on the data pages, and the table's id in the catalog.
    jet::PageNumber definitionPage() const { return definition_; }

    /// Where a row's bytes stand now: its home or, if it moved, where the pointer leads.
    jet::RowId recordPlace(jet::RowId row);

    const std::vector<jet::PageNumber>& dataPages() const { return rows_.pages(); }

    /// The pages of a Memo or Ole column. Throws std::out_of_range.
    const std::vector<jet::PageNumber>& longValuePages(std::u16string_view column) const;

    /// Complete when the database is finished. Throws std::out_of_range.
    const TableIndex& index(std::u16string_view name) const;

    /// Known when the database is finished.
    const std::vector<jet::PageNumber>& definitionPages() const { return definitionPages_; }
    const DefinitionParts& parts() const { return parts_; }

    /// Writes all that is not written yet. Called once, by the database's builder.
    void finish();

private:
    ByteView encode(const Row& row);
    void addIndexEntries(const Row& row, jet::RowId id);
    void removeIndexEntries(jet::RowId id);
    void noteAutonumber(const Row& row);
    jet::RowId appendElsewhere(jet::PageNumber home, ByteView record);
    MapPair writeMaps(std::span<const jet::PageNumber> owned,
                      std::span<const jet::PageNumber> free);

    PageFile& file_;
    jet::PageNumber definition_;
    RecordPages& maps_;
    TableSpec spec_;
    bool system_;
    TableLayout layout_;
    RecordPages rows_;
    std::map<std::uint16_t, LongValueWriter> longValues_;  ///< by column id
    std::vector<std::unique_ptr<TableIndex>> indexes_;
    std::uint32_t rowCount_ = 0;
    std::optional<std::uint32_t> storedRowCount_;
    std::uint32_t lastAutonumber_ = 0;
    std::vector<jet::PageNumber> definitionPages_;
    DefinitionParts parts_;
    RecordWriter record_;
    ByteVector content_;  ///< of the field being written
    ByteVector field_;    ///< what stands of it in the record
};

}  // namespace fixture
