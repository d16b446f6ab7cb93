#include "hosts/command/arguments/usageMessage.h"

#include "hosts/command/arguments/alternatives.h"
#include "hosts/command/terminal/errorLine.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/suggestion.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <optional>

namespace velorn {
namespace {

/// The command that the command line selects.
const CLI::App& chosenCommand(const CLI::App& root) {
    const auto chosen = root.get_subcommands();
    return chosen.empty() ? root : chosenCommand(*chosen.back());
}

/// "velorn kernel disc"
std::string pathOf(const CLI::App& command) {
    const CLI::App* parent = command.get_parent();
    return (parent == nullptr ? "" : pathOf(*parent) + " ") + command.get_name();
}

std::vector<std::string> commandNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::App* below : command.get_subcommands({})) {
        names.push_back(below->get_name());
    }
    return names;
}

std::vector<std::string> optionNames(const CLI::App& command) {
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
        for (const std::string& name : option->get_snames()) {
            names.push_back("-" + name);
        }
    }
    return names;
}

/// The command, `command` or one below it, that has the option; nothing if there is none.
std::optional<std::string> commandWith(const std::string& option, const CLI::App& command) {
    if (std::ranges::count(optionNames(command), option) != 0) {
        return pathOf(command);
    }
    for (const CLI::App* below : command.get_subcommands({})) {
        if (auto found = commandWith(option, *below)) {
            return found;
        }
    }
    return std::nullopt;
}

std::string unknownOption(const std::string& word, const CLI::App& command, const CLI::App& root) {
    const std::string name = word.substr(0, word.find('='));
    const std::string near = suggestion(name, optionNames(command));
    if (near.empty()) {
        if (const auto other = commandWith(name, root)) {
            return "unknown option " + quotedWord(name) + " of '" + pathOf(command) +
                   "': it belongs to '" + *other + "'";
        }
    }
    return "unknown option " + quotedWord(name) +
           (near.empty() ? "; see '" + pathOf(command) + " --help'" : near);
}

std::string unknownCommand(const std::string& word, const std::vector<std::string>& commands) {
    const std::string near = suggestion(word, commands);
    return "unknown command " + quotedWord(word) +
           (near.empty() ? ": the commands are " + alternatives(commands, " and ") : near);
}

/// What is wrong with the words that no argument takes; nothing if there are none.
std::optional<std::string> unexpectedWords(const CLI::App& command, const CLI::App& root) {
    const std::vector<std::string> words = root.remaining(true);
    const auto isOption = [](const std::string& word) { return word.size() > 1 && word[0] == '-'; };
    const auto word = std::ranges::find_if(words, [](const auto& text) { return text != "--"; });
    if (word == words.end()) {
        return std::nullopt;
    }
    const std::vector<std::string> commands = commandNames(command);
    if (!commands.empty() && !isOption(*word)) {
        return unknownCommand(*word, commands);
    }
    const auto names = std::ranges::find(words, "--");
    const auto option = std::find_if(words.begin(), names, isOption);
    return option == names ? "unexpected argument " + quotedWord(*word)
                           : unknownOption(*option, command, root);
}

std::string missingArguments(const CLI::App& command) {
    const std::vector<std::string> commands = commandNames(command);
    if (!commands.empty()) {
        return "missing command: " + alternatives(commands);
    }
    std::vector<std::string> missing;
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_required() && option->count() == 0) {
            missing.push_back(option->get_name());
        }
    }
    return "'" + pathOf(command) + "' needs " + alternatives(missing, " and ") + "; see '" +
           pathOf(command) + " --help'";
}

std::string missingCondition(const CLI::App& command, const CLI::Error& error) {
    for (const CLI::Option* option : command.get_options()) {
        for (const CLI::Option* needed : option->get_needs()) {
            if (option->count() > 0 && needed->count() == 0) {
                return option->get_name() + " requires " + needed->get_name();
            }
        }
    }
    return error.what();
}

/// The option that a message of the library begins with; null if there is none.
const CLI::Option* optionIn(const std::string& message, const CLI::App& command) {
    const std::string name = message.substr(0, message.find_first_of(": "));
    const CLI::Option* option = command.get_option_no_throw(name);
    if (option == nullptr) {
        option = command.get_option_no_throw("--" + name);
    }
    return option != nullptr || command.get_parent() == nullptr
               ? option
               : optionIn(message, *command.get_parent());
}

std::string wrongNumberOfValues(const CLI::App& command, const CLI::Error& error) {
    const CLI::Option* option = optionIn(error.what(), command);
    if (option == nullptr) {
        return error.what();
    }
    const std::string name = option->get_name();
    const int most = option->get_items_expected_max();
    const auto given = static_cast<int>(option->count());
    if (most == 0) {
        return name + " takes no value";
    }
    if (given == 0) {
        return name + " needs a value: " + option->get_type_name();
    }
    if (most == 1) {
        return name + " may be given only once";
    }
    return name + " needs " + std::to_string(option->get_items_expected_min()) +
           " values separated by commas: " + option->get_type_name();
}

} // namespace

std::string usageMessage(const CLI::Error& error, const CLI::App& root) {
    const CLI::App& command = chosenCommand(root);
    // The library checks the other arguments first, although they are often wrong only because a
    // word is misspelt.
    if (const auto unexpected = unexpectedWords(command, root)) {
        return *unexpected;
    }
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) {
        return missingArguments(command);
    }
    if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
        return missingCondition(command, error);
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        return wrongNumberOfValues(command, error);
    }
    return onOneLine(error.what());
}

} // namespace velorn
