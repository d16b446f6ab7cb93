#include "hosts/command/pictures/upright.h"

#include "hosts/command/pictures/Orientation.h"

#include <algorithm>

namespace velorn {

Pixels upright(Pixels pixels, int orientation) {
    if (orientation == 1) {
        return pixels;
    }
    const Orientation arrangement(orientation);
    Pixels shown = blackPixels(pixels.shape());
    if (arrangement.swapsSides()) {
        std::swap(shown.width, shown.height);
    }
    const auto channels = static_cast<std::size_t>(pixels.channels);
    std::visit(
        [&]<class T>(const std::vector<T>& stored) {
            auto& result = std::get<std::vector<T>>(shown.samples);
            std::size_t first = 0;
            for (int row = 0; row < pixels.height; ++row) {
                for (int column = 0; column < pixels.width; ++column) {
                    const auto place =
                        arrangement.displayed({row, column}, shown.width, shown.height);
                    const std::size_t index = static_cast<std::size_t>(place.row) *
                                                  static_cast<std::size_t>(shown.width) +
                                              static_cast<std::size_t>(place.column);
                    std::copy_n(&stored[first], channels, &result[index * channels]);
                    first += channels;
                }
            }
        },
        pixels.samples);
    return shown;
}

RgbPixels upright(const RgbPixels& pixels, int orientation) {
    Pixels shown = upright(Pixels{pixels.width, pixels.height, 3, pixels.samples}, orientation);
    return {shown.width, shown.height, std::move(shown.samples)};
}

} // namespace velorn
