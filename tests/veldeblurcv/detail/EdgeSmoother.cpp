#include "velimproclib/veldeblurcv/detail/EdgeSmoother.h"

#include "tests/support/EachTarget.h"
#include "tests/support/GuardedPlane.h"
#include "tests/support/Threads.h"
#include "velimproclib/primitives/base/failures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <omp.h>
#include <opencv2/core.hpp>
#include <random>
#include <type_traits>
#include <vector>

namespace vel {
namespace {

using Plane = test::GuardedPlane<float>;

Plane noise(int width, int height, unsigned seed, float low = 0.0f, float high = 1.0f) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> pixel(low, high);
    Plane plane(width, height, 20, 4);
    plane.fill([&] { return pixel(random); });
    return plane;
}

Plane filled(int width, int height, float value) {
    return noise(width, height, 0, value, value);
}

GIMG<float> over(Plane& plane) {
    return {plane.width(), plane.height(), plane.data(), plane.step()};
}

struct Settings {
    float lambda = 0.05f;
    float exponent = 1.2f;
    bool logGuide = true;
    int iterations = 20;
};

/// Smooths `io` in place with copies of the other two planes and checks the canaries of all three.
int smooth(CEdgeSmoother& smoother, Plane rhs, Plane& io, Plane guide, const Settings& set = {}) {
    auto b = over(rhs);
    auto u = over(io);
    auto g = over(guide);
    const int result =
        smoother.smooth(b, u, g, set.lambda, set.exponent, set.logGuide, set.iterations);
    EXPECT_TRUE(rhs.intact() && io.intact() && guide.intact());
    return result;
}

Plane smoothed(const Plane& rhs, Plane io, const Plane& guide, const Settings& set = {}) {
    CEdgeSmoother smoother;
    EXPECT_EQ(smooth(smoother, rhs, io, guide, set), 1);
    return io;
}

/// The system as compressed rows of the upper triangle with indices from 1, and the textbook
/// preconditioned iteration on it.
class PlainSolver {
public:
    PlainSolver(const Plane& guide, const Settings& set) : m_w(guide.width()), m_h(guide.height()) {
        const int exponent = static_cast<int>(set.exponent);
        const auto value = [&](int x, int y) -> double {
            const float pixel = std::clamp(guide.at(x, y), 0.0f, 1.0f);
            if (!set.logGuide) {
                return pixel;
            }
            const float scaled = 0.8f * pixel;
            return std::log(scaled + 0.1f);
        };
        const auto weight = [&](double step) {
            return -static_cast<double>(set.lambda) /
                   (std::pow(std::abs(step), exponent) + static_cast<double>(0.0001f));
        };
        const std::size_t n = size();
        wx.assign(n, 0.0);
        wy.assign(n, 0.0);
        diagonal.assign(n, 0.0);
        for (int y = 0; y < m_h; ++y) {
            for (int x = 0; x < m_w; ++x) {
                const std::size_t k = at(x, y);
                if (y + 1 < m_h) {
                    wy[k] = weight(value(x, y + 1) - value(x, y));
                }
                if (x + 1 < m_w) {
                    wx[k] = weight(value(x + 1, y) - value(x, y));
                }
            }
        }
        const auto w = static_cast<std::size_t>(m_w);
        for (std::size_t k = 0; k < n; ++k) {
            diagonal[k] =
                1.0 - wx[k] - wy[k] - (k < 1 ? 0.0 : wx[k - 1]) - (k < w ? 0.0 : wy[k - w]);
        }
        for (std::size_t k = 1; k <= n; ++k) {
            rowStart.push_back(values.size() + 1);
            add(diagonal[k - 1], k);
            if (k < n) {
                add(wx[k - 1], k + 1);
            }
            if (k + w <= n) {
                add(wy[k - 1], k + w);
            }
        }
        rowStart.push_back(values.size() + 1);
    }

