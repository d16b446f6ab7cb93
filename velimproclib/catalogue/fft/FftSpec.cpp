#include "velimproclib/catalogue/fft/FftSpec.h"

#include "velimproclib/catalogue/fft/FloatPlane.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "velimproclib/catalogue/fft/FftSpec.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace vel::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
using PairTag = HWY_CAPPED(float, RealFft2D::kLanes);

constexpr int kVectorLanes = static_cast<int>(hn::MaxLanes(PairTag()));

HWY_INLINE void putPairs(const float* re, float* to) {
    const PairTag d;
    for (int lane = 0; lane < RealFft2D::kLanes; lane += kVectorLanes) {
        hn::StoreInterleaved2(hn::Load(d, re + lane), hn::Load(d, re + RealFft2D::kLanes + lane), d,
                              to + 2 * lane);
    }
}

HWY_INLINE void takePairs(const float* from, float* re) {
    const PairTag d;
    for (int lane = 0; lane < RealFft2D::kLanes; lane += kVectorLanes) {
        hn::Vec<PairTag> realPart;
        hn::Vec<PairTag> imaginaryPart;
        hn::LoadInterleaved2(d, from + 2 * lane, realPart, imaginaryPart);
        hn::Store(realPart, d, re + lane);
        hn::Store(imaginaryPart, d, re + RealFft2D::kLanes + lane);
    }
}

} // namespace

/// Stores all lanes of a block as pairs from column `x` on.
void packFullBlock(const RealFft2D& fft, const float* block, const FloatPlane& packed, int x) {
    for (int row = 0; row < fft.height(); ++row) {
        putPairs(block + std::ptrdiff_t{row} * RealFft2D::kRowFloats,
                 reinterpret_cast<float*>(packed.at(x, fft.frequencyOf(row))));
    }
}

void unpackFullBlock(const RealFft2D& fft, const FloatPlane& packed, int x, float* block) {
    for (int row = 0; row < fft.height(); ++row) {
        takePairs(reinterpret_cast<const float*>(packed.at(x, fft.frequencyOf(row))),
                  block + std::ptrdiff_t{row} * RealFft2D::kRowFloats);
    }
}

} // namespace vel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vel {

HWY_EXPORT(packFullBlock);
HWY_EXPORT(unpackFullBlock);

namespace {

constexpr std::size_t kAlignment = 64;

bool isSpec(const FftSpec* spec) noexcept {
    return spec->magic == FftSpec::kMagic;
}

Status check(const float* src, std::int32_t srcStep, const float* dst, std::int32_t dstStep,
             const FftSpec* spec) noexcept {
    if (src == nullptr || dst == nullptr || spec == nullptr) {
        return kNullPointer;
    }
    if (!isSpec(spec)) {
        return kBadFftSpec;
    }
    if (srcStep < 1 || dstStep < 1) {
        return kBadStep;
    }
    return kOk;
}

/// The caller's work buffer or an allocated one, divided into a spectrum and the transform's
/// scratch.
class WorkSpace {
public:
    WorkSpace(const FftSpec& spec, std::uint8_t* given) {
        if (given == nullptr) {
            m_own.reset(new (std::nothrow) std::uint8_t[fftWorkBufferBytes(&spec)]);
            given = m_own.get();
        }
        if (given != nullptr) {
            const auto address = reinterpret_cast<std::uintptr_t>(given);
            const std::size_t skip = (kAlignment - address % kAlignment) % kAlignment;
            m_spectrum = reinterpret_cast<float*>(given + skip);
            m_scratch = m_spectrum + spec.fft.spectrumFloats();
        }
    }

    bool exists() const { return m_spectrum != nullptr; }
    float* spectrum() const { return m_spectrum; }
    float* scratch() const { return m_scratch; }
    float* block(const RealFft2D& fft, int index) const {
        return m_spectrum + static_cast<std::size_t>(index) * fft.blockFloats();
    }

private:
    std::unique_ptr<std::uint8_t[]> m_own;
    float* m_spectrum = nullptr;
    float* m_scratch = nullptr;
};

/// Lanes of block `index` that hold complex columns stored as pairs along the rows: first and end.
struct PairLanes {
    PairLanes(const RealFft2D& fft, int index)
        : first(index == 0 ? 1 : 0), end(std::min(fft.width() / 2, RealFft2D::kLanes)),
          packedColumn(2 * (index * RealFft2D::kLanes + first) - 1) {}

    bool full() const { return end - first == RealFft2D::kLanes; }
    std::size_t bytes() const {
        return static_cast<std::size_t>(std::max(end - first, 0)) * 2 * sizeof(float);
    }

