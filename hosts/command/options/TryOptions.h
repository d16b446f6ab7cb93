#pragma once

#include "hosts/command/options/FileOptions.h"
#include "hosts/command/options/KernelSource.h"
#include "hosts/command/options/KernelSourceOptions.h"
#include "hosts/command/options/ModelOptions.h"
#include "hosts/command/options/SettingOptions.h"
#include "hosts/command/trial/TrialSeries.h"
#include "hosts/command/trial/TrialStrength.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velorn {

/// Where the kernel of some tiles comes from, and the options that give it to `velorn deblur`.
struct TriedBlur {
    KernelSource kernel;
    std::string words;
};

/// `velorn try`
struct TryOptions {
    std::filesystem::path input;
    /// The file of the sheet.
    std::filesystem::path sheet;
    /// As `FormatOption::result` gives it.
    std::string format;
    /// Pixels that the picture may have.
    std::uint64_t maxPixels = 0;
    /// The part to restore, as displayed; without it, the command chooses.
    std::optional<PictureArea> region;
    /// At least one. A search is the only one.
    std::vector<TriedBlur> blurs;
    /// The strengths for each blur; empty for all candidates of a search.
    std::vector<TrialStrength> strengths;
    TrialSettings settings;
};

/// The `try` command on the command line.
class TryParser {
public:
    /// Adds the command to `parser`, which keeps references to this object.
    explicit TryParser(ArgumentParser& parser);
    TryParser(const TryParser&) = delete;
    TryParser& operator=(const TryParser&) = delete;

    bool isChosen() const { return m_command.isChosen(); }

    /// The options as the command line gives them.
    /// @throws UsageFailure that names the error.
    TryOptions result() const;

private:
    void addFiles();
    void addSeries();
    void addBlurs();
    void addKernels();
    void checkInputs(const TryOptions& options) const;
    PictureArea region() const;
    std::vector<TriedBlur> blurs(int threads) const;
    std::vector<TriedBlur> knownBlurs() const;
    std::vector<TrialStrength> strengths(const TryOptions& options) const;
    TrialSettings settings() const;

    ArgumentParser& m_command;
    KernelSourceOptions m_kernelOptions;
    SettingOptions m_settingOptions;
    ModelOptions m_modelOptions;
    FileOptions m_fileOptions;
    FormatOption m_format;
    TryOptions m_options;
    std::vector<int> m_region;
    std::vector<std::string> m_strengths;
    std::vector<float> m_deviations;
    std::vector<float> m_radii;
    std::vector<float> m_motions;
    std::vector<std::string> m_files;
    Argument m_regionOption;
    Argument m_strengthsOption;
};

} // namespace velorn
