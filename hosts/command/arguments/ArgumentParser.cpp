#include "hosts/command/arguments/ArgumentParser.h"

#include "hosts/command/arguments/alternatives.h"
#include "hosts/command/arguments/shellWord.h"
#include "hosts/command/arguments/usageMessage.h"
#include "hosts/command/arguments/wrapped.h"
#include "hosts/command/terminal/errorLine.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/suggestion.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <filesystem>
#include <sstream>
#include <type_traits>

namespace velorn {
namespace {

/// Shows each description, which may have several lines, indented below its option.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter() {
        label("Positionals", "Arguments");
        label("SUBCOMMAND", "COMMAND");
        label("SUBCOMMANDS", "COMMANDS");
    }

    /// The default usage line omits required options.
    std::string make_usage(const CLI::App* app, std::string name) const override {
        std::string required;
        for (const CLI::Option* option : app->get_options()) {
            if (option->nonpositional() && option->get_required()) {
                required += " -" + option->get_snames().front() + " " + option->get_type_name();
            }
        }
        return CLI::Formatter::make_usage(app, name + required);
    }

    std::string make_option(const CLI::Option* option, bool isPositional) const override {
        std::string text =
            "  " + make_option_name(option, isPositional) + make_option_opts(option) + "\n";
        std::istringstream lines(wrapped(make_option_desc(option), kHelpWidth - kIndent));
        for (std::string line; std::getline(lines, line);) {
            text += std::string(kIndent, ' ') + line + "\n";
        }
        return text;
    }
    std::string make_option_opts(const CLI::Option* option) const override {
        std::string text;
        if (option->nonpositional() && !option->get_type_name().empty()) {
            text += " " + option->get_type_name();
        }
        if (!option->get_default_str().empty()) {
            text += " (default: " + option->get_default_str() + ")";
        }
        return text;
    }

private:
    static constexpr std::size_t kHelpWidth = 80;
    static constexpr std::size_t kIndent = 8;
};

std::string numberIn(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

template <class T>
struct ValueOf {
    using Type = T;
};
template <class T>
struct ValueOf<std::vector<T>> {
    using Type = T;
};

/// Refuses words that are not numbers before the library does, with a message of its own.
template <class Number>
void checkNumbers(CLI::Option* option) {
    option->check([option](const std::string& text) {
        Number value{};
        if (!text.empty() && CLI::detail::lexical_cast(text, value)) {
            return std::string();
        }
        const bool isWhole = text.find_first_not_of("+-0123456789") == std::string::npos &&
                             text.find_first_of("0123456789") != std::string::npos;
        if (std::is_integral_v<Number> && isWhole) {
            throw UsageFailure(option->get_name() + ": " + quotedWord(text) + " is out of range");
        }
        throw UsageFailure(option->get_name() + " needs " +
                           (std::is_integral_v<Number> ? "a whole number" : "a number") + ", not " +
                           quotedWord(text));
    });
}

/// The first sentence of the text that follows the line with range and default.
std::string effectOf(const std::string& help) {
    const std::size_t line = help.find('\n') == std::string::npos ? 0 : help.find('\n') + 1;
    const std::string text = onOneLine(help.substr(line));
    const std::size_t end = text.find(". ");
    const bool hasPoint = end == std::string::npos && text.ends_with('.');
    return hasPoint ? text.substr(0, text.size() - 1) : text.substr(0, end);
}

} // namespace

Argument& Argument::required() {
    m_option->required();
    return *this;
}

Argument& Argument::valueName(const std::string& name) {
    m_option->type_name(name);
    m_description->valueName = name;
    return *this;
}

Argument& Argument::group(const std::string& heading) {
    m_option->group(heading);
    return *this;
}

Argument& Argument::commaSeparated(int count) {
    m_option->delimiter(',')->expected(count)->allow_extra_args(false);
    return *this;
}

Argument& Argument::commaSeparated() {
    m_option->delimiter(',');
    return *this;
}

Argument& Argument::repeated() {
    // One word for each occurrence: further words are arguments of the command.
    m_option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)->expected(1);
    m_option->allow_extra_args(false);
    return *this;
}

Argument& Argument::repeatedLists() {
    m_option->delimiter(',');
    return repeated();
}

Argument& Argument::needs(const Argument& other) {
    m_option->needs(other.m_option);
    return *this;
}

Argument& Argument::within(double lowest, double highest) {
    const std::string range = numberIn(lowest) + ".." + numberIn(highest);
    m_option->check([lowest, highest, range](const std::string& text) {
        double value = 0.0;
        const bool isNumber = CLI::detail::lexical_cast(text, value);
        return isNumber && value >= lowest && value <= highest ? std::string()
                                                               : text + " is not in " + range;
    });
    return *this;
}

Argument& Argument::choices(const std::vector<std::string>& names) {
    m_option->check([option = m_option, names](const std::string& text) {
        if (std::ranges::find(names, text) == names.end()) {
            throw UsageFailure(option->get_name() + " must be " + alternatives(names) + ", not " +
                               quotedWord(text) + suggestion(text, names));
        }
        return std::string();
    });
    return suggests(names);
}

