#pragma once

#include "hosts/command/arguments/ArgumentParser.h"

namespace velorn {

/// The `completion` command on the command line.
class CompletionParser {
public:
    /// Adds the command to `parser`, which keeps references to this object.
    explicit CompletionParser(ArgumentParser& parser);
    CompletionParser(const CompletionParser&) = delete;
    CompletionParser& operator=(const CompletionParser&) = delete;

    bool isChosen() const { return m_command.isChosen(); }

    /// The script for the chosen shell. @param program all commands
    std::string script(const CommandDescription& program) const;

private:
    ArgumentParser& m_command;
    std::string m_shell;
};

} // namespace velorn
