// The ends of strokes that are still to be drawn, and which of them is nearest. The spatial index behind it is a library's,
// and takes long to compile: only nearest_ends.cpp includes it.
#pragma once

#include "strokes/stroke.h"

#include <memory>
#include <span>

namespace strokes {

class NearestEnds {
public:
    /// Of the strokes with these numbers, each of which must have a point.
    NearestEnds(const std::vector<Stroke> &strokes, std::span<const uint32_t> which);
    ~NearestEnds();

    struct End {
        uint32_t stroke; ///< its number
        bool isLast;     ///< of its points; otherwise the first
    };
    /// The nearest end of all; its stroke is not considered again. To be called once for each stroke at most.
    End take(Point from);

private:
    struct Index;
    std::unique_ptr<Index> index_;
};

} // namespace strokes
