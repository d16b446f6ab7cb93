#include "hosts/command/codecs/encodePnm.h"

#include <string>

namespace velorn {

std::vector<unsigned char> encodePnm(const Pixels& pixels) {
    const std::string header = std::string(pixels.channels == 1 ? "P5" : "P6") + "\n" +
                               std::to_string(pixels.width) + " " + std::to_string(pixels.height) +
                               "\n" + (pixels.bits() == 8 ? "255" : "65535") + "\n";
    std::vector<unsigned char> bytes(header.begin(), header.end());
    if (const auto* samples = std::get_if<std::vector<std::uint8_t>>(&pixels.samples)) {
        bytes.insert(bytes.end(), samples->begin(), samples->end());
    } else {
        const auto& words = std::get<std::vector<std::uint16_t>>(pixels.samples);
        bytes.reserve(bytes.size() + 2 * words.size());
        for (const std::uint16_t word : words) {
            bytes.push_back(static_cast<unsigned char>(word >> 8));
            bytes.push_back(static_cast<unsigned char>(word & 255));
        }
    }
    return bytes;
}

} // namespace velorn
