// Statements that change a database, through recordsets and connections: what state they leave,
// the numbers of their failures, and when what they did becomes durable.
#include "engine/sql/run/query.h"
#include "tests/engine/ado/recordset_fixture.h"
#include "tests/support/expected.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <thread>
#include <utility>

namespace {

using namespace ado;

std::u16string connectionTo(const std::filesystem::path& path) {
    return u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + path.u16string();
}

const std::u16string kAddColumn = u"ALTER Table tblTraces ADD COLUMN qrxIndex TEXT(160)";
const std::u16string kCount = u"SELECT COUNT(*) FROM tblTraces WHERE TraceLevel = 77";

/// A storage whose file cannot be locked as long as it is told so, or whose next sync fails.
class FailingStorage : public jet::MemoryStorage {
public:
    FailingStorage(fixture::ByteVector content,
                   std::shared_ptr<std::optional<jet::Fault>> lockFault,
                   std::shared_ptr<std::optional<jet::Fault>> syncFault)
        : MemoryStorage{std::move(content)},
          lockFault_{std::move(lockFault)},
          syncFault_{std::move(syncFault)} {}

    void lock() override {
        if (*lockFault_) throw jet::Error{**lockFault_, "no lock"};
    }

    void sync() override {
        if (const auto fault = std::exchange(*syncFault_, std::nullopt)) {
            throw jet::Error{*fault, "no sync"};
        }
    }

private:
    std::shared_ptr<std::optional<jet::Fault>> lockFault_;
    std::shared_ptr<std::optional<jet::Fault>> syncFault_;
};

class Change : public testing::Test {
protected:
    void SetUp() override {
        connection.open(jet::Database::open(std::make_unique<FailingStorage>(
                            fixture::traceDatabase({.rows = 40}), lockFault, syncFault)),
                        "memory.mdb");
    }

    std::int32_t numberOf(const std::u16string& statement) {
        return errorNumber([&] { connection.execute(statement); });
    }

    std::u16string count() { return connection.execute(kCount)->getString(); }

