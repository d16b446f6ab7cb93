#include "hosts/command/restoration/NoiseLevel.h"

#include "hosts/command/pictures/Luminance.h"
#include "hosts/command/pictures/PixelScale.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velorn {
namespace {

constexpr double kLevels = 255.0;
constexpr double kMedianOfNormal = 0.6745;

/// Counts of values that are not negative, in bins of equal width centred on the multiples of the
/// width; the first bin is half as wide. The median is interpolated in its bin, as if the values
/// were spread evenly: the differences of whole levels would otherwise give only a few results.
class Histogram {
public:
    explicit Histogram(double width) : m_width(width) {}

    void count(double value) {
        const auto bin = static_cast<std::size_t>(value / m_width + 0.5);
        ++m_counts[std::min(bin, m_counts.size() - 1)];
        ++m_total;
    }

    double median() const {
        const double half = static_cast<double>(m_total) / 2.0;
        double below = 0.0;
        for (std::size_t bin = 0; bin < m_counts.size(); ++bin) {
            const auto inside = static_cast<double>(m_counts[bin]);
            if (inside > 0.0 && below + inside >= half) {
                const double start = bin == 0 ? 0.0 : static_cast<double>(bin) - 0.5;
                const double end = static_cast<double>(bin) + 0.5;
                return m_width * (start + (end - start) * (half - below) / inside);
            }
            below += inside;
        }
        return 0.0;
    }

private:
    double m_width;
    std::size_t m_total = 0;
    std::array<std::size_t, 8192> m_counts{};
};

/// The luminance of samples in double precision, computed on demand.
template <class T>
struct ExactLuminance {
    const T* samples;
    T white;

    bool isClipped(std::size_t pixel) const {
        const T* s = samples + 3 * pixel;
        return std::any_of(s, s + 3, [this](T v) { return v == 0 || v >= white; });
    }
    double at(std::size_t pixel) const {
        const T* s = samples + 3 * pixel;
        return (kRedShare * s[0] + kGreenShare * s[1] + kBlueShare * s[2]) * kLevels / white;
    }
};

template <class T>
double noiseOf(const RgbPixels& pixels, ExactLuminance<T> luminance, double binWidth) {
    Histogram differences(binWidth);
    const auto width = static_cast<std::size_t>(pixels.width);
    for (std::size_t y = 0; y + 1 < static_cast<std::size_t>(pixels.height); y += 2) {
        for (std::size_t x = 0; x + 1 < width; x += 2) {
            const std::size_t a = y * width + x;
            const std::array<std::size_t, 4> square{a, a + 1, a + width, a + width + 1};
            if (std::ranges::none_of(square,
                                     [&](std::size_t i) { return luminance.isClipped(i); })) {
                differences.count(std::abs(luminance.at(square[0]) - luminance.at(square[1]) -
                                           luminance.at(square[2]) + luminance.at(square[3])) /
                                  2.0);
            }
        }
    }
    return differences.median() / kMedianOfNormal;
}

} // namespace

double noiseLevel(const RgbPixels& pixels) {
    if (const auto* bytes = std::get_if<std::vector<std::uint8_t>>(&pixels.samples)) {
        return noiseOf(pixels, ExactLuminance<std::uint8_t>{bytes->data(), 255}, 0.5);
    }
    const auto& words = std::get<std::vector<std::uint16_t>>(pixels.samples);
    return noiseOf(pixels, ExactLuminance<std::uint16_t>{words.data(), kFifteenBitWhite},
                   1.0 / 32.0);
}

} // namespace velorn
