#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace velorn {

/// Makes the name of an output from that of an input. The pattern is text with fields: {stem} is
/// the name of the input without its extension, {ext} the extension with its dot, {number} the
/// place of the input, with at least four digits. {{ and }} are braces.
class OutputName {
public:
    static constexpr const char* kDefault = "{stem}{ext}";

    /// @throws UsageFailure that names an unknown field, a brace without its pair or a folder.
    explicit OutputName(const std::string& pattern);

    /// The name for the input at place `number`, counted from 1.
    std::filesystem::path of(const std::filesystem::path& input, std::size_t number) const;

    /// Whether outputs have the extensions of their inputs.
    bool keepsExtension() const;

private:
    enum class Field { Stem, Extension, Number };

    void addField(const std::string& name);
    void addText(char letter);

    std::vector<std::variant<std::string, Field>> m_parts;
};

} // namespace velorn
