#include "tests/support/system_catalog.h"

#include <bit>

namespace fixture {

using jet::ColumnType;

namespace {

constexpr std::uint64_t kObjectDateBits = 0x40E4AB3E3BD3FB4E;
constexpr std::uint32_t kSystemObject = 0x80000000;
constexpr unsigned kNameCharacters = 255;
constexpr std::uint8_t kSecurityIdColumn = 0x20;

ColumnSpec nameColumn(std::u16string name) {
    return textColumn(std::move(name), kNameCharacters, false);
}

ColumnSpec securityIdColumn(std::u16string name) {
    ColumnSpec spec = binaryColumn(std::move(name), 510);
    spec.flags = kSecurityIdColumn;
    return spec;
}

TableSpec objectsTable() {
    return {.name = u"MSysObjects",
            .columns = {column(u"Id", ColumnType::Long), column(u"ParentId", ColumnType::Long),
                        nameColumn(u"Name"), column(u"Type", ColumnType::Integer),
                        column(u"DateCreate", ColumnType::Date),
                        column(u"DateUpdate", ColumnType::Date), securityIdColumn(u"Owner"),
                        column(u"Flags", ColumnType::Long), memoColumn(u"Database", false),
                        memoColumn(u"Connect", false), nameColumn(u"ForeignName"),
                        binaryColumn(u"RmtInfoShort", 510), column(u"RmtInfoLong", ColumnType::Ole),
                        column(u"Lv", ColumnType::Ole), column(u"LvProp", ColumnType::Ole),
                        column(u"LvModule", ColumnType::Ole), column(u"LvExtra", ColumnType::Ole)},
            .indexes = {
                {.name = u"ParentIdName", .columns = {{u"ParentId"}, {u"Name"}}, .unique = true},
                {.name = u"Id", .columns = {{u"Id"}}, .unique = true, .primary = true}}};
}

TableSpec rightsTable() {
    return {
        .name = u"MSysACEs",
        .columns = {column(u"ObjectId", ColumnType::Long), securityIdColumn(u"SID"),
                    column(u"ACM", ColumnType::Long), column(u"FInheritable", ColumnType::Boolean)},
        .indexes = {{.name = u"ObjectId", .columns = {{u"ObjectId"}}, .required = true}}};
}

TableSpec queriesTable() {
    return {
        .name = u"MSysQueries",
        .columns = {column(u"ObjectId", ColumnType::Long), column(u"Attribute", ColumnType::Byte),
                    binaryColumn(u"Order", 510), nameColumn(u"Name1"), nameColumn(u"Name2"),
                    memoColumn(u"Expression", false), column(u"Flag", ColumnType::Integer),
                    column(u"LvExtra", ColumnType::Long)},
        .indexes = {{.name = u"ObjectIdAttribute",
                     .columns = {{u"ObjectId"}, {u"Attribute"}, {u"Order"}},
                     .unique = true,
                     .primary = true}}};
}

IndexSpec relationIndex(const std::u16string& columnName) {
    return {.name = columnName, .columns = {{columnName}}, .ignoreNulls = true};
}

TableSpec relationshipsTable() {
    return {.name = u"MSysRelationships",
            .columns = {nameColumn(u"szRelationship"), column(u"grbit", ColumnType::Long),
                        column(u"ccolumn", ColumnType::Long), column(u"icolumn", ColumnType::Long),
                        nameColumn(u"szObject"), nameColumn(u"szColumn"),
                        nameColumn(u"szReferencedObject"), nameColumn(u"szReferencedColumn")},
            .indexes = {relationIndex(u"szRelationship"), relationIndex(u"szObject"),
                        relationIndex(u"szReferencedObject")}};
}

std::int32_t asStored(std::uint32_t number) { return static_cast<std::int32_t>(number); }

}  // namespace

Row toRow(const CatalogRow& object) {
    const jet::Date date{std::bit_cast<double>(kObjectDateBits)};
    return {asStored(object.id), asStored(object.parentId), object.name, object.type, date, date,
            object.owner,        asStored(object.flags)};
}

Row toRow(const AccessRow& right) {
    return {asStored(right.objectId), right.sid, asStored(right.rights), right.inheritable};
}

std::vector<TableSpec> systemTables() {
    return {objectsTable(), rightsTable(), queriesTable(), relationshipsTable()};
}

std::vector<CatalogRow> systemObjects() {
    constexpr std::uint32_t kRoot = 0x0F000000;
    return {
        {kTablesContainer, kRoot, u"Tables", 3, sid::kEngine, kSystemObject},
        {kDatabasesContainer, kRoot, u"Databases", 3, sid::kEngine, kSystemObject},
        {kRelationshipsContainer, kRoot, u"Relationships", 3, sid::kEngine, kSystemObject},
        {0x10000000, kDatabasesContainer, u"MSysDb", 2, sid::kAdmin, kSystemObject},
        {2, kTablesContainer, u"MSysObjects", 1, sid::kEngine, kSystemObject},
        {3, kTablesContainer, u"MSysACEs", 1, sid::kEngine, kSystemObject},
        {4, kTablesContainer, u"MSysQueries", 1, sid::kEngine, kSystemObject},
        {5, kTablesContainer, u"MSysRelationships", 1, sid::kEngine, kSystemObject},
    };
}

std::vector<AccessRow> systemRights() {
    return {
        {2, sid::kAdmin, 0x60000},
        {3, sid::kAdmin, 0x60000},
        {4, sid::kAdmin, 0x60000},
        {5, sid::kAdmin, 0xE0000},
        {kTablesContainer, sid::kCreator, 0xF00FE, true},
        {kTablesContainer, sid::kAdmin, 0x60001},
        {kRelationshipsContainer, sid::kCreator, 0xF00FE, true},
        {kRelationshipsContainer, sid::kAdmin, 0x60001},
        {kDatabasesContainer, sid::kAdmin, 0x60000},
        {0x10000000, sid::kAdmin, 0x6000E},
        {0x10000000, sid::kUsers, 0xE},
        {4, sid::kUsers, 0x14},
        {5, sid::kUsers, 0x14},
        {2, sid::kUsers, 0x14},
        {kTablesContainer, sid::kUsers, 0xFFEFF, true},
        {kRelationshipsContainer, sid::kUsers, 0xFFFFF, true},
    };
}

}  // namespace fixture
