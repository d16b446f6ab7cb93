#pragma once

#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/options/FormatOption.h"

#include <array>
#include <filesystem>

namespace velorn {

/// `velorn kernel`
struct KernelOptions {
    AnalyticBlur blur;
    std::filesystem::path output;
    /// As `FormatOption::result` gives it.
    std::string format{};
};

/// The `kernel` command on the command line.
class KernelParser {
public:
    /// Adds the command to `parser`, which keeps references to this object.
    explicit KernelParser(ArgumentParser& parser);
    KernelParser(const KernelParser&) = delete;
    KernelParser& operator=(const KernelParser&) = delete;

    /// The options as the command line gives them, if it selects this command.
    /// @throws UsageFailure that names the error.
    KernelOptions result() const;

private:
    /// One shape, in the order of `AnalyticBlur::Shape`.
    struct ShapeCommand {
        const char* name;
        ArgumentParser& parser;
    };

    ShapeCommand addShape(ArgumentParser& command, AnalyticBlur::Shape shape, const char* name,
                          const char* description, const char* extentName, const char* extentHelp);

    std::filesystem::path m_output;
    FormatOption m_format{{"txt", "csv"}};
    float m_extent = 0.0f;
    float m_angle = 0.0f;
    ArgumentParser& m_command;
    std::array<ShapeCommand, 3> m_shapes;
};

} // namespace velorn
