// Writes what the choice among the candidates of the blind search, its confidence and the trust in
// its kernels are fitted to: for each candidate of each picture the evidence and the gains
// of restorations. fitChoice.py reads the table.
#include "BlindCases.h"
#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/terminal/Failure.h"
#include "Pictures.h"
#include "restoration/blind/findKernel.h"
#include "restoration/failures/Failure.h"
#include "restoration/pictures/luminancePlane.h"
#include "restoration/pipeline/restorePicture.h"
#include "restored.h"
#include "runTool.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace velorn;
using namespace velorn::tools;
using restoration::FoundKernel;

VelornPicture viewOf(const RgbPixels& pixels) {
    const auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    return api::pictureOf(samples.data(), pixels.width, pixels.height, 3);
}

/// Empty when the picture has too few edges.
std::vector<FoundKernel> candidatesIn(const RgbPixels& pixels) {
    restoration::Team team(1, {});
    const restoration::PictureReader reader(viewOf(pixels));
    try {
        return findCandidates(luminancePlane(reader, team), {}, team);
    } catch (const restoration::Failure&) {
        return {};
    }
}

/// The restoration with as much strength as the kernel bears, and nothing of the picture mixed in.
RgbPixels restoredBy(RgbPixels pixels, restoration::Kernel kernel) {
    auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    const VelornPicture view = api::pictureOf(samples.data(), pixels.width, pixels.height, 3);
    VelornRestoreSettings settings = api::restoreSettings();
    settings.threads = 1;
    settings.region = {0, 0, pixels.width, pixels.height};
    kernel.trust.share = 1.0f;
    const std::array<const restoration::Kernel*, 1> kernels{&kernel};
    restoration::restorePicture(view, view, kernels, settings);
    return pixels;
}

RgbPixels meanOf(RgbPixels first, const RgbPixels& second) {
    auto& samples = std::get<std::vector<std::uint8_t>>(first.samples);
    const auto& others = std::get<std::vector<std::uint8_t>>(second.samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<std::uint8_t>((samples[i] + others[i] + 1) / 2);
    }
    return first;
}

void printHeading() {
    std::cout << "picture\tfamily\tblur\tnoise\tknown\tcandidate\tshare\tconfidence\tgain\thalf";
    for (const auto& part : restoration::kEvidenceWeights) {
        std::cout << '\t' << part.name;
    }
    std::cout << '\n';
}

/// One row. `known` is the gain of the true kernel, `share` that of the restoration in the result
/// of the search. Gains in decibels, of the full restoration and of its mean with the picture.
void printCandidate(const BlindCase& each, double known, int candidate, double share,
                    const FoundKernel& found) {
    const Photograph& photograph = each.photograph;
    const auto gainOf = [&](const RgbPixels& result) {
        return photograph.decibelsWhenMoved(result) - photograph.decibels();
    };
    const RgbPixels restored = restoredBy(photograph.taken, found.kernel);
    std::cout << each.picture << '\t' << each.blur.family << '\t' << each.blur.blur.name << '\t'
              << each.noise << '\t' << known << '\t' << candidate << '\t' << share << '\t'
              << found.confidence << '\t' << gainOf(restored) << '\t'
              << gainOf(meanOf(restored, photograph.taken));
    for (const auto& part : restoration::kEvidenceWeights) {
        std::cout << '\t' << found.evidence.*part.value;
    }
    std::cout << std::endl;
}

/// The share of a restoration in the result of the search: 0 for the kernel of a single pixel.
double shareOf(const FoundKernel& found) {
    return found.kernel.largerSide() > 1 ? static_cast<double>(found.kernel.trust.share) : 0.0;
}

/// Decibels that a restoration with the true kernel gains; 0 where there is none.
double knownGain(const BlindCase& each) {
    if (!each.isBlurred()) {
        return 0.0;
    }
    const Photograph& photograph = each.photograph;
    const RgbPixels known = restored(photograph.taken, libraryKernel(each.blur.blur.kernel));
    return photograph.decibelsWhenMoved(known) - photograph.decibels();
}

/// Prints up to `most` candidates.
void studyCase(const BlindCase& each, int most) {
    const double known = knownGain(each);
    const std::vector<FoundKernel> candidates = candidatesIn(each.photograph.taken);
    int number = 0;
    for (const FoundKernel& found : candidates) {
        if (found.kernel.largerSide() > 1 && number < most) {
            printCandidate(each, known, number++, shareOf(candidates.front()), found);
        }
    }
}

/// A photograph that was blurred elsewhere: NAME=SHARP=TAKEN.
void studyPair(const std::string& pair, int most) {
    const std::size_t first = pair.find('=');
    const std::size_t second = pair.find('=', first + 1);
    if (second == std::string::npos) {
        throw UsageFailure("a pair is NAME=SHARP=TAKEN");
    }
    const std::string sharp = pair.substr(first + 1, second - first - 1);
    BlindCase each;
    each.picture = pair.substr(0, first);
    each.blur.family = "pair";
    each.photograph = {readColours(sharp), eightBits(readColours(pair.substr(second + 1)))};
    studyCase(each, most);
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("studyCandidates",
                          "Writes the evidence for each candidate of the blind search, and the "
                          "gains of restorations with it, as a table with tabulators.");
    CaseRules rules;
    rules.addTo(parser);
    std::vector<std::string> pairs;
    parser.add("--pairs", pairs, "Study these instead, NAME=SHARP=TAKEN, which are blurred already")
        .commaSeparated();
    int most = 4;
    parser.add("--candidates", most, "Candidates to restore each picture with, at most")
        .showDefault();
    return runTool("studyCandidates", parser, argc, argv, [&] {
        rules.check();
        printHeading();
        if (pairs.empty()) {
            forEachCase(rules, [&](const BlindCase& each) { studyCase(each, most); });
        }
        std::ranges::for_each(pairs, [&](const std::string& pair) { studyPair(pair, most); });
    });
}
