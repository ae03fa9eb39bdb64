// How an element of an SVG drawing is painted: what its attributes and its style say, and what it has from those around it.
#pragma once

#include "strokes/dashes.h"
#include "strokes/region.h"
#include "strokes/svg_values.h"

#include <pugixml.hpp>
#include <string_view>

namespace strokes {

struct SvgStyle {
    // Handed down.
    Paint fill{Paint::Kind::Plain}, line;
    double fillOpacity = 1, lineOpacity = 1;
    double opacity = 1; ///< of all groups around it, together
    bool isButt = true; ///< the ends of its lines, so that one without length is nothing
    FillRule fillRule = FillRule::NonZero, clipRule = FillRule::NonZero;
    DashPattern dashes;
    // The element's alone.
    std::string_view clip, mask, filter; ///< names, mostly empty

    /// What an element within one of this style begins with, changed by what the element says. The texts are the
    /// document's.
    SvgStyle of(pugi::xml_node element) const;
};

} // namespace strokes
