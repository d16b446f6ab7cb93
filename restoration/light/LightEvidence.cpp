#include "restoration/light/LightEvidence.h"

#include "restoration/light/LightPatch.h"
#include "restoration/light/LightTrial.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <vector>

namespace restoration {
namespace {

/// Strengths of the search: 250 * 4^level.
constexpr int kLevels = 7;
constexpr int kFirstLevel = 2;
/// Residual at which restorations are compared, in variances of the noise.
constexpr double kComparedResidual = 0.8;
/// The noise of a picture without measurable noise, in levels of 255: that of rounding.
constexpr float kLeastNoise = 0.3f;

float strengthOf(int level) noexcept {
    return std::ldexp(250.0f, 2 * level);
}

/// Normal noise up to the sixth standard deviation; the same on every system.
class Noise {
public:
    explicit Noise(std::uint32_t seed) : m_random(seed) {}

    /// The sum of twelve uniform numbers has variance 1.
    float next() {
        std::uint32_t sum = 0;
        for (int i = 0; i < 6; ++i) {
            const auto bits = static_cast<std::uint32_t>(m_random());
            sum += (bits & 0xffffU) + (bits >> 16);
        }
        return static_cast<float>(sum) / 65536.0f - 6.0f;
    }

private:
    std::mt19937 m_random;
};

/// The search of one model on one set of planes for the strength of the compared residual.
class Search {
public:
    Search(const std::vector<LightPatch>& patches, const BlurSpectrum& blur, const ToneCurve* curve,
           int firstLevel)
        : m_firstLevel(firstLevel) {
        for (const LightPatch& patch : patches) {
            m_trials.emplace_back(patch, blur, curve);
        }
        m_sums.resize(patches.size());
    }

    /// The next level to try; none when the residual is enclosed or out of reach.
    std::optional<int> next(double noiseVariance) const {
        if (m_lowest > m_highest) {
            return m_firstLevel;
        }
        const double wanted = kComparedResidual * noiseVariance;
        if (residual(m_highest) > wanted) {
            return m_highest + 1 < kLevels ? std::optional(m_highest + 1) : std::nullopt;
        }
        if (residual(m_lowest) <= wanted && m_lowest > 0) {
            return m_lowest - 1;
        }
        return std::nullopt;
    }

    /// Restores patch `i` at a level. Different patches may run at once.
    void measure(std::size_t i, int level, const Plane& display, TrialScratch& scratch,
                 const Cancellation& cancellation) {
        if (m_lowest > m_highest) {
            m_trials[i].prepare(display, scratch, cancellation);
        }
        m_sums[i] = m_trials[i].explain(display, strengthOf(level), scratch, cancellation);
    }

    /// Adds the measurements of all patches.
    void finish(int level) {
        Explanation total;
        for (const Explanation& sums : m_sums) {
            total.add(sums);
        }
        m_found[static_cast<std::size_t>(level)] = total;
        m_lowest = std::min(m_lowest, level);
        m_highest = std::max(m_highest, level);
    }

    /// The logarithm of the mean cost of the prior at the compared residual.
    double cost(double noiseVariance) const {
        const double wanted = std::log(kComparedResidual * noiseVariance);
        int level = m_lowest;
        while (level + 1 < m_highest && std::log(residual(level + 1)) > wanted) {
            ++level;
        }
        if (level == m_highest) {
            return logCost(level);
        }
        const double here = std::log(residual(level));
        const double there = std::log(residual(level + 1));
        const double part =
            here > there ? std::clamp((here - wanted) / (here - there), 0.0, 1.0) : 0.0;
        return logCost(level) + part * (logCost(level + 1) - logCost(level));
    }

    /// The level whose residual is nearest to the variance of the noise.
    int levelOfNoise(double noiseVariance) const {
        int best = m_lowest;
        for (int level = m_lowest; level <= m_highest; ++level) {
            if (distanceTo(noiseVariance, level) < distanceTo(noiseVariance, best)) {
                best = level;
            }
        }
        return best;
    }

    int highestLevel() const noexcept { return m_highest; }
    const LightTrial& trial(std::size_t i) const { return m_trials[i]; }

private:
    const Explanation& found(int level) const { return m_found[static_cast<std::size_t>(level)]; }
    /// The mean squared residual; never 0.
    double residual(int level) const {
        return (found(level).residual + 1e-12) / (static_cast<double>(found(level).pixels) + 1e-12);
    }
    double logCost(int level) const {
        return std::log((found(level).gradients + 1e-12) /
                        (static_cast<double>(found(level).pixels) + 1e-12));
    }
    double distanceTo(double variance, int level) const {
        return std::abs(std::log(residual(level) / variance));
    }

    int m_firstLevel;
    std::vector<LightTrial> m_trials;
    std::vector<Explanation> m_sums;
    std::array<Explanation, kLevels> m_found{};
    int m_lowest = kLevels;
    int m_highest = -1;
};

/// The planes of all patches: of the picture, or as a model predicts them.
using Planes = std::vector<Plane>;

/// A search and the planes that it explains.
struct Task {
    Search* search;
    const std::vector<const Plane*>* planes;
};

class Comparison {
public:
    Comparison(const std::vector<LightPatch>& patches, const Kernel& kernel, const ToneCurve& curve,
               float noise, Team& team)
        : m_patches(patches), m_curve(curve), m_noise(noise / 255.0f), m_team(team),
          m_blur(kernel, patches.front().display.width()),
          m_scratches(static_cast<std::size_t>(team.threads())) {}

