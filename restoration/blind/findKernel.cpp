#include "restoration/blind/findKernel.h"

#include "restoration/blind/analytic/analyticKernelLike.h"
#include "restoration/blind/analytic/kernelOfKind.h"
#include "restoration/blind/analytic/spectralBlur.h"
#include "restoration/blind/candidates/KernelScorer.h"
#include "restoration/blind/parts/diagonalNoise.h"
#include "restoration/blind/parts/edgeParts.h"
#include "restoration/blind/parts/EdgeSpectrum.h"
#include "restoration/blind/parts/excessBlur.h"
#include "restoration/blind/parts/fillLamps.h"
#include "restoration/blind/parts/kernelOfEdges.h"
#include "restoration/blind/parts/sharpestFirst.h"
#include "restoration/blind/parts/usablePart.h"
#include "restoration/blind/refine/contradictsBlur.h"
#include "restoration/blind/refine/refitKernel.h"
#include "restoration/blind/refine/SpectralEvidence.h"
#include "restoration/blind/runs/KernelRun.h"
#include "restoration/blind/squares/kernelShape.h"
#include "restoration/blind/squares/largestVariance.h"
#include "restoration/blind/squares/squareKernelOf.h"
#include "restoration/failures/Failure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace restoration {
namespace {

constexpr int kLeastPictureSide = 32;
constexpr double kLevels = 255.0;
/// Side of the transforms of a part that the search chooses.
constexpr int kChosenSide = 512;
/// Parts whose sharpness is compared, and parts in which kernels are found.
constexpr int kMostParts = 6;
constexpr std::size_t kSearchedParts = 3;
/// Sides of the first two runs and of the largest one.
constexpr int kSmallSide = 31;
constexpr int kMiddleSide = 47;
constexpr int kLargeSide = 71;
constexpr double kLeastAgreement = 0.85;
/// Edges with less blur than the first are sharp; with less than the second they may be.
constexpr double kSharpVariance = 0.47;
constexpr double kDoubtfulVariance = 0.6;
/// A kernel that takes more power from edges than this, beyond what they have lost, is too wide.
constexpr double kLargestExcess = 1.2;
constexpr int kSmallExtent = 13;
constexpr float kDoubtfulConfidence = 0.45f;
constexpr float kSharpConfidence = 0.2f;

int odd(int side) {
    return side | 1;
}

/// The central part of `plane`, at most `side` wide and high.
Plane centralPart(const Plane& plane, int side) {
    const int width = std::min(plane.width(), side);
    const int height = std::min(plane.height(), side);
    return usablePart(plane,
                      {(plane.width() - width) / 2, (plane.height() - height) / 2, width, height});
}

/// A kernel that a run has found, or the analytic one like it.
struct Candidate {
    SquareKernel kernel;
    Evidence evidence;
    KernelKind kind;
    int extent = 0;

    double score() const { return scoreOf(evidence); }
};

struct RunPlan {
    int side = 0;
    RunSettings settings;
};

class Search {
public:
    Search(const Plane& luminance, const FindSettings& settings, Team& team)
        : m_team(team), m_bounds(boundsFor(luminance, settings)),
          m_isChosen(settings.partSide == 0), m_smoothing(settings.smoothing),
          m_start(settings.start),
          m_parts(partsOf(luminance, m_isChosen ? kChosenSide : settings.partSide,
                          m_isChosen && m_start == nullptr ? kMostParts : 1, team)),
          m_part(m_parts.front()), m_noise(diagonalNoise(m_part)),
          m_scorer(croppedFor(std::min(m_bounds.side(), kLargeSide)),
                   std::min(m_bounds.side(), kLargeSide) / 2, m_noise, team.cancellation()) {}

    std::vector<FoundKernel> find() {
        if (m_start != nullptr) {
            refine();
        } else {
            search();
        }
        compareRuns();
        addAnalytic();
        std::ranges::stable_sort(m_candidates, {}, &Candidate::score);
        std::vector<FoundKernel> found;
        for (const Candidate& candidate : m_candidates) {
            found.push_back(result(candidate));
        }
        refit(found);
        judge(found);
        for (FoundKernel& kernel : found) {
            kernel.kernel.trust = trustIn(kernel.evidence, static_cast<double>(kernel.confidence));
        }
        return found;
    }

private:
    static KernelBounds boundsFor(const Plane& luminance, const FindSettings& settings) {
        const int shorter = std::min(luminance.width(), luminance.height());
        if (shorter < kLeastPictureSide) {
            throw Failure(VELORN_STATUS_NO_KERNEL, "the picture is too small to find a kernel");
        }
        if (settings.start != nullptr) {
            return boundsAround(*settings.start, odd(shorter / 3));
        }
        const auto bound = [&](int wanted) {
            const int possible = odd(shorter / 5);
            return wanted == 0 ? possible
                               : std::min(odd(std::max(wanted - 1, 3)), odd(shorter / 3));
        };
        return {bound(settings.maxWidth), bound(settings.maxHeight)};
    }

