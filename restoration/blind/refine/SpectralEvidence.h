#pragma once

#include "restoration/blind/spectra/SquareTransform.h"
#include "restoration/blind/squares/SquareKernel.h"
#include "restoration/planes/Plane.h"
#include "restoration/threads/Cancellation.h"

#include <vector>

namespace restoration {

/// How well the power spectrum of a kernel explains the power spectrum of a blurred picture.
///
/// The mean P of the periodograms of windows of the picture (Welch, IEEE Trans. Audio and
/// Electroacoustics 15, 1967) is compared with the model S = A |K|^2 f^-3 + N: the spectrum of a
/// sharp picture, whose level A is free in each patch of the frequency plane, times the spectrum of
/// the kernel, plus white noise. The misfit is the mean of ln S + P / S (Whittle, Arkiv foer
/// Matematik 2, 1953), with the best levels. It sees all pixels, texture as well as edges, but no
/// phases: where the kernel lies does not matter, and a kernel rotated by 180 degrees fits as well.
/// Not thread-safe.
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
    struct Frequency {
        int patch = -1;     ///< -1: not looked at
        double prior = 0.0; ///< f^-3
        double power = 0.0; ///< P
        double blur = 0.0;  ///< |K|^2
    };

    /// The misfit of `kernel`, and its gradient by the weights where `gradient` is not null.
    double evaluate(const SquareKernel& kernel, std::vector<double>* gradient);
    void setKernel(const SquareKernel& kernel);
    void resetLevels();
    void fitLevels(int rounds);
    void measure(const Plane& picture);
    void addWindow(const Plane& picture, int left, int top);
    void markPatches();
    template <class Work>
    void forEachFrequency(const Work& work);

    SquareTransform m_transform;
    Plane m_plane;
    vel::AlignedFloats m_spectrum;
    std::vector<double> m_window; ///< of Hann
    double m_noise;
    std::vector<Frequency> m_frequencies; ///< in the order of the half spectrum's slots
    std::vector<double> m_levels;         ///< A of each patch
    double m_count = 0.0;                 ///< frequencies looked at
    double m_unblurred = 0.0;
};

} // namespace restoration
