// How large a drawing is, and how far a pen goes for it: what placing asks for, and what the report tells of before and
// after the strokes were put in order.
#pragma once

#include "strokes/stroke.h"

#include <optional>

namespace strokes {

using language::Rectangle;

/// Bounds of all points in millimetres; none for a drawing without points.
std::optional<Rectangle> extentOf(const Drawing &drawing);

/// Millimetres.
double distance(Point a, Point b) noexcept;

/// The way of the pen in millimetres: along the strokes, and straight from 0, 0 to the first of them and from the end of
/// each to the next.
struct Travel {
    double down = 0, up = 0;
};
Travel travelOf(const Drawing &drawing);

} // namespace strokes
