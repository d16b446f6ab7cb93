#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/formats/Format.h"

#include <filesystem>
#include <string>
#include <vector>

namespace velorn {

/// The option `--format`, which names the format of an output whose extension does not.
class FormatOption {
public:
    /// @param others extensions of formats besides those of pictures
    explicit FormatOption(std::vector<std::string> others = {}) : m_others(std::move(others)) {}
    FormatOption(const FormatOption&) = delete;
    FormatOption& operator=(const FormatOption&) = delete;

    /// Adds the option to `parser`, which keeps a reference to this object. May be called for
    /// several commands.
    void addTo(ArgumentParser& parser, const std::string& group);

    bool isGiven() const;

    /// The extension of the format, such as "png"; empty without the option.
    /// @param output the file to write, "-" is the standard output
    /// @throws UsageFailure: no such format, an extension of another format, or the standard output
    ///         without a format.
    std::string result(const std::filesystem::path& output) const;
    /// The same for an output that is always a picture.
    std::string resultForPicture(const std::filesystem::path& output) const;

private:
    std::string result(const std::filesystem::path& output,
                       const std::vector<std::string>& others) const;

    std::vector<std::string> m_others;
    std::vector<Argument> m_arguments;
    std::string m_name;
};

/// The format of the picture `output`: that of its extension, or the one with the extension
/// `format` if this is not empty.
/// @throws Failure that names `output` when its extension selects no format that is written.
const Format& outputFormat(const std::filesystem::path& output, const std::string& format);

/// The name that selects the format of the kernel `output`: itself, or with the extension `format`
/// added.
std::filesystem::path kernelName(const std::filesystem::path& output, const std::string& format);

} // namespace velorn
