#include "Degradation.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <opencv2/imgproc.hpp>
#include <random>

namespace velorn::tools {
namespace {

/// Normally distributed numbers by the method of Box and Muller.
class NormalNumbers {
public:
    explicit NormalNumbers(std::uint32_t seed) : m_generator(seed) {}

    double next() {
        const double radius = std::sqrt(-2.0 * std::log(uniform()));
        return radius * std::cos(2.0 * std::numbers::pi * uniform());
    }

private:
    /// Above 0, at most 1.
    double uniform() { return (static_cast<double>(m_generator()) + 1.0) / 4294967296.0; }

    std::mt19937 m_generator;
};

} // namespace

cv::Mat blurInside(const cv::Mat& picture, const BlurKernel& kernel) {
    // filter2D correlates: rotated by 180 degrees, the kernel convolves.
    BlurKernel rotated = kernel;
    std::ranges::reverse(rotated.weights);
    const cv::Mat weights(rotated.height, rotated.width, CV_32FC1, rotated.weights.data());
    cv::Mat whole;
    cv::filter2D(picture, whole, CV_32F, weights);
    const cv::Rect inside(kernel.width / 2, kernel.height / 2, picture.cols - kernel.width + 1,
                          picture.rows - kernel.height + 1);
    return whole(inside).clone();
}

cv::Mat withNoise(const cv::Mat& picture, double sigma, std::uint32_t seed) {
    NormalNumbers numbers(seed);
    cv::Mat noisy = picture.clone();
    for (int y = 0; y < noisy.rows; ++y) {
        auto* row = noisy.ptr<float>(y);
        for (int x = 0; x < noisy.cols * noisy.channels(); ++x) {
            row[x] += static_cast<float>(sigma * numbers.next());
        }
    }
    return noisy;
}

} // namespace velorn::tools
