#include "velimproclib/images/Image.h"

#include "tests/support/MallocFails.h"
#include "tests/support/NullWhenOutOfMemory.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/primitives/base/Memory.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>

namespace {

using namespace vel;

/// The integer that `action` throws, 0 if it throws nothing.
template <class Action>
int thrownBy(Action&& action) {
    try {
        action();
    } catch (int failure) {
        return failure;
    }
    return 0;
}

/// An image whose memory the test releases if the destructor does not.
template <class Image>
struct Breakable {
    std::optional<Image> image;
    std::uint8_t* base;

    Breakable(std::int32_t width, std::int32_t height) {
        image.emplace(width, height);
        base = image->m_base;
    }
    /// Destroys the image and returns the integer that the destructor throws, 0 for none.
    int destroy() {
        const int failure = thrownBy([this] { image->~Image(); });
        // The optional destroys its value once more, therefore it needs a new one.
        new (&*image) Image(1, 1);
        if (failure != 0) {
            alignedFree(base);
        }
        return failure;
    }
};

template <class Image>
class ImageFamily : public testing::Test {};

using Members = testing::Types<IMG<float, 1>, GIMG<float>, IMG<float, 3>, IMG3<float>,
                               IMG<unsigned char, 1>, GIMG<unsigned char>, IMG<unsigned char, 3>,
                               IMG3<unsigned char>, IMG<unsigned short, 1>, GIMG<unsigned short>,
                               IMG<short, 1>, GIMG<short>, IMG<short, 3>, IMG3<short>>;
TYPED_TEST_SUITE(ImageFamily, Members);

template <class Element>
std::uint32_t guardPattern() {
    if (std::is_same_v<Element, float>) {
        return 0x6D676EFF;
    }
    if (std::is_same_v<Element, unsigned char>) {
        return 0x6D;
    }
    return std::is_same_v<Element, unsigned short> ? 0x6D6F : 0x6D6E;
}

TYPED_TEST(ImageFamily, NewImageHasItsWholeSizeAsRegionAndStatusOne) {
    TypeParam image(37, 11);
    EXPECT_EQ(image.m_width, 37);
    EXPECT_EQ(image.m_height, 11);
    EXPECT_EQ(image.m_roiW, 37);
    EXPECT_EQ(image.m_roiH, 11);
    EXPECT_EQ(image.m_status, 1);
    EXPECT_EQ(image.m_data, image.m_base);
    EXPECT_TRUE(image.m_aligned);
    EXPECT_FALSE(image.m_wrapped);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image.m_base) % 32, 0u);
    EXPECT_EQ(image.m_step % 32, 0);
    EXPECT_GE(image.m_step, 37 * TypeParam::kPixelBytes);
    EXPECT_LT(image.m_step, 37 * TypeParam::kPixelBytes + 32);
}

TYPED_TEST(ImageFamily, GuardRowHoldsThePatternOncePerPixelOfTheWidth) {
    using Element = typename TypeParam::Element;
    TypeParam image(37, 3);
    for (std::size_t x = 0; x < 37; ++x) {
        const std::uint8_t* at = image.m_base + 3 * image.m_step + x * sizeof(Element);
        std::uint32_t found = 0;
        std::memcpy(&found, at, sizeof(Element));
        EXPECT_EQ(found, guardPattern<Element>());
    }
}

TYPED_TEST(ImageFamily, AllRowsMayBeWritten) {
    EXPECT_EQ(thrownBy([] {
                  TypeParam image(33, 5);
                  for (int y = 0; y < 5; ++y) {
                      std::memset(image.m_base + y * image.m_step, 0,
                                  static_cast<std::size_t>(image.m_step));
                  }
              }),
              0);
}

TYPED_TEST(ImageFamily, AnyOverwrittenGuardElementMakesTheDestructorFail) {
    for (const int x : {0, 18, 36}) {
        Breakable<TypeParam> broken(37, 3);
        std::uint8_t* guard = broken.base + 3 * broken.image->m_step;
        guard[x * static_cast<int>(sizeof(typename TypeParam::Element))] ^= 1;
        EXPECT_EQ(broken.destroy(), kGuardOverwritten);
    }
}

TYPED_TEST(ImageFamily, CannotBeCopiedAndItsDestructorMayThrow) {
    EXPECT_FALSE(std::is_copy_constructible_v<TypeParam>);
    EXPECT_FALSE(std::is_copy_assignable_v<TypeParam>);
    EXPECT_FALSE(std::is_nothrow_destructible_v<TypeParam>);
    EXPECT_TRUE(std::has_virtual_destructor_v<TypeParam>);
}

TYPED_TEST(ImageFamily, PixelSizeIsChannelsTimesElement) {
    EXPECT_EQ(TypeParam::kPixelBytes,
              TypeParam::kChannels * static_cast<int>(sizeof(typename TypeParam::Element)));
}

