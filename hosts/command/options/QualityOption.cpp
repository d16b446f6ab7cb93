#include "hosts/command/options/QualityOption.h"

#include "hosts/command/terminal/Failure.h"
#include "velorn.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <sstream>

namespace velorn {
namespace {

struct Name {
    const char* text;
    std::int32_t value;
};

constexpr std::array<Name, 3> kNames{{{"fast", VELORN_QUALITY_FAST},
                                      {"normal", VELORN_QUALITY_NORMAL},
                                      {"best", VELORN_QUALITY_BEST}}};

std::vector<std::string> names() {
    std::vector<std::string> texts;
    for (const Name& name : kNames) {
        texts.emplace_back(name.text);
    }
    return texts;
}

/// An integer in 1..100, or nothing.
std::optional<int> percentage(const std::string& text) {
    int value = 0;
    const auto end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    const bool isNumber = read.ec == std::errc{} && read.ptr == end;
    return isNumber && value >= 1 && value <= 100 ? std::optional(value) : std::nullopt;
}

[[noreturn]] void refuse(const std::string& text) {
    throw UsageFailure("--quality must be fast, normal or best, a number from 1 to 100, or both, "
                       "separated by a comma, not '" +
                       text + "'");
}

} // namespace

void QualityOption::addTo(ArgumentParser& parser) {
    parser
        .add("--quality", m_text,
             "fast, normal or best, default: normal, or fast with --lambda or --alpha"
             "\nnormal removes noise from the brightness after the deconvolution and keeps "
             "texture, best does so more thoroughly and for colours. fast leaves the result of the "
             "deconvolution, so that --lambda and --alpha have their full effect; presets that set "
             "--alpha use it, too."
             "\nN is the quality of a JPEG or WebP file, 1..100, default: that of IN if both are "
             "JPEG files, else 97. Both may be given, as in best,90. A lossless WebP file stays "
             "lossless without N.")
        .valueName("NAME|N")
        .group("Settings")
        .suggests(names());
}

QualityOption::Parsed QualityOption::parsed() const {
    Parsed result;
    std::istringstream words(m_text);
    for (std::string word; std::getline(words, word, ',');) {
        const auto name = std::ranges::find(kNames, word, &Name::text);
        const auto number = percentage(word);
        if (name != kNames.end() && !result.restoration) {
            result.restoration = name->value;
        } else if (number && !result.file) {
            result.file = number;
        } else {
            refuse(m_text);
        }
    }
    if (m_text.ends_with(',')) {
        refuse(m_text);
    }
    return result;
}

} // namespace velorn
