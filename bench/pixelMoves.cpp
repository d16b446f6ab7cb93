// The conversions and channel moves against a memcpy that reads and writes as many bytes in total.
// The counter `of_memcpy` is memcpy's time divided by the operation's (1 is memcpy's speed). Both
// alternate within one run and the medians are compared, so that other load on the machine slows
// both down. One plane has 1024 by 1024 pixels, one 256 by 64, which fit the cache. Two limits hold
// for every variant: the large planes do not fit the first-level cache, and a move into one channel
// transfers the bytes of the other channels too.
#include "velimproclib/primitives/base/Memory.h"
#include "velimproclib/primitives/pixels/ChannelMoves.h"
#include "velimproclib/primitives/pixels/Conversions.h"
#include "velimproclib/primitives/pixels/PlaneCopies.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vel;

struct AlignedDeleter {
    void operator()(unsigned char* block) const { alignedFree(block); }
};
using Block = std::unique_ptr<unsigned char, AlignedDeleter>;

struct Plane {
    Block block;
    std::int32_t step = 0;

    Plane(std::int32_t rowBytes, std::int32_t height) {
        block.reset(imageAlloc(rowBytes, height, &step));
        std::memset(block.get(), 1,
                    static_cast<std::size_t>(step) * static_cast<std::size_t>(height));
    }
    template <class T>
    T* as(int element = 0) const {
        return reinterpret_cast<T*>(block.get()) + element;
    }
};

