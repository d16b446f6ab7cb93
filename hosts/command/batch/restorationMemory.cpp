#include "hosts/command/batch/restorationMemory.h"

namespace velorn {

std::uint64_t restorationMemory(int width, int height, int channels, int bits, bool isBlind) {
    constexpr std::uint64_t kMebi = 1024 * 1024;
    // Tiles and their spectra, for each thread.
    constexpr std::uint64_t kTiles = 24 * kMebi;
    // The samples, their encoded form and what the codecs keep.
    constexpr std::uint64_t kCopies = 4;
    constexpr std::uint64_t kSearch = 64 * kMebi;
    const auto bytes = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) *
                       static_cast<std::uint64_t>(channels) * static_cast<std::uint64_t>(bits / 8);
    return kTiles + kCopies * bytes + (isBlind ? kSearch : 0);
}

} // namespace velorn
