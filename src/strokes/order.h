// In which order strokes are drawn. Programs write them as they were made, and a plotter then spends half of its time with
// the pen up: nearest end first, it spends a few percent.
#pragma once

#include "strokes/stroke.h"

namespace strokes {

/// Ends that are nearer than this, in millimetres, touch: one plotter unit, which no plotter can tell from none.
constexpr double kTouching = 1 / language::kUnitsPerMillimetre;

/// Pen by pen, in the order in which the pens appear: the stroke with the end nearest to where the pen is comes next, and
/// runs backwards when that is its last. A pen whose strokes make the shorter way as they are keeps their order. A stroke
/// that begins where the one before it ended (kTouching) goes on with it. Takes n log n steps and memory for n strokes.
/// Every stroke must have a point.
void orderNearest(Drawing &drawing);

/// The same pen by pen, but each pen's strokes as they were drawn.
void orderByPen(Drawing &drawing);

} // namespace strokes
