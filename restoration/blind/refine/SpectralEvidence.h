#pragma once

#include "restoration/blind/refine/SpectrumModel.h"
#include "restoration/blind/spectra/SquareTransform.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <vector>

namespace restoration {

/// How well the power spectrum of a kernel explains the power spectrum of a blurred picture.
///
/// The mean P of the periodograms of windows of the picture (meanPeriodogram.h) is compared with
/// the model S (SpectrumModel.h): the spectrum of a sharp picture, whose level is free in each
/// patch of the frequency plane, times the spectrum of the kernel, plus white noise. The misfit is
/// the mean of ln S + P / S (Whittle, Arkiv foer Matematik 2, 1953), with the best levels. It sees
/// all pixels, texture as well as edges, but no phases: where the kernel lies does not matter, and
/// a kernel rotated by 180 degrees fits as well. Not thread-safe.
class SpectralEvidence {
public:
    /// @param picture       luminance, 1.0 = white, at least 32 by 32 pixels
    /// @param noiseVariance above 0, on the same scale
    /// @throws Failure VELORN_STATUS_CANCELLED; std::bad_alloc
    SpectralEvidence(const Plane& picture, double noiseVariance, const Cancellation& cancellation);

    /// The side of the windows. Kernels have at most this side.
    int side() const noexcept { return m_transform.side(); }

    /// The misfit of `kernel` less that of the kernel of a single pixel. Negative where the picture
    /// looks blurred by it.
    double misfit(const SquareKernel& kernel);

    /// Moves `kernel` towards a smaller misfit, but not far: the misfit grows by 0.05 times the
    /// squared distance from the kernel as it was, in units of that kernel's summed squares. The
    /// weights stay positive, and the sum 1.
    void improve(SquareKernel& kernel);

private:
    /// The misfit of `kernel`, and its gradient by the weights where `gradient` is not null.
    double evaluate(const SquareKernel& kernel, std::vector<double>* gradient);
    void fitLevelsTo(const SquareKernel& kernel);
    void setKernel(const SquareKernel& kernel);

    SquareTransform m_transform;
    Plane m_plane;
    SpectrumModel m_model;
    vel::AlignedFloats m_spectrum;
    double m_unblurred = 0.0;
};

} // namespace restoration