    std::vector<double> solve(const Plane& rhs, const Plane& start, int iterations) const {
        std::vector<double> x = unit(start);
        std::vector<double> r = unit(rhs);
        const std::vector<double> product = multiply(x);
        for (std::size_t k = 0; k < size(); ++k) {
            r[k] -= product[k];
        }
        std::vector<double> z = precondition(r);
        std::vector<double> p = z;
        double rz = dot(r, z);
        const double target = 1e-5 * std::sqrt(dot(r, r));
        for (int step = 0; step < iterations && std::sqrt(dot(r, r)) > target; ++step) {
            const std::vector<double> q = multiply(p);
            const double length = rz / dot(p, q);
            for (std::size_t k = 0; k < size(); ++k) {
                x[k] += length * p[k];
                r[k] -= length * q[k];
            }
            z = precondition(r);
            const double next = dot(r, z);
            for (std::size_t k = 0; k < size(); ++k) {
                p[k] = z[k] + next / rz * p[k];
            }
            rz = next;
        }
        return x;
    }

    cv::Mat_<double> dense() const {
        const int n = static_cast<int>(size());
        cv::Mat_<double> matrix(n, n, 0.0);
        for (int row = 0; row < n; ++row) {
            for (std::size_t i = begin(static_cast<std::size_t>(row)); i < end(row); ++i) {
                const int column = static_cast<int>(columns[i]) - 1;
                matrix(row, column) = matrix(column, row) = values[i];
            }
        }
        return matrix;
    }

    static std::vector<double> unit(const Plane& plane) {
        std::vector<double> result;
        for (int y = 0; y < plane.height(); ++y) {
            for (int x = 0; x < plane.width(); ++x) {
                result.push_back(std::clamp(plane.at(x, y), 0.0f, 1.0f));
            }
        }
        return result;
    }

    std::vector<double> wx;
    std::vector<double> wy;
    std::vector<double> diagonal;
    std::vector<double> values;
    std::vector<std::size_t> columns;
    std::vector<std::size_t> rowStart;

private:
    std::size_t size() const {
        return static_cast<std::size_t>(m_w) * static_cast<std::size_t>(m_h);
    }
    std::size_t at(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_w) +
               static_cast<std::size_t>(x);
    }
    std::size_t begin(std::size_t row) const { return rowStart[row] - 1; }
    std::size_t end(int row) const { return rowStart[static_cast<std::size_t>(row) + 1] - 1; }
    void add(double value, std::size_t column) {
        values.push_back(value);
        columns.push_back(column);
    }
    std::vector<double> multiply(const std::vector<double>& x) const {
        std::vector<double> y(x.size(), 0.0);
        for (std::size_t row = 0; row < x.size(); ++row) {
            for (std::size_t i = rowStart[row] - 1; i < rowStart[row + 1] - 1; ++i) {
                const std::size_t column = columns[i] - 1;
                y[row] += values[i] * x[column];
                if (column != row) {
                    y[column] += values[i] * x[row];
                }
            }
        }
        return y;
    }
    std::vector<double> precondition(const std::vector<double>& r) const {
        std::vector<double> z(r.size());
        for (std::size_t k = 0; k < r.size(); ++k) {
            z[k] = r[k] / diagonal[k];
        }
        return z;
    }
    static double dot(const std::vector<double>& a, const std::vector<double>& b) {
        double sum = 0.0;
        for (std::size_t k = 0; k < a.size(); ++k) {
            sum += a[k] * b[k];
        }
        return sum;
    }

    int m_w;
    int m_h;
};

double largestDifference(const Plane& plane, const std::vector<double>& values) {
    double largest = 0.0;
    for (int y = 0; y < plane.height(); ++y) {
        for (int x = 0; x < plane.width(); ++x) {
            const std::size_t k = static_cast<std::size_t>(y * plane.width() + x);
            const double expected = std::clamp(values[k], 0.0, 1.0);
            const double difference = std::abs(plane.at(x, y) - expected);
            largest = difference <= largest ? largest : difference;
        }
    }
    return largest;
}

