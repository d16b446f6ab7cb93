#include "restoration/boundary/lastMessage.h"

#include <algorithm>
#include <array>

namespace restoration {
namespace {

constinit thread_local std::array<char, 512> t_message{};

} // namespace

const char* lastMessage() noexcept {
    return t_message.data();
}

void clearMessage() noexcept {
    t_message[0] = '\0';
}

void storeMessage(std::string_view message) noexcept {
    const std::size_t length = std::min(message.size(), t_message.size() - 1);
    std::copy_n(message.begin(), length, t_message.begin());
    t_message[length] = '\0';
}

} // namespace restoration
