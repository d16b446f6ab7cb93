#include "velimproclib/veldeblurcv/sharpening/SharpenEdge.h"

#include "tests/support/EachTarget.h"
#include "tests/support/noisePlane.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"
#include "velimproclib/veldeblurcv/kernels/gaussian1D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/core.hpp>
#include <type_traits>
#include <vector>

namespace vel {
namespace {

using test::forEachTarget;
using test::forThreadCounts;
using test::sameBits;
using Plane = cv::Mat_<float>;

Plane noise(int rows, int cols, unsigned seed, float low = 0.0f, float high = 1.0f) {
    return test::noisePlane(rows, cols, seed, low, high);
}

template <class Function>
void forEachPixel(const Plane& plane, int insetX, int insetY, Function&& function) {
    for (int y = insetY; y < plane.rows - insetY; ++y) {
        for (int x = insetX; x < plane.cols - insetX; ++x) {
            function(y, x);
        }
    }
}

template <class Function>
Plane made(const Plane& like, Function&& function) {
    Plane result(like.size());
    forEachPixel(like, 0, 0, [&](int y, int x) { result(y, x) = function(y, x); });
    return result;
}

Plane extremes(const Plane& plane, bool largest) {
    Plane result = plane.clone();
    forEachPixel(plane, 1, 1, [&](int y, int x) {
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                const float other = plane(y + dy, x + dx);
                if (largest ? other > result(y, x) : other < result(y, x)) {
                    result(y, x) = other;
                }
            }
        }
    });
    return result;
}

/// A filter of seven taps from one plane into another without the outer three rows or columns.
void filter(const Plane& from, Plane& to, const std::vector<float>& taps, bool downColumns) {
    if (from.rows < 7 && downColumns) {
        return;
    }
    if (from.cols < 7 && !downColumns) {
        return;
    }
    forEachPixel(from, downColumns ? 0 : 3, downColumns ? 3 : 0, [&](int y, int x) {
        double sum = 0;
        for (int k = 0; k < 7; ++k) {
            const float pixel = downColumns ? from(y - 3 + k, x) : from(y, x - 3 + k);
            sum += static_cast<double>(taps[static_cast<std::size_t>(6 - k)]) *
                   static_cast<double>(pixel);
        }
        to(y, x) = static_cast<float>(sum);
    });
}

std::vector<float> gaussian(float sigma) {
    std::vector<float> taps(7);
    gaussian1D(taps.data(), 7, sigma);
    return taps;
}

/// The method, plane after plane, with every operation rounded to single precision.
void reference(const Plane& in, Plane& out, const CSharpenEdge& set) {
    const Plane high = extremes(in, true);
    const Plane low = extremes(in, false);
    Plane contrast = made(in, [&](int y, int x) { return high(y, x) - low(y, x); });
    const std::vector<float> wide = gaussian(2 * set.m_sigma);
    filter(contrast, out, wide, true);
    filter(out, contrast, wide, false);
    const Plane distance = made(in, [&](int y, int x) { return high(y, x) - in(y, x); });
    Plane ratio = made(
        in, [&](int y, int x) { return distance(y, x) < in(y, x) ? distance(y, x) : in(y, x); });
    forEachPixel(in, 0, 0, [&](int y, int x) {
        contrast(y, x) = contrast(y, x) + set.m_floor;
        ratio(y, x) = ratio(y, x) / contrast(y, x);
    });
    Plane base = in.clone();
    Plane detail(in.size(), 0.0f);
    if (static_cast<double>(set.m_sigma) > 0.4) {
        const std::vector<float> narrow = gaussian(set.m_sigma);
        filter(in, out, narrow, true);
        filter(out, base, narrow, false);
        forEachPixel(in, 0, 0, [&](int y, int x) {
            if (y < 3 || y >= in.rows - 3 || x < 3 || x >= in.cols - 3) {
                base(y, x) = in(y, x);
            }
        });
        detail = made(in, [&](int y, int x) { return in(y, x) - base(y, x); });
    }
    forEachPixel(in, 0, 0, [&](int y, int x) {
        float gain = ratio(y, x) * set.m_slope;
        if (set.m_maxGain < 99.0f && gain > set.m_maxGain) {
            gain = set.m_maxGain;
        }
        gain = gain + set.m_gain;
        const float sharpened = gain * detail(y, x);
        out(y, x) = sharpened + base(y, x);
    });
}

