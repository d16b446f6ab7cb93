#include "hosts/command/sheet/shownPart.h"

#include "hosts/command/pictures/upright.h"

#include <array>
#include <cstddef>

namespace velorn {
namespace {

std::array<std::size_t, 3> colourOffsets(int channels) {
    return channels < 3 ? std::array<std::size_t, 3>{0, 0, 0} : std::array<std::size_t, 3>{0, 1, 2};
}

/// The mean of `count` samples, rounded to 8 bits.
template <class T>
std::uint8_t meanByte(std::uint64_t sum, std::uint64_t count) {
    const std::uint64_t white = sizeof(T) == 1 ? 255 : 65535;
    return static_cast<std::uint8_t>((sum * 255 + white * count / 2) / (white * count));
}

} // namespace

RgbPixels shownPart(const ImageFile& picture, const PictureArea& area, int step,
                    const Interrupt& interrupt) {
    const auto offsets = colourOffsets(picture.channels());
    const auto channels = static_cast<std::size_t>(picture.channels());
    RgbPixels part{area.width / step, area.height / step, {}};
    std::vector<std::uint8_t> colours;
    colours.reserve(3 * part.pixelCount());
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            const auto first = [&](int column, int row) {
                return &samples[(static_cast<std::size_t>(row) *
                                     static_cast<std::size_t>(picture.width()) +
                                 static_cast<std::size_t>(column)) *
                                channels];
            };
            const auto count = static_cast<std::uint64_t>(step) * static_cast<std::uint64_t>(step);
            for (int y = 0; y < part.height; ++y) {
                interrupt.check();
                for (int x = 0; x < part.width; ++x) {
                    std::array<std::uint64_t, 3> sums{};
                    for (int r = 0; r < step; ++r) {
                        const T* pixel = first(area.x + x * step, area.y + y * step + r);
                        for (int c = 0; c < step; ++c, pixel += channels) {
                            for (std::size_t i = 0; i < 3; ++i) {
                                sums[i] += pixel[offsets[i]];
                            }
                        }
                    }
                    for (const std::uint64_t sum : sums) {
                        colours.push_back(meanByte<T>(sum, count));
                    }
                }
            }
        },
        picture.samples());
    part.samples = std::move(colours);
    return upright(part, picture.orientation());
}

RgbPixels coloursOf(const std::vector<std::uint8_t>& samples, int width, int height, int channels) {
    const auto offsets = colourOffsets(channels);
    std::vector<std::uint8_t> colours;
    for (std::size_t first = 0; first < samples.size();
         first += static_cast<std::size_t>(channels)) {
        for (const std::size_t offset : offsets) {
            colours.push_back(samples[first + offset]);
        }
    }
    return {width, height, std::move(colours)};
}

} // namespace velorn
