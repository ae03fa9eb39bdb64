// The strokes of a plot file, as the reader of its language draws them. With them HP-GL and DM/PL take the same road as any
// other drawing: what reads plots for the preview reads them here, so that no two parts of the project can differ about
// them.
#pragma once

#include "language/pen_sink.h"
#include "strokes/stroke.h"

#include <cstdint>

namespace strokes {

/// Gathers what a reader draws, points in plotter units of 1/40 mm from the lower left corner of the pen's area, as strokes
/// in millimetres from there. A solid fill becomes the outlines of its contours. Make the reader with
/// language::Clipping::None, or what lies outside the sheet is lost.
class PlotStrokes final : public language::PenSink {
public:
    /// A few bytes can ask for as many dashes as the reader allows, millions. These are as many points as a letter or a
    /// chord comes to for each of the plot's bytes, beside what every plot may have; they take up to 400 MB until they are
    /// written.
    static constexpr uint64_t kAtOnce = 2'000'000, kPerByte = 20;

    /// Of a plot with so many bytes.
    explicit PlotStrokes(uint64_t bytes) : most_(kAtOnce + kPerByte * bytes) {}

    void setPen(int pen, double widthMillimetres) override;
    void begin(Point at) override;
    void line(Point to) override;
    void fill(std::span<const Point> points, std::span<const size_t> ends) override;

    /// What was drawn; without a page. To be called once.
    Drawing take() { return std::move(drawing_); }
    /// That came after as many as may be, and were left out.
    uint64_t lostPoints() const { return points_ > most_ ? points_ - most_ : 0; }

private:
    void open();
    void add(Point p);

    Drawing drawing_;
    int pen_ = 1;
    uint64_t most_, points_ = 0;
};

} // namespace strokes
