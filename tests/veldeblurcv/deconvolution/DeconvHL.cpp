#include "velimproclib/veldeblurcv/deconvolution/DeconvHL.h"

#include "tests/support/CircularModel.h"
#include "tests/support/EachTarget.h"
#include "tests/support/sameBits.h"
#include "velimproclib/veldeblurcv/shrinkage/BuiltShrinkTable.h"
#include "velimproclib/veldeblurcv/shrinkage/ShrinkTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace vel;
using namespace vel::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

using Shrink = std::function<double(int level, double gradient)>;

Shrink storedShrinkFunction(float alpha) {
    const int a = shrinkAlphaIndex(std::clamp(static_cast<double>(alpha), 0.0, 1.0));
    return [a](int level, double gradient) {
        const StoredShrink row = storedShrink(level, a);
        const double v = std::clamp(gradient, -10.0, 10.0);
        for (int k = 0; k + 1 < row.knots; ++k) {
            if (row.levels[k] <= v && v < row.levels[k + 1]) {
                const double slope = (static_cast<double>(row.values[k + 1]) - row.values[k]) /
                                     (static_cast<double>(row.levels[k + 1]) - row.levels[k]);
                return (v - row.levels[k]) * slope + row.values[k];
            }
        }
        return v;
    };
}

cv::Mat horizontalGradient(const cv::Mat& plane) {
    cv::Mat gradient = cv::Mat::zeros(plane.size(), CV_64FC1);
    plane.colRange(1, plane.cols).copyTo(gradient.colRange(0, plane.cols - 1));
    gradient.colRange(0, plane.cols - 1) -= plane.colRange(0, plane.cols - 1);
    return gradient;
}

cv::Mat verticalGradient(const cv::Mat& plane) {
    cv::Mat gradient;
    cv::transpose(horizontalGradient(plane.t()), gradient);
    return gradient;
}

/// wx(r, c-1) - wx(r, c), the first column cleared.
cv::Mat horizontalAdjoint(const cv::Mat& w) {
    cv::Mat adjoint = cv::Mat::zeros(w.size(), CV_64FC1);
    cv::Mat rest = adjoint.colRange(1, w.cols);
    cv::subtract(w.colRange(0, w.cols - 1), w.colRange(1, w.cols), rest);
    return adjoint;
}

cv::Mat adjoint(const cv::Mat& wx, const cv::Mat& wy) {
    cv::Mat vertical;
    cv::transpose(horizontalAdjoint(wy.t()), vertical);
    return vertical + horizontalAdjoint(wx);
}

cv::Mat shrunk(const cv::Mat& gradient, const Shrink& shrink, int level) {
    cv::Mat w(gradient.size(), CV_64FC1);
    std::transform(gradient.begin<double>(), gradient.end<double>(), w.begin<double>(),
                   [&](double v) { return shrink(level, v); });
    return w;
}

/// The method in double precision on full complex spectra.
cv::Mat plainDeconvolution(const cv::Mat& in, const cv::Mat& kernel, double lambda,
                           const Shrink& shrink) {
    const int n = in.rows;
    cv::Mat k = forward(centredKernel(kernel, n));
    cv::Mat dx = forward(differencePlane(n, 0, n - 1));
    cv::Mat dy = forward(differencePlane(n, n - 1, 0));
    cv::Mat y = forward(in);
    cv::Mat x;
    in.convertTo(x, CV_64F);
    double beta = 1;
    for (int level = 0; level < 6; ++level, beta *= 2 * std::sqrt(2.0)) {
        const cv::Mat wx = shrunk(horizontalGradient(x), shrink, level);
        const cv::Mat wy = shrunk(verticalGradient(x), shrink, level);
        cv::Mat spectrum = forward(adjoint(wx, wy));
        const double gamma = beta / lambda;
        for (int v = 0; v < n; ++v) {
            for (int u = 0; u < n; ++u) {
                const double prior = std::norm(at(dx, v, u)) + std::norm(at(dy, v, u));
                const double denominator = std::norm(at(k, v, u)) + gamma * prior;
                at(spectrum, v, u) =
                    (std::conj(at(k, v, u)) * at(y, v, u) + gamma * at(spectrum, v, u)) /
                    denominator;
            }
        }
        x = inverse(spectrum);
    }
    return x;
}

struct Settings {
    float lambda = 2000.0f;
    float alpha = 0.5f;
    bool useStored = true;
};

cv::Mat deconvolve(const cv::Mat& in, const cv::Mat& kernel, const Settings& settings = {}) {
    CDeconvHL deconv;
    deconv.setup(kernel, cv::Point(), in.size(), settings.lambda, settings.alpha,
                 settings.useStored);
    cv::Mat plane = in.clone();
    cv::Mat out(in.size(), CV_32FC1);
    deconv.Proc(plane, out);
    EXPECT_TRUE(sameBits(plane, in)) << "the observed plane must not change";
    return out;
}

