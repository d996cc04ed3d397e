// The registry of the machine. On 64-bit Windows a 32-bit program has its keys in a view of their
// own, which is used if a key is missing in the usual one.
//
//   RegistryAPI::WindowsRegistry machine;
//   const ServicesInUse inUse{{.registry = &machine}};
//
// The user-interface thread.
#pragma once

#include "src/platform/registry_api.h"

namespace RegistryAPI {

class WindowsRegistry : public Registry {
public:
    bool keyExists(const std::u16string& path) override;
    Value read(const std::u16string& path, const std::u16string& name, int type) override;
};

}  // namespace RegistryAPI
