// What a plotter's pen does on the sheet: the seam between the languages and what is made of a plot. A reader draws on any
// sink: a picture, or one that draws nothing where only the findings are wanted.
#pragma once

#include "language/geometry.h"

#include <cstddef>
#include <span>

namespace language {

/// Receives strokes as they are made and keeps none of the memory that it is handed. Every point lies within the area that
/// the pen can reach, unless the reader was told otherwise: what is outside has been clipped away, and line types have been
/// cut into their dashes.
class PenSink {
public:
    virtual ~PenSink() = default;
    /// The pen (1 .. 8 and up; 0 puts it away) and its width in millimetres for all that follows.
    virtual void setPen(int pen, double widthMillimetres) = 0;
    /// Lifts the pen and puts it down at a point: begins a stroke. A stroke of one point is a dot.
    virtual void begin(Point at) = 0;
    /// Draws on from the stroke's last point.
    virtual void line(Point to) = 0;
    /// Fills closed contours with the pen's colour, by the even-odd rule. ends: index behind each contour's last point.
    virtual void fill(std::span<const Point> points, std::span<const size_t> ends) = 0;
};

/// Draws nothing, where only the findings are wanted.
class NoPen final : public PenSink {
public:
    void setPen(int, double) override {}
    void begin(Point) override {}
    void line(Point) override {}
    void fill(std::span<const Point>, std::span<const size_t>) override {}
};

} // namespace language
