#pragma once

#include "SamplePictures.h"

#include <optional>

namespace velorn::tools {

/// The results for one blurred picture, in decibels; those of restorations after the best shift by
/// whole pixels.
struct BlindTrial {
    double blurred = 0.0;
    double blind = 0.0;
    double inPlace = 0.0;
    double known = 0.0;
    double likeness = 0.0;
    double seconds = 0.0; ///< processor time of the search
    float confidence = 0.0f;

    double gain() const { return blind - blurred; }
    double possibleGain() const { return known - blurred; }
    /// Squared error over that of the restoration with the true kernel.
    double errorRatio() const;
    bool isWorse() const { return gain() < 0.0; }
    bool isWarned() const { return confidence < 0.5f; }
};

/// Finds the kernel of a picture blurred by `truth` and restores the picture with both, with the
/// automatic settings of the library. Empty when the search finds no kernel.
std::optional<BlindTrial> blindTrial(const Photograph& photograph, const BlurKernel& truth);

} // namespace velorn::tools
