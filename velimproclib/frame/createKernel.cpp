#include "velimproclib/frame/createKernel.h"

#include "velimproclib/veldeblurcv/kernels/createDiscKernel.h"
#include "velimproclib/veldeblurcv/kernels/createGaussianKernel.h"
#include "velimproclib/veldeblurcv/kernels/createMotionKernel.h"

#include <algorithm>

namespace vel {

namespace {

enum KernelType : int32_t { kGaussian = 0, kDisc = 1, kMotion = 2 };

void fillRecord(const cv::Mat& shape, KernelRecord& record) {
    record.width = shape.cols;
    record.height = shape.rows;
    record.anchorX = shape.cols / 2;
    record.anchorY = shape.rows / 2;
    float* out = record.data;
    for (int row = 0; row < shape.rows; ++row) {
        out = std::copy_n(shape.ptr<float>(row), shape.cols, out);
    }
}

} // namespace

int32_t createKernel(int32_t type, float paramA, float paramB, KernelRecord* kernel) {
    if (kernel == nullptr || kernel->data == nullptr) {
        return VELORN_BAD_ARGUMENT;
    }
    switch (type) {
    case kGaussian:
        fillRecord(createGaussianKernel(gaussianKernelSize(paramA), paramA), *kernel);
        return VELORN_OK;
    case kDisc:
        fillRecord(createDiscKernel(paramA), *kernel);
        return VELORN_OK;
    case kMotion:
        fillRecord(createMotionKernel(paramA, paramB), *kernel);
        return VELORN_OK;
    default:
        return VELORN_BAD_ARGUMENT;
    }
}

} // namespace vel
