// The plane operations and both lookups against memcpy. "toMemcpy" is the time of an operation
// divided by the time of a memcpy that reads and writes as many bytes in total; both alternate in
// one run. "nsPerPixel" is the operation alone. Both use the shortest times of the run, which other
// load on the machine affects least. The environment variable VELORN_TARGET selects a processor
// variant instead of the best one.

#include "velimproclib/primitives/arithmetic/Lookups.h"
#include "velimproclib/primitives/arithmetic/PlaneArithmetic.h"
#include "velimproclib/primitives/arithmetic/ScaledU16.h"
#include "velimproclib/primitives/arithmetic/Vectors.h"
#include "velimproclib/primitives/pixels/ColorTwist.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <hwy/aligned_allocator.h>
#include <hwy/highway.h>
#include <iostream>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// Four planes of `side` by `side` floats; operations in place work on the first.
class Planes {
public:
    explicit Planes(int side) : m_side(side) {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> values(-0.45f, 0.45f);
        for (auto& plane : m_planes) {
            plane = hwy::AllocateAligned<float>(count());
            std::generate_n(plane.get(), count(), [&] { return values(random); });
        }
        m_original.assign(m_planes[0].get(), m_planes[0].get() + count());
    }

    int side() const { return m_side; }
    int step() const { return m_side * static_cast<int>(sizeof(float)); }
    std::size_t count() const {
        return static_cast<std::size_t>(m_side) * static_cast<std::size_t>(m_side);
    }
    float* operator[](std::size_t i) const { return m_planes[i].get(); }
    void restoreFirst() {
        std::memcpy(m_planes[0].get(), m_original.data(), count() * sizeof(float));
    }

private:
    int m_side;
    hwy::AlignedFreeUniquePtr<float[]> m_planes[4];
    std::vector<float> m_original;
};

using Operation = std::function<void(const Planes&)>;

template <class Work>
double secondsFor(Work&& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// `planesMoved` is the number of planes read plus the number of planes written.
void measure(benchmark::State& state, const Operation& operation, double planesMoved) {
    Planes planes(static_cast<int>(state.range(0)));
    const auto bytes = static_cast<std::size_t>(static_cast<double>(planes.count()) *
                                                sizeof(float) * planesMoved / 2.0);
    std::vector<unsigned char> from(bytes, 1);
    std::vector<unsigned char> to(bytes, 2);
    double inOperation = std::numeric_limits<double>::infinity();
    double inCopy = std::numeric_limits<double>::infinity();
    for (auto _ : state) {
        planes.restoreFirst();
        const double seconds = secondsFor([&] { operation(planes); });
        inOperation = std::min(inOperation, seconds);
        inCopy = std::min(inCopy, secondsFor([&] {
                              std::memcpy(to.data(), from.data(), bytes);
                              benchmark::ClobberMemory();
                          }));
        state.SetIterationTime(seconds);
    }
    state.counters["toMemcpy"] = inOperation / inCopy;
    state.counters["nsPerPixel"] = 1e9 * inOperation / static_cast<double>(planes.count());
}

struct Knots {
    std::vector<float> levels;
    std::vector<float> values;
    std::int32_t count() const { return static_cast<std::int32_t>(levels.size()); }
};

/// Levels evenly spaced over -0.5 to 0.5, the range of a detail layer. Every value equals its
/// level, so that a lookup leaves the plane unchanged.
Knots evenKnots(int n) {
    Knots knots;
    for (int i = 0; i < n; ++i) {
        knots.levels.push_back(-0.5f + static_cast<float>(i) / static_cast<float>(n - 1));
    }
    knots.values = knots.levels;
    return knots;
}

Operation linearLookup(int n) {
    return [knots = evenKnots(n)](const Planes& p) {
        vel::lutLinearF32(p[0], p.step(), p[1], p.step(), p.side(), p.side(), knots.values.data(),
                          knots.levels.data(), knots.count());
    };
}

Operation cubicLookup(int n) {
    return [knots = evenKnots(n)](const Planes& p) {
        vel::lutCubicInPlaceF32(p[0], p.step(), p.side(), p.side(), knots.values.data(),
                                knots.levels.data(), knots.count());
    };
}

void add(const std::string& name, double planesMoved, Operation operation) {
    benchmark::RegisterBenchmark(
        name.c_str(), [=](benchmark::State& state) { measure(state, operation, planesMoved); })
        ->Arg(512)
        ->Arg(1024)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond)
        ->MinTime(0.1);
}

