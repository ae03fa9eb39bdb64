// Where prints ended before their end, so that they can be taken up again. A file for each plot below the user's state
// folder, named by a hash of the bytes that were to be sent: so a plot that was changed since, or is converted otherwise,
// has none, and its name does not matter.
#pragma once

#include "host/files/plot_file.h"

#include <cstdint>
#include <optional>
#include <string>

namespace host {

/// Of the plot's bytes: 32 hexadecimal digits.
std::string hashOf(const PlotFile &plot);

/// How far a print came.
struct LastPlace {
    int64_t offset = 0; ///< bytes of the plot that were sent
    int64_t bytes = 0;  ///< of the plot
    std::string plot;   ///< its name then
    std::string when;   ///< local time: "2026-05-07 16:05"
};

/// None when the last print of this plot came to its end, or there was none. Throws Failure for a file that is damaged.
std::optional<LastPlace> lastPlaceOf(const std::string &hash);

/// Keeps it, and of older ones the last hundred. False when that cannot be done: a print is not failed for it.
bool keepLastPlace(const std::string &hash, const LastPlace &place);
void forgetLastPlace(const std::string &hash);

} // namespace host
