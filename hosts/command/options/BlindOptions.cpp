#include "hosts/command/options/BlindOptions.h"

#include "hosts/command/arguments/NumberRange.h"
#include "hosts/command/arguments/Numbers.h"
#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/terminal/Failure.h"
#include "velorn.h"

#include <algorithm>
#include <charconv>

namespace velorn {
namespace {

constexpr int kLeastSide = 3;
constexpr NumberRange kStrength{0.0f, 2.0f};

constexpr const char* kAutomatic = "auto";

/// The search needs as many columns and rows.
constexpr int kLeastLook = 32;
constexpr NumberRange kCandidates{1.0f, static_cast<float>(VELORN_MOST_CANDIDATES)};

PictureArea areaOf(const std::vector<int>& numbers) {
    const PictureArea area{numbers[0], numbers[1], numbers[2], numbers[3]};
    if (area.x < 0 || area.y < 0) {
        throw UsageFailure("--look: X and Y must be at least 0");
    }
    if (area.width < kLeastLook || area.height < kLeastLook) {
        throw UsageFailure("--look: W and H must be at least " + std::to_string(kLeastLook) +
                           " pixels");
    }
    return area;
}

std::string sideRange() {
    return std::to_string(kLeastSide) + ".." + std::to_string(kLargestKernelSide);
}

std::string sizeRange() {
    return std::string("odd numbers, ") + sideRange() + ", default: automatic";
}

/// Parses N or NxM; nothing for the automatic size.
std::optional<KernelSize> kernelSizeOf(const std::string& text, const std::string& option) {
    if (text == kAutomatic) {
        return std::nullopt;
    }
    const auto sideAt = [&](std::size_t begin, std::size_t end) {
        int side = 0;
        const auto parsed = std::from_chars(text.data() + begin, text.data() + end, side);
        const bool isNumber = parsed.ec == std::errc{} && parsed.ptr == text.data() + end;
        if (!isNumber || side < kLeastSide || side > kLargestKernelSide || side % 2 == 0) {
            throw UsageFailure(option + " must be one or two odd numbers in " + sideRange() +
                               ", such as 15 or 15x9");
        }
        return side;
    };
    const std::size_t cross = std::min(text.find('x'), text.size());
    const int width = sideAt(0, cross);
    return KernelSize{width, cross == text.size() ? width : sideAt(cross + 1, text.size())};
}

Turn turnOf(const std::string& text) {
    if (text == "yes") {
        return Turn::Yes;
    }
    return text == "no" ? Turn::No : Turn::Auto;
}

/// Whether a word is meant as a size, valid or not, rather than as a file.
bool isSizeLike(const std::string& word) {
    return !word.empty() && word.front() >= '0' && word.front() <= '9' &&
           word.find_first_not_of("0123456789x.,") == std::string::npos;
}

} // namespace

Argument BlindOptions::addSize(ArgumentParser& parser, const std::string& name,
                               const std::string& help) {
    m_sizeName = name;
    return parser.add(name, m_sizeText, sizeRange() + "\n" + help).valueName("N[xM]");
}

Argument BlindOptions::addStrength(ArgumentParser& parser) {
    return parser
        .add(
            "--strength", m_settings.smoothing,
            kStrength.text() + ", default: " + numberText(m_settings.smoothing) +
                "\nSmooths edges before the kernel is fitted to them. Higher values give smoother, "
                "narrower kernels. Below 0.2, edges are not smoothed.")
        .valueName("NUMBER");
}

Argument BlindOptions::addTurn(ArgumentParser& parser, const std::string& condition) {
    return parser
        .add("--turn", m_turnText,
             "yes, no or auto, default: auto" + condition +
                 "\nWhether to rotate the kernel found by 180 degrees. A picture does not show "
                 "which of the two orientations an asymmetric blur had. auto and no keep the "
                 "orientation that explains the edges of the picture.")
        .valueName("WHEN")
        .choices({"yes", "no", kAutomatic});
}

Argument BlindOptions::addLocal(ArgumentParser& parser, const std::string& condition) {
    return parser.add(
        "--local", m_settings.isLocal,
        condition.substr(2) +
            "\nThe blur differs across the picture: after the kernel of the whole picture, find "
            "one "
            "for each part of about 150 pixels, at most 10 by 10. One kernel is used where they do "
            "not differ reliably. --look and --start control the search for the first kernel.");
}

std::array<Argument, 4> BlindOptions::addChoices(ArgumentParser& parser,
                                                 const std::string& condition) {
    m_startOption =
        parser
            .add("--start", m_start,
                 "default: none" + condition +
                     "\nKernel from a file to refine, instead of a search from nothing.")
            .valueName("FILE");
    m_candidateOption =
        parser
            .add("--candidate", m_settings.candidate,
                 kCandidates.text() + ", default: " + numberText(1.0f) + condition +
                     "\nThe kernel to use: 1 is the best one, 2 the next. 'velorn estimate "
                     "--sheet' shows all.")
            .valueName("N");
    return {
        parser
            .add("--look", m_look,
                 "pixels, default: all of the picture" + condition +
                     "\nThe part of the picture to find the kernel in: left edge, top edge, "
                     "width and height, in the picture as displayed. Use it where other parts "
                     "are blurred in another way.")
            .valueName("X,Y,W,H")
            .commaSeparated(4),
        m_startOption, m_candidateOption,
        parser.add("--strict", m_settings.isStrict,
                   (condition.empty() ? condition : condition.substr(2) + "\n") +
                       "Fail and write nothing if the confidence in the kernel is below 50 %, the "
                       "picture does not look blurred, the blur differs across it without "
                       "--local, or the kernel leaves more than 8 times the noise unexplained. By "
                       "default, warnings are printed for all but the last.")};
}

BlindSettings BlindOptions::result() const {
    BlindSettings settings = m_settings;
    settings.largest = kernelSizeOf(m_sizeText, m_sizeName);
    settings.turn = turnOf(m_turnText);
    kStrength.check("--strength", settings.smoothing);
    kCandidates.check("--candidate", static_cast<float>(settings.candidate));
    if (!m_look.empty()) {
        settings.look = areaOf(m_look);
    }
    if (m_startOption.isGiven()) {
        settings.start = m_start;
        if (settings.largest) {
            throw UsageFailure("--start and a size exclude each other: the kernel in the file "
                               "decides");
        }
    }
    if (settings.isLocal && m_candidateOption.isGiven()) {
        throw UsageFailure("--local and --candidate exclude each other: a candidate is a kernel "
                           "for the whole picture");
    }
    return settings;
}

std::vector<std::string> BlindOptions::completed(std::vector<std::string> words) {
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        const bool isFollowed = i + 1 < words.size() && isSizeLike(words[i + 1]);
        if (words[i] == "--blind" && !isFollowed) {
            words[i].append("=").append(kAutomatic);
        }
    }
    return words;
}

} // namespace velorn
