// What procedures report, in a test's hands.
//
//   const ReportsTo reporting{[&](std::u16string_view label, const std::u16string& message) {
//       reports.push_back(std::u16string{label} + u": " + message);
//   }};
//
// The user-interface thread.
#pragma once

#include "src/log/class_log.h"
#include "tests/src/support/services_with.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>

/// Hands on the errors and forgets all other lines.
class ReportingLog : public classLog {
public:
    using Receive = std::function<void(std::u16string_view label, const std::u16string& message)>;

    explicit ReportingLog(Receive receive)
        : classLog{silentLogSystem()}, receive_{std::move(receive)} {}

    void log(std::u16string_view message, int level, std::u16string_view label) override {
        if (level == kError) receive_(label, std::u16string{message});
    }

private:
    Receive receive_;
};

/// A reporting log in use until the end of the block.
class ReportsTo {
public:
    explicit ReportsTo(ReportingLog::Receive receive)
        : log_{std::move(receive)}, inUse_{servicesWith(&Services::log, &log_)} {}

private:
    ReportingLog log_;
    ServicesInUse inUse_;
};
