#include "hosts/command/options/FormatOption.h"

#include "hosts/command/arguments/alternatives.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/formats/Format.h"
#include "hosts/command/terminal/errorLine.h"
#include "hosts/command/terminal/suggestion.h"

#include <algorithm>

namespace velorn {
namespace {

/// The values of the option: extensions of other files, and names of formats of pictures.
std::vector<std::string> namesWith(const std::vector<std::string>& others) {
    std::vector<std::string> names = others;
    for (const Format& format : kFormats) {
        if (format.isWritten) {
            names.push_back(lowerCase(format.name));
        }
    }
    return names;
}

/// The extension of the format `name`. @throws UsageFailure
std::string extensionOf(const std::string& name, const std::vector<std::string>& others) {
    if (std::ranges::find(others, name) != others.end()) {
        return name;
    }
    const Format* format = formatNamed(name);
    if (format == nullptr || !format->isWritten) {
        const std::vector<std::string> names = namesWith(others);
        throw UsageFailure("--format must be " + alternatives(names) + ", not " + quotedWord(name) +
                           suggestion(name, names));
    }
    return std::string(format->extensions.front());
}

} // namespace

void FormatOption::addTo(ArgumentParser& parser, const std::string& group) {
    const std::vector<std::string> names = namesWith(m_others);
    m_arguments.push_back(
        parser
            .add("--format", m_name,
                 alternatives(names) +
                     ", default: that of the extension\nFormat of an output whose extension "
                     "selects none, and of the standard output '-', which needs it.")
            .valueName("NAME")
            .group(group)
            .suggests(names));
}

bool FormatOption::isGiven() const {
    return std::ranges::any_of(m_arguments, &Argument::isGiven);
}

std::string FormatOption::result(const std::filesystem::path& output) const {
    return result(output, m_others);
}

std::string FormatOption::resultForPicture(const std::filesystem::path& output) const {
    return result(output, {});
}

std::string FormatOption::result(const std::filesystem::path& output,
                                 const std::vector<std::string>& others) const {
    if (!isGiven()) {
        if (isStandardStream(output)) {
            throw UsageFailure("'-', the standard output, needs --format: " +
                               alternatives(namesWith(others)));
        }
        return "";
    }
    const std::string wanted = extensionOf(m_name, others);
    const std::string extension = lowerCase(output.extension().string());
    const Format* format = formatOfPath(output);
    const bool isOther =
        std::ranges::find(m_others, extension.substr(extension.empty() ? 0 : 1)) != m_others.end();
    if (format != nullptr ? format != formatNamed(wanted) : isOther && extension != "." + wanted) {
        throw UsageFailure(quoted(output) + " is a name of another format than --format " +
                           quotedWord(m_name));
    }
    return wanted;
}

const Format& outputFormat(const std::filesystem::path& output, const std::string& format) {
    return format.empty() ? outputFormatOfPath(output) : outputFormatNamed(format);
}

std::filesystem::path kernelName(const std::filesystem::path& output, const std::string& format) {
    const std::filesystem::path name = shownOutput(output);
    return format.empty() ? name : std::filesystem::path(name.string() + "." + format);
}

} // namespace velorn