    LightEvidence compare() {
        std::vector<const Plane*> picture;
        for (const LightPatch& patch : m_patches) {
            picture.push_back(&patch.display);
        }
        Search display(m_patches, m_blur, nullptr, kFirstLevel);
        Search light(m_patches, m_blur, &m_curve, kFirstLevel);
        const std::array<Task, 2> seen{Task{&display, &picture}, Task{&light, &picture}};
        run(seen);

        const Planes asDisplay = predicted(display, picture);
        const Planes asLight = predicted(light, picture);
        const std::vector<const Plane*> displayPlanes = pointersTo(asDisplay);
        const std::vector<const Plane*> lightPlanes = pointersTo(asLight);
        const int displayLevel = display.highestLevel();
        const int lightLevel = light.highestLevel();
        Search displayOfDisplay(m_patches, m_blur, nullptr, displayLevel);
        Search lightOfDisplay(m_patches, m_blur, &m_curve, lightLevel);
        Search displayOfLight(m_patches, m_blur, nullptr, displayLevel);
        Search lightOfLight(m_patches, m_blur, &m_curve, lightLevel);
        const std::array<Task, 4> foretold{
            Task{&displayOfDisplay, &displayPlanes}, Task{&lightOfDisplay, &displayPlanes},
            Task{&displayOfLight, &lightPlanes}, Task{&lightOfLight, &lightPlanes}};
        run(foretold);

        const double found = costOf(light) - costOf(display);
        const double ifLight = costOf(lightOfLight) - costOf(displayOfLight);
        const double ifDisplay = costOf(lightOfDisplay) - costOf(displayOfDisplay);
        LightEvidence evidence;
        evidence.contrast = static_cast<float>(ifDisplay - ifLight);
        evidence.position = evidence.contrast > 0.0f
                                ? static_cast<float>((found - ifLight) / (ifDisplay - ifLight))
                                : 1.0f;
        evidence.excess = static_cast<float>(costOf(display) - costOf(displayOfDisplay));
        return evidence;
    }

private:
    double noiseVariance() const noexcept {
        return static_cast<double>(m_noise) * static_cast<double>(m_noise);
    }
    double costOf(const Search& search) const { return search.cost(noiseVariance()); }

    static std::vector<const Plane*> pointersTo(const Planes& planes) {
        std::vector<const Plane*> pointers;
        for (const Plane& plane : planes) {
            pointers.push_back(&plane);
        }
        return pointers;
    }

    TrialScratch& scratchOf(int worker) {
        std::unique_ptr<TrialScratch>& scratch = m_scratches[static_cast<std::size_t>(worker)];
        if (!scratch) {
            scratch = std::make_unique<TrialScratch>(m_blur.side());
        }
        return *scratch;
    }

    /// Runs searches side by side.
    void run(std::span<const Task> tasks) {
        struct Step {
            Task task;
            int level;
        };
        for (;;) {
            std::vector<Step> steps;
            for (const Task& task : tasks) {
                if (const std::optional<int> level = task.search->next(noiseVariance())) {
                    steps.push_back({task, *level});
                }
            }
            if (steps.empty()) {
                return;
            }
            m_team.forEach(steps.size() * m_patches.size(), [&](std::size_t piece, int worker) {
                const Step& step = steps[piece / m_patches.size()];
                const std::size_t i = piece % m_patches.size();
                step.task.search->measure(i, step.level, *(*step.task.planes)[i], scratchOf(worker),
                                          m_team.cancellation());
            });
            for (const Step& step : steps) {
                step.task.search->finish(step.level);
            }
        }
    }

    /// What a model says the patches look like: its restoration at the strength that leaves the
    /// noise, blurred again, with new noise.
    Planes predicted(const Search& search, const std::vector<const Plane*>& picture) {
        const float strength = strengthOf(search.levelOfNoise(noiseVariance()));
        Planes planes(m_patches.size());
        m_team.forEach(m_patches.size(), [&](std::size_t i, int worker) {
            TrialScratch& scratch = scratchOf(worker);
            search.trial(i).explain(*picture[i], strength, scratch, m_team.cancellation());
            planes[i] = Plane(m_blur.side(), m_blur.side());
            Noise noise(static_cast<std::uint32_t>(i));
            std::ranges::transform(
                scratch.again.values(), planes[i].values().begin(), [&](float value) {
                    return std::clamp(value + m_noise * noise.next(), 0.0f, 1.0f);
                });
        });
        return planes;
    }

    const std::vector<LightPatch>& m_patches;
    const ToneCurve& m_curve;
    float m_noise;
    Team& m_team;
    BlurSpectrum m_blur;
    std::vector<std::unique_ptr<TrialScratch>> m_scratches;
};

} // namespace

bool LightEvidence::isForLight() const noexcept {
    return -0.3f < position && position < 0.5f && contrast > 0.08f && excess > 0.01f;
}

LightEvidence lightEvidence(const PictureReader& picture, std::span<const Kernel* const> kernels,
                            const ToneCurves& curves, const NoiseLevels& noise, Team& team) {
    // Green has most of the luminance.
    const std::size_t channel = picture.colours() == 3 ? 1 : 0;
    const Kernel& kernel = *kernels[kernels.size() > 1 ? channel : 0];
    std::vector<LightPatch> patches;
    team.run([&] { patches = lightPatches(picture, channel, kernel); });
    if (patches.empty()) {
        return {};
    }
    return Comparison(patches, kernel, curves.of(channel),
                      std::max(noise.channels[channel], kLeastNoise), team)
        .compare();
}

} // namespace restoration
