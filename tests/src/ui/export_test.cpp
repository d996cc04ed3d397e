#include "src/db/trace_filter.h"
#include "src/platform/running_on_server.h"
#include "src/search/ansi_file.h"
#include "src/text/text.h"
#include "tests/src/ui/language_libraries.h"
#include "tests/src/ui/main_window.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>

namespace {

class ExportTest : public MainWindowTest {
protected:
    void TearDown() override { modMain::runningOnServer = false; }

    void openRows(std::uint32_t count) {
        open(makeFile("a.mdb", count));
        ASSERT_TRUE(waitLoaded());
    }

    void exportTo(const std::filesystem::path& path) {
        dialogs.answer = path.wstring();
        form.mnuExportData.onClick();
    }

    std::filesystem::path target() const { return folder.path() / "out.txt"; }

    static std::string content(const std::filesystem::path& path) {
        std::ifstream file{path, std::ios::binary};
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }

    /// Blocks in the file; texts of several lines hold no empty one.
    static std::size_t blockEnds(const std::string& text) {
        std::size_t count = 0;
        for (std::size_t at = 0; (at = text.find("\r\n\r\n", at)) != std::string::npos; at += 4) {
            ++count;
        }
        return count;
    }

    bool reported(std::u16string_view text) const {
        for (const std::u16string& report : reports) {
            if (report.find(text) != std::u16string::npos) return true;
        }
        return false;
    }

