#include "hosts/command/arguments/ArgumentParser.h"

#include "hosts/command/arguments/alternatives.h"
#include "hosts/command/arguments/wrapped.h"
#include "hosts/command/terminal/Failure.h"

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

} // namespace

Argument& Argument::required() {
    m_option->required();
    return *this;
}

Argument& Argument::valueName(const std::string& name) {
    m_option->type_name(name);
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

/// The library says that a command is missing, but not which ones there are.
void ArgumentParser::checkCommand() const {
    std::vector<std::string> names;
    for (const auto& command : m_commands) {
        if (command->isChosen()) {
            command->checkCommand();
            return;
        }
        names.push_back(command->m_app.get_name());
    }
    if (!names.empty()) {
        throw UsageFailure("missing command: " + alternatives(names));
    }
}

template <class T>
Argument ArgumentParser::add(const std::string& name, T& value, const std::string& help) {
    if constexpr (std::is_same_v<T, bool>) {
        return Argument(m_app.add_flag(name, value, help));
    } else {
        return Argument(m_app.add_option(name, value, help));
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
    } catch (const CLI::RequiredError& error) {
        checkCommand();
        throw UsageFailure(onOneLine(error.what()));
    } catch (const CLI::Error& error) {
        throw UsageFailure(onOneLine(error.what()));
    }
}

} // namespace velorn
