#pragma once

#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <cstddef>
#include <vector>

namespace restoration {

/// The power of a picture at the frequencies (u, v) / side, 2 <= u < side / 2 and 2 <= |v| < side /
/// 2, from its Fourier transform under a Hann window. The axes are left out: the picture's own
/// level and upright edges lie there.
class PowerSpectrum {
public:
    /// @param picture luminance, finite; sides up to `kLargestSide`, larger ones are cut
    PowerSpectrum(const Plane& picture, const Cancellation& cancellation);

    static constexpr int kLargestSide = 512;
    static constexpr int kFirst = 2;

    int side() const noexcept { return m_side; }
    /// Frequencies in units of 1 / side whose power stands out from the noise are at most this.
    int reach() const noexcept { return m_reach; }
    /// The power of the noise.
    double floor() const noexcept { return m_floor; }
    double power(int v, int u) const noexcept { return m_powers[index(v, u)]; }
    /// The natural logarithm of the power.
    double level(int v, int u) const noexcept { return m_levels[index(v, u)]; }
    /// The number of the ring of frequencies.
    static int ringOf(int v, int u) noexcept;

    /// The largest `reach` that any picture has.
    int largestReach() const noexcept;

    /// Calls visit(v, u) for all frequencies below `reach`.
    template <class Visit>
    void forEach(int reach, const Visit& visit) const {
        for (int v = -reach; v <= reach; ++v) {
            if (v > -kFirst && v < kFirst) {
                continue;
            }
            for (int u = kFirst; u * u + v * v < reach * reach; ++u) {
                visit(v, u);
            }
        }
    }

private:
    std::size_t index(int v, int u) const noexcept {
        return static_cast<std::size_t>(v + m_side / 2) * static_cast<std::size_t>(m_side / 2) +
               static_cast<std::size_t>(u);
    }
    void transform(const Plane& picture, const Cancellation& cancellation);
    void measureNoise();
    void findReach();

    int m_side = 0;
    int m_reach = 0;
    double m_floor = 0.0;
    std::vector<double> m_powers;
    std::vector<double> m_levels;
};

} // namespace restoration
