// Measures the presets of the host on blurs that are known exactly and on one that is known only
// approximately, and prints the table of docs/presets.md.
#include "hosts/command/options/Presets.h"
#include "hosts/command/terminal/Failure.h"
#include "Pictures.h"
#include "restored.h"
#include "runTool.h"
#include "SamplePictures.h"
#include "Scene.h"

#include <array>
#include <iomanip>
#include <iostream>

namespace {

using namespace velorn;
using namespace velorn::tools;
using Shape = AnalyticBlur::Shape;

constexpr int kSceneWidth = 720;
constexpr int kSceneHeight = 540;
constexpr std::uint32_t kSceneSeed = 1;
constexpr std::uint32_t kNoiseSeed = 11;

/// The blur of a picture, and the blur that the user assumes.
struct Case {
    const char* name;
    AnalyticBlur blur;
    AnalyticBlur assumed;
    double noise;
};

constexpr std::array<Case, 4> kCases{{
    {"disc 3", {Shape::Disc, 3.0f, 0.0f}, {Shape::Disc, 3.0f, 0.0f}, 1.0},
    {"gaussian 1.4", {Shape::Gaussian, 1.4f, 0.0f}, {Shape::Gaussian, 1.4f, 0.0f}, 2.0},
    {"motion 13,33", {Shape::Motion, 13.0f, 33.0f}, {Shape::Motion, 13.0f, 33.0f}, 1.0},
    {"motion 13,33 taken for 12,30",
     {Shape::Motion, 13.0f, 33.0f},
     {Shape::Motion, 12.0f, 30.0f},
     1.0},
}};

void printCase(const Case& item, const cv::Mat& colours) {
    const Photograph photograph =
        photographOf(colours, makeKernel(item.blur), item.noise, kNoiseSeed);
    const api::Kernel assumed = libraryKernel(makeKernel(item.assumed));
    const auto printRestored = [&](const VelornRestoreSettings& settings) {
        std::cout << " | " << photograph.decibelsOf(restored(photograph.taken, assumed, settings));
    };
    std::cout << "| " << item.name << " | " << photograph.decibels();
    printRestored(api::restoreSettings());
    for (const Preset& preset : presets()) {
        VelornRestoreSettings settings = api::restoreSettings();
        preset.applyTo(settings);
        printRestored(settings);
    }
    std::cout << " |" << std::endl;
}

void printTable(const cv::Mat& colours) {
    std::string names = "| blur | blurred | no preset |";
    std::string rule = "|---|---|---|";
    for (const Preset& preset : presets()) {
        names += std::string(" ") + preset.name + " |";
        rule += "---|";
    }
    std::cout << names << '\n' << rule << '\n' << std::fixed << std::setprecision(2);
    for (const Case& item : kCases) {
        printCase(item, colours);
    }
}

} // namespace

int main(int argc, char** argv) {
    ArgumentParser parser(
        "comparePresets",
        "Prints the peak signal-to-noise ratio of restorations with each preset.");
    std::string file;
    parser.add("PICTURE", file, "Sharp photograph to use instead of the drawn scene");
    return runTool("comparePresets", parser, argc, argv, [&] {
        printTable(file.empty() ? drawScene(kSceneWidth, kSceneHeight, 0, kSceneSeed)
                                : readColours(file));
    });
}
