#include "hosts/command/batch/picturesIn.h"

#include "hosts/command/files/fileFailures.h"
#include "hosts/command/formats/Format.h"

#include <algorithm>
#include <string>

namespace velorn {
namespace {

namespace fs = std::filesystem;

bool isPicture(const fs::directory_entry& entry) {
    std::error_code ignored;
    return !entry.path().filename().string().starts_with('.') &&
           formatOfPath(entry.path()) != nullptr && entry.is_regular_file(ignored);
}

} // namespace

std::vector<fs::path> picturesIn(const fs::path& folder) {
    std::error_code error;
    std::vector<fs::path> pictures;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (isPicture(*entry)) {
            pictures.push_back(entry->path());
        }
    }
    if (error) {
        throw cannotRead(folder, error.message());
    }
    if (pictures.empty()) {
        throw cannotRead(folder, "the folder has no pictures");
    }
    std::ranges::sort(pictures);
    return pictures;
}

} // namespace velorn
