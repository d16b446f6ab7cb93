#include "velimproclib/veldeblurcv/sharpening/SharpLimit.h"

#include "tests/support/EachTarget.h"
#include "tests/support/noisePlane.h"
#include "tests/support/NothrowNewFails.h"
#include "tests/support/sameBits.h"
#include "tests/support/Threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <new>
#include <opencv2/core.hpp>
#include <type_traits>
#include <vector>

namespace vel {
namespace {

using test::forEachTarget;
using test::forThreadCounts;
using test::sameBits;
using Plane = cv::Mat_<float>;
using Bytes = cv::Mat_<std::uint8_t>;

constexpr float kLevel = 0.003921568393707275f;

Plane noise(int rows, int cols, unsigned seed, float low = -0.2f, float high = 1.2f) {
    return test::noisePlane(rows, cols, seed, low, high);
}

Bytes levels(const Plane& plane) {
    Bytes bytes(plane.size());
    for (int y = 0; y < plane.rows; ++y) {
        for (int x = 0; x < plane.cols; ++x) {
            const float level = std::nearbyint(plane(y, x) * 255.0f);
            bytes(y, x) =
                static_cast<std::uint8_t>(level > 255.0f ? 255.0f : (level > 0.0f ? level : 0.0f));
        }
    }
    return bytes;
}

Bytes crossMedian(const Bytes& plane, int radius) {
    Bytes result = plane.clone();
    for (int y = radius; y < plane.rows - radius; ++y) {
        for (int x = radius; x < plane.cols - radius; ++x) {
            std::vector<int> values{plane(y, x)};
            for (int d = 1; d <= radius; ++d) {
                values.insert(values.end(),
                              {plane(y - d, x), plane(y + d, x), plane(y, x - d), plane(y, x + d)});
            }
            std::nth_element(values.begin(), values.begin() + 2 * radius, values.end());
            result(y, x) = static_cast<std::uint8_t>(values[static_cast<std::size_t>(2 * radius)]);
        }
    }
    return result;
}

Bytes extremes(Bytes plane, int passes, bool largest) {
    for (int pass = 0; pass < passes; ++pass) {
        const Bytes before = plane.clone();
        for (int y = 1; y < plane.rows - 1; ++y) {
            for (int x = 1; x < plane.cols - 1; ++x) {
                std::uint8_t best = before(y, x);
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) {
                        const std::uint8_t other = before(y + dy, x + dx);
                        best = largest ? std::max(best, other) : std::min(best, other);
                    }
                }
                plane(y, x) = best;
            }
        }
    }
    return plane;
}

float limited(float v, float low, float high, const CSharpLimit& set) {
    float s = v;
    if (v < low) {
        const auto excess = static_cast<float>(v - low);
        const auto share = static_cast<float>(excess * set.m_mix);
        s = static_cast<float>(low + share);
    } else if (v > high) {
        const auto excess = static_cast<float>(v - high);
        const auto share = static_cast<float>(excess * set.m_mix);
        s = static_cast<float>(high + share);
    }
    const auto upper = static_cast<float>(set.m_upper * high);
    const auto lower = static_cast<float>(low * set.m_lower);
    if (s > upper) {
        s = upper;
    }
    if (s < lower) {
        s = lower;
    }
    return s;
}

/// The method, one pixel at a time.
Plane reference(const Plane& source, const Plane& blur, const CSharpLimit& set) {
    const Bytes median = crossMedian(levels(blur), set.m_radius >= 2 ? 2 : 1);
    const Bytes source8 = levels(source);
    const Bytes maxDeblur = extremes(median.clone(), set.m_innerPasses, true);
    const Bytes minDeblur = extremes(median.clone(), set.m_innerPasses, false);
    const Bytes maxSource = extremes(source8.clone(), set.m_radius, true);
    const Bytes minSource = extremes(source8.clone(), set.m_radius, false);
    Plane out(blur.size());
    for (int y = 0; y < blur.rows; ++y) {
        for (int x = 0; x < blur.cols; ++x) {
            const float high = std::max(static_cast<float>(kLevel * maxDeblur(y, x)),
                                        static_cast<float>(kLevel * maxSource(y, x)));
            const float low = std::min(static_cast<float>(kLevel * minDeblur(y, x)),
                                       static_cast<float>(kLevel * minSource(y, x)));
            out(y, x) = limited(blur(y, x), low, high, set);
        }
    }
    return out;
}

