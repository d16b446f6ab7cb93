#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// The library's scratch images. A member of the family is a pixel buffer with a row stride, a
/// rectangular region of interest inside it, and a corruption detector: a guard row behind the last
/// image row, verified by the destructor.
namespace vel {

/// What stands in the guard row of images of `T`, one element per pixel of the width.
template <class T>
struct GuardElement;

template <>
struct GuardElement<float> {
    using Type = std::uint32_t;
    static constexpr Type kPattern = 0x6D676EFF;
};

template <>
struct GuardElement<unsigned char> {
    using Type = std::uint8_t;
    static constexpr Type kPattern = 0x6D;
};

template <>
struct GuardElement<unsigned short> {
    using Type = std::uint16_t;
    static constexpr Type kPattern = 0x6D6F;
};

template <>
struct GuardElement<short> {
    using Type = std::uint16_t;
    static constexpr Type kPattern = 0x6D6E;
};

/// The stride of an image on the general heap, from the one that the aligned allocator was asked
/// for or, after it refused a size, from 0: `(step / 16 + 1) * 16` with the division truncating, a
/// full 16 bytes more even where `step` is a multiple of 16.
constexpr std::int64_t heapStride(std::int64_t step) noexcept {
    return (step / 16 + 1) * 16;
}

/// An image of `N` interleaved elements `T` a pixel, owned or laid over somebody else's memory.
///
/// An owned image has one row more than its height: the guard row. Row starts of an owned image are
/// 32-byte aligned, except on the heap fallback, where they are as aligned as the heap gives. Pixel
/// bytes are not initialised. One thread constructs, destroys and moves the region of interest;
/// threads may share the pixels read-only or write disjoint rows.
template <class T, int N>
struct IMG {
    static_assert(N == 1 || (N == 3 && !std::is_same_v<T, unsigned short>),
                  "three channels of 16 bits travel as IMG<short, 3>");

    using Element = T;
    static constexpr int kChannels = N;
    static constexpr std::int32_t kPixelBytes = static_cast<std::int32_t>(sizeof(T)) * N;

    std::uint8_t* m_base = nullptr; ///< start of the buffer; never moves
    bool m_aligned = false;         ///< `m_base` is returned with `alignedFree`
    bool m_wrapped = false;         ///< the pixels are somebody else's: destruction does nothing
    std::uint8_t* m_data = nullptr; ///< top-left pixel of the region of interest
    std::int32_t m_step = 0;        ///< bytes from row to row
    std::int32_t m_width;           ///< full size in pixels
    std::int32_t m_height;
    std::int32_t m_roiW; ///< size of the region of interest in pixels
    std::int32_t m_roiH;
    std::int32_t m_status; ///< of the last primitive applied through the image; 1 before the first

    /// With `data` null, an image of its own: a stride that is a multiple of 32 from the aligned
    /// allocator, or, when that refuses, the general heap with the `heapStride` of it. A size below
    /// 1 is such a refusal, with stride 0. Otherwise `data` is wrapped with `step` as it stands,
    /// and must outlive the image.
    /// @throws `kNoPixels` when there is no memory, or the sizes fit neither a 32-bit stride nor a
    /// guard row inside the block.
    IMG(std::int32_t width, std::int32_t height, void* data = nullptr, std::int32_t step = 0);

    IMG(const IMG&) = delete;
    IMG& operator=(const IMG&) = delete;

    /// Moves the top-left corner of the region of interest by (`dx`, `dy`) pixels, which may be
    /// negative; its bottom-right corner stays. Nothing is checked.
    virtual void shiftOrigin(std::int32_t dx, std::int32_t dy);

    /// Sets the region of interest to the whole image.
    virtual void resetRoi();

    /// Verifies the guard row of an owned image and returns its memory.
    /// @throws `kGuardOverwritten` when the guard was overwritten; the memory is then not returned.
    /// While another exception is in flight nothing is thrown, since a second one would end the
    /// process: the first tells the caller enough.
    virtual ~IMG() noexcept(false);

    /// First element of row `y` of the region of interest.
    T* row(std::int32_t y) noexcept { return reinterpret_cast<T*>(rowBytes(y)); }
    const T* row(std::int32_t y) const noexcept { return reinterpret_cast<const T*>(rowBytes(y)); }

    /// First element of the region of interest, as the primitives take it.
    T* pixels() noexcept { return row(0); }
    const T* pixels() const noexcept { return row(0); }

private:
    std::uint8_t* rowBytes(std::int64_t y) const noexcept {
        return m_data + static_cast<std::ptrdiff_t>(y * m_step);
    }
    void wrap(void* data, std::int32_t step) noexcept;
    void allocate();
    void allocateFromHeap();
    void writeGuard() noexcept;
    bool guardIsIntact() const noexcept;
    std::uint8_t* guardRow() const noexcept;
};

/// One channel.
template <class T>
struct GIMG : IMG<T, 1> {
    GIMG(std::int32_t width, std::int32_t height) : IMG<T, 1>(width, height) {}

    /// Laid over the memory of a matrix of floats: its columns, rows, data and step in bytes.
    GIMG(std::int32_t width, std::int32_t height, void* data, std::int32_t step)
    requires std::same_as<T, float> : IMG<T, 1>(width, height, data, step) {}
};

/// Three interleaved channels.
template <class T>
struct IMG3 : IMG<T, 3> {
    IMG3(std::int32_t width, std::int32_t height) : IMG<T, 3>(width, height) {}
};

// The whole family.
extern template struct IMG<float, 1>;
extern template struct IMG<float, 3>;
extern template struct IMG<unsigned char, 1>;
extern template struct IMG<unsigned char, 3>;
extern template struct IMG<unsigned short, 1>;
extern template struct IMG<short, 1>;
extern template struct IMG<short, 3>;
extern template struct GIMG<float>;
extern template struct GIMG<unsigned char>;
extern template struct GIMG<unsigned short>;
extern template struct GIMG<short>;
extern template struct IMG3<float>;
extern template struct IMG3<unsigned char>;
extern template struct IMG3<short>;

} // namespace vel