    /// Room for a kernel to refine, to move and to grow.
    static KernelBounds boundsAround(const Kernel& start, int possible) {
        const int most = std::min(possible, kLargeSide);
        if (start.largerSide() > most) {
            throw Failure(VELORN_STATUS_KERNEL_TOO_LARGE,
                          "the kernel to refine is " + std::to_string(start.width) + " by " +
                              std::to_string(start.height) + ", but may only be " +
                              std::to_string(most) + " by " + std::to_string(most));
        }
        const auto room = [most](int side) { return std::min(odd(2 * side + 3), most); };
        return {room(start.width), room(start.height)};
    }

    /// The side of a run for a kernel that is about `extent` wide.
    static int fittingSide(int extent) {
        return std::max(odd(static_cast<int>(1.4 * extent + 3.0)), 7);
    }

    static std::vector<Plane> partsOf(const Plane& luminance, int side, int count, Team& team) {
        team.progress().beginPhase(0.03, 0);
        const int width = std::min(side, luminance.width());
        const int height = std::min(side, luminance.height());
        const std::vector<Rect> places =
            sharpestFirst(luminance, edgeParts(luminance, width, height, count, team), team);
        std::vector<Plane> parts;
        for (std::size_t i = 0; i < std::min(places.size(), kSearchedParts); ++i) {
            parts.push_back(usablePart(luminance, places[i]));
            fillLamps(parts.back(), team.cancellation());
        }
        return parts;
    }

    /// The part for kernels of `side`: where the search chooses, no larger than its transforms
    /// allow.
    Plane croppedFor(int side) const { return croppedFor(m_part, side); }

    Plane croppedFor(const Plane& part, int side) const {
        const int longer = std::max(part.width(), part.height());
        return centralPart(part, m_isChosen ? kChosenSide - 2 * (side / 2) - 2 : longer);
    }

    KernelBounds boundsOf(const RunPlan& plan) const {
        return {std::min(plan.side, m_bounds.width), std::min(plan.side, m_bounds.height)};
    }

    void search() {
        const int side = m_bounds.side();
        const std::array<RunPlan, 2> plans{
            {{std::min(kSmallSide, side), kPlainRun}, {std::min(kMiddleSide, side), kStrongRun}}};
        runAll(plans, 0.5);
        requireEdges();
        runAll(std::array{thirdPlan()}, m_parts.size() == 1 ? 0.75 : 0.6);
        searchElsewhere();
    }

    /// Finds a kernel of the size of the best one in each other part.
    void searchElsewhere() {
        const RunPlan plan{std::min(fittingSide(best().extent), m_bounds.side()), kStrongestRun};
        const std::size_t count = m_parts.size() - 1;
        const Plane picture = croppedFor(plan.side);
        m_team.progress().beginPhase(0.75, count * runUnits(picture.width(), picture.height(),
                                                            boundsOf(plan), plan.settings));
        std::vector<std::optional<SquareKernel>> found(count);
        m_team.forEach(count, [&](std::size_t piece, int) {
            found[piece] = kernelIn(m_parts[piece + 1], plan);
        });
        for (std::optional<SquareKernel>& kernel : found) {
            if (kernel) {
                m_kernelsElsewhere.push_back(std::move(*kernel));
            }
        }
    }

    /// Adds the refined start and the start.
    void refine() {
        const SquareKernel start = squareKernelOf(*m_start, m_bounds.side());
        const Plane picture = croppedFor(m_bounds.side());
        RunSettings settings = kRefiningRun;
        settings.smoothing = m_smoothing;
        m_team.progress().beginPhase(
            0.75, refinementUnits(picture.width(), picture.height(), m_bounds, settings) +
                      2 * scoreUnits());
        m_team.run([&] {
            const auto refined = refineKernel(picture, start, m_bounds, settings, m_team.progress(),
                                              m_team.cancellation());
            if (refined) {
                m_candidates.push_back(scored(*refined));
                m_candidates.push_back(scored(start));
                m_candidates.back().evidence.reachesRim = 0.0; // nothing lies outside of the start
            }
        });
        requireEdges();
    }

