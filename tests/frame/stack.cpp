// Stacks as other compilers provide them on 32-bit x86: small, and aligned to 4 bytes only. Vector
// code that relies on more alignment faults.
#if defined(__i386__)

#include "tests/frame/LoadedLibrary.h"
#include "tests/support/IccProfiles.h"

#include <array>
#include <bit>
#include <vector>

/// Calls `function` (cdecl) with `count` words as arguments and returns its result. The arguments
/// are pushed `offset` bytes below a 16-byte boundary.
extern "C" int32_t callWithWords(void* function, const std::uint32_t* words, std::uint32_t count,
                                 std::uint32_t offset) asm("callWithWords");

asm(R"(
    .text
    .globl callWithWords
callWithWords:
    pushl %ebp
    movl  %esp, %ebp
    pushl %esi
    movl  12(%ebp), %esi
    movl  16(%ebp), %ecx
    andl  $-16, %esp
    subl  20(%ebp), %esp
1:  testl %ecx, %ecx
    jz    2f
    decl  %ecx
    pushl (%esi,%ecx,4)
    jmp   1b
2:  call  *8(%ebp)
    leal  -4(%ebp), %esp
    popl  %esi
    popl  %ebp
    ret
)");

namespace {

using vel::test::LoadedLibrary;

template <class T>
std::uint32_t wordOf(T value) {
    return std::bit_cast<std::uint32_t>(value);
}

template <class... Arguments>
int32_t callOffBoundary(std::uint32_t offset, auto* function, Arguments... arguments) {
    const std::array<std::uint32_t, sizeof...(Arguments)> words{wordOf(arguments)...};
    return callWithWords(reinterpret_cast<void*>(function), words.data(), words.size(), offset);
}

class Stack : public ::testing::Test {
protected:
    static constexpr int kSide = 300;

    int32_t deblur(std::uint32_t offset, ProgressCallback callback = nullptr,
                   void* userData = nullptr) {
        ProgressRecord progress{100, 100, callback, userData, 0};
        ImageRecord image{psC3U8, source.data(), 3 * kSide, target.data(), 3 * kSide, kSide, kSide};
        KernelRecord kernel{0, 0, 0, 0, values.data()};
        EXPECT_EQ(callOffBoundary(offset, createKernel, 1, 2.0f, 0.0f, &kernel), VELORN_OK);
        return callOffBoundary(offset, deblurSharpen, &progress, &image, &kernel, 1, 20000.0f, 0.5f,
                               0.5f, 0.85f, 0.5f, 1.5f, 0.005f, 0.3f, 0.2f);
    }
    int32_t estimate(std::uint32_t offset) {
        ProgressRecord progress{100, 100, nullptr, nullptr, 0};
        PlaneRecord image{psC3U8, source.data(), 3 * kSide, 96, 96};
        KernelRecord kernel{7, 7, 0, 0, values.data()};
        return callOffBoundary(offset, blurEstimate, &progress, &image, &kernel, 0.5f);
    }
    int32_t show(std::uint32_t offset, float scale) {
        PlaneRecord image{psC3U8, source.data(), 3 * kSide, kSide, kSide};
        PSProfilesRecord profiles{profile.data(), static_cast<int32_t>(profile.size()), nullptr, 0};
        EXPECT_EQ(callOffBoundary(offset, showManaged, &profiles, &image, shown.data(), 400, 100,
                                  100, scale),
                  VELORN_OK);
        return callOffBoundary(offset, showImage, &image, shown.data(), 400, 100, 100, scale);
    }

    LoadedLibrary library;
    decltype(ornDeblurSharpen)* deblurSharpen = VELORN_FIND(library, ornDeblurSharpen);
    decltype(ornBlurEstimate)* blurEstimate = VELORN_FIND(library, ornBlurEstimate);
    decltype(ornCreateKernel)* createKernel = VELORN_FIND(library, ornCreateKernel);
    decltype(PSImage2QImage)* showImage = VELORN_FIND(library, PSImage2QImage);
    decltype(PSImageICC2QImage)* showManaged = VELORN_FIND(library, PSImageICC2QImage);
    decltype(psC1U8toU15)* toU15 = VELORN_FIND(library, psC1U8toU15);
    decltype(psC1U15toU8)* toU8 = VELORN_FIND(library, psC1U15toU8);

