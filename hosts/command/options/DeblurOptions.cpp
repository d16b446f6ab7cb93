#include "hosts/command/options/DeblurOptions.h"

#include "hosts/command/files/standardStreams.h"
#include "hosts/command/formats/formatTexts.h"
#include "hosts/command/options/blurOf.h"
#include "hosts/command/terminal/Failure.h"
#include "velorn.hpp"

#include <algorithm>
#include <array>

namespace velorn {
namespace {

using Shape = AnalyticBlur::Shape;

constexpr const char* kBlurGroup = "Blur (exactly one is required)";

} // namespace

DeblurParser::DeblurParser(ArgumentParser& parser)
    : m_command(parser.addCommand("deblur", "Remove blur from a picture.")) {
    addFiles();
    addBlurs();
    addKernels();
    m_noDeconvolve = m_command
                         .add("--no-deconvolve", m_isSharpenOnly,
                              "Do not remove blur; only sharpen edges and enhance detail.")
                         .group(kBlurGroup);
    m_settings.addTo(m_command);
    m_modelOptions.addTo(m_command);
    m_fileOptions.addTo(m_command);
    m_command.add(
        "-v,--verbose", m_options.isVerbose,
        "Print the measured noise and the chosen settings; with --blind also the kernel, and with "
        "--local whether one kernel is used for all of the picture.");
}

void DeblurParser::addFiles() {
    m_command
        .add("FILE", m_files,
             "IN OUT: the picture to restore, and the file to write, which may be the same. "
             "The extension of OUT selects its format. '-' as IN is the standard input, whose "
             "bytes show its format; '-' as OUT is the standard output, which needs --format."
             "\nIN... with --output-dir: any number of pictures, and of folders, in each of which "
             "all pictures are restored."
             "\nPictures have 8 or 16 bits per channel, grey or RGB, with or without alpha. "
             "Floating-point pictures need samples in 0..1 and are processed at 16 bits. CMYK "
             "pictures with a colour profile become sRGB. Alpha, depth, colour profile, EXIF and "
             "other metadata are kept if the format of the output supports them; otherwise a "
             "warning is printed.\n" +
                 formatHelp())
        .required()
        .file();
    m_batchOptions.addTo(m_command);
}

/// @throws UsageFailure for what has no meaning with many pictures.
void DeblurParser::checkBatch() const {
    if (std::ranges::find(m_files, "-") != m_files.end()) {
        throw UsageFailure("'-', the standard input, cannot be restored with --output-dir");
    }
    if (isStandardStream(m_options.batch->folder)) {
        throw UsageFailure("--output-dir needs a folder, not '-', the standard output");
    }
    if (m_fileOptions.isFormatGiven()) {
        throw UsageFailure("--format excludes --output-dir; the extension in --name selects the "
                           "format of the results");
    }
}

/// Divides the files into inputs and output.
void DeblurParser::takeFiles() {
    m_options.existing = m_batchOptions.existing();
    m_options.batch = m_batchOptions.request({m_files.begin(), m_files.end()});
    if (m_options.batch) {
        checkBatch();
        return;
    }
    if (m_files.size() > 2) {
        throw UsageFailure(std::ranges::find(m_files, "-") == m_files.end()
                               ? "more than one picture to restore needs --output-dir"
                               : "'-', a standard stream, is only for a single picture: IN OUT");
    }
    if (m_files.size() < 2) {
        throw UsageFailure("OUT is missing; the file to write, or --output-dir and a folder");
    }
    m_options.input = m_files[0];
    m_options.output = m_files[1];
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

void DeblurParser::addKernels() {
    m_kernel = m_command
                   .add("--kernel", m_path,
                        "Kernel from a file: a matrix of numbers (.txt, .csv) or a picture.")
                   .valueName("FILE")
                   .group(kBlurGroup);
    m_kernelOptions.addScale(m_command, m_kernel);
    m_kernelOptions.addBlind(
        m_command, kBlurGroup,
        "Unknown blur: find the kernel in the picture. N is the largest side of the "
        "kernel, or its largest width if M gives the height; without numbers, the "
        "picture decides. A warning is printed if the result may be worse than the "
        "picture. See also 'velorn estimate'.");
    m_kernelOptions.addLocal(m_command);
}

DeblurOptions DeblurParser::result() {
    takeFiles();
    m_options.kernel = kernelSource();
    m_options.settings = api::restoreSettings();
    m_settings.applyTo(m_options.settings);
    m_modelOptions.applyTo(m_options.settings);
    m_options.files = m_fileOptions.result(m_options.output);
    m_options.files.encoding.quality = m_modelOptions.fileQuality();
    std::vector<std::filesystem::path> inputs{m_options.input};
    if (auto* blind = std::get_if<BlindSettings>(&m_options.kernel)) {
        blind->threads = m_options.settings.threads;
        inputs.push_back(blind->start.value_or(""));
    } else if (const auto* file = std::get_if<KernelPath>(&m_options.kernel)) {
        inputs.push_back(file->path);
    }
    checkStandardInput(inputs);
    return m_options;
}

KernelSource DeblurParser::kernelSource() {
    const std::array<Argument, 6> choices{
        m_gaussian, m_disc, m_motion, m_kernel, m_kernelOptions.blind(), m_noDeconvolve};
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
        return KernelPath{m_path, m_kernelOptions.scale()};
    }
    if (m_kernelOptions.blind().isGiven()) {
        return m_kernelOptions.search().result();
    }
    return std::monostate{};
}

std::vector<std::string> DeblurParser::completed(std::vector<std::string> words) {
    return BlindOptions::completed(SettingOptions::completed(std::move(words)));
}

} // namespace velorn
