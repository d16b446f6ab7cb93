#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

/// How the image primitives walk through memory. Steps count bytes and need not be multiples of an
/// element's size, so an element may stand at any address.
namespace vel {

/// An element at any address. A row kernel that works on `Unaligned<T>*` is defined for every step
/// and every start, and compiles to the same loads and stores as one on `T*`.
template <class T>
struct [[gnu::packed]] Unaligned {
    T value;
};

/// The element that stands `bytes` behind another one, in front of it when negative. The pointer is
/// only as aligned as the distance leaves it: read and write through `Unaligned`, the unaligned
/// vector loads, or bytes.
template <class T>
T* bytesAway(T* element, std::int64_t bytes) noexcept {
    return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(element) +
                                static_cast<std::uintptr_t>(bytes));
}

/// Row `y` of the plane that starts at `base`, as `bytesAway` from it; the product of step and row
/// is taken in 64 bits.
template <class T>
T* rowAt(T* base, std::int64_t step, std::size_t y) noexcept {
    return bytesAway(base, step * static_cast<std::int64_t>(y));
}

template <class T>
const Unaligned<T>* unaligned(const T* row) noexcept {
    return reinterpret_cast<const Unaligned<T>*>(row);
}

template <class T>
Unaligned<T>* unaligned(T* row) noexcept {
    return reinterpret_cast<Unaligned<T>*>(row);
}

/// The step of an image and the bytes of one of its pixels.
struct RowLayout {
    std::int32_t step;
    std::size_t pixelBytes;
};

/// Rows of `columns` pixels each.
struct Extent {
    std::size_t columns;
    std::size_t rows;
};

/// The region of `w` by `h` pixels (both at least 1), as one long row when the rows of every image
/// that takes part are exactly adjacent.
inline Extent joinAdjacentRows(std::int32_t w, std::int32_t h,
                               std::initializer_list<RowLayout> layouts) noexcept {
    const Extent asGiven{static_cast<std::size_t>(w), static_cast<std::size_t>(h)};
    for (const RowLayout& layout : layouts) {
        if (static_cast<std::uint64_t>(layout.step) !=
            static_cast<std::uint64_t>(w) * layout.pixelBytes) {
            return asGiven;
        }
    }
    return {asGiven.columns * asGiven.rows, 1};
}

} // namespace vel
