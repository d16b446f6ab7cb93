#include "velimproclib/tiles/ColorTwistTile.h"

#include "velimproclib/primitives/ColorTwist.h"
#include "velimproclib/tiles/narrowToInt32.h"
#include "velimproclib/tiles/worthATeam.h"

#include <algorithm>

namespace vel {

namespace {

using TwistMatrix = float[3][4];

constexpr TwistMatrix kToLumaChroma = {
    {0.299F, 0.587F, 0.114F, 0.0F},
    {-0.13062F, -0.25644F, 0.38706F, 0.61176002F},
    {0.37288F, -0.31224F, -0.060639F, 0.53724998F},
};

// The first constant is one float short of the nearest to -1.01003; images depend on it.
constexpr TwistMatrix kToRgb = {
    {1.0F, 0.0F, 1.88F, -1.01002991F},
    {1.0F, -0.4446F, -0.9576F, 0.78642851F},
    {1.0F, 2.289F, 0.0F, -1.40031874F},
};

constexpr TwistMatrix kToLumaChromaRounded = {
    {0.299F, 0.587F, 0.114F, 0.0F},
    {-0.1306F, -0.2564F, 0.3871F, 0.0F},
    {0.3729F, -0.3122F, -0.0606F, 0.0F},
};

constexpr TwistMatrix kToRgbRounded = {
    {1.0F, 0.0F, 1.88F, 0.0F},
    {1.0F, -0.4446F, -0.9576F, 0.0F},
    {1.0F, 2.289F, 0.0F, 0.0F},
};

/// Rows that a thread takes at a time.
constexpr int kRowsPerChunk = 16;

void twist(TilePlanes& planes, const TwistMatrix& matrix) {
    const int rows = planes[0].rows;
    const int columns = planes[0].cols;
    const std::int32_t step = narrowToInt32(static_cast<std::int64_t>(planes[0].step[0]));
#pragma omp parallel for schedule(static) if (worthATeam(columns, rows))
    for (int start = 0; start < rows; start += kRowsPerChunk) {
        float* const firstRows[3] = {planes[0].ptr<float>(start), planes[1].ptr<float>(start),
                                     planes[2].ptr<float>(start)};
        colorTwistP3F32(firstRows, step, columns, std::min(kRowsPerChunk, rows - start), matrix);
    }
}

} // namespace

void rgbToLumaChroma(TilePlanes& planes, std::uint8_t useSecondPair) {
    twist(planes, useSecondPair != 0 ? kToLumaChromaRounded : kToLumaChroma);
}

void lumaChromaToRgb(TilePlanes& planes, std::uint8_t useSecondPair) {
    twist(planes, useSecondPair != 0 ? kToRgbRounded : kToRgb);
}

} // namespace vel
