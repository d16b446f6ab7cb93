#include "velimproclib/bridge/ColourTransform.h"

#include <algorithm>
#include <utility>

namespace vel {
namespace {

constexpr int kMostThreads = 32;
constexpr std::int32_t kDone = 1;
constexpr std::int32_t kNoProfile = 0;

struct CloseProfile {
    void operator()(void* profile) const noexcept { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

Profile openProfile(const void* data, std::int32_t size) {
    if (data == nullptr || size < 1) {
        return Profile(cmsCreate_sRGBProfile());
    }
    return Profile(cmsOpenProfileFromMem(data, static_cast<cmsUInt32Number>(size)));
}

bool areAbsent(const PSProfilesRecord& profiles) noexcept {
    return (profiles.inData == nullptr && profiles.outData == nullptr) ||
           (profiles.inSize < 1 && profiles.outSize < 1);
}

} // namespace

CreatedTransform createTransform(const PSProfilesRecord& profiles, cmsUInt32Number format,
                                 std::int32_t refused) {
    if (areAbsent(profiles)) {
        return {kDone, nullptr};
    }
    const Profile source = openProfile(profiles.inData, profiles.inSize);
    if (!source) {
        return {kNoProfile, nullptr};
    }
    const Profile target = openProfile(profiles.outData, profiles.outSize);
    if (!target) {
        return {kNoProfile, nullptr};
    }
    ColourTransform transform(cmsCreateTransform(source.get(), format, target.get(), format,
                                                 INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE));
    if (!transform) {
        return {refused, nullptr};
    }
    return {kDone, std::move(transform)};
}

int transformTeamSize() noexcept {
    return std::clamp(omp_get_max_threads(), 1, kMostThreads);
}

} // namespace vel
