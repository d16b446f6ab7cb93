#pragma once

#include "velorn.h"

#include <gtest/gtest.h>

/// Expects that `call` fails with this status and this message.
#define EXPECT_VELORN_FAILURE(call, expectedStatus, expectedMessage)                               \
    do {                                                                                           \
        EXPECT_EQ(call, expectedStatus);                                                           \
        EXPECT_STREQ(velornLastMessage(), expectedMessage);                                        \
    } while (false)

#define EXPECT_VELORN_INVALID(call, expectedMessage)                                               \
    EXPECT_VELORN_FAILURE(call, VELORN_STATUS_INVALID_ARGUMENT, expectedMessage)
