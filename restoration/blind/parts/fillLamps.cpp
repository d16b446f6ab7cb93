#include "restoration/blind/parts/fillLamps.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace restoration {
namespace {

/// Of values that are white in 8 bits.
constexpr float kLeastWhite = 254.5f / 255.0f;
/// Pictures with larger values keep light above white.
constexpr float kMostWhite = 255.5f / 255.0f;
constexpr std::size_t kLeastPixels = 3;
constexpr int kLargestLamp = 96;
/// Beyond white, the image of a lamp has a rim below white, since the weights of a kernel differ.
constexpr int kRim = 3;
constexpr double kDark = 0.75;
constexpr int kSweeps = 60;
constexpr std::size_t kPixelsOfCheck = 65536;

struct Pixel {
    int x;
    int y;
};

enum class State : std::uint8_t { Known, White, SeenWhite, Unknown };

class States {
public:
    States(int width, int height)
        : m_width(width), m_height(height),
          m_states(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                   State::Known) {}

    bool holds(int x, int y) const noexcept {
        return x >= 0 && y >= 0 && x < m_width && y < m_height;
    }
    bool holds(int x, int y, State state) const noexcept {
        return holds(x, y) && m_states[index(x, y)] == state;
    }
    State& at(int x, int y) noexcept { return m_states[index(x, y)]; }

private:
    std::size_t index(int x, int y) const noexcept {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
               static_cast<std::size_t>(x);
    }

    int m_width;
    int m_height;
    std::vector<State> m_states;
};

void checkSometimes(std::size_t pixel, const Cancellation& cancellation) {
    if (pixel % kPixelsOfCheck == 0) {
        cancellation.check();
    }
}

void markWhite(const Plane& picture, States& states) {
    for (int y = 0; y < picture.height(); ++y) {
        const float* row = picture.row(y);
        for (int x = 0; x < picture.width(); ++x) {
            if (row[x] >= kLeastWhite) {
                states.at(x, y) = State::White;
            }
        }
    }
}

/// The connected white pixels around `first`, which become seen.
std::vector<Pixel> whiteAround(Pixel first, States& states, const Cancellation& cancellation) {
    std::vector<Pixel> pixels{first};
    states.at(first.x, first.y) = State::SeenWhite;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        checkSometimes(i, cancellation);
        const Pixel centre = pixels[i];
        for (int y = centre.y - 1; y <= centre.y + 1; ++y) {
            for (int x = centre.x - 1; x <= centre.x + 1; ++x) {
                if (states.holds(x, y, State::White)) {
                    states.at(x, y) = State::SeenWhite;
                    pixels.push_back({x, y});
                }
            }
        }
    }
    return pixels;
}

bool hasSizeOfLamp(const std::vector<Pixel>& pixels) {
    const auto [left, right] = std::ranges::minmax(pixels, {}, &Pixel::x);
    const auto [top, bottom] = std::ranges::minmax(pixels, {}, &Pixel::y);
    return pixels.size() >= kLeastPixels && right.x - left.x < kLargestLamp &&
           bottom.y - top.y < kLargestLamp;
}

/// Calls `visit(x, y)` for the pixels of the picture at `distance` to the left and right of `pixel`
/// and above and below it.
template <typename Visit>
void forEachAt(int distance, Pixel pixel, const States& states, const Visit& visit) {
    for (const auto& [right, down] : {Pixel{-1, 0}, Pixel{1, 0}, Pixel{0, -1}, Pixel{0, 1}}) {
        const int x = pixel.x + distance * right;
        const int y = pixel.y + distance * down;
        if (states.holds(x, y)) {
            visit(x, y);
        }
    }
}

/// Whether the pixels just beyond the rim are dark. White ones do not count: they belong to this
/// area or to another lamp.
bool hasDarkSurroundings(const std::vector<Pixel>& pixels, const Plane& picture,
                         const States& states) {
    double sum = 0.0;
    double count = 0.0;
    for (const Pixel& pixel : pixels) {
        forEachAt(kRim + 1, pixel, states, [&](int x, int y) {
            if (states.holds(x, y, State::Known)) {
                sum += static_cast<double>(picture.row(y)[x]);
                count += 1.0;
            }
        });
    }
    return sum < kDark * count;
}

