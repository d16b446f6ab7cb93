#include "velimproclib/bridge/IccTransform.h"

#include "velimproclib/bridge/DisplayImage.h"
#include "velimproclib/bridge/displayRows.h"
#include "velimproclib/primitives/base/rows.h"
#include "velimproclib/primitives/base/Team.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <lcms2.h>
#include <memory>
#include <omp.h>
#include <vector>

namespace vel {
namespace {

constexpr int kMostThreads = 32;
constexpr int32_t kDone = 1;
constexpr int32_t kNoTransform = 0;
constexpr std::uint16_t kMostOf15Bits = 32767;

struct CloseProfile {
    void operator()(void* profile) const noexcept { cmsCloseProfile(profile); }
};
struct DeleteTransform {
    void operator()(void* transform) const noexcept { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;

Profile openProfile(const void* data, int32_t size) {
    if (data == nullptr || size < 1) {
        return Profile(cmsCreate_sRGBProfile());
    }
    return Profile(cmsOpenProfileFromMem(data, static_cast<cmsUInt32Number>(size)));
}

bool areAbsent(const PSProfilesRecord& profiles) noexcept {
    return (profiles.inData == nullptr && profiles.outData == nullptr) ||
           (profiles.inSize < 1 && profiles.outSize < 1);
}

/// Opens the profiles, creates the transform for `format` on both sides and passes it to `convert`.
/// The transform has no cache of the last pixel, therefore all threads may share it.
/// @return kDone, also without profiles; kNoTransform if a profile cannot be read; `refused` if the
///         transform cannot be created
template <class Convert>
int32_t withTransform(const PSProfilesRecord& profiles, cmsUInt32Number format, int32_t refused,
                      const Convert& convert) {
    if (areAbsent(profiles)) {
        return kDone;
    }
    const Profile source = openProfile(profiles.inData, profiles.inSize);
    if (!source) {
        return kNoTransform;
    }
    const Profile target = openProfile(profiles.outData, profiles.outSize);
    if (!target) {
        return kNoTransform;
    }
    const Transform transform(cmsCreateTransform(source.get(), format, target.get(), format,
                                                 INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE));
    if (!transform) {
        return refused;
    }
    convert(transform);
    return kDone;
}

int teamSize() noexcept {
    return std::clamp(omp_get_max_threads(), 1, kMostThreads);
}

/// The buffers of a thread: one row of red, green, blue elements before and after the transform.
template <class Element>
struct RowBuffers {
    std::vector<Element> in;
    std::vector<Element> out;

    explicit RowBuffers(int32_t width)
        : in(3 * static_cast<std::size_t>(width)), out(3 * static_cast<std::size_t>(width)) {}
};

/// Loads, transforms and stores every row, on a team of threads with buffers of their own. All
/// memory is allocated before the team starts.
/// @param load fills a row buffer from row y; `store` writes one back to row y
template <class Element, class Load, class Store>
void transformRows(const Transform& transform, int32_t width, int32_t height, Load&& load,
                   Store&& store) {
    if (width < 1 || height < 1) {
        return;
    }
    const int threads = teamSize();
    std::vector<RowBuffers<Element>> buffers(static_cast<std::size_t>(threads),
                                             RowBuffers<Element>(width));
    forEachRow(height, threads, [&](int32_t y) {
        auto& [in, out] = buffers[static_cast<std::size_t>(omp_get_thread_num())];
        load(y, in);
        cmsDoTransform(transform.get(), in.data(), out.data(), static_cast<cmsUInt32Number>(width));
        store(y, out);
    });
}

std::uint8_t* bytesOfRow(std::uint8_t* first, int32_t step, int32_t y) noexcept {
    return rowAt(first, step, static_cast<std::size_t>(y));
}

void transformDisplay(const Transform& transform, std::uint8_t* pixels, int32_t step, int32_t width,
                      int32_t height) {
    const auto count = static_cast<std::size_t>(std::max(width, int32_t{0}));
    transformRows<std::uint8_t>(
        transform, width, height,
        [&](int32_t y, std::vector<std::uint8_t>& in) {
            packRgbRow(bytesOfRow(pixels, step, y), in.data(), count);
        },
        [&](int32_t y, const std::vector<std::uint8_t>& out) {
            unpackRgbRow(out.data(), bytesOfRow(pixels, step, y), count);
        });
}

void transformBytes(const Transform& transform, std::uint8_t* data, int32_t step, int32_t width,
                    int32_t height) {
    transformRows<std::uint8_t>(
        transform, width, height,
        [&](int32_t y, std::vector<std::uint8_t>& in) {
            std::copy_n(bytesOfRow(data, step, y), in.size(), in.data());
        },
        [&](int32_t y, const std::vector<std::uint8_t>& out) {
            std::copy_n(out.data(), out.size(), bytesOfRow(data, step, y));
        });
}

/// Doubles the 15-bit elements to the 16 bits of the transform, and halves the results.
void transform15Bits(const Transform& transform, std::uint8_t* data, int32_t step, int32_t width,
                     int32_t height) {
    transformRows<std::uint16_t>(
        transform, width, height,
        [&](int32_t y, std::vector<std::uint16_t>& in) {
            std::memcpy(in.data(), bytesOfRow(data, step, y), in.size() * sizeof in[0]);
            for (std::uint16_t& element : in) {
                element = static_cast<std::uint16_t>(2 * std::min(element, kMostOf15Bits));
            }
        },
        [&](int32_t y, std::vector<std::uint16_t>& out) {
            for (std::uint16_t& element : out) {
                element = static_cast<std::uint16_t>(element >> 1);
            }
            std::memcpy(bytesOfRow(data, step, y), out.data(), out.size() * sizeof out[0]);
        });
}

} // namespace

int32_t iccTransformDisplayRows(const PSProfilesRecord& profiles, void* dst, int32_t dstStep,
                                int32_t width, int32_t height) {
    return withTransform(profiles, TYPE_RGB_8, kNoTransform, [&](const Transform& transform) {
        transformDisplay(transform, static_cast<std::uint8_t*>(dst), dstStep, width, height);
    });
}

int32_t iccTransformHostRows(const PSProfilesRecord& profiles, void* data, bool is8, int32_t step,
                             int32_t width, int32_t height) {
    auto* const bytes = static_cast<std::uint8_t*>(data);
    if (is8) {
        return withTransform(profiles, TYPE_RGB_8, kNoTransform, [&](const Transform& transform) {
            transformBytes(transform, bytes, step, width, height);
        });
    }
    // Callers rely on the difference: a refused transform is a failure for 8 bits only.
    return withTransform(profiles, TYPE_RGB_16, kDone, [&](const Transform& transform) {
        transform15Bits(transform, bytes, step, width, height);
    });
}

int32_t displayImageWithProfiles(const PSProfilesRecord* profiles, const PlaneRecord* image,
                                 void* dst, int32_t dstStep, int32_t dstWidth, int32_t dstHeight,
                                 float scale) noexcept {
    const int32_t displayed = displayImage(image, dst, dstStep, dstWidth, dstHeight, scale);
    if (displayed != VELORN_OK || profiles == nullptr) {
        return displayed;
    }
    try {
        return iccTransformDisplayRows(*profiles, dst, dstStep, dstWidth, dstHeight);
    } catch (...) {
        return VELORN_COLOUR_FAILURE;
    }
}

} // namespace vel
