#include "hosts/command/pixels/Pixels.h"

#include <algorithm>
#include <limits>

namespace velorn {
namespace {

template <class To, class From>
To atDepthOf(From value) {
    if constexpr (sizeof(To) < sizeof(From)) {
        return static_cast<To>((std::uint32_t{value} * 255u + 32767u) / 65535u);
    } else if constexpr (sizeof(To) > sizeof(From)) {
        return static_cast<To>(std::uint32_t{value} * 257u);
    } else {
        return value;
    }
}

template <class To, class From>
std::vector<To> converted(const std::vector<From>& from, int fromChannels, int toChannels) {
    const auto step = static_cast<std::size_t>(fromChannels);
    const std::size_t count = from.size() / step;
    const std::size_t fromColours = fromChannels < 3 ? 1 : 3;
    const std::size_t toColours = toChannels < 3 ? 1 : 3;
    std::vector<To> to;
    to.reserve(count * static_cast<std::size_t>(toChannels));
    for (std::size_t i = 0; i < count; ++i) {
        const From* pixel = &from[i * step];
        for (std::size_t c = 0; c < toColours; ++c) {
            to.push_back(atDepthOf<To>(pixel[std::min(c, fromColours - 1)]));
        }
        if (toChannels % 2 == 0) {
            to.push_back(fromChannels % 2 == 0 ? atDepthOf<To>(pixel[fromColours])
                                               : std::numeric_limits<To>::max());
        }
    }
    return to;
}

} // namespace

Pixels blackPixels(const PictureShape& shape) {
    Pixels pixels{shape.width, shape.height, shape.channels, {}};
    const std::size_t count = pixels.pixelCount() * static_cast<std::size_t>(shape.channels);
    if (shape.bits == 8) {
        pixels.samples.emplace<0>(count);
    } else {
        pixels.samples.emplace<1>(count);
    }
    return pixels;
}

Pixels withShape(Pixels pixels, const PictureShape& shape) {
    if (pixels.channels == shape.channels && pixels.bits() == shape.bits) {
        return pixels;
    }
    pixels.samples = std::visit(
        [&](const auto& from) -> Samples {
            if (shape.bits == 8) {
                return converted<std::uint8_t>(from, pixels.channels, shape.channels);
            }
            return converted<std::uint16_t>(from, pixels.channels, shape.channels);
        },
        pixels.samples);
    pixels.channels = shape.channels;
    return pixels;
}

} // namespace velorn
