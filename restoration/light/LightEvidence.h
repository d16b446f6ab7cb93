#pragma once

#include "restoration/kernels/Kernel.h"
#include "restoration/light/ToneCurves.h"
#include "restoration/noise/NoiseLevels.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/threads/Team.h"

#include <span>

namespace restoration {

/// What speaks for light, from the comparison in `lightEvidence`.
struct LightEvidence {
    /// Where the picture lies between what the models predict: 0 as if light was blurred, 1 as if
    /// display values were.
    float position = 1.0f;
    /// The distance between the predictions of the two models.
    float contrast = 0.0f;
    /// How much more detail than it predicts itself the model of display values needs.
    float excess = 0.0f;

    bool isForLight() const noexcept;
};

/// Decides whether a picture looks like blurred light or like blurred display values.
///
/// The wrong model needs rings around edges to explain the picture. Both models restore some
/// patches, each so strongly that the residual has 0.8 of the variance of the noise, and the cost
/// of the gradient prior in display values is compared: s = log(cost in light / cost in display
/// values). Noise and content shift s, therefore each model predicts it: its restoration of the
/// patches is blurred and coded again under that model, noise is added, and s is measured in the
/// same way (a parametric bootstrap: B. Efron, R. Tibshirani, An introduction to the bootstrap,
/// 1993). The picture decides which prediction is nearer. Display values win where the evidence is
/// not clear, and where the kernel explains the picture under neither model.
///
/// Patches are restored in parallel and sums added in order: the result depends on the picture
/// only.
/// @param kernels  one for all colour channels, or one for each; not empty
/// @param noise    of the picture, as stored
/// @throws Failure VELORN_STATUS_CANCELLED, std::bad_alloc
LightEvidence lightEvidence(const PictureReader& picture, std::span<const Kernel* const> kernels,
                            const ToneCurves& curves, const NoiseLevels& noise, Team& team);

} // namespace restoration
