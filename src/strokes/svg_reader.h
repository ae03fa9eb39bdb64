// Reads SVG in the small dialect that cairo writes, and so the converters of PDF and of full SVG: groups, paths with
// absolute instructions, glyphs as symbols, clips. Nothing here knows text, style sheets, arcs or relative coordinates, for
// the converters have resolved them.
#pragma once

#include "strokes/shape_painter.h"
#include "strokes/stroke.h"
#include "strokes/unreadable.h"

#include <string>

namespace strokes {

struct SvgOptions {
    FillStyle fill;
    bool hides = true; ///< what a later opaque fill covers is not plotted
    Limits limits = {};
};

/// The drawing's strokes. Lines are one stroke however wide; what is (nearly) white draws nothing, but hides; of a gradient
/// one colour is plotted. Pictures, patterns, filters and soft masks are left out and counted in the notes. All strokes are
/// of pen 1. Throws Unreadable. Time and memory are in proportion to the text, within limits on depth, elements and points.
Drawing readSvg(std::string svg, const SvgOptions &options);

} // namespace strokes
