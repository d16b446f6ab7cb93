// Measures the blind search for kernels: blurs sharp pictures, restores them as `velorn deblur
// --blind` does, and compares kernels and results with the truth.
#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/blind/BlindKernel.h"
#include "hosts/command/commands/DeblurOptions.h"
#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/restoration/FramedRestoration.h"
#include "hosts/command/restoration/NoiseLevel.h"
#include "hosts/command/terminal/Failure.h"
#include "KernelLikeness.h"
#include "SampleBlurs.h"
#include "SamplePictures.h"

#include <array>
#include <iomanip>
#include <iostream>
#include <optional>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr std::uint32_t kSeed = 11;

/// Settings of the study.
struct Study {
    BlindSettings blind;
    /// Strength of the restorations with a found kernel; 0 uses the host's default.
    float lambda = 0.0f;
    std::vector<double> noises{0.5, 2.0};
};

/// The results for one blurred picture, in decibels.
struct Trial {
    double blurred = 0.0;
    double blind = 0.0;
    /// `blind` after the best shift by whole pixels.
    double moved = 0.0;
    double known = 0.0;
    double likeness = 0.0;
    bool isWarned = false;

    double gain() const { return moved - blurred; }
};

RestorationSettings settingsFor(float strength) {
    RestorationSettings settings;
    settings.lambda = strength;
    return settings;
}

RgbPixels restored(const RgbPixels& pixels, const BlurKernel& kernel,
                   const RestorationSettings& settings) {
    return restoreInFrame(pixels, kernel, settings, DeblurOptions().framePasses,
                          [](int, int) { return true; });
}

/// Empty when the picture has too few edges.
std::optional<BlindKernel> foundIn(const RgbPixels& pixels, const BlindSettings& blind) {
    try {
        return findKernel(pixels, blind, [](int, int) { return true; });
    } catch (const Failure&) {
        return std::nullopt;
    }
}

std::optional<Trial> runTrial(const Photograph& photograph, const BlurKernel& truth,
                              const Study& study) {
    const double noise = noiseLevel(photograph.taken);
    const RestorationSettings settings =
        settingsFor(study.lambda > 0.0f ? study.lambda : blindStrength(noise));
    const auto found = foundIn(photograph.taken, study.blind);
    if (!found) {
        return std::nullopt;
    }
    const RgbPixels blind = restored(photograph.taken, found->kernel, settings);
    const RgbPixels known = restored(photograph.taken, truth, settingsFor(defaultStrength(noise)));
    return Trial{photograph.decibels(),
                 photograph.decibelsOf(blind),
                 photograph.decibelsWhenMoved(blind),
                 photograph.decibelsOf(known),
                 likenessEitherWay(found->kernel, truth),
                 !found->isHelpful};
}

/// Counts and means over trials.
class Summary {
public:
    void count(const Trial& trial) {
        ++m_trials;
        m_inPlace += trial.blind - trial.blurred;
        m_gain += trial.gain();
        m_known += trial.known - trial.blurred;
        m_likeness += trial.likeness;
        ++(trial.gain() < 0.0 ? trial.isWarned ? m_worseWarned : m_worseUnwarned
           : trial.isWarned   ? m_betterWarned
                              : m_betterUnwarned);
    }

    void print(const std::string& name) const {
        std::cout << "| " << name << " | " << m_trials << " | " << std::setprecision(3)
                  << m_likeness / m_trials << " | " << std::setprecision(2) << m_inPlace / m_trials
                  << " | " << m_gain / m_trials << " | " << m_known / m_trials << " | "
                  << m_betterUnwarned << " | " << m_betterWarned << " | " << m_worseWarned << " | "
                  << m_worseUnwarned << " |\n";
    }

private:
    int m_trials = 0;
    int m_betterUnwarned = 0;
    int m_betterWarned = 0;
    int m_worseWarned = 0;
    int m_worseUnwarned = 0;
    double m_inPlace = 0.0;
    double m_gain = 0.0;
    double m_known = 0.0;
    double m_likeness = 0.0;
};

void printTrial(const Trial& trial) {
    std::cout << std::setprecision(3) << trial.likeness << " | " << std::setprecision(2)
              << trial.blurred << " | " << trial.blind << " | " << trial.moved << " | "
              << trial.known << " | " << (trial.isWarned ? "yes" : "") << " |" << std::endl;
}

void run(const std::vector<NamedPicture>& pictures, const Study& study) {
    std::cout << "| picture | blur | noise | likeness | blurred dB | blind dB | moved dB | "
                 "known dB | warned |\n|---|---|---|---|---|---|---|---|---|\n"
              << std::fixed;
    const std::vector<NamedBlur> blurs = studiedBlurs();
    std::vector<Summary> byBlur(blurs.size());
    Summary all;
    for (const NamedPicture& picture : pictures) {
        for (std::size_t i = 0; i < blurs.size(); ++i) {
            for (const double noise : study.noises) {
                const Photograph photograph =
                    photographOf(picture.colours, blurs[i].kernel, noise, kSeed);
                std::cout << "| " << picture.name << " | " << blurs[i].name << " | "
                          << std::setprecision(1) << noise << " | ";
                const auto trial = runTrial(photograph, blurs[i].kernel, study);
                if (!trial) {
                    std::cout << "too few edges ||||||" << std::endl;
                    continue;
                }
                printTrial(*trial);
                byBlur[i].count(*trial);
                all.count(*trial);
            }
        }
    }
    std::cout << "\n| blur | trials | mean likeness | gain dB | gain moved | gain known | better "
                 "| better, warned | worse, warned | worse "
                 "|\n|---|---|---|---|---|---|---|---|---|---|\n";
    for (std::size_t i = 0; i < blurs.size(); ++i) {
        byBlur[i].print(blurs[i].name);
    }
    all.print("all");
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("studyBlind",
                          "Measures the blind search for kernels on pictures with known blurs.");
    std::vector<std::string> files;
    Study study;
    int side = 15;
    parser.add("PICTURES", files, "Further sharp photographs, NAME=FILE");
    parser.add("--size", side, "Side of the estimated kernels").showDefault();
    parser.add("--strength", study.blind.strength, "As for 'velorn estimate'").showDefault();
    parser.add("--part", study.blind.partSide, "Side of the part that kernels are estimated from")
        .showDefault();
    parser
        .add("--lambda", study.lambda,
             "Strength of restorations with an estimated kernel; 0: the host's default")
        .showDefault();
    parser.add("--noise", study.noises, "Standard deviations of the noise, in levels of 255")
        .commaSeparated();
    try {
        if (!parser.parse({argv + 1, argv + argc}, std::cout)) {
            return 0;
        }
        study.blind.size = {side, side};
        std::vector<NamedPicture> pictures = drawnViews(600, 500);
        std::ranges::move(picturesFrom(files), std::back_inserter(pictures));
        run(pictures, study);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "studyBlind: " << failure.what() << '\n';
        return 1;
    }
}
