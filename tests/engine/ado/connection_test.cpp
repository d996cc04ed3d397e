// Connection strings, opening and closing, and what failures of a file are called.
#include "engine/ado/connection_string.h"
#include "tests/engine/ado/recordset_fixture.h"
#include "tests/support/damage.h"
#include "tests/support/expected.h"

namespace {

using namespace ado;

std::u16string connectionTo(const std::filesystem::path& path) {
    return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path.u16string() +
           u";Persist Security Info=False";
}

TEST(ConnectionString, NamesAndValues) {
    const ConnectionString parts{
        u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=C:\\a b\\x.mdb ; persist Security "
        u"Info=False"};
    EXPECT_EQ(parts.value(u"provider"), u"Microsoft.Jet.OLEDB.4.0");
    EXPECT_EQ(parts.value(u"DATA SOURCE"), u"C:\\a b\\x.mdb");
    EXPECT_EQ(parts.value(u"Persist Security Info"), u"False");
    EXPECT_EQ(parts.value(u"User"), u"");
}

TEST(ConnectionString, QuotesAndSemicolons) {
    EXPECT_EQ(ConnectionString{u"a='x;y=1';b=2"}.value(u"a"), u"x;y=1");
    EXPECT_EQ(ConnectionString{u"a=\"say \"\"yes\"\"\";b=2"}.value(u"a"), u"say \"yes\"");
    EXPECT_EQ(ConnectionString{u"a='';b=2"}.value(u"b"), u"2");
    EXPECT_EQ(ConnectionString{u"a=C:\\it's;mine.mdb;b=2"}.value(u"a"), u"C:\\it's;mine.mdb");
    EXPECT_EQ(ConnectionString{u"a=1;a=2;"}.value(u"a"), u"2");
    EXPECT_EQ(ConnectionString{u""}.value(u"a"), u"");
    EXPECT_EQ(errorNumber([] { ConnectionString{u"a='x"}; }), 3001);
    EXPECT_EQ(errorNumber([] { ConnectionString{u"nothing"}; }), 3001);
}

class ConnectionTest : public testing::Test {
protected:
    /// The error of opening `bytes` as a file.
    Error failure(const fixture::ByteVector& bytes) {
        return failure(folder.write("database.mdb", bytes));
    }

    Error failure(const std::filesystem::path& path) {
        Connection connection;
        try {
            connection.open(connectionTo(path));
        } catch (const Error& error) {
            EXPECT_EQ(connection.state(), adStateClosed);
            return error;
        }
        ADD_FAILURE() << "it opens";
        return {0, ""};
    }

    static bool mentions(const Error& error, std::string_view part) {
        return std::string_view{error.what()}.find(part) != std::string_view::npos;
    }

    fixture::TemporaryFolder folder;
};

TEST_F(ConnectionTest, OpensAFileByItsConnectionString) {
    const auto path = folder.write("tr\u00E4ces it's.mdb", fixture::traceDatabase({.rows = 10}));
    Connection connection;
    EXPECT_EQ(connection.state(), adStateClosed);
    connection.setConnectionString(connectionTo(path));
    connection.open();
    EXPECT_EQ(connection.state(), adStateOpen);
    EXPECT_EQ(connection.execute(u"SELECT * FROM tblTraces")->recordCount(), 10);
    EXPECT_EQ(errorNumber([&] { connection.open(); }), 3705);
    EXPECT_EQ(errorNumber([&] { connection.setConnectionString(u""); }), 3705);
    connection.close();
    EXPECT_EQ(errorNumber([&] { connection.close(); }), 3704);
    EXPECT_EQ(errorNumber([&] { connection.execute(u"SELECT * FROM tblTraces"); }), 3704);
    connection.open(connectionTo(path), u"", u"", adOptionUnspecified);
    EXPECT_EQ(connection.state(), adStateOpen);
}

TEST_F(ConnectionTest, ClosingClosesItsRecordsets) {
    const auto pump = std::make_shared<HandPump>();
    TestConnection database{fixture::traceDatabase({.rows = 5000})};
    Recordset rows{pump};
    rows.fetchComplete = [](const Error*, int) { ADD_FAILURE() << "complete"; };
    openTraces(rows, database.connection);
    const auto copy = rows.clone();
    database.connection.close();
    EXPECT_EQ(rows.state(), adStateClosed);
    EXPECT_EQ(copy->state(), adStateClosed);
    pump->run();
}

TEST_F(ConnectionTest, RecordsetMayOutliveItsConnection) {
    Recordset rows;
    {
        TestConnection database{fixture::traceDatabase({.rows = 50})};
        openTraces(rows, database.connection);
    }
    EXPECT_EQ(rows.state(), adStateClosed);
}

TEST_F(ConnectionTest, WrongArguments) {
    Connection connection;
    EXPECT_EQ(errorNumber([&] { connection.open(u"Provider=Other;Data Source=x.mdb"); }), 3706);
    EXPECT_EQ(errorNumber([&] { connection.open(u"Provider=Microsoft.Jet.OLEDB.4.0"); }), 3001);
}

TEST_F(ConnectionTest, FailuresOfTheFileKeepTheEnginesReason) {
    const Error missing = failure(folder.path() / "no such.mdb");
    EXPECT_EQ(missing.number(), kErrorFile);
    EXPECT_TRUE(mentions(missing, "Could not find file '")) << missing.what();
    EXPECT_TRUE(mentions(missing, "no such.mdb'.")) << missing.what();

    const Error picture = failure(fixture::pngFile());
    EXPECT_EQ(picture.number(), kErrorFile);
    EXPECT_TRUE(mentions(picture, "Unrecognized database format '")) << picture.what();

    const Error older = failure(fixture::olderDatabase());
    EXPECT_EQ(older.number(), kErrorFile);
    EXPECT_TRUE(mentions(older, "Unrecognized database format '")) << older.what();
    EXPECT_STRNE(older.what(), picture.what());
}

TEST(Error, NumbersOfTheLayersBelow) {
    const auto number = [](jet::Fault fault) {
        return toError(jet::Error{fault, "reason"}, "x.mdb").number();
    };
    for (const jet::Fault fault :
         {jet::Fault::FileNotFound, jet::Fault::AccessDenied, jet::Fault::InUse,
          jet::Fault::ReadFailed, jet::Fault::NotADatabase, jet::Fault::OlderFormat,
          jet::Fault::NewerFormat, jet::Fault::Encrypted, jet::Fault::PasswordProtected,
          jet::Fault::Truncated, jet::Fault::Damaged}) {
        EXPECT_EQ(number(fault), -2147467259);
        const std::string text = toError(jet::Error{fault, "reason"}, "x.mdb").what();
        EXPECT_GT(text.size(), std::string{" reason"}.size());
        EXPECT_EQ(text.substr(text.size() - 7), " reason");
    }
    EXPECT_EQ(number(jet::Fault::NoSuchTable), -2147217865);
    EXPECT_EQ(toError(sql::Error{sql::Fault::NoSuchTable, ""}).number(), -2147217865);
    EXPECT_EQ(toError(sql::Error{sql::Fault::UnknownColumn, ""}).number(), -2147217904);
    EXPECT_EQ(toError(sql::Error{sql::Fault::Syntax, ""}).number(), -2147217900);
    EXPECT_EQ(toError(sql::Error{sql::Fault::TypeMismatch, ""}).number(), -2147217900);
    EXPECT_EQ(toError(jet::Error{jet::Fault::PasswordProtected, ""}, "").description(),
              u"Not a valid password.");
}

}  // namespace
