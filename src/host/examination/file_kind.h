// What a file is that somebody wants plotted: the one test of it, for all commands.
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
    Nonsense, ///< by its first bytes nothing known, and what it holds are for the most part no instructions
};

struct FileNature {
    FileKind kind = FileKind::Plot;
    std::string what = {};   ///< "no plot, but a PDF document"; empty for a plot
    std::string remedy = {}; ///< "unpack it first"
    bool isPlot() const { return kind == FileKind::Plot; }
};

/// Reads the beginning of the file. By its first bytes; and where the language is known that it should have, by how much of
/// it makes sense. Throws Failure when the file cannot be read.
FileNature natureOf(const PlotFile &file, std::optional<language::Language> language);

} // namespace host
