// "Did you mean …?", for mistyped commands, options, profiles and their keys. The limits are narrow because a wrong guess
// misleads more than none.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The known word nearest to the typed one; empty when none is near. Near is a word that begins with the typed one, or that
/// comes of putting in, leaving out, replacing or swapping neighbours of a third of its letters at most, or of one.
/// Words of less than three letters or more than 64 have none near.
std::string nearMiss(std::string_view typed, const std::vector<std::string> &known);

/// "did you mean house? ", with a blank behind it; empty when no word is near.
std::string didYouMean(std::string_view typed, const std::vector<std::string> &known);

} // namespace host
