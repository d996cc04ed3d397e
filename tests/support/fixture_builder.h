// Builds Jet 4.0 databases from nothing, byte by byte, without the code that reads them.
//
//   fixture::FixtureBuilder builder;
//   auto& table = builder.addTable(
//       {.name = u"People", .columns = {fixture::textColumn(u"Name", 50)}});
//   table.insert({u"Ada"});
//   auto database = jet::Database::open(std::make_unique<jet::MemoryStorage>(builder.bytes()));
//
// A builder belongs to one thread. Give it a path to stream a large database to a file.
// What is wrong on purpose is made of a finished database, see damage.h.
#pragma once

#include "tests/support/system_catalog.h"

namespace fixture {

class FixtureBuilder {
public:
    /// A database in memory; finished without tables it is the empty database of 16 pages.
    FixtureBuilder();

    /// A database in a new file. Throws std::runtime_error.
    explicit FixtureBuilder(const std::filesystem::path& path);

    FixtureBuilder(const FixtureBuilder&) = delete;
    FixtureBuilder& operator=(const FixtureBuilder&) = delete;

    /// The reference holds as long as the builder.
    TableBuilder& addTable(TableSpec spec);

    /// Enters an object that is no table of this file: a query, a linked table, a form.
    void addCatalogRow(const CatalogRow& object) { catalog().insert(toRow(object)); }

    /// The catalog itself, MSysObjects, for what needs more.
    TableBuilder& catalog() { return *system_[0]; }

    /// Writes what is not written yet. Nothing can be added afterwards.
    void finish();

    /// Finishes if need be; the whole file, for a database in memory.
    const ByteVector& bytes();

    std::uint32_t pageCount() const { return file_.pageCount(); }

private:
    void addSystemTables();
    void grantRights(std::uint32_t objectId);

    PageFile file_;
    RecordPages systemMaps_{file_, 0};
    std::vector<std::unique_ptr<TableBuilder>> system_;
    std::vector<std::unique_ptr<RecordPages>> maps_;  ///< each user table has map pages of its own
    std::vector<std::unique_ptr<TableBuilder>> tables_;
    bool finished_ = false;
};

}  // namespace fixture
