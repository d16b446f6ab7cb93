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

/// The two profiles of a pass, both open or neither of use.
struct OpenProfiles {
    Profile source;
    Profile target;

    explicit OpenProfiles(const PSProfilesRecord& profiles)
        : source(openProfile(profiles.inData, profiles.inSize)) {
        if (source) {
            target = openProfile(profiles.outData, profiles.outSize);
        }
    }
    bool areOpen() const noexcept { return source && target; }

    /// `format` on both sides. Without the cache of the last pixel one transform serves all
    /// threads.
    Transform transform(cmsUInt32Number format) const {
        return Transform(cmsCreateTransform(source.get(), format, target.get(), format,
                                            INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE));
    }
};

int teamSize() noexcept {
    return std::clamp(omp_get_max_threads(), 1, kMostThreads);
}

/// What a thread needs to run one row of red, green, blue elements through a transform.
template <class Element>
struct RowBuffers {
    std::vector<Element> in;
    std::vector<Element> out;

    explicit RowBuffers(int32_t width)
        : in(3 * static_cast<std::size_t>(width)), out(3 * static_cast<std::size_t>(width)) {}
};

/// Lets every row of elements be loaded, transformed and stored by a thread with buffers of its
/// own. All memory is taken before the team starts: no failure has to cross its edge.
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

/// The 15-bit scale is stretched to the transform's 16 bits and back.
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
    if (areAbsent(profiles)) {
        return kDone;
    }
    const OpenProfiles open(profiles);
    if (!open.areOpen()) {
        return kNoTransform;
    }
    const Transform transform = open.transform(TYPE_RGB_8);
    if (!transform) {
        return kNoTransform;
    }
    auto* const pixels = static_cast<std::uint8_t*>(dst);
    const auto count = static_cast<std::size_t>(std::max(width, int32_t{0}));
    transformRows<std::uint8_t>(
        transform, width, height,
        [&](int32_t y, std::vector<std::uint8_t>& in) {
            packRgbRow(bytesOfRow(pixels, dstStep, y), in.data(), count);
        },
        [&](int32_t y, const std::vector<std::uint8_t>& out) {
            unpackRgbRow(out.data(), bytesOfRow(pixels, dstStep, y), count);
        });
    return kDone;
}

int32_t iccTransformHostRows(const PSProfilesRecord& profiles, void* data, bool is8, int32_t step,
                             int32_t width, int32_t height) {
    if (areAbsent(profiles)) {
        return kDone;
    }
    const OpenProfiles open(profiles);
    if (!open.areOpen()) {
        return kNoTransform;
    }
    const Transform transform = open.transform(is8 ? TYPE_RGB_8 : TYPE_RGB_16);
    if (!transform) {
        // Only the 8-bit form tells that there is no transform: callers know it that way.
        return is8 ? kNoTransform : kDone;
    }
    auto* const bytes = static_cast<std::uint8_t*>(data);
    if (is8) {
        transformBytes(transform, bytes, step, width, height);
    } else {
        transform15Bits(transform, bytes, step, width, height);
    }
    return kDone;
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
