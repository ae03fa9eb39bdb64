// What a drawing comes to for a plotter: strokes, each a pen and a line of points. Whatever a person has drawn, in whatever
// format, becomes this; placing, ordering and writing know nothing else.
#pragma once

#include "language/geometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace strokes {

using language::Point;

/// Points in millimetres, x to the right and y up, from the lower left corner of the drawing's page. A stroke of one point
/// is a dot.
struct Stroke {
    uint32_t colour = 0; ///< 0xRRGGBB; of a plot file, in which pens have no colours, 0
    int pen = 1;         ///< from 1
    std::vector<Point> points;
};

struct Drawing {
    double width = 0, height = 0; ///< of its page in millimetres; 0 when it has none
    std::vector<Stroke> strokes;  ///< in the order in which they were drawn
    std::vector<std::string>
        notes;                   ///< what was left out of it, as sentences without a full stop: "2 pictures are not plotted"
    bool isPicturesOnly = false; ///< nothing but pictures was in it, and so there are no strokes
};

} // namespace strokes
