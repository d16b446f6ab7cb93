#include "hosts/command/terminal/suggestion.h"

#include <algorithm>

namespace velorn {
namespace {

/// Longer words are not compared: the work grows with the square of the length.
constexpr std::size_t kLongestWord = 64;
/// Beginnings of names have at least this many characters.
constexpr std::size_t kShortestBeginning = 3;

std::string withoutDashes(const std::string& name) {
    return name.substr(std::min(name.find_first_not_of('-'), name.size()));
}

} // namespace

std::size_t editDistance(const std::string& a, const std::string& b) {
    const std::size_t width = b.size() + 1;
    std::vector<std::size_t> distances((a.size() + 1) * width);
    const auto at = [&](std::size_t i, std::size_t k) -> std::size_t& {
        return distances[i * width + k];
    };
    for (std::size_t i = 0; i <= a.size(); ++i) {
        at(i, 0) = i;
    }
    for (std::size_t k = 0; k <= b.size(); ++k) {
        at(0, k) = k;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        for (std::size_t k = 1; k <= b.size(); ++k) {
            const std::size_t replaced = at(i - 1, k - 1) + (a[i - 1] == b[k - 1] ? 0 : 1);
            at(i, k) = std::min({at(i - 1, k) + 1, at(i, k - 1) + 1, replaced});
            if (i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1]) {
                at(i, k) = std::min(at(i, k), at(i - 2, k - 2) + 1);
            }
        }
    }
    return distances.back();
}

std::string suggestion(const std::string& word, const std::vector<std::string>& names) {
    const std::string bare = withoutDashes(word);
    if (bare.empty() || bare.size() > kLongestWord) {
        return "";
    }
    const std::string* best = nullptr;
    std::size_t least = std::max<std::size_t>(bare.size() / 3, 1) + 1;
    for (const std::string& name : names) {
        const std::string candidate = withoutDashes(name);
        const bool isBeginning = bare.size() >= kShortestBeginning && candidate.starts_with(bare);
        const std::size_t distance = isBeginning ? 1 : editDistance(bare, candidate);
        // A word of one character resembles every other.
        if (distance < least && distance < candidate.size() && candidate.size() > 1) {
            least = distance;
            best = &name;
        }
    }
    return best == nullptr ? "" : "; did you mean " + *best + "?";
}

} // namespace velorn