    void requireEdges() const {
        if (m_candidates.empty()) {
            throw Failure(VELORN_STATUS_NO_KERNEL,
                          "the picture has too few edges to find a kernel");
        }
    }

    /// Runs the plans side by side and keeps the kernels found. The call has come to `until` then.
    template <std::size_t kCount>
    void runAll(const std::array<RunPlan, kCount>& plans, double until) {
        std::size_t units = 0;
        for (const RunPlan& plan : plans) {
            const Plane picture = croppedFor(plan.side);
            units += runUnits(picture.width(), picture.height(), boundsOf(plan), plan.settings) +
                     scoreUnits();
        }
        m_team.progress().beginPhase(until, units);
        std::array<std::optional<Candidate>, kCount> found;
        m_team.forEach(kCount, [&](std::size_t piece, int) { found[piece] = run(plans[piece]); });
        for (std::optional<Candidate>& candidate : found) {
            if (candidate) {
                m_candidates.push_back(std::move(*candidate));
            }
        }
    }

    std::optional<Candidate> run(const RunPlan& plan) const {
        const auto kernel = kernelIn(m_part, plan);
        return kernel ? std::optional(scored(*kernel)) : std::nullopt;
    }

    std::optional<SquareKernel> kernelIn(const Plane& part, const RunPlan& plan) const {
        RunSettings settings = plan.settings;
        settings.smoothing = m_smoothing;
        return runSearch(croppedFor(part, plan.side), boundsOf(plan), settings, m_team.progress(),
                         m_team.cancellation());
    }

    Candidate scored(const SquareKernel& kernel) const {
        Evidence evidence = m_scorer.of(kernel, m_team.cancellation());
        m_team.progress().advance(scoreUnits());
        const auto like = analyticKernelLike(kernel);
        const int extent = extentOf(kernel);
        evidence.reachesRim = extent >= kernel.side ? 1.0 : 0.0;
        return {kernel, evidence, like ? like->kind : KernelKind(), extent};
    }

    std::size_t scoreUnits() const {
        const auto side = static_cast<std::size_t>(m_scorer.side());
        return 3 * side * side / 2;
    }

    /// A run at the size that the first runs have found, or a larger one where they found no end.
    RunPlan thirdPlan() const {
        const int side = m_bounds.side();
        const int extent = best().extent;
        if (extent > 0.75 * std::min(kMiddleSide, side) && side > kMiddleSide) {
            return {std::min(kLargeSide, side), kLargeRun};
        }
        return {std::min(fittingSide(extent), side), kStrongestRun};
    }

    /// Adds the blur that the picture's spectrum shows, else the analytic kernel that resembles the
    /// best candidate, if any.
    void addAnalytic() {
        m_team.progress().beginPhase(0.8, 2);
        m_team.run([&] {
            const bool mayReplace = m_start == nullptr && m_smoothing <= 0.0;
            const auto shown = mayReplace ? shownBySpectrum() : std::nullopt;
            m_team.progress().advance();
            const Candidate& free = best();
            const auto analytic = shown ? shown : analyticKernelLike(free.kernel);
            if (analytic && extentOf(analytic->kernel) <= m_bounds.smallerSide()) {
                Evidence evidence = m_scorer.of(analytic->kernel, m_team.cancellation());
                evidence.isAnalytic = 1.0;
                evidence.showsZeros = shown ? 1.0 : 0.0;
                evidence.reachesRim = shown ? 0.0 : free.evidence.reachesRim;
                evidence.agreement = shown ? 1.0 : free.evidence.agreement;
                m_candidates.push_back(
                    {analytic->kernel, evidence, analytic->kind, extentOf(analytic->kernel)});
            }
            m_team.progress().advance();
        });
    }

    std::optional<AnalyticKernel> shownBySpectrum() const {
        const double largest = std::min(m_bounds.smallerSide(), kLargeSide);
        const auto kind = spectralBlur(m_part, largest, m_team.cancellation());
        return kind ? std::optional(AnalyticKernel{*kind, kernelOfKind(*kind)}) : std::nullopt;
    }

