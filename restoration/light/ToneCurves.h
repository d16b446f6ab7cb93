#pragma once

#include "restoration/light/ToneCurve.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace restoration {

/// The tone curves of the colour channels of a picture: one for all, or one for each of red, green
/// and blue.
class ToneCurves {
public:
    /// sRGB.
    ToneCurves() : m_curves{ToneCurve::sRgb()} {}
    /// @param curves  not empty
    explicit ToneCurves(std::vector<ToneCurve> curves) : m_curves(std::move(curves)) {}

    const ToneCurve& of(std::size_t channel) const noexcept {
        return m_curves[channel < m_curves.size() ? channel : m_curves.size() - 1];
    }

private:
    std::vector<ToneCurve> m_curves;
};

} // namespace restoration
