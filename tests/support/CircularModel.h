#pragma once

#include <opencv2/core.hpp>

#include <algorithm>
#include <cmath>
#include <complex>
#include <random>

/// Planes, kernels and full complex spectra in double precision: the reference for the tests of the
/// deconvolution.
namespace vel::test {

using Complex = std::complex<double>;

/// A scene with edges, a ramp and weak noise that is not periodic.
inline cv::Mat scene(int side, unsigned seed = 1) {
    cv::Mat plane(side, side, CV_32FC1);
    std::mt19937 random(seed);
    std::normal_distribution<double> noise(0.0, 0.004);
    for (int r = 0; r < side; ++r) {
        for (int c = 0; c < side; ++c) {
            double value = 0.2 + 0.3 * c / side;
            const double x = c - side * 0.4;
            const double y = r - side * 0.55;
            value += x * x + y * y < side * side * 0.06 ? 0.35 : 0.0;
            value += (r / 12 + c / 9) % 5 == 0 ? 0.12 : 0.0;
            plane.at<float>(r, c) = static_cast<float>(value + noise(random));
        }
    }
    return plane;
}

/// A kernel with sum 1 and no symmetry.
inline cv::Mat unevenKernel(int rows, int cols, unsigned seed = 3) {
    cv::Mat kernel(rows, cols, CV_32FC1);
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> weight(0.0f, 1.0f);
    double sum = 0;
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            const double distance = std::hypot(r - rows / 2, c - cols / 2);
            kernel.at<float>(r, c) = weight(random) / static_cast<float>(1 + distance * distance);
            sum += kernel.at<float>(r, c);
        }
    }
    kernel *= 1 / sum;
    return kernel;
}

inline cv::Mat forward(const cv::Mat& plane) {
    cv::Mat wide;
    cv::Mat spectrum;
    plane.convertTo(wide, CV_64F);
    cv::dft(wide, spectrum, cv::DFT_COMPLEX_OUTPUT);
    return spectrum;
}

inline cv::Mat inverse(const cv::Mat& spectrum) {
    cv::Mat plane;
    cv::dft(spectrum, plane, cv::DFT_INVERSE | cv::DFT_SCALE | cv::DFT_REAL_OUTPUT);
    return plane;
}

/// An element of a spectrum as a complex number.
inline Complex& at(cv::Mat& spectrum, int v, int u) {
    return spectrum.at<Complex>(v, u);
}

/// An n by n plane with -1 at (0, 0) and +1 at (row, col).
inline cv::Mat differencePlane(int n, int row, int col) {
    cv::Mat plane = cv::Mat::zeros(n, n, CV_64FC1);
    plane.at<double>(0, 0) = -1;
    plane.at<double>(row, col) = 1;
    return plane;
}

inline cv::Mat centredKernel(const cv::Mat& kernel, int n) {
    cv::Mat plane = cv::Mat::zeros(n, n, CV_64FC1);
    for (int r = 0; r < kernel.rows; ++r) {
        for (int c = 0; c < kernel.cols; ++c) {
            plane.at<double>((r - kernel.rows / 2 + n) % n, (c - kernel.cols / 2 + n) % n) =
                kernel.at<float>(r, c);
        }
    }
    return plane;
}

/// The circular convolution of k and x.
inline cv::Mat blurred(const cv::Mat& plane, const cv::Mat& kernel) {
    cv::Mat x = forward(plane);
    cv::Mat k = forward(centredKernel(kernel, plane.rows));
    for (int v = 0; v < x.rows; ++v) {
        for (int u = 0; u < x.cols; ++u) {
            at(x, v, u) *= at(k, v, u);
        }
    }
    cv::Mat result;
    inverse(x).convertTo(result, CV_32F);
    return result;
}

inline double peakSignalToNoise(const cv::Mat& a, const cv::Mat& b) {
    const double error = cv::norm(a, b, cv::NORM_L2);
    return 20 * std::log10(std::sqrt(static_cast<double>(a.total())) / error);
}

} // namespace vel::test
