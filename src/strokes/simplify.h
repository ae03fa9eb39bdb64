// Points that a plotter cannot tell from the line without them. Flattened curves have many: each costs time on the line to
// the plotter, and nothing of them is seen.
#pragma once

#include "strokes/stroke.h"

namespace strokes {

/// Leaves out points, but never a stroke's first and last, as long as the line stays within so many millimetres of what it
/// was, and what it was of it. Takes one step a point.
void simplify(Drawing &drawing, double tolerance);

} // namespace strokes
