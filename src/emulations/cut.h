// Where a chunk of a plot file may be cut, and where the plot file ends. Which rule an emulation goes by is in its row of
// emulations/emulations.h.
//
// A piece ends where a command of the plot does, wherever the chunk holds such a place: then a stopped job has sent whole
// ones. vectorix goes by these rules, too: it tells before a print what the plug-in would leave unsent.
#pragma once

#include <cstddef>
#include <string_view>

namespace emulations {

/// A mark before which a chunk is cut, and how many of its characters still belong to the piece before the cut.
struct CutMark {
    std::string_view text;
    size_t kept = 0;
};

/// How the plot files of an emulation family are cut: before the pen goes down, unless the family says otherwise.
struct CutRule {
    CutMark mark = {";PD", 1};
    CutMark otherwise = {};      ///< looked for only where mark is absent; empty for none
    size_t terminatorBehind = 9; ///< the chunk's last terminator counts only at a position greater than this
    std::string_view end = {};   ///< what ends the file; empty: the terminator does
};

/// Bytes of the chunk up to its last command boundary: the last mark that lies wholly before the last terminator, at a
/// position greater than 9. 0 when there is none. Reads the chunk at most three times.
size_t findCut(std::string_view chunk, std::string_view terminator, const CutRule &rule) noexcept;

/// Bytes of the file's last chunk up to and with the last mark that ends a plot; 0 when there is none.
size_t findEnd(std::string_view tail, std::string_view terminator, const CutRule &rule) noexcept;

} // namespace emulations