    /// Fits the kernels of runs again. What is known about the candidates stays true. A kernel that
    /// the host wants refined or smoothed stays as it is.
    void refit(std::vector<FoundKernel>& found) const {
        std::vector<std::size_t> fitted;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const bool isFree = m_candidates[i].evidence.isAnalytic == 0.0;
            if (isFree && m_start == nullptr && m_smoothing <= 0.0) {
                fitted.push_back(i);
            }
        }
        m_team.progress().beginPhase(1.0, std::max(fitted.size() * kRefitUnits, std::size_t{1}));
        m_team.forEach(fitted.size(), [&](std::size_t piece, int) {
            const Candidate& candidate = m_candidates[fitted[piece]];
            const int side = std::min(candidate.extent + kRefitRoom, m_bounds.side());
            const auto kernel =
                refitKernel(croppedFor(m_part, side), m_noise * m_noise / (kLevels * kLevels),
                            candidate.kernel, m_bounds, m_team.progress(), m_team.cancellation());
            if (kernel) {
                found[fitted[piece]].kernel = cutToContent(*kernel, m_bounds);
            }
        });
    }

    const Candidate& best() const {
        return *std::ranges::min_element(m_candidates, {}, &Candidate::score);
    }

    void compareRuns() {
        for (Candidate& candidate : m_candidates) {
            for (const Candidate& other : m_candidates) {
                if (&other != &candidate) {
                    candidate.evidence.agreement = std::max(
                        candidate.evidence.agreement, likeness(candidate.kernel, other.kernel));
                }
            }
        }
    }

    FoundKernel result(const Candidate& candidate) const {
        const Evidence& evidence = candidate.evidence;
        return {cutToContent(candidate.kernel, m_bounds),
                static_cast<float>(confidenceIn(evidence)),
                static_cast<float>(evidence.agreement),
                static_cast<float>(std::exp(evidence.misfit)),
                candidate.kind,
                scoreOf(evidence),
                evidence,
                static_cast<float>(partAgreementOf(candidate.kernel)),
                1 + static_cast<int>(m_kernelsElsewhere.size())};
    }

    double partAgreementOf(const SquareKernel& kernel) const {
        double least = 1.0;
        for (const SquareKernel& elsewhere : m_kernelsElsewhere) {
            least = std::min(least, likeness(kernel, elsewhere));
        }
        return least;
    }

    /// Searches find kernels in pictures that are not blurred, too. Puts the kernel of a point
    /// first where the edges or the power spectrum of the picture contradict a blur.
    void judge(std::vector<FoundKernel>& found) const {
        const Candidate& first = m_candidates.front();
        if (first.evidence.showsZeros > 0.0) {
            return;
        }
        judgeByEdges(found);
        const bool isStroke =
            first.evidence.isAnalytic > 0.0 && first.kind.shape == KernelKind::Shape::Motion;
        // A kernel that fills its bounds may lack what lies outside.
        const Kernel content = cutToContent(first.kernel, m_bounds);
        const bool isWhole = content.width < m_bounds.width && content.height < m_bounds.height;
        if (isStroke || !isWhole || found.size() > m_candidates.size()) {
            return;
        }
        bool isContradicted = false;
        m_team.run([&] {
            SpectralEvidence spectrum(centralPart(m_part, kChosenSide),
                                      m_noise * m_noise / (kLevels * kLevels),
                                      m_team.cancellation());
            isContradicted = contradictsBlur(spectrum, withSide(first.kernel, first.extent));
        });
        if (isContradicted) {
            doubt(found, kSharpConfidence);
            putPointFirst(found);
        }
    }

    /// Searches find a small kernel, or kernels that disagree, in a picture that is not blurred,
    /// and too wide kernels where blurs are small or no edge was sharp. There, puts the kernel of a
    /// point first if the edges are sharp, or the kernel that the edges themselves show if the
    /// first one is wider. Doubts the kernels if the edges may be sharp.
    void judgeByEdges(std::vector<FoundKernel>& found) const {
        const Candidate& first = m_candidates.front();
        const bool isDoubtful = first.evidence.agreement < kLeastAgreement;
        if (first.extent > kSmallExtent && !isDoubtful) {
            return;
        }
        const bool isNarrow = largestVariance(first.kernel) < kNarrowVariance;
        EdgeSpectrum edges;
        std::optional<Candidate> narrower;
        m_team.run([&] {
            edges = edgeSpectrum(centralPart(m_part, kChosenSide), m_team.cancellation());
            if (isNarrow && m_start == nullptr && m_smoothing <= 0.0) {
                narrower = narrowerThan(first, edges);
            }
        });
        if (narrower) {
            found.insert(found.begin(), result(*narrower));
        }
        if (!(isNarrow || isDoubtful) || !edges.showsEdges ||
            edges.blurVariance >= kDoubtfulVariance) {
            return;
        }
        const bool isSharp = edges.blurVariance < kSharpVariance;
        doubt(found, isSharp ? kSharpConfidence : kDoubtfulConfidence);
        if (isSharp) {
            putPointFirst(found);
        }
    }

