#include "velimproclib/images/Image.h"

#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/primitives/base/Memory.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace vel {
namespace {

constexpr std::int64_t kInt32Max = std::numeric_limits<std::int32_t>::max();

} // namespace

template <class T, int N>
IMG<T, N>::IMG(std::int32_t width, std::int32_t height, void* data, std::int32_t step)
    : m_width(width), m_height(height), m_roiW(width), m_roiH(height), m_status(1) {
    if (data != nullptr) {
        wrap(data, step);
        return;
    }
    allocate();
    m_data = m_base;
    writeGuard();
}

template <class T, int N>
void IMG<T, N>::wrap(void* data, std::int32_t step) noexcept {
    m_base = m_data = static_cast<std::uint8_t*>(data);
    m_step = step;
    m_wrapped = true;
}

template <class T, int N>
void IMG<T, N>::allocate() {
    const std::int64_t rowLength = std::int64_t{m_width} * kPixelBytes;
    // The heap fallback would turn these sizes into small blocks: a stride or row count beyond 32
    // bits wraps, and a negative height has no room for the guard row.
    if (rowLength > kInt32Max - 31 || m_height < 0 || m_height == kInt32Max) {
        throw kNoPixels;
    }
    // The allocator refuses every length below 1, therefore 0 stands for all negative ones.
    m_base =
        imageAlloc(rowLength < 0 ? 0 : static_cast<std::int32_t>(rowLength), m_height + 1, &m_step);
    m_aligned = m_base != nullptr;
    if (!m_aligned) {
        allocateFromHeap();
    }
}

template <class T, int N>
void IMG<T, N>::allocateFromHeap() {
    const std::int64_t step = heapStride(m_step);
    const std::uint64_t bytes =
        static_cast<std::uint64_t>(step) * (static_cast<std::uint64_t>(m_height) + 1);
    if (step <= kInt32Max && bytes <= std::numeric_limits<std::ptrdiff_t>::max()) {
        m_step = static_cast<std::int32_t>(step);
        m_base = static_cast<std::uint8_t*>(std::malloc(static_cast<std::size_t>(bytes)));
    }
    if (m_base == nullptr) {
        throw kNoPixels;
    }
}

template <class T, int N>
std::uint8_t* IMG<T, N>::guardRow() const noexcept {
    return m_base + static_cast<std::ptrdiff_t>(std::int64_t{m_height} * m_step);
}

template <class T, int N>
void IMG<T, N>::writeGuard() noexcept {
    constexpr auto kPattern = GuardElement<T>::kPattern;
    std::uint8_t* element = guardRow();
    for (std::int32_t x = 0; x < m_width; ++x, element += sizeof kPattern) {
        std::memcpy(element, &kPattern, sizeof kPattern);
    }
}

template <class T, int N>
bool IMG<T, N>::guardIsIntact() const noexcept {
    constexpr auto kPattern = GuardElement<T>::kPattern;
    const std::uint8_t* element = guardRow();
    for (std::int32_t x = 0; x < m_width; ++x, element += sizeof kPattern) {
        if (std::memcmp(element, &kPattern, sizeof kPattern) != 0) {
            return false;
        }
    }
    return true;
}

template <class T, int N>
void IMG<T, N>::shiftOrigin(std::int32_t dx, std::int32_t dy) {
    m_data +=
        static_cast<std::ptrdiff_t>(std::int64_t{m_step} * dy + std::int64_t{dx} * kPixelBytes);
    m_roiW -= dx;
    m_roiH -= dy;
}

template <class T, int N>
void IMG<T, N>::resetRoi() {
    m_data = m_base;
    m_roiW = m_width;
    m_roiH = m_height;
}

template <class T, int N>
IMG<T, N>::~IMG() noexcept(false) {
    if (m_wrapped) {
        return;
    }
    if (!guardIsIntact()) {
        if (std::uncaught_exceptions() <= m_exceptionsAtStart) {
            throw kGuardOverwritten;
        }
        return;
    }
    if (m_aligned) {
        alignedFree(m_base);
    } else {
        std::free(m_base);
    }
}

template struct IMG<float, 1>;
template struct IMG<float, 3>;
template struct IMG<unsigned char, 1>;
template struct IMG<unsigned char, 3>;
template struct IMG<unsigned short, 1>;
template struct IMG<short, 1>;
template struct IMG<short, 3>;
template struct GIMG<float>;
template struct GIMG<unsigned char>;
template struct GIMG<unsigned short>;
template struct GIMG<short>;
template struct IMG3<float>;
template struct IMG3<unsigned char>;
template struct IMG3<short>;

} // namespace vel
