// What will not be drawn, in grey: it must be seen in a picture, and be told from what will be. A plotter leaves out what
// its pen cannot reach: so the strokes of a reader that clips nothing are parted here, at the edges of what the pen reaches.
// And some of a plot may have been drawn before.
#pragma once

#include "language/clip.h"
#include "virtual_plotter/drawing/picture.h"

namespace virtual_plotter {

class GreyOutside final : public PenSink {
public:
    /// The picture must outlive it.
    GreyOutside(Picture &picture, const Rectangle &reach) : picture_(picture), reach_(reach) {}

    /// Whether what follows has been drawn before. To be called between strokes.
    void setDone(bool isDone) { isDone_ = isDone; }
    void setPen(int pen, double widthMillimetres) override;
    void begin(Point at) override;
    void line(Point to) override;
    void fill(std::span<const Point> points, std::span<const size_t> ends) override;

private:
    void draw(Point from, Point to, bool isOutside);
    void setGrey(bool isOutside) { picture_.setOutside(isOutside || isDone_); }

    Picture &picture_;
    const Rectangle reach_;
    PolygonClipper clipper_;
    Point last_; // of the reader's stroke
    bool isDone_ = false;
    bool isOutside_ = false; // as the picture's stroke, which ends there, too
};

} // namespace virtual_plotter
