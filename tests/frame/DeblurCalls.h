#pragma once

#include "tests/frame/LoadedLibrary.h"

#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace vel::test {

constexpr float kNoSharpening = 1.0f;

/// The settings of ornDeblurSharpen. The defaults run no stage.
struct DeblurSettings {
    int32_t deconvolve = 0;
    float deconvLambda = 20000.0f;
    float deconvAlpha = 0.5f;
    float limitStrength = 0.0f;
    float edgeRadius = 0.85f;
    float edgeSlope = 0.0f;
    float edgeGain = kNoSharpening;
    float edgeFloor = 0.005f;
    float detailGain = 0.0f;
    float detailGamma = 0.0f;
};

/// Calls ornDeblurSharpen of the loaded library on matrices of three channels.
class DeblurCalls : public ::testing::Test {
protected:
    int32_t run(const cv::Mat& source, cv::Mat& target, KernelRecord kernel,
                const DeblurSettings& settings, ProgressRecord* progress = nullptr) const {
        ProgressRecord silent{100, 100, nullptr, nullptr, 0};
        ImageRecord image{source.depth() == CV_8U ? psC3U8 : psC3U16,
                          source.data,
                          static_cast<int32_t>(source.step),
                          target.data,
                          static_cast<int32_t>(target.step),
                          source.cols,
                          source.rows};
        return call(progress != nullptr ? progress : &silent, &image, &kernel, settings);
    }
    int32_t call(ProgressRecord* progress, ImageRecord* image, KernelRecord* kernel,
                 const DeblurSettings& s) const {
        return deblurSharpen(progress, image, kernel, s.deconvolve, s.deconvLambda, s.deconvAlpha,
                             s.limitStrength, s.edgeRadius, s.edgeSlope, s.edgeGain, s.edgeFloor,
                             s.detailGain, s.detailGamma);
    }
    KernelRecord disc(float radius) {
        kernelValues.assign(10000, 0.0f);
        KernelRecord record{0, 0, 0, 0, kernelValues.data()};
        EXPECT_EQ(createKernel(1, radius, 0.0f, &record), VELORN_OK);
        return record;
    }
    static KernelRecord sides(int32_t width, int32_t height) {
        return {width, height, 0, 0, nullptr};
    }

    LoadedLibrary library;
    decltype(ornDeblurSharpen)* deblurSharpen = VELORN_FIND(library, ornDeblurSharpen);
    decltype(ornCreateKernel)* createKernel = VELORN_FIND(library, ornCreateKernel);
    decltype(getErrMsg)* errorMessage = VELORN_FIND(library, getErrMsg);
    std::vector<float> kernelValues;
};

inline cv::Mat noise(cv::Size size, int type, int highest, unsigned seed = 7) {
    cv::Mat image(size, type);
    cv::RNG random(seed);
    random.fill(image, cv::RNG::UNIFORM, 0, highest + 1);
    return image;
}

inline cv::Mat flat(cv::Size size, int level) {
    return cv::Mat(size, CV_8UC3, cv::Scalar::all(level));
}

inline int largestDifference(const cv::Mat& a, const cv::Mat& b) {
    return static_cast<int>(cv::norm(a, b, cv::NORM_INF));
}

} // namespace vel::test
