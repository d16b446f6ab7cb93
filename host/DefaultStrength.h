#pragma once

namespace velorn {

/// The strength (`deconvLambda`) for a picture whose luminance has noise of this standard
/// deviation, in levels of an 8-bit picture: the stronger the noise, the weaker the deconvolution.
/// docs/default-strength.md tells how the rule was found.
float defaultStrength(double noiseLevel);

} // namespace velorn
