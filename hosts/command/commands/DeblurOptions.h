#pragma once

#include "hosts/command/commands/BatchOptions.h"
#include "hosts/command/commands/BlindOptions.h"
#include "hosts/command/commands/FileOptions.h"
#include "hosts/command/commands/ModelOptions.h"
#include "hosts/command/commands/SettingOptions.h"
#include "hosts/command/kernels/BlurKernel.h"

#include <filesystem>
#include <optional>
#include <variant>

namespace velorn {

/// A kernel in a file, and the side of a weight's square if the user gives it.
struct KernelPath {
    std::filesystem::path path;
    std::optional<int> scale;
};

/// Where the kernel of a restoration comes from; nothing without deconvolution.
using KernelSource = std::variant<std::monostate, AnalyticBlur, KernelPath, BlindSettings>;

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
    void addBlurs();
    void addKernelFile();
    void addBlind();
    KernelSource kernelSource();
    KernelPath kernelPath();

    ArgumentParser& m_command;
    BlindOptions m_blindOptions;
    SettingOptions m_settings;
    ModelOptions m_modelOptions;
    BatchOptions m_batchOptions;
    FileOptions m_fileOptions;
    DeblurOptions m_options;
    std::vector<std::string> m_files;
    float m_extent = 0.0f;
    std::vector<float> m_lengthAndAngle;
    KernelPath m_path;
    int m_scale = 1;
    bool m_isSharpenOnly = false;
    Argument m_gaussian;
    Argument m_disc;
    Argument m_motion;
    Argument m_kernel;
    Argument m_kernelScale;
    Argument m_blind;
    Argument m_noDeconvolve;
};

} // namespace velorn
