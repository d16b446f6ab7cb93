#include "restoration/light/ToneCurve.h"

#include <algorithm>
#include <cmath>

namespace restoration {
namespace {

constexpr auto kScale = static_cast<float>(ToneCurve::kPieces);
constexpr double kLeastRise = 1.0 / 64.0 / static_cast<double>(ToneCurve::kPieces);

double sRgbLight(double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/// Bounds a value to 0..1; 0 for not-a-numbers.
float bounded(float value) noexcept {
    return value > 0.0f ? (value < 1.0f ? value : 1.0f) : 0.0f;
}

/// The piece of a display value.
std::size_t pieceAt(float display) noexcept {
    const auto piece = static_cast<std::size_t>(bounded(display) * kScale);
    return std::min(piece, ToneCurve::kPieces - 1);
}

} // namespace

ToneCurve ToneCurve::sRgb() {
    std::vector<double> light(kPieces + 1);
    for (std::size_t i = 0; i <= kPieces; ++i) {
        light[i] = sRgbLight(static_cast<double>(i) / static_cast<double>(kPieces));
    }
    return ToneCurve(light);
}

ToneCurve::ToneCurve(std::span<const double> light) : m_light(kPieces + 1) {
    std::vector<double> rising(kPieces + 1, 0.0);
    for (std::size_t i = 0; i < kPieces; ++i) {
        rising[i + 1] = rising[i] + std::max(light[i + 1] - light[i], kLeastRise);
    }
    std::transform(rising.begin(), rising.end(), m_light.begin(),
                   [&](double value) { return static_cast<float>(value / rising[kPieces]); });

    m_pieceOfRoot.resize(kRoots + 1);
    std::size_t piece = 0;
    for (std::size_t i = 0; i <= kRoots; ++i) {
        const float root = static_cast<float>(i) / static_cast<float>(kRoots);
        while (piece + 1 < kPieces && m_light[piece + 1] <= root * root) {
            ++piece;
        }
        m_pieceOfRoot[i] = static_cast<std::uint16_t>(piece);
    }
}

float ToneCurve::light(float display) const noexcept {
    const std::size_t piece = pieceAt(display);
    const float part = display * kScale - static_cast<float>(piece);
    return m_light[piece] + part * (m_light[piece + 1] - m_light[piece]);
}

float ToneCurve::display(float light) const noexcept {
    const std::size_t piece = pieceOfLight(light);
    const float part = (light - m_light[piece]) / (m_light[piece + 1] - m_light[piece]);
    return (static_cast<float>(piece) + part) / kScale;
}

float ToneCurve::slope(float display) const noexcept {
    const std::size_t piece = pieceAt(display);
    return (m_light[piece + 1] - m_light[piece]) * kScale;
}

/// Roots are spread more evenly over display values than light is, therefore few pieces lie between
/// two of them.
std::size_t ToneCurve::pieceOfLight(float light) const noexcept {
    const float inside = bounded(light);
    const auto root = static_cast<std::size_t>(std::sqrt(inside) * static_cast<float>(kRoots));
    // The root may be rounded up across the end of a piece.
    std::size_t piece = m_pieceOfRoot[root];
    while (piece > 0 && inside < m_light[piece]) {
        --piece;
    }
    while (piece + 1 < kPieces && inside >= m_light[piece + 1]) {
        ++piece;
    }
    return piece;
}

void ToneCurve::toLight(std::span<float> values) const noexcept {
    for (float& value : values) {
        value = light(value);
    }
}

void ToneCurve::toDisplay(std::span<float> values) const noexcept {
    for (float& value : values) {
        value = display(value);
    }
}

} // namespace restoration
