// Numbers as plotter languages write them: decimal, without exponent, and no longer than a plotter has use for.
#pragma once

#include <string>

namespace language {

/// Appends the number with fifteen digits, less the zeros that say nothing: what computing has added to a round number goes.
void appendNumber(std::string &text, double value);

} // namespace language
