// Draws the sample scene of the demonstration, and a photograph of it by a camera that is out of
// focus or shaken.
#include "Degradation.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/TemporaryFile.h"
#include "Pictures.h"
#include "SampleBlurs.h"
#include "Scene.h"

#include <CLI/CLI.hpp>
#include <iostream>

namespace {

void writeKernel(const std::filesystem::path& path, const velorn::BlurKernel& kernel) {
    velorn::TemporaryFile file(path);
    file.write(velorn::KernelFile::encode(kernel, path));
    file.commit();
}

} // namespace

int main(int argc, char** argv) {
    using namespace velorn;
    using namespace velorn::tools;

    CLI::App app{"Draws a scene, sharp and as a blurred and noisy photograph of it."};
    std::string sharp;
    std::string blurred;
    std::string kernelPath;
    bool isShaken = false;
    int width = 1024;
    int height = 768;
    float radius = 4.0f;
    double noise = 1.0;
    std::uint32_t seed = 1;
    app.add_option("SHARP", sharp, "File for the sharp scene")->required();
    app.add_option("BLURRED", blurred, "File for the photograph of it")->required();
    app.add_option("--width", width, "Width in pixels")
        ->capture_default_str()
        ->check(CLI::Range(64, 8192));
    app.add_option("--height", height, "Height in pixels")
        ->capture_default_str()
        ->check(CLI::Range(64, 8192));
    app.add_option("--disc", radius, "Radius of the blur in pixels")
        ->capture_default_str()
        ->check(CLI::Range(0.5, 50.0));
    app.add_flag("--shake", isShaken, "Blur by a curved camera shake instead of a disc");
    app.add_option("--kernel", kernelPath, "File for the kernel of the blur");
    app.add_option("--noise", noise, "Standard deviation of the noise in levels of 255")
        ->capture_default_str();
    app.add_option("--seed", seed, "Seed of the random numbers")->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    try {
        const BlurKernel kernel =
            isShaken ? curvedShake() : makeKernel({AnalyticBlur::Shape::Disc, radius, 0.0f});
        const int margin = kernel.width / 2;
        const cv::Mat scene = drawScene(width, height, margin, seed);
        writeColours(sharp, scene(cv::Rect(margin, margin, width, height)));
        writeColours(blurred, withNoise(blurInside(scene, kernel), noise, seed));
        if (!kernelPath.empty()) {
            writeKernel(kernelPath, kernel);
        }
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "makeScene: " << failure.what() << '\n';
        return 1;
    }
}
