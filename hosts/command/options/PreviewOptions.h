#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/options/FileOptions.h"
#include "hosts/command/options/FormatOption.h"
#include "hosts/command/pictures/ImageFile.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace velorn {

/// `velorn preview`
struct PreviewOptions {
    std::filesystem::path input;
    std::filesystem::path output;
    float scale = 1.0f;
    std::optional<std::filesystem::path> profile;
    /// Pixels that the picture may have.
    std::uint64_t maxPixels = ImageFile::kDefaultMaxPixels;
    /// As `FormatOption::result` gives it.
    std::string format{};
};

/// The `preview` command on the command line.
class PreviewParser {
public:
    /// Adds the command to `parser`, which keeps references to this object.
    explicit PreviewParser(ArgumentParser& parser);
    PreviewParser(const PreviewParser&) = delete;
    PreviewParser& operator=(const PreviewParser&) = delete;

    bool isChosen() const { return m_command.isChosen(); }

    /// The options as the command line gives them.
    /// @throws UsageFailure that names the error.
    PreviewOptions result() const;

private:
    ArgumentParser& m_command;
    FileOptions m_fileOptions;
    PreviewOptions m_options;
    FormatOption m_format;
    std::filesystem::path m_profilePath;
    Argument m_profile;
};

} // namespace velorn
