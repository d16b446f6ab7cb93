#pragma once

#include "restoration/blind/parts/FrequencyCells.h"
#include "restoration/blind/spectra/SquareTransform.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"
#include "velimproclib/primitives/base/AlignedFloats.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// The power spectra of the squares of a picture, sorted by their power at middle frequencies.
/// Squares have 32 by 32 pixels, overlap by half, and lose their mean under a Hann window.
class SquareSpectra {
public:
    /// @param picture luminance, at least 64 by 64 pixels
    /// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
    SquareSpectra(const Plane& picture, const Cancellation& cancellation);

    /// The sum over the quarter of the squares with the most power at middle frequencies.
    frequencies::Spectrum most() const { return sumFrom(m_order.size() - quarter()); }
    /// The sum over the quarter with the least; it has as many squares.
    frequencies::Spectrum least() const { return sumFrom(0); }

private:
    std::size_t quarter() const { return m_order.size() / 4; }
    void add(const Plane& picture, int left, int top);
    void sortByMiddle();
    frequencies::Spectrum sumFrom(std::size_t first) const;

    SquareTransform m_transform;
    Plane m_square;
    vel::AlignedFloats m_memory;
    std::vector<float> m_window;
    std::vector<frequencies::Spectrum> m_spectra;
    std::vector<std::size_t> m_order;
};

} // namespace restoration
