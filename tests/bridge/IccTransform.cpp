#include "velimproclib/bridge/IccTransform.h"

#include "tests/support/GuardedPlane.h"
#include "tests/support/IccProfiles.h"
#include "tests/support/Threads.h"
#include "velimproclib/bridge/DisplayImage.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <lcms2_plugin.h>
#include <limits>
#include <new>
#include <random>
#include <tuple>
#include <vector>

namespace {

/// Allocations of this size or more fail.
std::atomic<std::size_t> refusedSize{std::numeric_limits<std::size_t>::max()};

} // namespace

// Not inlined: the compiler would report a mismatch of new and free.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (size < refusedSize) {
        if (void* const block = std::malloc(std::max(size, std::size_t{1}))) {
            return block;
        }
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

using namespace vel;
using namespace vel::test;

constexpr int kWidth = 67;
constexpr int kHeight = 21;

GuardedPlane<std::uint8_t> randomDisplay(int width = kWidth, int height = kHeight) {
    std::mt19937 random(1);
    GuardedPlane<std::uint8_t> display(4 * width, height, 5, 1);
    display.fill([&] { return static_cast<std::uint8_t>(random()); });
    return display;
}

int32_t transformDisplay(const PSProfilesRecord& profiles, GuardedPlane<std::uint8_t>& display) {
    return iccTransformDisplayRows(profiles, display.data(), display.step(), display.width() / 4,
                                   display.height());
}

/// `display` with its colours converted from one profile to the other.
GuardedPlane<std::uint8_t> expectedDisplay(const ProfileBytes& in, const ProfileBytes& out,
                                           GuardedPlane<std::uint8_t> display) {
    std::vector<std::uint8_t> colours;
    for (int y = 0; y < display.height(); ++y) {
        for (int x = 0; x < display.width(); x += 4) {
            colours.insert(colours.end(),
                           {display.at(x + 2, y), display.at(x + 1, y), display.at(x, y)});
        }
    }
    colours = transformed(in, out, TYPE_RGB_8, colours);
    auto colour = colours.begin();
    for (int y = 0; y < display.height(); ++y) {
        for (int x = 0; x < display.width(); x += 4) {
            for (int c = 2; c >= 0; --c) {
                display.set(x + c, y, *colour++);
            }
        }
    }
    return display;
}

const std::vector<ProfileBytes>& faultyProfiles() {
    static const std::vector<ProfileBytes> kFaulty = [] {
        std::vector<ProfileBytes> all{
            garbageProfile(), greyProfile(), labProfile(), cmykLinkProfile(), {0}};
        const ProfileBytes whole = wideGamutProfile();
        for (const std::ptrdiff_t size : {1, 64, 127, 128, 132, 150, 300}) {
            all.emplace_back(whole.begin(), whole.begin() + size);
        }
        ProfileBytes wrongSignature = whole;
        wrongSignature[36] = 'x';
        all.push_back(wrongSignature);
        ProfileBytes manyTags = whole;
        manyTags[128] = manyTags[129] = 0xFF;
        all.push_back(manyTags);
        return all;
    }();
    return kFaulty;
}

TEST(IccTransform, DisplayColoursAreConvertedAndAlphaIsUnchanged) {
    const ProfileBytes none;
    const ProfileBytes wide = wideGamutProfile();
    const ProfileBytes srgb = srgbProfile();
    for (const auto& [in, out] : {std::pair{wide, srgb}, std::pair{srgb, wide},
                                  std::pair{wide, none}, std::pair{none, wide}}) {
        auto display = randomDisplay();
        const auto expected = expectedDisplay(in, out, display);
        ASSERT_EQ(transformDisplay(profilesRecord(in, out), display), 1);
        EXPECT_TRUE(display.sameBits(expected));
        EXPECT_TRUE(display.intact());
        EXPECT_FALSE(display.sameBits(randomDisplay()));
    }
}

