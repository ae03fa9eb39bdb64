// The one place where a file becomes a drawing, by what kind of file it is. Behind it no command knows what was given to it.
#pragma once

#include "host/files/plot_file.h"
#include "language/language.h"
#include "strokes/stroke.h"
#include "strokes/svg_reader.h"
#include "virtual_plotter/drawing/sheet.h"

#include <optional>

namespace host {

/// How a file is to be read.
struct ReadOptions {
    std::optional<language::Language> language; ///< of a plot file, where it was typed
    /// That a plot file is made for: how large what it measures by the sheet becomes. Nothing is cut off at its edges.
    virtual_plotter::Sheet sheet;
    int page = 1; ///< of a PDF document
    strokes::SvgOptions svg;
};

struct ReadDrawing {
    strokes::Drawing drawing;
    /// That the plot file is in, whose strokes have pens; none for SVG and PDF, whose strokes have colours.
    std::optional<language::Language> language;
};

/// Reads the whole file: a plot, an SVG drawing, or a page of a PDF document. Throws Failure: unfit for a file of another
/// kind, and for one that draws nothing; as plainSvgOf() does for SVG and PDF.
ReadDrawing drawingOf(const PlotFile &file, const ReadOptions &options);

} // namespace host