CSharpLimit limiter(cv::Size size, int radius, float upper, float mix) {
    CSharpLimit limit;
    limit.m_imSize = size;
    limit.m_innerPasses = 1;
    limit.m_radius = radius;
    limit.m_upper = upper;
    limit.m_lower = 1.0f / upper;
    limit.m_mix = mix;
    return limit;
}

TEST(SharpLimit, StartsWithEverythingZeroOrEmpty) {
    const CSharpLimit limit;
    EXPECT_EQ(cv::Size(), limit.m_imSize);
    EXPECT_EQ(0, limit.m_innerPasses);
    EXPECT_EQ(0, limit.m_radius);
    EXPECT_EQ(0.0f, limit.m_upper);
    EXPECT_EQ(0.0f, limit.m_lower);
    EXPECT_EQ(0.0f, limit.m_mix);
    EXPECT_TRUE(limit.m_maxDeblur.empty() && limit.m_minDeblur.empty());
    EXPECT_TRUE(limit.m_maxSource.empty() && limit.m_minSource.empty());
    EXPECT_TRUE(limit.m_work8.empty() && limit.m_median8.empty());
    EXPECT_TRUE(std::has_virtual_destructor_v<CSharpLimit>);
}

TEST(SharpLimit, EqualsThePlainMethodOnEveryVariant) {
    const cv::Size sizes[] = {{1, 1}, {2, 3}, {3, 3}, {4, 5}, {5, 4}, {67, 33}};
    for (const cv::Size& size : sizes) {
        const Plane source = noise(size.height, size.width, 1, 0.1f, 0.9f);
        const Plane blur = noise(size.height, size.width, 2);
        for (const int radius : {0, 1, 2, 5}) {
            CSharpLimit limit = limiter(size, radius, 1.3f, 0.4f);
            const Plane expected = reference(source, blur, limit);
            forEachTarget([&] {
                Plane out(size, 99.0f);
                limit.Proc(source, blur, out);
                EXPECT_TRUE(sameBits(expected, out)) << size << " radius " << radius;
            });
        }
    }
}

TEST(SharpLimit, EqualsThePlainMethodForEveryThreadCount) {
    const cv::Size size(131, 70);
    const Plane source = noise(size.height, size.width, 1, 0.1f, 0.9f);
    const Plane blur = noise(size.height, size.width, 2);
    CSharpLimit limit = limiter(size, 3, 1.3f, 0.4f);
    const Plane expected = reference(source, blur, limit);
    forThreadCounts([&] {
        Plane out(size, 99.0f);
        limit.Proc(source, blur, out);
        EXPECT_TRUE(sameBits(expected, out));
    });
}

TEST(SharpLimit, GivesTheSameInsideASectionOfAnotherRegion) {
    const cv::Size size(150, 120);
    const Plane source = noise(size.height, size.width, 3);
    const Plane blur = noise(size.height, size.width, 4);
    CSharpLimit first = limiter(size, 3, 2.0f, 0.5f);
    CSharpLimit second = limiter(size, 1, 1.0f, 0.0f);
    for (const int threads : {1, 2, 4}) {
        Plane firstOut(size);
        Plane secondOut(size);
#pragma omp parallel sections num_threads(threads)
        {
#pragma omp section
            first.Proc(source, blur, firstOut);
#pragma omp section
            second.Proc(source, blur, secondOut);
        }
        EXPECT_TRUE(sameBits(reference(source, blur, first), firstOut));
        EXPECT_TRUE(sameBits(reference(source, blur, second), secondOut));
    }
}

TEST(SharpLimit, PlanesMayLieInsideLargerImages) {
    const cv::Size size(40, 30);
    const Plane source = noise(50, 60, 5)(cv::Rect(cv::Point(7, 3), size));
    const Plane blur = noise(50, 60, 6)(cv::Rect(cv::Point(1, 9), size));
    Plane frame(50, 60, -5.0f);
    cv::Mat out = frame(cv::Rect(cv::Point(11, 2), size));
    CSharpLimit limit = limiter(size, 2, 1.5f, 0.2f);
    limit.Proc(source, blur, out);
    EXPECT_TRUE(sameBits(reference(source, blur, limit), out));
    EXPECT_EQ(-5.0f, frame(1, 11));
    EXPECT_EQ(-5.0f, frame(2, 10));
    EXPECT_EQ(-5.0f, frame(2, 51));
    EXPECT_EQ(-5.0f, frame(32, 11));
}