    std::shared_ptr<std::optional<jet::Fault>> lockFault =
        std::make_shared<std::optional<jet::Fault>>();
    std::shared_ptr<std::optional<jet::Fault>> syncFault =
        std::make_shared<std::optional<jet::Fault>>();
    std::shared_ptr<HandPump> pump = std::make_shared<HandPump>();
    Connection connection{pump};
};

TEST_F(Change, LeavesTheRecordsetClosed) {
    for (const int type : {adOpenForwardOnly, adOpenKeyset, adOpenDynamic, adOpenStatic}) {
        for (const int lock : {adLockReadOnly, adLockPessimistic, adLockOptimistic}) {
            for (const int location : {adUseServer, adUseClient}) {
                Recordset rows{pump};
                rows.setCursorLocation(location);
                rows.fetchComplete = [](const Error*, int) { ADD_FAILURE() << "an event"; };
                rows.open(u"UPDATE tblTraces SET TraceLevel = 77", connection, type, lock,
                          adAsyncFetch);
                EXPECT_EQ(rows.state(), adStateClosed);
                pump->run();
                EXPECT_EQ(errorNumber([&] { rows.close(); }), adErrObjectClosed);
                rows.open(kCount, connection);
                EXPECT_EQ(rows.getString(), u"40\r");
            }
        }
    }
    EXPECT_EQ(connection.execute(kAddColumn)->state(), adStateClosed);
    EXPECT_EQ(connection.execute(u"SELECT qrxIndex FROM tblTraces")->recordCount(), 40);
}

TEST_F(Change, AnOpenRecordsetTakesNoStatement) {
    Recordset rows;
    rows.open(kCount, connection);
    EXPECT_EQ(errorNumber([&] { rows.open(kAddColumn, connection); }), adErrObjectOpen);
    Connection closed;
    Recordset other;
    EXPECT_EQ(errorNumber([&] { other.open(kAddColumn, closed); }), adErrObjectClosed);
}

TEST_F(Change, NumbersOfStatements) {
    connection.execute(kAddColumn);
    connection.execute(u"CREATE INDEX qrxIndex ON tblTraces (qrxIndex)");
    connection.execute(u"CREATE TABLE Keys (Id LONG PRIMARY KEY, Name TEXT(3))");
    connection.execute(u"INSERT INTO Keys VALUES (1, 'a')");
    EXPECT_EQ(numberOf(kAddColumn), -2147217887);
    EXPECT_EQ(numberOf(u"CREATE INDEX QRXINDEX ON tblTraces (Date)"), -2147217887);
    EXPECT_EQ(numberOf(u"CREATE TABLE tblTraces (a LONG)"), -2147217900);
    EXPECT_EQ(numberOf(u"CREATE TABLE"), -2147217900);
    EXPECT_EQ(numberOf(u"DELETE FROM tblTraces"), -2147217900);
    EXPECT_EQ(numberOf(u"INSERT INTO Keys VALUES (1, 'b')"), -2147217900);
    EXPECT_EQ(numberOf(u"INSERT INTO Keys (Name) VALUES ('b')"), -2147217900);
    EXPECT_EQ(numberOf(u"INSERT INTO Keys VALUES (2, 'long')"), -2147217900);
    EXPECT_EQ(numberOf(u"UPDATE tblTraces SET TraceLevel = 40000"), -2147217900);
    EXPECT_EQ(numberOf(u"UPDATE tblTraces SET Height = 1"), -2147217904);
    EXPECT_EQ(numberOf(u"UPDATE tblTraces SET TraceLevel = Height"), -2147217904);
    EXPECT_EQ(numberOf(u"CREATE INDEX i ON tblTraces (Height)"), -2147217904);
    EXPECT_EQ(numberOf(u"UPDATE tblNone SET a = 1"), -2147217865);
    EXPECT_EQ(numberOf(u"ALTER TABLE tblNone ADD COLUMN a LONG"), -2147217865);
    EXPECT_EQ(numberOf(u"INSERT INTO Keys SELECT a FROM tblNone"), -2147217865);
    EXPECT_EQ(numberOf(u"UPDATE MSysObjects SET Flags = 0"), -2147217911);
    EXPECT_EQ(connection.execute(u"SELECT * FROM Keys")->getString(), u"1\ta\r");
}

TEST_F(Change, AReadOnlyFileRefusesEveryStatement) {
    *lockFault = jet::Fault::ReadOnly;
    for (const auto statement :
         {u"ALTER TABLE tblTraces ADD COLUMN a LONG", u"UPDATE tblTraces SET TraceLevel = 77",
          u"CREATE INDEX i ON tblTraces (Date)", u"CREATE TABLE t (a LONG)",
          u"INSERT INTO tblTraces (TraceLevel) VALUES (77)", u"DROP TABLE tblTraces"}) {
        EXPECT_EQ(numberOf(statement), kErrorReadOnly);
    }
    EXPECT_EQ(count(), u"0\r");
    *lockFault = jet::Fault::InUse;
    EXPECT_EQ(numberOf(kAddColumn), kErrorFile);
    lockFault->reset();
    EXPECT_EQ(numberOf(u"UPDATE tblTraces SET TraceLevel = 77"), 0);
    EXPECT_EQ(count(), u"40\r");
}

TEST_F(Change, AFailingCommitIsTheErrorOfTheNextOpen) {
    connection.execute(u"UPDATE tblTraces SET TraceLevel = 77");
    *syncFault = jet::Fault::DiskFull;
    EXPECT_EQ(numberOf(kCount), kErrorFile);
    EXPECT_EQ(count(), u"0\r");
}

TEST_F(Change, AFailingCommitOfAnIdleMomentIsToldToTheNext) {
    connection.execute(u"UPDATE tblTraces SET TraceLevel = 77");
    *syncFault = jet::Fault::DiskFull;
    EXPECT_EQ(pump->run(), 1u);
    EXPECT_EQ(numberOf(u"UPDATE tblTraces SET TraceLevel = 78"), kErrorFile);
    EXPECT_EQ(count(), u"0\r");
}

TEST_F(Change, AFailingCommitIsTheErrorOfTheClose) {
    connection.execute(u"UPDATE tblTraces SET TraceLevel = 77");
    *syncFault = jet::Fault::WriteFailed;
    EXPECT_EQ(errorNumber([&] { connection.close(); }), kErrorFile);
    EXPECT_EQ(connection.state(), adStateClosed);
}

TEST_F(Change, OneTaskABatch) {
    connection.execute(u"UPDATE tblTraces SET TraceLevel = 77");
    Recordset rows{pump};
    rows.open(u"UPDATE tblTraces SET TraceLevel = 78", connection);
    connection.execute(kAddColumn);
    EXPECT_EQ(pump->pending(), 1u);
    EXPECT_TRUE(connection.database()->hasUncommittedChanges());
    pump->run();
    EXPECT_FALSE(connection.database()->hasUncommittedChanges());
    connection.execute(u"UPDATE tblTraces SET TraceLevel = 79");
    EXPECT_EQ(pump->pending(), 1u);
    connection.close();
    pump->run();  // the task finds its batch gone
}

TEST_F(Change, StatementsThatFailLeaveTheBatchAsItIs) {
    connection.execute(u"UPDATE tblTraces SET TraceLevel = 77");
    EXPECT_EQ(numberOf(u"UPDATE tblTraces SET TraceLevel = 'x'"), kErrorStatement);
    EXPECT_EQ(numberOf(u"no statement"), kErrorStatement);
    EXPECT_TRUE(connection.database()->hasUncommittedChanges());
    EXPECT_EQ(count(), u"40\r");
    EXPECT_EQ(numberOf(u"UPDATE tblTraces SET TraceLevel = 'x'"), kErrorStatement);
    EXPECT_FALSE(connection.database()->hasUncommittedChanges());
    EXPECT_EQ(pump->run(), 1u);
}

TEST_F(Change, MayComeWhileRowsAreFetched) {
    TestConnection database{fixture::traceDatabase({.rows = 6000})};
    Recordset rows{pump};
    EventLog log{rows};
    database.gate->holdAt(database.placeAt(0.9));
    openTraces(rows, database.connection);
    database.gate->waitUntilHeld();
    EXPECT_EQ(rows.state(), adStateOpen | adStateFetching);
    database.gate->release();
    database.connection.execute(kAddColumn);
    ASSERT_TRUE(pump->runUntil([&] { return log.complete; }, kPatience));
    EXPECT_FALSE(log.error);
    EXPECT_EQ(rows.recordCount(), 6000);
}

/// Files, with another look at them from outside the connection.
class Durability : public testing::Test {
protected:
    void SetUp() override {
        path = folder.write("traces.mdb", fixture::traceDatabase({.rows = 40}));
        connection.open(connectionTo(path));
    }

