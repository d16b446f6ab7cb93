#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "restoration/pictures/sampleRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "restoration/pictures/sampleRows.h"
#include "velimproclib/primitives/base/rows.h"

HWY_BEFORE_NAMESPACE();
namespace restoration::HWY_NAMESPACE {

// Pixels are read and written in short pieces, one channel after the other: the memory of a piece
// stays in the first cache, and every loop has one constant distance.
constexpr std::size_t kPiece = 256;

inline float toFloat(std::uint8_t sample) {
    return static_cast<float>(sample) / 255.0f;
}
inline float toFloat(std::uint16_t sample) {
    return static_cast<float>(sample) / 65535.0f;
}
// The difference of a number that is not finite and itself is not a number.
inline float toFloat(float sample) {
    return sample - sample == 0.0f ? sample : 0.0f;
}

template <class Sample>
Sample fromFloat(float value) {
    constexpr auto kWhite = static_cast<float>(static_cast<Sample>(~Sample{0}));
    const float scaled = value * kWhite + 0.5f;
    const float bounded = scaled > 0.0f ? (scaled < kWhite ? scaled : kWhite) : 0.0f;
    return static_cast<Sample>(static_cast<std::int32_t>(bounded));
}
template <>
inline float fromFloat<float>(float value) {
    return value;
}

template <class Sample, std::size_t Channels>
void readChannel(const vel::Unaligned<Sample>* HWY_RESTRICT source, std::size_t count,
                 float* HWY_RESTRICT target) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i] = toFloat(source[i * Channels].value);
    }
}

template <class Sample, std::size_t Channels>
void writeChannel(const float* HWY_RESTRICT source, std::size_t count,
                  vel::Unaligned<Sample>* HWY_RESTRICT target) {
    for (std::size_t i = 0; i < count; ++i) {
        target[i * Channels].value = fromFloat<Sample>(source[i]);
    }
}

/// piece(first pixel, pixels) for all pieces of `count` pixels.
template <class Piece>
void forEachPiece(std::size_t count, const Piece& piece) {
    for (std::size_t first = 0; first < count; first += kPiece) {
        piece(first, count - first < kPiece ? count - first : kPiece);
    }
}

template <class Sample, std::size_t Channels>
void readPixels(const std::byte* bytes, std::size_t count, std::span<float* const> targets) {
    const auto* samples = reinterpret_cast<const vel::Unaligned<Sample>*>(bytes);
    forEachPiece(count, [&](std::size_t first, std::size_t length) {
        for (std::size_t channel = 0; channel < targets.size(); ++channel) {
            readChannel<Sample, Channels>(samples + first * Channels + channel, length,
                                          targets[channel] + first);
        }
    });
}

template <class Sample, std::size_t Channels>
void writePixels(std::span<const float* const> sources, std::size_t count, std::byte* bytes) {
    auto* samples = reinterpret_cast<vel::Unaligned<Sample>*>(bytes);
    forEachPiece(count, [&](std::size_t first, std::size_t length) {
        for (std::size_t channel = 0; channel < sources.size(); ++channel) {
            writeChannel<Sample, Channels>(sources[channel] + first, length,
                                           samples + first * Channels + channel);
        }
    });
}

template <class Sample>
void readPixels(int channels, const std::byte* bytes, std::size_t count,
                std::span<float* const> targets) {
    switch (channels) {
    case 1:
        return readPixels<Sample, 1>(bytes, count, targets);
    case 2:
        return readPixels<Sample, 2>(bytes, count, targets);
    case 3:
        return readPixels<Sample, 3>(bytes, count, targets);
    default:
        return readPixels<Sample, 4>(bytes, count, targets);
    }
}

template <class Sample>
void writePixels(int channels, std::span<const float* const> sources, std::size_t count,
                 std::byte* bytes) {
    switch (channels) {
    case 1:
        return writePixels<Sample, 1>(sources, count, bytes);
    case 2:
        return writePixels<Sample, 2>(sources, count, bytes);
    case 3:
        return writePixels<Sample, 3>(sources, count, bytes);
    default:
        return writePixels<Sample, 4>(sources, count, bytes);
    }
}

void readLanes(std::int32_t samples, int channels, const std::byte* pixels, std::size_t count,
               std::span<float* const> targets) {
    switch (samples) {
    case VELORN_SAMPLES_U8:
        return readPixels<std::uint8_t>(channels, pixels, count, targets);
    case VELORN_SAMPLES_U16:
        return readPixels<std::uint16_t>(channels, pixels, count, targets);
    default:
        return readPixels<float>(channels, pixels, count, targets);
    }
}

void writeLanes(std::int32_t samples, int channels, std::span<const float* const> sources,
                std::size_t count, std::byte* pixels) {
    switch (samples) {
    case VELORN_SAMPLES_U8:
        return writePixels<std::uint8_t>(channels, sources, count, pixels);
    case VELORN_SAMPLES_U16:
        return writePixels<std::uint16_t>(channels, sources, count, pixels);
    default:
        return writePixels<float>(channels, sources, count, pixels);
    }
}

} // namespace restoration::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace restoration {

HWY_EXPORT(readLanes);
HWY_EXPORT(writeLanes);

void readSamples(std::int32_t samples, int channels, const std::byte* pixels, std::size_t count,
                 std::span<float* const> targets) noexcept {
    HWY_DYNAMIC_DISPATCH(readLanes)(samples, channels, pixels, count, targets);
}

void writeSamples(std::int32_t samples, int channels, std::span<const float* const> sources,
                  std::size_t count, std::byte* pixels) noexcept {
    HWY_DYNAMIC_DISPATCH(writeLanes)(samples, channels, sources, count, pixels);
}

} // namespace restoration
#endif
