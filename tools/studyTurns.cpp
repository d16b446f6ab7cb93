// Measures how often the orientation of an asymmetric kernel is chosen correctly. Restores blurred
// pictures with a kernel and with the same kernel rotated by 180 degrees, and compares the choice
// with the truth: for the kernel of the blur, and for the kernel estimated from the picture.
#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/blind/BlindKernel.h"
#include "hosts/command/blind/KernelCentre.h"
#include "hosts/command/blind/KernelSpecks.h"
#include "hosts/command/restoration/NoiseLevel.h"
#include "hosts/command/restoration/Restoration.h"
#include "SampleBlurs.h"
#include "SamplePictures.h"

#include <array>
#include <iomanip>
#include <iostream>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr std::array<double, 2> kNoises{0.5, 2.0};
constexpr std::uint32_t kSeed = 11;
/// Orientations whose results differ by less, in decibels, count as equally good.
constexpr double kMatters = 0.2;

bool goOn(int, int) {
    return true;
}

/// Results of both orientations, in decibels after the best shift, and the orientation chosen.
struct Choice {
    double asItIs = 0.0;
    double turned = 0.0;
    bool isTurned = false;

    bool matters() const { return std::abs(asItIs - turned) >= kMatters; }
    bool isRight() const { return isTurned == (turned > asItIs); }
};

Choice choose(const Photograph& photograph, const BlurKernel& kernel) {
    RestorationSettings settings;
    settings.lambda = blindStrength(noiseLevel(photograph.taken));
    const BlurKernel turned = rotatedBy180(kernel);
    const auto decibelsWith = [&](const BlurKernel& way) {
        return photograph.decibelsWhenMoved(restore(photograph.taken, way, settings, goOn));
    };
    const auto better = betterOrientation(photograph.taken, kernel, goOn);
    return {decibelsWith(kernel), decibelsWith(turned), better.value().weights == turned.weights};
}

/// Counts the choices that mattered, and the correct ones among them.
class Score {
public:
    void count(const Choice& choice) {
        m_cases += choice.matters() ? 1 : 0;
        m_right += choice.matters() && choice.isRight() ? 1 : 0;
    }
    std::string text() const { return std::to_string(m_right) + " of " + std::to_string(m_cases); }

private:
    int m_cases = 0;
    int m_right = 0;
};

void print(const Choice& choice) {
    const char* verdict = !choice.matters() ? "alike" : choice.isRight() ? "yes" : "no";
    std::cout << choice.asItIs << " | " << choice.turned << " | " << verdict << " | ";
}

void study(const std::vector<NamedPicture>& pictures, KernelSize size) {
    std::cout << "| picture | blur | noise | blurred dB | true kernel dB | turned dB | better one "
                 "chosen | found kernel dB | turned dB | better one chosen |\n"
                 "|---|---|---|---|---|---|---|---|---|---|\n"
              << std::fixed;
    Score known;
    Score found;
    for (const NamedPicture& picture : pictures) {
        for (const NamedBlur& blur : unevenBlurs()) {
            for (const double noise : kNoises) {
                const Photograph photograph =
                    photographOf(picture.colours, blur.kernel, noise, kSeed);
                std::cout << "| " << picture.name << " | " << blur.name << " | "
                          << std::setprecision(1) << noise << " | " << std::setprecision(2)
                          << photograph.decibels() << " | ";
                const Choice ofTruth = choose(photograph, blur.kernel);
                known.count(ofTruth);
                print(ofTruth);
                const auto estimate =
                    estimateKernel(photograph.taken, size, BlindSettings().strength, goOn);
                if (estimate) {
                    const Choice ofFound = choose(photograph, centred(withoutSpecks(*estimate)));
                    found.count(ofFound);
                    print(ofFound);
                }
                std::cout << std::endl;
            }
        }
    }
    std::cout << "\nThe better orientation was chosen for " << known.text() << " true kernels and "
              << found.text() << " estimated ones whose orientations differ by at least "
              << kMatters << " dB.\n";
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser(
        "studyTurns",
        "Measures how often the orientation of an asymmetric kernel is chosen correctly.");
    std::vector<std::string> files;
    int side = 15;
    parser.add("PICTURES", files, "Further sharp photographs, NAME=FILE");
    parser.add("--size", side, "Side of the estimated kernels").showDefault();
    try {
        if (!parser.parse({argv + 1, argv + argc}, std::cout)) {
            return 0;
        }
        std::vector<NamedPicture> pictures = drawnViews(500, 400);
        std::ranges::move(picturesFrom(files), std::back_inserter(pictures));
        study(pictures, {side, side});
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "studyTurns: " << failure.what() << '\n';
        return 1;
    }
}