    std::vector<std::uint8_t> source = [] {
        std::vector<std::uint8_t> samples(3 * kSide * kSide);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<std::uint8_t>(i / 37 % 2 == 0 ? 60 : 190);
        }
        return samples;
    }();
    std::vector<std::uint8_t> target = std::vector<std::uint8_t>(source.size());
    std::vector<std::uint8_t> shown = std::vector<std::uint8_t>(400 * 100);
    std::vector<float> values = std::vector<float>(64 * 64);
    vel::test::ProfileBytes profile = vel::test::wideGamutProfile();
};

class StackOffBoundary : public Stack, public ::testing::WithParamInterface<std::uint32_t> {};

TEST_P(StackOffBoundary, ExportsWorkAtAnyAlignment) {
    const std::uint32_t offset = GetParam();
    EXPECT_EQ(deblur(offset), VELORN_OK);
    EXPECT_EQ(estimate(offset), VELORN_OK);
    EXPECT_EQ(show(offset, 1.0f), VELORN_OK);
    EXPECT_EQ(show(offset, 0.3f), VELORN_OK);
    std::vector<std::uint16_t> wide(300 * 300);
    EXPECT_EQ(callOffBoundary(offset, toU15, source.data(), 900, 300, 300, wide.data(), 600), 1);
    EXPECT_EQ(callOffBoundary(offset, toU8, wide.data(), 600, 300, 300, source.data(), 900), 1);
}

/// The arguments of a call that the callback makes.
struct Reentry {
    decltype(PSImage2QImage)* showImage;
    PlaneRecord image;
    std::vector<std::uint8_t> shown;
    std::uint32_t offset;
    int calls = 0;
};

int32_t showWhileBusy(int32_t, int32_t, void* userData) {
    auto& reentry = *static_cast<Reentry*>(userData);
    EXPECT_EQ(callOffBoundary(reentry.offset, reentry.showImage, &reentry.image,
                              reentry.shown.data(), 400, 100, 100, 0.3f),
              VELORN_OK);
    ++reentry.calls;
    return 1;
}

TEST_P(StackOffBoundary, CallbacksMayCallTheDisplayExportsAtAnyAlignment) {
    Reentry reentry{showImage,
                    {psC3U8, source.data(), 3 * kSide, kSide, kSide},
                    std::vector<std::uint8_t>(400 * 100),
                    GetParam()};
    EXPECT_EQ(deblur(GetParam(), showWhileBusy, &reentry), VELORN_OK);
    EXPECT_GT(reentry.calls, 0);
}

INSTANTIATE_TEST_SUITE_P(Offsets, StackOffBoundary, ::testing::Values(0u, 4u, 8u, 12u));

#ifdef _WIN32

class SmallStack : public Stack {
protected:
    static DWORD WINAPI callAll(void* self) {
        auto& test = *static_cast<SmallStack*>(self);
        EXPECT_EQ(test.deblur(0), VELORN_OK);
        EXPECT_EQ(test.estimate(0), VELORN_OK);
        EXPECT_EQ(test.show(0, 0.3f), VELORN_OK);
        return kAnswer;
    }
    static constexpr DWORD kAnswer = 7;
};

TEST_F(SmallStack, CallsNeedAQuarterOfAUsualStack) {
    constexpr SIZE_T kReserve = 256 * 1024;
    const HANDLE thread =
        CreateThread(nullptr, kReserve, &callAll, this, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    DWORD answer = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &answer));
    EXPECT_EQ(answer, kAnswer);
    CloseHandle(thread);
}

#endif

} // namespace

#endif
