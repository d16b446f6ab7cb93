#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/options/BlindSettings.h"

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace velorn {

/// The options that control the search for a kernel: those of `velorn estimate` and of
/// `velorn deblur --blind`.
class BlindOptions {
public:
    BlindOptions() = default;
    BlindOptions(const BlindOptions&) = delete;
    BlindOptions& operator=(const BlindOptions&) = delete;

    /// Each adds an option to `parser`, which keeps references to this object.
    Argument addSize(ArgumentParser& parser, const std::string& name, const std::string& help);
    Argument addStrength(ArgumentParser& parser);
    Argument addTurn(ArgumentParser& parser, const std::string& condition = {});

    Argument addLocal(ArgumentParser& parser, const std::string& condition);

    /// Adds --look, --start, --candidate and --strict.
    std::array<Argument, 4> addChoices(ArgumentParser& parser, const std::string& condition = {});

    /// The settings as the command line gives them.
    /// @throws UsageFailure that names the option whose value is out of range, or two options that
    ///         exclude each other.
    BlindSettings result() const;

    /// Whether the command line names a candidate.
    bool isCandidateGiven() const { return m_candidateOption.isGiven(); }

    /// `words` with the default size after every --blind that no size follows.
    static std::vector<std::string> completed(std::vector<std::string> words);

private:
    BlindSettings m_settings;
    std::string m_sizeName;
    std::string m_sizeText = "auto";
    std::string m_turnText = "auto";
    std::vector<int> m_look;
    std::filesystem::path m_start;
    Argument m_startOption;
    Argument m_candidateOption;
};

} // namespace velorn
