// Points and rectangles on the sheet, and the unit that all of them are in.
#pragma once

namespace language {

/// In plotter units of 0.025 mm (the unit of HP-GL), x to the right and y up, from the lower left corner of the area that
/// the pen can reach.
struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point &) const = default;
};

struct Rectangle {
    Point lower; ///< left, bottom
    Point upper; ///< right, top
};

constexpr double kUnitsPerMillimetre = 40.0;

} // namespace language
