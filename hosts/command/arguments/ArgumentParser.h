#pragma once

#include "hosts/command/arguments/CommandDescription.h"

#include <deque>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace velorn {

/// A handle of one option or positional argument. The parser that made it owns the argument.
class Argument {
public:
    Argument() = default;
    Argument(CLI::Option* option, OptionDescription* description)
        : m_option(option), m_description(description) {}

    Argument& required();
    /// The placeholder for the value in help texts.
    Argument& valueName(const std::string& name);
    /// The heading under which help texts list the option.
    Argument& group(const std::string& heading);
    /// Takes exactly `count` values, separated by commas.
    Argument& commaSeparated(int count);
    /// Takes any number of values, separated by commas.
    Argument& commaSeparated();
    /// Takes one value, or one list in commas, each time the option is given.
    Argument& repeated();
    Argument& repeatedLists();
    /// Refuses the option unless `other` is given.
    Argument& needs(const Argument& other);
    /// Refuses numbers outside of `lowest`..`highest`.
    Argument& within(double lowest, double highest);
    /// Takes one of `names` and refuses others. Completions offer them.
    Argument& choices(const std::vector<std::string>& names);
    /// Completions offer `values`; others are allowed.
    Argument& suggests(const std::vector<std::string>& values);
    /// Completions offer files. Arguments of type std::filesystem::path have it.
    Argument& file();
    /// Adds the present value of the variable to the help text.
    Argument& showDefault();

    /// Whether the command line contains the argument; known after parsing.
    bool isGiven() const;

private:
    CLI::Option* m_option = nullptr;
    OptionDescription* m_description = nullptr;
};

/// Parses a command line with options, positional arguments and commands. With `usageMessage`, the
/// only user of the command-line library: its headers take seconds to compile.
class ArgumentParser {
public:
    ArgumentParser(const std::string& name, const std::string& description);
    ~ArgumentParser();
    ArgumentParser(const ArgumentParser&) = delete;
    ArgumentParser& operator=(const ArgumentParser&) = delete;

    /// Adds a command with arguments of its own. A parser with commands requires exactly one of
    /// them. The result lives as long as this parser.
    ArgumentParser& addCommand(const std::string& name, const std::string& description);

    /// Adds an argument that stores its value in `value`, which must outlive the parser. A name
    /// such as "-o,--output" makes an option, a name such as "IN" a positional argument. A bool
    /// makes an option without value. Other types: int, std::uint32_t, float, double, std::string,
    /// std::filesystem::path, and std::vector of float, double, int and std::string.
    template <class T>
    Argument add(const std::string& name, T& value, const std::string& help);

    /// The options under the heading `group` that the command line contains, with their values, as
    /// words for a shell: " --light linear --detail 0.1". Known after parsing.
    std::string givenWords(const std::string& group) const;

    /// Adds --version, which prints `text`.
    void setVersion(const std::string& text);
    /// Text below the help of this parser and of the commands that are added afterwards.
    void setFooter(const std::string& text);

    /// Whether the command line selects this command; known after parsing.
    bool isChosen() const;

    /// Parses the words that follow the program's name and stores the values. Writes help and
    /// version to `out` if they are requested.
    /// @returns whether to continue; false after help or version
    /// @throws UsageFailure with one line that names the error.
    bool parse(std::vector<std::string> words, std::ostream& out);

    /// The arguments and commands added so far, in this order.
    CommandDescription description() const;

private:
    /// What the library does not store about an option.
    struct Described {
        CLI::Option* option;
        OptionDescription description;
    };

    explicit ArgumentParser(CLI::App& command);

    OptionDescription& describe(CLI::Option* option);

    std::unique_ptr<CLI::App> m_owned;
    CLI::App& m_app;
    std::vector<std::unique_ptr<ArgumentParser>> m_commands;
    std::deque<Described> m_described; // whose elements stay in place
};

} // namespace velorn
