#pragma once

#include <string>
#include <vector>

namespace velorn {

/// The number of characters to insert, remove, replace or exchange with their neighbour that turns
/// one word into the other (optimal string alignment).
std::size_t editDistance(const std::string& a, const std::string& b);

/// "; did you mean NAME?" for the name that `word` resembles most: that it begins, or that a third
/// of its characters at most turn it into. Empty when there is none.
std::string suggestion(const std::string& word, const std::vector<std::string>& names);

} // namespace velorn