Argument& Argument::suggests(const std::vector<std::string>& values) {
    m_description->values = values;
    return *this;
}

Argument& Argument::file() {
    m_description->isFile = true;
    return *this;
}

Argument& Argument::showDefault() {
    m_option->capture_default_str();
    return *this;
}

bool Argument::isGiven() const {
    return m_option->count() > 0;
}

ArgumentParser::ArgumentParser(const std::string& name, const std::string& description)
    : m_owned(std::make_unique<CLI::App>(description, name)), m_app(*m_owned) {
    m_app.formatter(std::make_shared<HelpFormatter>());
    m_app.set_help_flag("-h,--help", "Show this help and exit.");
}

ArgumentParser::ArgumentParser(CLI::App& command) : m_app(command) {}

ArgumentParser::~ArgumentParser() = default;

ArgumentParser& ArgumentParser::addCommand(const std::string& name,
                                           const std::string& description) {
    m_commands.push_back(std::unique_ptr<ArgumentParser>(
        new ArgumentParser(*m_app.add_subcommand(name, description)->group("Commands"))));
    m_app.require_subcommand(1);
    return *m_commands.back();
}

OptionDescription& ArgumentParser::describe(CLI::Option* option) {
    OptionDescription description;
    description.isPositional = option->get_positional();
    if (description.isPositional) {
        description.names.push_back(option->get_name());
    }
    for (const std::string& name : option->get_snames()) {
        description.names.push_back("-" + name);
    }
    for (const std::string& name : option->get_lnames()) {
        description.names.push_back("--" + name);
    }
    description.effect = effectOf(option->get_description());
    m_described.push_back({option, std::move(description)});
    return m_described.back().description;
}

template <class T>
Argument ArgumentParser::add(const std::string& name, T& value, const std::string& help) {
    if constexpr (std::is_same_v<T, bool>) {
        CLI::Option* flag = m_app.add_flag(name, value, help)->disable_flag_override();
        return {flag, &describe(flag)};
    } else {
        CLI::Option* option = m_app.add_option(name, value, help);
        using Value = typename ValueOf<T>::Type;
        if constexpr (std::is_arithmetic_v<Value>) {
            checkNumbers<Value>(option);
        }
        OptionDescription& description = describe(option);
        description.valueName = option->get_type_name();
        description.isFile = std::is_same_v<T, std::filesystem::path>;
        return {option, &description};
    }
}

template Argument ArgumentParser::add(const std::string&, bool&, const std::string&);
template Argument ArgumentParser::add(const std::string&, int&, const std::string&);
template Argument ArgumentParser::add(const std::string&, std::uint32_t&, const std::string&);
template Argument ArgumentParser::add(const std::string&, float&, const std::string&);
template Argument ArgumentParser::add(const std::string&, double&, const std::string&);
template Argument ArgumentParser::add(const std::string&, std::string&, const std::string&);
template Argument ArgumentParser::add(const std::string&, std::filesystem::path&,
                                      const std::string&);
template Argument ArgumentParser::add(const std::string&, std::vector<float>&, const std::string&);
template Argument ArgumentParser::add(const std::string&, std::vector<double>&, const std::string&);
template Argument ArgumentParser::add(const std::string&, std::vector<int>&, const std::string&);
template Argument ArgumentParser::add(const std::string&, std::vector<std::string>&,
                                      const std::string&);

std::string ArgumentParser::givenWords(const std::string& group) const {
    std::string words;
    for (const CLI::Option* option : m_app.get_options()) {
        if (option->get_group() != group || option->count() == 0) {
            continue;
        }
        words += " --" + option->get_lnames().front();
        if (option->get_items_expected_max() > 0) {
            words += " " + shellWord(CLI::detail::join(option->results(), ","));
        }
    }
    return words;
}

void ArgumentParser::setVersion(const std::string& text) {
    m_app.set_version_flag("--version", text, "Show the version and exit.");
}

void ArgumentParser::setFooter(const std::string& text) {
    m_app.footer(text);
}

bool ArgumentParser::isChosen() const {
    return m_app.parsed();
}

bool ArgumentParser::parse(std::vector<std::string> words, std::ostream& out) {
    try {
        std::ranges::reverse(words); // the order that the library expects
        m_app.parse(std::move(words));
        return true;
    } catch (const CLI::Success& request) {
        m_app.exit(request, out, out);
        return false;
    } catch (const CLI::Error& error) {
        throw UsageFailure(usageMessage(error, m_app));
    }
}

CommandDescription ArgumentParser::description() const {
    CommandDescription command{m_app.get_name(), effectOf(m_app.get_description()), {}, {}};
    command.options.push_back({{"-h", "--help"}, "Show this help and exit", "", {}, false, false});
    if (m_app.get_version_ptr() != nullptr) {
        command.options.push_back(
            {{"--version"}, "Show the version and exit", "", {}, false, false});
    }
    for (const Described& described : m_described) {
        command.options.push_back(described.description);
    }
    for (const auto& below : m_commands) {
        command.commands.push_back(below->description());
    }
    return command;
}

} // namespace velorn
