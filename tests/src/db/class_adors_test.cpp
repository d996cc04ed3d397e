#include "src/db/class_adors.h"

#include "tests/src/log/fake_log_system.h"
#include "tests/support/expected.h"
#include "tests/support/trace_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace {

TEST(ClassADORSTest, LogsTheEndOfAFetch) {
    constexpr std::chrono::seconds kPatience{60};
    const std::string label = "[classADORS]rsGen_FetchComplete";
    const fixture::TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "a.mdb";
    fixture::writeTraceDatabase(path, {.rows = 3000}, fixture::TraceFormat::Newer);
    SharedFakeLog log;
    ado::Connection connection;
    connection.setConnectionString(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" +
                                   path.u16string());
    connection.open();

    const auto pump = std::make_shared<ado::HandPump>();
    classADORS background{pump};
    background.rsGen().open(u"SELECT * FROM tblTraces", connection, ado::adOpenStatic,
                            ado::adLockReadOnly, ado::adAsyncFetch);
    EXPECT_TRUE(log.messages(label).empty());
    ASSERT_TRUE(pump->runUntil([&] { return !log.messages(label).empty(); }, kPatience));
    EXPECT_EQ(background.rsGen().recordCount(), 3000);
    EXPECT_THAT(log.messages(label), testing::ElementsAre("Recorset retrieved."));
    EXPECT_THAT(log.fake.text(theLog().strLogFile()), testing::HasSubstr("Info:("));
}

}  // namespace
