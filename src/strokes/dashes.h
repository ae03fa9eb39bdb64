// Dashed lines as what they are to a pen: many short lines.
#pragma once

#include "strokes/affine.h"
#include "strokes/contour.h"

#include <vector>

namespace strokes {

struct DashPattern {
    std::vector<double> lengths; ///< in user units: drawn, left out, drawn …; an odd number goes through twice
    double offset = 0;           ///< where in the pattern a line begins
};

/// The dashes of a line in millimetres, whose user units toPage takes there. One line for no pattern, and for one that is
/// too fine for a pen, or has negative lengths. A line of no length in a pattern is a dot.
std::vector<std::vector<Point>> dashed(const std::vector<Point> &points, const DashPattern &pattern, const Affine &toPage);

} // namespace strokes