    /// Runs `action` once, between two blocks of the export that starts next.
    void duringExport(std::function<void()> action) {
        forms::post([this, action = std::move(action)] {
            if (form.status.pbarStatus.value() == 0) return duringExport(action);
            action();
        });
    }
};

constexpr const char* kHeading =
    "Date\tProcess\tSource\tTraceNumber\tComponent\tTraceLevel\tPort\tCallId\tTrace\r\n";

TEST_F(ExportTest, AsksForATextFile) {
    openRows(10);
    form.mnuExportData.onClick();
    ASSERT_EQ(dialogs.asked.size(), 1u);
    EXPECT_EQ(dialogs.asked[0].filter, L"TXT (*.txt)|*.txt");
    EXPECT_EQ(dialogs.asked[0].defaultExtension, L"txt");
    EXPECT_EQ(dialogs.asked[0].fileName, L"Diagnostics.txt");
    EXPECT_EQ(form.mnuExportData.caption(), L"Export &Data");
    EXPECT_EQ(form.mnuExportData.shortcut(), L"Ctrl+E");
}

TEST_F(ExportTest, CancellingWritesNothingAndIsReported) {
    openRows(10);
    form.mnuExportData.onClick();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[frmMain]mnuExportData_Click: Err.Number = 32755 "));
    EXPECT_EQ(panel(1), L"");
    EXPECT_FALSE(form.status.visible());
}

TEST_F(ExportTest, WritesWhatTheGridShows) {
    openRows(250);
    exportTo(target());
    const std::string text = content(target());
    EXPECT_TRUE(text.starts_with(kHeading));
    EXPECT_EQ(blockEnds(text), 3u);
    EXPECT_TRUE(text.ends_with("\r\n\r\n"));
    std::string first;
    for (int column = 0; column < 9; ++column) {
        std::u16string cellText;
        rows().textAt(0, static_cast<std::size_t>(column), cellText);
        if (column > 0) first += '\t';
        first.append(cellText.begin(), cellText.end());
    }
    EXPECT_EQ(text.substr(std::string{kHeading}.size(), first.size()), first);
    EXPECT_EQ(panel(1), L"Export complete (" + target().wstring() + L")");
    EXPECT_FALSE(form.status.visible());
    EXPECT_EQ(rows().absolutePosition(), 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ExportTest, AnEmptyRecordsetGivesTheHeadingOnly) {
    openRows(0);
    exportTo(target());
    EXPECT_EQ(content(target()), kHeading);
    EXPECT_TRUE(panel(1).starts_with(L"Export complete ("));
}

TEST_F(ExportTest, AFilterAndASortCount) {
    openRows(2000);
    form.cmdClearAllUniqueTraces.onClick();
    modDatabase::uniqueTraces()[3].selected = true;
    form.cmdApplyFilter.onClick();
    ASSERT_TRUE(waitLoaded());
    form.tdbgridData_HeadClick(form.tdbgridData.columnIndex(L"TraceNumber"));
    form.tdbgridData_HeadClick(form.tdbgridData.columnIndex(L"TraceNumber"));
    ASSERT_EQ(rows().sort(), u"TraceNumber DESC");
    const auto shown = static_cast<std::size_t>(rows().recordCount());
    ASSERT_GT(shown, 0u);
    ASSERT_LT(shown, 2000u);
    exportTo(target());
    const std::string text = content(target());
    // Every row holds the number that only it has, between two tabs, in the order of the grid.
    std::size_t at = 0;
    for (std::uint32_t row = 0; row < shown; ++row) {
        std::u16string number;
        rows().textAt(row, 3, number);
        at = text.find("\t" + std::string(number.begin(), number.end()) + "\t", at);
        ASSERT_NE(at, std::string::npos) << row;
    }
    EXPECT_EQ(blockEnds(text), (shown + 99) / 100);
}

TEST_F(ExportTest, AnExistingFileIsReplaced) {
    openRows(0);
    folder.write("out.txt", std::vector<std::uint8_t>(5000, 'x'));
    exportTo(target());
    EXPECT_EQ(content(target()), kHeading);
}

TEST_F(ExportTest, OthersMayReadTheFileMeanwhile) {
    openRows(500);
    std::size_t seen = 0;
    std::wstring notice;
    std::wstring shown;
    bool barVisible = false;
    bool enabled = true;
    duringExport([&] {
        seen = content(target()).size();
        notice = panel(1);
        shown = form.status.lblStatus.text();
        barVisible = form.status.pbarStatus.isShown();
        enabled = form.mnuExportData.enabled();
    });
    exportTo(target());
    EXPECT_GE(seen, std::string{kHeading}.size());
    EXPECT_EQ(notice, L"Exporting diagnostics to " + target().wstring());
    EXPECT_EQ(shown, notice);
    EXPECT_TRUE(barVisible);
    EXPECT_FALSE(enabled) << "one export at a time";
    EXPECT_TRUE(form.mnuExportData.enabled());
    EXPECT_EQ(form.status.pbarStatus.max(), 500);
    EXPECT_EQ(form.status.pbarStatus.value(), 401);
}

TEST_F(ExportTest, WhileLoadingItWritesTheRowsThatAreThere) {
    modDatabase::connectToDB(makeFile("a.mdb", 5000).u16string());
    modDatabase::openRecordsets();
    form.reloadDBGrid(rows());
    form.show();
    exportTo(target());
    EXPECT_TRUE(panel(1).starts_with(L"Export complete (")) << toWide(fromWide(panel(1)));
    EXPECT_GE(blockEnds(content(target())), 1u);
    ASSERT_TRUE(waitUntil([this] { return rows().sort() == u"Date ASC"; }));
    EXPECT_EQ(form.tdbgridData.approxCount(), 5000);
}

TEST_F(ExportTest, AnotherDatabaseEndsIt) {
    openRows(1000);
    const auto other = makeFile("b.mdb", 40);
    duringExport([&] { open(other); });
    exportTo(target());
    EXPECT_TRUE(reported(u"[frmMain]mnuExportData_Click: Err.Number = 3704 "));
    EXPECT_FALSE(form.status.visible());
    ASSERT_TRUE(waitUntil([this] { return rows().sort() == u"Date ASC"; }));
    EXPECT_EQ(form.tdbgridData.approxCount(), 40);
    reports.clear();
    exportTo(target());
    EXPECT_EQ(blockEnds(content(target())), 1u);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ExportTest, AFilterThatIsAppliedMeanwhileTakesNothingFromIt) {
    openRows(1000);
    duringExport([this] {
        form.cmdClearAllUniqueTraces.onClick();
        modDatabase::uniqueTraces()[3].selected = true;
        form.cmdApplyFilter.onClick();
    });
    exportTo(target());
    EXPECT_EQ(blockEnds(content(target())), 10u);
    EXPECT_TRUE(panel(1).starts_with(L"Export complete ("));
    EXPECT_TRUE(reports.empty());
    ASSERT_TRUE(waitUntil([this] { return rows().sort() == u"Date ASC"; }));
    EXPECT_LT(rows().recordCount(), 1000);
}

TEST_F(ExportTest, ASearchMeanwhileMovesTheGridOnly) {
    openRows(1000);
    form.mnuFind.onClick();
    form.findDialog.comboFindWhat.setText(L"Retry");
    int found = 0;
    duringExport([&] {
        rows().setAbsolutePosition(500);
        form.findDialog.cmdFindNext.click();
        found = rows().absolutePosition();
    });
    exportTo(target());
    EXPECT_EQ(blockEnds(content(target())), 10u);
    EXPECT_GE(found, 500);
    EXPECT_EQ(rows().absolutePosition(), found);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ExportTest, AnotherLanguageMeanwhileTellsTheEndInIt) {
    openRows(1000);
    const LanguageFolder languages{{"DEU"}};
    duringExport([&] { languages.use(1031); });
    exportTo(target());
    EXPECT_EQ(panel(1), L"Export abgeschlossen (" + target().wstring() + L")");
    EXPECT_EQ(blockEnds(content(target())), 10u);
}

// There is one status window; sorting and loading leave it to the export.
TEST_F(ExportTest, ItsProgressStaysWhileTheUserSortsAndFilters) {
    openRows(1000);
    bool stays = false;
    std::wstring shown;
    duringExport([&] {
        const int before = form.status.pbarStatus.value();
        form.tdbgridData_HeadClick(form.tdbgridData.columnIndex(L"Process"));
        EXPECT_EQ(rows().sort(), u"Process ASC");
        modDatabase::openRecordsets();
        stays = form.status.visible() && form.status.pbarStatus.isShown();
        shown = form.status.lblStatus.text();
        EXPECT_GT(before, 0);
    });
    exportTo(target());
    EXPECT_TRUE(stays);
    EXPECT_TRUE(shown.starts_with(L"Exporting")) << std::filesystem::path{shown};
    EXPECT_FALSE(form.status.visible());
    EXPECT_TRUE(waitUntil([this] { return rows().state() == ado::adStateOpen; }));
}

TEST_F(ExportTest, ClosingTheWindowEndsIt) {
    openRows(1000);
    duringExport([&] { ::SendMessageW(form.hwnd(), WM_CLOSE, 0, 0); });
    exportTo(target());
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(form.isLoaded());
    EXPECT_LT(blockEnds(content(target())), 10u);
}

TEST_F(ExportTest, AFolderThatIsNotThereIsReported) {
    openRows(20);
    exportTo(folder.path() / "none" / "out.txt");
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[frmMain]mnuExportData_Click: Err.Number = 76 "));
    EXPECT_EQ(panel(1), L"") << "nothing that failed is called complete";
    EXPECT_FALSE(form.status.visible());
    exportTo(target());
    EXPECT_TRUE(panel(1).starts_with(L"Export complete ("));
}

TEST_F(ExportTest, ATargetThatRefusesIsReported) {
    openRows(20);
    std::filesystem::create_directory(target());
    exportTo(target());
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[frmMain]mnuExportData_Click: Err.Number = 75 "));
    EXPECT_EQ(panel(1), L"");
    EXPECT_FALSE(form.status.visible());
}

TEST_F(ExportTest, AFileThatMayNotBeWrittenIsReportedAndStays) {
    openRows(20);
    folder.write("out.txt", {'k', 'e', 'p', 't'});
    ::SetFileAttributesW(target().c_str(), FILE_ATTRIBUTE_READONLY);
    exportTo(target());
    ::SetFileAttributesW(target().c_str(), FILE_ATTRIBUTE_NORMAL);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[frmMain]mnuExportData_Click: Err.Number = 75 "));
    EXPECT_EQ(content(target()), "kept");
    EXPECT_EQ(panel(1), L"");
    exportTo(target());
    EXPECT_TRUE(content(target()).starts_with(kHeading)) << "and the next one works";
}

TEST_F(ExportTest, ThePathMayHoldAnyCharacters) {
    openRows(120);
    const std::filesystem::path path =
        folder.path() / L"\u00DCbung \u97F3\u58F0 \u0416" / L"\u7559\u5B88.txt";
    std::filesystem::create_directory(path.parent_path());
    exportTo(path);
    EXPECT_EQ(blockEnds(content(path)), 2u);
    EXPECT_EQ(panel(1), L"Export complete (" + path.wstring() + L")");
    EXPECT_TRUE(reports.empty());
}

TEST_F(ExportTest, ThePathMayBeLong) {
    openRows(20);
    std::filesystem::path path = folder.path();
    for (int i = 0; i < 5; ++i) path /= std::wstring(60, L'd');
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) {
        GTEST_SKIP() << "long paths are switched off on this machine";
    }
    path /= L"out.txt";
    exportTo(path);
    EXPECT_EQ(blockEnds(content(path)), 1u);
    EXPECT_TRUE(reports.empty());
}

TEST_F(ExportTest, AFullDiskIsReported) {
    const std::filesystem::path full{L"Z:\\dev\\full"};
    // A device has no attributes to look up; its folder has.
    if (!std::filesystem::is_directory(full.parent_path())) {
        GTEST_SKIP() << "no disk that is always full";
    }
    openRows(20);
    exportTo(full);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports[0].starts_with(u"[frmMain]mnuExportData_Click: Err.Number = 61 "));
    EXPECT_EQ(panel(1), L"");
    EXPECT_FALSE(form.status.visible());
    exportTo(target());
    EXPECT_TRUE(panel(1).starts_with(L"Export complete ("));
}