TEST(SharpLimit, StrengthBelowOneTenthPassesTheDeconvolvedPlaneThrough) {
    const Plane blur = noise(20, 30, 7, -3.0f, 3.0f);
    for (const float mix : {0.99f, 1.0f, 5.0f}) {
        CSharpLimit limit = limiter(blur.size(), 1, 4.0f, mix);
        Plane out(blur.size());
        limit.Proc(cv::Mat(), blur, out); // the source plane is not read
        EXPECT_TRUE(sameBits(blur, out));
        EXPECT_TRUE(limit.m_work8.empty());
    }
    CSharpLimit limit = limiter(blur.size(), 1, 1.0f, std::nextafter(0.99f, 0.0f));
    Plane out(blur.size());
    limit.Proc(noise(20, 30, 8), blur, out);
    EXPECT_FALSE(sameBits(blur, out));
}

TEST(SharpLimit, WithoutASizeTheDeconvolvedPlanePassesThroughUnchecked) {
    const cv::Mat blur(4, 5, CV_16UC1, cv::Scalar(12));
    for (const cv::Size& size : {cv::Size(0, 5), cv::Size(5, 0), cv::Size(-1, 7)}) {
        CSharpLimit limit = limiter(size, 1, 1.0f, 0.0f);
        cv::Mat out;
        limit.Proc(cv::Mat(), blur, out);
        EXPECT_EQ(0, cv::norm(out, blur, cv::NORM_INF));
    }
}

TEST(SharpLimit, PlanesOfAnotherTypeOrSizeFailAndTheTargetStays) {
    CSharpLimit limit = limiter({6, 5}, 1, 1.0f, 0.0f);
    Plane out(5, 6, 7.0f);
    const Plane source(5, 6, 0.5f);
    const auto failureOf = [&](const cv::Mat& blur) -> const char* {
        try {
            limit.Proc(source, blur, out);
        } catch (const char* text) {
            return text;
        }
        return "none";
    };
    EXPECT_STREQ("CSharpLimit::Proc - imBlur.type() != 32FC1", failureOf(cv::Mat(5, 6, CV_8UC1)));
    EXPECT_STREQ("CSharpLimit::Proc - imBlur.type() != 32FC1", failureOf(cv::Mat(5, 6, CV_32FC3)));
    EXPECT_STREQ("CSharpLimit::Proc - imBlur.size() != m_imSize",
                 failureOf(cv::Mat(5, 7, CV_32FC1)));
    EXPECT_STREQ("CSharpLimit::Proc - imBlur.size() != m_imSize",
                 failureOf(cv::Mat(6, 5, CV_32FC1)));
    EXPECT_TRUE(sameBits(Plane(5, 6, 7.0f), out));
}

/// While one lives, matrices find memory until `served` of them are allocated, then none.
class ExhaustedAllocator : public cv::MatAllocator {
public:
    explicit ExhaustedAllocator(int served)
        : m_left(served), m_before(cv::Mat::getDefaultAllocator()) {
        cv::Mat::setDefaultAllocator(this);
    }
    ~ExhaustedAllocator() override { cv::Mat::setDefaultAllocator(m_before); }

    cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, std::size_t* step,
                           cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
        refuse();
        return m_before->allocate(dims, sizes, type, data, step, flags, usage);
    }
    bool allocate(cv::UMatData* data, cv::AccessFlag flags,
                  cv::UMatUsageFlags usage) const override {
        return m_before->allocate(data, flags, usage);
    }
    void deallocate(cv::UMatData* data) const override { m_before->deallocate(data); }

private:
    void refuse() const {
        if (m_left.fetch_sub(1) <= 0) {
            throw std::bad_alloc();
        }
    }

    mutable std::atomic<int> m_left;
    cv::MatAllocator* m_before;
};

TEST(SharpLimit, WithoutMemoryForAScratchPlaneTheTargetStays) {
    const Plane source = noise(40, 50, 1);
    const Plane blur = noise(40, 50, 2);
    int served = 0;
    for (bool complete = false; !complete; ++served) {
        ASSERT_LT(served, 100);
        CSharpLimit limit = limiter(blur.size(), 2, 1.2f, 0.3f);
        Plane out(blur.size(), 7.0f);
        const Plane before = out.clone();
        try {
            const ExhaustedAllocator allocator(served);
            limit.Proc(source, blur, out);
            complete = true;
        } catch (const std::exception&) {
            EXPECT_TRUE(sameBits(before, out)) << "memory for " << served << " matrices";
        }
    }
    EXPECT_GT(served, 6) << "there are six scratch planes";
}