/// Single and double precision may fall on different sides of a jump of the shrink function, which
/// changes a few pixels; all other pixels agree to rounding.
void expectClose(const cv::Mat& out, const cv::Mat& expected) {
    cv::Mat single;
    expected.convertTo(single, CV_32F);
    cv::Mat error;
    cv::absdiff(out, single, error);
    std::vector<float> errors(error.begin<float>(), error.end<float>());
    const auto rank = static_cast<std::ptrdiff_t>(errors.size() - errors.size() / 200);
    std::nth_element(errors.begin(), errors.begin() + rank, errors.end());
    EXPECT_LT(errors[static_cast<std::size_t>(rank)], 3e-5);
    EXPECT_LT(cv::mean(error)[0], 3e-6);
    EXPECT_LT(cv::norm(error, cv::NORM_INF), 0.02);
}

std::string setupFailure(cv::Size size) {
    try {
        CDeconvHL().setup(unevenKernel(5, 5), cv::Point(), size, 2000.0f, 0.5f, true);
    } catch (const char* text) {
        return text;
    }
    return {};
}

TEST(DeconvHL, AgreesWithTheMethodInDoublePrecision) {
    const cv::Mat sharp = scene(256);
    for (const cv::Mat& kernel : {unevenKernel(7, 7), unevenKernel(1, 9), unevenKernel(6, 4)}) {
        for (const float alpha : {0.0f, 0.3f, 0.5f, 0.8f, 1.0f}) {
            SCOPED_TRACE(testing::Message() << kernel.size() << " alpha " << alpha);
            const cv::Mat in = blurred(sharp, kernel);
            const cv::Mat out = deconvolve(in, kernel, {.lambda = 2000.0f, .alpha = alpha});
            expectClose(out, plainDeconvolution(in, kernel, 2000.0, storedShrinkFunction(alpha)));
        }
    }
}

TEST(DeconvHL, AgreesForWeakAndStrongDataTerms) {
    const cv::Mat kernel = unevenKernel(9, 5);
    const cv::Mat in = blurred(scene(256), kernel);
    for (const float lambda : {20.0f, 500.0f, 20000.0f}) {
        SCOPED_TRACE(lambda);
        expectClose(deconvolve(in, kernel, {.lambda = lambda}),
                    plainDeconvolution(in, kernel, lambda, storedShrinkFunction(0.5f)));
    }
}

TEST(DeconvHL, AgreesInBuiltMode) {
    const cv::Mat kernel = unevenKernel(5, 7);
    const cv::Mat in = blurred(scene(256), kernel);
    BuiltShrinkTable table;
    table.allocate(5);
    table.build(0.65f, 2 * std::sqrt(2.0), 4);
    const cv::Mat out = deconvolve(in, kernel, {.alpha = 0.65f, .useStored = false});
    expectClose(out, plainDeconvolution(in, kernel, 2000.0, [&](int level, double gradient) {
                    return static_cast<double>(table.at(level, static_cast<float>(gradient)));
                }));
}

TEST(DeconvHL, StoredTableIsCloseToTheBuiltOne) {
    const cv::Mat kernel = unevenKernel(7, 7);
    const cv::Mat in = blurred(scene(256), kernel);
    for (const float alpha : {0.5f, 0.8f}) {
        const cv::Mat stored = deconvolve(in, kernel, {.alpha = alpha});
        const cv::Mat built = deconvolve(in, kernel, {.alpha = alpha, .useStored = false});
        EXPECT_GT(peakSignalToNoise(stored, built), 60.0) << alpha;
    }
}

TEST(DeconvHL, RestoresABlurredScene) {
    const cv::Mat kernel = unevenKernel(9, 9);
    const cv::Mat sharp = scene(256);
    const cv::Mat in = blurred(sharp, kernel);
    EXPECT_GT(peakSignalToNoise(deconvolve(in, kernel, {.alpha = 0.8f}), sharp),
              peakSignalToNoise(in, sharp) + 5.0);
}

TEST(DeconvHL, AlphaIsCutToZeroAndOne) {
    const cv::Mat kernel = unevenKernel(5, 5);
    const cv::Mat in = blurred(scene(256), kernel);
    EXPECT_TRUE(sameBits(deconvolve(in, kernel, {.alpha = -1.0f}),
                         deconvolve(in, kernel, {.alpha = 0.0f})));
    EXPECT_TRUE(
        sameBits(deconvolve(in, kernel, {.alpha = 3.0f}), deconvolve(in, kernel, {.alpha = 1.0f})));
    EXPECT_TRUE(sameBits(deconvolve(in, kernel, {.alpha = 3.0f, .useStored = false}),
                         deconvolve(in, kernel, {.alpha = 1.0f, .useStored = false})));
}

