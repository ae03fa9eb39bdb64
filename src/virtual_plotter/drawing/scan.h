// Which dots a line or an area covers, and how much of each. Written for what plots are made of, thin lines: a line is the
// dots near it, by their distance, row by row; so its cost is its dots, wherever else lines are.
#pragma once

#include "virtual_plotter/drawing/inked_dots.h"

#include <span>
#include <vector>

namespace virtual_plotter {

/// In dots, from the upper left corner of the page.
struct Segment {
    float fromX, fromY, toX, toY;
};

/// The rows that are drawn; others may be drawn at the same time.
struct Rows {
    int begin, end;
};

/// A segment, and those of the same stroke that end and begin where it begins and ends; nullptr for none.
struct Link {
    const Segment *before, *segment, *after;
};

/// Covers what is no further than radius from the segment. At a corner a dot is covered by that segment which is nearest,
/// for the pen passes it once.
void drawLine(InkedDots &dots, Rows rows, uint8_t ink, const Link &link, float radius);

/// Fills areas by the even-odd rule, each within the edges that it is given.
class AreaScan {
public:
    void draw(InkedDots &dots, Rows rows, uint8_t ink, std::span<const Segment> edges);

private:
    void addEdge(const Segment &edge);
    static void addPart(float *row, float fromX, float toX, float height);
    void coverRow(InkedDots &dots, int y, uint8_t ink);
    float *rowAt(int y);

    Rows rows_ = {};
    int left_ = 0, width_ = 0;
    size_t stride_ = 0;
    std::vector<float> turns_; // how much more often than around the dot before the edges turn around a dot
};

} // namespace virtual_plotter
