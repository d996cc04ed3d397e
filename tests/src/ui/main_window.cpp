#include "tests/src/ui/main_window.h"

#include "src/app/toolkit_failures.h"
#include "src/macros/mdl_traces.h"
#include "src/text/text.h"

#include <chrono>

namespace {

class PostingScheduler : public ado::Scheduler {
public:
    void post(std::function<void()> task) override { forms::post(std::move(task)); }
};

std::optional<forms::FileDialogAnswer> answered(const std::optional<std::wstring>& path) {
    if (!path) return std::nullopt;
    return forms::FileDialogAnswer{*path, 1};
}

}  // namespace

std::optional<forms::FileDialogAnswer> AnsweringDialogs::openFile(
    HWND, const forms::FileDialogRequest& request) {
    asked.push_back(request);
    return answered(answer);
}

std::optional<forms::FileDialogAnswer> AnsweringDialogs::saveFile(
    HWND, const forms::FileDialogRequest& request) {
    asked.push_back(request);
    return answered(answer);
}

forms::MessageAnswer AnsweringDialogs::showMessage(HWND, const forms::MessageRequest& request) {
    messages.push_back(request);
    return forms::MessageAnswer::ok;
}

Services MainWindowTest::compose() {
    return {.log = &reportingLog,
            .dialogs = &dialogs,
            .events = &form,
            .runWhilePainting = forms::runWhilePainting,
            .readFailure = readToolkitFailure,
            .readMacroTraces = mdlTraces::initMacroTraces};
}

MainWindowTest::MainWindowTest() {
    form.endProgram = [this] { ++ended; };
    diags() = std::make_unique<classDiags>(std::make_shared<PostingScheduler>(), form);
}

MainWindowTest::~MainWindowTest() {
    form.tdbgridData.setDataSource(nullptr);
    diags().reset();
}

std::filesystem::path MainWindowTest::makeFile(const std::string& name, std::uint32_t rowCount,
                                               fixture::TraceFormat format) {
    const std::filesystem::path path = folder.path() / name;
    fixture::writeTraceDatabase(path, {.rows = rowCount}, format);
    return path;
}

void MainWindowTest::open(const std::filesystem::path& path) {
    modDatabase::connectToDB(path.u16string());
    modDatabase::openRecordsets();
    form.reloadDBGrid(rows());
    form.show();
}

bool MainWindowTest::waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes{1};
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
        forms::doEvents();
    }
    return true;
}

bool MainWindowTest::waitLoaded() {
    return waitUntil([this] {
        return panel(1).empty() && !panel(3).empty() && !form.status.visible() &&
               form.mousePointer() == forms::MousePointer::standard;
    });
}

std::wstring MainWindowTest::cell(std::int64_t row, const wchar_t* field) {
    std::wstring text;
    form.tdbgridData.dataSource()->cellText(row, form.tdbgridData.columnIndex(field), text);
    return text;
}

std::wstring MainWindowTest::headingStyle(const wchar_t* field) {
    return form.tdbgridData.column(field).headingStyle();
}
