#include "src/platform/windows_registry.h"

#include "src/text/text.h"

#include <windows.h>

#include <vector>

namespace RegistryAPI {
namespace {

constexpr REGSAM kRead = 131097;  // KEY_READ

/// An open key; null if neither view has it.
class Key {
public:
    explicit Key(const std::u16string& path) {
        std::wstring name = toWide(path);
        while (!name.empty() && name.back() == L'\\') name.pop_back();
        for (const REGSAM view : {REGSAM{0}, REGSAM{KEY_WOW64_32KEY}}) {
            if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, kRead | view, &key_) ==
                ERROR_SUCCESS) {
                return;
            }
            key_ = nullptr;
        }
    }
    ~Key() {
        if (key_ != nullptr) ::RegCloseKey(key_);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    HKEY get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

std::u16string text(HKEY key, const std::u16string& name) {
    DWORD size = 0;
    const std::wstring wideName = toWide(name);
    if (::RegGetValueW(key, nullptr, wideName.c_str(), RRF_RT_REG_SZ, nullptr, nullptr, &size) !=
        ERROR_SUCCESS) {
        throwNoValue(name);
    }
    std::wstring value(size / sizeof(wchar_t) + 1, L'\0');
    size = static_cast<DWORD>(value.size() * sizeof(wchar_t));
    if (::RegGetValueW(key, nullptr, wideName.c_str(), RRF_RT_REG_SZ, nullptr, value.data(),
                       &size) != ERROR_SUCCESS) {
        throwNoValue(name);
    }
    return fromWide(value.c_str());
}

std::uint32_t number(HKEY key, const std::u16string& name) {
    DWORD value = 0;
    DWORD size = sizeof value;
    if (::RegGetValueW(key, nullptr, toWide(name).c_str(), RRF_RT_REG_DWORD, nullptr, &value,
                       &size) != ERROR_SUCCESS) {
        throwNoValue(name);
    }
    return value;
}

}  // namespace

bool WindowsRegistry::keyExists(const std::u16string& path) { return Key{path}.get() != nullptr; }

Value WindowsRegistry::read(const std::u16string& path, const std::u16string& name, int type) {
    if (type != kText && type != kNumber) throwUnsupportedType();
    const Key key{path};
    if (key.get() == nullptr) throwNoKey();
    if (type == kText) return text(key.get(), name);
    return number(key.get(), name);
}

}  // namespace RegistryAPI
