// A growing array whose elements never move, so that readers may look at the elements they know of
// while one writer adds others.
//
//   ado::StableArray<int> array;
//   array.reserve(i);  // before element i is first touched
//   array[i] = 7;
//
// One thread writes. It tells readers of an element by other means (an atomic count), which also
// makes the element's memory visible to them.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <memory>

namespace ado {

template <typename T>
class StableArray {
public:
    void reserve(std::size_t index) {
        const std::size_t segment = segmentOf(index);
        if (!segments_[segment]) segments_[segment] = std::make_unique<T[]>(sizeOf(segment));
    }

    T& operator[](std::size_t index) {
        const std::size_t segment = segmentOf(index);
        return segments_[segment][index - startOf(segment)];
    }

    const T& operator[](std::size_t index) const {
        const std::size_t segment = segmentOf(index);
        return segments_[segment][index - startOf(segment)];
    }

    /// Memory in use, in bytes.
    std::size_t byteCount() const {
        std::size_t bytes = 0;
        for (std::size_t segment = 0; segment < segments_.size(); ++segment) {
            if (segments_[segment]) bytes += sizeOf(segment) * sizeof(T);
        }
        return bytes;
    }

private:
    // Segment k holds kFirst * 2^k elements and starts at kFirst * (2^k - 1).
    static constexpr std::size_t kFirst = 16;
    static constexpr std::size_t kSegments = 27;

    static std::size_t segmentOf(std::size_t index) {
        return static_cast<std::size_t>(std::bit_width(index / kFirst + 1)) - 1;
    }
    static std::size_t sizeOf(std::size_t segment) { return kFirst << segment; }
    static std::size_t startOf(std::size_t segment) { return sizeOf(segment) - kFirst; }

    std::array<std::unique_ptr<T[]>, kSegments> segments_;
};

}  // namespace ado
