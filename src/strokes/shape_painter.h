// Shapes as strokes: lines with their dashes, fills as outlines or hatched, cut at what clips them and at the page's edge.
#pragma once

#include "strokes/dashes.h"
#include "strokes/layers.h"
#include "strokes/region.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace strokes {

/// How a pen fills an area.
struct FillStyle {
    bool isHatched = false; ///< as well as outlined
    double spacing = 0.5;   ///< in millimetres, above 0
    double degrees = 45;    ///< of the lines, counterclockwise from the x axis
};

/// What a drawing may ask for, however few bytes it is: by default some seconds and half a gigabyte, of which real drawings
/// need a hundredth.
struct Limits {
    size_t elements = 10'000'000; ///< with all that references repeat
    size_t points = 30'000'000;   ///< of all strokes, and kStroke for each
    size_t work = 2'000'000'000;  ///< edges looked at for clipping and hatching; a tenth as many for hiding

    static constexpr size_t kStroke = 6; ///< as many points take as much memory as a stroke without its points
};

using Clip = std::shared_ptr<const Region>; ///< none: only the page clips

class ShapePainter {
public:
    /// hides: an opaque area covers what was painted before. The page is in millimetres.
    ShapePainter(const Box &page, const FillStyle &fill, bool hides, const Limits &limits)
        : page_(page), fill_(fill), hides_(hides), limits_(limits) {}

    /// Something of one colour.
    struct Colour {
        uint32_t colour = 0;
        bool isSeen = true; ///< else it is not plotted, but may cover
        bool isOpaque = true;
    };

    /// A line along the contours. Throws Unreadable when the drawing has become too large.
    void line(const std::vector<Contour> &contours, const DashPattern &dashes, const Affine &toPage, const Clip &clip,
              uint32_t colour);
    /// An area. hasLine: a line is drawn around it, so no outline needs to be.
    void area(const std::vector<Contour> &contours, FillRule rule, const Clip &clip, const Colour &colour, bool hasLine);

    /// What both hold. Throws Unreadable when that has taken too long, over all calls.
    Region common(const Region &a, const Region &b);

    /// All that is seen. notes: what was not done.
    std::vector<Stroke> take(std::vector<std::string> &notes);

private:
    void requireMeasure() const;
    std::vector<Contour> outlinesOf(const Region &area);
    void paint(std::vector<Point> points, uint32_t colour, bool isOutline = false);
    void paintOnPage(std::vector<Point> points, uint32_t colour, bool isOutline);
    void hatch(const Region &area, uint32_t colour);

    Region page_;
    FillStyle fill_;
    bool hides_;
    Limits limits_;
    Layers layers_;
    size_t points_ = 0, work_ = 0;
    bool isComplete_ = true; ///< all areas were freed of the lines within them
};

} // namespace strokes
