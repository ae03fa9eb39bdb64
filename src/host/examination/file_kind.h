// Tells a plot from the other files that people hand to a plot command by mistake: PDF, SVG, archives, plots in the other
// language. To a plotter they would be rubbish, which it may draw. Print and preview both ask here, so that neither takes
// what the other refuses.
#pragma once

#include "host/files/plot_file.h"
#include "language/reader.h"

#include <optional>
#include <string>

namespace host {

enum class FileKind {
    Plot, ///< nothing speaks against it
    Pdf,
    Svg,
    PostScript,
    Xml,
    WebPage,
    Picture, ///< of pixels
    Drawing, ///< of a drawing program
    Archive,
    Program,
    Utf16,
    Hpgl, ///< a plot, but in this language, not the one asked for
    Dmpl,
    Nonsense, ///< no known kind of file, and most of it are no instructions
};

struct FileNature {
    FileKind kind = FileKind::Plot;
    std::string what = {};   ///< "not a plot, but a PDF document"; empty for a plot
    std::string remedy = {}; ///< "unpack it first"
    bool isPlot() const { return kind == FileKind::Plot; }
    /// Whether there is a converter for it.
    bool isDrawing() const { return kind == FileKind::Svg || kind == FileKind::Pdf; }
};

/// Judges the file by its first bytes and, where a language is given that it should be in, by how much of its first 64 KiB
/// are instructions of that language. Throws Failure when the file cannot be read.
FileNature natureOf(const PlotFile &file, std::optional<language::Language> language);

/// For commands that read plots of any language. Throws Failure (unfit) for a file that is no plot. A language that was
/// typed is believed, whatever the file looks like. verb is what they do with it, for the message: "draw".
void requirePlot(const PlotFile &file, std::optional<language::Language> typed, const char *verb);

} // namespace host