TEST(DeconvHL, PlanesThatAreNotSquareFailBeforeTheCheckOfTheirSize) {
    EXPECT_EQ(setupFailure({256, 512}), "CDeconvHL::setup - m_w != m_h");
    EXPECT_EQ(setupFailure({300, 301}), "CDeconvHL::setup - m_w != m_h");
}

TEST(DeconvHL, OnlyTheThreeTileSidesAreAccepted) {
    for (const int side : {300, 0, -1, 128, 2048}) {
        EXPECT_EQ(setupFailure({side, side}), "CDeconvHL::setup - size not 256/512/1024");
    }
    for (const int side : {256, 512, 1024}) {
        EXPECT_EQ(setupFailure({side, side}), "");
    }
}

TEST(DeconvHL, AnEvenKernelIsCentredAtHalfItsSides) {
    // A single weight at (rows/2, cols/2) is no blur; one step beside it is a shift.
    const cv::Mat in = scene(256);
    cv::Mat kernel = cv::Mat::zeros(4, 6, CV_32FC1);
    kernel.at<float>(2, 3) = 1.0f;
    cv::Mat shifted = cv::Mat::zeros(4, 6, CV_32FC1);
    shifted.at<float>(2, 2) = 1.0f;
    const Settings sharpening = {.lambda = 1e6f, .alpha = 1.0f};
    const cv::Mat still = deconvolve(in, kernel, sharpening);
    const cv::Mat moved = deconvolve(in, shifted, sharpening);
    EXPECT_LT(cv::norm(still, in, cv::NORM_INF), 1e-3);
    // The blur with the weight left of the centre moves the scene left; the result moves it right.
    EXPECT_LT(cv::norm(moved(cv::Rect(2, 1, 250, 250)), in(cv::Rect(1, 1, 250, 250)), cv::NORM_INF),
              5e-3);
}

TEST(DeconvHL, EveryProcessorVariantGivesTheSameBits) {
    const cv::Mat kernel = unevenKernel(7, 7);
    const cv::Mat in = blurred(scene(256), kernel);
    for (const float alpha : {0.5f, 0.8f}) {
        const cv::Mat best = deconvolve(in, kernel, {.alpha = alpha});
        forEachTarget([&] {
            EXPECT_TRUE(sameBits(deconvolve(in, kernel, {.alpha = alpha}), best)) << alpha;
        });
    }
}

TEST(DeconvHL, AKernelLargerThanThePlaneWraps) {
    cv::Mat in = scene(256);
    cv::Mat kernel = cv::Mat::zeros(601, 523, CV_32FC1);
    kernel.at<float>(300, 261) = 0.75f;
    kernel.at<float>(300 + 256, 261 - 256) = 0.25f; // wraps onto the centre
    const cv::Mat out = deconvolve(in, kernel, {.lambda = 1e6f, .alpha = 1.0f});
    EXPECT_LT(cv::norm(out, in, cv::NORM_INF), 1e-3);
}

TEST(DeconvHL, AnySettingsAndKernelsGiveAResult) {
    const cv::Mat in = scene(256);
    cv::Mat kernel = unevenKernel(5, 5);
    const auto spoils = [&](const Settings& settings) {
        return std::isnan(deconvolve(in, kernel, settings).at<float>(17, 3));
    };
    EXPECT_TRUE(spoils({.lambda = kNan}));
    EXPECT_TRUE(spoils({.lambda = 0.0f})) << "gamma is infinite";
    EXPECT_FALSE(spoils({.alpha = kNan})) << "a NaN selects the first rows of the table";
    EXPECT_TRUE(spoils({.lambda = kNan, .alpha = kNan, .useStored = false}));
    kernel.at<float>(1, 1) = kNan;
    EXPECT_TRUE(spoils({}));
    kernel.at<float>(1, 1) = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(spoils({}));
    kernel = cv::Mat();
    EXPECT_TRUE(spoils({})) << "0/0 at the lowest frequency";
}

TEST(DeconvHL, ThePriorDoesNotSeeTheStepsAcrossTheSeam) {
    // Strong steps along the first and last columns and rows, far above every threshold. A prior
    // that saw the seam, or an adjoint that included it, would differ from the model, which
    // excludes both.
    const cv::Mat kernel = unevenKernel(5, 5);
    cv::Mat in(256, 256, CV_32FC1, cv::Scalar(0.5));
    in.col(0).setTo(8.0);
    in.col(255).setTo(-8.0);
    in.row(0).setTo(-6.0);
    in.row(255).setTo(6.0);
    const cv::Mat out = deconvolve(in, kernel, {.lambda = 20.0f, .alpha = 1.0f});
    const cv::Mat expected = plainDeconvolution(in, kernel, 20.0, storedShrinkFunction(1.0f));
    cv::Mat single;
    expected.convertTo(single, CV_32F);
    EXPECT_LT(cv::norm(out, single, cv::NORM_INF), 1e-4);
}

} // namespace
