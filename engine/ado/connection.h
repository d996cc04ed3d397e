// A connection to one database file.
//
//   ado::Connection connection;
//   connection.open(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\traces.mdb");
//   ado::Recordset rows;  rows.open(u"SELECT * FROM tblTraces", connection);
//
// Belongs to one thread, the owner's, with all recordsets opened on it.
#pragma once

#include "engine/ado/constants.h"
#include "engine/jet/database.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ado {

class Recordset;

class Connection {
public:
    Connection() = default;

    /// Closes.
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

    /// Closes the recordsets that were opened on it, ending their fetches, and then itself.
    /// Throws Error{3704} if it is closed.
    void close();

    /// adStateClosed or adStateOpen.
    int state() const { return database_ ? adStateOpen : adStateClosed; }

    /// A recordset of the rows of a SELECT, read to its end. Throws as Recordset::open.
    std::unique_ptr<Recordset> execute(std::u16string_view statement);

    /// Throws Error{3704} if it is closed.
    const std::shared_ptr<jet::Database>& database() const;
    const std::filesystem::path& path() const { return path_; }

private:
    friend class Recordset;
    void attach(Recordset& recordset) { recordsets_.push_back(&recordset); }
    void detach(Recordset& recordset) { std::erase(recordsets_, &recordset); }
    void closeRecordsets();

    std::u16string connectionString_;
    std::filesystem::path path_;
    std::shared_ptr<jet::Database> database_;
    std::vector<Recordset*> recordsets_;  ///< those that are open on this connection
};

}  // namespace ado