CSharpenEdge sharpener(float sigma, float floor, float slope, float gain) {
    CSharpenEdge edge(sigma, floor);
    edge.m_slope = slope;
    edge.m_gain = gain;
    return edge;
}

void expectReference(Plane in, const Plane& scratch, CSharpenEdge edge) {
    Plane expected = scratch.clone();
    reference(in, expected, edge);
    Plane out = scratch.clone();
    EXPECT_TRUE(edge.Proc(in, out));
    EXPECT_TRUE(sameBits(expected, out)) << in.size() << " sigma " << edge.m_sigma;
}

TEST(SharpenEdge, StartsWithItsDefaults) {
    const CSharpenEdge edge(0.85f, 0.005f);
    EXPECT_EQ(0.85f, edge.m_sigma);
    EXPECT_EQ(0.005f, edge.m_floor);
    EXPECT_EQ(0.0f, edge.m_slope);
    EXPECT_EQ(1000.0f, edge.m_maxGain);
    EXPECT_EQ(1.0f, edge.m_gain);
    EXPECT_EQ(0, edge.m_w);
    EXPECT_EQ(0, edge.m_h);
    EXPECT_TRUE(edge.m_low.empty() && edge.m_high.empty() && edge.m_ratio.empty());
    EXPECT_TRUE(std::has_virtual_destructor_v<CSharpenEdge>);
}