TEST(IccTransform, SmallDisplaysOfEveryWidth) {
    const ProfileBytes wide = wideGamutProfile();
    for (int width = 1; width <= 9; ++width) {
        auto display = randomDisplay(width, 3);
        const auto expected = expectedDisplay(wide, {}, display);
        ASSERT_EQ(transformDisplay(profilesRecord(wide, {}), display), 1);
        EXPECT_TRUE(display.sameBits(expected));
        EXPECT_TRUE(display.intact());
    }
}

TEST(IccTransform, SizeBelowOneMeansSrgbOnThatSide) {
    const ProfileBytes wide = wideGamutProfile();
    const ProfileBytes garbage = garbageProfile();
    for (const int32_t size : {0, -1, std::numeric_limits<int32_t>::min()}) {
        PSProfilesRecord profiles = profilesRecord(wide, garbage);
        profiles.outSize = size;
        auto display = randomDisplay();
        const auto expected = expectedDisplay(wide, {}, display);
        ASSERT_EQ(transformDisplay(profiles, display), 1);
        EXPECT_TRUE(display.sameBits(expected));
    }
    PSProfilesRecord profiles = profilesRecord(garbage, wide);
    profiles.inSize = 0;
    auto display = randomDisplay();
    const auto expected = expectedDisplay({}, wide, display);
    ASSERT_EQ(transformDisplay(profiles, display), 1);
    EXPECT_TRUE(display.sameBits(expected));
}

TEST(IccTransform, NullPointerOnOneSideAndSizeBelowOneOnTheOtherConvertsFromSrgbToSrgb) {
    const ProfileBytes garbage = garbageProfile();
    const auto expected = expectedDisplay({}, {}, randomDisplay());
    for (const PSProfilesRecord& profiles : {PSProfilesRecord{nullptr, 100, garbage.data(), 0},
                                             PSProfilesRecord{garbage.data(), -1, nullptr, 100}}) {
        auto display = randomDisplay();
        ASSERT_EQ(transformDisplay(profiles, display), 1);
        EXPECT_TRUE(display.sameBits(expected));
    }
}

TEST(IccTransform, TwoNullPointersOrTwoSizesBelowOneSkipTheConversion) {
    const ProfileBytes wide = wideGamutProfile();
    const auto size = static_cast<int32_t>(wide.size());
    for (const PSProfilesRecord& profiles :
         {PSProfilesRecord{nullptr, 0, nullptr, 0}, PSProfilesRecord{nullptr, size, nullptr, size},
          PSProfilesRecord{wide.data(), 0, wide.data(), 0},
          PSProfilesRecord{wide.data(), -5, nullptr, 0}}) {
        auto display = randomDisplay();
        EXPECT_EQ(transformDisplay(profiles, display), 1);
        EXPECT_TRUE(display.sameBits(randomDisplay()));
    }
}

