// Definitions that a connection adds to its file.
#include "tests/engine/ado/recordset_fixture.h"

namespace {

using namespace ado;

class ConnectionDefinitions : public testing::Test {
protected:
    static sql::Definitions keys() {
        sql::Definitions added;
        added.addColumn(u"tblTraces", u"Key", u"Component & '_' & TraceLevel");
        added.addQuery(u"Keys", u"SELECT Key, COUNT(*) AS Rows FROM tblTraces GROUP BY Key");
        return added;
    }

    TestConnection database{fixture::traceDatabase({.rows = 3000})};
    Connection& connection = database.connection;
};

TEST_F(ConnectionDefinitions, AreSeenByRecordsets) {
    connection.define(keys());
    Recordset groups;
    groups.open(u"SELECT Key, Rows FROM Keys ORDER BY Rows DESC", connection);
    ASSERT_GT(groups.recordCount(), 5);
    const auto key = std::get<std::u16string>(groups.fields()[u"Key"].value());
    const int expected = std::get<std::int32_t>(groups.fields()[u"Rows"].value());

    const auto pump = std::make_shared<HandPump>();
    Recordset rows{pump};
    EventLog log{rows};
    openTraces(rows, connection, u"WHERE  ( Key = '" + key + u"' )  OR  ( Key = 'none' ) ");
    ASSERT_TRUE(pump->runUntil([&] { return log.complete; }, kPatience));
    EXPECT_EQ(rows.recordCount(), expected);
    EXPECT_EQ(rows.fields().count(), 9u);
}

TEST_F(ConnectionDefinitions, WriteNothing) {
    const auto before = database.connection.database()->storage().size();
    connection.define(keys());
    connection.execute(u"SELECT * FROM Keys");
    EXPECT_FALSE(connection.database()->hasUncommittedChanges());
    EXPECT_EQ(connection.database()->storage().size(), before);
    EXPECT_EQ(errorNumber([&] { connection.execute(u"UPDATE tblTraces SET Key = 'x'"); }),
              kErrorParameter);
}

TEST_F(ConnectionDefinitions, ThatTheFileCannotMeetAreRefusedAndChangeNothing) {
    connection.define(keys());
    sql::Definitions wrong;
    wrong.addColumn(u"tblTraces", u"Key", u"Nobody & '_'");
    EXPECT_EQ(errorNumber([&] { connection.define(wrong); }), kErrorParameter);
    sql::Definitions nowhere;
    nowhere.addQuery(u"Keys", u"SELECT * FROM tblNothing");
    EXPECT_EQ(errorNumber([&] { connection.define(nowhere); }), kErrorNoSuchTable);
    EXPECT_EQ(errorNumber([&] { connection.execute(u"SELECT Key FROM tblTraces"); }), 0);
    connection.define({});
    EXPECT_EQ(errorNumber([&] { connection.execute(u"SELECT Key FROM tblTraces"); }),
              kErrorParameter);
}

TEST_F(ConnectionDefinitions, EndWhenTheConnectionCloses) {
    connection.define(keys());
    const auto file = connection.database();
    connection.close();
    EXPECT_EQ(errorNumber([&] { connection.define(keys()); }), adErrObjectClosed);
    connection.open(file);
    EXPECT_EQ(errorNumber([&] { connection.execute(u"SELECT * FROM Keys"); }), kErrorNoSuchTable);
}

TEST_F(ConnectionDefinitions, AStoredQueryIsLongWork) {
    int works = 0;
    connection.setRunner([&](const std::function<void()>& work) {
        ++works;
        work();
    });
    connection.define(keys());
    connection.execute(u"SELECT Key FROM tblTraces");
    EXPECT_EQ(works, 0);
    EXPECT_GT(connection.execute(u"SELECT * FROM Keys")->recordCount(), 5);
    EXPECT_EQ(works, 1);
    EXPECT_EQ(errorNumber([&] { connection.execute(u"SELECT Nobody FROM Keys"); }),
              kErrorParameter);
}

}  // namespace