void addPlaneOperations() {
    add("addPlaneF32", 3, [](const Planes& p) {
        vel::addPlaneF32(p[1], p.step(), p[0], p.step(), p.side(), p.side());
    });
    add("subPlanesF32", 3, [](const Planes& p) {
        vel::subPlanesF32(p[1], p.step(), p[2], p.step(), p[3], p.step(), p.side(), p.side());
    });
    add("divPlaneInPlaceF32", 3, [](const Planes& p) {
        vel::divPlaneInPlaceF32(p[1], p.step(), p[0], p.step(), p.side(), p.side());
    });
    add("mulConstF32", 2, [](const Planes& p) {
        vel::mulConstF32(p[0], p.step(), 0.7f, p[1], p.step(), p.side(), p.side());
    });
    add("addConstInPlaceF32", 2,
        [](const Planes& p) { vel::addConstInPlaceF32(0.7f, p[0], p.step(), p.side(), p.side()); });
    add("clampAboveInPlaceF32", 2, [](const Planes& p) {
        vel::clampAboveInPlaceF32(p[0], p.step(), p.side(), p.side(), 0.1f);
    });
    add("logInPlaceF32", 2,
        [](const Planes& p) { vel::logInPlaceF32(p[0], p.step(), p.side(), p.side()); });
    add("comparePlanesF32", 2.25, [](const Planes& p) {
        vel::comparePlanesF32(p[0], p.step(), p[1], p.step(), reinterpret_cast<std::uint8_t*>(p[2]),
                              p.side(), p.side(), p.side(), vel::kLess);
    });
    add("colorTwistP3F32", 6, [](const Planes& p) {
        // A rotation keeps the planes from growing.
        const float coef[3][4] = {{0, 1, 0, 0}, {0, 0, 1, 0}, {1, 0, 0, 0}};
        float* const planes[3] = {p[0], p[1], p[2]};
        vel::colorTwistP3F32(planes, p.step(), p.side(), p.side(), coef);
    });
    add("vsPowx", 2, [](const Planes& p) { vel::vsPowx(p.side() * p.side(), p[0], -0.5f, p[1]); });
}

void addLookups() {
    for (const int n : {6, 12, 22, 31}) {
        add("lutLinearF32/levels:" + std::to_string(n), 2, linearLookup(n));
        add("lutCubicInPlaceF32/levels:" + std::to_string(n), 2, cubicLookup(n));
    }
    add("lutLinearF32/levels:200", 2, linearLookup(200));
    add("lutCubicInPlaceF32/levels:200", 2, cubicLookup(200));
}

/// One row of floats holds two rows of 16-bit elements.
void addScaledOperations() {
    const auto elements = [](const Planes& p) {
        return reinterpret_cast<vel::Unaligned<std::uint16_t>*>(p[0]);
    };
    add("addConstScaledU16", 2, [=](const Planes& p) {
        vel::addConstScaledU16(1, elements(p), p.step(), 2 * p.side(), p.side(), -7);
    });
    add("subConstScaledU16", 2, [=](const Planes& p) {
        vel::subConstScaledU16(elements(p), p.step(), 128, elements(p), p.step(), 2 * p.side(),
                               p.side(), 7);
    });
}

void chooseTarget() {
    const char* wanted = std::getenv("VELORN_TARGET");
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        if (wanted != nullptr && std::string(hwy::TargetName(target)) == wanted) {
            hwy::SetSupportedTargetsForTest(target);
        }
    }
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    std::cerr << "Processor variants that may run: "
              << hwy::TargetName(hwy::SupportedTargets() & -hwy::SupportedTargets()) << '\n';
}

} // namespace

int main(int argc, char** argv) {
    chooseTarget();
    addPlaneOperations();
    addLookups();
    addScaledOperations();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
