#include "src/services/services.h"

#include <utility>

namespace {

const Services*& current() {
    static const Services* inUse =
        new Services;  // never destroyed, as others may need it at the end
    return inUse;
}

}  // namespace

const Services& services() { return *current(); }

ServicesInUse::ServicesInUse(Services services)
    : services_{std::move(services)}, before_{std::exchange(current(), &services_)} {}

ServicesInUse::~ServicesInUse() { current() = before_; }
