// What a picture shows: the sheet that a plot is drawn on, and as much around it as the drawing takes. A preview cuts
// nothing off, so the sheet is chosen by the drawing where none was named, and the page grows where the drawing leaves the
// sheet.
#pragma once

#include "host/picture/drawing_options.h"
#include "language/reader.h"

#include <string>

namespace host {

struct View {
    virtual_plotter::Sheet sheet;
    virtual_plotter::Sheet page; ///< of the picture: the sheet, or larger, with the sheet outlined on it
    std::string name;            ///< of the sheet, for people: "a3-portrait"; empty when none holds the drawing
    bool isTyped = false;        ///< by the user, and not chosen by the drawing
    bool isLeft = false;         ///< some of the drawing lies outside of what the pen reaches on the sheet
};

/// Without a sheet or an area in the options, the smallest sheet with a name on which the pen reaches all of the drawing, or
/// the smallest whose paper at least holds it, placed around 0, 0 for a drawing that lies around it. Where none does, the
/// usual one.
View viewOf(const DrawingOptions &options, const language::Findings &findings);

/// True when some of what was to be drawn lies outside of what the pen reaches on the sheet.
bool leavesArea(const language::Findings &findings, const virtual_plotter::Sheet &sheet);

/// Throws Failure (unfit) when the plot called so leaves the area that the options give; a sheet is not held against it, for
/// nobody knows which one is loaded.
void requireWithinArea(const std::string &plot, const language::Findings &findings, const DrawingOptions &options);

} // namespace host
