#include "hosts/command/commands/DeblurCommand.h"

#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"
#include "hosts/command/pictures/ImageFile.h"
#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/restoration/FramedRestoration.h"
#include "hosts/command/restoration/NoiseLevel.h"
#include "hosts/command/restoration/TileLimit.h"
#include "hosts/command/terminal/Failure.h"
#include "hosts/command/terminal/ProgressBar.h"
#include "hosts/command/terminal/TemporaryFile.h"

namespace velorn {
namespace {

BlurKernel kernelFrom(const KernelSource& source) {
    if (const auto* blur = std::get_if<AnalyticBlur>(&source)) {
        return makeKernel(*blur);
    }
    if (const auto* file = std::get_if<KernelPath>(&source)) {
        return KernelFile::read(file->path, file->scale);
    }
    return pointKernel();
}

/// The kernel of a blind restoration, for the pixels as stored. It is shown and warned about on the
/// terminal.
BlurKernel foundKernel(const RgbPixels& pixels, int orientation, const BlindSettings& wanted,
                       const DeblurOptions& options, const Interrupt& interrupt,
                       std::ostream& terminal, bool isTerminal) {
    BlindSettings settings = wanted;
    settings.size = asStored(wanted.size, orientation);
    BlindKernel found;
    try {
        ProgressBar bar(terminal, isTerminal);
        found = findKernel(pixels, settings, interrupt, bar);
    } catch (const Failure& failure) {
        throw Failure(quoted(options.input) + ": " + failure.what());
    }
    if (isTerminal || options.isVerbose) {
        terminal << kernelPicture(asShown(found.kernel, orientation));
    }
    if (!found.isHelpful) {
        terminal << "velorn: warning: " << quoted(options.input) << ": " << kNotHelpful << '\n';
    }
    return found.kernel;
}

void checkFits(const BlurKernel& kernel, const ImageFile& picture, const DeblurOptions& options) {
    const int largest = largestKernelSide(picture.width(), picture.height());
    if (kernel.largerSide() > largest) {
        throw Failure(quoted(options.input) + ": a kernel of " + std::to_string(kernel.width) +
                      " by " + std::to_string(kernel.height) +
                      " is too large for this picture, which takes " + std::to_string(largest) +
                      " by " + std::to_string(largest) + " at most");
    }
}

float strengthFor(const RgbPixels& pixels, const DeblurOptions& options, std::ostream& terminal) {
    if (options.lambdaIsGiven || !options.settings.deconvolve) {
        return options.settings.lambda;
    }
    const double noise = noiseLevel(pixels);
    const bool isBlind = std::holds_alternative<BlindSettings>(options.kernel);
    const float strength = isBlind ? blindStrength(noise) : defaultStrength(noise);
    if (options.isVerbose) {
        terminal << "velorn: noise " << noise << " levels, strength " << strength << '\n';
    }
    return strength;
}

RgbPixels restored(const RgbPixels& pixels, const BlurKernel& kernel, const DeblurOptions& options,
                   const RestorationSettings& settings, const Interrupt& interrupt,
                   ProgressBar& bar) {
    try {
        return restoreInFrame(pixels, kernel, settings, options.framePasses,
                              [&](int current, int limit) {
                                  bar.show(current, limit);
                                  return !interrupt.isRequested();
                              });
    } catch (const Failure& failure) {
        throw Failure(quoted(options.input) + ": " + failure.what());
    }
}

} // namespace

void runDeblur(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
               bool isTerminal) {
    ImageFile::checkWritable(options.output);
    const BlurKernel displayed = kernelFrom(options.kernel);
    ImageFile picture = ImageFile::read(options.input);
    // The user speaks of the picture as it is shown; the pixels may be stored turned.
    BlurKernel kernel = asStored(displayed, picture.orientation());
    checkFits(kernel, picture, options);
    // Opened before the work, so that a target that cannot be written is told at once.
    TemporaryFile target(options.output);
    interrupt.check();

    const RgbPixels blurred = picture.rgb();
    RestorationSettings settings = options.settings;
    settings.lambda = strengthFor(blurred, options, terminal);
    if (const auto* blind = std::get_if<BlindSettings>(&options.kernel)) {
        kernel = foundKernel(blurred, picture.orientation(), *blind, options, interrupt, terminal,
                             isTerminal);
    }
    {
        ProgressBar bar(terminal, isTerminal);
        const RgbPixels result = restored(blurred, kernel, options, settings, interrupt, bar);
        interrupt.check();
        picture.setRgb(result);
    }
    target.write(picture.encode(options.output));
    interrupt.check();
    target.commit();
}

} // namespace velorn
