// What was probably meant by a word that is not known.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The known word that the typed one is most like; empty when none is near: more than a third of its letters, and more than
/// one, would have to be put in, left out, replaced, or swapped with their neighbour. A word that begins with the typed one
/// is near. Nothing is near to one or two letters.
std::string nearMiss(std::string_view typed, const std::vector<std::string> &known);

/// "did you mean house? ", with a blank behind it; empty when no word is near.
std::string didYouMean(std::string_view typed, const std::vector<std::string> &known);

} // namespace host
