#pragma once

#include "hosts/command/options/BatchOptions.h"
#include "hosts/command/options/FileOptions.h"
#include "hosts/command/options/KernelSource.h"
#include "hosts/command/options/KernelSourceOptions.h"
#include "hosts/command/options/ModelOptions.h"
#include "hosts/command/options/SettingOptions.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velorn {

/// `velorn deblur`
struct DeblurOptions {
    /// The only picture, unless there is a batch.
    std::filesystem::path input;
    std::filesystem::path output;
    Existing existing = Existing::Replace;
    std::optional<BatchRequest> batch;
    FileSettings files;
    KernelSource kernel;
    /// Without progress function and profile.
    VelornRestoreSettings settings{};
    bool isVerbose = false;
};

/// The `deblur` command on the command line.
class DeblurParser {
public:
    /// Adds the command to `parser`, which keeps references to this object.
    explicit DeblurParser(ArgumentParser& parser);
    DeblurParser(const DeblurParser&) = delete;
    DeblurParser& operator=(const DeblurParser&) = delete;

    bool isChosen() const { return m_command.isChosen(); }

    /// The options as the command line gives them.
    /// @throws UsageFailure that names the error.
    DeblurOptions result();

    /// `words` with the default values after the options whose value may be omitted.
    static std::vector<std::string> completed(std::vector<std::string> words);

private:
    void addFiles();
    void takeFiles();
    void checkBatch() const;
    void addBlurs();
    void addKernels();
    KernelSource kernelSource();

    ArgumentParser& m_command;
    KernelSourceOptions m_kernelOptions;
    SettingOptions m_settings;
    ModelOptions m_modelOptions;
    BatchOptions m_batchOptions;
    FileOptions m_fileOptions;
    DeblurOptions m_options;
    std::vector<std::string> m_files;
    float m_extent = 0.0f;
    std::vector<float> m_lengthAndAngle;
    std::filesystem::path m_path;
    bool m_isSharpenOnly = false;
    Argument m_gaussian;
    Argument m_disc;
    Argument m_motion;
    Argument m_kernel;
    Argument m_noDeconvolve;
};

} // namespace velorn
