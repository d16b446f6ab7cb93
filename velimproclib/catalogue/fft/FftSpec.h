#pragma once

#include "velimproclib/primitives/base/Status.h"
#include "velimproclib/primitives/fft/RealFft2D.h"

#include <cstddef>
#include <cstdint>

namespace vel {

/// Specification of the transforms of real images 2^orderX wide and 2^orderY high between pixels
/// and the packed spectrum (layout in PackedSpectrum.h). Constant after its creation: any number of
/// threads may use it at the same time, each with its own work buffer or with none.
struct FftSpec {
    static constexpr std::uint32_t kMagic = 0x46525332; // "FRS2"

    FftSpec(std::int32_t orderX, std::int32_t orderY) : fft(orderX, orderY) {}

    std::uint32_t magic = kMagic; ///< anything else marks an object that is no specification
    RealFft2D fft;
};

/// Scaling of the inverse transform: the only one that is supported.
inline constexpr std::int32_t kFftDivideInverse = 2;
/// Preference for accuracy over speed. The arithmetic is the same for every hint.
inline constexpr std::int32_t kFftAccurate = 2;

/// Creates a specification. Orders 0 to 30 each. `flag` and `hint` are accepted and change nothing:
/// the forward transform carries no factor and the inverse divides by the number of pixels.
/// Returns kOk, or kNullPointer, kBadFftOrder or kOutOfMemory with `*spec` unchanged.
Status fftInitAlloc(FftSpec** spec, std::int32_t orderX, std::int32_t orderY, std::int32_t flag,
                    std::int32_t hint) noexcept;

/// Clears the magic number and frees. Returns kOk, or kNullPointer or kBadFftSpec without freeing.
Status fftFree(FftSpec* spec) noexcept;

/// Bytes of a work buffer for either direction; the buffer needs no alignment. 0 when `spec` is
/// null or no specification.
std::size_t fftWorkBufferBytes(const FftSpec* spec) noexcept;

/// Transforms the pixels at `src` into the packed spectrum at `dst`, both 2^orderX floats wide and
/// 2^orderY high, rows `srcStep` and `dstStep` bytes apart. `dst` may be `src` with the same step.
/// `workBuf` holds `fftWorkBufferBytes` bytes; null means allocate inside.
/// Returns kOk, kNullPointer, kBadFftSpec, kBadStep (below 1) or kOutOfMemory.
Status fftFwdRealToPack(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                        const FftSpec* spec, std::uint8_t* workBuf) noexcept;

/// Transforms the packed spectrum at `src` into pixels at `dst`, divided by the number of pixels:
/// the inverse of `fftFwdRealToPack`, with the same contract.
Status fftInvPackToReal(const float* src, std::int32_t srcStep, float* dst, std::int32_t dstStep,
                        const FftSpec* spec, std::uint8_t* workBuf) noexcept;

} // namespace vel
