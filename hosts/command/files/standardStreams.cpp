#include "hosts/command/files/standardStreams.h"

#include "hosts/command/terminal/Failure.h"

#include <algorithm>

namespace velorn {

std::filesystem::path shownInput(const std::filesystem::path& path) {
    return isStandardStream(path) ? std::filesystem::path("standard input") : path;
}

std::filesystem::path shownOutput(const std::filesystem::path& path) {
    return isStandardStream(path) ? std::filesystem::path("standard output") : path;
}

void checkStandardInput(const std::vector<std::filesystem::path>& inputs) {
    if (std::ranges::count_if(inputs, isStandardStream) > 1) {
        throw UsageFailure("'-', the standard input, can be read only once");
    }
}

} // namespace velorn
