// The registry of the machine. A program of 32 bits has its keys in a view of their own on a 64-bit
// Windows, so that view is looked at when the usual one lacks a key.
//
//   RegistryAPI::WindowsRegistry machine;
//   RegistryAPI::setRegistry(&machine);
#pragma once

#include "src/platform/registry_api.h"

namespace RegistryAPI {

class WindowsRegistry : public Registry {
public:
    bool keyExists(const std::u16string& path) override;
    Value read(const std::u16string& path, const std::u16string& name, int type) override;
};

}  // namespace RegistryAPI
