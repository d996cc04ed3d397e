// What the program and the libraries of its languages say about themselves, asked as Windows does.
#include "engine/jet/text.h"
#include "tests/program/running_viewer.h"
#include "tests/support/language_table.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <array>
#include <cwchar>

namespace {

std::filesystem::path builtFile(const std::string& name) {
    std::array<wchar_t, 1024> path{};
    ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return std::filesystem::path{path.data()}.parent_path() / name;
}

std::vector<std::string> allFiles() {
    std::vector<std::string> names{"VorelleDiagnosticViewer.exe"};
    for (const std::string& code : fixture::languageCodes()) {
        names.push_back("QRXbrandingres_" + code + ".dll");
    }
    return names;
}

class VersionTest : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        const std::wstring path = builtFile(GetParam()).wstring();
        DWORD ignored = 0;
        block_.resize(::GetFileVersionInfoSizeW(path.c_str(), &ignored));
        ASSERT_FALSE(block_.empty()) << GetParam();
        ASSERT_TRUE(::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block_.size()),
                                          block_.data()));
    }

    template <typename Value>
    const Value* query(const std::wstring& path) const {
        void* value = nullptr;
        UINT length = 0;
        return ::VerQueryValueW(block_.data(), path.c_str(), &value, &length) && length > 0
                   ? static_cast<const Value*>(value)
                   : nullptr;
    }

    const VS_FIXEDFILEINFO& fixed() const { return *query<VS_FIXEDFILEINFO>(L"\\"); }

    /// A text in the block's own language.
    std::wstring text(const wchar_t* name) const {
        const WORD* const translation = query<WORD>(L"\\VarFileInfo\\Translation");
        if (translation == nullptr) return L"no translation";
        std::array<wchar_t, 128> path{};
        std::swprintf(path.data(), path.size(), L"\\StringFileInfo\\%04x%04x\\%ls", translation[0],
                      translation[1], name);
        const wchar_t* const value = query<wchar_t>(path.data());
        return value == nullptr ? L"no such text" : value;
    }

    bool isProgram() const { return GetParam().ends_with(".exe"); }

private:
    std::vector<std::uint8_t> block_;
};

TEST_P(VersionTest, NamesProductMakerAndFile) {
    EXPECT_EQ(text(L"ProductName"), L"Vorelle Diagnostic Viewer");
    EXPECT_EQ(text(L"CompanyName"), L"Veltrane Systems");
    EXPECT_EQ(text(L"OriginalFilename"), std::wstring(GetParam().begin(), GetParam().end()));
    EXPECT_EQ(fixed().dwFileType, static_cast<DWORD>(isProgram() ? VFT_APP : VFT_DLL));
}

TEST_P(VersionTest, ItsNumbersAreTheProjects) {
    const std::wstring numbers = std::to_wstring(HIWORD(fixed().dwFileVersionMS)) + L"." +
                                 std::to_wstring(LOWORD(fixed().dwFileVersionMS)) + L"." +
                                 std::to_wstring(HIWORD(fixed().dwFileVersionLS));
    EXPECT_EQ(numbers, L"" VORELLE_PROJECT_VERSION);
    EXPECT_EQ(text(L"FileVersion"), numbers);
    EXPECT_EQ(text(L"ProductVersion"), numbers);
}

TEST_P(VersionTest, CarriesIconAndManifest) {
    const HMODULE file = ::LoadLibraryExW(builtFile(GetParam()).wstring().c_str(), nullptr,
                                          LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(file, nullptr);
    EXPECT_NE(::FindResourceW(file, MAKEINTRESOURCEW(1), RT_GROUP_ICON), nullptr);
    EXPECT_NE(::FindResourceW(file, MAKEINTRESOURCEW(isProgram() ? 1 : 2), RT_MANIFEST), nullptr);
    ::FreeLibrary(file);
}

INSTANTIATE_TEST_SUITE_P(Files, VersionTest, testing::ValuesIn(allFiles()), [](const auto& test) {
    return test.param.substr(0, test.param.find('.'));
});

}  // namespace
