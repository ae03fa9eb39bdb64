// The data of SVG paths, flattened.
#pragma once

#include "strokes/affine.h"
#include "strokes/contour.h"

#include <optional>
#include <string_view>
#include <vector>

namespace strokes {

/// How far a curve's chords may lie beside it, in millimetres: half the step of a plotter of 0.025 mm.
constexpr double kFlatness = 0.0125;

/// Absolute M, L, H, V, C and Z: what cairo writes. toPage takes its points to millimetres. Nothing for other instructions,
/// and for a point that would lie more than a kilometre away or nowhere.
std::optional<std::vector<Contour>> contoursOf(std::string_view data, const Affine &toPage);

/// A rectangle, from the corner with the least coordinates; none when it has no size.
std::optional<std::vector<Contour>> rectangleContours(Point corner, double width, double height, const Affine &toPage);

} // namespace strokes
