#include "restoration/boundary/guardedCall.h"

#include "restoration/failures/Failure.h"

#include <gtest/gtest.h>
#include <new>
#include <opencv2/core.hpp>
#include <system_error>

namespace restoration {
namespace {

template <class Thrown>
void expectStatus(const Thrown& thrown, VelornStatus status, const char* message) {
    EXPECT_EQ(guardedCall([&] { throw thrown; }), status);
    EXPECT_STREQ(lastMessage(), message);
}

TEST(GuardedCall, FailuresHaveTheirStatusAndMessage) {
    expectStatus(Failure(VELORN_STATUS_NO_KERNEL, "no edges"), VELORN_STATUS_NO_KERNEL, "no edges");
    expectStatus(Failure(VELORN_STATUS_CANCELLED, "cancelled"), VELORN_STATUS_CANCELLED,
                 "cancelled");
}

TEST(GuardedCall, MissingMemoryHasItsStatus) {
    expectStatus(std::bad_alloc(), VELORN_STATUS_OUT_OF_MEMORY, "out of memory");
    expectStatus(std::bad_array_new_length(), VELORN_STATUS_OUT_OF_MEMORY, "out of memory");
    expectStatus(cv::Exception(cv::Error::StsNoMem, "no bytes", "", "", 0),
                 VELORN_STATUS_OUT_OF_MEMORY, "out of memory");
}

TEST(GuardedCall, OtherExceptionsAreDefects) {
    expectStatus(std::logic_error("wrong side"), VELORN_STATUS_INTERNAL, "wrong side");
    expectStatus("text of the core", VELORN_STATUS_INTERNAL, "text of the core");
    expectStatus(102, VELORN_STATUS_INTERNAL, "unknown failure");
}

TEST(GuardedCall, SuccessClearsTheMessage) {
    storeMessage("of an earlier call");
    EXPECT_EQ(guardedCall([] { EXPECT_STREQ(lastMessage(), ""); }), VELORN_STATUS_OK);
    EXPECT_EQ(guardedCall([] { storeMessage("of a call from the host's callback"); }),
              VELORN_STATUS_OK);
    EXPECT_STREQ(lastMessage(), "");
}

} // namespace
} // namespace restoration