TEST(SharpLimit, ExhaustedMemoryOfTheMorphologyIsRaisedAndTheTargetStays) {
    // Rows of this width need a buffer from the heap.
    const Plane source = noise(5, 5000, 1);
    const Plane blur = noise(5, 5000, 2);
    CSharpLimit limit = limiter(blur.size(), 2, 1.2f, 0.3f);
    Plane out(blur.size(), 7.0f);
    {
        const test::NothrowNewFails noMemory;
        EXPECT_THROW(limit.Proc(source, blur, out), std::bad_alloc);
    }
    EXPECT_TRUE(sameBits(Plane(blur.size(), 7.0f), out));
    limit.Proc(source, blur, out);
    EXPECT_TRUE(sameBits(reference(source, blur, limit), out));
}

/// A soft edge between 0.3 and 0.7, and the same edge deconvolved with ringing on both sides.
struct Edge {
    Plane soft = Plane(24, 64);
    Plane ringing = Plane(24, 64);

    Edge() {
        for (int y = 0; y < soft.rows; ++y) {
            for (int x = 0; x < soft.cols; ++x) {
                const double distance = x - 31.5;
                soft(y, x) = static_cast<float>(0.5 + 0.2 * std::tanh(0.25 * distance));
                const double ring = 0.15 * std::sin(distance) * std::exp(-0.1 * std::abs(distance));
                ringing(y, x) = static_cast<float>((x < 32 ? 0.3 : 0.7) + ring);
            }
        }
    }
};

float largestValue(const Plane& plane) {
    return *std::max_element(plane.begin(), plane.end());
}

TEST(SharpLimit, ASmallerMixLeavesLessOvershoot) {
    const Edge edge;
    // Near the edge the bounds come from the soft edge and from the ringing that the median keeps.
    CSharpLimit limit = limiter(edge.soft.size(), 5, 4.0f, 1.0f);
    const auto overshoot = [&](float mix) {
        limit.m_mix = mix;
        Plane out(edge.soft.size());
        limit.Proc(edge.soft, edge.ringing, out);
        return largestValue(out) - 0.7f;
    };
    const float free = overshoot(1.0f);
    const float half = overshoot(0.5f);
    const float none = overshoot(0.0f);
    EXPECT_GT(free, 0.1f) << "the deconvolved edge must overshoot";
    EXPECT_LT(half, free);
    EXPECT_LT(none, half);
}

TEST(SharpLimit, TheFrameOfTheBoundsHoldsTheLevelsOfThePlanes) {
    const Plane source = noise(9, 12, 9, 0.0f, 1.0f);
    const Plane blur = noise(9, 12, 10, 0.0f, 1.0f);
    CSharpLimit limit = limiter(blur.size(), 5, 1.0f, 0.0f);
    Plane out(blur.size());
    limit.Proc(source, blur, out);
    const Bytes source8 = levels(source);
    const Bytes blur8 = levels(blur);
    for (int y = 0; y < 9; ++y) {
        for (int x = 0; x < 12; ++x) {
            if (y == 0 || y == 8 || x == 0 || x == 11) {
                EXPECT_EQ(blur8(y, x), limit.m_maxDeblur.at<std::uint8_t>(y, x));
                EXPECT_EQ(blur8(y, x), limit.m_minDeblur.at<std::uint8_t>(y, x));
                EXPECT_EQ(source8(y, x), limit.m_maxSource.at<std::uint8_t>(y, x));
                EXPECT_EQ(source8(y, x), limit.m_minSource.at<std::uint8_t>(y, x));
            }
        }
    }
}

TEST(SharpLimit, AMixOfZeroPutsEveryPixelWithinTheSoftBounds) {
    const Plane blur = noise(33, 47, 11, -2.0f, 3.0f);
    CSharpLimit limit = limiter(blur.size(), 2, 4.0f, 0.0f);
    Plane out(blur.size());
    limit.Proc(noise(33, 47, 12, 0.3f, 0.6f), blur, out);
    for (int y = 0; y < 33; ++y) {
        for (int x = 0; x < 47; ++x) {
            const float high = kLevel * std::max(limit.m_maxDeblur.at<std::uint8_t>(y, x),
                                                 limit.m_maxSource.at<std::uint8_t>(y, x));
            const float low = kLevel * std::min(limit.m_minDeblur.at<std::uint8_t>(y, x),
                                                limit.m_minSource.at<std::uint8_t>(y, x));
            EXPECT_EQ(std::clamp(blur(y, x), low, high), out(y, x));
        }
    }
}

