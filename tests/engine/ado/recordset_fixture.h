// What the tests of recordsets share: a connection to a database in memory, a pump, an eye on
// events, and the errors by their numbers.
#pragma once

#include "engine/ado/recordset.h"
#include "tests/engine/ado/gated_storage.h"
#include "tests/support/trace_database.h"

#include <gtest/gtest.h>

#include <chrono>

inline constexpr std::chrono::seconds kPatience{60};

/// The query of the grid, over a table with or without Port and CallId.
inline constexpr std::u16string_view kTraceQuery =
    u"SELECT tblTraces.Date, tblTraces.Process, tblTraces.Source, tblTraces.TraceNumber, "
    u"tblTraces.Component, tblTraces.TraceLevel, tblTraces.Port, tblTraces.CallId, tblTraces.Trace "
    u" FROM tblTraces ";
inline constexpr std::u16string_view kOldestTraceQuery =
    u"SELECT tblTraces.Date, tblTraces.Process, tblTraces.Source, tblTraces.TraceNumber, "
    u"tblTraces.Component, tblTraces.TraceLevel, tblTraces.Trace  FROM tblTraces ";

/// The number of the ado::Error that `action` throws; 0 if it throws none.
template <typename Action>
std::int32_t errorNumber(Action action) {
    try {
        action();
    } catch (const ado::Error& error) {
        return error.number();
    }
    return 0;
}

/// A connection to `content`, whose reads the gate can hold up.
struct TestConnection {
    explicit TestConnection(fixture::ByteVector content) {
        auto storage = std::make_unique<GatedStorage>(std::move(content), gate);
        connection.open(jet::Database::open(std::move(storage)), "memory.mdb");
    }

    /// Where the page stands that is at `share` of the pages of tblTraces.
    std::uint64_t placeAt(double share) {
        const auto pages = connection.database()->table(u"tblTraces")->dataPages();
        const auto index = static_cast<std::size_t>(static_cast<double>(pages.size()) * share);
        return std::uint64_t{jet::raw(pages.at(index))} * jet::kPageSize;
    }

    std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    ado::Connection connection;
};

/// Events as they came: "progress 1000", "complete", "failed NUMBER".
struct EventLog {
    explicit EventLog(ado::Recordset& recordset) {
        recordset.fetchProgress = [this](std::uint32_t progress, std::uint32_t most, int status) {
            EXPECT_EQ(progress % 1000, 0u);
            EXPECT_LE(progress, most);
            EXPECT_EQ(status, ado::adStatusOK);
            EXPECT_FALSE(complete) << "progress after the end";
            EXPECT_TRUE(progresses.empty() || progress > progresses.back());
            progresses.push_back(progress);
        };
        recordset.fetchComplete = [this](const ado::Error* failure, int status) {
            EXPECT_FALSE(complete) << "a second end";
            EXPECT_EQ(status, failure ? ado::adStatusErrorsOccurred : ado::adStatusOK);
            complete = true;
            if (failure) error = *failure;
        };
    }

    std::vector<std::uint32_t> progresses;
    bool complete = false;
    std::optional<ado::Error> error;
};

inline void openTraces(ado::Recordset& rows, ado::Connection& connection,
                       std::u16string_view where = u"", std::u16string_view query = kTraceQuery) {
    rows.setCursorLocation(ado::adUseClient);
    rows.setPageSize(100);
    rows.setCacheSize(100);
    rows.properties()[u"Initial Fetch Size"].setValue(100);
    rows.open(std::u16string{query}.append(where), connection, ado::adOpenForwardOnly,
              ado::adLockReadOnly, ado::adAsyncFetch);
}

/// The texts of one column in the order shown.
inline std::vector<std::u16string> columnTexts(ado::Recordset& rows, std::size_t field) {
    std::vector<std::u16string> texts(rows.rowCount());
    for (std::uint32_t i = 0; i < texts.size(); ++i) {
        EXPECT_TRUE(rows.textAt(i, field, texts[i]));
    }
    return texts;
}
