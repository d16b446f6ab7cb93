#pragma once

#include <cstddef>
#include <random>
#include <vector>

/// An RGB picture of 8 bits with blocks of different levels and noise, rows without padding.
inline std::vector<unsigned char> texturedPixels(int width, int height) {
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(height) * 3);
    std::mt19937 random(1);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t block = (i / 3 / 16 + i / (static_cast<std::size_t>(width) * 48)) % 7;
        pixels[i] = static_cast<unsigned char>(block * 30 + random() % 16);
    }
    return pixels;
}
