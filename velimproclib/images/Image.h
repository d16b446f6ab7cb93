#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <type_traits>

/// Scratch images. Each is a pixel buffer with a row stride, a rectangular region of interest, and
/// a guard row after the last image row, which the destructor checks for overwrites.
namespace vel {

/// The pattern in the guard row of images of `T`: one element per pixel of the width.
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

/// Stride of an image on the general heap: `(step / 16 + 1) * 16`, which adds 16 bytes even if
/// `step` is a multiple of 16. `step` is the stride of the aligned allocator, 0 if it refused the
/// size.
constexpr std::int64_t heapStride(std::int64_t step) noexcept {
    return (step / 16 + 1) * 16;
}

/// An image of `N` interleaved elements `T` per pixel. It owns its memory or wraps memory of
/// another object.
///
/// An owned image has one row more than its height: the guard row. Its rows start at multiples of
/// 32 bytes; on the heap fallback they have the alignment of the heap. Pixels are not initialised.
/// One thread constructs the image, destroys it and moves its region of interest. Several threads
/// may read the pixels or write disjoint rows.
template <class T, int N>
struct IMG {
    static_assert(N == 1 || (N == 3 && !std::is_same_v<T, unsigned short>),
                  "three channels of 16 bits are stored as IMG<short, 3>");

    using Element = T;
    static constexpr int kChannels = N;
    static constexpr std::int32_t kPixelBytes = static_cast<std::int32_t>(sizeof(T)) * N;

    std::uint8_t* m_base = nullptr; ///< start of the buffer; never moves
    bool m_aligned = false;         ///< `m_base` is released with `alignedFree`
    bool m_wrapped = false;         ///< the pixels belong to another object
    std::uint8_t* m_data = nullptr; ///< top-left pixel of the region of interest
    std::int32_t m_step = 0;        ///< bytes from one row to the next
    std::int32_t m_width;           ///< full size in pixels
    std::int32_t m_height;
    std::int32_t m_roiW; ///< size of the region of interest in pixels
    std::int32_t m_roiH;
    std::int32_t m_status; ///< of the last primitive applied through the image, initially 1

    /// If `data` is null, allocates an image with a stride that is a multiple of 32. If the aligned
    /// allocator fails or a size is below 1, the image is allocated on the general heap with
    /// `heapStride`. If `data` is not null, wraps it with the given `step`; it must outlive the
    /// image.
    /// @throws `kNoPixels` if the allocation fails, if the stride does not fit 32 bits, or if the
    ///         guard row would lie outside the block
    IMG(std::int32_t width, std::int32_t height, void* data = nullptr, std::int32_t step = 0);

    IMG(const IMG&) = delete;
    IMG& operator=(const IMG&) = delete;

    /// Moves the top-left corner of the region of interest by (`dx`, `dy`) pixels, which may be
    /// negative. The bottom-right corner does not move. No bounds are checked.
    virtual void shiftOrigin(std::int32_t dx, std::int32_t dy);

    /// Sets the region of interest to the whole image.
    virtual void resetRoi();

    /// Checks the guard row of an owned image and releases its memory.
    /// @throws `kGuardOverwritten` if the guard row was overwritten; the memory is then not
    ///         released. Throws nothing while an exception unwinds the stack that the image lives
    ///         on, because a second one would end the process.
    virtual ~IMG() noexcept(false);

    /// First element of row `y` of the region of interest.
    T* row(std::int32_t y) noexcept { return reinterpret_cast<T*>(rowBytes(y)); }
    const T* row(std::int32_t y) const noexcept { return reinterpret_cast<const T*>(rowBytes(y)); }

    /// First element of the region of interest, as the primitives take it.
    T* pixels() noexcept { return row(0); }
    const T* pixels() const noexcept { return row(0); }

private:
    int m_exceptionsAtStart = std::uncaught_exceptions();

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

    /// Wraps a matrix of floats: its columns, rows, data and step in bytes.
    GIMG(std::int32_t width, std::int32_t height, void* data, std::int32_t step)
    requires std::same_as<T, float> : IMG<T, 1>(width, height, data, step) {}
};

/// Three interleaved channels.
template <class T>
struct IMG3 : IMG<T, 3> {
    IMG3(std::int32_t width, std::int32_t height) : IMG<T, 3>(width, height) {}
};

// All instances.
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
