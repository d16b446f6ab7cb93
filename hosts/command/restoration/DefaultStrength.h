#pragma once

namespace velorn {

/// The strength (`deconvLambda`) for a picture whose luminance has noise of this standard
/// deviation, in levels of an 8-bit picture: 30000 / noiseLevel^2, limited to 500..50000.
/// docs/default-strength.md describes how the rule was found.
float defaultStrength(double noiseLevel);

} // namespace velorn
