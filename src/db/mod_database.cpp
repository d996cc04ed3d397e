#include "src/db/mod_database.h"

#include "src/db/class_diags.h"
#include "src/log/class_log.h"
#include "src/log/procedure.h"
#include "src/services/services.h"
#include "src/text/text.h"

#include <array>
#include <functional>
#include <optional>
#include <utility>

namespace modDatabase {
namespace {

constexpr std::u16string_view kUniqueFiltersQuery =
    u"SELECT Process, Source, Component, TraceLevel, qrxIndex From tblUniqueFilters "
    u"ORDER BY Component, TraceLevel";

constexpr std::u16string_view kTracesQuery =
    u"SELECT tblTraces.Date, tblTraces.Process, tblTraces.Source, tblTraces.TraceNumber, "
    u"tblTraces.Component, tblTraces.TraceLevel, tblTraces.Port, tblTraces.CallId, "
    u"tblTraces.Trace  FROM tblTraces ";

/// For the oldest files, which have no Port and no CallId.
constexpr std::u16string_view kOldestTracesQuery =
    u"SELECT tblTraces.Date, tblTraces.Process, tblTraces.Source, tblTraces.TraceNumber, "
    u"tblTraces.Component, tblTraces.TraceLevel, tblTraces.Trace  FROM tblTraces ";

constexpr std::u16string_view kMacroTracesQuery = u"SELECT * FROM tblMacroTraces";

/// The key of a row's unique trace.
constexpr std::u16string_view kKeyFormula =
    u"[Component] & '_' & [Process] & '_' & [TraceLevel] & '_' & [Source]";

/// The unique traces.
constexpr std::u16string_view kCombinationsQuery =
    u"SELECT tblTraces.Component, tblTraces.Process, tblTraces.TraceLevel, tblTraces.Source, "
    u"tblTraces.qrxIndex From tblTraces GROUP BY tblTraces.Component, tblTraces.Process, "
    u"tblTraces.TraceLevel, tblTraces.Source, tblTraces.qrxIndex";

/// What an older file lacks, statement by statement.
std::array<std::u16string, 8> upgradeStatements() {
    return {u"ALTER Table tblTraces ADD COLUMN Highlight YesNo",
            u"ALTER Table tblTraces ADD COLUMN qrxIndex TEXT(160)",
            u"ALTER Table tblTraces ADD COLUMN NotePresent YesNo",
            u"ALTER Table tblTraces ADD COLUMN Notes Text(255)",
            u"UPDATE tblTraces SET qrxIndex = " + std::u16string{kKeyFormula},
            u"CREATE INDEX qrxIndex ON tblTraces (qrxIndex)",
            u"CREATE Table tblUniqueFilters ( Component Text(50), Process Text(50), "
            u"TraceLevel Integer, Source Text(50), qrxIndex Text(160) )",
            u"INSERT INTO tblUniqueFilters ( Component, Process, TraceLevel, Source, qrxIndex) " +
                std::u16string{kCombinationsQuery}};
}

/// The same for a file that cannot be upgraded: computed, and not written.
sql::Definitions computedFilters() {
    sql::Definitions definitions;
    definitions.addColumn(u"tblTraces", u"qrxIndex", kKeyFormula);
    definitions.addQuery(u"tblUniqueFilters", kCombinationsQuery);
    return definitions;
}

constexpr std::u16string_view kOlderFormatMessage =
    u"Using older database format, please consider updating the QRX/QRS to use the newer, faster "
    u"database format.  Visit the maker's tools web site for instructions";

/// Rows of a page, of the cache and of the first delivery.
constexpr int kPageSize = 100;

LoadingEvents& events() { return *services().events; }

/// Without services, as when the process ends, the work runs where it is asked for.
void runWhilePainting(const std::function<void()>& work) {
    services().runWhilePainting ? services().runWhilePainting(work) : work();
}

struct SharedConnection : ado::Connection {
    SharedConnection() { setRunner(runWhilePainting); }
};

ado::Connection& connection() {
    static SharedConnection shared;
    return shared;
}

ado::Recordset& uniqueFilters() {
    static ado::Recordset shared;
    return shared;
}

/// How the open file comes to its filters.
struct Filters {
    std::optional<Failure> upgradeFailure;  ///< the first one of the latest upgrade
    bool toBeComputed = false;              ///< as soon as the trace records are loaded
};

Filters& filters() {
    static Filters shared;
    return shared;
}

bool isOpen(const ado::Recordset& recordset) { return recordset.state() != ado::adStateClosed; }

/// Fills `uniqueTraces` from the open unique-filter recordset.
void createUniqueTracesArray(ado::Recordset& recordset) {
    constexpr std::u16string_view kLabel = u"[modDatabase]createUniqueTracesArray";
    runProcedure(kLabel, {.timed = true}, [&](Procedure& procedure) {
        uniqueTraces().clear();
        int count = 0;
        procedure.step([&] {
            count = recordset.recordCount();
            if (count < 1) throw RuntimeError{RuntimeError::kSubscript, u"Subscript out of range"};
        });
        procedure.step([&] {
            theLog().log(u"Number of Unique Traces Found: " + toText(count), classLog::kInfo,
                         kLabel);
        });
        procedure.step([&] {
            ado::Fields fields = recordset.fields();
            for (recordset.moveFirst(); !recordset.eof(); recordset.moveNext()) {
                uniqueTraces().push_back({true, fields[u"Component"].value(),
                                          fields[u"TraceLevel"].value(), fields[u"Process"].value(),
                                          fields[u"Source"].value(), fields[u"qrxIndex"].value()});
            }
        });
    });
}

bool tracesLackTheirKey() {
    try {
        const auto traces = connection().database()->table(u"tblTraces");
        return traces->definition().findColumn(u"qrxIndex") == nullptr;
    } catch (const std::exception&) {
        return false;
    }
}

/// What a file shows that lacks tblUniqueFilters, or columns of it. Of a damaged catalog the traces
/// decide: it may have lost that table.
bool isOlderFormat(const Failure& failure) {
    if (failure.number != ado::kErrorNoSuchTable) return failure.number == ado::kErrorParameter;
    return !connection().database()->losses().any() || tracesLackTheirKey();
}

/// Reported under the name of the procedure that asked for the file to be opened.
void upgradeOlderFormat() {
    theLog().log(kOlderFormatMessage, classLog::kWarning, u"[modDatabase]openRecordsets");
    events().upgradeBegins();
    updateDatabaseFormat();
    events().upgradeEnds();
}

void openUniqueFiltersQuery() {
    uniqueFilters().open(kUniqueFiltersQuery, connection(), ado::adOpenStatic, ado::adLockReadOnly,
                         ado::adOptionUnspecified);
}

/// Gives the connection what the file lacks, if it has the columns that this is made of.
void defineFilters(const Failure& refusal) {
    constexpr std::u16string_view kLabel = u"[modDatabase]defineFilters";
    runProcedure(kLabel, {.quiet = true}, [&](Procedure& procedure) {
        filters().toBeComputed = procedure.step([] { connection().define(computedFilters()); });
        if (!filters().toBeComputed) return;
        const auto& upgrade = filters().upgradeFailure;
        const std::u16string reason =
            upgrade ? u"the file could not be upgraded: " + upgrade->description
                    : u"the file's own could not be read: " + refusal.description;
        theLog().log(u"The filters are computed because " + reason, classLog::kWarning, kLabel);
    });
}

/// What became of a change that was interrupted, and whether another can be made.
void logRecovery(std::u16string_view label) {
    if (connection().state() == ado::adStateClosed) return;
    const jet::Recovery& recovery = connection().database()->recovery();
    if (recovery.pagesPutBack != 0) {
        theLog().log(u"A change to the database that was interrupted has been taken back, pages: " +
                         toText(recovery.pagesPutBack),
                     classLog::kWarning, label);
    }
    if (recovery.pagesLaidOver != 0) {
        theLog().log(
            u"The database is shown as it was before a change that was interrupted, pages: " +
                toText(recovery.pagesLaidOver),
            classLog::kWarning, label);
    }
    const std::u16string obstacle = connection().obstacle();
    if (!obstacle.empty()) theLog().log(obstacle, classLog::kWarning, label);
}

void openTraces(ado::Recordset& recordset, const std::u16string& query) {
    recordset.open(query, connection(), ado::adOpenForwardOnly, ado::adLockReadOnly,
                   ado::adAsyncFetch);
}

}  // namespace

UniqueTraces& uniqueTraces() {
    static UniqueTraces shared;
    return shared;
}

void connectToDB(const std::u16string& path) {
    constexpr Convention kConvention{
        .limit = Limit::TenErrors, .numbersLines = true, .timed = true};
    runProcedure(u"[modDatabase]connectToDB", kConvention, [&](Procedure& procedure) {
        procedure.step([&] {
            if (connection().state() != ado::adStateClosed) connection().close();
        });
        // The combinations belong to the database that was open until now.
        uniqueTraces().clear();
        filters() = {};
        procedure.step([&] {
            connection().setConnectionString(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" +
                                             path + u";Persist Security Info=False");
        });
        procedure.step([&] { connection().open(); });
        procedure.step([&] { logRecovery(procedure.label()); });
    });
}

void updateDatabaseFormat() {
    constexpr Convention kConvention{.limit = Limit::TenErrors, .timed = true};
    runProcedure(u"[modDatabase]updateDatabaseFormat", kConvention, [](Procedure& procedure) {
        filters().upgradeFailure.reset();
        const auto note = [](const Failure& failure) {
            if (!filters().upgradeFailure) filters().upgradeFailure = failure;
            return Resume::AsUsual;
        };
        const auto skipOrRetry = [&](const Failure& failure) {
            if (failure.number == ado::kErrorAlreadyExists) return Resume::Next;
            note(failure);
            procedure.report(failure);
            return Resume::SameStep;
        };
        for (const std::u16string& statement : upgradeStatements()) {
            procedure.step(
                [&] {
                    ado::Recordset recordset;
                    recordset.open(statement, connection(), ado::adOpenKeyset,
                                   ado::adLockPessimistic, ado::adOptionUnspecified);
                },
                skipOrRetry);
        }
        // A failure to make it all durable belongs to the upgrade, not to whoever reads next.
        procedure.step([] { connection().commit(); }, note);
    });
}

std::filesystem::path databasePath() { return connection().path(); }

void cancelSearch() { connection().cancel(); }

void openRecordsets() {
    runProcedure(u"[modDatabase]openRecordsets", {.timed = true}, [](Procedure& procedure) {
        procedure.step([] { events().openingBegins(); });
        procedure.step([] { openUniqueFilters(); });
        procedure.step([] { openDiagRecordset(u""); });
        procedure.step([] { openMacroTraces(); });
        procedure.step([] { events().openingEnds(); });
    });
}

void openUniqueFilters() {
    constexpr Convention kConvention{.limit = Limit::TenErrors, .timed = true};
    std::optional<Failure> refusal;
    filters() = {};
    runProcedure(u"[modDatabase]openUniqueFilters", kConvention, [&](Procedure& procedure) {
        procedure.step([&] {
            if (isOpen(uniqueFilters())) uniqueFilters().close();
        });
        const bool opened = procedure.step(openUniqueFiltersQuery, [&](const Failure& failure) {
            refusal = failure;
            if (!isOlderFormat(failure)) return Resume::AsUsual;
            upgradeOlderFormat();
            return Resume::SameStep;
        });
        if (opened) createUniqueTracesArray(uniqueFilters());
    });
    if (refusal && !isOpen(uniqueFilters())) defineFilters(*refusal);
}

void computeUniqueFilters() {
    if (!std::exchange(filters().toBeComputed, false)) return;
    constexpr Convention kConvention{.limit = Limit::TenErrors, .timed = true};
    runProcedure(u"[modDatabase]computeUniqueFilters", kConvention, [](Procedure& procedure) {
        procedure.step([] { events().computingBegins(); });
        if (procedure.step(openUniqueFiltersQuery)) createUniqueTracesArray(uniqueFilters());
        procedure.step([] { events().computingEnds(); });
    });
}

void openDiagRecordset(const std::u16string& whereClause) {
    constexpr Convention kConvention{.limit = Limit::TenErrors, .timed = true};
    runProcedure(u"[modDatabase]openDiagRecordset", kConvention, [&](Procedure& procedure) {
        ado::Recordset& recordset = diags()->rsDiags();
        procedure.step([&] {
            if (isOpen(recordset)) recordset.close();
        });
        procedure.step([] { events().loadBegins(); });
        std::u16string query = std::u16string{kTracesQuery} + whereClause;
        procedure.step([&] { recordset.setCursorLocation(ado::adUseClient); });
        procedure.step([&] { recordset.setPageSize(kPageSize); });
        procedure.step([&] { recordset.setCacheSize(recordset.pageSize()); });
        procedure.step(
            [&] { recordset.properties()[u"Initial Fetch Size"].setValue(recordset.pageSize()); });
        const bool opened = procedure.step([&] { openTraces(recordset, query); },
                                           [&](const Failure& failure) {
                                               if (failure.number != ado::kErrorParameter) {
                                                   return Resume::AsUsual;
                                               }
                                               query =
                                                   std::u16string{kOldestTracesQuery} + whereClause;
                                               return Resume::SameStep;
                                           });
        if (!opened) procedure.step([] { events().loadRefused(); });
    });
}

void openMacroTraces() {
    runProcedure(u"[modDatabase]openMacroTraces", Limit::None, [&](Procedure& procedure) {
        ado::Recordset recordset;
        procedure.step([&] {
            recordset.open(kMacroTracesQuery, connection(), ado::adOpenStatic, ado::adLockReadOnly,
                           ado::adOptionUnspecified);
        });
        // Called for a closed recordset too: the definitions of the database before must go.
        procedure.step([&] {
            if (services().readMacroTraces != nullptr) services().readMacroTraces(recordset);
        });
    });
}

}  // namespace modDatabase
