#include "velimproclib/veldeblurcv/estimation/lumaToMat.h"

#include "velimproclib/images/FormatCodes.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/base/Team.h"
#include "velimproclib/primitives/base/toFloat.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vel {

namespace {

struct Weights {
    double first;
    double second;
    double third;
};

constexpr Weights kEightBits{0.299, 0.587, 0.114};

// These weights also reduce the 15-bit scale to 8 bits. They are single-precision numbers.
constexpr Weights kSixteenBits{toFloat(0.299 / 128), toFloat(0.587 / 128), toFloat(0.114 / 128)};

template <class Sample>
void luminanceRow(const Unaligned<Sample>* pixels, std::uint8_t* out, std::size_t width,
                  const Weights& weights) {
    for (std::size_t x = 0; x < width; ++x, pixels += 3) {
        const float luminance =
            toFloat(weights.first * pixels[0].value + weights.second * pixels[1].value +
                    weights.third * pixels[2].value);
        out[x] = static_cast<std::uint8_t>(std::min(luminance, 255.0f));
    }
}

template <class Sample>
void luminanceRows(const PlaneRecord& image, cv::Mat& luminance, const Weights& weights) {
    const auto* const first = static_cast<const Unaligned<Sample>*>(image.data);
    forEachRow(image.height, [&](int y) {
        luminanceRow(rowAt(first, image.step, static_cast<std::size_t>(y)),
                     luminance.ptr<std::uint8_t>(y), static_cast<std::size_t>(image.width),
                     weights);
    });
}

} // namespace

void lumaToMat(const PlaneRecord& image, cv::Mat& luminance) {
    luminance.create(image.height, image.width, CV_8UC1);
    if (isEightBits(image.format)) {
        luminanceRows<std::uint8_t>(image, luminance, kEightBits);
    } else {
        luminanceRows<std::uint16_t>(image, luminance, kSixteenBits);
    }
}

} // namespace vel
