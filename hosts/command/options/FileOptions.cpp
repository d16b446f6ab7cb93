#include "hosts/command/options/FileOptions.h"

#include "hosts/command/terminal/Failure.h"

namespace velorn {
namespace {

/// Sides of the library's pictures are 32-bit integers.
constexpr double kLargestMaxPixels = 1e12;

Subsampling subsamplingNamed(const std::string& name) {
    for (const Subsampling value : {Subsampling::none, Subsampling::half, Subsampling::quarter}) {
        if (name == std::to_string(static_cast<int>(value))) {
            return value;
        }
    }
    throw UsageFailure("--subsampling must be 444, 422 or 420");
}

} // namespace

void FileOptions::addTo(ArgumentParser& parser) {
    m_format.addTo(parser, kGroup);
    m_subsamplingOption =
        parser
            .add("--subsampling", m_subsampling,
                 "444, 422 or 420, default: that of IN if it is a JPEG file, else 444"
                 "\nResolution of colours in a JPEG file: full, half the width, or half the width "
                 "and height.")
            .valueName("NAME")
            .group(kGroup)
            .choices({"444", "422", "420"});
    m_depthOption = parser
                        .add("--depth", m_depth,
                             "8 or 16, default: that of IN"
                             "\nBits per sample of OUT. 16 bits are also used in between.")
                        .valueName("BITS")
                        .group(kGroup)
                        .suggests({"8", "16"});
    addLimitTo(parser);
}

void FileOptions::addLimitTo(ArgumentParser& parser) {
    parser
        .add("--max-pixels", m_maxPixels,
             "default: 400000000\nLargest number of pixels of a picture to read. Larger ones are "
             "refused before memory is allocated for them.")
        .valueName("N")
        .group(kGroup);
}

FileSettings FileOptions::result(const std::filesystem::path& output) const {
    FileSettings settings;
    settings.format = m_format.result(output);
    if (m_subsamplingOption.isGiven()) {
        settings.encoding.subsampling = subsamplingNamed(m_subsampling);
    }
    if (m_depthOption.isGiven()) {
        if (m_depth != 8 && m_depth != 16) {
            throw UsageFailure("--depth must be 8 or 16");
        }
        settings.encoding.bits = m_depth;
    }
    settings.maxPixels = maxPixels();
    return settings;
}

std::uint64_t FileOptions::maxPixels() const {
    if (!(m_maxPixels >= 1.0 && m_maxPixels <= kLargestMaxPixels)) {
        throw UsageFailure("--max-pixels must be from 1 to 1000000000000");
    }
    return static_cast<std::uint64_t>(m_maxPixels);
}

} // namespace velorn
