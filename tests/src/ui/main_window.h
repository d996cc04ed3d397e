// The main window with all that stands behind it, for tests: opened on databases as the program
// does, its dialogs answered by the test.
#pragma once

#include "src/db/class_diags.h"
#include "src/db/mod_database.h"
#include "src/log/procedure.h"
#include "src/services/services.h"
#include "src/ui/main/frm_main.h"
#include "tests/src/log/reporting_log.h"
#include "tests/support/expected.h"
#include "tests/support/trace_database.h"
#include "toolkit/forms/application.h"
#include "toolkit/forms/dialogs.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

/// Answers the file dialog with a path, or cancels it.
class AnsweringDialogs : public forms::Dialogs {
public:
    std::optional<forms::FileDialogAnswer> openFile(
        HWND owner, const forms::FileDialogRequest& request) override;
    std::optional<forms::FileDialogAnswer> saveFile(
        HWND owner, const forms::FileDialogRequest& request) override;
    forms::MessageAnswer showMessage(HWND owner, const forms::MessageRequest& request) override;

    std::optional<std::wstring> answer;
    std::vector<forms::FileDialogRequest> asked;
    std::vector<forms::MessageRequest> messages;
};

class MainWindowTest : public testing::Test {
protected:
    MainWindowTest();
    ~MainWindowTest() override;

    std::filesystem::path makeFile(const std::string& name, std::uint32_t rows,
                                   fixture::TraceFormat format = fixture::TraceFormat::Newer);

    /// As start-up does.
    void open(const std::filesystem::path& path);

    /// Lets messages run until the load is complete and sorted. False after a minute.
    bool waitLoaded();
    bool waitUntil(const std::function<bool()>& condition);

    std::wstring panel(int number) { return form.statusbarMain.panel(number).text(); }
    std::wstring cell(std::int64_t row, const wchar_t* field);
    std::wstring headingStyle(const wchar_t* field);
    ado::Recordset& rows() { return diags()->rsDiags(); }

    forms::Application application;
    AnsweringDialogs dialogs;
    frmMain form;
    int ended = 0;
    std::vector<std::u16string> reports;
    fixture::TemporaryFolder folder;

private:
    Services compose();

    ReportingLog reportingLog{[this](std::u16string_view label, const std::u16string& message) {
        reports.push_back(std::u16string{label} + u": " + message);
    }};
    ServicesInUse servicesInUse{compose()};
};
