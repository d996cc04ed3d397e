// Checks a whole database: every rule that its pages, tables, records and indexes must keep.
//
//   const jet::CheckReport report = jet::check(*jet::openFile("traces.mdb"));
//   for (const jet::Finding& finding : report.findings) print(finding);
//   return report.sound() ? 0 : 1;
//
// Reads each page a few times at most and keeps some ten bytes a row; no file makes it run without
// end. Any thread may call it, on a storage that nobody writes to meanwhile.
#pragma once

#include "engine/jet/storage.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

class Database;

/// What a database must keep to. Where only a warning can result, the comment says so.
enum class Rule : std::uint8_t {
    FileLength,        ///< whole pages, all that are in use, not more than the format can address
    Header,            ///< constants of the header page
    PageReference,     ///< a page that is referred to lies in the file
    PageType,          ///< and is of the kind that is expected there
    PageOwner,         ///< and names the table, or the long values, that it belongs to
    PageOwnership,     ///< no page has two owners, and none is listed as free besides
    OrphanPage,        ///< warning: a page in use that nothing refers to
    UsageMap,          ///< a map of pages can be read and lists pages of the file only
    FreeMap,           ///< pages with room are pages of the same owner
    DefinitionLayout,  ///< lengths and constants of a table's definition
    Columns,           ///< numbers, places and names of a table's columns
    IndexDefinition,   ///< numbers, columns and names of its indexes; their order is a warning
    DataPage,          ///< slots of a page of rows; a deleted row that keeps its bytes is a warning
    MovedRecord,       ///< a row that moved leads to its record in one step
    OrphanRecord,      ///< a moved record has a row that leads to it
    Record,            ///< the parts of a record and the sizes of its values
    RowCount,          ///< warning: the definition counts the rows
    Autonumber,        ///< warning: no number in the table is above the last one handed out
    LongValue,         ///< a long value is complete, and its parts are its own
    UnusedLongValue,   ///< warning: part of a long value to which no record leads
    IndexPage,         ///< layout and order of one page of an index; a wrong level is a warning
    IndexTree,         ///< order, links and depth of an index's pages, and their map; above the
                       ///< leaves a missing link is a warning
    IndexEntries,      ///< an index has one entry for each row, and no others
    IndexKey,          ///< the key of an entry is that of its row
    UniqueKey,         ///< no two rows share a key in a unique index
    RequiredKey,       ///< no key column is null in an index that forbids it
    IndexCounters,     ///< warning: the definition counts at least the distinct keys there are
    Catalog,           ///< tables of the catalog and definitions in the file are the same
    AccessRights,      ///< somebody has a right to each table of users
};

/// The rule in two or three words.
std::string_view nameOf(Rule rule);

/// One place where a rule is broken.
struct Finding {
    enum class Severity : std::uint8_t {
        Error,   ///< a reader or a writer may go wrong
        Warning  ///< space is lost or a statistic is stale
    };

    Severity severity = Severity::Error;
    Rule rule = Rule::Header;
    PageNumber page = kNoPage;    ///< page 0 for what concerns the header or the whole file
    std::optional<unsigned> row;  ///< slot on the page
    std::string table;            ///< UTF-8; empty outside of tables
    std::string message;          ///< UTF-8, one line
};

struct CheckReport {
    /// Findings of each severity that are kept; the others are counted only.
    static constexpr std::size_t kMaxKept = 1000;

    std::vector<Finding> findings;  ///< as met: by table
    std::uint64_t errors = 0;
    std::uint64_t warnings = 0;

    /// What was looked at.
    std::uint32_t pages = 0;
    std::uint32_t tables = 0;
    std::uint64_t rows = 0;
    std::uint64_t longValues = 0;  ///< those outside of their records
    std::uint32_t indexes = 0;
    std::uint64_t entries = 0;

    bool sound() const { return errors == 0; }
};

/// Checks all of the database in `storage`. Damage is reported, not thrown.
/// Throws Error: NotADatabase, OlderFormat, NewerFormat, Encrypted, PasswordProtected; Truncated if
/// not even a catalog is there; ReadFailed.
CheckReport check(const Storage& storage);

/// The same for a database that is open. Throws as its storage does.
CheckReport check(const Database& database);

}  // namespace jet
