// Sheets of paper, and the area of them that the pen can reach. No pen reaches the edge: a drawing that fits the paper may
// still be cut, so both sizes are kept.
#pragma once

#include "language/geometry.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace virtual_plotter {

using namespace language; // Point, Rectangle and the plotter unit are used all over this folder

/// The area is centred on the paper, so its margins are half of what the paper is larger. Plotters count from the area's
/// lower left corner or, many large ones and cutters, from its middle: where 0, 0 lies, the area itself tells.
struct Sheet {
    double width = 0; ///< of the paper, in millimetres
    double height = 0;
    Rectangle hardClip; ///< the area in plotter units; of a sheet by its name or size, lower is 0, 0
};

/// Where 0, 0 lies, in millimetres from the lower left corner of the paper.
constexpr Point areaOrigin(const Sheet &sheet) {
    const auto &[lower, upper] = sheet.hardClip;
    return {(sheet.width - (lower.x + upper.x) / kUnitsPerMillimetre) / 2,
            (sheet.height - (lower.y + upper.y) / kUnitsPerMillimetre) / 2};
}

/// The edges of the paper in plotter units.
constexpr Rectangle edgesOf(const Sheet &sheet) {
    const Point origin = areaOrigin(sheet);
    return {{-origin.x * kUnitsPerMillimetre, -origin.y * kUnitsPerMillimetre},
            {(sheet.width - origin.x) * kUnitsPerMillimetre, (sheet.height - origin.y) * kUnitsPerMillimetre}};
}

/// A sheet all of which the pen reaches.
constexpr Sheet sheetWithin(const Rectangle &area) {
    return {(area.upper.x - area.lower.x) / kUnitsPerMillimetre, (area.upper.y - area.lower.y) / kUnitsPerMillimetre, area};
}

/// The same sheet on a plotter that counts from the middle of the area.
constexpr Sheet centred(Sheet sheet) {
    auto &[lower, upper] = sheet.hardClip;
    const Point half{(upper.x - lower.x) / 2, (upper.y - lower.y) / 2};
    sheet.hardClip = {{-half.x, -half.y}, half};
    return sheet;
}

/// A sheet by its name: a0 to a4, letter, tabloid, in any case, lying, or standing with "-portrait" behind the name; or by
/// its size as "WIDTHxHEIGHT" in millimetres of 10 to 20000 each. Without a sheet, error says what is wrong with the text.
///
/// A4, A3, letter and tabloid have the areas of old desktop plotters (A4: 10900 x 7650 units, A3: 16158 x 11040). All others
/// have margins of 10 mm, or of a tenth of a side that is shorter than 100 mm.
std::optional<Sheet> parseSheet(std::string_view text, std::string &error);

/// A sheet of paper as large as the pen's area, by the area's corners as "X1,Y1,X2,Y2" in millimetres: lower left and upper
/// right as the plotter counts, at most 100000 either way, and 10 at least between them. Without a sheet, error says what is
/// wrong.
std::optional<Sheet> parseArea(std::string_view text, std::string &error);

struct NamedSheet {
    std::string name;
    Sheet sheet;
};

/// All sheets that have a name, standing ones too, the smallest first.
std::vector<NamedSheet> namedSheets();

} // namespace virtual_plotter
