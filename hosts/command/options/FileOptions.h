#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/codecs/EncodingOptions.h"
#include "hosts/command/options/FormatOption.h"

#include <cstdint>
#include <string>

namespace velorn {

/// The largest picture to read and the encoding of the file to write.
struct FileSettings {
    std::uint64_t maxPixels = 0;
    EncodingOptions encoding;
    /// As `FormatOption::result` gives it.
    std::string format;
};

/// The options of a command that reads a picture and writes one, except for the quality of JPEG and
/// WebP, which shares its option with the quality of the restoration.
class FileOptions {
public:
    /// The heading of the options.
    static constexpr const char* kGroup = "Files";

    FileOptions() = default;
    FileOptions(const FileOptions&) = delete;
    FileOptions& operator=(const FileOptions&) = delete;

    /// Adds the options to `parser`, which keeps references to this object.
    void addTo(ArgumentParser& parser);
    /// Adds only the limit of pixels, for commands that write no restored picture.
    void addLimitTo(ArgumentParser& parser);

    /// Whether the command line has --format.
    bool isFormatGiven() const { return m_format.isGiven(); }

    /// @param output the file to write
    /// @throws UsageFailure that names what is wrong.
    FileSettings result(const std::filesystem::path& output) const;
    /// The limit of pixels alone; all that is available after `addLimitTo`.
    /// @throws UsageFailure that names what is wrong.
    std::uint64_t maxPixels() const;

private:
    FormatOption m_format;
    Argument m_subsamplingOption;
    Argument m_depthOption;
    std::string m_subsampling;
    int m_depth = 8;
    double m_maxPixels = 400e6;
};

} // namespace velorn
