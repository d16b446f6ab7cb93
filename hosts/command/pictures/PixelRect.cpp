#include "hosts/command/pictures/PixelRect.h"

#include <algorithm>

namespace velorn {

RgbPixels crop(const RgbPixels& source, const PixelRect& rect) {
    RgbPixels part{rect.width, rect.height, {}};
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            auto& copy = part.samples.template emplace<std::vector<T>>();
            copy.reserve(3 * part.pixelCount());
            for (int y = rect.y; y < rect.y + rect.height; ++y) {
                const int row = std::clamp(y, 0, source.height - 1);
                for (int x = rect.x; x < rect.x + rect.width; ++x) {
                    const int column = std::clamp(x, 0, source.width - 1);
                    const T* pixel = &samples[source.sampleIndex(column, row)];
                    copy.insert(copy.end(), pixel, pixel + 3);
                }
            }
        },
        source.samples);
    return part;
}

} // namespace velorn
