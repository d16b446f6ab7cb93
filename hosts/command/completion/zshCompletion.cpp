#include "hosts/command/completion/completionScript.h"

namespace velorn {
namespace {

/// `text` for single quotes, with a backslash before the characters in `special`.
std::string escaped(const std::string& text, const std::string& special) {
    std::string result;
    for (const char c : text) {
        if (c == '\'') {
            result.append("'\\''");
        } else {
            result.append(special.find(c) == std::string::npos ? "" : "\\").append(1, c);
        }
    }
    return result;
}

std::string functionOf(const std::string& path) {
    return "_" + path;
}

/// The value of an option or argument: ":NAME:(a b)" or ":NAME:_files".
std::string valueText(const OptionDescription& option) {
    std::string text(":");
    text.append(
            escaped(option.valueName.empty() ? option.names.front() : option.valueName, ":[]()\\"))
        .append(":");
    if (option.isFile) {
        return text + "_files";
    }
    if (option.values.empty()) {
        return text + " ";
    }
    text.append("(");
    for (const std::string& value : option.values) {
        text.append(text.ends_with('(') ? "" : " ").append(value);
    }
    return text + ")";
}

void appendOption(std::string& script, const OptionDescription& option) {
    std::string names;
    for (const std::string& name : option.names) {
        names.append(names.empty() ? "" : " ").append(name);
    }
    for (const std::string& name : option.names) {
        script.append("        '(").append(names).append(")").append(name);
        script.append(option.needsValue() && name.starts_with("--") ? "=" : "");
        script.append("[").append(escaped(option.effect, "[]:\\")).append("]");
        script.append(option.needsValue() ? valueText(option) : "").append("' \\\n");
    }
}

void appendFunction(std::string& script, const CommandDescription& command,
                    const std::string& path) {
    for (const CommandDescription& below : command.commands) {
        appendFunction(script, below, path + "_" + below.name);
    }
    script.append(functionOf(path)).append("() {\n");
    script.append(command.commands.empty() ? "" : "    local context state line\n");
    script.append("    _arguments -S ").append(command.commands.empty() ? "" : "-C ");
    script.append("\\\n");
    bool takesFiles = false;
    int position = 0;
    for (const OptionDescription& option : command.options) {
        if (!option.isPositional) {
            appendOption(script, option);
        } else if (option.isFile) {
            takesFiles = true;
        } else {
            script.append("        '").append(std::to_string(++position));
            script.append(valueText(option)).append("' \\\n");
        }
    }
    if (command.commands.empty()) {
        script.append(takesFiles ? "        '*:file:_files'\n}\n" : "        '*: : '\n}\n");
        return;
    }
    script.append("        '1:command:->command' '*::argument:->argument'\n"
                  "    case $state in\n"
                  "    command)\n"
                  "        local -a commands=(\n");
    for (const CommandDescription& below : command.commands) {
        script.append("            '").append(below.name).append(":");
        script.append(escaped(below.effect, ":\\")).append("'\n");
    }
    script.append("        )\n"
                  "        _describe command commands\n"
                  "        ;;\n"
                  "    argument)\n"
                  "        case $words[1] in\n");
    for (const CommandDescription& below : command.commands) {
        script.append("        ").append(below.name).append(") ");
        script.append(functionOf(path + "_" + below.name)).append(" ;;\n");
    }
    script.append("        esac\n"
                  "        ;;\n"
                  "    esac\n"
                  "}\n");
}

} // namespace

std::string zshCompletion(const CommandDescription& program) {
    std::string script = "#compdef " + program.name + "\n# Completion of " + program.name +
                         " for zsh; made by '" + program.name + " completion zsh'.\n";
    appendFunction(script, program, program.name);
    return script + functionOf(program.name) + " \"$@\"\n";
}

} // namespace velorn
