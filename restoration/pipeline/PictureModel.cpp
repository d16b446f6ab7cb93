#include "restoration/pipeline/PictureModel.h"

#include "restoration/clipping/clippedValues.h"
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

} // namespace

PictureModel::PictureModel(const PictureReader& picture, std::span<const Kernel* const> kernels,
                           const VelornRestoreSettings& settings, const NoiseLevels& stored,
                           Team& team)
    : m_noise(stored) {
    if (kernels.empty()) {
        return;
    }
    if (settings.light != VELORN_LIGHT_DISPLAY) {
        ToneCurves curves = curvesOf(settings);
        if (settings.light == VELORN_LIGHT_LINEAR ||
            lightEvidence(picture, kernels, curves, stored, team).isForLight()) {
            m_light.emplace(std::move(curves));
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
