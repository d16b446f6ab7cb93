#include "hosts/command/blind/TexturedCrop.h"

#include "hosts/command/pictures/Luminance.h"

#include <algorithm>
#include <cmath>

namespace velorn {
namespace {

/// Steps above this many levels count no more than this: they are edges, however strong.
constexpr float kFullStep = 20.0f;

/// The texture of all parts of a picture, from sums over everything above and left of a pixel.
class TextureSums {
public:
    explicit TextureSums(const Luminance& picture)
        : m_columns(static_cast<std::size_t>(picture.width) + 1),
          m_sums(m_columns * (static_cast<std::size_t>(picture.height) + 1)) {
        for (int y = 0; y < picture.height; ++y) {
            double row = 0.0;
            for (int x = 0; x < picture.width; ++x) {
                row += static_cast<double>(stepAt(picture, x, y));
                m_sums[index(x + 1, y + 1)] = m_sums[index(x + 1, y)] + row;
            }
        }
    }

    double within(int x, int y, int width, int height) const {
        return m_sums[index(x + width, y + height)] - m_sums[index(x, y + height)] -
               m_sums[index(x + width, y)] + m_sums[index(x, y)];
    }

private:
    static float stepAt(const Luminance& picture, int x, int y) {
        if (x + 1 == picture.width || y + 1 == picture.height) {
            return 0.0f;
        }
        const float level = picture.at(x, y);
        return std::min(kFullStep,
                        std::hypot(picture.at(x + 1, y) - level, picture.at(x, y + 1) - level));
    }
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * m_columns + static_cast<std::size_t>(x);
    }

    std::size_t m_columns;
    std::vector<double> m_sums;
};

RgbPixels cut(const RgbPixels& pixels, int x, int y, int width, int height) {
    RgbPixels part{width, height, {}};
    std::visit(
        [&]<class T>(const std::vector<T>& samples) {
            auto& copy = part.samples.template emplace<std::vector<T>>();
            copy.reserve(3 * part.pixelCount());
            for (int row = y; row < y + height; ++row) {
                const auto first = samples.begin() + 3 * (std::ptrdiff_t{row} * pixels.width + x);
                copy.insert(copy.end(), first, first + 3 * std::ptrdiff_t{width});
            }
        },
        pixels.samples);
    return part;
}

} // namespace

RgbPixels texturedCrop(const RgbPixels& pixels, int side) {
    const int width = std::min(side, pixels.width);
    const int height = std::min(side, pixels.height);
    if (width == pixels.width && height == pixels.height) {
        return pixels;
    }
    const TextureSums texture(luminanceOf(pixels));
    constexpr int kStride = 16;
    int bestX = 0;
    int bestY = 0;
    double best = -1.0;
    for (int y = 0; y + height <= pixels.height; y += kStride) {
        for (int x = 0; x + width <= pixels.width; x += kStride) {
            const double found = texture.within(x, y, width, height);
            if (found > best) {
                best = found;
                bestX = x;
                bestY = y;
            }
        }
    }
    return cut(pixels, bestX, bestY, width, height);
}

} // namespace velorn
