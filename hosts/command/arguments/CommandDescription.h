#pragma once

#include <string>
#include <vector>

namespace velorn {

/// An option or a positional argument, as completions offer it.
struct OptionDescription {
    /// "-o" and "--output"; the placeholder of a positional argument, such as "IN".
    std::vector<std::string> names;
    /// One sentence, without its point.
    std::string effect;
    /// The placeholder of the value; empty for options without one.
    std::string valueName;
    /// The values to choose from; empty when there is no such list.
    std::vector<std::string> values;
    bool isPositional = false;
    /// Whether the value is the name of a file.
    bool isFile = false;

    /// Whether the next word is always the value.
    bool needsValue() const { return !valueName.empty() && valueName.front() != '['; }
};

/// A command with its arguments and the commands below it.
struct CommandDescription {
    std::string name;
    /// One sentence, without its point.
    std::string effect;
    std::vector<OptionDescription> options;
    std::vector<CommandDescription> commands;
};

} // namespace velorn
