#include "velimproclib/tiles/ColorTwistTile.h"

#include "velimproclib/images/stepOf.h"
#include "velimproclib/primitives/pixels/ColorTwist.h"
#include "velimproclib/tiles/forRowChunks.h"

namespace vel {

namespace {

using TwistMatrix = float[3][4];

constexpr TwistMatrix kToLumaChroma = {
    {0.299f, 0.587f, 0.114f, 0.0f},
    {-0.13062f, -0.25644f, 0.38706f, 0.61176002f},
    {0.37288f, -0.31224f, -0.060639f, 0.53724998f},
};

// The first constant is the float next to the one nearest to -1.01003. Results depend on it.
constexpr TwistMatrix kToRgb = {
    {1.0f, 0.0f, 1.88f, -1.01002991f},
    {1.0f, -0.4446f, -0.9576f, 0.78642851f},
    {1.0f, 2.289f, 0.0f, -1.40031874f},
};

constexpr TwistMatrix kToLumaChromaRounded = {
    {0.299f, 0.587f, 0.114f, 0.0f},
    {-0.1306f, -0.2564f, 0.3871f, 0.0f},
    {0.3729f, -0.3122f, -0.0606f, 0.0f},
};

constexpr TwistMatrix kToRgbRounded = {
    {1.0f, 0.0f, 1.88f, 0.0f},
    {1.0f, -0.4446f, -0.9576f, 0.0f},
    {1.0f, 2.289f, 0.0f, 0.0f},
};

void twist(TilePlanes& planes, const TwistMatrix& matrix) {
    const int columns = planes[0].cols;
    const std::int32_t step = stepOf(planes[0]);
    forRowChunks(columns, planes[0].rows, [&](cv::Range rows) {
        float* const firstRows[3] = {planes[0].ptr<float>(rows.start),
                                     planes[1].ptr<float>(rows.start),
                                     planes[2].ptr<float>(rows.start)};
        colorTwistP3F32(firstRows, step, columns, rows.size(), matrix);
    });
}

} // namespace

void rgbToLumaChroma(TilePlanes& planes, std::uint8_t useSecondPair) {
    twist(planes, useSecondPair != 0 ? kToLumaChromaRounded : kToLumaChroma);
}

void lumaChromaToRgb(TilePlanes& planes, std::uint8_t useSecondPair) {
    twist(planes, useSecondPair != 0 ? kToRgbRounded : kToRgb);
}

} // namespace vel
