#pragma once

#include "restoration/light/ToneCurves.h"
#include "restoration/noise/NoiseLevels.h"
#include "restoration/pictures/PictureReader.h"

namespace restoration {

/// The noise of the light of a picture, in levels of 255 of its scale, from the noise of the values
/// that it stores. The curves make the noise depend on brightness; the result is 1.2 times its root
/// mean square over some rows of the picture. The factor makes up for the dark parts, where coding
/// enlarges the noise that a restoration carries there: without it strengths are half too high. The
/// noise of the channels counts as independent.
/// @throws std::bad_alloc
NoiseLevels noiseInLight(const PictureReader& picture, const ToneCurves& curves,
                         const NoiseLevels& stored);

} // namespace restoration
