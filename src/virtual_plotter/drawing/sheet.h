// Sheets of paper, and the area of them that the pen can reach. No pen reaches the edge: a drawing that fits the paper may
// still be cut, so both sizes are kept.
#pragma once

#include "language/geometry.h"

#include <optional>
#include <string>
#include <string_view>

namespace virtual_plotter {

using namespace language; // Point, Rectangle and the plotter unit are used all over this folder

/// The area is centred on the paper, so its margins are half of what the paper is larger.
struct Sheet {
    double width = 0; ///< of the paper, in millimetres
    double height = 0;
    Rectangle hardClip; ///< the area in plotter units, from its own lower left corner: lower is 0, 0
};

/// A sheet by its name: a0 to a4, letter, tabloid, in any case, lying, or standing with "-portrait" behind the name; or by
/// its size as "WIDTHxHEIGHT" in millimetres of 10 to 20000 each. Without a sheet, error says what is wrong with the text.
///
/// A4, A3, letter and tabloid have the areas of old desktop plotters (A4: 10900 x 7650 units, A3: 16158 x 11040). All others
/// have margins of 10 mm, or of a tenth of a side that is shorter than 100 mm.
std::optional<Sheet> parseSheet(std::string_view text, std::string &error);

} // namespace virtual_plotter
