#include "hosts/command/options/CompletionParser.h"

#include "hosts/command/completion/completionScript.h"

namespace velorn {

CompletionParser::CompletionParser(ArgumentParser& parser)
    : m_command(
          parser.addCommand("completion", "Print a script that completes commands in a shell.")) {
    m_command
        .add("SHELL", m_shell,
             "bash, zsh or fish\nThe shell. Installed packages contain the scripts; without them, "
             "'source <(velorn completion bash)' in ~/.bashrc has the same effect.")
        .required()
        .choices({"bash", "zsh", "fish"});
}

std::string CompletionParser::script(const CommandDescription& program) const {
    return m_shell == "bash"  ? bashCompletion(program)
           : m_shell == "zsh" ? zshCompletion(program)
                              : fishCompletion(program);
}

} // namespace velorn
