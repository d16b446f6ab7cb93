#pragma once

#include "hosts/command/blind/BlindEstimate.h"
#include "hosts/command/blind/KernelTurn.h"
#include "hosts/command/terminal/Interrupt.h"
#include "hosts/command/terminal/ProgressBar.h"

namespace velorn {

/// How a picture's kernel is found when nothing is known about its blur.
/// docs/blind-estimation.md tells how the standards were found.
struct BlindSettings {
    KernelSize size{15, 15};
    /// See `estimateKernel`.
    float strength = 0.0f;
    Turn turn = Turn::Auto;
    /// The kernel is looked for in the part of so many pixels a side that has the most texture.
    int partSide = 512;
};

/// The strength (`deconvLambda`) for a restoration with a kernel that was found in the picture:
/// that of `defaultStrength`, held back, since a strong deconvolution turns what is wrong with the
/// kernel into ringing.
float blindStrength(double noiseLevel);

/// A kernel that was found blindly.
struct BlindKernel {
    BlurKernel kernel;
    /// Whether a restoration with it, at `blindStrength`, is likely to be better than the picture,
    /// by `doubtfulness`.
    bool isHelpful = false;
};

/// Finds the kernel of `pixels` in the part that has the most texture. Restorations of that part
/// decide which way round it is and whether it helps: plain ones, whatever is to be done with the
/// kernel afterwards.
/// @throws Failure when there are too few edges; Interrupted, as soon as the estimate returns.
BlindKernel findKernel(const RgbPixels& pixels, const BlindSettings& settings,
                       const Interrupt& interrupt, ProgressBar& bar);

/// The warning for a kernel that does not help.
inline constexpr const char* kNotHelpful =
    "the kernel found explains the picture badly; the restoration may be worse than the picture, "
    "and another kernel size may do better";

} // namespace velorn
