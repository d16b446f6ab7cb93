#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/options/BlindOptions.h"

#include <optional>
#include <string>

namespace velorn {

/// The options that `velorn deblur` and `velorn try` share for kernels in files and for kernels to
/// find: --kernel-scale, --blind and what controls its search.
class KernelSourceOptions {
public:
    /// The heading of all but --blind.
    static constexpr const char* kGroup = "Options of --kernel and --blind";

    KernelSourceOptions() = default;
    KernelSourceOptions(const KernelSourceOptions&) = delete;
    KernelSourceOptions& operator=(const KernelSourceOptions&) = delete;

    /// Each adds options to `parser`, which keeps references to this object.
    /// @param kernel the option that names the file
    void addScale(ArgumentParser& parser, const Argument& kernel);
    /// Adds --blind under the heading `group`, with its effect in `help`, and the options of its
    /// search except --local.
    void addBlind(ArgumentParser& parser, const std::string& group, const std::string& help);
    /// Needs `addBlind` before.
    void addLocal(ArgumentParser& parser);

    /// The option --blind.
    const Argument& blind() const { return m_blind; }

    /// The value of --kernel-scale, if the command line gives it.
    /// @throws UsageFailure if it is out of range.
    std::optional<int> scale() const;

    /// What controls the search.
    const BlindOptions& search() const { return m_search; }

private:
    BlindOptions m_search;
    int m_scale = 1;
    Argument m_scaleOption;
    Argument m_blind;
};

} // namespace velorn