TEST(Image, DerivedTypesDifferOnlyInTheirRunTimeType) {
    EXPECT_EQ(sizeof(GIMG<float>), sizeof(IMG<float, 1>));
    EXPECT_EQ(sizeof(IMG3<short>), sizeof(IMG<short, 3>));
    GIMG<float> grey(2, 2);
    const IMG<float, 1>& base = grey;
    EXPECT_EQ(typeid(base), typeid(GIMG<float>));
}

TEST(Image, GuardCoversOnlyTheFirstThirdOfAThreeChannelSpareRow) {
    EXPECT_EQ(thrownBy([] {
                  IMG<float, 3> image(16, 4);
                  std::memset(image.m_base + 4 * image.m_step + 16 * 4, 0, 2 * 16 * 4);
              }),
              0);
    Breakable<IMG<float, 3>> broken(16, 4);
    broken.base[4 * broken.image->m_step + 16 * 4 - 1] ^= 1;
    EXPECT_EQ(broken.destroy(), kGuardOverwritten);
}

TEST(Image, ByteAfterTheLastPixelIsDetectedIfTheRowHasNoPadding) {
    Breakable<GIMG<unsigned char>> full(64, 7);
    full.base[7 * 64] = 0;
    EXPECT_EQ(full.destroy(), kGuardOverwritten);
}

TEST(Image, ByteAfterTheLastPixelIsNotDetectedInThePadding) {
    EXPECT_EQ(thrownBy([] {
                  GIMG<unsigned char> padded(60, 7);
                  padded.row(6)[60] = 0;
              }),
              0);
}

template <class Image>
void expectHeapFallback(std::int32_t step) {
    std::optional<Image> image;
    {
        const vel::test::MallocFails first(1);
        image.emplace(8, 3);
    }
    EXPECT_FALSE(image->m_aligned);
    EXPECT_FALSE(image->m_wrapped);
    ASSERT_EQ(image->m_step, step);
    EXPECT_EQ(image->m_data, image->m_base);
    for (int y = 0; y < 3; ++y) {
        std::memset(image->m_base + y * step, 0, static_cast<std::size_t>(step));
    }
    EXPECT_EQ(thrownBy([&] { image->~Image(); }), 0);
    new (&*image) Image(1, 1);
}

TEST(Image, HeapFallbackHasRowsOfTheHeapStride) {
    expectHeapFallback<GIMG<float>>(48);
    expectHeapFallback<IMG3<float>>(112);
    expectHeapFallback<GIMG<unsigned char>>(48);
    expectHeapFallback<IMG3<short>>(80);
}

TEST(Image, HeapFallbackChecksItsGuardRow) {
    std::optional<GIMG<float>> image;
    {
        const vel::test::MallocFails first(1);
        image.emplace(8, 3);
    }
    std::uint8_t* const base = image->m_base;
    base[3 * 48 + 31] ^= 1;
    const int failure = thrownBy([&] { image->~GIMG(); });
    new (&*image) GIMG<float>(1, 1);
    ASSERT_EQ(failure, kGuardOverwritten);
    std::free(base);
}

TEST(Image, ZeroWidthFallsBackToTheHeapWithSixteenByteRowsAndNoGuard) {
    EXPECT_EQ(thrownBy([] {
                  GIMG<float> image(0, 10);
                  EXPECT_NE(image.m_base, nullptr);
                  EXPECT_EQ(image.m_step, 16);
                  EXPECT_FALSE(image.m_aligned);
                  EXPECT_FALSE(image.m_wrapped);
                  // The block has eleven rows, none of which is checked.
                  std::memset(image.m_base, 0x33, 11 * 16);
              }),
              0);
}

TEST(Image, HeapStrideAddsSixteenBytesToAMultipleOfSixteen) {
    EXPECT_EQ(heapStride(0), 16);
    EXPECT_EQ(heapStride(32), 48);
    EXPECT_EQ(heapStride(128), 144);
    EXPECT_EQ(heapStride(33), 48);
    EXPECT_EQ(heapStride(std::numeric_limits<std::int32_t>::max()), 2147483648);
}

TEST(Image, NegativeWidthGivesAnImageWithoutPixels) {
    EXPECT_EQ(thrownBy([] {
                  IMG<float, 3> image(std::numeric_limits<std::int32_t>::min(), 2);
                  EXPECT_EQ(image.m_step, 16);
                  EXPECT_FALSE(image.m_aligned);
              }),
              0);
}

TEST(Image, ZeroHeightGivesAnImageOfTheGuardRowOnly) {
    GIMG<short> image(5, 0);
    EXPECT_TRUE(image.m_aligned);
    EXPECT_EQ(image.m_step, 32);
}

