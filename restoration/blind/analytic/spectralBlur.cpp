#include "restoration/blind/analytic/spectralBlur.h"

#include "restoration/blind/analytic/DiscSearch.h"
#include "restoration/blind/analytic/PowerSpectrum.h"
#include "restoration/blind/analytic/spectralFall.h"
#include "restoration/blind/analytic/StrokeSearch.h"

namespace restoration {
namespace {

constexpr double kLeastRadius = 1.6;
constexpr double kLeastStroke = 3.5;
/// Walls of bricks look like strokes shorter than the first, unless their evidence exceeds the
/// second.
constexpr double kShort = 5.0;
constexpr double kLeastEvidenceOfShort = 4000.0;
/// Bounds of falls: sharp pictures have a sigma of 0.55 at most, shakes and motions a larger spread
/// or error. Under noise, discs of about 2 pixels are distinguished from Gaussians by their error.
constexpr int kLeastSide = 128;
constexpr double kLeastSigma = 0.75;
constexpr double kMostSpread = 0.12;
constexpr double kMostSpreadOfDisc = 0.06;
constexpr double kMostError = 9.0;
constexpr double kMostErrorOfDisc = 22.0;
constexpr double kErrorOfDisc = 0.95;

std::optional<KernelKind> clearFall(const SpectralFall& fall) {
    if (fall.sigma < kLeastSigma || fall.spread > kMostSpread) {
        return std::nullopt;
    }
    if (fall.gaussian.error <= kMostError) {
        return KernelKind{KernelKind::Shape::Gaussian, static_cast<float>(fall.sigma), 0.0f};
    }
    if (fall.spread <= kMostSpreadOfDisc && fall.disc.error <= kMostErrorOfDisc &&
        fall.disc.error < kErrorOfDisc * fall.gaussian.error) {
        return KernelKind{KernelKind::Shape::Disc, static_cast<float>(fall.radius), 0.0f};
    }
    return std::nullopt;
}

} // namespace

std::optional<KernelKind> spectralBlur(const Plane& picture, double largestExtent,
                                       const Cancellation& cancellation) {
    const PowerSpectrum spectrum(picture, cancellation);
    const auto disc = clearMatch(DiscSearch(spectrum).best(largestExtent / 2.0), kLeastRadius);
    const auto stroke =
        clearMatch(StrokeSearch(spectrum).best(largestExtent, cancellation), kLeastStroke);
    const bool isDoubtful =
        stroke && stroke->extent < kShort && stroke->evidence() < kLeastEvidenceOfShort;
    if (disc && (!stroke || disc->evidence() > stroke->evidence())) {
        return KernelKind{KernelKind::Shape::Disc, static_cast<float>(disc->extent), 0.0f};
    }
    if (stroke && !isDoubtful) {
        return KernelKind{KernelKind::Shape::Motion, static_cast<float>(stroke->extent + 1.0),
                          undirectedAngle(static_cast<float>(stroke->degrees))};
    }
    return spectrum.side() < kLeastSide ? std::nullopt : clearFall(spectralFall(spectrum));
}

} // namespace restoration
