#include "src/platform/utilities.h"

#include "src/log/procedure.h"
#include "src/platform/registry_api.h"
#include "src/text/text.h"

#include <array>
#include <cstdio>
#include <limits>

namespace Utilities {
namespace {

constexpr const char16_t* kCurrentProduct = u"Software\\Veltrane Systems\\Veltrane Vorelle\\";
constexpr const char16_t* kCurrentProductKey = u"Software\\Veltrane Systems\\Veltrane Vorelle";
constexpr const char16_t* kOlderProduct = u"Software\\Pellamar";

std::int16_t readPart(const std::u16string& name) {
    const std::uint32_t number = RegistryAPI::readNumber(kCurrentProduct, name);
    if (number > static_cast<std::uint32_t>(std::numeric_limits<std::int16_t>::max())) {
        throw RuntimeError{RuntimeError::kOverflow, u"Overflow"};
    }
    return static_cast<std::int16_t>(number);
}

/// Two numbers that the older server packed into one, as the eight hexadecimal digits of it.
std::string digitsOf(std::uint32_t number) {
    std::array<char, 9> text{};
    std::snprintf(text.data(), text.size(), "%08X", static_cast<unsigned>(number));
    return text.data();
}

/// The digits up to the first letter, read as a decimal number.
std::int16_t decimalPart(const std::string& digits) {
    int value = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') break;
        value = value * 10 + (digit - '0');
    }
    return static_cast<std::int16_t>(value);
}

/// The build alone is hexadecimal; the server writes it so.
std::int16_t hexadecimalPart(const std::string& digits) {
    return static_cast<std::int16_t>(std::stoul(digits, nullptr, 16));
}

void readCurrentProduct(Procedure& procedure, VersionRecord& record) {
    procedure.step([&] { record.major = readPart(u"MajorVersion"); });
    procedure.step([&] { record.minor = readPart(u"MinorVersion"); });
    procedure.step([&] { record.release = readPart(u"ReleaseVersion"); });
    procedure.step([&] { record.build = readPart(u"BuildVersion"); });
    procedure.step([&] { record.version = RegistryAPI::readText(kCurrentProduct, u"Version"); });
}

void readOlderProduct(Procedure& procedure, VersionRecord& record) {
    constexpr std::size_t kHalf = 4;
    std::uint32_t number = 0;
    procedure.step([&] { number = RegistryAPI::readNumber(kOlderProduct, u"Version Number"); });
    const std::string version = digitsOf(number);
    record.major = decimalPart(version.substr(0, kHalf));
    record.minor = decimalPart(version.substr(kHalf));

    number = 0;
    procedure.step([&] { number = RegistryAPI::readNumber(kOlderProduct, u"Build Number"); });
    const std::string build = digitsOf(number);
    record.release = decimalPart(build.substr(0, kHalf));
    record.build = hexadecimalPart(build.substr(kHalf));

    record.version = toText(record.major) + u"." + toText(record.minor) + u"(" +
                     toText(record.release) + u"." + toText(record.build) + u")";
}

}  // namespace

bool isConnection() {
    bool exists = false;
    runProcedure(
        u"[Utilities]isConnection", {.limit = Limit::TenErrors, .numbersLines = true},
        [&](Procedure& procedure) {
            procedure.step([&] { exists = RegistryAPI::registry().keyExists(kCurrentProductKey); });
        });
    return exists;
}

VersionRecord getVersion() {
    VersionRecord record;
    runProcedure(u"[Utilities]getVersion", {.limit = Limit::TenErrors, .timed = true},
                 [&](Procedure& procedure) {
                     if (isConnection()) {
                         readCurrentProduct(procedure, record);
                     } else {
                         readOlderProduct(procedure, record);
                     }
                 });
    return record;
}

}  // namespace Utilities
