#include "restoration/noise/measureNoise.h"

#include "restoration/noise/BlockGrid.h"
#include "restoration/noise/DifferenceHistogram.h"
#include "restoration/noise/SquareRows.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace restoration {
namespace {

constexpr double kLevels = 255.0;
constexpr ChannelWeights kLuminance{0.299f, 0.587f, 0.114f, 0.0f};
constexpr ChannelWeights kChromaBlue{-0.168736f, -0.331264f, 0.5f, 0.0f};
constexpr ChannelWeights kChromaRed{0.5f, -0.418688f, -0.081312f, 0.0f};

/// The mean of `channels` channels.
ChannelWeights mean(int channels) {
    ChannelWeights weights{};
    std::fill_n(weights.begin(), channels, 1.0f / static_cast<float>(channels));
    return weights;
}

/// Luminance, chroma where there is any, and the channels.
std::vector<ChannelWeights> planesOf(int channels) {
    std::vector<ChannelWeights> planes{mean(channels)};
    if (channels == 3) {
        planes = {kLuminance, kChromaBlue, kChromaRed};
    }
    for (std::size_t channel = 0; channel < static_cast<std::size_t>(channels); ++channel) {
        planes.push_back({});
        planes.back()[channel] = 1.0f;
    }
    return planes;
}

/// Calls `use(y)` for the upper rows of the squares to measure: bands as high as a block, spread
/// evenly over the picture.
template <class Use>
void forSampledRows(const ColourRows& picture, Use&& use) {
    constexpr std::int64_t kSquares = 1'000'000;
    const int rows = picture.height - 1;
    const std::int64_t bands = (rows + BlockGrid::kSide - 1) / BlockGrid::kSide;
    const std::int64_t wanted = kSquares / (std::int64_t{BlockGrid::kSide} * picture.width) + 1;
    const std::int64_t used = std::min(wanted, bands);
    for (std::int64_t i = 0; i < used; ++i) {
        const int first = static_cast<int>(i * bands / used) * BlockGrid::kSide;
        for (int y = first; y < std::min(rows, first + BlockGrid::kSide); ++y) {
            use(y);
        }
    }
}

std::optional<BlockGrid::Place> blockCorners(const ColourRows& picture, SquareRows& squares,
                                             const ChannelWeights& luminance) {
    BlockGrid grid;
    forSampledRows(picture, [&](int y) {
        squares.moveTo(y);
        grid.count(y, squares.differences(luminance));
    });
    return grid.corners();
}

/// The differences of each plane: at the corners of the blocks where there are blocks.
struct Histograms {
    std::vector<DifferenceHistogram> counts;
    bool hasBlocks = false;
};

Histograms histograms(const ColourRows& picture, const std::vector<ChannelWeights>& planes) {
    SquareRows squares(picture);
    const auto corners = blockCorners(picture, squares, planes.front());
    const std::size_t first = corners ? static_cast<std::size_t>(corners->column) : 0;
    const std::size_t stride = corners ? BlockGrid::kSide : 1;
    std::vector<DifferenceHistogram> counts(planes.size());
    forSampledRows(picture, [&](int y) {
        if (corners && y % BlockGrid::kSide != corners->row) {
            return;
        }
        squares.moveTo(y);
        for (std::size_t i = 0; i < planes.size(); ++i) {
            counts[i].count(squares.differences(planes[i]), first, stride);
        }
    });
    return {std::move(counts), corners.has_value()};
}

/// The standard deviation of the rounding of a plane's samples, in levels.
double roundingDeviation(const ChannelWeights& plane, double step) {
    double squares = 0.0;
    for (const float weight : plane) {
        squares += double{weight} * double{weight};
    }
    return kLevels * step * std::sqrt(squares / 12.0);
}

} // namespace

NoiseLevels measureNoise(const ColourRows& picture) {
    const std::vector<ChannelWeights> planes = planesOf(picture.channels);
    const Histograms found = histograms(picture, planes);
    std::vector<float> deviations;
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const double step = double{picture.step};
        deviations.push_back(static_cast<float>(std::max(found.counts[i].deviation(kLevels * step),
                                                         roundingDeviation(planes[i], step))));
    }
    NoiseLevels levels;
    levels.isCompressed = found.hasBlocks;
    levels.luminance = deviations.front();
    if (picture.channels == 3) {
        levels.chromaBlue = deviations[1];
        levels.chromaRed = deviations[2];
    }
    std::copy_n(deviations.end() - picture.channels, picture.channels, levels.channels.begin());
    return levels;
}

} // namespace restoration
