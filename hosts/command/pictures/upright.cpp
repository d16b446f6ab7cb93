#include "hosts/command/pictures/upright.h"

#include "hosts/command/pictures/Orientation.h"

#include <algorithm>

namespace velorn {

RgbPixels upright(const RgbPixels& pixels, int orientation) {
    const Orientation turn(orientation);
    RgbPixels shown{turn.isTurned() ? pixels.height : pixels.width,
                    turn.isTurned() ? pixels.width : pixels.height,
                    {}};
    const auto offset = [](int width, int row, int column) {
        return 3 * (std::ptrdiff_t{row} * width + column);
    };
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            auto& result = shown.samples.emplace<std::vector<T>>(samples.size());
            for (int row = 0; row < pixels.height; ++row) {
                for (int column = 0; column < pixels.width; ++column) {
                    const auto place = turn.shown({row, column}, shown.width, shown.height);
                    std::copy_n(samples.begin() + offset(pixels.width, row, column), 3,
                                result.begin() + offset(shown.width, place.row, place.column));
                }
            }
        },
        pixels.samples);
    return shown;
}

} // namespace velorn