TEST(EdgeSmoother, StartsWithTwoConstantsAndNoArrays) {
    const CEdgeSmoother smoother;
    EXPECT_EQ(smoother.m_eps, 9.999999747378752e-5);
    EXPECT_EQ(smoother.m_reserved, static_cast<double>(0.1f));
    EXPECT_EQ(smoother.m_w, 0);
    EXPECT_EQ(smoother.m_h, 0);
    EXPECT_EQ(smoother.m_n, 0);
    EXPECT_FALSE(smoother.m_rhs || smoother.m_solution || smoother.m_guide || smoother.m_cgWork);
    EXPECT_EQ(smoother.m_wx, nullptr);
    EXPECT_EQ(smoother.m_wy, nullptr);
    EXPECT_EQ(smoother.m_diag, nullptr);
    EXPECT_FALSE(std::is_copy_constructible_v<CEdgeSmoother>);
}

TEST(EdgeSmoother, ResizeAllocatesAlignedArraysAndPlacesTheCouplings) {
    CEdgeSmoother smoother;
    smoother.resize(7, 5);
    EXPECT_EQ(smoother.m_w, 7);
    EXPECT_EQ(smoother.m_h, 5);
    EXPECT_EQ(smoother.m_n, 35);
    EXPECT_EQ(smoother.m_wx, smoother.m_cgWork.get());
    EXPECT_EQ(smoother.m_wy, smoother.m_cgWork.get() + 35);
    EXPECT_EQ(smoother.m_diag, smoother.m_cgWork.get() + 70);
    for (const double* array : {smoother.m_rhs.get(), smoother.m_solution.get(),
                                smoother.m_guide.get(), smoother.m_cgWork.get()}) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array) % 32, 0u);
    }
}

TEST(EdgeSmoother, ResizeToTheSameSizeOrBelowOneKeepsTheArrays) {
    CEdgeSmoother smoother;
    smoother.resize(7, 5);
    const double* work = smoother.m_cgWork.get();
    for (const cv::Size size : {cv::Size(7, 5), cv::Size(0, 5), cv::Size(7, 0), cv::Size(-3, -2)}) {
        smoother.resize(size.width, size.height);
        EXPECT_EQ(smoother.m_cgWork.get(), work);
        EXPECT_EQ(smoother.m_w, 7);
        EXPECT_EQ(smoother.m_h, 5);
    }
}

TEST(EdgeSmoother, FailedAllocationRaisesItsNumberAndLeavesAnEmptyWorkspaceThatWorks) {
    CEdgeSmoother smoother;
    smoother.resize(7, 5);
    constexpr int kHuge = std::numeric_limits<std::int32_t>::max();
    try {
        smoother.resize(kHuge, kHuge);
        FAIL();
    } catch (int failure) {
        EXPECT_EQ(failure, kNoSmootherMemory);
    }
    EXPECT_FALSE(smoother.m_rhs || smoother.m_solution || smoother.m_guide || smoother.m_cgWork);
    EXPECT_EQ(smoother.m_wx, nullptr);
    EXPECT_EQ(smoother.m_wy, nullptr);
    EXPECT_EQ(smoother.m_diag, nullptr);
    EXPECT_EQ(smoother.m_w, 0);
    EXPECT_EQ(smoother.m_h, 0);
    EXPECT_EQ(smoother.m_n, 0);

    const Plane plane = noise(7, 5, 1);
    Plane io = plane;
    EXPECT_EQ(smooth(smoother, plane, io, plane), 1);
    EXPECT_TRUE(io.sameBits(smoothed(plane, plane, plane)));
}

