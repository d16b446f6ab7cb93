#pragma once

#include "restoration/planes/Plane.h"
#include "velimproclib/primitives/base/AlignedFloats.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <array>
#include <cstddef>

namespace restoration {

/// The working memory of one worker for tiles of one side. Memory is allocated on first use and
/// kept from tile to tile. The functions of this folder use it during a call; nothing in it
/// outlives one.
class TileScratch {
public:
    /// Allocates nothing.
    explicit TileScratch(int side) : m_side(side) {}

    int side() const noexcept { return m_side; }

    /// The scratch of row transforms.
    /// @throws std::bad_alloc
    float* rowMemory(const vel::RealFft2D& fft) {
        m_rowMemory.resize(fft.scratchFloats());
        return m_rowMemory.data();
    }
    /// Half spectrum `i`, 0..2.
    /// @throws std::bad_alloc
    float* spectrum(const vel::RealFft2D& fft, std::size_t i) {
        m_spectra[i].resize(fft.spectrumFloats());
        return m_spectra[i].data();
    }
    /// Plane `i`, 0..2.
    /// @throws std::bad_alloc
    Plane& plane(std::size_t i) {
        if (m_planes[i].isEmpty()) {
            m_planes[i] = Plane(m_side, m_side);
        }
        return m_planes[i];
    }
    /// `count` rows without gaps.
    /// @throws std::bad_alloc
    float* rows(std::size_t count) {
        const std::size_t needed = count * static_cast<std::size_t>(m_side);
        if (m_rows.size() < needed) {
            m_rows.resize(needed);
        }
        return m_rows.data();
    }

private:
    int m_side;
    vel::AlignedFloats m_rowMemory;
    std::array<vel::AlignedFloats, 3> m_spectra;
    std::array<Plane, 3> m_planes;
    vel::AlignedFloats m_rows;
};

} // namespace restoration
