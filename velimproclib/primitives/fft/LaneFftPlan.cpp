#include "velimproclib/primitives/fft/LaneFftPlan.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>

namespace vel {

namespace {

/// exp(-2 pi i k / n), by reduction to the first eighth of the circle.
RootsOfUnity::Root exactRoot(std::uint64_t k, std::uint64_t n) {
    k &= n - 1;
    const std::uint64_t quadrant = 4 * k / n;
    std::uint64_t rest = 4 * k - quadrant * n; // a quarter turn is n here
    const bool mirrored = 2 * rest > n;
    if (mirrored) {
        rest = n - rest;
    }
    const double angle =
        0.5 * std::numbers::pi * (static_cast<double>(rest) / static_cast<double>(n));
    double c = std::cos(angle);
    double s = std::sin(angle);
    if (mirrored) {
        std::swap(c, s);
    }
    switch (quadrant) {
    case 0:
        return {c, -s};
    case 1:
        return {-s, -c};
    case 2:
        return {-c, s};
    default:
        return {s, c};
    }
}

/// As many passes of radix 8 as possible, then one or two of radix 4; radix 2 for a length of 2.
std::vector<int> chooseRadices(int log2Length) {
    if (log2Length == 0) {
        return {};
    }
    if (log2Length == 1) {
        return {2};
    }
    const int fours = log2Length % 3 == 0 ? 0 : (log2Length % 3 == 1 ? 2 : 1);
    std::vector<int> radices(static_cast<std::size_t>((log2Length - 2 * fours) / 3), 8);
    radices.insert(radices.end(), static_cast<std::size_t>(fours), 4);
    return radices;
}

std::vector<float> passTwiddles(const RootsOfUnity& roots, std::size_t rootStep, std::size_t parts,
                                int radix) {
    std::vector<float> factors;
    factors.reserve((parts - 1) * static_cast<std::size_t>(radix - 1) * 2);
    for (std::size_t j = 1; j < parts; ++j) {
        for (int k = 1; k < radix; ++k) {
            const auto root = roots(j * static_cast<std::size_t>(k) * rootStep);
            factors.push_back(static_cast<float>(root.re));
            factors.push_back(static_cast<float>(root.im));
        }
    }
    return factors;
}

/// The digit of the first radix is the lowest of a frequency and the highest of a place.
std::vector<std::uint32_t> placesOf(std::size_t length, const std::vector<int>& radices) {
    std::vector<std::uint32_t> places;
    places.reserve(length);
    places.push_back(0);
    std::size_t partLength = length;
    for (const int radix : radices) {
        partLength /= static_cast<std::size_t>(radix);
        const std::size_t known = places.size();
        for (std::size_t digit = 1; digit < static_cast<std::size_t>(radix); ++digit) {
            for (std::size_t k = 0; k < known; ++k) {
                places.push_back(places[k] + static_cast<std::uint32_t>(digit * partLength));
            }
        }
    }
    return places;
}

} // namespace

RootsOfUnity::RootsOfUnity(int log2Count)
    : m_count(std::size_t{1} << log2Count), m_fineBits(log2Count / 2) {
    const std::size_t fineCount = std::size_t{1} << m_fineBits;
    m_coarse.reserve(m_count / fineCount);
    for (std::size_t k = 0; k < m_count; k += fineCount) {
        m_coarse.push_back(exactRoot(k, m_count));
    }
    m_fine.reserve(fineCount);
    for (std::size_t k = 0; k < fineCount; ++k) {
        m_fine.push_back(exactRoot(k, m_count));
    }
}

RootsOfUnity::Root RootsOfUnity::operator()(std::size_t k) const {
    k &= m_count - 1;
    const Root a = m_coarse[k >> m_fineBits];
    const Root b = m_fine[k & ((std::size_t{1} << m_fineBits) - 1)];
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

LaneFftPlan::LaneFftPlan(int log2Length)
    : length(std::size_t{1} << log2Length), radices(chooseRadices(log2Length)),
      places(placesOf(length, radices)) {
    const RootsOfUnity roots(log2Length);
    std::size_t rootStep = 1;
    std::size_t parts = length;
    for (std::size_t pass = 0; pass + 1 < radices.size(); ++pass) {
        const int radix = radices[pass];
        parts /= static_cast<std::size_t>(radix);
        twiddles.push_back(passTwiddles(roots, rootStep, parts, radix));
        rootStep *= static_cast<std::size_t>(radix);
    }
}

} // namespace vel
