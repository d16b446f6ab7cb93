#pragma once

#include "restoration/clipping/PictureClipping.h"
#include "restoration/kernels/Kernel.h"
#include "restoration/light/ToneCurves.h"
#include "restoration/noise/NoiseLevels.h"
#include "restoration/pictures/PictureReader.h"
#include "restoration/threads/Team.h"
#include "velorn.h"

#include <optional>
#include <span>

namespace restoration {

/// What the samples of a picture say about the light that was blurred: the light model and the
/// clipped pixels. Decided once per picture, whatever the region; constant after construction.
class PictureModel {
public:
    /// Without kernels nothing is deconvolved: display values, no clipped pixels.
    /// @param stored  the noise of the picture
    /// @throws Failure VELORN_STATUS_INVALID_ARGUMENT for linear light and a profile without usable
    ///         curves, VELORN_STATUS_CANCELLED; std::bad_alloc
    PictureModel(const PictureReader& picture, std::span<const Kernel* const> kernels,
                 const VelornRestoreSettings& settings, const NoiseLevels& stored, Team& team);
    PictureModel(const PictureModel&) = delete;
    PictureModel& operator=(const PictureModel&) = delete;

    /// The curves to undo; null: the stored values are restored.
    const ToneCurves* light() const noexcept { return m_light ? &*m_light : nullptr; }
    /// Null: all pixels count as known.
    const PictureClipping* clipping() const noexcept { return m_clipping ? &*m_clipping : nullptr; }
    /// The noise of the values that are restored.
    const NoiseLevels& noise() const noexcept { return m_noise; }

private:
    std::optional<ToneCurves> m_light;
    std::optional<PictureClipping> m_clipping;
    NoiseLevels m_noise;
};

} // namespace restoration
