#include "velimproclib/frame/CallFrame.h"

#include "velimproclib/images/Image.h"
#include "velimproclib/primitives/base/failures.h"
#include "velimproclib/primitives/base/Memory.h"

#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <utility>

namespace {

using vel::errorText;
using vel::runGuarded;
using vel::runGuardedCall;

TEST(CallFrame, SuccessfulBodyReturnsItsStatusAndAnEmptyText) {
    EXPECT_EQ(runGuarded([] { return 0; }), 0);
    EXPECT_EQ(runGuarded([] { return 1; }), 1);
    EXPECT_STREQ(errorText(), "");
    EXPECT_FALSE(vel::busyByte().isSet());
}

TEST(CallFrame, TextFailureReturnsItsStatusAndStoresTheText) {
    const int32_t status = runGuarded([]() -> int32_t { throw "CDeconvHL::setup - m_w != m_h"; });
    EXPECT_EQ(status, VELORN_TEXT_FAILURE);
    EXPECT_EQ(std::string(errorText()).substr(0, 29), "CDeconvHL::setup - m_w != m_h");
    EXPECT_FALSE(vel::busyByte().isSet());
}

TEST(CallFrame, IntegerFailureReturnsTheIntegerMinusOneThousand) {
    EXPECT_EQ(runGuarded([]() -> int32_t { throw vel::kRowGap; }), -1000);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw vel::kColumnGap; }), -899);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw vel::kNoPixels; }), -898);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw vel::kGuardOverwritten; }), -897);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw vel::kNoSmootherMemory; }), -880);
    EXPECT_STREQ(errorText(), "");
}

TEST(CallFrame, AnyOtherFailureReturnsTheGeneralStatus) {
    EXPECT_EQ(runGuarded([]() -> int32_t { throw std::bad_alloc(); }), VELORN_FAILURE);
    EXPECT_EQ(runGuarded([]() -> int32_t { throw 1.5; }), VELORN_FAILURE);
    EXPECT_FALSE(vel::busyByte().isSet());
}

TEST(CallFrame, BusyLibraryRefusesCallsWithStatusOneAndClearsTheText) {
    bool innerRan = false;
    const int32_t status = runGuarded([&]() -> int32_t {
        vel::storeErrorText("earlier text");
        EXPECT_EQ(runGuarded([&] {
                      innerRan = true;
                      return 0;
                  }),
                  VELORN_OK);
        EXPECT_EQ(errorText()[0], '\0');
        EXPECT_TRUE(vel::busyByte().isSet());
        return 0;
    });
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(innerRan);
}

/// A call that notes whether the busy byte is set when its objects are destroyed.
struct NotingCall {
    int32_t status;
    bool* busyAtTheEnd;

    NotingCall(int32_t callStatus, bool* busy) : status(callStatus), busyAtTheEnd(busy) {}
    NotingCall(const NotingCall&) = delete;
    NotingCall& operator=(const NotingCall&) = delete;
    ~NotingCall() { *busyAtTheEnd = vel::busyByte().isSet(); }

    int32_t run() const {
        if (status < 0) {
            throw status + 1000;
        }
        return status;
    }
};

TEST(CallFrame, OnlyACancelledCallClearsTheBusyByteBeforeItDestroysItsObjects) {
    const auto busyAtTheEndOf = [](int32_t status) {
        bool busy = false;
        EXPECT_EQ(runGuardedCall([&] { return NotingCall(status, &busy); }), status);
        EXPECT_FALSE(vel::busyByte().isSet());
        return busy;
    };
    EXPECT_FALSE(busyAtTheEndOf(VELORN_CANCELLED));
    EXPECT_TRUE(busyAtTheEndOf(VELORN_OK));
    EXPECT_TRUE(busyAtTheEndOf(VELORN_TILE_GAP));
}

/// A call with a scratch image whose guard row is overwritten.
struct DamagingCall {
    int32_t status;
    std::uint8_t** block; ///< receives the memory of the image, which the image then keeps
    vel::GIMG<float> image{8, 2};

    DamagingCall(int32_t callStatus, std::uint8_t** memory) : status(callStatus), block(memory) {}

    int32_t run() {
        *block = image.m_base;
        std::memset(image.m_base + 2 * image.m_step, 0, 4);
        if (status < 0) {
            throw std::bad_alloc();
        }
        return status;
    }
};

TEST(CallFrame, GuardDamagedDuringTheCallIsItsStatusUnlessTheCallFailedBefore) {
    for (const auto& [ownStatus, status] : {std::pair{VELORN_OK, VELORN_GUARD_DAMAGED},
                                            {VELORN_CANCELLED, VELORN_GUARD_DAMAGED},
                                            {VELORN_FAILURE, VELORN_FAILURE}}) {
        std::uint8_t* block = nullptr;
        EXPECT_EQ(runGuardedCall([&] { return DamagingCall(ownStatus, &block); }), status);
        EXPECT_FALSE(vel::busyByte().isSet());
        vel::alignedFree(block);
    }
}

int32_t failWith(const std::string& text) {
    return runGuarded([&]() -> int32_t { throw text.c_str(); });
}

TEST(CallFrame, ShorterTextKeepsOneStaleCharacterBeforeItsTerminator) {
    EXPECT_EQ(failWith("abcdefgh"), VELORN_TEXT_FAILURE);
    EXPECT_EQ(failWith("xyz"), VELORN_TEXT_FAILURE);
    EXPECT_STREQ(errorText(), "xyzd");
    EXPECT_EQ(std::string(errorText() + 5, 3), "fgh");
}

TEST(CallFrame, TextsOfMoreThan4094CharactersAreCut) {
    for (const std::size_t length : {4095u, 5000u}) {
        EXPECT_EQ(failWith(std::string(4094, 'a')), VELORN_TEXT_FAILURE);
        const char stale = errorText()[4094];
        EXPECT_EQ(failWith(std::string(length, 'b')), VELORN_TEXT_FAILURE);
        EXPECT_EQ(std::string(errorText(), 4094), std::string(4094, 'b'));
        EXPECT_EQ(errorText()[4094], stale);
        EXPECT_EQ(errorText()[4095], '\0');
    }
}

} // namespace
