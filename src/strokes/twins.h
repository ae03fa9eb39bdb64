// Lines that were drawn before. Programs write the edge between two shapes once for each, and a filled shape with a line
// around it as two; a pen that goes twice over wet ink tears the paper.
#pragma once

#include "strokes/contour.h"
#include "strokes/stroke.h"

#include <vector>

namespace strokes {

/// Whether two lines are one to a plotter: the same points within kBorder, in either direction; closed ones may begin
/// anywhere.
bool coincide(const std::vector<Point> &a, const std::vector<Point> &b);

/// Finds coinciding strokes by the corners of their boxes. Memory and time are in proportion to the strokes, for of a crowd
/// in one place only some are looked at.
class Twins {
public:
    /// Of so many strokes.
    explicit Twins(size_t count);

    /// Whether one that was asked for before lies there, of the same colour, or, for an area's outline, of any. Else the
    /// stroke must stay where it is as long as the object.
    bool has(const Stroke &stroke, bool isOutline);

private:
    struct Entry {
        const Stroke *stroke;
        uint32_t next; ///< of the same place, from 1; 0: none
    };
    struct Cell {
        int64_t x, y;
    };
    static Cell cellOf(Point p);
    size_t placeOf(Cell cell, size_t points) const;
    bool isIn(size_t place, const Stroke &stroke, bool isOutline) const;

    std::vector<uint32_t> first_; ///< entry of each place, from 1; as many as a power of two
    std::vector<Entry> entries_;
};

} // namespace strokes
