#pragma once

#include "hosts/command/blind/BlindEstimate.h"
#include "hosts/command/blind/KernelOrientation.h"

namespace velorn {

/// How the kernel of a picture with unknown blur is found. docs/blind-estimation.md describes how
/// the defaults were chosen.
struct BlindSettings {
    KernelSize size{15, 15};
    /// See `estimateKernel`.
    float strength = 0.0f;
    Turn turn = Turn::Auto;
    /// The kernel is searched in the square of this many pixels per side with the most texture.
    int partSide = 512;
};

/// The strength (`deconvLambda`) of a restoration with a kernel that was found in the picture:
/// `defaultStrength`, limited to 3000, because a strong deconvolution turns errors of the kernel
/// into ringing.
float blindStrength(double noiseLevel);

/// A kernel that was found in a picture.
struct BlindKernel {
    BlurKernel kernel;
    /// Whether a restoration with the kernel at `blindStrength` is likely to be better than the
    /// picture itself, judged by `misfit`.
    bool isHelpful = false;
};

/// Finds the kernel of `pixels` in the square with the most texture. Restorations of that square,
/// deconvolution only, decide the orientation of the kernel and whether it helps.
/// @returns the kernel, or nothing when `progress` cancelled; see `estimateKernel` for its calls.
/// The
///          estimate itself, the longest step, runs to its end.
/// @throws Failure when the kernel does not fit the picture, the picture has too few edges, or the
///         library fails.
std::optional<BlindKernel> findKernel(const RgbPixels& pixels, const BlindSettings& settings,
                                      const ProgressFunction& progress);

} // namespace velorn