TEST(Image, FailureOfBothAllocatorsIsAFailure) {
    EXPECT_EQ(thrownBy([] { GIMG<float> image(500'000'000, 2'000'000'000); }), kNoPixels);
    EXPECT_EQ(thrownBy([] { GIMG<unsigned char> image(2'147'483'616, 2'147'483'646); }), kNoPixels);
}

TEST(Image, SizesBeyondThirtyTwoBitsAreRefused) {
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(thrownBy([] { GIMG<float> image(kMax, 1); }), kNoPixels);
    EXPECT_EQ(thrownBy([] { GIMG<float> image(1 << 30, 1); }), kNoPixels);
    EXPECT_EQ(thrownBy([] { IMG3<float> image(357'913'942, 1); }), kNoPixels);
    EXPECT_EQ(thrownBy([] { GIMG<unsigned char> image(kMax, 1); }), kNoPixels);
    EXPECT_EQ(thrownBy([] { GIMG<unsigned char> image(1, kMax); }), kNoPixels);
}

TEST(Image, NegativeHeightIsRefused) {
    EXPECT_EQ(thrownBy([] { GIMG<float> image(10, -1); }), kNoPixels);
    EXPECT_EQ(thrownBy([] { GIMG<float> image(0, -5); }), kNoPixels);
}

TEST(Image, WrappedImageUsesTheGivenMemoryAndStep) {
    float pixels[12] = {};
    EXPECT_EQ(thrownBy([&] {
                  GIMG<float> image(3, 2, pixels, 20);
                  EXPECT_EQ(reinterpret_cast<float*>(image.m_base), pixels);
                  EXPECT_EQ(image.pixels(), pixels);
                  EXPECT_EQ(image.m_step, 20);
                  EXPECT_TRUE(image.m_wrapped);
                  EXPECT_FALSE(image.m_aligned);
                  EXPECT_EQ(image.m_status, 1);
                  image.row(1)[2] = 4.0f;
                  // The guard row is neither written nor checked.
                  EXPECT_EQ(pixels[10], 0.0f);
              }),
              0);
    EXPECT_EQ(pixels[7], 4.0f);
}

TEST(Image, NullDataMeansAllocate) {
    GIMG<float> image(8, 2, nullptr, 4096);
    EXPECT_FALSE(image.m_wrapped);
    EXPECT_EQ(image.m_step, 32);
}

TEST(Image, ResetUndoesAShift) {
    IMG<short, 3> image(20, 9);
    image.shiftOrigin(4, 4);
    EXPECT_EQ(image.m_data, image.m_base + 4 * image.m_step + 4 * 6);
    EXPECT_EQ(image.m_roiW, 16);
    EXPECT_EQ(image.m_roiH, 5);
    image.resetRoi();
    EXPECT_EQ(image.m_data, image.m_base);
    EXPECT_EQ(image.m_roiW, 20);
    EXPECT_EQ(image.m_roiH, 9);
}

TEST(Image, ShiftsAccumulateMayBeNegativeAndKeepTheBottomRightCorner) {
    GIMG<unsigned char> image(20, 9);
    image.shiftOrigin(4, 4);
    image.shiftOrigin(-1, -3);
    EXPECT_EQ(image.m_data, image.m_base + image.m_step + 3);
    EXPECT_EQ(image.m_roiW, 17);
    EXPECT_EQ(image.m_roiH, 8);
}

TEST(Image, MovingTheRegionDoesNotMoveTheGuard) {
    EXPECT_EQ(thrownBy([] {
                  GIMG<float> image(20, 9);
                  image.shiftOrigin(5, 2);
              }),
              0);
}

TEST(Image, DestructionThroughTheBaseChecksTheGuard) {
    auto* image = new GIMG<short>(16, 2);
    std::uint8_t* base = image->m_base;
    base[2 * image->m_step] = 0;
    IMG<short, 1>* asBase = image;
    EXPECT_EQ(thrownBy([&] { delete asBase; }), kGuardOverwritten);
    alignedFree(base);
}

/// Builds and destroys an image with a damaged guard while an exception unwinds the stack.
struct ImageInACleanup {
    int* failure;

    ~ImageInACleanup() {
        Breakable<GIMG<float>> broken(8, 2);
        broken.base[2 * broken.image->m_step] = 0;
        *failure = broken.destroy();
    }
};

TEST(Image, DamagedGuardFailsAlsoInACleanupDuringAnotherFailure) {
    int failure = 0;
    EXPECT_THROW(
        {
            const ImageInACleanup cleanup{&failure};
            throw std::runtime_error("first");
        },
        std::runtime_error);
    EXPECT_EQ(failure, kGuardOverwritten);
}

TEST(Image, DamagedGuardDuringAnotherFailureLeavesThatFailureInFlight) {
    std::uint8_t* base = nullptr;
    EXPECT_THROW(
        {
            GIMG<float> image(8, 2);
            base = image.m_base;
            base[2 * image.m_step] = 0;
            throw std::runtime_error("first");
        },
        std::runtime_error);
    alignedFree(base);
}

} // namespace
