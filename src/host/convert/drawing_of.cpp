#include "host/convert/drawing_of.h"

#include "host/converters/converters.h"
#include "host/examination/file_kind.h"
#include "host/picture/plot_findings.h"
#include "host/plugin/stop_signals.h"
#include "host/terminal/failure.h"
#include "host/terminal/text.h"
#include "strokes/from_plot.h"
#include "strokes/unreadable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

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

ReadDrawing fromPlot(const PlotFile &file, const ReadOptions &options) {
    requirePlot(file, options.language, "convert");
    strokes::PlotStrokes gathered(static_cast<uint64_t>(file.size()));
    language::PlotReader plot(options.language, gathered, options.sheet.hardClip, language::Clipping::None);
    file.readBlocks([&](std::string_view block) {
        plot.take(block);
        return true;
    });
    plot.finish();
    ReadDrawing read{gathered.take(), plot.language()};
    read.drawing.notes = notesOf(plot.reader()->findings(), gathered.lostPoints());
    return read;
}

PlainSvg converted(const PlotFile &file, FileKind kind, int page) {
    const StopOnSignal signals; // a converter ends with a stop, and what follows as any program does
    return plainSvgOf(file, kind, page);
}

ReadDrawing fromSvg(const PlotFile &file, FileKind kind, const ReadOptions &options) {
    try {
        auto [text, notes] = converted(file, kind, options.page);
        ReadDrawing read{strokes::readSvg(std::move(text), options.svg), {}};
        read.drawing.notes.insert(read.drawing.notes.begin(), notes.begin(), notes.end());
        return read;
    } catch (const strokes::Unreadable &error) {
        throw Failure(ExitCode::Unfit, fmt::format("{}: {}", shown(file.path()), error.what()));
    }
}

/// Of a drawing without strokes.
std::string emptiness(const strokes::Drawing &drawing, const FileNature &nature, int page) {
    const std::string notes = drawing.notes.empty() ? "" : fmt::format(" ({})", fmt::join(drawing.notes, "; "));
    if (!nature.isDrawing()) return "nothing in it draws" + notes;
    return fmt::format("nothing to plot: {} holds {}", nature.kind == FileKind::Pdf ? fmt::format("page {}", page) : "it",
                       drawing.isPicturesOnly ? "pictures only" : "no lines" + notes);
}

} // namespace

ReadDrawing drawingOf(const PlotFile &file, const ReadOptions &options) {
    file.requireContents();
    const FileNature nature = options.language ? FileNature{} : natureOf(file, {});
    ReadDrawing read = nature.isDrawing() ? fromSvg(file, nature.kind, options) : fromPlot(file, options);
    if (!read.drawing.strokes.empty()) return read;
    throw Failure(ExitCode::Unfit, fmt::format("{}: {}; give a drawing of lines", shown(file.path()),
                                               emptiness(read.drawing, nature, options.page)));
}

} // namespace host