TEST(IccTransform, FaultyProfilesReturnZeroPrintNothingAndLeaveThePixelsUnchanged) {
    const ProfileBytes wide = wideGamutProfile();
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    for (const ProfileBytes& faulty : faultyProfiles()) {
        for (const auto& [in, out] :
             {std::pair{faulty, wide}, std::pair{wide, faulty}, std::pair{faulty, ProfileBytes()},
              std::pair{ProfileBytes(), faulty}, std::pair{faulty, faulty}}) {
            auto display = randomDisplay();
            EXPECT_EQ(transformDisplay(profilesRecord(in, out), display), 0);
            EXPECT_TRUE(display.sameBits(randomDisplay()));
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(IccTransform, EveryTruncatedProfileIsUsedOrRefused) {
    const ProfileBytes wide = wideGamutProfile();
    const auto untouched = randomDisplay(3, 2);
    for (std::size_t size = 1; size < wide.size(); ++size) {
        // A block of exactly this size lets the sanitizer detect reads past its end.
        const ProfileBytes truncated(wide.begin(),
                                     wide.begin() + static_cast<std::ptrdiff_t>(size));
        auto display = randomDisplay(3, 2);
        const int32_t result = transformDisplay(profilesRecord(truncated, {}), display);
        ASSERT_TRUE(result == 1 || (result == 0 && display.sameBits(untouched))) << size;
    }
}

TEST(IccTransform, ProfilesWithFlippedBytesAreUsedOrRefused) {
    const ProfileBytes wide = wideGamutProfile();
    const auto untouched = randomDisplay(3, 2);
    for (std::size_t at = 0; at < wide.size(); at += 3) {
        ProfileBytes flipped = wide;
        flipped[at] = static_cast<std::uint8_t>(~flipped[at]);
        auto display = randomDisplay(3, 2);
        const int32_t result = transformDisplay(profilesRecord(flipped, {}), display);
        ASSERT_TRUE(result == 1 || (result == 0 && display.sameBits(untouched))) << at;
    }
}

TEST(IccTransform, DisplayWithoutPixelsReturnsOne) {
    const ProfileBytes wide = wideGamutProfile();
    for (const auto& [width, height] :
         {std::pair{0, 4}, std::pair{4, 0}, std::pair{-1, 4}, std::pair{4, -1}}) {
        auto display = randomDisplay();
        EXPECT_EQ(iccTransformDisplayRows(profilesRecord(wide, {}), display.data(), display.step(),
                                          width, height),
                  1);
        EXPECT_TRUE(display.sameBits(randomDisplay()));
    }
}

/// Runs `check` with teams of several sizes, one of them above the limit of 32 threads.
template <class Check>
void forTeams(Check&& check) {
    forThreadCounts(check);
    const ThreadCount many(40);
    check();
}

/// Registers a plug-in of the colour library for its lifetime.
class Plugin {
public:
    explicit Plugin(void* plugin) { EXPECT_TRUE(cmsPlugin(plugin)); }
    ~Plugin() { cmsUnregisterPlugins(); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
};

cmsPluginBase pluginOf(cmsUInt32Number type, cmsPluginBase* next = nullptr) {
    return {cmsPluginMagicNumber, LCMS_VERSION, type, next};
}

std::atomic<int> largestTeam{0};

void copyAndCountTheTeam(_cmstransform_struct*, const void* in, void* out, cmsUInt32Number pixels,
                         cmsUInt32Number, const cmsStride*) {
    largestTeam = omp_get_num_threads();
    std::memcpy(out, in, 3 * std::size_t{pixels});
}

TEST(IccTransform, DisplayConversionUsesAtMostThirtyTwoThreads) {
    const auto takeOver = [](_cmsTransform2Fn* transform, void**, _cmsFreeUserDataFn*,
                             cmsPipeline**, cmsUInt32Number*, cmsUInt32Number*,
                             cmsUInt32Number*) -> cmsBool {
        *transform = copyAndCountTheTeam;
        return TRUE;
    };
    cmsPluginTransform transforms{pluginOf(cmsPluginTransformSig), {}};
    transforms.factories.xform = takeOver;
    const Plugin plugin(&transforms);
    const ProfileBytes wide = wideGamutProfile();
    for (const auto& [threads, team] : {std::pair{3, 3}, std::pair{32, 32}, std::pair{40, 32}}) {
        const ThreadCount count(threads);
        auto display = randomDisplay(kWidth, 100);
        ASSERT_EQ(transformDisplay(profilesRecord(wide, {}), display), 1);
        EXPECT_EQ(largestTeam, team);
        EXPECT_TRUE(display.sameBits(randomDisplay(kWidth, 100)));
    }
}

/// A transform to RGB that was requested of the colour library. Internally the library requests
/// transforms to other colour spaces.
struct TransformRequest {
    cmsUInt32Number input;
    cmsUInt32Number output;
    cmsUInt32Number flags;

    bool operator==(const TransformRequest&) const = default;
};
std::vector<TransformRequest> requests;
int relativeLinks = 0;

TEST(IccTransform, TransformsAreRelativeColorimetricPackedRgbAndHaveNoCache) {
    const auto recordRequest = [](_cmsTransform2Fn*, void**, _cmsFreeUserDataFn*, cmsPipeline**,
                                  cmsUInt32Number* input, cmsUInt32Number* output,
                                  cmsUInt32Number* flags) -> cmsBool {
        if (T_COLORSPACE(*output) == PT_RGB) {
            requests.push_back({*input, *output, *flags});
        }
        return FALSE;
    };
    const auto countLink = [](cmsContext context, cmsUInt32Number count, cmsUInt32Number* intents,
                              cmsHPROFILE* profiles, cmsBool* compensations,
                              cmsFloat64Number* adaptations, cmsUInt32Number flags) {
        if (cmsGetColorSpace(profiles[count - 1]) == cmsSigRgbData) {
            ++relativeLinks;
        }
        return _cmsDefaultICCintents(context, count, intents, profiles, compensations, adaptations,
                                     flags);
    };
    cmsPluginTransform transforms{pluginOf(cmsPluginTransformSig), {}};
    transforms.factories.xform = recordRequest;
    cmsPluginRenderingIntent relative{pluginOf(cmsPluginRenderingIntentSig, &transforms.base), 1,
                                      countLink, "counted"};
    const Plugin plugin(&relative);

    const ProfileBytes wide = wideGamutProfile();
    auto display = randomDisplay();
    ASSERT_EQ(transformDisplay(profilesRecord(wide, {}), display), 1);
    EXPECT_EQ(requests, (std::vector<TransformRequest>{{0x40019, 0x40019, 0x40}}));
    EXPECT_EQ(relativeLinks, 1);
}

TEST(IccTransform, ColoursAreTheSameForEveryNumberOfThreads) {
    const ProfileBytes wide = wideGamutProfile();
    const auto expected = expectedDisplay(wide, {}, randomDisplay(kWidth, 100));
    forTeams([&] {
        auto display = randomDisplay(kWidth, 100);
        ASSERT_EQ(transformDisplay(profilesRecord(wide, {}), display), 1);
        EXPECT_TRUE(display.sameBits(expected));
    });
}

/// A host image and its display buffer.
struct Shown {
    std::vector<std::uint8_t> pixels;
    PlaneRecord image;
    GuardedPlane<std::uint8_t> display{4 * kWidth, kHeight, 3, 1};

    Shown()
        : pixels(3 * kWidth * kHeight), image{psC3U8, pixels.data(), 3 * kWidth, kWidth, kHeight} {
        std::mt19937 random(4);
        std::generate(pixels.begin(), pixels.end(),
                      [&] { return static_cast<std::uint8_t>(random()); });
        display.fill([] { return 9; });
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

    int32_t show(const PSProfilesRecord* profiles, float scale = 1.0f) {
        return displayImageWithProfiles(profiles, &image, display.data(), display.step(), kWidth,
                                        kHeight, scale);
    }
    int32_t showPlainly(float scale = 1.0f) {
        return displayImage(&image, display.data(), display.step(), kWidth, kHeight, scale);
    }
};

TEST(DisplayImageWithProfiles, WithoutProfilesColoursAreNotConverted) {
    Shown plain, withNone, withNull;
    const PSProfilesRecord none{nullptr, 0, nullptr, 0};
    EXPECT_EQ(plain.showPlainly(), 1);
    EXPECT_EQ(withNone.show(&none), 1);
    EXPECT_EQ(withNull.show(nullptr), 1);
    EXPECT_TRUE(withNone.display.sameBits(plain.display));
    EXPECT_TRUE(withNull.display.sameBits(plain.display));
}

TEST(DisplayImageWithProfiles, ConvertsTheDisplayedColoursOnBothPathsAndAlphaIsOpaque) {
    const ProfileBytes wide = wideGamutProfile();
    const PSProfilesRecord profiles = profilesRecord(wide, {});
    for (const float scale : {1.0f, 0.5f}) {
        Shown plain, managed;
        ASSERT_EQ(plain.showPlainly(scale), 1);
        ASSERT_EQ(managed.show(&profiles, scale), 1);
        EXPECT_TRUE(managed.display.sameBits(expectedDisplay(wide, {}, plain.display)));
        EXPECT_TRUE(managed.display.intact());
        for (int x = 3; x < 4 * kWidth; x += 4) {
            EXPECT_EQ(managed.display.at(x, kHeight - 1), 255);
        }
    }
}

TEST(DisplayImageWithProfiles, FaultyProfileReturnsZeroAndShowsTheImageUnconverted) {
    for (const ProfileBytes& faulty : faultyProfiles()) {
        const PSProfilesRecord profiles = profilesRecord(faulty, {});
        Shown plain, managed;
        ASSERT_EQ(plain.showPlainly(), 1);
        EXPECT_EQ(managed.show(&profiles), 0);
        EXPECT_TRUE(managed.display.sameBits(plain.display));
    }
}

TEST(DisplayImageWithProfiles, DisplayFailureIsReturnedBeforeAnyProfileIsRead) {
    // Reading these profiles would crash.
    const PSProfilesRecord profiles{reinterpret_cast<const void*>(16), 1000,
                                    reinterpret_cast<const void*>(16), 1000};
    Shown grey;
    grey.image.format = psC1U8;
    EXPECT_EQ(grey.show(&profiles), -3);
    Shown failing;
    EXPECT_EQ(displayImageWithProfiles(&profiles, &failing.image, failing.display.data(), 16,
                                       std::numeric_limits<int32_t>::max(), 1, 2.0f),
              -1001);
}

TEST(DisplayImageWithProfiles, FailedAllocationOfRowBuffersIsAColourFailure) {
    const ProfileBytes wide = wideGamutProfile();
    const PSProfilesRecord profiles = profilesRecord(wide, {});
    Shown plain, managed;
    ASSERT_EQ(plain.showPlainly(), 1);
    const ThreadCount one(1);
    refusedSize = 3 * kWidth;
    const int32_t result = managed.show(&profiles);
    refusedSize = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(result, -500);
    EXPECT_TRUE(managed.display.sameBits(plain.display));
}

std::atomic<long> blocksOfTheColourLibrary{0};

void* allocateCounted(cmsContext, cmsUInt32Number size) {
    ++blocksOfTheColourLibrary;
    return std::malloc(size);
}
void freeCounted(cmsContext, void* block) {
    if (block != nullptr) {
        --blocksOfTheColourLibrary;
        std::free(block);
    }
}
void* reallocateCounted(cmsContext, void* block, cmsUInt32Number size) {
    if (block == nullptr) {
        ++blocksOfTheColourLibrary;
    }
    return std::realloc(block, size);
}

TEST(DisplayImageWithProfiles, EveryOutcomeReleasesProfilesAndTransform) {
    cmsPluginMemHandler counting{pluginOf(cmsPluginMemHandlerSig),
                                 allocateCounted,
                                 freeCounted,
                                 reallocateCounted,
                                 nullptr,
                                 nullptr,
                                 nullptr};
    const Plugin plugin(&counting);
    std::vector<ProfileBytes> all = faultyProfiles();
    all.push_back(wideGamutProfile());
    all.push_back(srgbProfile());
    all.emplace_back();
    const long before = blocksOfTheColourLibrary;
    for (const ProfileBytes& in : all) {
        for (const ProfileBytes& out : all) {
            const PSProfilesRecord profiles = profilesRecord(in, out);
            Shown shown;
            shown.show(&profiles);
            refusedSize = 3 * kWidth;
            shown.show(&profiles);
            refusedSize = std::numeric_limits<std::size_t>::max();
            EXPECT_EQ(blocksOfTheColourLibrary, before);
        }
    }
}

} // namespace
