#include "restoration/pipeline/PictureModel.h"

#include "restoration/clipping/clippedValues.h"
#include "restoration/failures/Failure.h"
#include "restoration/light/LightEvidence.h"
#include "restoration/light/noiseInLight.h"
#include "restoration/light/profileCurves.h"

#include <cstddef>
#include <utility>

namespace restoration {
namespace {

ToneCurves curvesOf(const VelornRestoreSettings& settings) {
    if (settings.profile == nullptr) {
        return ToneCurves();
    }
    return profileCurves({static_cast<const std::byte*>(settings.profile), settings.profileSize});
}

/// The same; nothing for a profile without usable curves.
std::optional<ToneCurves> usableCurvesOf(const VelornRestoreSettings& settings) {
    try {
        return curvesOf(settings);
    } catch (const Failure&) {
        return std::nullopt;
    }
}

} // namespace

PictureModel::PictureModel(const PictureReader& picture, std::span<const Kernel* const> kernels,
                           const VelornRestoreSettings& settings, const NoiseLevels& stored,
                           Team& team)
    : m_noise(stored) {
    if (kernels.empty()) {
        return;
    }
    if (settings.light == VELORN_LIGHT_LINEAR) {
        m_light = curvesOf(settings);
    } else if (settings.light == VELORN_LIGHT_AUTOMATIC) {
        std::optional<ToneCurves> curves = usableCurvesOf(settings);
        if (curves && lightEvidence(picture, kernels, *curves, stored, team).isForLight()) {
            m_light = std::move(curves);
        }
    }
    team.run([&] {
        if (m_light) {
            m_noise = noiseInLight(picture, *m_light, stored);
        }
        if (settings.recoverClipped == 0) {
            return;
        }
        if (const auto values = clippedValues(picture, team.cancellation())) {
            m_clipping.emplace(*values, kernels, static_cast<std::size_t>(picture.colours()),
                               stored, light());
        }
    });
}

} // namespace restoration
