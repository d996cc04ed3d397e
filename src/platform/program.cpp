#include "src/platform/program.h"

#include "src/text/text.h"

#include <windows.h>

#include <cstring>
#include <filesystem>

namespace program {

std::u16string path() {
    std::wstring text(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            ::GetModuleFileNameW(nullptr, text.data(), static_cast<DWORD>(text.size()));
        if (length < text.size()) {
            text.resize(length);
            return fromWide(text);
        }
        text.resize(text.size() * 2);
    }
}

std::u16string folder() {
    return fromWide(std::filesystem::path{toWide(path())}.parent_path().wstring());
}

Version version() {
    // The fixed part follows the key and a padding, at an offset that is the same in all files.
    constexpr DWORD kFixedInfo = 40;
    const HRSRC resource = ::FindResourceW(nullptr, MAKEINTRESOURCEW(1), RT_VERSION);
    if (resource == nullptr) return {};
    const auto* const bytes =
        static_cast<const char*>(::LockResource(::LoadResource(nullptr, resource)));
    VS_FIXEDFILEINFO info{};
    if (bytes == nullptr || ::SizeofResource(nullptr, resource) < kFixedInfo + sizeof info) {
        return {};
    }
    std::memcpy(&info, bytes + kFixedInfo, sizeof info);
    return {HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
            HIWORD(info.dwFileVersionLS)};
}

}  // namespace program
