#include "velimproclib/frame/CallFrame.h"

#include "velimproclib/primitives/base/failures.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vel {

namespace {

constexpr std::size_t kErrorTextSize = 4096;
std::array<char, kErrorTextSize> g_errorText{};
BusyByte g_busyByte;

constexpr int32_t statusOf(int failure) noexcept {
    return failure - 1000;
}
static_assert(statusOf(kRowGap) == VELORN_FAILURE);
static_assert(statusOf(kColumnGap) == VELORN_TILE_GAP);
static_assert(statusOf(kNoPixels) == VELORN_NO_PIXELS);
static_assert(statusOf(kGuardOverwritten) == VELORN_GUARD_DAMAGED);
static_assert(statusOf(kNoSmootherMemory) == VELORN_SMOOTHER_MEMORY);

} // namespace

BusyByte& busyByte() noexcept {
    return g_busyByte;
}

const char* errorText() noexcept {
    return g_errorText.data();
}

void clearErrorText() noexcept {
    g_errorText[0] = '\0';
}

void storeErrorText(const char* text) noexcept {
    const std::size_t length = std::min(std::strlen(text), kErrorTextSize - 2);
    std::copy_n(text, length, g_errorText.begin());
    g_errorText[length + 1] = '\0';
}

int32_t statusOfCurrentFailure() noexcept {
    try {
        throw;
    } catch (const char* text) {
        storeErrorText(text);
        return VELORN_TEXT_FAILURE;
    } catch (int failure) {
        return statusOf(failure);
    } catch (...) {
        return VELORN_FAILURE;
    }
}

} // namespace vel
