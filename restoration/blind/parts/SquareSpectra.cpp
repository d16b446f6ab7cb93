#include "restoration/blind/parts/SquareSpectra.h"

#include "restoration/blind/spectra/hannWindow.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

namespace restoration {
namespace {

using frequencies::forEachFrequency;
using frequencies::kColumns;
using frequencies::kSquare;
using frequencies::Spectrum;

constexpr int kStep = kSquare / 2;
constexpr frequencies::Band kMiddle{0.1, 0.25};

float meanOfSquare(const Plane& picture, int left, int top) {
    double sum = 0.0;
    for (int y = 0; y < kSquare; ++y) {
        const float* row = picture.row(top + y) + left;
        for (int x = 0; x < kSquare; ++x) {
            sum += static_cast<double>(row[x]);
        }
    }
    return static_cast<float>(sum / (kSquare * kSquare));
}

/// The slots of the middle frequencies.
std::vector<std::size_t> middleSlots() {
    std::vector<std::size_t> slots;
    forEachFrequency([&](std::size_t slot, double frequency, double) {
        if (kMiddle.holds(frequency)) {
            slots.push_back(slot);
        }
    });
    return slots;
}

} // namespace

SquareSpectra::SquareSpectra(const Plane& picture, const Cancellation& cancellation)
    : m_transform(kSquare, cancellation), m_square(kSquare, kSquare) {
    m_memory.resize(m_transform.fft().spectrumFloats());
    for (const double weight : hannWindow(kSquare)) {
        m_window.push_back(static_cast<float>(weight));
    }
    for (int y = 0; y + kSquare <= picture.height(); y += kStep) {
        for (int x = 0; x + kSquare <= picture.width(); x += kStep) {
            add(picture, x, y);
        }
    }
    sortByMiddle();
}

void SquareSpectra::add(const Plane& picture, int left, int top) {
    const float mean = meanOfSquare(picture, left, top);
    for (int y = 0; y < kSquare; ++y) {
        const float* row = picture.row(top + y) + left;
        for (int x = 0; x < kSquare; ++x) {
            m_square.row(y)[x] = (row[x] - mean) * m_window[static_cast<std::size_t>(y)] *
                                 m_window[static_cast<std::size_t>(x)];
        }
    }
    m_transform.forward(m_square, m_memory.data());
    Spectrum& powers = m_spectra.emplace_back();
    forEachFrequency([&](std::size_t slot, double, double) {
        powers[slot] = m_transform.powerAt(static_cast<int>(slot / kColumns),
                                           static_cast<int>(slot % kColumns), m_memory.data());
    });
}

void SquareSpectra::sortByMiddle() {
    const std::vector<std::size_t> slots = middleSlots();
    std::vector<double> powers;
    for (const Spectrum& spectrum : m_spectra) {
        double sum = 0.0;
        for (const std::size_t slot : slots) {
            sum += spectrum[slot];
        }
        powers.push_back(sum);
    }
    m_order.resize(m_spectra.size());
    std::iota(m_order.begin(), m_order.end(), std::size_t{0});
    std::ranges::sort(m_order, {},
                      [&](std::size_t square) { return std::pair(powers[square], square); });
}

Spectrum SquareSpectra::sumFrom(std::size_t first) const {
    Spectrum sum{};
    for (std::size_t i = first; i < first + quarter(); ++i) {
        const Spectrum& spectrum = m_spectra[m_order[i]];
        std::transform(sum.begin(), sum.end(), spectrum.begin(), sum.begin(), std::plus<>());
    }
    return sum;
}

} // namespace restoration
