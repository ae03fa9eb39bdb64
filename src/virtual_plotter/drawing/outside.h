// What the pen cannot reach, in grey. A plotter leaves it out; in a picture it must be seen, and be told from what will be
// drawn. So the strokes of a reader that clips nothing are parted here, at the edges of what the pen reaches.
#pragma once

#include "language/clip.h"
#include "virtual_plotter/drawing/picture.h"

namespace virtual_plotter {

class GreyOutside final : public PenSink {
public:
    /// The picture must outlive it.
    GreyOutside(Picture &picture, const Rectangle &reach) : picture_(picture), reach_(reach) {}

    void setPen(int pen, double widthMillimetres) override;
    void begin(Point at) override;
    void line(Point to) override;
    void fill(std::span<const Point> points, std::span<const size_t> ends) override;

private:
    void draw(Point from, Point to, bool isOutside);

    Picture &picture_;
    const Rectangle reach_;
    PolygonClipper clipper_;
    Point last_;             // of the reader's stroke
    bool isOutside_ = false; // as the picture's stroke, which ends there, too
};

} // namespace virtual_plotter
