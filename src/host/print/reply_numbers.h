// The numbers in a plotter's reply as people read them, to hold beside what the plug-in made of it.
#pragma once

#include <string_view>
#include <vector>

namespace host {

/// Of the first line that says anything, with signs and decimals; behind a '%', those behind the last one.
std::vector<double> numbersIn(std::string_view reply);

} // namespace host
