#pragma once

#include "hosts/command/options/BlindOptions.h"
#include "hosts/command/options/BlindSettings.h"
#include "hosts/command/options/FileOptions.h"
#include "hosts/command/options/FormatOption.h"
#include "hosts/command/options/ThreadsOption.h"
#include "hosts/command/pictures/ImageFile.h"

#include <cstdint>
#include <filesystem>

namespace velorn {

/// `velorn estimate`
struct EstimateOptions {
    std::filesystem::path input;
    /// The file of the kernel; empty: it is only printed.
    std::filesystem::path output;
    /// The file of the picture that shows all candidates; empty: none.
    std::filesystem::path sheet;
    /// Pixels that the picture may have.
    std::uint64_t maxPixels = ImageFile::kDefaultMaxPixels;
    /// Those of `output` and `sheet`, as `FormatOption` gives them.
    std::string format;
    std::string sheetFormat;
    BlindSettings blind;
};

/// The `estimate` command on the command line.
class EstimateParser {
public:
    /// Adds the command to `parser`, which keeps references to this object.
    explicit EstimateParser(ArgumentParser& parser);
    EstimateParser(const EstimateParser&) = delete;
    EstimateParser& operator=(const EstimateParser&) = delete;

    bool isChosen() const { return m_command.isChosen(); }

    /// The options as the command line gives them.
    /// @throws UsageFailure that names the error.
    EstimateOptions result() const;

private:
    void takeFormat(EstimateOptions& options) const;

    ArgumentParser& m_command;
    BlindOptions m_blindOptions;
    ThreadsOption m_threads;
    FileOptions m_fileOptions;
    FormatOption m_format{{"txt", "csv"}};
    EstimateOptions m_options;
};

} // namespace velorn
