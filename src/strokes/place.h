// Where on the sheet a drawing comes to lie, and how large. All drawings are placed here, whatever they were read from, so
// that the same options mean the same for each.
#pragma once

#include "strokes/measure.h"

namespace strokes {

/// Lengths in millimetres from the lower left corner of the area that the pen reaches.
struct Placement {
    enum class Turn : uint8_t { None, Quarter, Half, ThreeQuarters, Automatic }; ///< counter-clockwise

    Rectangle paper;         ///< its lower left corner is where a drawing's page begins
    Rectangle area;          ///< that is to be drawn in: what the pen reaches, less margins
    bool isMirrored = false; ///< left becomes right, ahead of the turn
    Turn turn = Turn::None;  ///< automatic: a quarter when the drawing then fits area, or fits it better
    double scale = 1;        ///< more than 0
    bool isFitted = false;   ///< as large as area holds it, in its middle; instead of scale
    bool isCentred = false;  ///< the middle of what is drawn in the middle of area
    std::optional<Point> at; ///< of the lower left corner of what is drawn; goes ahead of a middle
};

/// How a drawing was placed, where the placement left it open.
struct Placed {
    int degrees = 0;
    double scale = 1;
};

/// Moves all points. Without a place for it, a drawing's page begins at the paper's lower left corner; a drawing that has no
/// page keeps the lower left corner of what is drawn, and without turn and scale each of its points. One without points is
/// left alone.
Placed place(Drawing &drawing, const Placement &placement);

} // namespace strokes
