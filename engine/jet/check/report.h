// Collects the findings of a check.
//
//   reporter.setTable(u"tblTraces");
//   reporter.error(Rule::Record, row, "a record is cut short");
//
// Belongs to one thread, like everything in this namespace.
#pragma once

#include "engine/jet/check/check.h"

namespace jet::checking {

/// The place of a finding: a page, or a row on it.
struct Place {
    Place(PageNumber pageNumber) : page{pageNumber} {}
    Place(RowId id) : page{id.page()}, row{id.slot()} {}

    PageNumber page;
    std::optional<unsigned> row;
};

class Reporter {
public:
    void error(Rule rule, Place place, std::string message) {
        add(Finding::Severity::Error, rule, place, std::move(message));
    }
    void warning(Rule rule, Place place, std::string message) {
        add(Finding::Severity::Warning, rule, place, std::move(message));
    }

    /// Sets the table of further findings; empty for none.
    void setTable(std::u16string_view name);

    CheckReport& report() { return report_; }

private:
    void add(Finding::Severity severity, Rule rule, Place place, std::string message);

    CheckReport report_;
    std::string table_;
};

/// "page 17" and "page 17, row 3".
std::string nameOf(PageNumber page);
std::string nameOf(RowId row);

}  // namespace jet::checking
