#include "velimproclib/veldeblurcv/deconvolution/kernelSpectrum.h"

#include "velimproclib/veldeblurcv/deconvolution/planeTransforms.h"

namespace vel {
namespace {

int wrap(int position, int side) {
    const int remainder = position % side;
    return remainder < 0 ? remainder + side : remainder;
}

} // namespace

cv::Mat placeKernel(const cv::Mat& kernel, int side) {
    cv::Mat plane = cv::Mat::zeros(side, side, CV_32FC1);
    for (int r = 0; r < kernel.rows; ++r) {
        const float* from = kernel.ptr<float>(r);
        float* to = plane.ptr<float>(wrap(r - kernel.rows / 2, side));
        for (int c = 0; c < kernel.cols; ++c) {
            to[wrap(c - kernel.cols / 2, side)] += from[c];
        }
    }
    return plane;
}

void transformKernel(const cv::Mat& kernel, const RealFft2D& fft, ThreadScratch& scratch,
                     AlignedFloats& spectrum) {
    const cv::Mat plane = placeKernel(kernel, fft.width());
    spectrum.resize(fft.spectrumFloats());
    forwardRows(fft, plane, spectrum.data(), scratch);
    forEachBlock(fft, [&](int block, std::size_t offset) {
        fft.forwardColumns(spectrum.data() + offset, block);
    });
}

} // namespace vel
