// Checks a whole database: every rule for its pages, tables, records and indexes.
//
//   const jet::CheckReport report = jet::checkFile(jet::openFile("traces.mdb"));
//   for (const jet::Finding& finding : report.findings) print(finding);
//   return report.sound() ? 0 : 1;
//
// Reads each page a few times at most, uses some ten bytes of memory a row and terminates on any
// file. Any thread may call it on a storage that is not being written.
#pragma once

#include "engine/jet/storage.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

class Database;

/// The rules. Where only a warning can result, the comment says so.
enum class Rule : std::uint8_t {
    Journal,        ///< beside the file is no journal, least of all a damaged one; other than that
                    ///< a warning
    FileLength,     ///< whole pages, all that are in use, not more than the format can address
    Header,         ///< constants of the header page
    PageReference,  ///< a referenced page is in the file
    PageType,       ///< and of the expected type
    PageOwner,      ///< and names its owner, a table or long values
    PageOwnership,  ///< no page has two owners or is listed as free too
    OrphanPage,     ///< warning: a page in use without references
    UsageMap,       ///< a page map is readable and lists only pages in the file
    FreeMap,        ///< pages with room belong to the same owner
    DefinitionLayout,  ///< lengths and constants of a table's definition
    Columns,           ///< numbers, positions and names of a table's columns
    IndexDefinition,   ///< numbers, columns and names of its indexes; their order is a warning
    DataPage,          ///< slots of a page of rows; a deleted row that keeps its bytes is a warning
    MovedRecord,       ///< a moved row points directly to its record
    OrphanRecord,      ///< a moved record has a row that points to it
    Record,            ///< the parts of a record and the sizes of its values
    RowCount,          ///< warning: the definition's row count is right
    Autonumber,        ///< warning: no number exceeds the last one assigned
    LongValue,         ///< a long value is complete and shares no part
    UnusedLongValue,   ///< warning: part of a long value without a record
    IndexPage,         ///< layout and order of one page of an index; a wrong level is a warning
    IndexTree,         ///< order, links and depth of an index's pages, and their map; above the
                       ///< leaves a missing link is a warning
    IndexEntries,      ///< an index has one entry for each row, and no others
    IndexKey,          ///< the key of an entry is that of its row
    UniqueKey,         ///< no two rows share a key in a unique index
    RequiredKey,       ///< no key column is null in an index that forbids it
    IndexCounters,     ///< warning: the definition's distinct key count is large enough
    Catalog,           ///< the catalog's tables match the definitions in the file
    AccessRights,      ///< each user table has access rights
};

/// A name of two or three words.
std::string_view nameOf(Rule rule);

/// One violation of a rule.
struct Finding {
    enum class Severity : std::uint8_t {
        Error,   ///< a reader or a writer may fail
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
    /// Findings of each severity that are kept; more are only counted.
    static constexpr std::size_t kMaxKept = 1000;

    std::vector<Finding> findings;  ///< as met: by table
    std::uint64_t errors = 0;
    std::uint64_t warnings = 0;

    /// What was checked.
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

/// Checks the database in `file` as it will be when it is opened next: a change that was interrupted
/// counts as taken back. Reports what lies beside it under the name of its journal. Throws as above.
CheckReport checkFile(std::unique_ptr<Storage> file);

/// The same for a database that is open. Throws as its storage does.
CheckReport check(const Database& database);

}  // namespace jet
