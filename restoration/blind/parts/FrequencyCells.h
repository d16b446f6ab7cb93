#pragma once

#include "restoration/blind/spectra/eightDirections.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

/// The frequencies of small squares of a picture, sorted by direction and distance from zero.
namespace restoration::frequencies {

constexpr int kSquare = 32;
constexpr std::size_t kColumns = kSquare / 2; // of half a spectrum, without the middle frequency

/// Cycles per pixel.
struct Band {
    double from;
    double to;

    bool holds(double frequency) const { return frequency >= from && frequency < to; }
};
/// The band that others are compared with, then the others.
constexpr std::array<Band, 6> kBands{
    {{0.09375, 0.15625}, {0.2, 0.25}, {0.25, 0.3}, {0.3, 0.35}, {0.35, 0.4}, {0.4, 0.45}}};

/// Powers of half a spectrum, row by row.
using Spectrum = std::array<double, kSquare * kColumns>;

/// Calls visit(slot of a spectrum, cycles per pixel, angle) for the frequencies of half a spectrum:
/// one of each pair of conjugate ones.
template <class Visit>
void forEachFrequency(const Visit& visit) {
    for (int v = 0; v < kSquare; ++v) {
        const int row = v < kSquare / 2 ? v : v - kSquare;
        for (int u = row > 0 ? 0 : 1; u < static_cast<int>(kColumns); ++u) {
            visit(static_cast<std::size_t>(v) * kColumns + static_cast<std::size_t>(u),
                  std::hypot(row, u) / kSquare,
                  std::atan2(static_cast<double>(row), static_cast<double>(u)));
        }
    }
}

/// The frequencies of one band and direction.
struct Cell {
    std::vector<std::size_t> slots;
    double frequency = 0.0; ///< the mean

    double meanOf(const Spectrum& spectrum) const;
};
using Cells = std::array<Cell, kBands.size()>;

/// The cells of each direction (eightDirections.h).
std::array<Cells, kDirections> cellsOfDirections();

} // namespace restoration::frequencies