    static void doubt(std::vector<FoundKernel>& found, float most) {
        for (FoundKernel& kernel : found) {
            kernel.confidence = std::min(kernel.confidence, most);
        }
    }

    /// A kernel that the host wants refined stays first.
    void putPointFirst(std::vector<FoundKernel>& found) const {
        if (m_start == nullptr) {
            FoundKernel point = found.front();
            point.kernel = {1, 1, {1.0f}};
            point.kind = {KernelKind::Shape::None};
            point.partAgreement = 1.0f;
            point.parts = 1;
            found.insert(found.begin(), std::move(point));
        }
    }

    /// The kernel of the edges if `candidate` is wider than they allow.
    std::optional<Candidate> narrowerThan(const Candidate& candidate,
                                          const EdgeSpectrum& edges) const {
        if (excessBlur(edges, withSide(candidate.kernel, candidate.extent)) <= kLargestExcess) {
            return std::nullopt;
        }
        const SquareKernel kernel = kernelOfEdges(edges);
        const int extent = extentOf(kernel);
        if (extent > m_bounds.smallerSide()) {
            return std::nullopt;
        }
        Evidence evidence = m_scorer.of(kernel, m_team.cancellation());
        evidence.isAnalytic = 1.0;
        evidence.isOfEdges = 1.0;
        evidence.agreement = candidate.evidence.agreement;
        const auto like = analyticKernelLike(kernel);
        return Candidate{kernel, evidence, like ? like->kind : KernelKind(), extent};
    }

    /// The centred rectangle that holds all weights, and a pixel more on each side if the bounds
    /// allow.
    static Kernel cutToContent(const SquareKernel& square, const KernelBounds& bounds) {
        const int radius = square.radius();
        int columns = 0;
        int rows = 0;
        for (int y = -radius; y <= radius; ++y) {
            for (int x = -radius; x <= radius; ++x) {
                if (square.at(y + radius, x + radius) > 0.0) {
                    columns = std::max(columns, std::abs(x));
                    rows = std::max(rows, std::abs(y));
                }
            }
        }
        columns = std::min({columns + 1, bounds.width / 2, radius});
        rows = std::min({rows + 1, bounds.height / 2, radius});
        Kernel kernel{2 * columns + 1, 2 * rows + 1, {}};
        for (int y = -rows; y <= rows; ++y) {
            for (int x = -columns; x <= columns; ++x) {
                kernel.values.push_back(static_cast<float>(square.at(y + radius, x + radius)));
            }
        }
        return kernel;
    }

    Team& m_team;
    KernelBounds m_bounds;
    bool m_isChosen;
    double m_smoothing;
    const Kernel* m_start;
    std::vector<Plane> m_parts;
    const Plane& m_part; ///< the first, which most is found in
    double m_noise;
    KernelScorer m_scorer;
    std::vector<Candidate> m_candidates;
    std::vector<SquareKernel> m_kernelsElsewhere; ///< of the other parts
};

} // namespace

FoundKernel findKernel(const Plane& luminance, const FindSettings& settings, Team& team) {
    return std::move(findCandidates(luminance, settings, team).front());
}

std::vector<FoundKernel> findCandidates(const Plane& luminance, const FindSettings& settings,
                                        Team& team) {
    if (settings.region.isEmpty()) {
        return Search(luminance, settings, team).find();
    }
    const Rect region =
        intersection(settings.region, {0, 0, luminance.width(), luminance.height()});
    if (region.isEmpty()) {
        throw Failure(VELORN_STATUS_NO_KERNEL, "the region to look at is outside of the picture");
    }
    return Search(usablePart(luminance, region), settings, team).find();
}

} // namespace restoration
