// Writes what the choice among the candidates of the blind search, its confidence and the trust in
// its kernels are fitted to: for each candidate of each blurred picture the evidence and the gains
// of restorations. fitChoice.py reads the table.
#include "BlindCases.h"
#include "hosts/command/kernels/BlurKernel.h"
#include "restoration/blind/findKernel.h"
#include "restoration/failures/Failure.h"
#include "restoration/pictures/luminancePlane.h"
#include "restoration/pipeline/restorePicture.h"
#include "restored.h"
#include "runTool.h"

#include <array>
#include <iostream>
#include <limits>

namespace {

using namespace velorn;
using namespace velorn::tools;
using restoration::FoundKernel;
using restoration::Trust;

constexpr Trust kMediumTrust{3000.0f, 1.0f};
constexpr Trust kFullTrust{};
constexpr Trust kLittleTrust{300.0f, 1.0f};

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

RgbPixels restoredBy(RgbPixels pixels, restoration::Kernel kernel, const Trust& trust) {
    auto& samples = std::get<std::vector<std::uint8_t>>(pixels.samples);
    const VelornPicture view = api::pictureOf(samples.data(), pixels.width, pixels.height, 3);
    VelornRestoreSettings settings = api::restoreSettings();
    settings.threads = 1;
    settings.region = {0, 0, pixels.width, pixels.height};
    kernel.trust = trust;
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
    std::cout << "picture\tfamily\tblur\tnoise\tknown\tcandidate\tgain\thalf\tfull\tlittle";
    for (const auto& part : restoration::kEvidenceWeights) {
        std::cout << '\t' << part.name;
    }
    std::cout << '\n';
}

/// One row; gains are in decibels, those of trusts that only the first candidate is restored with
/// are `nan` for others.
void printCandidate(const BlindCase& each, double known, int candidate, const FoundKernel& found) {
    const Photograph& photograph = each.photograph;
    const auto gainOf = [&](const RgbPixels& result) {
        return photograph.decibelsWhenMoved(result) - photograph.decibels();
    };
    const auto gainWith = [&](const Trust& trust) {
        return candidate == 0 ? gainOf(restoredBy(photograph.taken, found.kernel, trust))
                              : std::numeric_limits<double>::quiet_NaN();
    };
    const RgbPixels restored = restoredBy(photograph.taken, found.kernel, kMediumTrust);
    std::cout << each.picture << '\t' << each.blur.family << '\t' << each.blur.blur.name << '\t'
              << each.noise << '\t' << known << '\t' << candidate << '\t' << gainOf(restored)
              << '\t' << gainOf(meanOf(restored, photograph.taken)) << '\t' << gainWith(kFullTrust)
              << '\t' << gainWith(kLittleTrust);
    for (const auto& part : restoration::kEvidenceWeights) {
        std::cout << '\t' << found.evidence.*part.value;
    }
    std::cout << std::endl;
}

void studyCase(const BlindCase& each) {
    if (!each.isBlurred()) {
        return;
    }
    const Photograph& photograph = each.photograph;
    const double known = photograph.decibelsWhenMoved(
                             restored(photograph.taken, libraryKernel(each.blur.blur.kernel))) -
                         photograph.decibels();
    int candidate = 0;
    for (const FoundKernel& found : candidatesIn(photograph.taken)) {
        if (found.kernel.largerSide() > 1) { // the single pixel restores nothing
            printCandidate(each, known, candidate++, found);
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("studyCandidates",
                          "Writes the evidence for each candidate of the blind search, and the "
                          "gains of restorations with it, as a table with tabulators.");
    CaseRules rules;
    rules.addTo(parser);
    return runTool("studyCandidates", parser, argc, argv, [&] {
        rules.check();
        printHeading();
        forEachCase(rules, studyCase);
    });
}
