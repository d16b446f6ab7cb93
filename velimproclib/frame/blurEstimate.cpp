#include "velimproclib/frame/blurEstimate.h"

#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/veldeblurcv/estimation/BlurEst.h"
#include "velimproclib/veldeblurcv/estimation/lumaToMat.h"
#include "velimproclib/veldeblurcv/estimation/ProgressSpan.h"

#include <algorithm>

namespace vel {

namespace {

/// An even side grows by one.
int oddSide(std::int32_t side) {
    return (side / 2) * 2 + 1;
}

/// Strengths too small to matter act as 0, and 2 is the most. Not-a-number passes, and acts as 0.
float cutStrength(float strength) {
    if (strength < 0.2f) {
        return 0.0f;
    }
    return strength > 2.0f ? 2.0f : strength;
}

void checkImage(const PlaneRecord* image) {
    if (image == nullptr) {
        throw "ornBlurEstimate - image_p ==NULL";
    }
    if (image->width < 1 || image->height < 1) {
        throw kNoPixels;
    }
    if (image->data == nullptr) {
        throw "ornBlurEstimate - image data ==NULL";
    }
    const std::int64_t pixelBytes = image->format == psC3U8 ? 3 : 6;
    if (image->height > 1 && image->step < image->width * pixelBytes) {
        throw "ornBlurEstimate - step shorter than a row";
    }
}

/// The top left part that the host asked for: an even request loses the last row or column.
void copyKernel(const cv::Mat& estimated, const KernelRecord& record) {
    float* out = record.data;
    for (int y = 0; y < record.height; ++y) {
        out = std::copy_n(estimated.ptr<float>(y), record.width, out);
    }
}

} // namespace

int32_t blurEstimate(ProgressRecord* progress, const PlaneRecord* image, KernelRecord* kernel,
                     float strength) {
    if (kernel == nullptr) {
        throw "ornBlurEstimate - kernel_p ==NULL";
    }
    if (kernel->width < 1 || kernel->height < 1) {
        kernel->width = kernel->height = kernel->anchorX = kernel->anchorY = 0;
        return VELORN_OK;
    }
    if (progress == nullptr) {
        throw "ornBlurEstimate - progress_p ==NULL";
    }
    if (kernel->data == nullptr) {
        throw "ornBlurEstimate - kernel data ==NULL";
    }
    checkImage(image);

    CProgressSpan span(progress);
    cv::Mat luminance;
    lumaToMat(*image, luminance);
    cv::Mat estimated(oddSide(kernel->height), oddSide(kernel->width), CV_32FC1);
    CBlurEst estimator;
    estimator.setup(luminance, estimated, &span);
    estimator.estimate(cutStrength(strength));
    copyKernel(estimator.m_kPyr[0], *kernel);
    span.finish();
    return VELORN_OK;
}

} // namespace vel