TEST_F(ExportTest, AFileInUseIsReported) {
    openRows(20);
    const AnsiFile other{target().wstring()};
    exportTo(target());
    EXPECT_TRUE(reported(u"Err.Number = 70 "));
    EXPECT_EQ(panel(1), L"");
}

TEST_F(ExportTest, TheOpenDatabaseIsNotOverwritten) {
    openRows(20);
    const auto size = std::filesystem::file_size(folder.path() / "a.mdb");
    exportTo(folder.path() / "a.mdb");
    EXPECT_TRUE(reported(u"Err.Number = 70 "));
    EXPECT_EQ(std::filesystem::file_size(folder.path() / "a.mdb"), size);
}

TEST_F(ExportTest, WithoutADatabaseNoFileIsMade) {
    form.show();
    exportTo(target());
    EXPECT_TRUE(reported(u"Err.Number = 3704 "));
    EXPECT_FALSE(std::filesystem::exists(target()));
    EXPECT_FALSE(form.status.visible());
}

TEST_F(ExportTest, AServerIsGivenTimeBetweenBlocks) {
    openRows(300);
    const auto duration = [this] {
        const auto start = std::chrono::steady_clock::now();
        exportTo(target());
        return std::chrono::steady_clock::now() - start;
    };
    modMain::runningOnServer = true;
    EXPECT_GE(duration(), std::chrono::milliseconds{300});
}

TEST_F(ExportTest, TextIsWrittenInTheSystemsCodePage) {
    // A letter with a stroke becomes the plain one in most code pages.
    const std::wstring text = std::wstring{L"caf\u00E9 \u0141 "} + L'\0' + L"\u97F3\U0001F4DE\r\n";
    std::string expected(100, '\0');
    const int length =
        ::WideCharToMultiByte(CP_ACP, 0, text.data(), static_cast<int>(text.size()),
                              expected.data(), static_cast<int>(expected.size()), nullptr, nullptr);
    expected.resize(static_cast<std::size_t>(length));
    {
        AnsiFile file{target().wstring()};
        file.write(u"gone with the restart, and much longer than what follows");
        file.restart();
        file.write(fromWide(text));
        file.write(u"");
    }
    EXPECT_EQ(content(target()), expected);
    if (::GetACP() == 1252) {
        EXPECT_TRUE(content(target()).starts_with("caf\xE9 L ")) << "best fit";
    }
}

}  // namespace
