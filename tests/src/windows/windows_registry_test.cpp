// The machine's registry, with keys that the test puts there and takes away again.
#include "src/platform/windows_registry.h"

#include "src/platform/utilities.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/src/support/services_with.h"
#include "tests/src/windows/machine_key.h"

#include <gtest/gtest.h>

namespace {

constexpr const wchar_t* kProduct = L"Software\\Veltrane Systems\\Veltrane Vorelle";
constexpr const wchar_t* kOlderProduct = L"Software\\Pellamar";

class WindowsRegistryTest : public testing::Test {
protected:
    static void fill(const MachineKey& key, DWORD major) {
        key.setNumber(L"MajorVersion", major);
        key.setNumber(L"MinorVersion", 2);
        key.setNumber(L"ReleaseVersion", 3);
        key.setNumber(L"BuildVersion", 4);
        key.setText(L"Version", L"nine");
    }

    SharedFakeLog log_;
    RegistryAPI::WindowsRegistry machine_;
    ServicesInUse inUse_{servicesWith(&Services::registry, &machine_)};
};

TEST_F(WindowsRegistryTest, WithoutKeysThereIsNoServer) {
    EXPECT_FALSE(Utilities::isConnection());
    EXPECT_EQ(Utilities::getVersion().version, u"0.0(0.0)");
}

TEST_F(WindowsRegistryTest, ReadsTheCurrentProduct) {
    const MachineKey key{kProduct};
    fill(key, 9);
    EXPECT_TRUE(Utilities::isConnection());
    const VersionRecord record = Utilities::getVersion();
    EXPECT_EQ(record.major, 9);
    EXPECT_EQ(record.minor, 2);
    EXPECT_EQ(record.release, 3);
    EXPECT_EQ(record.build, 4);
    EXPECT_EQ(record.version, u"nine");
    EXPECT_TRUE(log_.failures("[Utilities]getVersion").empty());
}

TEST_F(WindowsRegistryTest, LooksAtTheView32BitProgramsHave) {
    const MachineKey key{kProduct, KEY_WOW64_32KEY};
    fill(key, 7);
    EXPECT_TRUE(Utilities::isConnection());
    EXPECT_EQ(Utilities::getVersion().major, 7);
}

TEST_F(WindowsRegistryTest, TheUsualViewComesFirst) {
    const MachineKey usual{kProduct, KEY_WOW64_64KEY};
    const MachineKey other{kProduct, KEY_WOW64_32KEY};
    fill(usual, 9);
    fill(other, 7);
    EXPECT_EQ(Utilities::getVersion().major, 9);
}

TEST_F(WindowsRegistryTest, ReadsTheOlderProduct) {
    const MachineKey key{kOlderProduct};
    key.setNumber(L"Version Number", 0x40000);
    key.setNumber(L"Build Number", 0x30015);
    EXPECT_FALSE(Utilities::isConnection());
    EXPECT_EQ(Utilities::getVersion().version, u"4.0(3.21)");
}

TEST_F(WindowsRegistryTest, ValuesOfOtherTypesAreFailures) {
    const MachineKey key{kProduct};
    key.setText(L"MajorVersion", L"9");
    key.setNumber(L"Version", 9);
    EXPECT_EQ(Utilities::getVersion().major, 0);
    EXPECT_EQ(log_.failures("[Utilities]getVersion").size(), 5u);
    const std::u16string path = u"Software\\Veltrane Systems\\Veltrane Vorelle";
    EXPECT_THROW(machine_.read(path, u"Version", 3), RuntimeError);
}

}  // namespace
