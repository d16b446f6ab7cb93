#include "hosts/command/batch/OutputName.h"

#include "hosts/command/terminal/Failure.h"

#include <algorithm>

namespace velorn {
namespace {

constexpr std::size_t kLeastDigits = 4;

std::string withZeros(std::size_t number) {
    const std::string digits = std::to_string(number);
    return std::string(kLeastDigits - std::min(kLeastDigits, digits.size()), '0') + digits;
}

} // namespace

OutputName::OutputName(const std::string& pattern) {
    if (pattern.empty() || pattern.find('/') != std::string::npos) {
        throw UsageFailure("--name is the name of a file without folders; --output-dir gives the "
                           "folder");
    }
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char letter = pattern[i];
        const bool isBrace = letter == '{' || letter == '}';
        const bool isDoubled = isBrace && i + 1 < pattern.size() && pattern[i + 1] == letter;
        if (!isBrace || isDoubled) {
            addText(letter);
            i += isDoubled ? 1 : 0;
            continue;
        }
        const std::size_t end = pattern.find('}', i);
        if (letter == '}' || end == std::string::npos) {
            throw UsageFailure("--name has a brace without its pair; write {{ or }} for a brace");
        }
        addField(pattern.substr(i + 1, end - i - 1));
        i = end;
    }
}

void OutputName::addField(const std::string& name) {
    if (name == "stem") {
        m_parts.emplace_back(Field::Stem);
    } else if (name == "ext") {
        m_parts.emplace_back(Field::Extension);
    } else if (name == "number") {
        m_parts.emplace_back(Field::Number);
    } else {
        throw UsageFailure("--name has an unknown field {" + name +
                           "}; the fields are {stem}, {ext} and {number}");
    }
}

void OutputName::addText(char letter) {
    if (m_parts.empty() || !std::holds_alternative<std::string>(m_parts.back())) {
        m_parts.emplace_back(std::string());
    }
    std::get<std::string>(m_parts.back()) += letter;
}

std::filesystem::path OutputName::of(const std::filesystem::path& input, std::size_t number) const {
    std::string name;
    for (const auto& part : m_parts) {
        if (const auto* text = std::get_if<std::string>(&part)) {
            name += *text;
            continue;
        }
        switch (std::get<Field>(part)) {
        case Field::Stem:
            name += input.stem().string();
            break;
        case Field::Extension:
            name += input.extension().string();
            break;
        case Field::Number:
            name += withZeros(number);
            break;
        }
    }
    return name;
}

bool OutputName::keepsExtension() const {
    return std::ranges::find(m_parts, std::variant<std::string, Field>(Field::Extension)) !=
           m_parts.end();
}

} // namespace velorn
