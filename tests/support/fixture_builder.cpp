#include "tests/support/fixture_builder.h"

#include "tests/support/header_page.h"

namespace fixture {

FixtureBuilder::FixtureBuilder() { addSystemTables(); }

FixtureBuilder::FixtureBuilder(const std::filesystem::path& path) : file_{path} {
    addSystemTables();
}

/// Pages 0 and 1 for the header and the free pages, 2 to 5 for the definitions, 6 for their maps.
void FixtureBuilder::addSystemTables() {
    file_.allocate();
    file_.allocate();
    const std::vector<TableSpec> specs = systemTables();
    std::vector<jet::PageNumber> definitions;
    for (std::size_t i = 0; i < specs.size(); ++i) definitions.push_back(file_.allocate());
    systemMaps_.startNewPage();
    for (std::size_t i = 0; i < specs.size(); ++i) {
        system_.push_back(
            std::make_unique<TableBuilder>(file_, definitions[i], systemMaps_, specs[i], true));
    }
    for (const CatalogRow& object : systemObjects()) catalog().insert(toRow(object));
    for (const AccessRow& right : systemRights()) system_[1]->insert(toRow(right));
}

TableBuilder& FixtureBuilder::addTable(TableSpec spec) {
    const jet::PageNumber definition = file_.allocate();
    maps_.push_back(std::make_unique<RecordPages>(file_, 0));
    maps_.back()->startNewPage();
    addCatalogRow({.id = raw(definition), .name = spec.name, .flags = spec.catalogFlags});
    grantRights(raw(definition));
    tables_.push_back(
        std::make_unique<TableBuilder>(file_, definition, *maps_.back(), std::move(spec), false));
    return *tables_.back();
}

void FixtureBuilder::grantRights(std::uint32_t objectId) {
    system_[1]->insert(toRow(AccessRow{objectId, sid::kAdmin, 0x000F00FE}));
    system_[1]->insert(toRow(AccessRow{objectId, sid::kUsers, 0x000FFEFF}));
}

void FixtureBuilder::finish() {
    if (finished_) return;
    finished_ = true;
    for (const auto& table : tables_) table->finish();
    for (const auto& maps : maps_) maps->finish();
    for (const auto& table : system_) table->finish();
    systemMaps_.finish();
    writeFreePageMap(file_);
    file_.write(jet::PageNumber{0}, headerPage());
    file_.flush();
}

const ByteVector& FixtureBuilder::bytes() {
    finish();
    return file_.bytes();
}

}  // namespace fixture
