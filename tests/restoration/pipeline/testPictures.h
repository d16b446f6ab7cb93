#pragma once

#include "restoration/pictures/PictureBuffer.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/pictures/PictureWriter.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

namespace restoration {

/// What a test picture looks like.
struct PictureShape {
    int width = 1;
    int height = 1;
    int channels = 3;
    bool hasAlpha = false;
    VelornSamples samples = VELORN_SAMPLES_U8;
};

inline VelornPicture formatOf(const PictureShape& shape) {
    return {nullptr,      0, shape.width, shape.height, shape.channels, shape.hasAlpha ? 1 : 0,
            shape.samples};
}

/// Waves of several lengths, a sharp edge, and normal noise of `noise` levels of 255.
inline std::unique_ptr<PictureBuffer> texturedPicture(const PictureShape& shape,
                                                      double noise = 1.0) {
    auto buffer = std::make_unique<PictureBuffer>(formatOf(shape));
    std::mt19937 random(17);
    std::normal_distribution<double> error(0.0, 1.0);
    std::vector<float> row(static_cast<std::size_t>(shape.width));
    for (int y = 0; y < shape.height; ++y) {
        for (int c = 0; c < shape.channels; ++c) {
            for (int x = 0; x < shape.width; ++x) {
                const double wave = 0.15 * std::sin(0.11 * x + 0.03 * y + c) +
                                    0.1 * std::sin(0.02 * x - 0.23 * y) +
                                    (x / 37 + y / 29) % 2 * 0.2;
                row[static_cast<std::size_t>(x)] = static_cast<float>(
                    0.4 + wave + (noise > 0.0 ? (noise / 255.0) * error(random) : 0.0));
            }
            PictureWriter(buffer->picture()).writeChannel(c, y, 0, shape.width, row.data());
        }
    }
    return buffer;
}

/// All bytes of the pixels, row after row.
inline std::vector<unsigned char> bytesOf(const VelornPicture& picture, const VelornRegion& part) {
    const std::size_t rowBytes = bytesPerPixel(picture) * static_cast<std::size_t>(part.width);
    std::vector<unsigned char> bytes;
    for (int y = 0; y < part.height; ++y) {
        std::vector<unsigned char> row(rowBytes);
        std::memcpy(row.data(), pixelAt(picture, part.x, part.y + y), rowBytes);
        bytes.insert(bytes.end(), row.begin(), row.end());
    }
    return bytes;
}

inline VelornRegion wholeOf(const VelornPicture& picture) {
    return {0, 0, picture.width, picture.height};
}

inline std::vector<unsigned char> bytesOf(const VelornPicture& picture) {
    return bytesOf(picture, wholeOf(picture));
}

/// Calls visit(a, b) with all samples of a part of two pictures of the same format.
template <class Visit>
void forEachSample(const VelornPicture& first, const VelornPicture& second,
                   const VelornRegion& part, const Visit& visit) {
    const auto width = static_cast<std::size_t>(part.width);
    std::vector<float> a(width);
    std::vector<float> b(width);
    for (int c = 0; c < first.channels; ++c) {
        for (int y = part.y; y < part.y + part.height; ++y) {
            PictureReader(first).readChannel(c, y, part.x, part.width, a.data());
            PictureReader(second).readChannel(c, y, part.x, part.width, b.data());
            for (std::size_t x = 0; x < width; ++x) {
                visit(a[x], b[x]);
            }
        }
    }
}

inline float largestDifference(const VelornPicture& a, const VelornPicture& b,
                               const VelornRegion& part) {
    float largest = 0.0f;
    forEachSample(a, b, part,
                  [&](float x, float y) { largest = std::max(largest, std::abs(x - y)); });
    return largest;
}

inline double meanSquare(const VelornPicture& a, const VelornPicture& b, const VelornRegion& part) {
    double sum = 0.0;
    double count = 0.0;
    forEachSample(a, b, part, [&](float x, float y) {
        sum += static_cast<double>(x - y) * static_cast<double>(x - y);
        count += 1.0;
    });
    return sum / count;
}

} // namespace restoration
