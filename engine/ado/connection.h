// A connection to one database file.
//
//   ado::Connection connection;
//   connection.open(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\traces.mdb");
//   ado::Recordset rows;  rows.open(u"SELECT * FROM tblTraces", connection);
//
// Statements that change the database take effect at once for this connection and become durable
// together: when a SELECT is opened, when the connection closes, when another connection of the
// thread opens the file, and when the owner is idle, if a scheduler tells. Until then nobody else can
// open the file.
//
// Belongs to one thread, the owner's, with all recordsets opened on it.
#pragma once

#include "engine/ado/constants.h"
#include "engine/ado/error.h"
#include "engine/ado/scheduler.h"
#include "engine/jet/database.h"
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
    /// Without a scheduler, its own or that of a recordset, changes wait until something asks for
    /// them.
    explicit Connection(std::shared_ptr<Scheduler> scheduler = nullptr)
        : scheduler_{std::move(scheduler)} {}

    /// Closes, and says nothing of changes that could not be made durable.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const std::u16string& connectionString() const { return connectionString_; }

    /// Throws Error{3705} while it is open.
    void setConnectionString(std::u16string text);

    /// Opens the file that "Data Source" of the connection string names. Only its header is read.
    /// User, password and options are accepted for the sake of the callers; there are no users.
    /// Throws Error: 3705 while open, 3706 for another provider, 3001, 0x80004005.
    void open();
    void open(std::u16string_view connectionString, std::u16string_view user = {},
              std::u16string_view password = {}, int options = adOptionUnspecified);

    /// Opens what is open already in other hands; `path` is for messages.
    void open(std::shared_ptr<jet::Database> database, const std::filesystem::path& path = {});

    /// Closes the recordsets that were opened on it, ending their fetches, makes its changes durable
    /// and closes itself. Throws Error: 3704 if it is closed; 0x80004005 if changes have been lost,
    /// it is closed then all the same.
    void close();

    /// adStateClosed or adStateOpen.
    int state() const { return database_ ? adStateOpen : adStateClosed; }

    /// A recordset of the rows of a SELECT, read to its end; a closed one of any other statement,
    /// which has been executed. Throws as Recordset::open.
    std::unique_ptr<Recordset> execute(std::u16string_view statement);

    /// Who runs what may take long: statements that write, making them durable, searches for texts.
    /// It must have run the work when it returns, on whatever thread, and let its exceptions through.
    /// Until one is set the work runs where it is asked for.
    using Runner = std::function<void(const std::function<void()>& work)>;
    void setRunner(Runner runner) { runner_ = std::move(runner); }

    /// Ends the search for a text that is running, within some milliseconds: Recordset::find throws
    /// Error{3712}. Any thread; nothing happens without a search.
    void cancel() { stopFind_ = true; }

    /// Runs a search that reads much of the file; cancel() sets its `stop`. False if it was stopped.
    /// Lets the exceptions of the search through.
    bool runSearch(const std::function<void(const std::atomic<bool>& stop)>& search);

    /// Makes the changes of all statements durable. Throws Error{0x80004005} if that fails, or has
    /// failed since it was asked for the last time: none of these statements has happened then.
    void commit();

    /// Throws Error{3704} if it is closed.
    const std::shared_ptr<jet::Database>& database() const;
    const std::filesystem::path& path() const { return path_; }

private:
    friend class Recordset;
    friend class PendingChanges;

    /// Executes a statement other than SELECT; `idle` comes to the end of the batch.
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
    std::vector<Recordset*> recordsets_;  ///< those that are open on this connection

    std::shared_ptr<int> batch_;        ///< lives while a commit is posted to the owner
    std::optional<Error> lostChanges_;  ///< of a commit that nobody waited for
};

}  // namespace ado
