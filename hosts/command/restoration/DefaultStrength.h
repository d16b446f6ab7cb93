#pragma once

namespace velorn {

/// The strength (`deconvLambda`) for a picture whose luminance has noise of this standard
/// deviation, in levels of an 8-bit picture: 30000 over its square, from 500 to 50000.
/// docs/default-strength.md tells how the rule was found.
float defaultStrength(double noiseLevel);

} // namespace velorn
