#include "engine/jet/check/report.h"

#include "engine/jet/text.h"

namespace jet {

std::string_view nameOf(Rule rule) {
    switch (rule) {
        case Rule::Journal:
            return "journal";
        case Rule::FileLength:
            return "file length";
        case Rule::Header:
            return "header";
        case Rule::PageReference:
            return "page reference";
        case Rule::PageType:
            return "page type";
        case Rule::PageOwner:
            return "page owner";
        case Rule::PageOwnership:
            return "page ownership";
        case Rule::OrphanPage:
            return "orphan page";
        case Rule::UsageMap:
            return "usage map";
        case Rule::FreeMap:
            return "free map";
        case Rule::DefinitionLayout:
            return "definition layout";
        case Rule::Columns:
            return "columns";
        case Rule::IndexDefinition:
            return "index definition";
        case Rule::DataPage:
            return "data page";
        case Rule::MovedRecord:
            return "moved record";
        case Rule::OrphanRecord:
            return "orphan record";
        case Rule::Record:
            return "record";
        case Rule::RowCount:
            return "row count";
        case Rule::Autonumber:
            return "autonumber";
        case Rule::LongValue:
            return "long value";
        case Rule::UnusedLongValue:
            return "unused long value";
        case Rule::IndexPage:
            return "index page";
        case Rule::IndexTree:
            return "index tree";
        case Rule::IndexEntries:
            return "index entries";
        case Rule::IndexKey:
            return "index key";
        case Rule::UniqueKey:
            return "unique key";
        case Rule::RequiredKey:
            return "required key";
        case Rule::IndexCounters:
            return "index counters";
        case Rule::Catalog:
            return "catalog";
        case Rule::AccessRights:
            return "access rights";
    }
    return "unknown rule";
}

namespace checking {

void Reporter::setTable(std::u16string_view name) { table_ = toUtf8(name); }

void Reporter::add(Finding::Severity severity, Rule rule, Place place, std::string message) {
    std::uint64_t& count = severity == Finding::Severity::Error ? report_.errors : report_.warnings;
    if (++count > CheckReport::kMaxKept) return;
    report_.findings.push_back({severity, rule, place.page, place.row, table_, std::move(message)});
}

std::string nameOf(PageNumber page) { return "page " + std::to_string(raw(page)); }

std::string nameOf(RowId row) { return nameOf(row.page()) + ", row " + std::to_string(row.slot()); }

}  // namespace checking
}  // namespace jet
