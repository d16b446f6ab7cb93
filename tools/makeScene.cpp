// Draws the sample scene of the demonstration, and a photograph of it by a camera that is out of
// focus, moved or shaken.
#include "Degradation.h"
#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/options/blurOf.h"
#include "hosts/command/terminal/Failure.h"
#include "Pictures.h"
#include "runTool.h"
#include "SampleBlurs.h"
#include "Scene.h"

namespace {

void writeKernel(const std::filesystem::path& path, const velorn::BlurKernel& kernel) {
    velorn::TemporaryFile file(path);
    file.write(velorn::KernelFile::encode(kernel, path));
    file.commit();
}

using Shape = velorn::AnalyticBlur::Shape;

velorn::BlurKernel motionKernel(const std::vector<float>& lengthAndAngle) {
    return velorn::makeKernel(
        velorn::blurOf(Shape::Motion, lengthAndAngle[0], lengthAndAngle[1], "--motion"));
}

} // namespace

int main(int argc, char** argv) {
    using namespace velorn;
    using namespace velorn::tools;

    ArgumentParser parser("makeScene",
                          "Draws a scene, sharp and as a blurred and noisy photograph of it.");
    std::string sharp;
    std::string blurred;
    std::string kernelPath;
    bool isShaken = false;
    std::vector<float> motion;
    int width = 1024;
    int height = 768;
    float radius = 4.0f;
    double noise = 1.0;
    std::uint32_t seed = 1;
    parser.add("SHARP", sharp, "File for the sharp scene").required();
    parser.add("BLURRED", blurred, "File for the photograph of it").required();
    parser.add("--width", width, "Width in pixels").showDefault().within(64, 8192);
    parser.add("--height", height, "Height in pixels").showDefault().within(64, 8192);
    parser.add("--disc", radius, "Radius of the blur in pixels").showDefault().within(0.5, 50.0);
    parser.add("--shake", isShaken, "Blur by a curved camera shake instead of a disc");
    parser
        .add("--motion", motion,
             "Blur by a straight motion of this length and angle instead of a disc")
        .commaSeparated(2)
        .valueName("LENGTH,ANGLE");
    parser.add("--kernel", kernelPath, "File for the kernel of the blur");
    parser.add("--noise", noise, "Standard deviation of the noise in levels of 255").showDefault();
    parser.add("--seed", seed, "Seed of the random numbers").showDefault();
    return runTool("makeScene", parser, argc, argv, [&] {
        const BlurKernel kernel = isShaken         ? curvedShake()
                                  : motion.empty() ? makeKernel({Shape::Disc, radius, 0.0f})
                                                   : motionKernel(motion);
        const int margin = kernel.largerSide() / 2;
        const cv::Mat scene = drawScene(width, height, margin, seed);
        writeColours(sharp, scene(cv::Rect(margin, margin, width, height)));
        const cv::Rect seen(margin - kernel.width / 2, margin - kernel.height / 2,
                            width + kernel.width - 1, height + kernel.height - 1);
        writeColours(blurred, withNoise(blurInside(scene(seen), kernel), noise, seed));
        if (!kernelPath.empty()) {
            writeKernel(kernelPath, kernel);
        }
    });
}
