#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/options/QualityOption.h"
#include "hosts/command/options/ThreadsOption.h"
#include "velorn.h"

#include <optional>
#include <string>

namespace velorn {

/// The options of `velorn deblur` that choose how the library models the picture, and how much time
/// it takes.
class ModelOptions {
public:
    ModelOptions() = default;
    ModelOptions(const ModelOptions&) = delete;
    ModelOptions& operator=(const ModelOptions&) = delete;

    /// Adds the options to `parser`, which keeps references to this object.
    void addTo(ArgumentParser& parser);

    /// Changes `settings`, which have the strengths of the command line, as the command line says.
    /// @throws UsageFailure that names what is wrong.
    void applyTo(VelornRestoreSettings& settings) const;

    /// The quality of JPEG and WebP files, 1..100, if the command line gives one.
    std::optional<int> fileQuality() const { return m_quality.ofFile(); }

    /// Whether the command line gives a quality of the restoration.
    bool isQualityGiven() const { return m_quality.ofRestoration().has_value(); }

private:
    QualityOption m_quality;
    std::string m_light = "auto";
    int m_framePasses = 2;
    ThreadsOption m_threads;
    bool m_keepsClipped = false;
};

} // namespace velorn
