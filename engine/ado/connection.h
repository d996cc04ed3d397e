// A connection to one database file.
//
//   ado::Connection connection;
//   connection.open(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\traces.mdb");
//   ado::Recordset rows;  rows.open(u"SELECT * FROM tblTraces", connection);
//
// Statements that change the database are visible to this connection at once. They are committed
// together: when a SELECT is opened, when the connection closes, when another connection of the
// thread opens the file, and when the owner is idle, if there is a scheduler. Until then no other
// program can open the file.
//
// One thread: the owner's, as for all recordsets opened on it.
#pragma once

#include "engine/ado/constants.h"
#include "engine/ado/error.h"
#include "engine/ado/scheduler.h"
#include "engine/jet/database.h"
#include "engine/sql/bind/definitions.h"
#include "engine/sql/parse/ast.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ado {

class Recordset;

class Connection {
public:
    /// Without a scheduler (its own or a recordset's) nothing is committed when idle.
    explicit Connection(std::shared_ptr<Scheduler> scheduler = nullptr)
        : scheduler_{std::move(scheduler)} {}

    /// Closes; a failed commit is not reported.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const std::u16string& connectionString() const { return connectionString_; }

    /// Throws Error{3705} while it is open.
    void setConnectionString(std::u16string text);

    /// Opens the file that "Data Source" of the connection string names. Only its header is read.
    /// User, password and options are accepted and ignored.
    /// Throws Error: 3705 while open, 3706 for another provider, 3001, 0x80004005.
    void open();
    void open(std::u16string_view connectionString, std::u16string_view user = {},
              std::u16string_view password = {}, int options = adOptionUnspecified);

    /// Attaches to a database that is open already; `path` is for messages.
    void open(std::shared_ptr<jet::Database> database, const std::filesystem::path& path = {});

    /// Closes the recordsets that were opened on it, cancelling their fetches, commits and closes.
    /// Throws Error: 3704 if it is closed; 0x80004005 if the commit failed, in which case it is
    /// closed nevertheless.
    void close();

    /// adStateClosed or adStateOpen.
    int state() const { return database_ ? adStateOpen : adStateClosed; }

    /// Executes a statement. For a SELECT, returns a recordset with all rows; for any other
    /// statement a closed one. Throws as Recordset::open.
    std::unique_ptr<Recordset> execute(std::u16string_view statement);

    /// Runs long work: statements that write, commits, searches for texts, stored queries. It may
    /// use any thread, must return when the work is done and must rethrow its exceptions. By
    /// default the work runs on the calling thread.
    using Runner = std::function<void(const std::function<void()>& work)>;
    void setRunner(Runner runner) { runner_ = std::move(runner); }

    /// Cancels the running search for a text within some milliseconds: Recordset::find throws
    /// Error{3712}. Any thread may call; does nothing if no search is running.
    void cancel() { stopFind_ = true; }

    /// Runs a search that reads much of the file; cancel() sets its `stop`. False if it was
    /// stopped. Lets the exceptions of the search through.
    bool runSearch(const std::function<void(const std::atomic<bool>& stop)>& search);

    /// Commits all statements. Throws Error{0x80004005} if that fails, or if an earlier commit has
    /// failed unreported: none of these statements has taken effect then.
    void commit();

    /// Replaces the definitions that SELECTs on this connection see in addition to what is in the
    /// file, which is not written to; closing drops them. A SELECT from a stored query runs like
    /// long work. Throws Error as Recordset::open if the file lacks what the definitions are made
    /// of; they stay as they were then.
    void define(sql::Definitions definitions);
    const sql::Definitions& definitions() const { return definitions_; }

    /// Throws Error{3704} if it is closed.
    const std::shared_ptr<jet::Database>& database() const;
    const std::filesystem::path& path() const { return path_; }

    /// What was in the way of changes to the database when it was opened; empty if nothing was.
    /// Throws Error{3704} if it is closed.
    std::u16string obstacle() const;

private:
    friend class Recordset;
    friend class PendingChanges;

    /// Executes a statement other than SELECT; `idle` runs at the end of the batch.
    void change(const sql::Statement& statement, const std::shared_ptr<Scheduler>& idle);
    void noteChanges(const std::shared_ptr<Scheduler>& idle);
    void commitQuietly();
    void throwLostChanges();
    void finish();
    void run(const std::function<void()>& work);
    void attach(Recordset& recordset) { recordsets_.push_back(&recordset); }
    void detach(Recordset& recordset) { std::erase(recordsets_, &recordset); }
    void closeRecordsets();

    std::shared_ptr<Scheduler> scheduler_;
    Runner runner_;
    std::atomic<bool> stopFind_{false};
    std::u16string connectionString_;
    std::filesystem::path path_;
    std::shared_ptr<jet::Database> database_;
    sql::Definitions definitions_;
    std::vector<Recordset*> recordsets_;  ///< those that are open on this connection

    std::shared_ptr<int> batch_;        ///< lives while a commit is posted to the owner
    std::optional<Error> lostChanges_;  ///< of a commit in the background
};

}  // namespace ado
