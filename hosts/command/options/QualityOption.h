#pragma once

#include "hosts/command/arguments/ArgumentParser.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velorn {

/// The option `--quality`, which takes the quality of the restoration by name, that of JPEG and
/// WebP files as a number, or both: `best`, `90`, `best,90`.
class QualityOption {
public:
    QualityOption() = default;
    QualityOption(const QualityOption&) = delete;
    QualityOption& operator=(const QualityOption&) = delete;

    /// Adds the option to `parser`, which keeps references to this object.
    void addTo(ArgumentParser& parser);

    /// The quality of the restoration, a constant of the library, if the command line gives one.
    /// @throws UsageFailure that names what is wrong.
    std::optional<std::int32_t> ofRestoration() const { return parsed().restoration; }

    /// The quality of JPEG and WebP files, 1..100, if the command line gives one.
    /// @throws UsageFailure that names what is wrong.
    std::optional<int> ofFile() const { return parsed().file; }

private:
    struct Parsed {
        std::optional<std::int32_t> restoration;
        std::optional<int> file;
    };
    Parsed parsed() const;

    std::string m_text;
};

} // namespace velorn