TEST(EdgeSmoother, WithoutIterationsTheImagesAreOnlyCut) {
    for (const int iterations : {0, -1, std::numeric_limits<int>::min()}) {
        CEdgeSmoother smoother;
        Plane planes[3] = {noise(9, 6, 1, -1.0f, 2.0f), noise(9, 6, 2, -1.0f, 2.0f),
                           noise(9, 6, 3, -1.0f, 2.0f)};
        const std::vector<Plane> before(std::begin(planes), std::end(planes));
        auto b = over(planes[0]);
        auto u = over(planes[1]);
        auto g = over(planes[2]);
        EXPECT_EQ(smoother.smooth(b, u, g, 0.05f, 1.2f, true, iterations), 0);
        for (std::size_t i = 0; i < 3; ++i) {
            Plane expected = before[i];
            for (int y = 0; y < 6; ++y) {
                for (int x = 0; x < 9; ++x) {
                    expected.set(x, y, std::clamp(expected.at(x, y), 0.0f, 1.0f));
                }
            }
            EXPECT_TRUE(planes[i].sameBits(expected)) << i;
        }
        EXPECT_EQ(smoother.m_w, 9);
        EXPECT_EQ(smoother.m_h, 6);
    }
}

TEST(EdgeSmoother, CutsTheRightHandSideAndTheResult) {
    Plane rhs = noise(9, 6, 1, -1.0f, 2.0f);
    Plane io = noise(9, 6, 2, -1.0f, 2.0f);
    Plane guide = noise(9, 6, 3, -1.0f, 2.0f);
    auto b = over(rhs);
    auto u = over(io);
    auto g = over(guide);
    CEdgeSmoother smoother;
    EXPECT_EQ(smoother.smooth(b, u, g, 0.05f, 1.2f, true, 20), 1);
    for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 9; ++x) {
            for (const Plane* plane : {&rhs, &io}) {
                EXPECT_GE(plane->at(x, y), 0.0f);
                EXPECT_LE(plane->at(x, y), 1.0f);
            }
        }
    }
}

TEST(EdgeSmoother, BuildsIdentityPlusTheWeightedGraphLaplacian) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(6, 1), cv::Size(1, 6), cv::Size(17, 9)}) {
        for (const float exponent : {1.2f, 0.9f, -0.5f, 0.0f, 2.0f, 3.9f, -1.7f, -2.0f}) {
            for (const bool logGuide : {true, false}) {
                const Settings set{0.05f, exponent, logGuide, 1};
                const Plane guide = noise(size.width, size.height, 5);
                const PlainSolver plain(guide, set);
                CEdgeSmoother smoother;
                Plane io = guide;
                smooth(smoother, guide, io, guide, set);
                // The two logarithms are different single-precision functions.
                const double relative = logGuide ? 1e-5 : 1e-12;
                for (std::size_t k = 0; k < plain.wx.size(); ++k) {
                    const double tolerance = relative * plain.diagonal[k];
                    EXPECT_NEAR(smoother.m_wx[k], plain.wx[k], tolerance);
                    EXPECT_NEAR(smoother.m_wy[k], plain.wy[k], tolerance);
                    EXPECT_NEAR(smoother.m_diag[k], plain.diagonal[k], tolerance);
                }
            }
        }
    }
}

TEST(EdgeSmoother, AFlatGuideCouplesWithWeight500AndAStepOfOneWithOneTwentieth) {
    Plane guide = filled(4, 3, 0.0f);
    for (int y = 0; y < 3; ++y) {
        guide.set(2, y, 1.0f);
        guide.set(3, y, 1.0f);
    }
    CEdgeSmoother smoother;
    Plane io = guide;
    smooth(smoother, guide, io, guide, {0.05f, 1.2f, false, 20});
    EXPECT_NEAR(smoother.m_wx[0], -500.0, 1e-4);
    EXPECT_NEAR(smoother.m_wx[1], -0.05, 1e-5);
    EXPECT_NEAR(smoother.m_wx[2], -500.0, 1e-4);
    EXPECT_EQ(smoother.m_wx[3], 0.0);
    EXPECT_NEAR(smoother.m_wy[5], -500.0, 1e-4);
    EXPECT_EQ(smoother.m_wy[9], 0.0);
}

