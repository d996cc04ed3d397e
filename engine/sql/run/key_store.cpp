#include "engine/sql/run/key_store.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace sql {

std::vector<std::size_t> KeyStore::sorted(std::optional<std::uint64_t> top) const {
    const auto compare = [this](std::size_t left, std::size_t right) {
        const jet::Bytes a = key(left);
        const jet::Bytes b = key(right);
        const std::size_t common = std::min(a.size(), b.size());
        const int order = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common);
        return order != 0 ? order < 0 : a.size() < b.size();
    };
    std::vector<std::size_t> places(size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    std::stable_sort(places.begin(), places.end(), compare);
    if (!top || *top >= places.size()) return places;
    std::size_t kept = static_cast<std::size_t>(*top);
    while (kept > 0 && kept < places.size() && !compare(places[kept - 1], places[kept])) ++kept;
    places.resize(kept);
    return places;
}

}  // namespace sql
