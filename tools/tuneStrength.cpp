// Measures the automatic strength of the library: restores blurred, noisy pictures with the
// strength that the library chooses and with a range of strengths, and compares the luminance of
// the results with the sharp pictures.
#include "hosts/command/kernels/BlurKernel.h"
#include "Pictures.h"
#include "runTool.h"
#include "SamplePictures.h"
#include "Scene.h"
#include "velorn.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <variant>

namespace {

using namespace velorn;
using namespace velorn::tools;

constexpr std::array<double, 4> kNoises{0.5, 1.0, 3.0, 6.0};
/// Strengths tried: 60 and its doubles.
constexpr int kStrengths = 12;
constexpr double kFirstStrength = 60.0;

struct Blur {
    const char* name;
    AnalyticBlur blur;
};

const std::array<Blur, 3> kBlurs{{{"gaussian 1.5", {AnalyticBlur::Shape::Gaussian, 1.5f, 0.0f}},
                                  {"disc 3", {AnalyticBlur::Shape::Disc, 3.0f, 0.0f}},
                                  {"motion 15,30", {AnalyticBlur::Shape::Motion, 15.0f, 30.0f}}}};

double strengthNumber(std::size_t index) {
    return kFirstStrength * std::exp2(static_cast<double>(index));
}

/// Peak signal-to-noise ratio of the luminance of two pictures (CV_32FC3, 0..255), in decibels.
/// Luminance is limited to 0..255.
double luminanceDecibels(const cv::Mat& first, const cv::Mat& second) {
    const auto luminance = [](const cv::Vec3f& colour) {
        const double sum =
            0.299 * double{colour[0]} + 0.587 * double{colour[1]} + 0.114 * double{colour[2]};
        return std::clamp(sum, 0.0, 255.0);
    };
    double squares = 0.0;
    for (int y = 0; y < first.rows; ++y) {
        for (int x = 0; x < first.cols; ++x) {
            const double error =
                luminance(first.at<cv::Vec3f>(y, x)) - luminance(second.at<cv::Vec3f>(y, x));
            squares += error * error;
        }
    }
    return 10.0 * std::log10(255.0 * 255.0 * static_cast<double>(first.total()) / squares);
}

/// A photograph, and its restorations by the library.
class Subject {
public:
    Subject(const NamedPicture& picture, const BlurKernel& kernel, double noise)
        : m_photograph(photographOf(picture.colours, kernel, noise, 11)),
          m_kernel(api::Kernel::fromValues(kernel.weights.data(), kernel.width, kernel.height)) {}

    double blurred() const {
        return luminanceDecibels(m_photograph.sharp, coloursOf(m_photograph.taken));
    }

    struct Restoration {
        double decibels;
        VelornRestoreReport report;
    };
    Restoration restored(float strength, const VelornRestoreSettings& base) const {
        VelornRestoreSettings settings = base;
        settings.strength = strength;
        const RgbPixels& taken = m_photograph.taken;
        cv::Mat result(taken.height, taken.width, CV_32FC3);
        const auto& bytes = std::get<std::vector<std::uint8_t>>(taken.samples);
        const VelornRestoreReport report =
            api::restore(api::pictureOf(bytes.data(), taken.width, taken.height, 3),
                         api::pictureOf(result.ptr<float>(), taken.width, taken.height, 3),
                         {m_kernel}, settings);
        result *= 255.0;
        return {luminanceDecibels(m_photograph.sharp, result), report};
    }

private:
    Photograph m_photograph;
    api::Kernel m_kernel;
};

/// Decibels that the chosen strength gains over the blurred picture, and loses against the best
/// strength.
struct Outcome {
    double gain;
    double loss;
};

Outcome measure(const NamedPicture& picture, const Blur& blur, double noise,
                const VelornRestoreSettings& settings) {
    const Subject subject(picture, makeKernel(blur.blur), noise);
    const Subject::Restoration chosen = subject.restored(VELORN_AUTOMATIC, settings);
    VelornRestoreSettings same = settings;
    same.alpha = chosen.report.alpha;
    std::array<double, kStrengths> decibels{};
    for (std::size_t i = 0; i < decibels.size(); ++i) {
        decibels[i] = subject.restored(static_cast<float>(strengthNumber(i)), same).decibels;
    }
    const auto best = static_cast<std::size_t>(
        std::distance(decibels.begin(), std::ranges::max_element(decibels)));
    const double loss = std::max(0.0, decibels[best] - chosen.decibels);
    std::cout << "| " << picture.name << " | " << blur.name << std::setprecision(1) << " | "
              << noise << std::setprecision(2) << " | " << chosen.report.noise << " | "
              << subject.blurred() << std::setprecision(0) << " | " << strengthNumber(best)
              << std::setprecision(2) << " | " << decibels[best] << std::setprecision(0) << " | "
              << chosen.report.strength << std::setprecision(2) << " | " << chosen.decibels << " | "
              << loss << " |" << std::endl;
    return {chosen.decibels - subject.blurred(), loss};
}

void summarise(double noise, const std::vector<Outcome>& outcomes) {
    double sum = 0.0;
    for (const Outcome& outcome : outcomes) {
        sum += outcome.loss;
    }
    const double worst = std::ranges::max_element(outcomes, {}, &Outcome::loss)->loss;
    const double gain = std::ranges::min_element(outcomes, {}, &Outcome::gain)->gain;
    std::cout << std::setprecision(1) << "noise " << noise << std::setprecision(2) << ": mean loss "
              << sum / static_cast<double>(outcomes.size()) << " dB, worst " << worst
              << " dB, smallest gain over the blurred picture " << gain << " dB\n";
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

void tune(const std::vector<NamedPicture>& pictures, const VelornRestoreSettings& settings) {
    std::cout << "| picture | blur | noise | measured | blurred dB | best strength | dB | chosen | "
                 "dB | loss |\n|---|---|---|---|---|---|---|---|---|---|\n"
              << std::fixed;
    std::array<std::vector<Outcome>, kNoises.size()> outcomes;
    for (const NamedPicture& picture : pictures) {
        for (const Blur& blur : kBlurs) {
            for (std::size_t i = 0; i < kNoises.size(); ++i) {
                outcomes[i].push_back(measure(picture, blur, kNoises[i], settings));
            }
        }
    }
    std::cout << '\n';
    for (std::size_t i = 0; i < kNoises.size(); ++i) {
        if (!outcomes[i].empty()) {
            summarise(kNoises[i], outcomes[i]);
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser("tuneStrength",
                          "Compares the automatic strength with the best one of each picture.");
    std::vector<std::string> files;
    int scenes = 2;
    VelornRestoreSettings settings = api::restoreSettings();
    // The pictures are blurred as they are stored.
    settings.light = VELORN_LIGHT_DISPLAY;
    parser.add("PICTURES", files, "Further sharp photographs");
    parser.add("--scenes", scenes, "Number of drawn scenes").showDefault();
    parser.add("--alpha", settings.alpha, "Exponent of the prior; below 0: automatic")
        .showDefault();
    return runTool("tuneStrength", parser, argc, argv,
                   [&] { tune(scenesAnd(files, scenes), settings); });
}
