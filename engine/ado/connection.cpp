#include "engine/ado/connection.h"

#include "engine/ado/connection_string.h"
#include "engine/ado/error.h"
#include "engine/ado/recordset.h"

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

Connection::~Connection() { closeRecordsets(); }

void Connection::setConnectionString(std::u16string text) {
    if (database_) throwOpen();
    connectionString_ = std::move(text);
}

void Connection::open() {
    if (database_) throwOpen();
    const std::filesystem::path path = sourcePath(ConnectionString{connectionString_});
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
    database_.reset();
}

void Connection::closeRecordsets() {
    while (!recordsets_.empty()) recordsets_.back()->close();  // which detaches it
}

std::unique_ptr<Recordset> Connection::execute(std::u16string_view statement) {
    auto rows = std::make_unique<Recordset>();
    rows->open(statement, *this);
    return rows;
}

const std::shared_ptr<jet::Database>& Connection::database() const {
    if (!database_) throwClosed();
    return database_;
}

}  // namespace ado
