#pragma once

namespace velorn {

/// How many pixels share a sample of the colour differences in a JPEG file: each pixel has its own
/// (4:4:4), two neighbours in a row share one (4:2:2), or four in a square do (4:2:0).
enum class Subsampling { none = 444, half = 422, quarter = 420 };

} // namespace velorn
