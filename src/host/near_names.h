// Names that somebody may have meant.
#pragma once

#include <string>
#include <vector>

namespace host {

/// The names that are a slip of the keyboard or two away from the word; the nearest first, three at most.
std::vector<std::string> nearNames(const std::string &word, const std::vector<std::string> &names);

/// "did you mean house or horse? ", with a blank behind it; empty when no name is near.
std::string didYouMean(const std::string &word, const std::vector<std::string> &names);

} // namespace host
