#include "velimproclib/veldeblurcv/deconvolution/planeTransforms.h"

namespace vel {

void forwardRows(const RealFft2D& fft, const cv::Mat& plane, float* spectrum,
                 ThreadScratch& scratch) {
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        fft.forwardRows(plane.ptr<float>(), static_cast<std::ptrdiff_t>(plane.step), group,
                        spectrum, scratch.of(thread));
    });
}

void inverseRows(const RealFft2D& fft, const float* spectrum, cv::Mat& plane,
                 ThreadScratch& scratch) {
    forEachPiece(fft.groupCount(), [&](int group, int thread) {
        fft.inverseRows(spectrum, group, plane.ptr<float>(),
                        static_cast<std::ptrdiff_t>(plane.step), scratch.of(thread));
    });
}

} // namespace vel
