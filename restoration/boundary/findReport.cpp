#include "restoration/boundary/findReport.h"

#include <algorithm>

namespace restoration {
namespace {

VelornKernelKind hostKind(KernelKind::Shape shape) noexcept {
    switch (shape) {
    case KernelKind::Shape::None:
        return VELORN_KIND_NONE;
    case KernelKind::Shape::Gaussian:
        return VELORN_KIND_GAUSSIAN;
    case KernelKind::Shape::Disc:
        return VELORN_KIND_DISC;
    case KernelKind::Shape::Motion:
        return VELORN_KIND_MOTION;
    case KernelKind::Shape::Free:
        break;
    }
    return VELORN_KIND_FREE;
}

/// The longer side of the rectangle around the weights above 0.
int longerSide(const Kernel& kernel) noexcept {
    int left = kernel.width;
    int right = -1;
    int top = kernel.height;
    int bottom = -1;
    for (int y = 0; y < kernel.height; ++y) {
        for (int x = 0; x < kernel.width; ++x) {
            if (kernel.at(y, x) > 0.0f) {
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = y;
            }
        }
    }
    return std::max(right - left, bottom - top) + 1;
}

} // namespace

VelornFindReport findReport(const FoundKernel& found, std::size_t candidates) noexcept {
    VelornFindReport report{};
    report.confidence = found.confidence;
    report.agreement = found.agreement;
    report.misfit = found.misfit;
    report.kind = hostKind(found.kind.shape);
    report.extent = found.kind.shape == KernelKind::Shape::Free
                        ? static_cast<float>(longerSide(found.kernel))
                        : found.kind.extent;
    report.angle = found.kind.angle;
    report.score = static_cast<float>(found.score);
    report.parts = found.parts;
    report.partAgreement = found.partAgreement;
    report.candidates = static_cast<std::int32_t>(candidates);
    return report;
}

} // namespace restoration