TEST(SharpenEdge, TheFloorIsRaisedToOneHundredThousandth) {
    for (const float low : {0.0f, -1.0f, 9.9e-6f, -std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(1e-5f, CSharpenEdge(1.0f, low).m_floor);
    }
    EXPECT_EQ(1e-5f, CSharpenEdge(1.0f, 1e-5f).m_floor);
    EXPECT_EQ(2e-5f, CSharpenEdge(1.0f, 2e-5f).m_floor);
}

TEST(SharpenEdge, EqualsThePlainMethodOnEveryVariant) {
    for (const cv::Size& size : {cv::Size(7, 7), cv::Size(33, 40), cv::Size(67, 29)}) {
        const Plane in = noise(size.height, size.width, 1);
        const Plane scratch = noise(size.height, size.width, 2);
        forEachTarget([&] { expectReference(in, scratch, sharpener(0.85f, 0.005f, 2.0f, 1.5f)); });
        for (const float sigma : {0.3f, 0.4f, 0.41f, 1.0f, 50.0f}) {
            expectReference(in, scratch, sharpener(sigma, 0.01f, 3.0f, 1.2f));
        }
    }
}

TEST(SharpenEdge, EqualsThePlainMethodForEveryThreadCount) {
    const Plane in = noise(131, 97, 1);
    const Plane scratch = noise(131, 97, 2);
    forThreadCounts([&] { expectReference(in, scratch, sharpener(0.85f, 0.005f, 2.0f, 1.5f)); });
}

TEST(SharpenEdge, GivesTheSameInsideASectionOfAnotherRegion) {
    Plane in = noise(120, 90, 3);
    const CSharpenEdge settings = sharpener(1.1f, 0.02f, 4.0f, 0.5f);
    Plane expected = noise(120, 90, 4);
    reference(in, expected, settings);
    for (const int threads : {1, 2, 4}) {
        Plane outs[2] = {noise(120, 90, 4), noise(120, 90, 4)};
#pragma omp parallel sections num_threads(threads)
        {
#pragma omp section
            CSharpenEdge(settings).Proc(in, outs[0]);
#pragma omp section
            CSharpenEdge(settings).Proc(in, outs[1]);
        }
        EXPECT_TRUE(sameBits(expected, outs[0]));
        EXPECT_TRUE(sameBits(expected, outs[1]));
    }
}

TEST(SharpenEdge, PlanesMayLieInsideLargerImages) {
    const cv::Size size(40, 35);
    cv::Mat in = noise(50, 60, 5)(cv::Rect(cv::Point(7, 3), size));
    Plane frame(50, 60, 0.5f);
    cv::Mat out = frame(cv::Rect(cv::Point(11, 2), size));
    CSharpenEdge edge = sharpener(0.85f, 0.005f, 2.0f, 1.5f);
    edge.Proc(in, out);
    Plane expected(size, 0.5f);
    reference(in, expected, edge);
    EXPECT_TRUE(sameBits(expected, out));
    EXPECT_EQ(40, edge.m_w);
    EXPECT_EQ(35, edge.m_h);
    for (const cv::Point& beside :
         {cv::Point(11, 1), cv::Point(10, 2), cv::Point(51, 2), cv::Point(11, 37)}) {
        EXPECT_EQ(0.5f, frame(beside));
    }
}

TEST(SharpenEdge, AnotherElementTypeFails) {
    for (const int type : {CV_8UC1, CV_64FC1, CV_32FC3}) {
        cv::Mat in(9, 9, type, cv::Scalar::all(1));
        Plane out(9, 9, 7.0f);
        CSharpenEdge edge(1.0f, 0.005f);
        try {
            edge.Proc(in, out);
            FAIL() << "type " << type;
        } catch (const char* text) {
            EXPECT_STREQ("CSharpenEdge::Proc - in.type() != 32FC1", text);
        }
        EXPECT_TRUE(sameBits(Plane(9, 9, 7.0f), out));
    }
}

TEST(SharpenEdge, ARadiusBelowFourTenthsReturnsThePlane) {
    Plane in = noise(40, 50, 6);
    for (const float sigma : {0.1f, 0.25f, std::nextafter(0.4f, 0.0f)}) {
        for (const float slope : {0.0f, 5.0f, -3.0f}) {
            Plane out = noise(40, 50, 7);
            CSharpenEdge edge = sharpener(sigma, 0.005f, slope, 2.5f);
            edge.Proc(in, out);
            EXPECT_TRUE(sameBits(in, out)) << sigma;
        }
    }
}

TEST(SharpenEdge, TheFloatFourTenthsIsAboveTheDoubleAndSharpens) {
    Plane in = noise(40, 50, 6);
    Plane out = noise(40, 50, 7);
    CSharpenEdge edge = sharpener(0.4f, 0.005f, 2.0f, 1.5f);
    edge.Proc(in, out);
    EXPECT_FALSE(sameBits(in, out));
}

TEST(SharpenEdge, AGainOfOneWithoutSlopeReturnsThePlaneUpToRounding) {
    Plane in = noise(40, 50, 8);
    Plane out = noise(40, 50, 9);
    CSharpenEdge edge = sharpener(0.85f, 0.005f, 0.0f, 1.0f);
    edge.Proc(in, out);
    forEachPixel(in, 0, 0, [&](int y, int x) { EXPECT_NEAR(in(y, x), out(y, x), 1e-6f); });
}

TEST(SharpenEdge, AFlatPlaneStaysFlat) {
    for (const float level : {0.0f, 0.3f, 1.0f}) {
        Plane in(40, 50, level);
        Plane out(40, 50, 0.0f);
        CSharpenEdge edge = sharpener(0.85f, 0.0f, 5.0f, 1.5f);
        edge.Proc(in, out);
        forEachPixel(in, 0, 0, [&](int y, int x) { EXPECT_NEAR(level, out(y, x), 1e-6f); });
    }
}

TEST(SharpenEdge, TheOuterThreePixelsOfTheResultAreThoseOfThePlane) {
    Plane in = noise(40, 50, 10);
    Plane out = noise(40, 50, 11);
    CSharpenEdge edge = sharpener(0.85f, 0.005f, 5.0f, 2.0f);
    edge.Proc(in, out);
    bool innerChanged = false;
    forEachPixel(in, 0, 0, [&](int y, int x) {
        if (y < 3 || y >= 37 || x < 3 || x >= 47) {
            EXPECT_EQ(in(y, x), out(y, x));
        } else {
            innerChanged = innerChanged || in(y, x) != out(y, x);
        }
    });
    EXPECT_TRUE(innerChanged);
}

TEST(SharpenEdge, TheEdgeMeasureOfTheOuterRowsDependsOnTheContentOfTheTarget) {
    Plane in = noise(40, 50, 12);
    CSharpenEdge first = sharpener(0.85f, 0.005f, 2.0f, 1.0f);
    CSharpenEdge second = first;
    Plane firstOut(40, 50, 0.0f);
    Plane secondOut(40, 50, 1.0f);
    first.Proc(in, firstOut);
    second.Proc(in, secondOut);
    // The outermost row is its own maximum: its measure is 0 for any contrast.
    for (int y = 1; y < 39; ++y) {
        const bool outer = y < 3 || y >= 37;
        EXPECT_EQ(outer, cv::norm(first.m_ratio.row(y), second.m_ratio.row(y), cv::NORM_INF) > 0)
            << y;
    }
    // With zeros in the target the contrast of these rows is the floor.
    const Plane high = extremes(in, true);
    const float distance = high(1, 20) - in(1, 20);
    EXPECT_EQ(std::min(distance, in(1, 20)) / 0.005f, first.m_ratio.at<float>(1, 20));
}

TEST(SharpenEdge, TheOuterColumnsKeepTheUnsmoothedContrast) {
    Plane in = noise(40, 50, 13);
    Plane out(40, 50, 0.0f);
    CSharpenEdge edge = sharpener(0.85f, 0.005f, 2.0f, 1.0f);
    edge.Proc(in, out);
    const Plane high = extremes(in, true);
    const Plane low = extremes(in, false);
    for (const int x : {0, 1, 2, 47, 48, 49}) {
        const float contrast = high(20, x) - low(20, x);
        const float measure = std::min(high(20, x) - in(20, x), in(20, x));
        EXPECT_EQ(measure / (contrast + 0.005f), edge.m_ratio.at<float>(20, x));
    }
}

TEST(SharpenEdge, TheSlopeIsCappedOnlyForCapsBelowNinetyNine) {
    const Plane in = noise(40, 50, 14);
    const Plane scratch = noise(40, 50, 15);
    for (const float cap : {0.5f, 98.9f, 99.0f, 1000.0f}) {
        CSharpenEdge edge = sharpener(0.85f, 0.005f, 500.0f, 1.0f);
        edge.m_maxGain = cap;
        expectReference(in, scratch, edge);
    }
}

TEST(SharpenEdge, PlanesBelowSevenPixelsAreNotSmoothed) {
    for (int rows = 1; rows <= 8; ++rows) {
        for (int cols = 1; cols <= 8; ++cols) {
            for (const float sigma : {0.2f, 0.85f}) {
                expectReference(noise(rows, cols, 16), noise(rows, cols, 17),
                                sharpener(sigma, 0.005f, 2.0f, 1.5f));
            }
        }
    }
}

TEST(SharpenEdge, OddSettingsAndPixelsWriteNothingOutsideOfTheTarget) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    Plane in = noise(33, 40, 18);
    in(5, 5) = nan;
    in(20, 20) = infinity;
    in(25, 30) = -infinity;
    forEachTarget([&] {
        for (const float odd : {0.0f, -0.0f, nan, infinity, -infinity, -1.0f}) {
            Plane frame(37, 44, -5.0f);
            cv::Mat out = frame(cv::Rect(2, 2, 40, 33));
            CSharpenEdge radius = sharpener(odd, 0.005f, 2.0f, 1.5f);
            EXPECT_TRUE(radius.Proc(in, out));
            CSharpenEdge rest = sharpener(0.85f, odd, odd, odd);
            rest.m_maxGain = odd;
            EXPECT_TRUE(rest.Proc(in, out));
            for (int y = 0; y < 37; ++y) {
                for (int x = 0; x < 44; ++x) {
                    if (y < 2 || y >= 35 || x < 2 || x >= 42) {
                        EXPECT_EQ(-5.0f, frame(y, x));
                    }
                }
            }
        }
    });
}

TEST(SharpenEdge, SubnormalPixelsKeepTheirBits) {
    const Plane in = noise(20, 30, 19, 0.0f, 1e-38f);
    expectReference(in, noise(20, 30, 20), sharpener(0.85f, 0.0f, 2.0f, 1.5f));
}

} // namespace
} // namespace vel
