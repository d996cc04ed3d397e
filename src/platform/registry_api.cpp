#include "src/platform/registry_api.h"

#include "src/log/procedure.h"
#include "src/services/services.h"

namespace RegistryAPI {
namespace {

class EmptyRegistry : public Registry {
public:
    bool keyExists(const std::u16string& /*path*/) override { return false; }
    Value read(const std::u16string& /*path*/, const std::u16string& /*name*/,
               int /*type*/) override {
        throwNoKey();
    }
};

}  // namespace

Registry& registry() {
    static EmptyRegistry empty;
    return services().registry != nullptr ? *services().registry : empty;
}

std::u16string readText(const std::u16string& path, const std::u16string& name) {
    return std::get<std::u16string>(registry().read(path, name, kText));
}

std::uint32_t readNumber(const std::u16string& path, const std::u16string& name) {
    return std::get<std::uint32_t>(registry().read(path, name, kNumber));
}

void throwUnsupportedType() {
    throw RuntimeError{RuntimeError::kInvalidCall, u"Unsupported value type"};
}

void throwNoKey() {
    throw RuntimeError{RuntimeError::kPathNotFound, u"Unable to create the registry key"};
}

void throwNoValue(const std::u16string& name) {
    throw RuntimeError{RuntimeError::kInvalidCall, u"Unable to read the registry value " + name};
}

}  // namespace RegistryAPI
