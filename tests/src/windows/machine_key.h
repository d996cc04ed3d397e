// A key under HKEY_LOCAL_MACHINE for the time of a block.
//
//   const MachineKey key{L"Software\\Pellamar"};
//   key.setNumber(L"Build Number", 12);
#pragma once

#include <windows.h>
#include <gtest/gtest.h>

#include <string>

class MachineKey {
public:
    explicit MachineKey(std::wstring path, REGSAM view = 0) : path_{std::move(path)}, view_{view} {
        EXPECT_EQ(::RegCreateKeyExW(HKEY_LOCAL_MACHINE, path_.c_str(), 0, nullptr, 0,
                                    KEY_ALL_ACCESS | view_, nullptr, &key_, nullptr),
                  ERROR_SUCCESS);
    }
    ~MachineKey() {
        ::RegCloseKey(key_);
        ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, path_.c_str(), view_, 0);
        const std::wstring parent = path_.substr(0, path_.rfind(L'\\'));
        if (parent != L"Software") ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, parent.c_str(), view_, 0);
    }
    MachineKey(const MachineKey&) = delete;
    MachineKey& operator=(const MachineKey&) = delete;

    void setNumber(const wchar_t* name, DWORD value) const {
        ::RegSetValueExW(key_, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                         sizeof value);
    }
    void setText(const wchar_t* name, const std::wstring& value) const {
        ::RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                         static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    }

private:
    std::wstring path_;
    REGSAM view_;
    HKEY key_ = nullptr;
};
