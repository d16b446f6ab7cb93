#pragma once

#include <cstdint>

namespace velorn {

/// About the bytes that reading, restoring and writing a picture takes, measured with pictures of
/// 6 and 24 megapixels.
/// @param channels 1..4
/// @param bits     8 or 16, of each sample
/// @param isBlind  whether the kernel is found in the picture
std::uint64_t restorationMemory(int width, int height, int channels, int bits, bool isBlind);

} // namespace velorn
