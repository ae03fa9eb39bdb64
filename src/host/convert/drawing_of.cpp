#include "host/convert/drawing_of.h"

#include "host/examination/file_kind.h"
#include "host/picture/plot_findings.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"
#include "strokes/from_plot.h"

#include <fmt/format.h>

namespace host {

namespace {

std::vector<std::string> notesOf(const language::Findings &findings, uint64_t lostPoints) {
    std::vector<std::string> notes = lossNotes(findings);
    const uint64_t odd = findings.unknown + findings.malformed;
    if (odd > 0) {
        notes.push_back(fmt::format("{} not understood and left out; 'vectorix preview' shows where",
                                    counted(static_cast<int64_t>(odd), "instruction")));
    }
    if (lostPoints > 0) {
        notes.push_back(fmt::format("{} left out as too much drawing for so few bytes",
                                    counted(static_cast<int64_t>(lostPoints), "point")));
    }
    return notes;
}

} // namespace

ReadDrawing drawingOf(const PlotFile &file, std::optional<language::Language> typed, const virtual_plotter::Sheet &sheet) {
    file.requireContents();
    requirePlot(file, typed, "convert");
    strokes::PlotStrokes gathered(static_cast<uint64_t>(file.size()));
    language::PlotReader plot(typed, gathered, sheet.hardClip, language::Clipping::None);
    file.readBlocks([&](std::string_view block) {
        plot.take(block);
        return true;
    });
    plot.finish();
    ReadDrawing read{gathered.take(), plot.language()};
    if (read.drawing.strokes.empty())
        throw Failure(ExitCode::Unfit, fmt::format("{}: nothing in it draws; give a plot that does", shown(file.path())));
    read.drawing.notes = notesOf(plot.reader()->findings(), gathered.lostPoints());
    return read;
}

} // namespace host
