#include "hosts/command/completion/completionScript.h"

namespace velorn {
namespace {

/// `text` in single quotes.
std::string quotedText(const std::string& text) {
    std::string result = "'";
    for (const char c : text) {
        result.append(c == '\'' || c == '\\' ? "\\" : "").append(1, c);
    }
    return result + "'";
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text.append(text.empty() ? "" : " ").append(word);
    }
    return text;
}

/// The condition that the command line has reached the command of `path` and none below it.
std::string conditionOf(const CommandDescription& command, const std::vector<std::string>& path) {
    std::string test;
    for (const std::string& name : path) {
        test.append(test.empty() ? "" : "; and ")
            .append("__fish_seen_subcommand_from ")
            .append(name);
    }
    if (path.empty()) {
        test = "__fish_use_subcommand";
    } else if (!command.commands.empty()) {
        test.append("; and not __fish_seen_subcommand_from");
        for (const CommandDescription& below : command.commands) {
            test.append(" ").append(below.name);
        }
    }
    return " -n " + quotedText(test);
}

void appendOption(std::string& script, const OptionDescription& option,
                  const std::string& beginning) {
    script.append(beginning);
    for (const std::string& name : option.names) {
        const bool isLong = name.starts_with("--");
        script.append(isLong ? " -l " : " -s ").append(name.substr(isLong ? 2 : 1));
    }
    if (option.needsValue()) {
        const std::string values = joined(option.values);
        script.append(option.isFile ? " -r -F" : " -x");
        script.append(values.empty() ? "" : " -a " + quotedText(values));
    }
    script.append(" -d ").append(quotedText(option.effect)).append("\n");
}

void appendCommand(std::string& script, const std::string& program,
                   const CommandDescription& command, const std::vector<std::string>& path) {
    const std::string beginning = "complete -c " + program + conditionOf(command, path);
    bool takesFiles = false;
    for (const OptionDescription& option : command.options) {
        if (!option.isPositional) {
            appendOption(script, option, beginning);
        }
        takesFiles = takesFiles || (option.isPositional && option.isFile);
    }
    if (takesFiles) {
        script.append(beginning).append(" -F\n");
    }
    for (const OptionDescription& option : command.options) {
        if (option.isPositional && !option.values.empty()) {
            script.append(beginning).append(" -a ").append(quotedText(joined(option.values)));
            script.append("\n");
        }
    }
    for (const CommandDescription& below : command.commands) {
        script.append(beginning).append(" -a ").append(below.name);
        script.append(" -d ").append(quotedText(below.effect)).append("\n");
    }
    for (const CommandDescription& below : command.commands) {
        std::vector<std::string> names = path;
        names.push_back(below.name);
        appendCommand(script, program, below, names);
    }
}

} // namespace

std::string fishCompletion(const CommandDescription& program) {
    std::string script = "# Completion of " + program.name + " for fish; made by '" + program.name +
                         " completion fish'.\ncomplete -c " + program.name + " -f\n";
    appendCommand(script, program.name, program, {});
    return script;
}

} // namespace velorn
