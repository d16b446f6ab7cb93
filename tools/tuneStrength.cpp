// Fits the rule for the host's default strength: restores blurred, noisy pictures with a range of
// strengths, and fits the best strength to the noise that the host measures.
#include "hosts/command/arguments/ArgumentParser.h"
#include "hosts/command/commands/DeblurOptions.h"
#include "hosts/command/kernels/BlurKernel.h"
#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/restoration/FramedRestoration.h"
#include "hosts/command/restoration/NoiseLevel.h"
#include "SamplePictures.h"
#include "Scene.h"

#include <array>
#include <cmath>
#include <iomanip>
#include <iostream>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr std::array<double, 4> kNoises{0.5, 1.0, 2.0, 4.0};
/// Strengths tried: 250 and its doubles.
constexpr int kStrengths = 10;
constexpr double kFirstStrength = 250.0;

struct Blur {
    const char* name;
    AnalyticBlur blur;
};

const std::array<Blur, 3> kBlurs{{{"gaussian 1.5", {AnalyticBlur::Shape::Gaussian, 1.5f, 0.0f}},
                                  {"disc 3", {AnalyticBlur::Shape::Disc, 3.0f, 0.0f}},
                                  {"motion 11,30", {AnalyticBlur::Shape::Motion, 11.0f, 30.0f}}}};

/// One degraded picture and its distance from the sharp one after restoration with each strength.
struct Trial {
    std::string picture;
    std::string blur;
    double noise = 0.0;
    double measured = 0.0;
    double before = 0.0;
    std::array<double, kStrengths> after{};

    /// Decibels at any strength, interpolated linearly between those tried.
    double at(double strength) const {
        const double place =
            std::clamp(std::log2(strength / kFirstStrength), 0.0, kStrengths - 1.000001);
        const auto left = static_cast<std::size_t>(place);
        return std::lerp(after[left], after[left + 1], place - static_cast<double>(left));
    }
    std::size_t best() const {
        return static_cast<std::size_t>(
            std::distance(after.begin(), std::ranges::max_element(after)));
    }
};

double strengthNumber(std::size_t index) {
    return kFirstStrength * std::exp2(static_cast<double>(index));
}

Trial runTrial(const NamedPicture& picture, const Blur& blur, double noise,
               RestorationSettings settings, int framePasses) {
    const BlurKernel kernel = makeKernel(blur.blur);
    const Photograph photograph = photographOf(picture.colours, kernel, noise, 11);
    const RgbPixels& pixels = photograph.taken;
    Trial trial{picture.name, blur.name, noise, noiseLevel(pixels), photograph.decibels(), {}};
    for (std::size_t i = 0; i < kStrengths; ++i) {
        settings.lambda = static_cast<float>(strengthNumber(i));
        const RgbPixels result =
            restoreInFrame(pixels, kernel, settings, framePasses, [](int, int) { return true; });
        trial.after[i] = photograph.decibelsOf(result);
    }
    return trial;
}

void printTrial(const Trial& trial) {
    const double chosen = static_cast<double>(defaultStrength(trial.measured));
    std::cout << "| " << trial.picture << " | " << trial.blur << " | " << std::setprecision(1)
              << trial.noise << " | " << std::setprecision(2) << trial.measured << " | "
              << trial.before << " | " << std::setprecision(0) << strengthNumber(trial.best())
              << " | " << std::setprecision(2) << trial.after[trial.best()] << " | "
              << std::setprecision(0) << chosen << " | " << std::setprecision(2) << trial.at(chosen)
              << " |" << std::endl;
}

/// Strength = scale * noise ^ exponent, within bounds.
struct Rule {
    double scale;
    double exponent;

    double strength(double noise) const {
        return std::clamp(scale * std::pow(noise, exponent), 500.0, 50000.0);
    }
};

/// Mean loss of `rule` against the best strength of each trial, in decibels.
double meanLoss(const std::vector<Trial>& trials, const auto& rule) {
    double loss = 0.0;
    for (const Trial& trial : trials) {
        loss += trial.after[trial.best()] - trial.at(rule(trial.measured));
    }
    return loss / static_cast<double>(trials.size());
}

Rule bestRule(const std::vector<Trial>& trials) {
    Rule best{1.0, 0.0};
    double least = std::numeric_limits<double>::infinity();
    for (double scale = 500.0; scale < 2e5; scale *= 1.05) {
        for (double exponent = -3.0; exponent <= 0.0; exponent += 0.05) {
            const Rule rule{scale, exponent};
            const double loss =
                meanLoss(trials, [&](double noise) { return rule.strength(noise); });
            if (loss < least) {
                least = loss;
                best = rule;
            }
        }
    }
    return best;
}

std::vector<NamedPicture> scenesAnd(const std::vector<std::string>& files, int scenes) {
    std::vector<NamedPicture> pictures;
    for (int seed = 1; seed <= scenes; ++seed) {
        pictures.push_back({"scene " + std::to_string(seed),
                            drawScene(512, 384, 16, static_cast<std::uint32_t>(seed))});
    }
    std::ranges::move(picturesFrom(files), std::back_inserter(pictures));
    return pictures;
}

void tune(const std::vector<NamedPicture>& pictures, const RestorationSettings& settings,
          int framePasses) {
    std::cout
        << "| picture | blur | noise | measured | blurred dB | best strength | dB | chosen | dB "
           "|\n|---|---|---|---|---|---|---|---|---|\n"
        << std::fixed;
    std::vector<Trial> trials;
    for (const NamedPicture& picture : pictures) {
        for (const Blur& blur : kBlurs) {
            for (const double noise : kNoises) {
                trials.push_back(runTrial(picture, blur, noise, settings, framePasses));
                printTrial(trials.back());
            }
        }
    }
    const Rule rule = bestRule(trials);
    std::cout << std::setprecision(2) << "\nbest rule: " << rule.scale << " * noise ^ "
              << rule.exponent << ", mean loss "
              << meanLoss(trials, [&](double noise) { return rule.strength(noise); })
              << " dB\nrule in use: mean loss "
              << meanLoss(trials,
                          [](double noise) { return static_cast<double>(defaultStrength(noise)); })
              << " dB\n";
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("tuneStrength", "Fits the default strength to the measured noise.");
    std::vector<std::string> files;
    int scenes = 2;
    RestorationSettings settings;
    parser.add("PICTURES", files, "Further sharp photographs");
    parser.add("--scenes", scenes, "Number of drawn scenes").showDefault();
    int framePasses = DeblurOptions().framePasses;
    parser.add("--frame-passes", framePasses, "As for 'velorn deblur'").showDefault();
    parser.add("--alpha", settings.alpha, "As for 'velorn deblur'").showDefault();
    parser.add("--limit", settings.limit, "As for 'velorn deblur'").showDefault();
    try {
        if (!parser.parse({argv + 1, argv + argc}, std::cout)) {
            return 0;
        }
        tune(scenesAnd(files, scenes), settings, framePasses);
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "tuneStrength: " << failure.what() << '\n';
        return 1;
    }
}
