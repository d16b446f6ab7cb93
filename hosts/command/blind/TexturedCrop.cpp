#include "hosts/command/blind/TexturedCrop.h"

#include "hosts/command/pictures/Luminance.h"
#include "hosts/command/pictures/PixelRect.h"

#include <algorithm>
#include <cmath>

namespace velorn {
namespace {

/// Differences are limited to this many levels: beyond, an edge is an edge, however strong.
constexpr float kFullStep = 20.0f;

/// The texture of any rectangle of a picture, from a table of sums over all pixels above and to the
/// left of each position.
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
    return crop(pixels, {bestX, bestY, width, height});
}

} // namespace velorn
