#include "tests/engine/jet/allocation_watch.h"

#include <cstdlib>
#include <new>

namespace jet {

std::atomic<std::size_t> largestAllocation{0};

}  // namespace jet

#if !defined(__SANITIZE_ADDRESS__)

void* operator new(std::size_t size) {
    std::size_t largest = jet::largestAllocation.load(std::memory_order_relaxed);
    while (size > largest && !jet::largestAllocation.compare_exchange_weak(largest, size)) continue;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc{};
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

#endif
