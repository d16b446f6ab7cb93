#include "hosts/command/restoration/FramedRestoration.h"

#include "hosts/command/kernels/KernelTaps.h"
#include "hosts/command/pictures/PixelRect.h"
#include "hosts/command/restoration/KernelLimit.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velorn {
namespace {

/// Strength for the rim: high enough to find the light beyond the frame, too low for streaks. On
/// photographs blurred by motion, strengths of 1000 to 4000 differed by less than 1 dB.
constexpr float kRimStrength = 2000.0f;
/// Limit of the multiplications that blur the rim again: one or two seconds.
constexpr double kMaxCost = 2e9;
/// The least depth of the strips of the rim. It keeps the inner edges of the strips, where
/// restorations are wrong, away from the continuation.
constexpr int kLeastDepth = 128;

/// The pixel of `picture` at (column, row), blurred with `taps`. Border pixels repeat outwards.
template <class T>
void blurPixel(const RgbPixels& picture, const std::vector<KernelTap>& taps, int column, int row,
               T* result) {
    const auto& samples = std::get<std::vector<T>>(picture.samples);
    float sums[3] = {};
    for (const KernelTap& tap : taps) {
        const int x = std::clamp(column + tap.right, 0, picture.width - 1);
        const int y = std::clamp(row + tap.down, 0, picture.height - 1);
        const T* pixel = &samples[picture.sampleIndex(x, y)];
        for (int c = 0; c < 3; ++c) {
            sums[c] += tap.weight * static_cast<float>(pixel[c]);
        }
    }
    for (int c = 0; c < 3; ++c) {
        const auto largest = static_cast<float>(std::numeric_limits<T>::max());
        result[c] = static_cast<T>(std::clamp(std::round(sums[c]), 0.0f, largest));
    }
}

/// A picture with its continuation beyond the frame.
class Continuation {
public:
    Continuation(const RgbPixels& source, const BlurKernel& kernel)
        : m_taps(tapsOf(kernel)), m_inside{kernel.width, kernel.height, source.width,
                                           source.height},
          m_picture(crop(source, {-kernel.width, -kernel.height, source.width + 2 * kernel.width,
                                  source.height + 2 * kernel.height})),
          m_depth(std::max(kLeastDepth, 5 * kernel.largerSide())) {}

    const RgbPixels& picture() const { return m_picture; }
    const PixelRect& inside() const { return m_inside; }

    /// Multiplications of one pass.
    double cost() const {
        return (static_cast<double>(m_picture.pixelCount()) - m_inside.area()) * 3.0 *
               static_cast<double>(m_taps.size());
    }

    /// What one pass restores: four strips along the frame, or the whole of a small picture.
    std::vector<PixelRect> rim() const {
        const int width = m_picture.width;
        const int height = m_picture.height;
        if (std::min(width, height) <= 3 * m_depth) {
            return {{0, 0, width, height}};
        }
        return {{0, 0, width, m_depth},
                {0, height - m_depth, width, m_depth},
                {0, 0, m_depth, height},
                {width - m_depth, 0, m_depth, height}};
    }

    RgbPixels part(const PixelRect& rect) const { return crop(m_picture, rect); }

    /// Replaces the pixels of `rect` outside the frame by `restored`, the restoration of `rect`,
    /// blurred again.
    void renew(const PixelRect& rect, const RgbPixels& restored) {
        std::visit(
            [&]<class T>(std::vector<T>& samples) {
                for (int y = 0; y < rect.height; ++y) {
                    for (int x = 0; x < rect.width; ++x) {
                        const int column = rect.x + x;
                        const int row = rect.y + y;
                        if (!m_inside.contains(column, row)) {
                            blurPixel(restored, m_taps, x, y,
                                      &samples[m_picture.sampleIndex(column, row)]);
                        }
                    }
                }
            },
            m_picture.samples);
    }

private:
    std::vector<KernelTap> m_taps;
    PixelRect m_inside;
    RgbPixels m_picture;
    int m_depth;
};

bool canContinue(const RgbPixels& source, const BlurKernel& kernel,
                 const RestorationSettings& settings) {
    return settings.deconvolve && kernel.largerSide() > 1 &&
           kernel.largerSide() <= largestKernelSide(source.width + 2 * kernel.width,
                                                    source.height + 2 * kernel.height);
}

RestorationSettings gentle(RestorationSettings settings) {
    settings.lambda = std::min(settings.lambda, kRimStrength);
    return deconvolutionOnly(settings);
}

/// Divides one progress among several restorations in proportion to their areas.
class SharedProgress {
public:
    SharedProgress(const ProgressFunction& progress, double totalArea)
        : m_progress(progress), m_totalArea(totalArea) {}

    ProgressFunction forNext(double area) {
        const double start = m_area / m_totalArea;
        m_area += area;
        return partOf(m_progress, start, m_area / m_totalArea);
    }

private:
    const ProgressFunction& m_progress;
    double m_totalArea;
    double m_area = 0.0;
};

} // namespace

RgbPixels restoreInFrame(const RgbPixels& source, const BlurKernel& kernel,
                         const RestorationSettings& settings, int passes,
                         const ProgressFunction& progress) {
    if (passes < 1 || !canContinue(source, kernel, settings)) {
        return restore(source, kernel, settings, progress);
    }
    Continuation continuation(source, kernel);
    if (continuation.cost() * passes > kMaxCost) {
        return restore(source, kernel, settings, progress);
    }
    const std::vector<PixelRect> rim = continuation.rim();
    const auto wholeArea = static_cast<double>(continuation.picture().pixelCount());
    double totalArea = wholeArea;
    for (const PixelRect& rect : rim) {
        totalArea += rect.area() * passes;
    }
    SharedProgress shared(progress, totalArea);
    for (int pass = 0; pass < passes; ++pass) {
        for (const PixelRect& rect : rim) {
            const RgbPixels restored = restore(continuation.part(rect), kernel, gentle(settings),
                                               shared.forNext(rect.area()));
            if (restored.pixelCount() == 0) {
                return {};
            }
            continuation.renew(rect, restored);
        }
    }
    const RgbPixels result =
        restore(continuation.picture(), kernel, settings, shared.forNext(wholeArea));
    return result.pixelCount() == 0 ? RgbPixels{} : crop(result, continuation.inside());
}

} // namespace velorn
