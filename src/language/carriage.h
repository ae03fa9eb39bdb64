// The pen over the sheet. Whatever their instructions are called, all languages move a pen: clipping, dashes, measuring and
// the estimate of time are done here once, and the readers need to know none of it.
#pragma once

#include "language/allowance.h"
#include "language/clip.h"
#include "language/line_type.h"
#include "language/reader.h"

namespace language {

/// Takes moves to anywhere (finite, in plotter units on the sheet), clips them, cuts them into dashes, gives the sink what
/// is left, and measures. The time is an estimate for a desk-top pen plotter: drawing at the selected speed, 50 cm/s on the
/// way with the pen up, 0.1 s for each time that the pen is put down and lifted, 1 s for each change of pens. On a line, the
/// pen cannot draw what has not arrived, and the line is ahead of it by 1024 bytes at most, the plotter's buffer: so at each
/// moment the slower of the two sets the pace.
class Carriage {
public:
    static constexpr double kDefaultSpeed = 38; // cm/s
    static constexpr double kDefaultWidth = 0.35;

    /// Begins with pen 1 in the holder, at the origin. secondsPerByte: on the line, 0 for none. findings.bytes is kept by
    /// the caller.
    Carriage(PenSink &sink, const Rectangle &hardClip, Clipping clipping, double secondsPerByte, Findings &findings);

    /// Pen 0 is an empty holder: moves go on, and nothing is drawn or measured. Lifts the pen when anything changes.
    void setPen(int pen, double widthMillimetres);
    void setSpeed(double centimetresPerSecond);
    /// Patterns shorter than 1 mm, or than a thousandth of the sheet's diagonal, are lengthened to that.
    void setLineType(const LineType &type);
    /// Nothing is drawn outside it (nor outside reach()).
    void setWindow(const Rectangle &window);

    /// Moves with the pen up.
    void moveTo(Point to);
    /// Puts the pen down where it is: a dot, unless a line follows.
    void touch();
    /// Draws a line in the line type in effect.
    void lineTo(Point to);
    /// Draws a line that is solid whatever the line type: letters and ticks.
    void strokeTo(Point to);
    /// Fills closed contours by the even-odd rule; leaves the language's pen where it is. ends: see PenSink::fill.
    void fill(std::span<const Point> points, std::span<const size_t> ends);

    /// The bytes end here: waits for those that ask for nothing more.
    void finish() { spend(0); }

    /// To be asked before much work: see Allowance. False: it must not be done, and is counted as refused.
    bool afford(uint64_t work);

    const Rectangle &hardClip() const noexcept { return hardClip_; }
    /// Within which is drawn: the hard-clip area, or everywhere.
    const Rectangle &reach() const noexcept { return reach_; }
    int pen() const noexcept { return pen_; }
    /// touch() would add no dot: the pen is on the paper here, or cannot be.
    bool touched() const noexcept { return (drawing_ && last_ == at_) || !visible_ || !inside(area_, at_); }
    /// How far into the pattern of the line type the line has come, in plotter units; 0 behind a move.
    double phase() const noexcept { return phase_; }
    const LineType &lineType() const noexcept { return lineType_; }
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
    void spend(double seconds);
    PenFindings &own() { return findings_.byPen[static_cast<size_t>(pen_) % findings_.byPen.size()]; }

    PenSink &sink_;
    const Rectangle hardClip_, reach_;
    Findings &findings_;
    Allowance allowance_;
    PolygonClipper clipper_;
    Rectangle area_; // within which strokes are let through
    bool visible_;   // there is such an area
    LineType lineType_;
    int pen_ = 1;
    double width_ = kDefaultWidth;
    double secondsPerUnit_ = 0;
    const double secondsPerByte_;
    double held_ = 0;      // seconds for which a full buffer has held the line so far
    Point at_;             // where the language's pen is
    Point last_;           // where the sink's pen is
    bool drawing_ = false; // the sink's stroke ends at last_ and may go on
    double phase_ = 0;     // how far into the dash pattern the line has come
};

} // namespace language
