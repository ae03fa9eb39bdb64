// A drawing as paper shows it: what an opaque area covers is not seen, so it is not plotted either. Strokes and areas are
// collected in the order in which they were painted; at the end they are gone through from the top down, and each stroke is
// cut at the areas that an R-tree of those above it finds. Cutting what is there at each new area would take strokes times
// areas. Of lines that coincide the topmost stays.
#pragma once

#include "strokes/region.h"
#include "strokes/stroke.h"

#include <memory>
#include <vector>

namespace strokes {

class Layers {
public:
    /// isOutline: of an area; not painted when another line lies on it.
    void paint(Stroke stroke, bool isOutline) { strokes_.push_back({std::move(stroke), covers_.size(), isOutline}); }
    /// Hides what was painted so far.
    void cover(Region area) { covers_.push_back(std::move(area)); }

    struct Seen {
        std::vector<Stroke> strokes;
        size_t twins = 0;       ///< lines that were left out, for another of their colour lies on them
        bool isComplete = true; ///< false when so much overlaps that some covered strokes were left as they are
    };
    /// What is seen, in the order in which it was painted; found with about so many edges and areas looked at.
    Seen take(size_t mostWork) &&;

private:
    struct Painted {
        Stroke stroke;
        size_t covers; ///< that were there before
        bool isOutline;
    };
    size_t leaveTwinsOut();

    std::vector<Painted> strokes_;
    std::vector<Region> covers_;
};

} // namespace strokes