TEST(EdgeSmoother, AnImageOfOneRowHasNoVerticalCouplings) {
    // The workspace holds other couplings from the call before.
    CEdgeSmoother smoother;
    for (const int width : {1, 2, 3, 67}) {
        const Plane square = noise(width, width, 1);
        Plane io = square;
        smooth(smoother, square, io, square);
        const Plane row = noise(width, 1, 2);
        io = row;
        smooth(smoother, row, io, row);
        for (int x = 0; x < width; ++x) {
            EXPECT_EQ(smoother.m_wy[x], 0.0);
            EXPECT_EQ(smoother.m_diag[x],
                      1.0 - smoother.m_wx[x] - (x > 0 ? smoother.m_wx[x - 1] : 0.0));
        }
        EXPECT_EQ(smoother.m_wx[width - 1], 0.0);
    }
}

TEST(EdgeSmoother, AnExponentBelowOneGivesEveryPairTheSameCoupling) {
    const Plane guide = noise(8, 6, 1);
    CEdgeSmoother smoother;
    Plane io = guide;
    smooth(smoother, guide, io, guide, {0.05f, 0.9f, true, 20});
    const double weight = -static_cast<double>(0.05f) / (1.0 + smoother.m_eps);
    EXPECT_EQ(smoother.m_wx[0], weight);
    EXPECT_EQ(smoother.m_wx[20], weight);
    EXPECT_EQ(smoother.m_wy[20], weight);
}

TEST(EdgeSmoother, TheFractionOfTheExponentHasNoEffect) {
    const Plane plane = noise(23, 19, 1);
    const Plane whole = smoothed(plane, plane, plane, {0.05f, 1.0f, true, 20});
    EXPECT_TRUE(whole.sameBits(smoothed(plane, plane, plane, {0.05f, 1.2f, true, 20})));
    EXPECT_TRUE(whole.sameBits(smoothed(plane, plane, plane, {0.05f, 1.999f, true, 20})));
    EXPECT_FALSE(whole.sameBits(smoothed(plane, plane, plane, {0.05f, 2.0f, true, 20})));
}

TEST(EdgeSmoother, EqualsTheTextbookIterationOnTheCompressedMatrix) {
    for (const cv::Size size :
         {cv::Size(1, 1), cv::Size(2, 1), cv::Size(1, 2), cv::Size(67, 1), cv::Size(1, 67),
          cv::Size(2, 2), cv::Size(9, 8), cv::Size(33, 41), cv::Size(130, 70)}) {
        for (const float exponent : {1.2f, 0.9f, 2.0f, -1.0f}) {
            for (const int iterations : {1, 2, 7, 20}) {
                const Settings set{0.05f, exponent, true, iterations};
                const Plane rhs = noise(size.width, size.height, 1, -0.1f, 1.1f);
                const Plane start = noise(size.width, size.height, 2, -0.1f, 1.1f);
                const Plane guide = noise(size.width, size.height, 3, -0.1f, 1.1f);
                const auto expected = PlainSolver(guide, set).solve(rhs, start, iterations);
                EXPECT_LE(largestDifference(smoothed(rhs, start, guide, set), expected), 1e-6)
                    << size << " exponent " << exponent << ", " << iterations << " iterations";
            }
        }
    }
}

TEST(EdgeSmoother, SmoothsTexturesAndPreservesAStepWhenOnePictureHasAllRoles) {
    // The detail stage passes one picture as right-hand side, start and guide.
    Plane picture = noise(96, 64, 4, -0.02f, 0.02f);
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 96; ++x) {
            picture.set(x, y, picture.at(x, y) + (x < 48 ? 0.3f : 0.7f));
        }
    }
    const auto expected = PlainSolver(picture, {}).solve(picture, picture, 20);
    const Plane result = smoothed(picture, picture, picture);
    EXPECT_LE(largestDifference(result, expected), 1e-6);
    EXPECT_NEAR(result.at(10, 30), 0.3f, 0.01f);
    EXPECT_NEAR(result.at(85, 30), 0.7f, 0.01f);
    EXPECT_GT(result.at(48, 30) - result.at(47, 30), 0.3f);
}

