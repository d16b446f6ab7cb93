#include "restoration/pipeline/pictureNoise.h"

#include "restoration/noise/measureNoise.h"

#include <utility>

namespace restoration {

NoiseLevels pictureNoise(const PictureReader& picture, const VelornRestoreSettings& settings,
                         Team& team) {
    NoiseLevels noise;
    team.run([&] {
        ColourRows rows = colourRows(picture);
        rows.load = [load = std::move(rows.load), &team](int row, int channel, float* target) {
            team.cancellation().check();
            load(row, channel, target);
        };
        noise = measureNoise(rows);
    });
    if (settings.noise >= 0.0f) {
        noise.luminance = settings.noise;
    }
    return noise;
}

} // namespace restoration
