// A write of which the system takes only a part leaves a file cut off; it is told as a full disk.
#include "src/log/procedure.h"
#include "src/platform/windows_log_system.h"
#include "src/search/ansi_file.h"
#include "src/text/text.h"
#include "tests/src/windows/replaced_import.h"
#include "tests/support/expected.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

BOOL WINAPI takeHalf(HANDLE, LPCVOID, DWORD size, LPDWORD written, LPOVERLAPPED) {
    *written = size / 2;
    return TRUE;
}

void expectDiskFull(const std::function<void()>& write) {
    const ReplacedImport shortWrites{"WriteFile", reinterpret_cast<void*>(&takeHalf)};
    try {
        write();
        ADD_FAILURE() << "nothing was said";
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.failure().number, RuntimeError::kDiskFull);
    }
}

TEST(ShortWriteTest, OfAnExportIsAFullDisk) {
    const fixture::TemporaryFolder folder;
    AnsiFile file{(folder.path() / "out.txt").wstring()};
    EXPECT_NO_THROW(file.write(u"a whole line\r\n"));
    expectDiskFull([&] { file.write(u"half a line\r\n"); });
}

TEST(ShortWriteTest, OfTheLogIsAFullDisk) {
    const fixture::TemporaryFolder folder;
    const auto stream =
        windowsLogSystem().volume->append(fromWide((folder.path() / "a.LOG").wstring()));
    EXPECT_NO_THROW(stream->write("a whole line\r\n"));
    expectDiskFull([&] { stream->write("half a line\r\n"); });
}

}  // namespace