std::vector<std::vector<Pixel>> lampsIn(const Plane& picture, States& states,
                                        const Cancellation& cancellation) {
    markWhite(picture, states);
    std::vector<std::vector<Pixel>> lamps;
    for (int y = 0; y < picture.height(); ++y) {
        cancellation.check();
        for (int x = 0; x < picture.width(); ++x) {
            if (states.at(x, y) == State::White) {
                std::vector<Pixel> pixels = whiteAround({x, y}, states, cancellation);
                if (hasSizeOfLamp(pixels)) {
                    lamps.push_back(std::move(pixels));
                }
            }
        }
    }
    std::erase_if(lamps, [&](const std::vector<Pixel>& pixels) {
        return !hasDarkSurroundings(pixels, picture, states);
    });
    return lamps;
}

/// The pixels of the lamps and of their rims, which become unknown.
std::vector<Pixel> unknownPixels(const std::vector<std::vector<Pixel>>& lamps, States& states) {
    std::vector<Pixel> unknown;
    for (const std::vector<Pixel>& lamp : lamps) {
        for (const Pixel& pixel : lamp) {
            for (int y = pixel.y - kRim; y <= pixel.y + kRim; ++y) {
                for (int x = pixel.x - kRim; x <= pixel.x + kRim; ++x) {
                    if (states.holds(x, y) && states.at(x, y) != State::Unknown) {
                        states.at(x, y) = State::Unknown;
                        unknown.push_back({x, y});
                    }
                }
            }
        }
    }
    return unknown;
}

/// The mean of the four neighbours, without those that are unknown; nothing if all are.
std::optional<float> meanAround(Pixel pixel, const Plane& picture, const States& states) {
    float sum = 0.0f;
    int count = 0;
    forEachAt(1, pixel, states, [&](int x, int y) {
        if (!states.holds(x, y, State::Unknown)) {
            sum += picture.row(y)[x];
            ++count;
        }
    });
    return count > 0 ? std::optional(sum / static_cast<float>(count)) : std::nullopt;
}

/// Estimates unknown pixels layer by layer, from the outside. All become known unless nothing is.
void fillLayers(std::vector<Pixel> unknown, Plane& picture, States& states,
                const Cancellation& cancellation) {
    std::size_t left = 0;
    while (left != unknown.size()) {
        cancellation.check();
        left = unknown.size();
        std::vector<Pixel> layer;
        std::vector<Pixel> inner;
        for (const Pixel& pixel : unknown) {
            const std::optional<float> mean = meanAround(pixel, picture, states);
            (mean ? layer : inner).push_back(pixel);
            if (mean) {
                picture.row(pixel.y)[pixel.x] = *mean;
            }
        }
        for (const Pixel& pixel : layer) {
            states.at(pixel.x, pixel.y) = State::Known;
        }
        unknown = std::move(inner);
    }
}

} // namespace

std::size_t fillLamps(Plane& picture, const Cancellation& cancellation) {
    const auto isAboveWhite = [](float value) { return value > kMostWhite; };
    if (std::ranges::any_of(picture.values(), isAboveWhite)) {
        return 0;
    }
    States states(picture.width(), picture.height());
    const std::vector<Pixel> unknown =
        unknownPixels(lampsIn(picture, states, cancellation), states);
    fillLayers(unknown, picture, states, cancellation);
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
        for (std::size_t i = 0; i < unknown.size(); ++i) {
            checkSometimes(i, cancellation);
            const Pixel& pixel = unknown[i];
            picture.row(pixel.y)[pixel.x] =
                meanAround(pixel, picture, states).value_or(picture.row(pixel.y)[pixel.x]);
        }
    }
    return unknown.size();
}

} // namespace restoration
