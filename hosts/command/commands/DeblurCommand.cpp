#include "hosts/command/commands/DeblurCommand.h"

#include "hosts/command/commands/KernelSearch.h"
#include "hosts/command/commands/shownProgress.h"
#include "hosts/command/files/fileFailures.h"
#include "hosts/command/files/TemporaryFile.h"
#include "hosts/command/kernels/KernelFile.h"
#include "hosts/command/kernels/KernelPicture.h"
#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/restoration/FramedRestoration.h"
#include "hosts/command/restoration/KernelLimit.h"
#include "hosts/command/restoration/NoiseLevel.h"

namespace velorn {
namespace {

/// The kernel for the picture as displayed; that of `--blind` is found later.
BlurKernel knownKernel(const KernelSource& source) {
    if (const auto* blur = std::get_if<AnalyticBlur>(&source)) {
        return makeKernel(*blur);
    }
    if (const auto* file = std::get_if<KernelPath>(&source)) {
        return KernelFile::read(file->path, file->scale);
    }
    return pointKernel();
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
    RgbPixels result = naming(options.input, [&] {
        return restoreInFrame(pixels, kernel, settings, options.framePasses,
                              shownProgress(bar, interrupt));
    });
    interrupt.check();
    return result;
}

} // namespace

void runDeblur(const DeblurOptions& options, const Interrupt& interrupt, std::ostream& terminal,
               bool isTerminal) {
    ImageFile::checkWritable(options.output);
    const BlurKernel displayed = knownKernel(options.kernel);
    ImageFile picture = ImageFile::read(options.input);
    // The user describes the picture as it is displayed; its rows may be stored in another
    // orientation.
    BlurKernel kernel = asStored(displayed, picture.orientation());
    naming(options.input, [&] { checkFits(kernel.size(), picture.width(), picture.height()); });
    // Opened before the long work, so that an output that cannot be written fails at once.
    TemporaryFile target(options.output);
    interrupt.check();

    const RgbPixels blurred = picture.rgb();
    RestorationSettings settings = options.settings;
    settings.lambda = strengthFor(blurred, options, terminal);
    if (const auto* blind = std::get_if<BlindSettings>(&options.kernel)) {
        kernel = searchKernel(picture, options.input, *blind, interrupt, terminal, isTerminal);
        if (isTerminal || options.isVerbose) {
            terminal << kernelPicture(asShown(kernel, picture.orientation()));
        }
    }
    {
        ProgressBar bar(terminal, isTerminal);
        picture.setRgb(restored(blurred, kernel, options, settings, interrupt, bar));
    }
    target.write(picture.encode(options.output));
    interrupt.check();
    target.commit();
}

} // namespace velorn
