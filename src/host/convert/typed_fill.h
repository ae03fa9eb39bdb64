// How areas are filled, as it is typed: "outline", or "hatch" with its spacing and angle. Read when it is checked, and again
// when it is used.
#pragma once

#include "strokes/shape_painter.h"

#include <optional>
#include <string>

namespace host {

/// Reads "outline" or "hatch[:MM[:ANGLE]]", with a spacing of 0.05 to 100 mm and degrees of -360 to 360. None for anything
/// else.
std::optional<strokes::FillStyle> typedFill(const std::string &text);

} // namespace host