    int first;
    int end;
    int packedColumn; ///< where the first pair starts
};

void packPairs(const RealFft2D& fft, int index, const float* block, const FloatPlane& packed) {
    const PairLanes lanes(fft, index);
    if (lanes.full()) {
        HWY_DYNAMIC_DISPATCH(packFullBlock)(fft, block, packed, lanes.packedColumn);
        return;
    }
    std::array<float, RealFft2D::kRowFloats> pairs;
    for (int row = 0; row < fft.height() && lanes.bytes() > 0;
         ++row, block += RealFft2D::kRowFloats) {
        for (std::size_t lane = 0; lane < RealFft2D::kLanes; ++lane) {
            pairs[2 * lane] = block[lane];
            pairs[2 * lane + 1] = block[RealFft2D::kLanes + lane];
        }
        std::memcpy(packed.at(lanes.packedColumn, fft.frequencyOf(row)),
                    pairs.data() + 2 * lanes.first, lanes.bytes());
    }
}

void unpackPairs(const RealFft2D& fft, int index, const FloatPlane& packed, float* block) {
    const PairLanes lanes(fft, index);
    if (lanes.full()) {
        HWY_DYNAMIC_DISPATCH(unpackFullBlock)(fft, packed, lanes.packedColumn, block);
        return;
    }
    std::array<float, RealFft2D::kRowFloats> pairs{};
    for (int row = 0; row < fft.height(); ++row, block += RealFft2D::kRowFloats) {
        if (lanes.bytes() > 0) {
            std::memcpy(pairs.data() + 2 * lanes.first,
                        packed.at(lanes.packedColumn, fft.frequencyOf(row)), lanes.bytes());
        }
        for (std::size_t lane = 0; lane < RealFft2D::kLanes; ++lane) {
            block[lane] = pairs[2 * lane];
            block[RealFft2D::kLanes + lane] = pairs[2 * lane + 1];
        }
    }
}

/// Calls `visit(packedX, packedY, index)` for every slot of the packed columns 0 and w-1 with the
/// index of its value in block 0.
template <class Visit>
void forEachRealColumnSlot(const RealFft2D& fft, Visit visit) {
    const int h = fft.height();
    const int columns = std::min(fft.width(), 2);
    const auto indexOf = [&](int v, int part) {
        return fft.rowOf(v) * RealFft2D::kRowFloats +
               static_cast<std::size_t>(part * RealFft2D::kLanes);
    };
    for (int second = 0; second < columns; ++second) {
        const int x = second * (fft.width() - 1);
        visit(x, 0, indexOf(0, second));
        if (h > 1) {
            visit(x, h - 1, indexOf(h / 2, second));
        }
        for (int v = 1; v < h / 2; ++v) {
            const int stored = second == 0 ? v : h - v;
            visit(x, 2 * v - 1, indexOf(stored, 0));
            visit(x, 2 * v, indexOf(stored, 1));
        }
    }
}

void packRealColumns(const RealFft2D& fft, const float* block, const FloatPlane& packed) {
    forEachRealColumnSlot(fft,
                          [&](int x, int y, std::size_t index) { packed.put(x, y, block[index]); });
}

void unpackRealColumns(const RealFft2D& fft, const FloatPlane& packed, float* block) {
    forEachRealColumnSlot(
        fft, [&](int x, int y, std::size_t index) { block[index] = packed.get(x, y); });
}

} // namespace

Status fftInitAlloc(FftSpec** spec, std::int32_t orderX, std::int32_t orderY, std::int32_t /*flag*/,
                    std::int32_t /*hint*/) noexcept {
    if (spec == nullptr) {
        return kNullPointer;
    }
    if (orderX < 0 || orderX > 30 || orderY < 0 || orderY > 30) {
        return kBadFftOrder;
    }
    try {
        *spec = new FftSpec(orderX, orderY);
    } catch (const std::exception&) {
        return kOutOfMemory;
    }
    return kOk;
}

Status fftFree(FftSpec* spec) noexcept {
    if (spec == nullptr) {
        return kNullPointer;
    }
    if (!isSpec(spec)) {
        return kBadFftSpec;
    }
    // The compiler would drop a plain store to memory that is freed next.
    static_cast<volatile std::uint32_t&>(spec->magic) = 0;
    delete spec;
    return kOk;
}

std::size_t fftWorkBufferBytes(const FftSpec* spec) noexcept {
    if (spec == nullptr || !isSpec(spec)) {
        return 0;
    }
    return (spec->fft.spectrumFloats() + spec->fft.scratchFloats()) * sizeof(float) + kAlignment -
           1;
}

Status fftFwdRealToPack(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                        const FftSpec* spec, std::uint8_t* workBuf) noexcept {
    if (const Status status = check(src, srcStep, dst, dstStep, spec)) {
        return status;
    }
    const WorkSpace work(*spec, workBuf);
    if (!work.exists()) {
        return kOutOfMemory;
    }
    const RealFft2D& fft = spec->fft;
    for (int group = 0; group < fft.groupCount(); ++group) {
        fft.forwardRows(src, srcStep, group, work.spectrum(), work.scratch());
    }
    const FloatPlane packed(dst, dstStep);
    for (int index = 0; index < fft.blockCount(); ++index) {
        float* block = work.block(fft, index);
        fft.forwardColumns(block, index);
        packPairs(fft, index, block, packed);
        if (index == 0) {
            packRealColumns(fft, block, packed);
        }
    }
    return kOk;
}

Status fftInvPackToReal(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                        const FftSpec* spec, std::uint8_t* workBuf) noexcept {
    if (const Status status = check(src, srcStep, dst, dstStep, spec)) {
        return status;
    }
    const WorkSpace work(*spec, workBuf);
    if (!work.exists()) {
        return kOutOfMemory;
    }
    const RealFft2D& fft = spec->fft;
    const FloatPlane packed(src, srcStep);
    for (int index = 0; index < fft.blockCount(); ++index) {
        float* block = work.block(fft, index);
        unpackPairs(fft, index, packed, block);
        if (index == 0) {
            unpackRealColumns(fft, packed, block);
        }
        fft.inverseColumns(block, index);
    }
    for (int group = 0; group < fft.groupCount(); ++group) {
        fft.inverseRows(work.spectrum(), group, dst, dstStep, work.scratch());
    }
    return kOk;
}

} // namespace vel
#endif
