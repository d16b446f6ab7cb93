#include "restoration/clipping/clippedValues.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace restoration {
namespace {

/// Half a level of 255.
constexpr float kTolerance = 0.5f / 255.0f;

/// The largest value of a picture and whether it fills a square.
struct Top {
    float value = 0.0f;
    bool isFlat = false;
};

void look(const std::vector<float>& row, const std::vector<float>& above, Top& top) {
    const float largest = *std::max_element(row.begin(), row.end());
    if (largest > top.value) {
        top = {largest, false};
    }
    if (largest < top.value || top.isFlat || above.empty()) {
        return;
    }
    for (std::size_t x = 1; x < row.size() && !top.isFlat; ++x) {
        top.isFlat = row[x - 1] == top.value && row[x] == top.value && above[x - 1] == top.value &&
                     above[x] == top.value;
    }
}

Top topOf(const PictureReader& picture, const Cancellation& cancellation) {
    Top top;
    std::vector<float> row(static_cast<std::size_t>(picture.width()));
    std::vector<float> above;
    for (int channel = 0; channel < picture.colours(); ++channel) {
        above.clear();
        for (int y = 0; y < picture.height(); ++y) {
            cancellation.check();
            picture.readChannel(channel, y, 0, picture.width(), row.data());
            look(row, above, top);
            above = row;
        }
    }
    return top;
}

} // namespace

std::optional<ClippedValues> clippedValues(const PictureReader& picture,
                                           const Cancellation& cancellation) {
    if (picture.picture().samples != VELORN_SAMPLES_F32) {
        return ClippedValues{1.0f - kTolerance, 1.0f};
    }
    const Top top = topOf(picture, cancellation);
    if (!top.isFlat || top.value < 0.99f) {
        return std::nullopt;
    }
    return ClippedValues{top.value * (1.0f - kTolerance), top.value};
}

} // namespace restoration
