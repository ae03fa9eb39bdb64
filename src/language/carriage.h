// The pen over the sheet: what the languages move, whatever their instructions are called.
#pragma once

#include "language/allowance.h"
#include "language/clip.h"
#include "language/line_type.h"
#include "language/reader.h"

namespace language {

/// Takes moves to anywhere (finite, in plotter units on the sheet), clips them, cuts them into dashes, gives the sink what
/// is left, and measures. The time is an estimate for a desk-top pen plotter: drawing at the selected speed, 50 cm/s on the
/// way with the pen up, 0.1 s for each time that the pen is put down and lifted, 1 s for each change of pens.
class Carriage {
public:
    static constexpr double kDefaultSpeed = 38; // cm/s
    static constexpr double kDefaultWidth = 0.35;

    /// Begins with pen 1 in the holder, at the origin. findings.bytes is kept by the caller.
    Carriage(PenSink &sink, const Rectangle &hardClip, Findings &findings);

    /// Pen 0 is an empty holder: moves go on, and nothing is drawn or measured. Lifts the pen when anything changes.
    void setPen(int pen, double widthMillimetres);
    void setSpeed(double centimetresPerSecond);
    /// A pattern is at least 1 mm long, and goes at most a thousand times along the sheet's diagonal.
    void setLineType(const LineType &type);
    /// Nothing is drawn outside it (nor outside the hard-clip area).
    void setWindow(const Rectangle &window);

    /// With the pen up.
    void moveTo(Point to);
    /// Puts the pen down where it is: a dot, unless a line follows.
    void touch();
    /// With the pen down and the line type in effect.
    void lineTo(Point to);
    /// With the pen down, always solid: letters and ticks.
    void strokeTo(Point to);
    /// Even-odd, closed contours; does not count as a move.
    void fill(std::span<const Point> points, std::span<const size_t> ends);

    /// Asks for an amount of work that the bytes read may not justify: see Allowance. False: leave it.
    bool afford(uint64_t work);

    const Rectangle &hardClip() const noexcept { return hardClip_; }
    int pen() const noexcept { return pen_; }
    double width() const noexcept { return width_; }

private:
    void want(Point p);
    bool clipped(Point &from, Point &to) const;
    void draw(Point from, Point to);
    void begin(Point at);
    void travel(Point at);
    void lift() { drawing_ = false; }
    void drawDashes(Point from, Point to, double skipped, double length);
    void drew(double units);

    PenSink &sink_;
    const Rectangle hardClip_;
    Findings &findings_;
    Allowance allowance_;
    PolygonClipper clipper_;
    Rectangle area_; // within which strokes are let through
    bool visible_;   // there is such an area
    LineType lineType_;
    int pen_ = 1;
    double width_ = kDefaultWidth;
    double secondsPerUnit_ = 0;
    Point at_;             // where the language's pen is
    Point last_;           // where the sink's pen is
    bool drawing_ = false; // the sink's stroke ends at last_ and may go on
    double phase_ = 0;     // how far into the dash pattern the line has come
};

} // namespace language
