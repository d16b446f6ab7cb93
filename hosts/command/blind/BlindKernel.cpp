#include "hosts/command/blind/BlindKernel.h"

#include "hosts/command/blind/KernelCentre.h"
#include "hosts/command/blind/KernelSpecks.h"
#include "hosts/command/blind/RestorationMeasure.h"
#include "hosts/command/blind/TexturedCrop.h"
#include "hosts/command/restoration/DefaultStrength.h"
#include "hosts/command/restoration/NoiseLevel.h"
#include "hosts/command/restoration/TileLimit.h"
#include "hosts/command/terminal/Failure.h"

#include <algorithm>
#include <string>

namespace velorn {
namespace {

/// What is done by when, in percent of the bar.
constexpr int kEstimated = 70;
constexpr int kTurned = 90;
/// Restorations of this `doubtfulness` are as often worse than the picture as better.
constexpr double kDoubtful = 0.44;

std::string sidesOf(KernelSize size) {
    return std::to_string(size.width) + " by " + std::to_string(size.height);
}

void checkFits(const RgbPixels& pixels, KernelSize size) {
    const int largest = largestKernelSide(pixels.width, pixels.height);
    if (size.largerSide() > largest) {
        throw Failure("a kernel of " + sidesOf(size) +
                      " is too large for this picture, which takes " + std::to_string(largest) +
                      " by " + std::to_string(largest) + " at most");
    }
}

/// The work on one picture, step by step.
class Search {
public:
    Search(const RgbPixels& pixels, const Interrupt& interrupt, ProgressBar& bar)
        : m_pixels(pixels), m_interrupt(interrupt), m_bar(bar) {}

    BlurKernel estimate(const BlindSettings& settings) const {
        const auto show = shown(0, kEstimated);
        // An estimate cannot be cancelled: a signal is heeded after it.
        const std::optional<BlurKernel> found =
            estimateKernel(m_pixels, settings.size, settings.strength, show);
        m_interrupt.check();
        if (!found) {
            throw Failure("the picture has too few edges to find a kernel of " +
                          sidesOf(settings.size) + " in it");
        }
        return centred(withoutSpecks(*found));
    }

    BlurKernel turned(const BlurKernel& kernel, Turn turn) const {
        if (turn != Turn::Auto) {
            return turn == Turn::Yes ? turnedRound(kernel) : kernel;
        }
        const std::optional<BlurKernel> better =
            betterWayRound(m_pixels, kernel, shown(kEstimated, kTurned));
        m_interrupt.check();
        return better.value();
    }

    bool isHelpful(const BlurKernel& kernel) const {
        RestorationSettings settings;
        settings.lambda = blindStrength(noiseLevel(m_pixels));
        const RgbPixels result = restore(m_pixels, kernel, settings, shown(kTurned, 100));
        m_interrupt.check();
        return doubtfulness(m_pixels, result, kernel) < kDoubtful;
    }

private:
    /// Shows progress from one percentage to another, and goes on until a signal comes.
    ProgressFunction shown(int from, int to) const {
        return [this, from, to](int current, int limit) {
            const double share = static_cast<double>(current) / limit;
            m_bar.show(from + static_cast<int>((to - from) * share), 100);
            return !m_interrupt.isRequested();
        };
    }

    const RgbPixels& m_pixels;
    const Interrupt& m_interrupt;
    ProgressBar& m_bar;
};

} // namespace

float blindStrength(double noiseLevel) {
    constexpr float kStrongest = 3000.0f;
    return std::min(defaultStrength(noiseLevel), kStrongest);
}

BlindKernel findKernel(const RgbPixels& pixels, const BlindSettings& settings,
                       const Interrupt& interrupt, ProgressBar& bar) {
    const RgbPixels part = texturedCrop(pixels, settings.partSide);
    checkFits(part, settings.size);
    const Search search(part, interrupt, bar);
    const BlurKernel kernel = search.turned(search.estimate(settings), settings.turn);
    return {kernel, search.isHelpful(kernel)};
}

} // namespace velorn
