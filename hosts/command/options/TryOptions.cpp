#include "hosts/command/options/TryOptions.h"

#include "hosts/command/arguments/Numbers.h"
#include "hosts/command/arguments/shellWord.h"
#include "hosts/command/files/standardStreams.h"
#include "hosts/command/options/blurOf.h"
#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <string_view>

namespace velorn {
namespace {

using Shape = AnalyticBlur::Shape;

constexpr const char* kBlurGroup = "Blur (at least one is required)";
constexpr const char* kSettingsGroup = "Settings";
/// Sheets with more tiles fit no screen.
constexpr std::size_t kMostTiles = 60;
constexpr int kLeastRegion = 16;

} // namespace

TryParser::TryParser(ArgumentParser& parser)
    : m_command(parser.addCommand("try", "Restore a part of a picture in several ways.")) {
    addFiles();
    addSeries();
    addBlurs();
    addKernels();
    m_settingOptions.addTo(m_command);
    m_modelOptions.addTo(m_command);
    m_fileOptions.addLimitTo(m_command);
}

void TryParser::addFiles() {
    m_command
        .add("IN", m_options.input,
             "Blurred picture: 8 or 16 bits per channel, grey or RGB. '-' is the standard input.")
        .required();
    m_command
        .add("-o,--output", m_options.sheet,
             "Sheet to write: a picture that shows a part of IN at full size, first as it is, then "
             "restored in several ways. Below each tile are the options that restore all of IN in "
             "this way with 'velorn deblur IN OUT'; the command prints them, too.")
        .required()
        .valueName("SHEET");
    m_format.addTo(m_command, "OPTIONS");
    m_regionOption =
        m_command
            .add("--region", m_region,
                 "pixels, default: where IN has most texture"
                 "\nThe part to show: left edge, top edge, width and height, in the picture as "
                 "displayed. It looks as it does in a restoration of all of IN.")
            .valueName("X,Y,W,H")
            .commaSeparated(4);
}

void TryParser::addSeries() {
    m_strengthsOption =
        m_command
            .add("--strengths", m_strengths,
                 "default with one blur: auto/9,auto/3,auto,3auto,9auto; with several: auto"
                 "\nThe strengths to show for each blur. auto is the strength that is chosen for "
                 "the picture, auto/3 a third of it, 3auto three times it; numbers are values of "
                 "--lambda. With low strengths, the picture stays softer and smoother; high ones "
                 "show more detail, noise and fringes.")
            .valueName("LIST")
            .repeatedLists();
}

void TryParser::addBlurs() {
    const auto add = [this](const char* name, std::vector<float>& values, const std::string& help,
                            const char* valueName) {
        m_command.add(name, values, help).valueName(valueName).group(kBlurGroup).repeatedLists();
    };
    add("--gaussian", m_deviations,
        extentRange(Shape::Gaussian) + "\nGaussian blurs with these standard deviations.",
        "SIGMA[,SIGMA...]");
    add("--disc", m_radii,
        extentRange(Shape::Disc) + "\nLens out of focus: discs with these radii.",
        "RADIUS[,RADIUS...]");
    add("--motion", m_motions,
        extentRange(Shape::Motion) + "; " + angleRange() +
            "\nStraight motion of this length and direction. 0 is horizontal, 90 vertical, 45 "
            "rises to the right. Can be repeated.",
        "LENGTH,ANGLE");
}

void TryParser::addKernels() {
    const Argument kernel = m_command
                                .add("--kernel", m_files,
                                     "Kernel from a file: a matrix of numbers (.txt, .csv) or a "
                                     "picture. Can be repeated.")
                                .valueName("FILE")
                                .group(kBlurGroup)
                                .repeated()
                                .file();
    m_kernelOptions.addScale(m_command, kernel);
    m_kernelOptions.addBlind(
        m_command, kBlurGroup,
        "Unknown blur: find the kernel in the picture. The sheet shows all candidates, "
        "or with --candidate or --strengths one of them with each strength. N is the "
        "largest side of the kernel, or its largest width if M gives the height; "
        "without numbers, the picture decides.");
}

TryOptions TryParser::result() const {
    TryOptions options = m_options;
    options.format = m_format.result(options.sheet);
    if (m_regionOption.isGiven()) {
        options.region = region();
    }
    options.settings = settings();
    options.maxPixels = m_fileOptions.maxPixels();
    options.blurs = blurs(options.settings.settings.threads);
    options.strengths = strengths(options);
    if (options.blurs.size() * std::max<std::size_t>(options.strengths.size(), 1) > kMostTiles) {
        throw UsageFailure("a sheet shows at most " + std::to_string(kMostTiles) + " restorations");
    }
    checkInputs(options);
    return options;
}

/// @throws UsageFailure when the standard input is to be read twice
void TryParser::checkInputs(const TryOptions& options) const {
    std::vector<std::filesystem::path> inputs{options.input};
    for (const TriedBlur& blur : options.blurs) {
        if (const auto* file = std::get_if<KernelPath>(&blur.kernel)) {
            inputs.push_back(file->path);
        } else if (const auto* blind = std::get_if<BlindSettings>(&blur.kernel)) {
            inputs.push_back(blind->start.value_or(""));
        }
    }
    checkStandardInput(inputs);
}

PictureArea TryParser::region() const {
    const PictureArea area{m_region[0], m_region[1], m_region[2], m_region[3]};
    if (area.x < 0 || area.y < 0) {
        throw UsageFailure("--region: X and Y must be at least 0");
    }
    if (area.width < kLeastRegion || area.height < kLeastRegion) {
        throw UsageFailure("--region: W and H must be at least " + std::to_string(kLeastRegion) +
                           " pixels");
    }
    return area;
}

std::vector<TriedBlur> TryParser::blurs(int threads) const {
    std::vector<TriedBlur> all = knownBlurs();
    if (m_kernelOptions.blind().isGiven()) {
        if (!all.empty()) {
            throw UsageFailure("--blind excludes --gaussian, --disc, --motion and --kernel");
        }
        BlindSettings blind = m_kernelOptions.search().result();
        blind.threads = threads;
        // The words are found by their groups; those of the blur have only this one then.
        std::string words = m_command.givenWords(kBlurGroup);
        if (words.ends_with(" auto")) {
            words.resize(words.size() - std::string(" auto").size());
        }
        all.push_back({blind, words.substr(1) + m_command.givenWords(KernelSourceOptions::kGroup)});
    }
    if (all.empty()) {
        throw UsageFailure(
            "try needs one of --gaussian, --disc, --motion, --kernel and --blind, or several");
    }
    return all;
}

std::vector<TriedBlur> TryParser::knownBlurs() const {
    std::vector<TriedBlur> all;
    for (const float deviation : m_deviations) {
        all.push_back({blurOf(Shape::Gaussian, deviation, 0.0f, "--gaussian"),
                       "--gaussian " + numberText(deviation)});
    }
    for (const float radius : m_radii) {
        all.push_back(
            {blurOf(Shape::Disc, radius, 0.0f, "--disc"), "--disc " + numberText(radius)});
    }
    if (m_motions.size() % 2 != 0) {
        throw UsageFailure("--motion needs a length and an angle, such as 12,30; repeat it for "
                           "other motions");
    }
    for (std::size_t i = 0; i < m_motions.size(); i += 2) {
        all.push_back(
            {blurOf(Shape::Motion, m_motions[i], m_motions[i + 1], "--motion"),
             "--motion " + numberText(m_motions[i]) + "," + numberText(m_motions[i + 1])});
    }
    for (const std::string& file : m_files) {
        all.push_back(
            {KernelPath{file, m_kernelOptions.scale()},
             "--kernel " + shellWord(file) + m_command.givenWords(KernelSourceOptions::kGroup)});
    }
    return all;
}

std::vector<TrialStrength> TryParser::strengths(const TryOptions& options) const {
    const bool isChosen = options.settings.settings.strength != VELORN_AUTOMATIC;
    if (m_strengthsOption.isGiven()) {
        if (isChosen) {
            throw UsageFailure("--strengths and --lambda exclude each other");
        }
        return trialStrengths(m_strengths);
    }
    if (m_kernelOptions.blind().isGiven() && !m_kernelOptions.search().isCandidateGiven()) {
        return {};
    }
    return isChosen || options.blurs.size() > 1 ? std::vector<TrialStrength>{TrialStrength{}}
                                                : usualStrengths();
}

TrialSettings TryParser::settings() const {
    TrialSettings settings{api::restoreSettings(), m_command.givenWords(kSettingsGroup), {}};
    m_settingOptions.applyTo(settings.settings);
    m_modelOptions.applyTo(settings.settings);
    // All strengths have the same quality; with --lambda, 'velorn deblur' uses another by default.
    if (!m_modelOptions.isQualityGiven() && settings.settings.quality == VELORN_QUALITY_NORMAL) {
        constexpr std::string_view kOption = " --quality ";
        const std::size_t ofFile = settings.words.find(kOption);
        if (ofFile == std::string::npos) {
            settings.strengthWords = " --quality normal";
        } else {
            settings.words.insert(ofFile + kOption.size(), "normal,");
        }
    }
    settings.words += m_command.givenWords(FileOptions::kGroup);
    return settings;
}

} // namespace velorn
