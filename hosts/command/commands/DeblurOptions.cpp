#include "hosts/command/commands/DeblurOptions.h"

#include "hosts/command/arguments/NumberRange.h"
#include "hosts/command/commands/blurOf.h"
#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <array>

namespace velorn {
namespace {

using Shape = AnalyticBlur::Shape;

constexpr const char* kBlurGroup = "Blur (exactly one is required)";
constexpr const char* kKernelGroup = "Options of --kernel and --blind";
constexpr NumberRange kFramePasses{0.0f, 8.0f};
constexpr NumberRange kKernelScales{1.0f, static_cast<float>(kLargestKernelSide)};

} // namespace

DeblurParser::DeblurParser(ArgumentParser& parser)
    : m_command(parser.addCommand("deblur", "Remove blur from a picture.")) {
    addFiles();
    addBlurs();
    addKernelFile();
    addBlind();
    m_noDeconvolve = m_command
                         .add("--no-deconvolve", m_isSharpenOnly,
                              "Do not remove blur; only sharpen edges and enhance detail.")
                         .group(kBlurGroup);
    m_settings.addTo(m_command);
    addFramePasses();
    m_command.add(
        "-v,--verbose", m_options.isVerbose,
        "Print the measured noise and the chosen strength; with --blind also the kernel.");
}

void DeblurParser::addFiles() {
    m_command
        .add("IN", m_options.input,
             "Picture to restore: 8 or 16 bits per channel, grey or RGB, with or without alpha. "
             "Floating-point pictures need samples in 0..1 and are processed at 16 bits.")
        .required();
    m_command
        .add("OUT", m_options.output,
             "File to write; may be the same as IN. The extension selects the format. Alpha, "
             "colour profile, EXIF and other metadata are kept if the format supports them.")
        .required();
}

void DeblurParser::addBlurs() {
    m_gaussian =
        m_command
            .add("--gaussian", m_extent,
                 extentRange(Shape::Gaussian) + "\nGaussian blur with this standard deviation.")
            .valueName("SIGMA")
            .group(kBlurGroup);
    m_disc = m_command
                 .add("--disc", m_extent,
                      extentRange(Shape::Disc) + "\nLens out of focus: disc with this radius.")
                 .valueName("RADIUS")
                 .group(kBlurGroup);
    m_motion = m_command
                   .add("--motion", m_lengthAndAngle,
                        extentRange(Shape::Motion) + "; " + angleRange() +
                            "\nStraight motion of this length and direction. 0 is horizontal, 90 "
                            "vertical, 45 rises to the right.")
                   .valueName("LENGTH,ANGLE")
                   .group(kBlurGroup)
                   .commaSeparated(2);
}

void DeblurParser::addKernelFile() {
    m_kernel = m_command
                   .add("--kernel", m_path.path,
                        "Kernel from a file: a matrix of numbers (.txt, .csv) or a picture.")
                   .valueName("FILE")
                   .group(kBlurGroup);
    m_kernelScale =
        m_command
            .add("--kernel-scale", m_scale,
                 std::string("pixels, ") + kKernelScales.text() +
                     ", default: as the file says, else 1; only with --kernel"
                     "\nSide of the square that shows one weight in a kernel picture. Pictures "
                     "written by velorn contain this number.")
            .valueName("N")
            .group(kKernelGroup)
            .needs(m_kernel);
}

void DeblurParser::addBlind() {
    m_blind = m_blindOptions
                  .addSize(m_command, "--blind",
                           "Unknown blur: find the kernel in the picture. N is the side of the "
                           "kernel, or its width if M gives the height. Choose a size a little "
                           "larger than the blur; twice the size of the blur gives poor results. "
                           "A warning is printed if the kernel explains the picture badly. See "
                           "also 'velorn estimate'.")
                  .valueName("[N[xM]]")
                  .group(kBlurGroup);
    m_blindOptions.addTurn(m_command, "; only with --blind").group(kKernelGroup).needs(m_blind);
}

void DeblurParser::addFramePasses() {
    m_command
        .add(
            "--frame-passes", m_options.framePasses,
            kFramePasses.text() + ", default: " + std::to_string(m_options.framePasses) +
                "\nPasses that reconstruct the surroundings of the picture, to avoid streaks along "
                "its borders. 0 turns the reconstruction off.")
        .valueName("N")
        .group("Settings");
}

DeblurOptions DeblurParser::result() {
    m_options.kernel = kernelSource();
    m_options.settings = m_settings.result();
    m_options.settings.deconvolve = !m_isSharpenOnly;
    m_options.lambdaIsGiven = m_settings.lambdaIsGiven();
    kFramePasses.check("--frame-passes", static_cast<float>(m_options.framePasses));
    return m_options;
}

KernelSource DeblurParser::kernelSource() {
    const std::array<Argument, 6> choices{m_gaussian, m_disc,  m_motion,
                                          m_kernel,   m_blind, m_noDeconvolve};
    if (std::ranges::count_if(choices, &Argument::isGiven) != 1) {
        throw UsageFailure("deblur needs exactly one of --gaussian, --disc, --motion, --kernel, "
                           "--blind and --no-deconvolve");
    }
    if (m_gaussian.isGiven()) {
        return blurOf(Shape::Gaussian, m_extent, 0.0f, "--gaussian");
    }
    if (m_disc.isGiven()) {
        return blurOf(Shape::Disc, m_extent, 0.0f, "--disc");
    }
    if (m_motion.isGiven()) {
        return blurOf(Shape::Motion, m_lengthAndAngle[0], m_lengthAndAngle[1], "--motion");
    }
    if (m_kernel.isGiven()) {
        return kernelPath();
    }
    if (m_blind.isGiven()) {
        return m_blindOptions.result();
    }
    return std::monostate{};
}

KernelPath DeblurParser::kernelPath() {
    if (m_kernelScale.isGiven()) {
        kKernelScales.check("--kernel-scale", static_cast<float>(m_scale));
        m_path.scale = m_scale;
    }
    return m_path;
}

std::vector<std::string> DeblurParser::completed(std::vector<std::string> words) {
    return BlindOptions::completed(SettingOptions::completed(std::move(words)));
}

} // namespace velorn
