// The services in use, but for one of them.
//
//   const ServicesInUse inUse{servicesWith(&Services::registry, &fakeRegistry)};
//
// The user-interface thread.
#pragma once

#include "src/services/services.h"

#include <type_traits>
#include <utility>

template <typename Service>
Services servicesWith(Service Services::*which, std::type_identity_t<Service> other) {
    Services changed = services();
    changed.*which = std::move(other);
    return changed;
}
