#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

/// How the image primitives walk through memory. Steps count bytes and need not be multiples of an
/// element's size. Therefore an element may have any address, and rows are walked as bytes or as
/// `Unaligned` elements: a misaligned `float*` must not even be formed.
namespace vel {

/// An element at any address. A row kernel on `Unaligned<T>*` is defined for every step and every
/// start, and compiles to the same loads and stores as one on `T*`.
template <class T>
struct [[gnu::packed]] Unaligned {
    T value;
};

/// The element `bytes` after `element`, or before it when `bytes` is negative.
template <class T>
T* bytesAway(T* element, std::int64_t bytes) noexcept {
    static_assert(alignof(T) == 1, "a byte distance may misalign wider elements");
    return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(element) +
                                static_cast<std::uintptr_t>(bytes));
}

/// Row `y` of the plane that starts at `base`. The product of step and row is taken in 64 bits.
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

/// The region of `w` by `h` pixels (both at least 1), as one long row when the rows of all
/// `layouts` are exactly adjacent.
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
