// Strokes as a plot file, HP-GL or DM/PL. What is written here cuts well: the sender looks at a chunk of the file at a time,
// and sends it up to the last place where an instruction of the plot ends. Files in which there is none are sent in pieces
// that end in the middle of a number, and a stopped job leaves the plotter waiting for the rest.
#pragma once

#include "language/language.h"
#include "strokes/stroke.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace strokes {

/// How the file is to be written, and by what it will be cut.
struct PlotForm {
    language::Language language = language::Language::Hpgl;
    size_t chunk = 64; ///< bytes that are looked at together
    /// Bytes of a full chunk that are sent before the next one is looked at; 0: there is no place to cut it, and all are.
    std::function<size_t(std::string_view chunk)> cut;
};

/// A drawing that has no place in a plot file.
struct Unwritable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The plot file, whose terminator is language::terminatorOf(): whole plotter units of 1/40 mm, points that are one after
/// rounding written once. No instruction lies in two pieces: where a chunk has no place to be cut, blanks fill it behind its
/// last instruction. In chunks of 64 bytes and more there is one in each, unless coordinates take more than six characters
/// (beyond 2.5 m left of or below 0, 25 m right or above). Throws Unwritable when a single instruction is longer than a
/// chunk.
std::string plotOf(const Drawing &drawing, const PlotForm &form);

} // namespace strokes
