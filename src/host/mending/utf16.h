// Plots that an editor saved as UTF-16: each character in two bytes, mostly behind a mark that tells their order.
#pragma once

#include "host/files/plot_file.h"

#include <optional>

namespace host {

/// The same text in ASCII, called by the name of the file. None when not all of it is ASCII. The file begins with the mark
/// of UTF-16, or with a character of ASCII. Throws Failure.
std::optional<PlotFile> asciiOf(const PlotFile &text);

} // namespace host
