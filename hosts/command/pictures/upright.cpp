#include "hosts/command/pictures/upright.h"

#include "hosts/command/pictures/Orientation.h"

#include <algorithm>

namespace velorn {

RgbPixels upright(const RgbPixels& pixels, int orientation) {
    const Orientation arrangement(orientation);
    RgbPixels shown{pixels.width, pixels.height, {}};
    if (arrangement.swapsSides()) {
        std::swap(shown.width, shown.height);
    }
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            auto& result = shown.samples.emplace<std::vector<T>>(samples.size());
            for (int row = 0; row < pixels.height; ++row) {
                for (int column = 0; column < pixels.width; ++column) {
                    const auto place =
                        arrangement.displayed({row, column}, shown.width, shown.height);
                    std::copy_n(&samples[pixels.sampleIndex(column, row)], 3,
                                &result[shown.sampleIndex(place.column, place.row)]);
                }
            }
        },
        pixels.samples);
    return shown;
}

} // namespace velorn
