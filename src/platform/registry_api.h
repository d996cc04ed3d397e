// RegistryAPI: the few registry reads that the viewer needs, behind an interface.
//
//   if (!RegistryAPI::registry().keyExists(u"Software\\Pellamar")) return;
//   const std::u16string version = RegistryAPI::readText(u"Software\\...", u"Version");
//
// Everything lies under HKEY_LOCAL_MACHINE. The user-interface thread.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace RegistryAPI {

inline constexpr int kText = 1;    ///< REG_SZ
inline constexpr int kNumber = 4;  ///< REG_DWORD

using Value = std::variant<std::u16string, std::uint32_t>;

class Registry {
public:
    virtual ~Registry() = default;

    /// Whether the key can be opened for reading.
    virtual bool keyExists(const std::u16string& path) = 0;

    /// Throws RuntimeError: for a type other than kText and kNumber, for a key that cannot be
    /// opened, for a value that is not there or of another type.
    virtual Value read(const std::u16string& path, const std::u16string& name, int type) = 0;
};

/// The registry in use (services/services.h); an empty one if there is none.
Registry& registry();

std::u16string readText(const std::u16string& path, const std::u16string& name);
std::uint32_t readNumber(const std::u16string& path, const std::u16string& name);

[[noreturn]] void throwUnsupportedType();
[[noreturn]] void throwNoKey();
[[noreturn]] void throwNoValue(const std::u16string& name);

}  // namespace RegistryAPI
