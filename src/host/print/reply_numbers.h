// The numbers in a plotter's reply as people read them. The plug-in reads replies without signs and decimal points; the
// command needs the true numbers to show the corners, and to say where the record differs from what the plotter said.
#pragma once

#include <string_view>
#include <vector>

namespace host {

/// The numbers in the reply's first line that is not empty, with signs and decimals. In a line with a '%' only what follows
/// its last one counts.
std::vector<double> numbersIn(std::string_view reply);

} // namespace host