double seconds(const std::function<void()>& action, int times) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) {
        action();
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / times;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void againstMemcpy(benchmark::State& state, const std::function<void()>& operation,
                   std::size_t traffic) {
    const std::size_t half = traffic / 2;
    const std::vector<unsigned char> from(half, 1);
    std::vector<unsigned char> to(half);
    const auto copy = [&] { std::memcpy(to.data(), from.data(), half); };
    const int times = static_cast<int>(std::max<std::size_t>(1, 4'000'000 / traffic));
    std::vector<double> operationTimes;
    std::vector<double> ratios;
    for (auto _ : state) {
        const double operationTime = seconds(operation, times);
        const double copyTime = seconds(copy, times);
        operationTimes.push_back(operationTime);
        ratios.push_back(copyTime / operationTime);
        state.SetIterationTime(operationTime);
    }
    state.counters["of_memcpy"] = median(ratios);
    state.counters["GB_per_s"] = static_cast<double>(traffic) / median(operationTimes) * 1e-9;
}

struct Size {
    std::int32_t width, height;
};

void add(const std::string& name, Size size, std::int32_t srcPixelBytes, std::int32_t dstPixelBytes,
         std::int32_t trafficPerPixel,
         std::function<Status(const Plane&, const Plane&)> operation) {
    const std::string full =
        name + "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
    benchmark::RegisterBenchmark(full.c_str(),
                                 [=](benchmark::State& state) {
                                     const Plane src(size.width * srcPixelBytes, size.height);
                                     const Plane dst(size.width * dstPixelBytes, size.height);
                                     againstMemcpy(
                                         state, [&] { operation(src, dst); },
                                         static_cast<std::size_t>(trafficPerPixel) *
                                             static_cast<std::size_t>(size.width) *
                                             static_cast<std::size_t>(size.height));
                                 })
        ->UseManualTime()
        ->MinTime(0.15);
}

template <class From, class To>
using Conversion = Status (*)(const From*, std::int32_t, To*, std::int32_t, std::int32_t,
                              std::int32_t) noexcept;
template <class To>
using Rounding = Status (*)(const float*, std::int32_t, To*, std::int32_t, std::int32_t,
                            std::int32_t, std::int32_t) noexcept;

template <class From, class To>
void addConversion(const std::string& name, Size size, Conversion<From, To> convert) {
    const auto srcBytes = static_cast<std::int32_t>(sizeof(From));
    const auto dstBytes = static_cast<std::int32_t>(sizeof(To));
    add(name, size, srcBytes, dstBytes, srcBytes + dstBytes, [=](const Plane& s, const Plane& d) {
        return convert(s.as<From>(), s.step, d.as<To>(), d.step, size.width, size.height);
    });
}

template <class To>
void addRounding(const std::string& name, Size size, Rounding<To> convert) {
    const auto dstBytes = static_cast<std::int32_t>(sizeof(To));
    for (const std::int32_t round : {kToNearestEven, kTowardZero}) {
        add(name + (round == kToNearestEven ? "/nearest" : "/truncate"), size, 4, dstBytes,
            4 + dstBytes, [=](const Plane& s, const Plane& d) {
                return convert(s.as<float>(), s.step, d.as<To>(), d.step, size.width, size.height,
                               round);
            });
    }
}

/// A move out of a channel reads the whole pixel; a move into a channel reads and writes it.
template <class T>
void addMoves(const std::string& suffix, Size size, Conversion<T, T> into, Conversion<T, T> from) {
    const auto element = static_cast<std::int32_t>(sizeof(T));
    const std::int32_t pixel = 3 * element;
    add("planeToChannel" + suffix, size, element, pixel, element + 2 * pixel,
        [=](const Plane& s, const Plane& d) {
            return into(s.as<T>(), s.step, d.as<T>(1), d.step, size.width, size.height);
        });
    add("channelToPlane" + suffix, size, pixel, element, element + pixel,
        [=](const Plane& s, const Plane& d) {
            return from(s.as<T>(1), s.step, d.as<T>(), d.step, size.width, size.height);
        });
}

void addAll(Size size) {
    addConversion("convertU8toF32", size, convertU8toF32);
    addConversion("convertU16toF32", size, convertU16toF32);
    addConversion("convertS16toF32", size, convertS16toF32);
    addConversion<std::uint8_t, std::uint16_t>(
        "convertU8toU16", size,
        [](const std::uint8_t* src, std::int32_t srcStep, std::uint16_t* dst, std::int32_t dstStep,
           std::int32_t w, std::int32_t h) noexcept {
            return convertU8toU16(src, srcStep, unaligned(dst), dstStep, w, h);
        });
    addConversion("convertU16toU8", size, convertU16toU8);
    addRounding("convertF32toU8", size, convertF32toU8);
    addRounding("convertF32toU16", size, convertF32toU16);
    addRounding("convertF32toS16", size, convertF32toS16);
    addMoves<std::uint8_t>("C3U8", size, planeToChannelC3U8, channelToPlaneC3U8);
    add("planeToChannelC3U16", size, 2, 6, 14, [=](const Plane& s, const Plane& d) {
        return planeToChannelC3U16(s.as<std::uint16_t>(), s.step, d.as<std::uint16_t>(1), d.step,
                                   size.width, size.height);
    });
    add("planeToChannelC4U8", size, 1, 4, 9, [=](const Plane& s, const Plane& d) {
        return planeToChannelC4U8(s.as<std::uint8_t>(), s.step, d.as<std::uint8_t>(1), d.step,
                                  size.width, size.height);
    });
    add("setChannelC4U8", size, 1, 4, 8, [=](const Plane&, const Plane& d) {
        return setChannelC4U8(255, d.as<std::uint8_t>(3), d.step, size.width, size.height);
    });
    add("copyPlaneF32", size, 4, 4, 8, [=](const Plane& s, const Plane& d) {
        return copyPlaneF32(s.as<float>(), s.step, d.as<float>(), d.step, size.width, size.height);
    });
    add("setPlaneF32", size, 4, 4, 4, [=](const Plane&, const Plane& d) {
        return setPlaneF32(1.0f, d.as<float>(), d.step, size.width, size.height);
    });
    const auto mask = std::make_shared<Plane>(size.width, size.height);
    add("copyMaskedF32", size, 4, 4, 13, [=](const Plane& s, const Plane& d) {
        return copyMaskedF32(s.as<float>(), s.step, d.as<float>(), d.step, size.width, size.height,
                             mask->as<std::uint8_t>(), mask->step);
    });
}

} // namespace

int main(int argc, char** argv) {
    addAll({1024, 1024});
    addAll({256, 64});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
