// The one place where a file becomes a drawing, by what kind of file it is. Behind it no command knows what was given to it.
#pragma once

#include "host/files/plot_file.h"
#include "language/language.h"
#include "strokes/stroke.h"
#include "virtual_plotter/drawing/sheet.h"

#include <optional>

namespace host {

struct ReadDrawing {
    strokes::Drawing drawing;
    language::Language language = language::Language::Hpgl; ///< that the plot file is in
};

/// Reads the whole file. typed: the language of a plot file, where it was typed. sheet: that a plot file is made for, which
/// decides how large what it measures by the sheet becomes; nothing is cut off at its edges. Throws Failure (unfit) for a
/// file of another kind, and one that draws nothing.
ReadDrawing drawingOf(const PlotFile &file, std::optional<language::Language> typed, const virtual_plotter::Sheet &sheet);

} // namespace host