TEST(EdgeSmoother, EnoughIterationsReachTheDirectSolution) {
    for (const cv::Size size :
         {cv::Size(1, 1), cv::Size(11, 1), cv::Size(1, 11), cv::Size(9, 7), cv::Size(16, 16)}) {
        const Settings set{0.05f, 1.2f, true, 1000};
        const Plane rhs = noise(size.width, size.height, 1);
        const Plane guide = noise(size.width, size.height, 2);
        const cv::Mat b = cv::Mat(PlainSolver::unit(rhs), true);
        cv::Mat x;
        ASSERT_TRUE(cv::solve(PlainSolver(guide, set).dense(), b, x, cv::DECOMP_CHOLESKY));
        const std::vector<double> expected(x.begin<double>(), x.end<double>());
        EXPECT_LE(largestDifference(smoothed(rhs, rhs, guide, set), expected), 2e-5) << size;
    }
}

TEST(EdgeSmoother, StopsWhenTheResidualIsSmallEnough) {
    const Plane rhs = noise(40, 30, 1);
    const Plane guide = noise(40, 30, 2);
    const Plane few = smoothed(rhs, rhs, guide, {0.05f, 0.5f, true, 50});
    const Plane many = smoothed(rhs, rhs, guide, {0.05f, 0.5f, true, 5000});
    EXPECT_TRUE(few.sameBits(many));
    EXPECT_FALSE(few.sameBits(smoothed(rhs, rhs, guide, {0.05f, 0.5f, true, 2})));
}

TEST(EdgeSmoother, AConstantPlaneIsItsOwnSolution) {
    for (const float value : {0.0f, 0.1f, 0.3f, 0.77f, 1.0f}) {
        const Plane constant = filled(37, 21, value);
        const Plane guide = noise(37, 21, 3);
        EXPECT_TRUE(smoothed(constant, constant, constant).sameBits(constant));
        EXPECT_TRUE(smoothed(constant, constant, guide).sameBits(constant));
    }
}

TEST(EdgeSmoother, ASinglePixelBecomesTheRightHandSide) {
    const Plane result = smoothed(filled(1, 1, 0.625f), filled(1, 1, 0.25f), filled(1, 1, 0.5f));
    EXPECT_EQ(result.at(0, 0), 0.625f);
}

TEST(EdgeSmoother, ImagesWithoutPixelsChangeNothing) {
    CEdgeSmoother smoother;
    smoother.resize(4, 4);
    float pixel = 5.0f;
    for (const cv::Size size : {cv::Size(0, 4), cv::Size(4, 0), cv::Size(0, 0)}) {
        GIMG<float> b(size.width, size.height, &pixel, 16);
        GIMG<float> u(size.width, size.height, &pixel, 16);
        GIMG<float> g(size.width, size.height, &pixel, 16);
        EXPECT_EQ(smoother.smooth(b, u, g, 0.05f, 1.2f, true, 20), 1);
        EXPECT_EQ(smoother.smooth(b, u, g, 0.05f, 1.2f, true, 0), 0);
        EXPECT_EQ(pixel, 5.0f);
        EXPECT_EQ(smoother.m_w, 4);
    }
}

TEST(EdgeSmoother, WritesOnlyTheRegionsOfInterest) {
    const Plane plane = noise(12, 9, 1);
    const Plane expected = smoothed(plane, plane, plane);
    Plane large[3] = {filled(15, 11, 7.0f), filled(15, 11, 7.0f), filled(15, 11, 7.0f)};
    for (Plane& each : large) {
        for (int y = 0; y < 9; ++y) {
            for (int x = 0; x < 12; ++x) {
                each.set(x + 3, y + 2, plane.at(x, y));
            }
        }
    }
    auto b = over(large[0]);
    auto u = over(large[1]);
    auto g = over(large[2]);
    for (auto* image : {&b, &u, &g}) {
        image->shiftOrigin(3, 2);
    }
    CEdgeSmoother smoother;
    EXPECT_EQ(smoother.smooth(b, u, g, 0.05f, 1.2f, true, 20), 1);
    for (int y = 0; y < 11; ++y) {
        for (int x = 0; x < 15; ++x) {
            const bool inside = x >= 3 && y >= 2;
            ASSERT_EQ(large[1].at(x, y), inside ? expected.at(x - 3, y - 2) : 7.0f);
        }
    }
}

