#include "velimproclib/frame/blurEstimate.h"

#include "velimproclib/frame/hostRows.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/veldeblurcv/estimation/BlurEst.h"
#include "velimproclib/veldeblurcv/estimation/lumaToMat.h"
#include "velimproclib/veldeblurcv/estimation/progress/ProgressSpan.h"

#include <algorithm>

namespace vel {

namespace {

/// Increases an even side by one.
int oddSide(std::int32_t side) {
    return (side / 2) * 2 + 1;
}

/// Strengths below 0.2 become 0, strengths above 2 become 2. NaN is returned and acts as 0.
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
    if (isShorterThanARow(image->step, image->format, image->width, image->height)) {
        throw "ornBlurEstimate - step shorter than a row";
    }
}

/// Copies the upper left part that the host asked for: an even side drops the last row or column.
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
    // Callbacks may change the record of the host.
    const KernelRecord wanted = *kernel;

    CProgressSpan span(progress);
    cv::Mat luminance;
    lumaToMat(*image, luminance);
    cv::Mat estimated(oddSide(wanted.height), oddSide(wanted.width), CV_32FC1);
    CBlurEst estimator;
    estimator.setup(luminance, estimated, span);
    estimator.estimate(cutStrength(strength));
    copyKernel(estimator.m_kPyr[0], wanted);
    span.finish();
    return VELORN_OK;
}

} // namespace vel
