#pragma once

#include "hosts/command/pictures/RgbPixels.h"
#include "velorncore10.h"

namespace velorn {

/// `pixels` as a source of the library's calls. The record refers to the samples of `pixels`.
/// @throws Failure when a row is longer than the record's step can say.
PlaneRecord planeRecord(const RgbPixels& pixels);

} // namespace velorn