TEST(SharpLimit, APixelThatIsBlackInAllPlanesStaysBlackForAnyMix) {
    // Values below half a level are 0 in the 8-bit copies, therefore all bounds are 0.
    const Plane blur(8, 8, 0.0015f);
    CSharpLimit limit = limiter(blur.size(), 1, 4.0f, 0.9f);
    Plane out(8, 8, 7.0f);
    limit.Proc(Plane(8, 8, 0.0f), blur, out);
    EXPECT_TRUE(sameBits(Plane(8, 8, 0.0f), out));
}

TEST(SharpLimit, ValuesOutsideOfTheScaleNeverWidenTheBounds) {
    Plane blur(8, 8, 5.0f);
    blur(0, 0) = -5.0f;
    CSharpLimit limit = limiter(blur.size(), 1, 1.0f, 0.5f);
    Plane out(8, 8);
    limit.Proc(Plane(8, 8, 3.0f), blur, out);
    EXPECT_EQ(kLevel * 255.0f, out(4, 4));
    EXPECT_EQ(0.0f, out(0, 0));
}

TEST(SharpLimit, NaNAndInfinitiesDoNotSpread) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    forEachTarget([&] {
        Plane blur = noise(20, 37, 13, 0.2f, 0.8f);
        blur(5, 5) = nan;
        blur(5, 15) = infinity;
        blur(15, 5) = -infinity;
        Plane source = noise(20, 37, 14, 0.2f, 0.8f);
        source(10, 30) = nan;
        CSharpLimit limit = limiter(blur.size(), 1, 1.5f, 0.5f);
        Plane out(blur.size());
        limit.Proc(source, blur, out);
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 37; ++x) {
                EXPECT_EQ(y == 5 && x == 5, std::isnan(out(y, x)));
                EXPECT_FALSE(std::isinf(out(y, x)));
            }
        }
    });
}

TEST(SharpLimit, OddSettingsWriteNothingOutsideOfTheTarget) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Plane blur = noise(20, 37, 15);
    const Plane source = noise(20, 37, 16);
    for (const float odd : {nan, std::numeric_limits<float>::infinity(), -1.0f}) {
        Plane frame(24, 41, 7.0f);
        cv::Mat out = frame(cv::Rect(2, 2, 37, 20));
        CSharpLimit limit = limiter(blur.size(), 1, odd, 0.5f);
        limit.Proc(source, blur, out);
        limit.m_mix = nan;
        limit.m_radius = -3;
        limit.m_innerPasses = -1;
        limit.Proc(source, blur, out);
        out.setTo(7.0f);
        EXPECT_EQ(0, cv::countNonZero(frame != 7.0f)) << odd;
    }
}

TEST(SharpLimit, NegativePassesLeaveTheBoundsOfThePixelItself) {
    const Plane blur = noise(20, 37, 15);
    const Plane source = noise(20, 37, 16);
    CSharpLimit none = limiter(blur.size(), 0, 1.5f, 0.5f);
    none.m_innerPasses = 0;
    CSharpLimit negative = none;
    negative.m_radius = -3;
    negative.m_innerPasses = -1;
    Plane expected(blur.size());
    Plane out(blur.size());
    none.Proc(source, blur, expected);
    negative.Proc(source, blur, out);
    EXPECT_TRUE(sameBits(expected, out));
}

TEST(SharpLimit, AnObjectHandlesTilesOfChangingSize) {
    CSharpLimit limit = limiter({}, 2, 1.2f, 0.3f);
    for (const cv::Size& size : {cv::Size(40, 30), cv::Size(12, 50), cv::Size(40, 30)}) {
        limit.m_imSize = size;
        const Plane source = noise(size.height, size.width, 17);
        const Plane blur = noise(size.height, size.width, 18);
        Plane out(size);
        limit.Proc(source, blur, out);
        EXPECT_TRUE(sameBits(reference(source, blur, limit), out));
    }
}

} // namespace
} // namespace vel
