// The server's version, out of a registry that the test makes up.
#include "src/platform/utilities.h"

#include "src/platform/registry_api.h"
#include "tests/src/log/fake_log_system.h"
#include "tests/src/support/services_with.h"

#include <gtest/gtest.h>

namespace {

using RegistryAPI::Value;

constexpr const char16_t* kCurrent = u"Software\\Veltrane Systems\\Veltrane Vorelle";
constexpr const char16_t* kOlder = u"Software\\Pellamar";

class FakeRegistry : public RegistryAPI::Registry {
public:
    bool keyExists(const std::u16string& path) override {
        if (broken) throw RuntimeError{70, u"Permission denied"};
        return keys.count(path) != 0;
    }
    Value read(const std::u16string& path, const std::u16string& name, int type) override {
        if (type != RegistryAPI::kText && type != RegistryAPI::kNumber)
            RegistryAPI::throwUnsupportedType();
        const std::u16string key = path.back() == u'\\' ? path.substr(0, path.size() - 1) : path;
        const auto values = keys.find(key);
        if (values == keys.end()) RegistryAPI::throwNoKey();
        const auto value = values->second.find(name);
        if (value == values->second.end()) RegistryAPI::throwNoValue(name);
        return value->second;
    }

    std::map<std::u16string, std::map<std::u16string, Value>> keys;
    bool broken = false;
};

class GetVersionTest : public testing::Test {
protected:
    VersionRecord older(std::uint32_t version, std::uint32_t build) {
        registry_.keys[kOlder] = {{u"Version Number", version}, {u"Build Number", build}};
        return Utilities::getVersion();
    }

    SharedFakeLog log_;
    FakeRegistry registry_;
    ServicesInUse inUse_{servicesWith(&Services::registry, &registry_)};
};

TEST_F(GetVersionTest, TheCurrentProductTellsEveryPart) {
    registry_.keys[kCurrent] = {{u"MajorVersion", 8u},
                                {u"MinorVersion", 3u},
                                {u"ReleaseVersion", 1u},
                                {u"BuildVersion", 4321u},
                                {u"Version", std::u16string{u"8.3 (1.4321)"}}};
    registry_.keys[kOlder] = {{u"Version Number", 0x40000u}};
    EXPECT_TRUE(Utilities::isConnection());
    const VersionRecord record = Utilities::getVersion();
    EXPECT_EQ(record.major, 8);
    EXPECT_EQ(record.minor, 3);
    EXPECT_EQ(record.release, 1);
    EXPECT_EQ(record.build, 4321);
    EXPECT_EQ(record.version, u"8.3 (1.4321)");
    const std::vector<std::string> lines = log_.messages("[Utilities]getVersion");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "Entering [Utilities]getVersion_0");
}

TEST_F(GetVersionTest, AValueThatIsMissingLeavesItsPartAlone) {
    registry_.keys[kCurrent] = {
        {u"MajorVersion", 8u}, {u"ReleaseVersion", 40000u}, {u"Version", std::u16string{u"eight"}}};
    const VersionRecord record = Utilities::getVersion();
    EXPECT_EQ(record.major, 8);
    EXPECT_EQ(record.minor, 0);
    EXPECT_EQ(record.release, 0);
    EXPECT_EQ(record.version, u"eight");
    const std::vector<std::string> expected{
        "Err.Number = 5 Err.Description = Unable to read the registry value MinorVersion",
        "Err.Number = 6 Err.Description = Overflow",
        "Err.Number = 5 Err.Description = Unable to read the registry value BuildVersion"};
    EXPECT_EQ(log_.failures("[Utilities]getVersion"), expected);
}

TEST_F(GetVersionTest, WithoutAnyProductEverythingIsZero) {
    const VersionRecord record = Utilities::getVersion();
    EXPECT_FALSE(Utilities::isConnection());
    EXPECT_EQ(record.major, 0);
    EXPECT_EQ(record.minor, 0);
    EXPECT_EQ(record.release, 0);
    EXPECT_EQ(record.build, 0);
    EXPECT_EQ(record.version, u"0.0(0.0)");
    const std::string line = "Err.Number = 76 Err.Description = Unable to create the registry key";
    EXPECT_EQ(log_.failures("[Utilities]getVersion"), (std::vector<std::string>{line, line}));
}

TEST_F(GetVersionTest, OnlyTheOlderBuildIsHexadecimal) {
    EXPECT_EQ(older(0x4000A, 0).major, 4);
    EXPECT_EQ(older(0x4000A, 0).minor, 0);
    EXPECT_EQ(older(0, 0x3001F).release, 3);
    EXPECT_EQ(older(0, 0x3001F).build, 31);
    EXPECT_EQ(older(0x40000, 0x30015).version, u"4.0(3.21)");
    EXPECT_EQ(older(0x00120034, 0x00560078).version, u"12.34(56.120)");
}

TEST_F(GetVersionTest, AnOlderBuildThatIsMissingIsZero) {
    registry_.keys[kOlder] = {{u"Version Number", 0x40003u}};
    EXPECT_EQ(Utilities::getVersion().version, u"4.3(0.0)");
}

TEST_F(GetVersionTest, DecimalPartsStopAtTheFirstLetter) {
    EXPECT_EQ(older(0x1E051F2F, 0).major, 1);
    EXPECT_EQ(older(0x1E051F2F, 0).minor, 1);
    EXPECT_EQ(older(0xABCD9999, 0).major, 0);
    EXPECT_EQ(older(0xABCD9999, 0).minor, 9999);
    EXPECT_EQ(older(0, 0x0000FFFF).build, -1);
}

TEST_F(GetVersionTest, OtherTypesOfValuesAreNotRead) {
    EXPECT_THROW(registry_.read(kOlder, u"x", 3), RuntimeError);
    const ServicesInUse none{servicesWith(&Services::registry, nullptr)};
    EXPECT_FALSE(RegistryAPI::registry().keyExists(kCurrent));
    EXPECT_THROW(RegistryAPI::readNumber(kCurrent, u"x"), RuntimeError);
}

TEST_F(GetVersionTest, AFailedLookForTheKeyNamesItsLine) {
    registry_.broken = true;
    EXPECT_FALSE(Utilities::isConnection());
    const std::vector<std::string> failures = log_.failures("[Utilities]isConnection");
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_TRUE(
        failures[0].starts_with("Err.Number = 70 Err.Description = Permission denied Line: "));
}

}  // namespace