TEST(EdgeSmoother, ResultsDoNotDependOnEarlierCalls) {
    CEdgeSmoother smoother;
    for (const cv::Size size :
         {cv::Size(40, 30), cv::Size(40, 30), cv::Size(30, 40), cv::Size(5, 5), cv::Size(64, 64)}) {
        const Plane plane = noise(size.width, size.height, static_cast<unsigned>(size.width));
        Plane io = plane;
        EXPECT_EQ(smooth(smoother, plane, io, plane), 1);
        EXPECT_TRUE(io.sameBits(smoothed(plane, plane, plane))) << size;
    }
}

TEST(EdgeSmoother, NaNSpreadsAndInfinitiesAreCut) {
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float odd : {std::nanf(""), infinity, -infinity}) {
        for (int which = 0; which < 3; ++which) {
            Plane planes[3] = {noise(20, 15, 1), noise(20, 15, 2), noise(20, 15, 3)};
            planes[which].set(7, 8, odd);
            const Plane result = smoothed(planes[0], planes[1], planes[2]);
            EXPECT_EQ(std::isnan(result.at(3, 3)), std::isnan(odd)) << which;
        }
    }
}

TEST(EdgeSmoother, OddSettingsGiveLevelsOfTheScaleOrNaN) {
    const float infinity = std::numeric_limits<float>::infinity();
    const Plane plane = noise(20, 15, 1);
    const auto check = [](const Plane& result) {
        for (int y = 0; y < 15; ++y) {
            for (int x = 0; x < 20; ++x) {
                const float level = result.at(x, y);
                ASSERT_TRUE(std::isnan(level) || (level >= 0.0f && level <= 1.0f)) << level;
            }
        }
    };
    for (const float odd : {std::nanf(""), infinity, -infinity, 1e30f, -1e30f}) {
        SCOPED_TRACE(odd);
        check(smoothed(plane, plane, plane, {0.05f, odd, true, 20}));
        check(smoothed(plane, plane, plane, {odd, 1.2f, true, 20}));
    }
    EXPECT_TRUE(smoothed(plane, plane, plane, {0.05f, std::nanf(""), true, 20})
                    .sameBits(smoothed(plane, plane, plane, {0.05f, 0.0f, true, 20})))
        << "an exponent of NaN truncates to 0";
}

TEST(EdgeSmoother, EveryVariantGivesTheSameBits) {
    for (const cv::Size size :
         {cv::Size(1, 1), cv::Size(13, 7), cv::Size(67, 31), cv::Size(128, 152)}) {
        const Plane plane = noise(size.width, size.height, 9);
        const Plane expected = smoothed(plane, plane, plane);
        test::forEachTarget(
            [&] { EXPECT_TRUE(smoothed(plane, plane, plane).sameBits(expected)) << size; });
    }
}

TEST(EdgeSmoother, TheResultDoesNotDependOnTheNumberOfThreads) {
    const Plane plane = noise(131, 97, 9);
    const Plane expected = smoothed(plane, plane, plane);
    test::forThreadCounts([&] {
        EXPECT_TRUE(smoothed(plane, plane, plane).sameBits(expected));
        Plane inSections[2] = {plane, plane};
#pragma omp parallel sections
        {
#pragma omp section
            inSections[0] = smoothed(plane, plane, plane);
#pragma omp section
            inSections[1] = smoothed(plane, plane, plane);
        }
        EXPECT_TRUE(inSections[0].sameBits(expected));
        EXPECT_TRUE(inSections[1].sameBits(expected));
    });
}

} // namespace
} // namespace vel
