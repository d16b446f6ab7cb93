#pragma once

#include "CircularScene.h"

#include <complex>
#include <cstddef>
#include <numbers>
#include <vector>

/// Spectra of small planes by the definition of the transform, in double.
namespace restoration::test {

inline constexpr int kDirectSide = 32;
using Complex = std::complex<double>;
using Spectrum = std::vector<Complex>; // all frequencies, row by row

inline std::size_t at(int v, int u) {
    return static_cast<std::size_t>(v * kDirectSide + u);
}

/// The transform by its definition, along rows and columns.
inline Spectrum transformed(Spectrum values, double sign) {
    Spectrum roots;
    for (int k = 0; k < kDirectSide; ++k) {
        roots.push_back(std::polar(1.0, sign * 2 * std::numbers::pi * k / kDirectSide));
    }
    for (const bool isRow : {true, false}) {
        Spectrum result(values.size());
        for (int line = 0; line < kDirectSide; ++line) {
            for (int k = 0; k < kDirectSide; ++k) {
                for (int i = 0; i < kDirectSide; ++i) {
                    const Complex root = roots[static_cast<std::size_t>(k * i % kDirectSide)];
                    result[isRow ? at(line, k) : at(k, line)] +=
                        root * values[isRow ? at(line, i) : at(i, line)];
                }
            }
        }
        values = result;
    }
    return values;
}

inline Spectrum spectrumOf(const Plane& plane) {
    Spectrum values(plane.values().begin(), plane.values().end());
    return transformed(std::move(values), -1);
}

inline Plane planeOf(const Spectrum& spectrum) {
    const Spectrum values = transformed(spectrum, 1);
    Plane plane(kDirectSide, kDirectSide);
    for (std::size_t i = 0; i < values.size(); ++i) {
        plane.values()[i] = static_cast<float>(values[i].real() / (kDirectSide * kDirectSide));
    }
    return plane;
}

inline Spectrum spectrumOf(const Kernel& kernel) {
    Plane impulse(kDirectSide, kDirectSide);
    std::ranges::fill(impulse.values(), 0.0f);
    impulse.row(0)[0] = 1.0f;
    return spectrumOf(blurred(impulse, kernel));
}

inline double differencePower(int v, int u) {
    const double x = 2 * std::sin(std::numbers::pi * u / kDirectSide);
    const double y = 2 * std::sin(std::numbers::pi * v / kDirectSide);
    return x * x + y * y;
}

/// White noise: all frequencies count.
inline Plane noise() {
    Plane plane(kDirectSide, kDirectSide);
    std::mt19937 random(11);
    for (float& value : plane.values()) {
        value = static_cast<float>(random() % 1001) / 1000.0f;
    }
    return plane;
}

} // namespace restoration::test
