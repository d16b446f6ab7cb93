#include "hosts/command/completion/completionScript.h"

namespace velorn {
namespace {

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text.append(text.empty() ? "" : " ").append(word);
    }
    return text;
}

/// Transitions from command to command: "kernel/disc) command=kernel/disc ;;".
void appendTransitions(std::string& script, const CommandDescription& command,
                       const std::string& path) {
    for (const CommandDescription& below : command.commands) {
        const std::string name = path + "/" + below.name;
        script.append("            ").append(name).append(") command=").append(name);
        script.append(" ;;\n");
        appendTransitions(script, below, name);
    }
}

/// What follows an option that needs a value.
void appendValues(std::string& script, const CommandDescription& command, const std::string& path) {
    for (const OptionDescription& option : command.options) {
        if (option.isPositional || !option.needsValue()) {
            continue;
        }
        for (const std::string& name : option.names) {
            script.append("        ").append(path).append(":").append(name).append(") kind=");
            script.append(option.isFile ? "files" : "words words='" + joined(option.values) + "'");
            script.append(" ;;\n");
        }
    }
    for (const CommandDescription& below : command.commands) {
        appendValues(script, below, path + "/" + below.name);
    }
}

/// What a command takes elsewhere.
void appendWords(std::string& script, const CommandDescription& command, const std::string& path) {
    std::vector<std::string> options;
    std::vector<std::string> words;
    bool takesFiles = false;
    for (const OptionDescription& option : command.options) {
        if (!option.isPositional) {
            options.insert(options.end(), option.names.begin(), option.names.end());
        } else {
            takesFiles = takesFiles || option.isFile;
            words.insert(words.end(), option.values.begin(), option.values.end());
        }
    }
    for (const CommandDescription& below : command.commands) {
        words.push_back(below.name);
    }
    script.append("        '").append(path).append("') options='").append(joined(options));
    script.append("' words='").append(joined(words)).append("'");
    script.append(takesFiles ? " kind=files" : "").append(" ;;\n");
    for (const CommandDescription& below : command.commands) {
        appendWords(script, below, path + "/" + below.name);
    }
}

} // namespace

std::string bashCompletion(const CommandDescription& program) {
    const std::string function = "_" + program.name;
    std::string script = "# Completion of " + program.name + " for bash; made by '" + program.name +
                         " completion bash'.\n" + function + R"(() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command= options= words= kind=words onlyFiles= i
    # Bash takes --option=value apart.
    if [[ $current == = ]]; then
        current=
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for ((i = 1; i < COMP_CWORD; ++i)); do
        if [[ ${COMP_WORDS[i]} == -- ]]; then
            onlyFiles=1
            break
        fi
        case $command/${COMP_WORDS[i]} in
)";
    appendTransitions(script, program, "");
    script += R"(        esac
    done
    case $command in
)";
    appendWords(script, program, "");
    script += R"(    esac
    if [[ $onlyFiles ]]; then
        kind=files
    else
        case $command:$previous in
)";
    appendValues(script, program, "");
    script += R"(        *) [[ $current == -* ]] && kind=words words=$options ;;
        esac
    fi
    COMPREPLY=()
    if [[ $kind == files ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    fi
}
complete -F )" +
              function + " " + program.name + "\n";
    return script;
}

} // namespace velorn
