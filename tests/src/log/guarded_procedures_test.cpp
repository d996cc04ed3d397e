// The guarded procedures that need no window, each failed eleven times, and the others once.
#include "tests/src/log/guarded_procedures.h"

#include "src/db/mod_database.h"
#include "src/platform/registry_api.h"
#include "src/platform/utilities.h"
#include "src/search/trace_search.h"
#include "tests/src/db/recorded_events.h"
#include "tests/src/log/step_fault.h"
#include "tests/support/expected.h"

#include <gtest/gtest.h>

namespace {

class RefusingRegistry : public RegistryAPI::Registry {
public:
    bool keyExists(const std::u16string& /*path*/) override {
        if (!answersKeys) throw RuntimeError{70, u"Permission denied"};
        return false;
    }
    RegistryAPI::Value read(const std::u16string& /*path*/, const std::u16string& /*name*/,
                            int /*type*/) override {
        RegistryAPI::throwNoKey();
    }
    bool answersKeys = false;
};

class GuardedProceduresTest : public testing::Test {
protected:
    void SetUp() override {
        diags() = std::make_unique<classDiags>(pump_, events_);
        SharedFakeLog quiet;
        modDatabase::connectToDB(u"");
    }
    void TearDown() override { diags().reset(); }

    std::shared_ptr<ado::HandPump> pump_ = std::make_shared<ado::HandPump>();
    RecordedEvents events_;
    RefusingRegistry registry_;
    ServicesInUse inUse_{{.registry = &registry_, .events = &events_}};
    fixture::TemporaryFolder folder_;
};

TEST_F(GuardedProceduresTest, ConnectToDB) {
    const std::u16string missing = (folder_.path() / "missing.mdb").u16string();
    expectGuarded("[modDatabase]connectToDB", Lines::Numbered,
                  [&] { modDatabase::connectToDB(missing); });
}

TEST_F(GuardedProceduresTest, OpenUniqueFilters) {
    expectGuarded("[modDatabase]openUniqueFilters", Lines::Plain, modDatabase::openUniqueFilters);
}

TEST_F(GuardedProceduresTest, UpdateDatabaseFormat) {
    expectGuarded("[modDatabase]updateDatabaseFormat", Lines::Plain,
                  modDatabase::updateDatabaseFormat);
}

TEST_F(GuardedProceduresTest, OpenDiagRecordset) {
    expectGuarded("[modDatabase]openDiagRecordset", Lines::Plain,
                  [] { modDatabase::openDiagRecordset(u""); });
}

TEST_F(GuardedProceduresTest, IsConnection) {
    expectGuarded("[Utilities]isConnection", Lines::Numbered, Utilities::isConnection);
}

TEST_F(GuardedProceduresTest, GetVersion) {
    registry_.answersKeys = true;
    expectGuarded("[Utilities]getVersion", Lines::Plain, Utilities::getVersion);
}

TEST_F(GuardedProceduresTest, UnguardedOnesGoOn) {
    expectOneFailure("[modDatabase]openMacroTraces", modDatabase::openMacroTraces);
    {
        const FailingSteps failing{u"[modDatabase]openRecordsets"};
        expectOneFailure("[modDatabase]openRecordsets", modDatabase::openRecordsets);
    }
    expectOneFailure("[dlgFind]myfindText", [] {
        searchTraces(u"[dlgFind]myfindText", diags()->rsDiags(), {.text = u"x"},
                     [](const std::u16string&) {});
    });
}

}  // namespace