    void change() { connection.execute(u"UPDATE tblTraces SET TraceLevel = 77"); }

    /// Whether somebody else can open the file now, and sees the change.
    bool isDurable() const {
        try {
            const auto database = jet::Database::open(path);
            const auto query = sql::Query::prepare(database, kCount);
            const auto cursor = query->execute();
            return cursor->next() && cursor->row()[0] == jet::Value{40};
        } catch (const jet::Error& error) {
            EXPECT_EQ(error.fault(), jet::Fault::InUse) << error.what();
            return false;
        }
    }

    fixture::TemporaryFolder folder;
    std::filesystem::path path;
    std::shared_ptr<HandPump> pump = std::make_shared<HandPump>();
    Connection connection;
};

TEST_F(Durability, WaitsForTheEndOfTheBatch) {
    change();
    EXPECT_FALSE(isDurable());
    connection.execute(kAddColumn);
    EXPECT_FALSE(isDurable());
    EXPECT_EQ(pump->pending(), 0u);
    connection.commit();
    EXPECT_TRUE(isDurable());
}

TEST_F(Durability, ComesWithTheNextSelect) {
    change();
    EXPECT_EQ(connection.execute(kCount)->getString(), u"40\r");
    EXPECT_TRUE(isDurable());
}

TEST_F(Durability, ComesWithTheEndOfTheConnection) {
    change();
    connection.close();
    EXPECT_TRUE(isDurable());
}

TEST_F(Durability, ComesWithTheConnectionGoingOutOfScope) {
    {
        Connection other;
        connection.close();
        other.open(connectionTo(path));
        other.execute(u"UPDATE tblTraces SET TraceLevel = 77");
        EXPECT_FALSE(isDurable());
    }
    EXPECT_TRUE(isDurable());
}

// The program keeps painting during a commit, also during the last one.
TEST_F(Durability, TheLastCommitRunsWhereLongWorkRuns) {
    int works = 0;
    {
        connection.close();
        Connection other;
        other.open(connectionTo(path));
        other.execute(u"UPDATE tblTraces SET TraceLevel = 77");
        other.setRunner([&](const std::function<void()>& work) {
            ++works;
            work();
        });
    }
    EXPECT_EQ(works, 1);
    EXPECT_TRUE(isDurable());
}

TEST_F(Durability, ComesWhenTheOwnerIsIdle) {
    Recordset rows{pump};
    rows.open(u"UPDATE tblTraces SET TraceLevel = 77", connection);
    EXPECT_FALSE(isDurable());
    EXPECT_EQ(pump->run(), 1u);
    EXPECT_TRUE(isDurable());
}

TEST_F(Durability, ComesWhenAnotherConnectionOpensTheFile) {
    change();
    Connection other;
    std::filesystem::create_directory(folder.path() / "sub");
    other.open(connectionTo(folder.path() / "sub" / ".." / "traces.mdb"));
    EXPECT_EQ(other.execute(kCount)->getString(), u"40\r");
    EXPECT_TRUE(isDurable());
}

TEST_F(Durability, IsNotAskedForByOtherFilesAndThreads) {
    change();
    const auto another = folder.write("another.mdb", fixture::traceDatabase({.rows = 4}));
    Connection other;
    other.open(connectionTo(another));
    EXPECT_FALSE(isDurable());
    std::int32_t number = 0;
    std::thread{[&] {
        Connection theirs;
        number = errorNumber([&] { theirs.open(connectionTo(path)); });
    }}.join();
    EXPECT_EQ(number, kErrorFile);
    EXPECT_TRUE(connection.database()->hasUncommittedChanges());
}

TEST_F(Durability, AFileThatMayNotBeWrittenRefusesEveryStatement) {
    using std::filesystem::perms;
    constexpr auto kWriting = perms::owner_write | perms::group_write | perms::others_write;
    std::filesystem::permissions(path, kWriting, std::filesystem::perm_options::remove);
    const bool refused = !std::ofstream{path, std::ios::app};
    const std::int32_t number = refused ? errorNumber([&] { change(); }) : 0;
    std::filesystem::permissions(path, kWriting, std::filesystem::perm_options::add);
    if (!refused) {
        GTEST_SKIP() << "this user may write to every file";
    }
    EXPECT_EQ(number, kErrorReadOnly);
    EXPECT_EQ(errorNumber([&] { change(); }), 0);
}

TEST_F(Durability, AConnectionThatReadsKeepsOthersFromWriting) {
    Connection reader;
    reader.open(connectionTo(path));
    EXPECT_EQ(errorNumber([&] { change(); }), kErrorFile);
    reader.close();
    change();
    EXPECT_EQ(connection.execute(kCount)->getString(), u"40\r");
}

}  // namespace
