#include "engine/ado/connection.h"

#include "engine/ado/connection_string.h"
#include "engine/ado/pending_changes.h"
#include "engine/ado/recordset.h"
#include "engine/jet/text.h"
#include "engine/sql/run/execute.h"

#include <utility>

namespace ado {
namespace {

constexpr std::u16string_view kProvider = u"Microsoft.Jet.OLEDB.";

std::filesystem::path sourcePath(const ConnectionString& parts) {
    const std::u16string provider = parts.value(u"Provider");
    const std::u16string_view start = std::u16string_view{provider}.substr(0, kProvider.size());
    if (!provider.empty() && !equalsIgnoringCase(start, kProvider)) {
        throw Error{adErrProviderNotFound, "The provider cannot be found."};
    }
    const std::u16string source = parts.value(u"Data Source");
    if (source.empty()) throwInvalidArgument("a connection string without a data source.");
    try {
        return std::filesystem::path{source};
    } catch (const std::exception&) {
        throwInvalidArgument("a data source that is no file name.");
    }
}

}  // namespace

Connection::~Connection() {
    closeRecordsets();
    if (database_) finish();
}

void Connection::setConnectionString(std::u16string text) {
    if (database_) throwOpen();
    connectionString_ = std::move(text);
}

void Connection::open() {
    if (database_) throwOpen();
    const std::filesystem::path path = sourcePath(ConnectionString{connectionString_});
    PendingChanges::commit(path);
    open(translated(path, [&] { return jet::Database::open(path); }), path);
}

void Connection::open(std::u16string_view connectionString, std::u16string_view,
                      std::u16string_view, int) {
    if (!connectionString.empty()) setConnectionString(std::u16string{connectionString});
    open();
}

void Connection::open(std::shared_ptr<jet::Database> database, const std::filesystem::path& path) {
    if (database_) throwOpen();
    path_ = path;
    database_ = std::move(database);
}

void Connection::close() {
    if (!database_) throwClosed();
    closeRecordsets();
    finish();
    throwLostChanges();
}

/// Leaves the database with its changes durable, or lost.
void Connection::finish() {
    commitQuietly();
    database_.reset();
    definitions_ = {};
}

void Connection::closeRecordsets() {
    while (!recordsets_.empty()) recordsets_.back()->close();  // which detaches it
}

std::unique_ptr<Recordset> Connection::execute(std::u16string_view statement) {
    auto rows = std::make_unique<Recordset>();
    rows->open(statement, *this);
    return rows;
}

void Connection::define(sql::Definitions definitions) {
    jet::Database& defined = *database();
    translated(path_, [&] { sql::requireUsable(definitions, defined); });
    definitions_ = std::move(definitions);
}

// ---- Changes ------------------------------------------------------------------------------------

void Connection::change(const sql::Statement& statement, const std::shared_ptr<Scheduler>& idle) {
    throwLostChanges();
    for (Recordset* recordset : recordsets_) recordset->forgetTextMatches();
    translated(path_, [&] {
        jet::Database& changed = *database();
        run([&] { sql::execute(changed, statement); });
    });
    if (database_->hasUncommittedChanges()) noteChanges(idle);
}

/// One task a batch: it comes up when the owner has done all that it does at a stretch.
void Connection::noteChanges(const std::shared_ptr<Scheduler>& idle) {
    PendingChanges::add(*this);
    const auto& scheduler = idle ? idle : scheduler_;
    if (!scheduler || batch_) return;
    batch_ = std::make_shared<int>();
    scheduler->post([this, weak = std::weak_ptr{batch_}] {
        if (weak.lock()) commitQuietly();
    });
}

void Connection::commit() {
    commitQuietly();
    throwLostChanges();
}

void Connection::run(const std::function<void()>& work) {
    if (runner_) {
        runner_(work);
    } else {
        work();
    }
}

bool Connection::runSearch(const std::function<void(const std::atomic<bool>& stop)>& search) {
    stopFind_ = false;
    run([&] { search(stopFind_); });
    return !stopFind_;
}

/// A failure is reported by the next call on the connection.
void Connection::commitQuietly() {
    batch_.reset();
    PendingChanges::remove(*this);
    if (!database_) return;
    try {
        translated(path_, [&] {
            if (database_->hasUncommittedChanges()) run([&] { database_->commit(); });
        });
    } catch (const Error& error) {
        lostChanges_ = error;
    }
}

void Connection::throwLostChanges() {
    if (const auto lost = std::exchange(lostChanges_, std::nullopt)) throw *lost;
}

std::u16string Connection::obstacle() const {
    return jet::toUtf16(database()->recovery().obstacle);
}

const std::shared_ptr<jet::Database>& Connection::database() const {
    if (!database_) throwClosed();
    return database_;
}

}  // namespace ado
